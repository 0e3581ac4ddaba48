#!/bin/bash
# ./bench.sh: installs what is missing, builds the optimised programs and prints what bench/ measures, ratio first.
set -eu
cd "$(dirname "$0")"
. scripts/common.sh

scripts/install.sh build gui display bench
configure release -DVKT_BENCH=ON -DVKT_TESTS=OFF
build release VKTCfgTools empty_window bench_page_edit bench_table bench_session bench_timing_list bench_traffic_frame \
    bench_record_queue bench_assistant bench_traffic_window vkt_sim

say "measurements (release build)"
status=0
found=0
for program in build/release/bench/bench_*; do
    [ -f "$program" ] && [ -x "$program" ] || continue
    case $program in *_window) continue ;; esac # another one runs it
    found=1
    # In the laid-out tree: the page bench opens the program's own home page there.
    (cd build/release/stage/bin && with_display "$OLDPWD/$program") || status=1
done
if [ "$found" = 0 ]; then
    echo "bench.sh: no programs in build/release/bench" >&2
    exit 1
fi
exit "$status"
