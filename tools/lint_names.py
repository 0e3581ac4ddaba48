"""Names of widgets in the application's tables and look-ups, against the layouts: a name that no layout has is a slip of the
pen that nobody notices before the page is opened."""

import os
import re
import xml.etree.ElementTree as ElementTree

LAYOUTS = "res/default/ui"
# Where tables and look-ups of widgets stand.
ROOMS = re.compile(r"^(app|shell|fields|(dev_\w+|monitor|assistant)(/pages)?)/[^/]+\.(cpp|h)$")

# Types whose rows name widgets: which members do, counted from 0, and by name where rows name their members. A member that
# is a row of another type stands with that type's name.
ROWS = {
    "page_row": {0: "name", "name": "name"},
    "lost_line": {0: "name", 1: "name"},
    "page_tab": {0: "name", 1: "name", "button": "name", "page": "name"},
    "page_table": {0: "name", 3: "name", 4: "name", "name": "name", "scroll_view": "name", "scroll_bar": "name"},
    "family_pages": {"container": "name", "code_mode": "name", "page_set": "name"},
    "inner_pages": {0: "name", 1: "page_tab", "page_set": "name", "tabs": "page_tab"},
    "binding": {0: "name", "name": "name"},
    "rule": {0: "name", "name": "name"},
    "selector": {0: "name", "name": "name"},
}
# Functions that get a widget's name: which argument, from the end.
CALLS = {"widget_lookup": -1, "widget_need": -1, "widget_child": -1, "navigator_find": -1, "show": -2}
# Asked for, and left out by the layouts so far; the code copes.
OPTIONAL = {"button_serial_assistant"}

# A name that is made for both channels, its number in the place of the '#': vkt610b_named<"edit_canfd#", N>
OF_CHANNEL = re.compile(r'\w+<("(?:\\.|[^"\\\n])*"), \w+>')
CHANNELS = "12"

STRING = re.compile(r'"((?:\\.|[^"\\\n])*)"$')
COMMENT = re.compile(r'("(?:\\.|[^"\\\n])*")|//[^\n]*|/\*(?:.|\n)*?\*/')
DECLARATION = re.compile(r"\b(?:std::array<\s*)?(" + "|".join(ROWS) + r")\b(?:,\s*\d+>)?\s+\w+(\[\w*\])?\s*=?\s*(?=\{)")
CALL = re.compile(r"(?<![.>\w])(" + "|".join(CALLS) + r")\(")
# for (const char* name : {"a", "b"}) ... widget_need(home, name)
LOOP = re.compile(r"\bfor \(const char\* (?P<v>\w+) : (?=\{)(?=[^;]*?\bwidget_(?:lookup|need|child)\([^;]*?,\s*(?P=v)\))")


def names_of_layout(texts, stem, seen=()):
    """The names in a layout, and in what it includes, as they are once it is built."""
    names = {stem}
    if stem not in texts or stem in seen:
        return names
    for widget in ElementTree.fromstring(texts[stem]).iter("widget"):
        names.add(widget.get("name", ""))
        own = {p.get("name"): "".join(p.itertext()).strip() for p in widget.findall("property")}
        if "include" in own:
            inner = names_of_layout(texts, own["include"], seen + (stem,))
            for pair in filter(None, own.get("rename", "").split(",")):
                before, _, after = pair.partition("=")
                inner = {name.replace(before.strip(), after.strip()) for name in inner}
            names |= inner
    return names


def names_of_layouts(texts):
    """All names that can be found in a window or a row; `texts` holds the layouts by name."""
    included = {p.find("string").text for text in texts.values()
                for p in ElementTree.fromstring(text).iter("property") if p.get("name") == "include"}
    return set().union(*(names_of_layout(texts, stem) for stem in texts if stem not in included))


def read_layouts(root):
    folder = os.path.join(root, LAYOUTS)
    texts = {}
    for name in sorted(os.listdir(folder)):
        if name.endswith(".ui"):
            with open(os.path.join(folder, name), encoding="utf-8") as file:
                texts[name[:-3]] = file.read()
    return names_of_layouts(texts)


def split_group(text, at):
    """What stands between the bracket at `at` and its partner, cut at its own commas: (offset, text) each."""
    parts, depth, start, here = [], 0, at + 1, at
    while here < len(text):
        one = text[here]
        if one == '"':
            here = re.compile(r'"(?:\\.|[^"\\])*"').match(text, here).end()
            continue
        if one in "({[":
            depth += 1
        if one in ")}]":
            depth -= 1
        if depth == 0 or (depth == 1 and one == ","):
            parts.append((start, text[start:here]))
            start = here + 1
            if depth == 0:
                break
        here += 1
    return [(offset + len(part) - len(part.lstrip()), part.strip()) for offset, part in parts if part.strip()]


def names_in_row(text, offset, part, row):
    """The names in one row: a group of members, or a call that makes one of its first argument."""
    call = re.match(r"\w+\(", part)
    if call:
        part_offset, first = split_group(text, offset + call.end() - 1)[0]
        yield from names_in_value(text, part_offset, first, row.get(0))
    elif part.startswith("{"):
        for index, (at, member) in enumerate(split_group(text, offset)):
            named = re.match(r"\.(\w+)\s*=\s*", member)
            value = member[named.end():] if named else member
            yield from names_in_value(text, at + (named.end() if named else 0), value,
                                      row.get(named.group(1) if named else index))


def names_in_value(text, offset, value, kind):
    if kind == "name":
        found = STRING.match(value)
        if found:
            yield from ((offset, name) for name in sorted({found.group(1).replace("#", n) for n in CHANNELS}))
    elif kind is not None and value.startswith("{"):
        yield from names_in_group(text, offset, ROWS[kind])


def names_in_group(text, offset, row):
    """The names in the rows of an array, or in a group that is one row."""
    parts = split_group(text, offset)
    if len(parts) == 1 and parts[0][1].startswith("{{"):  # the inner brace of a std::array
        parts = split_group(text, parts[0][0])
    if parts and all(part.startswith("{") or re.match(r"\w+\(", part) for _, part in parts):
        for at, part in parts:
            yield from names_in_row(text, at, part, row)
    else:
        yield from names_in_row(text, offset, text[offset:], row)


def names_in(text):
    """Every widget name that a source text gives as it is: (offset, name)."""
    text = COMMENT.sub(lambda m: m.group(1) or re.sub(r"[^\n]", " ", m.group()), text)
    text = OF_CHANNEL.sub(lambda m: m.group(1).ljust(len(m.group())), text)
    for found in DECLARATION.finditer(text):
        yield from names_in_group(text, found.end(), ROWS[found.group(1)])
    for found in CALL.finditer(text):
        arguments = split_group(text, found.end() - 1)
        if len(arguments) >= -CALLS[found.group(1)]:
            yield from names_in_value(text, *arguments[CALLS[found.group(1)]], "name")
    for found in LOOP.finditer(text):
        for at, value in split_group(text, found.end()):
            yield from names_in_value(text, at, value, "name")


def check(path, text, known):
    """Findings for one file."""
    if not ROOMS.match(path):
        return
    for offset, name in names_in(text):
        if name and name not in known and name not in OPTIONAL:
            yield text.count("\n", 0, offset) + 1, "widget-name", f'"{name}": no layout in {LAYOUTS} has it'


def unused_types(texts):
    """Types of ROWS that no source declares rows of any more."""
    seen = {found.group(1) for text in texts for found in DECLARATION.finditer(text)}
    return sorted(set(ROWS) - seen)
