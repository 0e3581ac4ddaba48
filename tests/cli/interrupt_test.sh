#!/bin/bash
# interrupt_test.sh STAGE: Ctrl+C, a termination and a terminal that goes away each end vkt within a second (three on a
# busy machine), whatever it waits for, with status 130 and the port closed.
set -u
bin=$(readlink -f "$1")/bin
work=$(mktemp -d /tmp/vkt_interrupt.XXXXXX)
modules='' running=''
finish() {
    for process in $running $modules; do kill -KILL "$process" 2>/dev/null; done
    wait
    rm -rf "$work"
}
trap finish EXIT
cd "$work" || exit 2
now_ms() { echo $(($(date +%s%N) / 1000000)); }
problems=0

"$bin/vkt_sim" COM7=VKT531A --fault COM7:silent:times=ever --links "$work/ports" </dev/null >modules.txt &
modules=$!
until VKT_COM_PORTS=$(sed -n 's/^VKT_COM_PORTS=//p' modules.txt) && [ -n "$VKT_COM_PORTS" ]; do sleep 0.05; done
export VKT_COM_PORTS

requests=0
for signal in INT TERM HUP; do
    # A job of a script ignores SIGINT from its start; env gives it back.
    env --default-signal=INT "$bin/vkt" read COM7 -m VKT531A >out.txt 2>err.txt &
    running=$!
    requests=$((requests + 1))
    until [ "$(grep -c handshake modules.txt)" -ge "$requests" ]; do
        kill -0 "$running" 2>/dev/null || { echo "vkt ended too early"; cat err.txt; exit 1; }
        sleep 0.02
    done
    began=$(now_ms)
    kill -"$signal" "$running"
    wait "$running"
    status=$?
    took=$(($(now_ms) - began))
    running=''
    echo "$signal: status $status after $took ms: $(cat err.txt)"
    [ "$status" = 130 ] && [ "$took" -le 3000 ] && grep -qx 'vkt: interrupted' err.txt || problems=$((problems + 1))
done
exit $((problems > 0))
