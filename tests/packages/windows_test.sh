#!/bin/bash
# tests/packages/windows_test.sh: the Windows packages of dist/, as a person uses them. Run it by
# packaging/windows/wine-tests.sh --run, after packaging/windows/build.sh. The archive is unpacked below a path with
# Chinese and blanks, the installer installs into another; both are looked through and played against simulated modules.
# Prints every case that went wrong; the last line is "N passed, N failed".
set -u
cd "$(dirname "$0")/../.." || exit 2
. packaging/common.sh
wine=${VKT_WINE:?run this by packaging/windows/wine-tests.sh --run}
name=VKTCfgTools-$version-windows-x64
work=$(mktemp -dt "包 test.XXXXXX")
to=$(mktemp -dt "装.XXXXXX") # the installer takes no quotes around its folder's name
trap 'rm -rf "$work" "$to"' EXIT
. tests/packages/checks.sh
gone() { [ ! -e "$1" ]; }
system_dlls_only() {
    ! x86_64-w64-mingw32-objdump -p "$1" | sed -n 's/.*DLL Name: //p' | grep -viE \
        '^(advapi32|authz|comdlg32|d3d9|d3d11|d3d12|dcomp|dnsapi|dwmapi|dwrite|dxgi|gdi32|imm32|iphlpapi|kernel32|msvcrt|netapi32|ole32|oleaut32|rpcrt4|secur32|setupapi|shcore|shell32|shlwapi|user32|userenv|uxtheme|version|winmm|winspool\.drv|ws2_32|wtsapi32|api-ms-win-.*)(\.dll)?$'
}
# subsystem EXE: 2 is a window program, to which Windows gives no console, 3 a console program.
subsystem() { x86_64-w64-mingw32-objdump -p "$1" | sed -n 's/^Subsystem[^0-9]*0*\([0-9]*\).*/\1/p'; }
is_console_program() { [ "$(subsystem "$1")" = 3 ]; }
vkt() { (cd / && "$wine" "$tree/bin/vkt.exe" "$@"); }
says_version() { vkt --version | tr -d '\r' | grep -x ".*$version"; }
is_window_program() { [ "$(subsystem "$1")" = 2 ]; }
holds() {
    python3 - "$@" <<'END'
import sys
data = open(sys.argv[1], "rb").read()
missing = [text for text in sys.argv[2:] if text.encode() not in data and text.encode("utf-16le") not in data]
print("missing:", missing)
sys.exit(bool(missing))
END
}
play() { VKT_PROGRAM_TEST_SLOWNESS=6 tests/program/run_program_test.sh "tests/program/$2.drive" "$1"; }
windows_path() { printf 'Z:%s' "${1//\//\\}"; }

# ---- the archive
check "unpacking" unzip -q "dist/$name.zip" -d "$work"
tree="$work/$name"
for file in bin/VKTCfgTools.exe bin/vkt.exe res/default/ui/home_page.ui res/default/styles/default.qss res/default/strings/zh_CN.ts \
    res/default/fonts/vkt_sans.otf tools/bps_data_list/vkt610b_bps_canfd1_c_2_1000.txt README.zh-CN.md \
    docs/screenshots/generic_change.png licences/VKTCfgTools.txt licences/fonts.txt licences/LGPL-3.txt licences/GPL-3.txt \
    licences/READ-ME.txt licences/qt6-base.txt; do
    check "$file in the archive" test -s "$tree/$file"
done
check "an empty log/" rmdir "$tree/log"
mkdir -p "$tree/log"
check "all timing lists" diff -r tools/bps_data_list "$tree/tools/bps_data_list"
check "imports of the system only" system_dlls_only "$tree/bin/VKTCfgTools.exe"
check "no console of its own" is_window_program "$tree/bin/VKTCfgTools.exe"
check "vkt is a console program" is_console_program "$tree/bin/vkt.exe"
check "imports of vkt" system_dlls_only "$tree/bin/vkt.exe"
check "vkt finds the timing lists" vkt timing --nominal 500K --data 2M
check "vkt's version" says_version
check "version information" holds "$tree/bin/VKTCfgTools.exe" FileVersion "$version" VKTCfgTools.exe "VKT 模块配置程序"
check "manifest" holds "$tree/bin/VKTCfgTools.exe" "PerMonitorV2, PerMonitor" ">UTF-8</activeCodePage>" \
    ">true</longPathAware>" "Microsoft.Windows.Common-Controls" 'level="asInvoker"'
for script in generic_vkt530a a_family b_family; do
    check "$script from the archive" play "$tree" $script
done

# ---- the installer
check "installing" "$wine" "dist/$name-setup.exe" /S "/D=$(windows_path "$to")"
check "the same files as in the archive" diff -r --exclude=uninstall.exe "$tree" "$to"
in_start_menu() { find "$WINEPREFIX/drive_c" -name VKTCfgTools.lnk -path "*Start Menu*" | grep .; }
check "an entry in the start menu" in_start_menu
listed() { "$wine" reg query 'HKCU\Software\Microsoft\Windows\CurrentVersion\Uninstall\VKTCfgTools' /v DisplayVersion | grep -q "$version"; }
check "listed as installed" listed
check "a session from the installed tree" play "$to" generic_vkt530a
echo mine >"$to/bin/can_record_data.csv"
echo mine >"$to/log/err-2026-1-1-1.txt"
check "installing once more" "$wine" "dist/$name-setup.exe" /S "/D=$(windows_path "$to")"
check "the user's files are still there" grep -q mine "$to/bin/can_record_data.csv" "$to/log/err-2026-1-1-1.txt"
check "uninstalling" "$wine" "$to/uninstall.exe" /S "_?=$(windows_path "$to")"
check "the user's files stay" grep -q mine "$to/bin/can_record_data.csv" "$to/log/err-2026-1-1-1.txt"
for file in bin/VKTCfgTools.exe bin/vkt.exe res tools licences docs README.zh-CN.md; do
    check "$file is gone" gone "$to/$file"
done
not_listed() { ! listed; }
check "no longer listed" not_listed
not_in_start_menu() { ! in_start_menu; }
check "no entry in the start menu" not_in_start_menu

check_end
