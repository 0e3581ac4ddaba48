#!/usr/bin/env bash
# Runs the Windows build's tests under Wine, with pseudo-terminals as COM ports.
#
#   packaging/windows/wine-tests.sh [ctest arguments]
#   packaging/windows/wine-tests.sh --run COMMAND...     runs one command in the same surroundings instead of ctest
#
# VKT_WINDOWS_BUILD (build/windows) is the cross build, VKT_HOST_BUILD (build/dev) the build on this system that holds
# stage/bin/pty_host and, for scripts that drive the whole program, stage/bin/vkt_sim; VKT_WINE_DIR (build/wine) the
# folder for Wine's own files. Windows need a display: run this with a virtual one. Everything that is started here is
# stopped again, whichever way the script ends.
set -euo pipefail
# File names that are not ASCII are part of the tests, and Wine takes their encoding from here.
export LC_ALL=C.UTF-8

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/../.." && pwd)
windows_build=${VKT_WINDOWS_BUILD:-$root/build/windows}
host_build=${VKT_HOST_BUILD:-$root/build/dev}
wine_dir=${VKT_WINE_DIR:-$root/build/wine}
pty_host=$host_build/stage/bin/pty_host
ports=(COM7 COM8 COM9 COM12 COM{21..36})

die() {
    echo "wine-tests: $*" >&2
    exit 1
}

find_program() {
    local candidate
    for candidate in "$@"; do
        if [ -x "$candidate" ]; then
            echo "$candidate"
            return
        fi
    done
    die "none of $* is installed"
}

# Without "winedbg.exe=d" a crashed program ends with status 0 now and then, and looks like one that passed.
prepare_environment() {
    wine=$(find_program /usr/lib/wine/wine64 /usr/bin/wine64 /usr/bin/wine)
    wineserver=$(find_program /usr/lib/wine/wineserver64 /usr/lib/wine/wineserver /usr/bin/wineserver)
    [ -x "$pty_host" ] || die "$pty_host is missing: build the target pty_host on this system first"
    mkdir -p "$wine_dir/ports/folder"
    # For tests/program/run_program_test.sh.
    export VKT_WINE=$wine VKT_WINE_PORTS=$wine_dir/ports VKT_HOST_STAGE=$host_build/stage
    export WINEPREFIX=$wine_dir/prefix WINEDEBUG=${WINEDEBUG:--all}
    export WINEDLLOVERRIDES="winedbg.exe=d;winemenubuilder.exe=d;mscoree,mshtml="
    exec 9>"$wine_dir/lock"
    flock -w 1800 9 || die "another run holds $wine_dir/lock"
}

work_pid='' server_pid='' pty_pid=''
stop_all() {
    local status=$?
    trap - EXIT
    if [ -n "$work_pid" ]; then kill "$work_pid" 2>/dev/null || true; fi
    if [ -n "$server_pid" ]; then
        "$wineserver" -k 9>&- || true
        wait "$server_pid" || true
    fi
    if [ -n "$pty_pid" ]; then
        kill "$pty_pid" 2>/dev/null || true
        wait "$pty_pid" 2>/dev/null || true
    fi
    exit "$status"
}

# registry KEY NAME VALUE
registry() { "$wine" reg add "$1" /v "$2" /d "$3" /f >>"$wine_dir/wineboot.log" 2>&1 </dev/null 9>&-; }

# Wine reads the names of the ports only when its server starts, so they are registered with a server of their own.
make_prefix() {
    local key='HKLM\Software\Wine\Ports' port wanted="${ports[*]} unmanaged described $wine_dir"
    if [ "$(cat "$wine_dir/prefix.ready" 2>/dev/null)" = "$wanted" ]; then return; fi
    echo "wine-tests: preparing $WINEPREFIX"
    rm -rf "$WINEPREFIX" "$wine_dir/prefix.ready"
    # Their output must not be this script's: the server would keep it open after its end.
    "$wine" wineboot -i >"$wine_dir/wineboot.log" 2>&1 </dev/null 9>&-
    for port in "${ports[@]}"; do registry "$key" "$port" "$wine_dir/ports/${port,,}"; done
    registry "$key" COM20 "$wine_dir/ports/folder"
    # What Windows keeps of a plugged adapter, so that there is one to describe.
    key='HKLM\System\CurrentControlSet\Enum\USB\VID_1209&PID_0001\0001'
    registry "$key" ClassGUID '{4d36e978-e325-11ce-bfc1-08002be10318}'
    registry "$key" FriendlyName '测试 adapter (COM12)'
    registry "$key" Mfg '@oem1.inf,%maker%;Bench'
    registry "$key\Device Parameters" PortName COM12
    # The virtual display has no window manager; Wine would wait for its answers, 2 s each.
    registry 'HKCU\Software\Wine\X11 Driver' Managed N
    "$wineserver" -k 9>&- || true
    "$wineserver" -w 9>&-
    echo "$wanted" >"$wine_dir/prefix.ready"
}

# Tries other TCP ports when these are taken.
start_pty_host() {
    local log=$wine_dir/pty_host.log attempt base i arguments
    for attempt in 1 2 3 4 5 6 7 8; do
        base=$((20000 + RANDOM % 10000))
        arguments=() VKT_PTY_HOST=
        for i in "${!ports[@]}"; do
            arguments+=("${ports[i]}=$wine_dir/ports/${ports[i],,}:$((base + i))")
            VKT_PTY_HOST+="${ports[i]}=$((base + i));"
        done
        "$pty_host" "${arguments[@]}" >"$log" 2>&1 </dev/null 9>&- &
        pty_pid=$!
        while kill -0 "$pty_pid" 2>/dev/null; do
            if grep -q '^ready' "$log"; then
                export VKT_PTY_HOST
                return
            fi
            sleep 0.05
        done
        wait "$pty_pid" || true
        pty_pid=
    done
    cat "$log" >&2
    die "pty_host does not start (attempt $attempt)"
}

# With a server that is there already a program starts at once, and the server says nothing when a port vanishes.
# It is who opens files: without an administrator's right to write anywhere it does so as a user would.
start_server() {
    local as_user=()
    [ "$(id -u)" != 0 ] || as_user=(setpriv --bounding-set -dac_override --inh-caps -dac_override)
    "${as_user[@]}" "$wineserver" -f -p >/dev/null 2>&1 </dev/null 9>&- &
    server_pid=$!
    "$wine" wineboot >"$wine_dir/wineboot.log" 2>&1 </dev/null 9>&-
}

prepare_environment
trap stop_all EXIT
trap 'exit 130' INT
trap 'exit 143' TERM HUP
make_prefix
start_pty_host
start_server
# In the background, so that a signal is heard at once. One test at a time: they share the ports.
if [ "${1:-}" = --run ]; then
    shift
    "$@" 9>&- &
else
    ctest --test-dir "$windows_build" --output-on-failure -j 1 "$@" 9>&- &
fi
work_pid=$!
wait "$work_pid"
