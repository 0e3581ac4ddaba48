#!/bin/bash
# Tests of the scripts: tools/compare_frame, tools/compare_traffic, scripts/install.sh, packaging/windows/build-qt-prefix.sh --ready,
# packaging/windows/wine-program.sh, and what test.sh makes of ctest's words.
# Prints every case that went wrong; the last line is "N passed, N failed".
set -u
cd "$(dirname "$0")/../.." || exit 2
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
passed=0 failed=0

# expect STATUS TEXT COMMAND...: the exit status, and a text that stands in the output ("" for an output of nothing).
expect() {
    local status=$1 text=$2 output got=0
    shift 2
    output=$("$@" 2>&1) || got=$?
    if [ "$got" = "$status" ] && { [ -n "$text" ] && [[ $output == *"$text"* ]] || [ "$text$output" = "" ]; }; then
        passed=$((passed + 1))
    else
        failed=$((failed + 1))
        echo "$*: status $got and \"$output\", wanted $status and \"$text\""
    fi
}

# ---- tools/compare_frame

frame="F7 F8 01 3C"
for i in {1..60}; do frame+=" $(printf %02X "$i")"; done
frame+=" 5A"
other=${frame/ 20 / 21 }

dump() { printf 'home_page/button push "" value=0\nhome_page/view/mledit mledit "%s" value=0 enabled\n' "$1" >"$work/dump"; }
report() {
    printf '[COM7 VKT531A]\nwrites=1\n' >"$work/report"
    printf 'request=%s\n' "$@" >>"$work/report"
    printf '[COM8 VKT510A]\nrequest=F7 F8 03 00 0C\n' >>"$work/report"
}
compare() { tools/compare_frame --port "$1" --dump "$work/dump" --report "$work/report"; }

dump "$frame"
report "F7 F8 03 00 0C" "$frame"
expect 0 equal compare COM7
expect 2 "nothing to compare" compare COM8
expect 2 "nothing to compare" compare COM70
report "$other" "$frame"
expect 0 equal compare COM7
report "$frame" "$other"
expect 1 DIFFERENT compare COM7
report "F7 F8 03 00 0C"
expect 2 "received: None" compare COM7
report "$frame"
dump "{0xF7, 0xF8}"
expect 2 "shown:    None" compare COM7
dump "${frame% *}"
expect 2 "shown:    None" compare COM7

# ---- tools/compare_traffic

cat >"$work/report" <<'END'
[COM8 VKT510A]
sent=5 AA 05 03 01 00 09 00 00 00
[COM9 VKT610B]
traffic_sent=2
spoiled=noise 6 11 22 AA 05 03 01 00 09 00 00 00 00 00
sent=7 AB 09 03 03 88 78 56 34 12 DE AD 12 34
sent=8 AA 07 03 01 00 05 00 00 00 12 34
received=9 AC 08 04 05 80 FF 07 00 00 5A 12 34
END
rows() {
    printf '1\ttime\tspi1-can2\t0x7ff\t标准帧-canfd\ttx\t1\t%s\n' "$1" >"$work/rows"
    printf '2\ttime\tuart1-can1\t0x05\t标准帧-can\trx\t0\t\n' >>"$work/rows"
    printf '3\ttime\tuart2-can2\t0x12345678\t扩展帧-canfd\trx\t2\t%s\n' "$2" >>"$work/rows"
    printf 'time,spi1-can2,0x7ff,标准帧-canfd,tx,1,%s \n' "$3" >"$work/csv"
}
traffic() { tools/compare_traffic --port "$1" --rows "$work/rows" --csv "$work/csv" --report "$work/report"; }
rows 5A "DE AD" 0x5a
expect 0 $'rows: 2 and 2, equal\nreceived by the module, and rows: 1 and 1, equal' traffic COM9
rows 5B "DE AD" 0x5a
expect 1 "received by the module, and rows: 1 and 1, DIFFERENT" traffic COM9
rows 5A "DE AE" 0x5a
expect 1 "the first that differs is number 1" traffic COM9
rows 5A "DE AD" 0x5b
expect 1 "and lines: 1 and 1, DIFFERENT" traffic COM9
expect 2 "nothing to compare" traffic COM8
expect 2 "nothing to compare" traffic COM7

# ---- packaging/windows/wine-program.sh, with a Wine that starts nothing the first times

cat >"$work/wine" <<'END'
#!/bin/sh
echo "$*" >>"$WORK/starts"
[ "$(wc -l <"$WORK/starts")" -gt "$SILENT_STARTS" ] || exit 1
echo "$1 says $2"
exit "$2"
END
chmod +x "$work/wine"
# wine_program SILENT_STARTS STATUS: then prints how often a start was tried.
wine_program() {
    rm -f "$work/starts"
    local status=0
    VKT_WINE=$work/wine WORK=$work SILENT_STARTS=$1 packaging/windows/wine-program.sh program "$2" || status=$?
    echo "starts: $(wc -l <"$work/starts")"
    return "$status"
}
expect 0 $'program says 0\nstarts: 1' wine_program 0 0
expect 3 $'program says 3\nstarts: 1' wine_program 0 3
expect 0 "status 1 and said nothing (start 2)"$'\nprogram says 0\nstarts: 3' wine_program 2 0
expect 1 $'(start 3)\nstarts: 3' wine_program 9 0

