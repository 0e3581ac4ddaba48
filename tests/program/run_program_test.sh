#!/bin/bash
# run_program_test.sh SCRIPT STAGE [OUT]: plays a driver script in the real program, against simulated modules, in a
# tree of its own and on a virtual display of its own (on the offscreen platform where there is none). A Windows program
# is played under Wine, with the ports and the display of packaging/windows/wine-tests.sh.
#
# STAGE is the build's stage folder (bin/, res/, tools/); VKT_PROGRAM_STAGE overrides it. What is left goes to OUT if it is given. Lines of the script
# that start with #! say what the run needs and what must come out of it:
#   #! sim ARGUMENTS       vkt_sim's arguments (COM7=VKT531A ...); without this line no module runs
#   #! arguments TEXT      the program's arguments (1280 750), or none; VKT_PROGRAM_ARGUMENTS overrides them
#   #! env NAME=VALUE      for the program
#   #! folder NAME         the tree's folder, with bin/, res/ and log/ in it (stage)
#   #! screen WxH          of the virtual display (1600x1000); VKT_PROGRAM_SCREEN overrides it
#   #! settings TEXT       what settings.json in the user's settings folder ($VKT_SETTINGS) holds at the start
#   #! before COMMAND      shell command, run in the fresh tree's bin/ before the program starts; a process that it
#                          leaves in the background ends with the test
#   #! on "TEXT" COMMAND   vkt_sim command, given when the program first prints TEXT (which it must do)
#   #! status N            the program's exit status (0)
#   #! prints TEXT         the program must print TEXT
#   #! complains TEXT      the same, on its output and on its errors
#   #! module TEXT         a line of vkt_sim's report must be TEXT
#   #! received HEX        a CAN frame that the modules received ("AA 05 ..."); all of them, in order, if any is given
#   #! after COMMAND       shell command, run in the tree's bin/ when the program has ended; it must succeed
#   #! not-module TEXT     no line of vkt_sim's report may begin with TEXT
#   #! ends-within MS      from the first "ok ... close", or "FAIL ...", to the program's end (1500)
#   #! allow-conditions    failed preconditions may be logged
set -u
script=$(readlink -f "$1")
stage=$(readlink -f "${VKT_PROGRAM_STAGE:-$2}")
program=("$stage/bin/VKTCfgTools")
simulator=$stage/bin/vkt_sim
under_wine=''
if [ -f "$stage/bin/VKTCfgTools.exe" ]; then
    under_wine=1
    program=("${VKT_WINE:?run this by packaging/windows/wine-tests.sh}" "$stage/bin/VKTCfgTools.exe")
    simulator=$VKT_HOST_STAGE/bin/vkt_sim # it makes pseudo-terminals, so it is this system's
fi
limit_s=${VKT_PROGRAM_TEST_LIMIT:-100}

tree=$(mktemp -d /tmp/vkt_program.XXXXXX)
out=${3:-}
sim=''
display=''
children=()
wine_links=()

