#!/usr/bin/env python3
"""compare_looks.py FOLDER FOLDER: whether two systems show the same windows.

Each folder holds NAME.png and NAME.txt of the same windows (`shot` and `dump` of a driver script). Every visible widget
must be there in both, with the same text (digits aside: times and counts differ) and its place within 2 pixels; a text's
width may differ by 2 % more, for one system's fonts advance by whole pixels. Every text must leave about as much ink in both pictures: a character that a system's font lacks is an empty box or nothing.
Prints what differs; the last line is "N passed, N failed"."""

import pathlib
import re
import statistics
import sys

from PIL import Image

PLACE_MAX = 2  # pixels
WIDTH_MAX = 0.02  # of a width, beside the pixels
# A text's ink is what differs from its ground. The two systems draw strokes of different weight, so a text's ratio of
# inks is compared with that of all texts; boxes for the Chinese in it, or nothing, leave much less.
INK_MIN, INK_MAX, INK_WEIGHED = 0.7, 1.45, 2000
LINE = re.compile(r'^(\S+) (\S+) (".*") value=(-?\d+) (\w+) (visible|hidden)(?: marked)? (-?\d+),(-?\d+) (\d+)x(\d+)(?: hints=".*")?$')


def widgets(path):
    found = {}
    for line in path.read_text(encoding="utf-8").splitlines():
        part = LINE.match(line)
        if part and part[6] == "visible":
            found.setdefault(part[1], []).append((re.sub(r"\d", "#", part[3]), [int(part[i]) for i in range(7, 11)]))
    return found


def same_place(first, second):
    x, y, w, h = (abs(a - b) for a, b in zip(first, second))
    right = abs(first[0] + first[2] - second[0] - second[2])
    return min(x, right) <= PLACE_MAX and w <= PLACE_MAX + first[2] * WIDTH_MAX and y <= PLACE_MAX and h <= PLACE_MAX


def compare_widgets(first, second):
    problems = []
    for path in sorted(first.keys() ^ second.keys()):
        problems.append(f"{path} is in one only")
    for path in sorted(first.keys() & second.keys()):
        for (text, place), (other_text, other_place) in zip(first[path], second[path]):
            if text != other_text:
                problems.append(f"{path}: {text} and {other_text}")
            if not same_place(place, other_place):
                problems.append(f"{path}: at {place} and {other_place}")
    return problems


def ink_of(picture, place):
    x, y, w, h = place
    part = picture.crop((x, y, x + w, y + h)).histogram()
    ground = max(range(256), key=part.__getitem__)
    return sum(count * abs(value - ground) for value, count in enumerate(part))


def compare_texts(first, second, first_widgets, second_widgets):
    pictures = [Image.open(path).convert("L") for path in (first, second)]
    if pictures[0].size != pictures[1].size:
        return [f"{pictures[0].size} and {pictures[1].size}"], []
    # What a dialog covers is not seen: the first window of a dump is on top.
    top = next(iter(first_widgets), "").split("/")[0] + "/"
    ratios = {}
    for path in first_widgets.keys() & second_widgets.keys():
        if not path.startswith(top):
            continue
        for (text, place), (_, other) in zip(first_widgets[path], second_widgets[path]):
            inks = [ink_of(picture, at) for picture, at in zip(pictures, (place, other))]
            if text != '""' and inks[0] > INK_WEIGHED:
                ratios[path, text] = inks[1] / inks[0]
    if not ratios:
        return ["no text to compare"], []
    usual = statistics.median(ratios.values())
    return [f"{path} {text}: {ratio / usual:.2f} of the usual ink" for (path, text), ratio in sorted(ratios.items())
            if not INK_MIN < ratio / usual < INK_MAX], [ratio / usual for ratio in ratios.values()]


def main():
    first, second = (pathlib.Path(folder) for folder in sys.argv[1:3])
    passed = failed = 0
    inks = []
    for dump in sorted(first.glob("*.txt")):
        name = dump.stem
        if not (first / f"{name}.png").exists():
            continue
        if not (second / dump.name).exists() or not (second / f"{name}.png").exists():
            problems = ["is missing in the second folder"]
        else:
            both = widgets(dump), widgets(second / dump.name)
            problems = compare_widgets(*both)
            found, here = compare_texts(first / f"{name}.png", second / f"{name}.png", *both)
            problems += found
            inks += here
        passed, failed = (passed, failed + 1) if problems else (passed + 1, failed)
        for problem in problems[:20]:
            print(f"{name}: {problem}")
    print(f"{len(inks)} texts with {min(inks, default=0):.2f} to {max(inks, default=0):.2f} of the usual ink")
    print(f"{passed} passed, {failed} failed")
    return 0 if passed and not failed else 1


sys.exit(main())
