#!/usr/bin/env bash
# Runs one program of the Windows build under Wine: wine-program.sh PROGRAM [ARGUMENT...]
#
# On a busy machine Wine itself now and then ends at once, with a status but without having started the program. Every
# program that runs through here says something as soon as it starts, so one that failed and said nothing did not start:
# it is started again, at most twice, and a line says so. What has said anything is never run again.
wine=${VKT_WINE:-}
for candidate in /usr/lib/wine/wine64 /usr/bin/wine64 /usr/bin/wine; do
    [ -n "$wine" ] || ! [ -x "$candidate" ] || wine=$candidate
done
output=$(mktemp) || exit 2
trap 'rm -f "$output"' EXIT
for start in 1 2 3; do
    "$wine" "$@" 2>&1 | tee "$output"
    status=${PIPESTATUS[0]}
    if [ "$status" -eq 0 ] || [ -s "$output" ]; then break; fi
    echo "wine-program: $1 ended with status $status and said nothing (start $start)"
done
exit "$status"
