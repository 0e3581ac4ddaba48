#!/bin/bash
# interrupt_test.sh STAGE: Ctrl+C, a termination and a terminal that goes away each end vkt within a second (three on a
# busy machine), whatever it waits for, with status 130 and the port closed; so does a reader of its output that goes
# away, as an error.
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

"$bin/vkt_sim" COM7=VKT531A COM9=VKT610B --fault COM7:silent:times=ever \
    --traffic COM9:rate=40:lengths=2 --links "$work/ports" </dev/null >modules.txt &
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

# port_is_free: vkt can use COM7 again.
port_is_free() {
    "$bin/vkt" ports >ports.txt
    grep -q '^COM7 .* 可用$' ports.txt
}

# A terminal that goes away in the middle of a read.
requests=$((requests + 1))
python3 - "$bin/vkt" "$requests" <<'END' || problems=$((problems + 1))
import os, pty, sys, time
program, nth = sys.argv[1], int(sys.argv[2])
child, terminal = pty.fork()
if child == 0:
    os.execv(program, [program, "read", "COM7", "-m", "VKT531A"])
while open("modules.txt").read().count("handshake") < nth:
    time.sleep(0.02)
os.close(terminal)
began = time.monotonic()
status = os.waitstatus_to_exitcode(os.waitpid(child, 0)[1])
took = time.monotonic() - began
print(f"terminal gone: status {status} after {took * 1000:.0f} ms")
sys.exit(0 if status == 130 and took < 3 else 1)
END
port_is_free || { echo "the port is not free"; problems=$((problems + 1)); }

# Nobody reads the results any more, or there is no room for them.
"$bin/vkt" default VKT531A >/dev/full 2>err.txt
status=$?
echo "no room: status $status: $(cat err.txt)"
[ "$status" = 2 ] && grep -qx 'vkt: standard output: cannot be written' err.txt || problems=$((problems + 1))
(timeout 20 "$bin/vkt" monitor COM9 2>err.txt; echo "$?" >status.txt) | head -n 1 >first.txt
echo "reader gone: status $(cat status.txt) after $(cat first.txt)"
[ "$(cat status.txt)" = 2 ] && [ -s first.txt ] || problems=$((problems + 1))
exit $((problems > 0))
