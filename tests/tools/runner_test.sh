#!/bin/bash
# Tests of tests/program/run_program_test.sh, with a program and modules that only do what the case needs: what is
# printed is followed line by line, and a module's command comes when its line does.
# Prints every case that went wrong; the last line is "N passed, N failed".
set -u
cd "$(dirname "$0")/../.." || exit 2
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
passed=0 failed=0

# The program prints three lines, the last one unfinished, and waits in between until the modules got a command.
mkdir -p "$work/bin" "$work/stage/bin" "$work/stage/res" "$work/wine/bin" "$work/wine/res" "$work/ports"
cat >"$work/stage/bin/VKTCfgTools" <<'END'
#!/bin/sh
echo "window up"
echo "ok   1 click first"
[ ! -p "$FAKE_GIVEN" ] || read -r command <"$FAKE_GIVEN"
echo "got ${command:-nothing}"
printf "last"
echo "window up" >&2
END
# The modules hand each command on, and report when they are ended.
cat >"$work/stage/bin/vkt_sim" <<'END'
#!/bin/bash
trap 'printf "handshakes=1\nreceived=7 AA 01\nreceived=9 AB 02\n" >"$report"; exit 0' TERM
while [ $# -gt 0 ]; do case $1 in --report) report=$2 ;; esac; shift; done
echo "VKT_COM_PORTS=COM7=/dev/null"
while read -r command; do echo "$command" >"$FAKE_GIVEN"; done
END
printf '#!/bin/sh\nexec "%s"\n' "$work/stage/bin/VKTCfgTools" >"$work/bin/wine"
printf '#!/bin/sh\necho 77 >&3\nexec sleep 100\n' >"$work/bin/Xvfb"
touch "$work/wine/bin/VKTCfgTools.exe"
chmod +x "$work"/bin/* "$work"/stage/bin/*
export VKT_WINE=$work/bin/wine VKT_WINE_PORTS=$work/ports VKT_HOST_STAGE=$work/stage VKT_PROGRAM_TEST_LIMIT=20
export PATH=$work/bin:$PATH FAKE_GIVEN=$work/given

# expect STATUS TEXT STAGE LINE...: the runner's exit status and a text in its
# output (kept), for a script of these lines.
expect() {
    local status=$1 text=$2 stage=$3 got=0
    shift 3
    printf '%s\n' "$@" >"$work/case.drive"
    output=$(timeout 60 tests/program/run_program_test.sh "$work/case.drive" "$work/$stage" 2>&1) || got=$?
    if [ "$got" = "$status" ] && [[ $output == *"$text"* ]]; then
        passed=$((passed + 1))
    else
        failed=$((failed + 1))
        echo "$stage, $*: status $got and \"$output\", wanted $status and \"$text\""
    fi
}

sim='#! sim COM7=VKT531A'
order='#! on "ok   1 click" plug COM7'
for stage in stage wine; do
    expect 0 "got nothing" $stage "#! prints window up" "#! prints last"
    expect 1 "the program did not print: window down" $stage "#! prints window down"
    expect 0 "got nothing" $stage "#! complains window up"
    expect 1 "not among the program's errors: got nothing" $stage "#! complains got nothing"
    expect 1 "not among the program's output: window down" $stage "#! complains window down"
    expect 1 "status 0, expected 3" $stage "#! status 3"
    mkfifo "$FAKE_GIVEN"
    expect 0 "got plug COM7" $stage "$sim" "$order" "#! module handshakes=1" "#! prints got plug COM7"
    rm "$FAKE_GIVEN"
    expect 0 "" $stage "$sim" "#! received AA 01" "#! received AB 02" "#! after [ -d ../log ]"
    expect 1 "the modules received: AA 01" $stage "$sim" "#! received AB 02" "#! received AA 01"
    expect 1 "the modules received: AA 01" $stage "$sim" "#! received AA 01"
    expect 1 "failed: [ -d none ]" $stage "#! after [ -d none ]"
    expect 1 'never came to: on "ok   2" plug COM7' $stage "$sim" '#! on "ok   2" plug COM7'
done

# What is printed into a file is followed from its beginning, however late the program comes to print.
printf '%s\n' "trap 'case \$BASH_COMMAND in timeout*) [ -f \"\$tree/output.txt\" ] || echo no file ;; esac' DEBUG" >"$work/env"
BASH_ENV=$work/env expect 0 "" wine "#! prints got"
[[ $output != *"no file"* ]] ||
    { failed=$((failed + 1)) && echo "the program's output has no file when it is started"; }
printf '#!/bin/sh\n' >"$work/bin/tail"
chmod +x "$work/bin/tail"
expect 1 "0 of 3 printed lines were followed" wine "#! prints got"

echo "$passed passed, $failed failed"
[ "$failed" = 0 ]
