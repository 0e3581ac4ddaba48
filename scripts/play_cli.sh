#!/bin/bash
# scripts/play_cli.sh STAGE: plays a session of vkt in the terminal, against simulated modules. STAGE is a build's stage
# folder. Every command is printed before it runs; the exit status is 0 only if each ended as it should, and what the
# module received is what was shown before.
set -u
bin=$(readlink -f "$1")/bin
work=$(mktemp -d /tmp/vkt_play.XXXXXX)
modules=''
finish() {
    [ -z "$modules" ] || { kill "$modules" 2>/dev/null; wait "$modules"; }
    rm -rf "$work"
}
trap finish EXIT
cd "$work" || exit 2

"$bin/vkt_sim" COM7=VKT531A COM8=VKT510A COM9=VKT610B --traffic COM9:rate=20:count=5:lengths=2 --links "$work/ports" \
    --report "$work/report.txt" </dev/null >modules.txt &
modules=$!
until VKT_COM_PORTS=$(sed -n 's/^VKT_COM_PORTS=//p' modules.txt) && [ -n "$VKT_COM_PORTS" ]; do
    kill -0 "$modules" 2>/dev/null || { echo "play_cli: the simulated modules do not start" >&2; exit 1; }
    sleep 0.05
done
export VKT_COM_PORTS

problems=0
# play STATUS ARGUMENTS...: runs vkt, which must end with the status.
play() {
    local wanted=$1 status
    shift
    printf '\n$ vkt'
    printf ' %q' "$@"
    echo
    "$bin/vkt" "$@"
    status=$?
    [ "$status" = 0 ] || echo "(exit status $status)"
    [ "$status" = "$wanted" ] && return
    echo "PROBLEM: expected $wanted"
    problems=$((problems + 1))
}

play 0 ports
play 0 read COM7 -m VKT531A -o my.json
play 0 set my.json can_baud_rate=500K change_star=2 --note 'bench 3'
play 1 diff my.json COM7
play 0 show my.json --script
play 0 write my.json COM7 --check
play 2 set my.json can_baud_rate=501K
play 2 raed COM7
play 3 read COM77 -m VKT531A
play 4 read COM8 -m VKT610B
play 0 timing --nominal 500K --data 2M --sample 80
play 0 monitor COM9 --candump --seconds 1
play 0 send COM9 '123#1122' --every 10ms --count 3

"$bin/vkt" show my.json >shown.txt
kill "$modules"
wait "$modules"
modules=''
grep -qxF "request=$(cat shown.txt)" report.txt || { echo "PROBLEM: COM7 did not receive what was shown" && problems=$((problems + 1)); }
grep -q '^traffic_received=3$' report.txt || { echo "PROBLEM: COM9 did not receive three frames" && problems=$((problems + 1)); }
[ "$problems" = 0 ] && printf '\nwhat the modules received is what was shown\n'
exit $((problems > 0))
