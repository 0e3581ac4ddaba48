#!/bin/bash
# scripts/fuzz.sh BUILD SECONDS [TARGET...]: runs the fuzz targets built in the folder BUILD, each for SECONDS seconds,
# as many at a time as there are cores. Every run starts from fuzz/corpus/ and from what earlier runs found. An input
# that went wrong is kept in BUILD/fuzz/TARGET/. The last line is "N passed, N failed".
set -u
cd "$(dirname "$0")/.." || exit 2
. scripts/common.sh
if [ $# -lt 2 ]; then
    sed -n '2,/^set /{/^# /s/^# //p}' "$0" >&2
    exit 2
fi
build=$(cd "$1" && pwd) || exit 2
seconds=$2
shift 2
if [ $# -eq 0 ]; then
    for folder in fuzz/corpus/*/; do set -- "$@" "$(basename "$folder")"; done
fi

# fuzz_one TARGET: no input may take more than ten seconds or 2 GB, or leak.
fuzz_one() {
    local target=$1 seeds=$PWD/fuzz/corpus/$1 log
    cd "$build/fuzz/$target" || return 1
    log=$PWD/fuzz.log
    mkdir -p found
    if "./fuzz_$target" -max_total_time="$seconds" -timeout=10 -rss_limit_mb=2048 -use_value_profile=1 \
        -print_final_stats=1 -artifact_prefix="$PWD/" found "$seeds" >"$log" 2>&1; then
        echo "$target: $(sed -n 's/^stat::number_of_executed_units: *//p' "$log") inputs passed"
    else
        echo "$target: FAILED, see $log"
        grep -E "^does not hold|ERROR:|runtime error:|Test unit written" "$log"
        return 1
    fi
}

export ASAN_OPTIONS=detect_stack_use_after_return=1 UBSAN_OPTIONS=print_stacktrace=1
passed=0
failed=0
while [ $# -gt 0 ]; do
    running=()
    while [ $# -gt 0 ] && [ ${#running[@]} -lt "$jobs" ]; do
        fuzz_one "$1" &
        running+=($!)
        shift
    done
    for pid in "${running[@]}"; do
        if wait "$pid"; then passed=$((passed + 1)); else failed=$((failed + 1)); fi
    done
done
echo "$passed passed, $failed failed"
[ "$failed" -eq 0 ]
