#!/usr/bin/env python3
"""Papers that must agree: the read-mes of both languages (commands, and the first column of the tables of arguments,
variables, ports and files), and the version, which the project's line in CMakeLists.txt gives. Prints what differs; the
last line is "N passed, N failed"."""

import pathlib
import re
import sys

root = pathlib.Path(__file__).resolve().parents[2]
failures = []


def read(name):
    return (root / name).read_text(encoding="utf-8")


def commands(text):
    """The indented lines without their remarks, in order of the alphabet."""
    return sorted(line.split("#")[0].strip() for line in text.splitlines() if line.startswith("    "))


def names(text):
    """What stands in backticks (or bare: port names) in the first cell of every row that starts with one."""
    rows = []
    for line in text.splitlines():
        cell = re.match(r"\| ((?:`|(?:COM|LPT)\d|WIDTH|CONSOLE|any|任意)[^|]*) \|([^|]*)\|", line)
        if cell:
            devices = re.findall(r"`(/dev/[^`]*)`", cell[2]) if "`" not in cell[1] else []
            rows.append((cell[1].replace("任意", "any"), devices))
    return rows


def expect_same(what, left, right):
    if left == right and left:
        return
    only = [f"  {side}: {row}" for side, mine, other in (("first", left, right), ("second", right, left))
            for row in mine if row not in other]
    failures.append(f"{what}:\n" + "\n".join(only or ["  order or number of rows"]))


# What it is built from is told in English only.
english, chinese = read("README.md").split("## What it is built from")[0], read("README.zh-CN.md")
version = re.search(r"^project\(VKTCfgTools VERSION ([0-9.]+)", read("CMakeLists.txt"), re.M)[1]
checks = [
    ("commands of README.md and README.zh-CN.md", commands(english), commands(chinese)),
    ("tables of README.md and README.zh-CN.md", names(english), names(chinese)),
    ("version in CHANGELOG.md", [version], re.findall(r"^## (\S+)", read("CHANGELOG.md"), re.M)[:1]),
    ("version typed by hand in tests/app/home_page_test.cpp", [version],
     re.findall(r"版本号：V([0-9.]+)", read("tests/app/home_page_test.cpp"))),
]
for check in checks:
    expect_same(*check)
for line in failures:
    print(line)
print(f"{len(checks) - len(failures)} passed, {len(failures)} failed")
sys.exit(bool(failures))
