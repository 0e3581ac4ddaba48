#!/usr/bin/env python3
"""The program without windows as a whole process, against modules paced at 9600 8N2: a read and a write beside the time
that their bytes need on the line and the waits that a session prescribes, the start, many ports at once, and memory.

Needs a release build; run it through ./bench.sh.
"""
import os
import pathlib
import statistics
import subprocess
import sys
import tempfile
import time

ROUNDS = 15
MANY = 16
MS_PER_BYTE = 11 / 9600 * 1000  # start, eight data, two stop bits

here = pathlib.Path(__file__).resolve().parent
VKT = here.parent / "stage/bin/vkt"
SIM = here.parent / "stage/bin/vkt_sim"

# Bytes that the module paces (it takes a mode text at once), and waits that are part of the session (the B family's
# change of mode).
HANDSHAKE, READ, WRITE = 9 + 6, 5 + 65, 65 + 6
SESSIONS = [
    ("read", "VKT531A", HANDSHAKE + READ, 0),
    ("write", "VKT531A", HANDSHAKE + WRITE, 0),
    ("read", "VKT610B", 6 + 146, 1000),
    ("write", "VKT610B", 34 * (11 + 7), 1000),
]


class Modules:
    """Simulated modules in a process of their own; their requests as they come."""

    def __init__(self, models, scratch):
        ports = [f"COM{301 + i}={model}" for i, model in enumerate(models)]
        self.process = subprocess.Popen([str(SIM), *ports, "--paced", "--links", f"{scratch}/ports"],
                                        stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True)
        self.names = [port.split("=")[0] for port in ports]
        for line in self.process.stdout:
            if line.startswith("VKT_COM_PORTS="):
                os.environ["VKT_COM_PORTS"] = line.strip().split("=", 1)[1]
                return
        sys.exit("bench_vkt: the simulated modules do not start")

    def first_request(self):
        """When the next request of a module came in."""
        for line in self.process.stdout:
            if line.split(" ")[0] in self.names:
                return time.monotonic()
        sys.exit("bench_vkt: the simulated modules ended")

    def end_of_requests(self):
        self.process.stdin.write("paced on\n")
        self.process.stdin.flush()
        for line in self.process.stdout:
            if line.startswith("paced"):
                return

    def stop(self):
        self.process.stdin.close()
        self.process.terminate()
        self.process.wait()


def run(modules, words):
    """Milliseconds from the start to the first request, and from there to the end."""
    begin = time.monotonic()
    process = subprocess.Popen([str(VKT), "-q", *words], stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL)
    first = modules.first_request()
    process.wait()
    ended = time.monotonic()
    if process.returncode != 0:
        sys.exit(f"bench_vkt: vkt {' '.join(words)} ended with {process.returncode}")
    modules.end_of_requests()
    return (first - begin) * 1000, (ended - first) * 1000


def resident_kib(modules, words):
    """At the most, as far as it can be seen until the end. What the process's parent held does not count, as it would
    in the sum that the system gives of an ended child."""
    process = subprocess.Popen([str(VKT), "-q", *words], stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL)
    modules.first_request()
    most = 0
    while process.poll() is None:
        for line in pathlib.Path(f"/proc/{process.pid}/status").read_text().splitlines():
            if line.startswith("VmHWM:"):
                most = max(most, int(line.split()[1]))
        time.sleep(0.005)
    modules.end_of_requests()
    return most


def row(value, limit, unit, what):
    """One line, the figure that is held to a limit first."""
    held = value <= limit
    print(f"{value:8.3f}{unit} (at most {limit}{unit}) {'ok  ' if held else 'MISS'} {what}", flush=True)
    return held


def profile(model, scratch):
    path = f"{scratch}/{model}.json"
    subprocess.run([str(VKT), "default", model, "-o", path], check=True)
    return path


def sessions(scratch):
    """The four sessions, each as often; all starts, and the memory of each."""
    good, starts, memory = [], [], []
    for command, model, count, waits in SESSIONS:
        modules = Modules([model], scratch)
        words = ["read", "COM301", "-m", model] if command == "read" else ["write", profile(model, scratch), "COM301"]
        runs = [run(modules, words) for _ in range(ROUNDS)]
        memory.append(resident_kib(modules, words))
        modules.stop()
        starts += [start for start, _ in runs]
        took = statistics.median(session for _, session in runs)
        line = count * MS_PER_BYTE
        good.append(row(took / (line + waits), 1.03, "x",
                        f"{command} {model}: {took:.1f} ms, on the line {line:.1f} ms" +
                        (f", waits {waits} ms" if waits else "")))
    return good, starts, memory


def many(scratch):
    modules = Modules(["VKT531A"] * MANY, scratch)
    path = profile("VKT531A", scratch)
    took = {1: [], MANY: []}
    for _ in range(ROUNDS):
        for count, times in took.items():
            start, session = run(modules, ["program", path, *modules.names[:count], "--check"])
            times.append(start + session)
    modules.stop()
    one, all_ = (statistics.median(took[count]) for count in (1, MANY))
    return row(all_ / one, 1.1, "x", f"{MANY} ports at once: {all_:.0f} ms, one port {one:.0f} ms")


def main():
    with tempfile.TemporaryDirectory() as scratch:
        good, starts, memory = sessions(scratch)
        good.append(row(statistics.median(starts), 20, " ms", "start to the first frame on the line"))
        good.append(many(scratch))
        good.append(row(max(memory) / 1024, 8, " MB", "resident at the most, one port"))
    return 0 if all(good) else 1


if __name__ == "__main__":
    sys.exit(main())
