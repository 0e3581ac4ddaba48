#!/usr/bin/env bash
# Makes what is given to users, in dist/: the Windows archive and installer, the Debian package, their checksums
# (SHA256SUMS) and the notes of this version (RELEASE_NOTES.md, the CHANGELOG's section). Two runs on the same commit give
# the same bytes.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
. scripts/common.sh
. packaging/common.sh

notes=$(changelog_section)
if [ -z "${notes//[[:space:]]/}" ]; then
    echo "release: CHANGELOG.md has no section of version $version" >&2
    exit 1
fi
rm -rf dist
packaging/windows/build.sh
packaging/linux/build.sh
printf '# VKTCfgTools %s\n%s\n' "$version" "$notes" >dist/RELEASE_NOTES.md
(cd dist && sha256sum ./*.zip ./*.exe ./*.deb | sed 's# \./# #' >SHA256SUMS)
say "release"
(cd dist && ls -l && cat SHA256SUMS)
