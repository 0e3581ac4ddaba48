#!/usr/bin/env bash
# Makes dist/VKTCfgTools-VERSION-windows-x64.zip and, beside it, the installer VKTCfgTools-VERSION-windows-x64-setup.exe.
#
#   packaging/windows/build.sh [--zip-only]
#
# The static Qt is the one that build-qt-prefix.sh finds or makes. The programs are built in build/windows, or taken from
# there. Packages that are missing are installed. The paths of what was made are the last lines printed.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/../.."
. scripts/common.sh
. packaging/common.sh

name=VKTCfgTools-$version-windows-x64
tree=build/package/$name

scripts/install.sh build gui windows windows-package
prefix=$(packaging/windows/build-qt-prefix.sh | tail -n 1)

say "windows: the programs"
configure windows -DVKT_GUI=ON "-DQTWIN_PREFIX=$prefix"
programs=(VKTCfgTools)
if [ -d cli ]; then programs+=(vkt); fi
forget_build_time windows
build windows "${programs[@]}"

say "windows: the tree"
rm -rf "$tree"
cmake --install build/windows --prefix "$tree" --component Unspecified >/dev/null
cp /usr/share/common-licenses/LGPL-3 "$tree/licences/LGPL-3.txt"
cp /usr/share/common-licenses/GPL-3 "$tree/licences/GPL-3.txt"
cp /usr/share/doc/qt6-base-dev/copyright "$tree/licences/qt6-base.txt"
make_same_age "$tree"

mkdir -p dist
rm -f "dist/$name.zip" "dist/$name-setup.exe"
say "windows: the archive"
(cd build/package && find "$name" | LC_ALL=C sort | zip -q -X -9 "../../dist/$name.zip" -@)
if [ "${1:-}" != --zip-only ]; then
    say "windows: the installer"
    makensis -V2 -INPUTCHARSET UTF8 "-DVERSION=$version" "-DTREE=$PWD/$tree" "-DICON=$PWD/packaging/icon/vktcfgtools.ico" \
        "-DOUTPUT=$PWD/dist/$name-setup.exe" packaging/windows/installer.nsi
fi
ls "dist/$name"*
