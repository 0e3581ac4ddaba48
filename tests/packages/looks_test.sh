#!/bin/bash
# tests/packages/looks_test.sh LINUX_STAGE WINDOWS_STAGE: plays the scripts that show every page in both programs, and
# compares what they show. Run it by packaging/windows/wine-tests.sh --run. The last line is "N passed, N failed".
set -u
cd "$(dirname "$0")/../.." || exit 2
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
for script in screens_generic screens_vkt510a screens_vkt610b; do
    for side in linux windows; do
        if [ $side = linux ]; then stage=$1; else stage=$2; fi
        VKT_PROGRAM_TEST_SLOWNESS=6 tests/program/run_program_test.sh "tests/program/$script.drive" "$stage" "$work/$side" \
            >"$work/output.txt" 2>&1 || { tail -n 20 "$work/output.txt" && echo "0 passed, 1 failed" && exit 1; }
    done
done
[ -z "${VKT_KEEP_LOOKS:-}" ] || cp -r "$work/linux" "$work/windows" "$VKT_KEEP_LOOKS"
/usr/bin/python3 tests/packages/compare_looks.py "$work/linux" "$work/windows"
