# Reads what ctest and other test programs said; sourced (bash).

# count_ctest LOG: prints "PASSED FAILED". A test that was skipped, disabled or not run is a failure, and so is a run
# that came to no summary or found no test.
count_ctest() {
    local summary total bad skipped
    summary=$(grep -E '^[0-9]+% tests passed, [0-9]+ tests? failed out of [0-9]+' "$1" | tail -n 1)
    if [ -z "$summary" ]; then
        echo "0 1"
        return
    fi
    bad=$(echo "$summary" | sed -E 's/.*passed, ([0-9]+) tests?.*/\1/')
    total=${summary##* }
    skipped=$(grep -cE '\((Skipped|Disabled)\)$' "$1")
    echo "$((total - bad - skipped)) $((bad + skipped))"
}

# count_last LOG: the numbers of a last line "N passed, N failed"; a log that ends otherwise is one failure.
count_last() { tail -n 1 "$1" | sed -nE 's/^([0-9]+) passed, ([0-9]+) failed$/\1 \2/p;t;s/.*/0 1/p'; }
