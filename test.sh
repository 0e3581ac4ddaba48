#!/bin/bash
# ./test.sh [OPTION...]: installs what is missing, builds, and runs the tests. The last line is "N passed, N failed".
#   (none)      debug build, all tests, and the checks of --lint
#   --quick     as without an option, but without those that drive the whole program
#   --asan      all tests under the address and undefined-behaviour sanitisers, built with Clang
#   --tsan      all tests but those of windows under the thread sanitiser, built with Clang
#   --clang     the debug build with Clang without sanitisers, and all tests
#   --windows   the Windows cross build, tested under Wine; with the window program if there is a Qt for it:
#               QTWIN_PREFIX names one, or packaging/windows/build-qt-prefix.sh has made one
#   --lint      the checks of the source text and of the scripts only
#   --soak [N]  N minutes (10) of traffic, periodic sending and page changes in the debug build
#   --soak-asan [N]
#               the same under the address and undefined-behaviour sanitisers
#   --fuzz [N]  the fuzz targets, each for N seconds (30), under the address and undefined-behaviour sanitisers
#   --all       everything above but --clang, which the sanitised builds stand for, the soaks, which are played for a few
#               seconds, and --fuzz, which has no end: the targets' corpus is played with all tests
# Several options may be given. The exit status is 0 only when nothing failed.
set -u
cd "$(dirname "$0")" || exit 2
. scripts/common.sh
. scripts/count.sh
# File names that are not ASCII are part of the tests, and Wine takes their encoding from here.
export LC_ALL=C.UTF-8

usage() { sed -n '2,/^set /{/^# /s/^# //p}' test.sh; }

runs=
ctest_options=()
fuzz_seconds=30
soak_minutes=10
while [ $# -gt 0 ]; do
    option=$1
    shift
    case $option in
        --quick) runs="$runs dev lint" ctest_options=(-LE program) ;;
        --asan | --tsan | --clang | --windows | --lint) runs="$runs ${option#--}" ;;
        --fuzz)
            runs="$runs fuzz"
            if [[ ${1:-} =~ ^[0-9]+$ ]]; then
                fuzz_seconds=$1
                shift
            fi
            ;;
        --soak | --soak-asan)
            runs="$runs ${option#--}"
            if [[ ${1:-} =~ ^[0-9]+$ ]]; then
                soak_minutes=$1
                shift
            fi
            ;;
        --all) runs="dev asan tsan windows lint" ;;
        -h | --help) usage; exit 0 ;;
        *) echo "test.sh: unknown option $option" >&2; usage >&2; exit 2 ;;
    esac
done
runs=${runs:-dev lint}

passed=0
failed=0
broken=()
notes=()

# result NAME PASSED FAILED
result() {
    passed=$((passed + $2))
    failed=$((failed + $3))
    [ "$3" -eq 0 ] || broken+=("$1: $3 failed")
    echo "$1: $2 passed, $3 failed"
}

# Leaves out of ctest's output what went well.
brief() { grep -vE '^ *[0-9]+/[0-9]+ Test .* Passed |^ +Start +[0-9]+:'; }

# run_preset PRESET SECTIONS: builds a preset and runs its tests, with the surroundings that it names, under a virtual
# display.
run_preset() {
    local preset=$1 sections=$2 log=build/$1-tests.log
    say "$preset: build"
    # shellcheck disable=SC2086 # a list of words
    if ! scripts/install.sh $sections || ! configure "$preset" || ! build "$preset"; then
        result "$preset (build)" 0 1
        return
    fi
    say "$preset: tests"
    # More at a time than there are cores: much of what a test takes is waiting.
    with_display ctest --preset "$preset" -j "$((2 * jobs))" "${ctest_options[@]}" 2>&1 | tee "$log" | brief
    # shellcheck disable=SC2046 # two numbers
    result "$preset" $(count_ctest "$log")
}

run_dev() { run_preset dev "build gui display"; }
run_clang() { run_preset clang "build gui display clang"; }
# Clang builds sanitised code in about half the time, and is the second compiler that has to be content.
run_asan() { run_preset asan "build gui display clang"; }
# Without the window library: it comes uninstrumented, so every event that it hands over between threads would be
# reported. All threads of the program live in the rooms that are left.
run_tsan() { run_preset tsan "build display clang"; }

# The programs of this system that the Windows tests need: those of the debug build, or small ones without windows.
configure_host() {
    if [ "$host" = dev ]; then configure dev; else configure dev -B build/host -DVKT_GUI=OFF -DVKT_TESTS=OFF; fi
}

