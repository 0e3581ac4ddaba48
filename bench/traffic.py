#!/usr/bin/env python3
"""bench_traffic [SECONDS]: the data page while a simulated module sends CAN frames (SECONDS a rate, 15 by default).

Judged: how late the program's event loop is, and what all its threads cost. Shown: frames that became rows, bytes that ended
in a count, memory before and after. Needs a display and a release build; run it through ./bench.sh.
"""
import os
import pathlib
import subprocess
import sys

# Frames a second, limit of the event loop's lateness (ms, 99 of 100 turns), limit of the cost (of a core) or none.
RATES = [(0, 10.0, None), (8000, 10.0, 0.08), (40000, 16.0, None)]

here = pathlib.Path(__file__).resolve().parent
stage = here.parent / "stage/bin"


def cpu_s(pid):
    fields = pathlib.Path(f"/proc/{pid}/stat").read_text().rsplit(")", 1)[1].split()
    return (int(fields[11]) + int(fields[12])) / os.sysconf("SC_CLK_TCK")


def resident_mb(pid):
    return int(pathlib.Path(f"/proc/{pid}/statm").read_text().split()[1]) * os.sysconf("SC_PAGESIZE") / 1048576


def start_module(rate):
    plan = f"COM9:rate={rate}:burst=8:types=0:lengths=8-8:check=on"
    module = subprocess.Popen([stage / "vkt_sim", "COM9=VKT610B", "--traffic", plan], stdin=subprocess.DEVNULL,
                              stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True)
    for line in module.stdout:
        if line.startswith("VKT_COM_PORTS="):
            return module, line.strip().split("=", 1)[1]
    sys.exit("bench_traffic: vkt_sim does not start")


def measure(rate, seconds):
    """Lateness (p99, worst), cost of a core, frames and lost bytes a second, memory before and after."""
    module, ports = start_module(rate)
    program = subprocess.Popen([here / "bench_traffic_window", str(seconds)], cwd=stage, stdout=subprocess.PIPE,
                               stderr=subprocess.DEVNULL, text=True, env=dict(os.environ, VKT_COM_PORTS=ports))
    begin = end = None
    for line in program.stdout:
        if line == "begin\n":
            begin = cpu_s(program.pid), resident_mb(program.pid)
        if line.startswith("end "):
            end = cpu_s(program.pid), resident_mb(program.pid)
            p99, worst, frames, lost = (float(word) for word in line.split()[1:])
    status = program.wait(timeout=60)
    module.terminate()
    module.wait(timeout=30)
    if status != 0 or end is None:
        sys.exit(f"bench_traffic: the window at {rate} frames/s ended with status {status}")
    return p99, worst, (end[0] - begin[0]) / seconds, frames / seconds, lost / seconds, begin[1], end[1]


def verdict(value, limit, what):
    held = value <= limit
    print(f"{value / limit:8.3f}x {'ok  ' if held else 'MISS'} {what}", flush=True)
    return held


def main():
    seconds = int(sys.argv[1]) if len(sys.argv) > 1 else 15
    good = True
    idle = 0.0
    for rate, late_limit, cost_limit in RATES:
        p99, worst, cost, frames, lost, before, after = measure(rate, seconds)
        if rate == 0:
            idle = cost  # the probe's own
        what = f"data page at {rate} frames/s"
        good &= verdict(p99, late_limit, f"{what}: event loop late by {p99:.2f} ms (p99; of at most {late_limit:.0f}), "
                                         f"worst {worst:.2f}")
        if cost_limit:
            good &= verdict(cost - idle, cost_limit, f"{what}: {100 * (cost - idle):.1f} % of a core (of at most "
                                                     f"{100 * cost_limit:.0f} %)")
        print(f"          {100 * (cost - idle):.1f} % of a core over the {100 * idle:.1f} % of the probe, {frames:.0f} "
              f"frames/s shown, {lost:.0f} bytes/s counted as lost, memory {before:.1f} -> {after:.1f} MB", flush=True)
    return 0 if good else 1


if __name__ == "__main__":
    sys.exit(main())
