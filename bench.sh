#!/bin/bash
# ./bench.sh [--long]: installs what is missing, builds the optimised programs and prints what bench/ measures, ratio
# first. --long: the data page under traffic for 60 seconds a rate instead of 15.
set -eu
cd "$(dirname "$0")"
. scripts/common.sh

traffic_seconds=15
case ${1:-} in
    --long) traffic_seconds=60 ;;
    '') ;;
    *) echo "bench.sh: unknown option $1" >&2; exit 2 ;;
esac

scripts/install.sh build gui display bench
configure release -DVKT_BENCH=ON -DVKT_TESTS=OFF
build release VKTCfgTools empty_window bench_page_edit bench_table bench_session bench_timing_list bench_traffic_frame \
    bench_record_queue bench_assistant bench_traffic_window vkt vkt_sim

say "measurements (release build)"
status=0
found=0
for program in build/release/bench/bench_*; do
    [ -f "$program" ] && [ -x "$program" ] || continue
    case $program in *_window) continue ;; esac # another one runs it
    found=1
    arguments=()
    [ "${program##*/}" != bench_traffic ] || arguments=("$traffic_seconds")
    # In the laid-out tree: the page bench opens the program's own home page there.
    (cd build/release/stage/bin && with_display "$OLDPWD/$program" "${arguments[@]}") || status=1
done
if [ "$found" = 0 ]; then
    echo "bench.sh: no programs in build/release/bench" >&2
    exit 1
fi
exit "$status"
