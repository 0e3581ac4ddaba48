# Counting what the tests of the packages try; sourced (bash). $work is the test's folder.
# shellcheck disable=SC2154,SC2034 # the test's own
passed=0 failed=0

# check WHAT COMMAND...: the command must succeed; what it said is shown when it does not.
check() {
    local what=$1
    shift
    if "$@" >"$work/out.txt" 2>&1; then
        passed=$((passed + 1))
    else
        failed=$((failed + 1))
        echo "FAILED: $what"
        tail -n 30 "$work/out.txt"
    fi
}

# check_end: the last line, and the status.
check_end() {
    echo "$passed passed, $failed failed"
    [ "$failed" -eq 0 ] && [ "$passed" -gt 0 ]
}
