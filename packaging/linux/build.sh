#!/usr/bin/env bash
# Makes dist/vktcfgtools_VERSION_amd64.deb from the release build, and checks it: the desktop entry, the AppStream data,
# and the package as a whole. Packages that are missing are installed. The path of what was made is the last line printed.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/../.."
. scripts/common.sh
. packaging/common.sh

scripts/install.sh build gui linux-package

say "linux: the programs"
configure release -DVKT_BENCH=OFF -DVKT_TESTS=OFF
forget_build_time release
build release

say "linux: the package"
mkdir -p dist
rm -f dist/vktcfgtools_*.deb
(cd build/release && cpack -G DEB >package.log 2>&1) || { cat build/release/package.log >&2; exit 1; }
deb=$(ls build/release/vktcfgtools_*.deb)
mv "$deb" dist/
deb=dist/$(basename "$deb")

say "linux: checks"
desktop-file-validate packaging/linux/VKTCfgTools.desktop
appstreamcli validate --no-net build/release/package/*.metainfo.xml
lintian --fail-on error "$deb"
echo "$deb"
