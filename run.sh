#!/bin/bash
# ./run.sh [--demo] [ARGUMENT...]: installs what is missing, builds, and opens the tool with simulated modules:
# a VKT531A on COM7, a VKT510A on COM8 and a VKT610B on COM9. ARGUMENTs go to the tool (width, height, console).
# With --demo, or where there is no display, sessions with COM7 and the monitor of COM9 are played in the same window under a virtual display:
# each step is printed, screenshots are left in build/release/shots, and the exit status is 0 only if what the
# module received is what the code view showed, and if the CAN frames that the module on COM9 sent and received are the
# rows of the table and the lines of the record file.
# With --cli a session of vkt, the program without windows, is played in the terminal (scripts/play_cli.sh); it needs no
# Qt and no display.
set -eu
cd "$(dirname "$0")"
. scripts/common.sh

if [ "${1:-}" = --cli ]; then
    scripts/install.sh build
    say "build"
    configure release -B build/cli -DVKT_GUI=OFF -DVKT_BENCH=OFF -DVKT_TESTS=OFF
    build cli vkt vkt_sim vkt_bps_data_list
    say "a session in the terminal"
    exec scripts/play_cli.sh build/cli/stage
fi

demo=
if [ "${1:-}" = --demo ]; then
    demo=1
    shift
fi
if [ -z "${DISPLAY:-}${WAYLAND_DISPLAY:-}" ]; then demo=1; fi

sections="build gui"
if [ -n "$demo" ]; then
    sections="$sections display"
elif [ -z "${DISPLAY:-}" ]; then
    sections="$sections wayland"
fi
# shellcheck disable=SC2086 # a list of words
scripts/install.sh $sections

say "build"
configure release -DVKT_BENCH=OFF -DVKT_TESTS=OFF
build release

out=$PWD/build/release
shots=$out/shots
report=$out/received.txt
mkdir -p "$shots" "$out/stage/log"
rm -f "$report" "$shots"/*

say "simulated modules"
traffic="COM9:rate=20${demo:+:count=40}:check=on"
"$out/stage/bin/vkt_sim" COM7=VKT531A COM8=VKT510A COM9=VKT610B --traffic "$traffic" --report "$report" </dev/null \
    >"$out/modules.txt" &
modules=$!
stop_modules() {
    kill "$modules" 2>/dev/null || true
    wait "$modules" || true
}
trap stop_modules EXIT

until ports=$(sed -n 's/^VKT_COM_PORTS=//p' "$out/modules.txt") && [ -n "$ports" ]; do
    kill -0 "$modules" 2>/dev/null || { echo "run.sh: the simulated modules do not start" >&2; exit 1; }
    sleep 0.1
done
echo "$ports" | tr ';' '\n'
export VKT_COM_PORTS=$ports

cd "$out/stage/bin"
if [ -z "$demo" ]; then
    say "the tool (close its window to end)"
    ./VKTCfgTools "$@"
    exit
fi

say "sessions, played under a virtual display"
rm -rf can_record_data.csv setting.json ../../settings
# The script's pictures and lists go to ../../shots.
VKT_SETTINGS=../../settings VKT_DRIVE=$OLDPWD/tests/program/demo.drive with_display ./VKTCfgTools "$@"
stop_modules
trap - EXIT
say "what the module received, and what the code view showed"
"$OLDPWD/tools/compare_frame" --port COM7 --dump "$shots/code_view.txt" --report "$report"
say "the CAN frames of the module, the table and the record file"
"$OLDPWD/tools/compare_traffic" --port COM9 --rows "$shots/rows.txt" --csv can_record_data.csv --report "$report"
echo "screenshots: build/release/shots"