# ---- scripts/install.sh, with package tools that only say what they were asked

mkdir "$work/bin"
cat >"$work/bin/dpkg-query" <<'END'
#!/bin/sh
for package; do :; done
case " $INSTALLED " in *" $package "*) echo installed ;; *) echo not-installed ;; esac
END
printf '#!/bin/sh\necho "apt-get $*"\n' >"$work/bin/apt-get"
printf '#!/bin/sh\necho "${FAKE_ID:-0}"\n' >"$work/bin/id"
for tool in sh env dirname awk; do ln -s "$(command -v $tool)" "$work/bin/$tool"; done
chmod +x "$work"/bin/*
install() { env -i PATH="$work/bin" INSTALLED="$INSTALLED" FAKE_ID="${FAKE_ID:-0}" scripts/install.sh "$@"; }

INSTALLED="xauth xvfb"
expect 0 "" install display
expect 0 "" install
INSTALLED="xauth"
expect 0 "apt-get -q install -y --no-install-recommends xvfb" install display
INSTALLED=""
expect 0 "no-install-recommends xauth xvfb" install display
expect 2 "no section [nonsense]" install nonsense
expect 2 "no section [display" install "display xvfb"
FAKE_ID=1000
expect 1 "neither root nor a user with sudo: xauth xvfb" install display
printf '#!/bin/sh\necho "as root: $*"\n' >"$work/bin/sudo"
chmod +x "$work/bin/sudo"
expect 0 "as root: env DEBIAN_FRONTEND=noninteractive apt-get -q install -y" install display

# ---- packaging/windows/build-qt-prefix.sh

ready() {
    env -u QTWIN_PREFIX PATH="$work/bin:$PATH" INSTALLED="dpkg-dev xz-utils" QTWIN_ARCHIVE="$work/no.tar.xz" "$@" \
        packaging/windows/build-qt-prefix.sh --ready
}
expect 1 "" ready QTWIN_DIR="$work/none"
expect 1 "is no whole prefix" ready QTWIN_PREFIX="$work/none"
mkdir -p "$work"/qt/prefix/lib/cmake/Qt6{Core,Gui,Widgets,Test} "$work/qt/prefix/plugins/platforms"
touch "$work"/qt/prefix/lib/libQt6{Core,Gui,Widgets}.a "$work/qt/prefix/plugins/platforms/libqwindows.a"
expect 1 "is no whole prefix" ready QTWIN_PREFIX="$work/qt/prefix"
touch "$work/qt/prefix/lib/libQt6Test.a"
expect 0 "$work/qt/prefix" ready QTWIN_PREFIX="$work/qt/prefix"
expect 0 "$work/qt/prefix" ready QTWIN_DIR="$work/qt"
expect 1 "" ready QTWIN_DIR="$work/none"
tar -cJf "$work/qt.tar.xz" -C "$work/qt" prefix
expect 1 "No such file" ready QTWIN_DIR="$work/none" QTWIN_ARCHIVE="$work/qt.tar.xz"
echo "$(printf %064d 0)  qt.tar.xz" >"$work/qt.tar.xz.sha256"
expect 1 "FAILED" ready QTWIN_DIR="$work/none" QTWIN_ARCHIVE="$work/qt.tar.xz"
[ ! -e "$work/none" ] || { failed=$((failed + 1)) && echo "--ready left something behind"; }
(cd "$work" && sha256sum qt.tar.xz >qt.tar.xz.sha256)
expect 0 "$work/none/prefix" ready QTWIN_DIR="$work/none" QTWIN_ARCHIVE="$work/qt.tar.xz"
expect 0 "no-install-recommends xz-utils" ready QTWIN_DIR="$work/new" QTWIN_ARCHIVE="$work/qt.tar.xz" \
    INSTALLED=dpkg-dev
[ -f "$work/none/prefix/lib/libQt6Test.a" ] || { failed=$((failed + 1)) && echo "the archive was not unpacked"; }
tar -cJf "$work/qt.tar.xz" -C "$work/qt" prefix/lib
(cd "$work" && sha256sum qt.tar.xz >qt.tar.xz.sha256)
rm -r "$work/none"
expect 1 "holds no whole prefix" ready QTWIN_DIR="$work/none" QTWIN_ARCHIVE="$work/qt.tar.xz"

# ---- test.sh

expect 2 "unknown option --nonsense" ./test.sh --nonsense
expect 0 "--windows" ./test.sh --help
. scripts/count.sh
said() { printf '%s\n' "$@" >"$work/ctest" && count_ctest "$work/ctest"; }
expect 0 "107 0" said "100% tests passed, 0 tests failed out of 107"
expect 0 "6 1" said "86% tests passed, 1 tests failed out of 7"
expect 0 "5 2" said " 3/7 Test #3: a ....***Skipped 0.01 sec" "86% tests passed, 1 tests failed out of 7" \
    "The following tests did not run:" "	  3 - a (Skipped)"
expect 0 "0 1" said "No tests were found!!!"
expect 0 "0 1" said "ctest: not found"
ended() { printf '%s\n' "$@" >"$work/log" && count_last "$work/log"; }
expect 0 "5 2" ended "1 passed, 0 failed" "5 passed, 2 failed"
expect 0 "0 1" ended "5 passed, 2 failed" "killed"

echo "$passed passed, $failed failed"
[ "$failed" = 0 ]
