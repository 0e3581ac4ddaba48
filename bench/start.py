#!/usr/bin/env python3
"""Start-up, idle load and memory of the tool beside an empty window of the same toolkit, started the same way.

The two are started in turn, so that a noisy machine disturbs both alike; medians are compared. What was started just
before counts too (after the empty window either of them comes up about 6 ms later than after the tool), so each follows
each equally often. Needs a display and a release build; run it through ./bench.sh.
"""
import os
import pathlib
import statistics
import subprocess
import sys
import tempfile
import time

ROUNDS = 15
ORDER = ("tool", "empty", "empty", "tool")
IDLE_SETTLE_S = 4
IDLE_S = 20

here = pathlib.Path(__file__).resolve().parent
PROGRAMS = {
    "tool": (here.parent / "stage/bin/VKTCfgTools", "home_page"),
    "empty": (here / "empty/bin/empty_window", "empty"),
}


def start(name, script_lines, scratch):
    """Starts a program in its bin folder with a script of user actions, or with none."""
    program, window = PROGRAMS[name]
    env = dict(os.environ)
    env.pop("VKT_DRIVE", None)
    env["VKT_SETTINGS"] = str(scratch)
    if script_lines:
        script = pathlib.Path(scratch) / f"{name}.drive"
        script.write_text("\n".join(line.format(window=window) for line in script_lines) + "\n")
        env["VKT_DRIVE"] = str(script)
    return subprocess.Popen([str(program)], cwd=program.parent, env=env, stdout=subprocess.PIPE,
                            stderr=subprocess.DEVNULL, text=True)


def first_paint_s(name, scratch):
    begin = time.monotonic()
    process = start(name, ["wait {window} painted 1 20000", "close"], scratch)
    painted = None
    for line in process.stdout:
        if painted is None and line.startswith("ok ") and "painted" in line:
            painted = time.monotonic() - begin
    if process.wait(timeout=30) != 0 or painted is None:
        sys.exit(f"bench_start: {name} did not come up")
    return painted


def cpu_ticks(pid):
    fields = pathlib.Path(f"/proc/{pid}/stat").read_text().rsplit(")", 1)[1].split()
    return int(fields[11]) + int(fields[12])


def resident_kib(pid):
    for line in pathlib.Path(f"/proc/{pid}/status").read_text().splitlines():
        if line.startswith("VmRSS:"):
            return int(line.split()[1])
    sys.exit("bench_start: no VmRSS")


def idle(scratch):
    """CPU share of the idle tool, and the resident memory of both, after they have settled."""
    running = {name: start(name, None, scratch) for name in PROGRAMS}
    try:
        time.sleep(IDLE_SETTLE_S)
        before = cpu_ticks(running["tool"].pid)
        time.sleep(IDLE_S)
        ticks = cpu_ticks(running["tool"].pid) - before
        memory = {name: resident_kib(process.pid) for name, process in running.items()}
    finally:
        for process in running.values():
            process.kill()
            process.wait()
    return 100.0 * ticks / os.sysconf("SC_CLK_TCK") / IDLE_S, memory


def row(value, limit, unit, what):
    """One line, the figure that is held to a limit first."""
    held = value <= limit
    print(f"{value:8.3f}{unit} (at most {limit}{unit}) {'ok  ' if held else 'MISS'} {what}")
    return held


def main():
    with tempfile.TemporaryDirectory() as scratch:
        times = {name: [] for name in PROGRAMS}
        for name in PROGRAMS:
            first_paint_s(name, scratch)
        for _ in range(ROUNDS):
            for name in ORDER:
                times[name].append(first_paint_s(name, scratch))
        share, memory = idle(scratch)
    tool, empty = (statistics.median(times[name]) for name in ("tool", "empty"))
    good = [
        row(tool / empty, 1.6, "x", f"start to first paint: {tool * 1e3:.0f} ms, empty window {empty * 1e3:.0f} ms"),
        row(share, 0.2, "%", f"of a core while idle, over {IDLE_S} s"),
        row(memory["tool"] / memory["empty"], 1.4, "x",
            f"resident memory: {memory['tool']} KiB, empty window {memory['empty']} KiB"),
    ]
    return 0 if all(good) else 1


if __name__ == "__main__":
    sys.exit(main())