# pack_windows FOLDER: makes the Windows packages, and unpacks the archive into the folder.
pack_windows() {
    say "windows: packages"
    rm -rf dist "$1"
    packaging/windows/build.sh && unzip -q dist/*.zip -d "$1"
}

# try_windows_packages STAGE: archive and installer as a user takes them, and what the unpacked program shows beside what
# the one of this system shows.
try_windows_packages() {
    local log=build/windows-packages.log
    say "windows: the packages under Wine"
    with_display packaging/windows/wine-tests.sh --run tests/packages/windows_test.sh 2>&1 | tee "$log"
    # shellcheck disable=SC2046 # two numbers
    result "windows packages" $(count_last "$log")
    with_display packaging/windows/wine-tests.sh --run tests/packages/looks_test.sh build/dev/stage "$1" 2>&1 | tee "$log"
    # shellcheck disable=SC2046
    result "windows looks" $(count_last "$log")
}

# Two runs at a time, each with every other test, its own Wine, ports and display: much of what a test takes is waiting.
# Which tests there are is found out before, once.
wine_tests() {
    local half log=build/windows-tests second found played=0 good bad
    "$@" packaging/windows/wine-tests.sh -N "${ctest_options[@]}" >"$log-found.log" 2>&1 || cat "$log-found.log"
    found=$(sed -n 's/^Total Tests: //p' "$log-found.log")
    set -m # a process group of its own, so that all of it ends when this script is broken off
    VKT_WINE_DIR=$PWD/build/wine-2 "$@" packaging/windows/wine-tests.sh -I 2,,2 "${ctest_options[@]}" \
        >"$log-2.log" 2>&1 </dev/null &
    second=$!
    set +m
    # shellcheck disable=SC2064 # this one
    trap "kill -- -$second 2>/dev/null" EXIT
    "$@" packaging/windows/wine-tests.sh -I 1,,2 "${ctest_options[@]}" 2>&1 | tee "$log-1.log" | brief
    wait "$second"
    trap - EXIT
    brief <"$log-2.log"
    for half in 1 2; do
        read -r good bad <<<"$(count_ctest "$log-$half.log")"
        result "windows ($half of 2)" "$good" "$bad"
        played=$((played + good + bad))
    done
    [ "$played" = "$found" ] || result "windows ($played of ${found:-no} tests were played)" 0 1
}

run_windows() {
    local sections="build windows" options=(-DVKT_GUI=OFF) display=() prefix
    local host=host host_programs=(pty_host vkt_sim) program_stage=''
    if prefix=$(packaging/windows/build-qt-prefix.sh --ready); then
        sections="$sections gui display windows-package" options=(-DVKT_GUI=ON "-DQTWIN_PREFIX=$prefix") display=(with_display)
        host=dev host_programs+=(VKTCfgTools)
    elif [ -n "${QTWIN_PREFIX:-}" ]; then
        result "windows (QTWIN_PREFIX)" 0 1
        return
    else
        notes+=("windows: the window program was NOT built: no Qt for it (packaging/windows/build-qt-prefix.sh makes one)")
    fi
    say "windows: build"
    # The pseudo-terminals that stand for COM ports are made by programs of this system.
    # shellcheck disable=SC2086 # a list of words
    if ! scripts/install.sh $sections || ! configure windows "${options[@]}" || ! build windows || ! configure_host ||
        ! build "$host" "${host_programs[@]}"; then
        result "windows (build)" 0 1
        return
    fi
    export VKT_HOST_BUILD=$PWD/build/$host
    if [ "$host" = dev ] && ! pack_windows "build/解压 unpacked"; then
        result "windows (packages)" 0 1
        return
    fi
    # The whole program is played from what users unpack.
    [ "$host" != dev ] || program_stage=$(echo "$PWD/build/解压 unpacked"/*)
    say "windows: tests under Wine"
    VKT_PROGRAM_STAGE=$program_stage wine_tests "${display[@]}"
    [ "$host" != dev ] || try_windows_packages "$program_stage"
}

# soak PRESET SECTIONS. Not by ctest, which ends a test after two minutes, however long it is told to wait.
soak() {
    local preset=$1 sections=$2 log=$PWD/build/soak-$1.log seconds=$((soak_minutes * 60)) good=0
    local folder=build/$1/tests/monitor/pages
    local -x QT_QPA_PLATFORM=offscreen VKT_SOAK_SECONDS=$seconds
    local -x ASAN_OPTIONS=detect_stack_use_after_return=1 UBSAN_OPTIONS=print_stacktrace=1
    local -x LSAN_OPTIONS=print_suppressions=0:suppressions=$PWD/tests/lsan.supp
    say "soak: build ($preset)"
    # shellcheck disable=SC2086 # a list of words
    if ! scripts/install.sh $sections || ! configure "$preset" || ! build "$preset" tests_monitor_pages; then
        result "soak (build)" 0 1
        return
    fi
    say "soak: $soak_minutes minutes ($preset)"
    (cd "$folder" && with_display timeout $((seconds + 300)) ./tests_monitor_pages '--gtest_filter=soak.*') 2>&1 | tee "$log"
    [ "${PIPESTATUS[0]}" -eq 0 ] && grep -q '^\[  PASSED  \] 1 test' "$log" && good=1
    result "soak ($preset)" "$good" $((1 - good))
}
run_soak() { soak dev "build gui display"; }
run_soak-asan() { soak asan "build gui display clang"; }

run_fuzz() {
    local log=build/fuzz-tests.log
    say "fuzz: build"
    if ! scripts/install.sh build clang || ! configure fuzz || ! build fuzz; then
        result "fuzz (build)" 0 1
        return
    fi
    say "fuzz: $fuzz_seconds seconds a target"
    scripts/fuzz.sh build/fuzz "$fuzz_seconds" 2>&1 | tee "$log"
    # shellcheck disable=SC2046 # two numbers
    result fuzz $(count_last "$log")
}

run_lint() {
    say "lint"
    if ! scripts/install.sh build lint; then
        result "lint (install)" 0 1
        return
    fi
    local check ok=0 bad=0
    for check in "tools/lint --self-test" tests/tools/scripts_test.sh tests/tools/runner_test.sh tools/lint \
        tests/tools/papers_test.py "tools/include_picture --check"; do
        if $check; then ok=$((ok + 1)); else bad=$((bad + 1)); fi
    done
    result lint "$ok" "$bad"
}

mkdir -p build
for run in $runs; do "run_$run"; done

say "result"
for line in "${notes[@]}" "${broken[@]}"; do echo "$line"; done
echo "$passed passed, $failed failed"
[ "$failed" -eq 0 ] && [ "$passed" -gt 0 ]
