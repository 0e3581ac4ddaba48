#!/usr/bin/env bash
# Prints CHANGELOG.md's section of this version as Debian writes a changelog, dated like the packages.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/../.."
. packaging/common.sh

printf 'vktcfgtools (%s) stable; urgency=medium\n\n' "$version"
# A point begins with "- " and goes on over lines that are indented; Debian's lines have at most 80 characters.
changelog_section | awk 'function put() { if (point != "") print point; point = "" }
    /^- / { put(); point = substr($0, 3); next }
    NF { sub(/^ +/, ""); point = point " " $0 }
    END { put() }' | while IFS= read -r point; do
    fold -s -w 74 <<<"$point" | sed -e '1s/^/  * /' -e '2,$s/^/    /' -e 's/ *$//'
done
printf '\n -- The VKTCfgTools authors <vktcfgtools@example.org>  %s\n' "$(date -u -R -d "@$SOURCE_DATE_EPOCH")"