# shellcheck disable=SC2317 # called by the trap
finish() {
    exec 5>&-
    for child in "${children[@]}" $sim $display; do kill "$child" 2>/dev/null; done
    for child in "${children[@]}" $sim $display; do wait "$child" 2>/dev/null; done
    [ "${#wine_links[@]}" = 0 ] || rm -f "${wine_links[@]}"
    if [ -n "$out" ]; then
        mkdir -p "$out" && cp -r "$tree"/shots/. "$tree"/*.txt "$out" 2>/dev/null
    fi
    rm -rf "$tree"
}
trap finish EXIT
problems=0
problem() {
    echo "PROBLEM: $*"
    problems=$((problems + 1))
}
# directive NAME: the values of all lines of that name.
directive() { sed -n "s/^#! $1\( \(.*\)\)\?\$/\2/p" "$script"; }
now_ms() { echo $(($(date +%s%N) / 1000000)); }
# wait_for SECONDS COMMAND...: until the command succeeds.
wait_for() {
    local end=$(($(now_ms) + $1 * 1000))
    shift
    until "$@"; do
        [ "$(now_ms)" -lt $end ] || return 1
        sleep 0.02
    done
}

# ---- the tree ---------------------------------------------------------------------------------------------------------
folder=$(directive folder)
folder=$tree/${folder:-stage}
mkdir -p "$folder/bin" "$folder/log" "$tree/shots"
cp -rL "$stage/res" "$folder/res"
[ -d "$stage/tools" ] && ln -s "$stage/tools" "$folder/tools"
cd "$folder/bin" || exit 2
# No message bus: the run depends on nothing of the desktop it is started from.
export XDG_RUNTIME_DIR=$tree DBUS_SESSION_BUS_ADDRESS=disabled: NO_AT_BRIDGE=1
# Settings of the run's own; XDG_CONFIG_HOME is where the window library keeps the file dialog's columns.
export VKT_SETTINGS=$tree/settings XDG_CONFIG_HOME=$tree/config
unset VKT_COM_PORTS VKT_COM_FAULT VKT_DEBUGGER_LOG

# ---- display ----------------------------------------------------------------------------------------------------------
if [ -n "$under_wine" ]; then
    : # Wine's desktop is on its own display
elif command -v Xvfb >/dev/null; then
    screen=${VKT_PROGRAM_SCREEN:-$(directive screen)}
    Xvfb -displayfd 3 -screen 0 "${screen:-1600x1000}x24" -nolisten tcp 3>"$tree/display.txt" 2>/dev/null &
    display=$!
    wait_for 20 grep -q . "$tree/display.txt" || { echo "no virtual display" && exit 2; }
    DISPLAY=:$(head -1 "$tree/display.txt")
    export DISPLAY QT_QPA_PLATFORM=xcb
else
    export QT_QPA_PLATFORM=offscreen
fi

# ---- modules ----------------------------------------------------------------------------------------------------------
arguments=$(directive sim)
if [ -n "$arguments" ]; then
    mkfifo "$tree/commands"
    # shellcheck disable=SC2086 # a list of words
    "$simulator" $arguments --links "$tree/ports" --report "$tree/report.txt" \
        <"$tree/commands" >"$tree/modules.txt" 2>&1 &
    sim=$!
    exec 5>"$tree/commands"
    wait_for 20 grep -q '^VKT_COM_PORTS=' "$tree/modules.txt" || { cat "$tree/modules.txt" && exit 2; }
    VKT_COM_PORTS=$(sed -n 's/^VKT_COM_PORTS=//p' "$tree/modules.txt")
    export VKT_COM_PORTS
    # Wine takes a port's device from its registry, where it is a link that stays the same.
    if [ -n "$under_wine" ]; then
        for port in $(echo "$VKT_COM_PORTS" | tr ';' ' '); do
            name=${port%%=*}
            wine_links+=("$VKT_WINE_PORTS/${name,,}")
            ln -sfn "${port#*=}" "$VKT_WINE_PORTS/${name,,}"
        done
    fi
fi

# A look for pictures (make_screenshots.sh).
[ -z "${VKT_PROGRAM_DARK:-}" ] || echo '{"dark": true}' >ui.json

# ---- the program ------------------------------------------------------------------------------------------------------
export VKT_DRIVE=$script
mapfile -t environment < <(directive env)
for setting in "${environment[@]}"; do export "${setting?}"; done
mapfile -t lines < <(directive settings)
[ "${#lines[@]}" = 0 ] || { mkdir -p "$VKT_SETTINGS" && printf '%s\n' "${lines[@]}" >"$VKT_SETTINGS/settings.json"; }
mapfile -t commands < <(directive before)
for command in "${commands[@]}"; do eval "$command"; done
for job in $(jobs -p); do
    [ "$job" = "$sim" ] || [ "$job" = "$display" ] || children+=("$job")
done

mapfile -t reactions < <(directive on)
# Reads what the program prints, and gives the modules their commands. Says how many lines it saw, and which commands
# it gave.
follow() {
    local line reaction text lines=0
    while IFS= read -r line; do
        lines=$((lines + 1))
        line=${line%$'\r'}
        [ -s "$tree/close_ms" ] || case $line in "ok   "*" close" | "FAIL "*) now_ms >"$tree/close_ms" ;; esac
        for i in "${!reactions[@]}"; do
            reaction=${reactions[$i]#\"}
            text=${reaction%%\"*}
            if [[ $line == *"$text"* ]]; then
                printf '%s\n' "${reaction#*\" }" >&5
                printf '%s\n' "$i" >>"$tree/given.txt"
                unset "reactions[$i]"
            fi
        done
    done
    printf '%s\n' "$lines" >"$tree/followed.txt"
}
arguments=${VKT_PROGRAM_ARGUMENTS:-$(directive arguments)}
[ "$arguments" != none ] || arguments=' '
# shellcheck disable=SC2206 # a list of words
arguments=(${arguments:-1280 750})
if [ -n "$under_wine" ]; then
    # Into a file and not a pipe: Wine's own processes, which live on, keep hold of it. The file is made first: the
    # program is started beside its follower, and tail gives a file up that is not there yet.
    : >"$tree/output.txt"
    timeout "$limit_s" "${program[@]}" "${arguments[@]}" >>"$tree/output.txt" 2>"$tree/errors.txt" &
    running=$!
    children+=("$running")
    tail -n +1 -s 0.02 --pid="$running" -f "$tree/output.txt" 2>/dev/null | follow &
    follower=$!
    wait "$running"
    status=$?
    unset "children[-1]"
else
    # A pipe with a name: of a process substitution that a program writes into, the shell knows no process to wait for.
    mkfifo "$tree/printed"
    tee "$tree/output.txt" <"$tree/printed" | follow &
    follower=$!
    timeout "$limit_s" "${program[@]}" "${arguments[@]}" >"$tree/printed" 2>"$tree/errors.txt"
    status=$?
fi
ended_ms=$(now_ms)
wait "$follower" # everything printed has been seen, and is in the file
cat "$tree/output.txt" "$tree/errors.txt"

if [ -n "$sim" ]; then
    kill -TERM "$sim"
    wait "$sim" || problem "vkt_sim ended with status $?"
    sim=''
fi

# ---- what came out ------------------------------------------------------------------------------------------------------
expected=$(directive status)
[ "$status" = "${expected:-0}" ] || problem "the program ended with status $status, expected ${expected:-0}"
while IFS= read -r text; do
    cat "$tree/output.txt" "$tree/errors.txt" | grep -qF -- "$text" || problem "the program did not print: $text"
done < <(directive prints)
while IFS= read -r text; do
    for stream in output errors; do
        grep -qF -- "$text" "$tree/$stream.txt" || problem "not among the program's $stream: $text"
    done
done < <(directive complains)
printed=$(wc -l <"$tree/output.txt")
followed=$(cat "$tree/followed.txt" 2>/dev/null)
[ "${followed:-0}" = "$printed" ] || problem "${followed:-0} of $printed printed lines were followed"
for i in "${!reactions[@]}"; do
    grep -qsx "$i" "$tree/given.txt" || problem "never came to: on ${reactions[$i]}"
done
while IFS= read -r text; do
    grep -qxF -- "$text" "$tree/report.txt" || problem "not in the modules' report: $text"
done < <(directive module)
while IFS= read -r text; do
    grep -q "^$text" "$tree/report.txt" && problem "in the modules' report: $text"
done < <(directive not-module)
wanted=$(directive received)
got=$(sed -n 's/^received=[0-9]* //p' "$tree/report.txt" 2>/dev/null)
[ -z "$wanted" ] || [ "$wanted" = "$got" ] || problem "the modules received: $got"
mapfile -t commands < <(directive after)
for command in "${commands[@]}"; do eval "$command" || problem "failed: $command"; done
if [ -s "$tree/close_ms" ]; then
    took=$((ended_ms - $(cat "$tree/close_ms")))
    limit=$(directive ends-within)
    [ "$took" -le $((${limit:-1500} * ${VKT_PROGRAM_TEST_SLOWNESS:-1})) ] ||
        problem "the program needed $took ms to end"
fi
if ! grep -q '^#! allow-conditions' "$script" && grep -E 'condition\(.*\) failed|off the GUI thread' "$tree/output.txt"; then
    problem "a precondition failed"
fi
if [ "$status" = 0 ] && [ -s "$folder/log/p_v_info.txt" ]; then problem "the session log was not emptied"; fi
if [ "$problems" -gt 0 ] && [ -s "$tree/report.txt" ]; then cat "$tree/modules.txt" "$tree/report.txt"; fi
exit $((problems > 0))
