#!/usr/bin/env python3
"""check_wall.py COMPILE_COMMANDS SOURCE_ROOT FILE ROOM...

Compiles FILE with the very command of a source of each room. As it stands it must be refused, with a message that
matches what one of its lines has behind "// refused: "; without those lines it must pass."""

import json
import os
import re
import shlex
import subprocess
import sys
import tempfile

MARK = re.compile(r"// refused: (.*)$")


def command_of(commands, root, room):
    """The command that compiles the room's first source file, and where it runs."""
    folder = os.path.join(root, room)
    own = sorted((c for c in commands if os.path.dirname(c["file"]) == folder), key=lambda c: c["file"])
    if not own:
        sys.exit(f"{room}: no source of it is built")
    return own[0]


def compile_text(entry, text):
    """Checks a text with an entry's command; its messages, or None when it passed."""
    words = [w for w in shlex.split(entry["command"]) if w not in ("-c", "-MD", entry["file"])]
    if "-o" in words:
        del words[words.index("-o"):words.index("-o") + 2]
    with tempfile.NamedTemporaryFile("w", suffix=".cpp", encoding="utf-8") as file:
        file.write(text)
        file.flush()
        done = subprocess.run(words + ["-fsyntax-only", file.name], cwd=entry["directory"], check=False,
                              capture_output=True, text=True, env={**os.environ, "LC_ALL": "C"})
    return None if done.returncode == 0 else done.stderr or "no message"


def main(commands_path, root, path, *rooms):
    with open(commands_path, encoding="utf-8") as file:
        commands = json.load(file)
    with open(path, encoding="utf-8") as file:
        lines = file.read().split("\n")
    marks = [m.group(1) for m in map(MARK.search, lines) if m]
    if not marks or not rooms:
        sys.exit(f"{path}: nothing to be refused")
    good = "\n".join(line for line in lines if not MARK.search(line))
    for room in rooms:
        entry = command_of(commands, root, room)
        messages = compile_text(entry, good)
        if messages is not None:
            sys.exit(f"{room}: refused without the marked lines too:\n{messages}")
        messages = compile_text(entry, "\n".join(lines))
        if messages is None:
            sys.exit(f"{room}: the marked lines were let pass")
        if not any(re.search(mark, messages) for mark in marks):
            sys.exit(f"{room}: refused for another reason:\n{messages}")
    return 0


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
