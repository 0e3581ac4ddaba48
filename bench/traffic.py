#!/usr/bin/env python3
"""bench_traffic [SECONDS]: the data page while a simulated module sends CAN frames (SECONDS a rate, 15 by default; 60 are
what the limits are meant for), and what single things take with a million records.

Judged: how late the program's event loop is, what all its threads cost, whether memory stays flat, whether every byte
that was read is in a frame or in a count. Needs a display and a release build; run it through ./bench.sh [--long].
"""
import os
import pathlib
import subprocess
import sys
import tempfile

# Frames a second, limit of the event loop's lateness (ms, 99 of 100 turns), limit of the cost (of a core) or none.
RATES = [(0, 10.0, None), (8000, 10.0, 0.08), (40000, 16.0, None)]
FRAME_BYTES = 19  # eight data bytes, with a check value
GROWTH_MB = 2.0  # of resident memory, once the page is up to speed
PAGE = {  # what is timed with a million records: words, limit in ms
    "open": ("opening the data page, from the finished session to its first paint", 100.0),
    "pause": ("with 1,000,000 records: pause", 16.0),
    "scroll": ("with 1,000,000 records: scroll to the end and paint", 16.0),
    "open_again": ("with 1,000,000 records: opening the page again", 100.0),
    "first_paint": ("with 1,000,000 records: first filling and paint of the table", 16.0),
    "clear": ("with 1,000,000 records: clear and paint", 16.0),
}

here = pathlib.Path(__file__).resolve().parent
stage = here.parent / "stage/bin"


def cpu_s(pid):
    fields = pathlib.Path(f"/proc/{pid}/stat").read_text().rsplit(")", 1)[1].split()
    return (int(fields[11]) + int(fields[12])) / os.sysconf("SC_CLK_TCK")


def resident_mb(pid):
    return int(pathlib.Path(f"/proc/{pid}/statm").read_text().split()[1]) * os.sysconf("SC_PAGESIZE") / 1048576


def start_module(rate, burst=8):
    plan = f"COM9:rate={rate}:burst={burst}:types=0:lengths=8-8:check=on"
    module = subprocess.Popen([stage / "vkt_sim", "COM9=VKT610B", "--traffic", plan], stdin=subprocess.PIPE,
                              stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True, bufsize=1)
    for line in module.stdout:
        if line.startswith("VKT_COM_PORTS="):
            return module, line.strip().split("=", 1)[1]
    sys.exit("bench_traffic: vkt_sim does not start")


def end_module(module):
    module.terminate()
    module.wait(timeout=30)


def start_window(tree, what, ports):
    """In a tree of its own: the window stores its settings where it runs."""
    for name in ("res", "tools"):
        (tree / name).symlink_to(stage.parent / name)
    (tree / "bin").mkdir()
    (tree / "log").mkdir()
    if what == "page":
        (tree / "bin/setting.json").write_text('{"fifo_size":"1000000"}')
    return subprocess.Popen([here / "bench_traffic_window", what], cwd=tree / "bin", stdout=subprocess.PIPE,
                            stderr=subprocess.DEVNULL, text=True, env=dict(os.environ, VKT_COM_PORTS=ports))


def ask_sent(module):
    module.stdin.write("count COM9\n")
    for line in module.stdout:
        for word in line.split():
            if word.startswith("traffic_sent="):
                return int(word.split("=", 1)[1])
    sys.exit("bench_traffic: vkt_sim gives no count")


def measure(rate, seconds):
    """Lateness (p99, worst), cost of a core, frames and lost bytes a second, memory before and after, bytes read that are
    in no frame and no count, share of the bytes sent that the system dropped at a purge without a count."""
    module, ports = start_module(rate)
    begin = end = sent = None
    with tempfile.TemporaryDirectory(prefix="vkt_bench.") as tree:
        program = start_window(pathlib.Path(tree), str(seconds), ports)
        for line in program.stdout:
            words = line.split()
            if words[:1] == ["begin"]:
                begin = cpu_s(program.pid), resident_mb(program.pid)
            if words[:1] == ["end"]:
                end = cpu_s(program.pid), resident_mb(program.pid)
                p99, worst, frames, lost = (float(word) for word in words[1:])
                module.stdin.write("traffic COM9 rate=0\n")
            if words[:1] == ["all"]:
                sent = ask_sent(module) * FRAME_BYTES
                read, shown, refused, purged = (int(word) for word in words[1:])
        status = program.wait(timeout=60)
    end_module(module)
    if status != 0 or sent is None:
        sys.exit(f"bench_traffic: the window at {rate} frames/s ended with status {status}")
    return (p99, worst, (end[0] - begin[0]) / seconds, frames / seconds, lost / seconds, begin[1], end[1],
            abs(read - shown * FRAME_BYTES - refused), (sent - read - purged) / max(sent, 1))


def page_times():
    module, ports = start_module(200000, 50)
    with tempfile.TemporaryDirectory(prefix="vkt_bench.") as tree:
        program = start_window(pathlib.Path(tree), "page", ports)
        times = dict(line.split() for line in program.stdout if line.split()[:1] and line.split()[0] in PAGE)
        status = program.wait(timeout=60)
    end_module(module)
    if status != 0 or len(times) != len(PAGE):
        sys.exit(f"bench_traffic: the window with a million records ended with status {status}: {times}")
    return [verdict(float(times[name]), limit, f"{words}: {float(times[name]):.1f} ms (of at most {limit:.0f})")
            for name, (words, limit) in PAGE.items()]


def verdict(value, limit, what):
    held = value <= limit
    print(f"{value / limit if limit else value:8.3f}x {'ok  ' if held else 'MISS'} {what}", flush=True)
    return held


def main():
    seconds = int(sys.argv[1]) if len(sys.argv) > 1 else 15
    good = True
    idle = 0.0
    for rate, late_limit, cost_limit in RATES:
        p99, worst, cost, frames, lost, before, after, missing, unseen = measure(rate, seconds)
        if rate == 0:
            idle = cost  # the probe's own
        what = f"data page at {rate} frames/s for {seconds} s"
        good &= verdict(p99, late_limit, f"{what}: event loop late by {p99:.2f} ms (p99; of at most {late_limit:.0f}), "
                                         f"worst {worst:.2f}")
        if cost_limit:
            good &= verdict(cost - idle, cost_limit, f"{what}: {100 * (cost - idle):.1f} % of a core (of at most "
                                                     f"{100 * cost_limit:.0f} %)")
        good &= verdict(after - before, GROWTH_MB, f"{what}: memory {before:.1f} -> {after:.1f} MB (at most "
                                                   f"{GROWTH_MB:.0f} more)")
        if rate:
            good &= verdict(missing, 0, f"{what}: {missing} of the bytes read are in no frame and no count (of at most 0)")
        print(f"          {100 * (cost - idle):.1f} % of a core over the {100 * idle:.1f} % of the probe, {frames:.0f} "
              f"frames/s shown, {lost:.0f} bytes/s counted as lost, {100 * unseen:.1f} % of what was sent dropped by the system at a "
              "purge", flush=True)
    good &= all(page_times())
    return 0 if good else 1


if __name__ == "__main__":
    sys.exit(main())
