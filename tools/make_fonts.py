#!/usr/bin/env python3
"""Makes the small fonts that the program brings along: every character of its own texts, and no other.

The whole CJK font costs about 7 MB of memory and a third of the start; what the small ones lack still comes from it.
Run it again when a text gains a new character (tests/toolkit/ravel/fonts_test.cpp tells). Needs python3-fonttools and
fonts-noto-cjk.
"""
import pathlib
import sys

from fontTools import subset
from fontTools.ttLib import TTFont

SOURCES = pathlib.Path("/usr/share/fonts/opentype/noto")
FONTS = [  # file, family, style, and the font it is cut from
    ("vkt_sans.otf", "VKT Sans", "Regular", "NotoSansCJK-Regular.ttc", "Noto Sans CJK SC"),
    ("vkt_sans_bold.otf", "VKT Sans", "Bold", "NotoSansCJK-Bold.ttc", "Noto Sans CJK SC"),
    ("vkt_mono.otf", "VKT Mono", "Regular", "NotoSansCJK-Regular.ttc", "Noto Sans Mono CJK SC"),
]
ROOMS = ["app", "assistant", "dev_a", "dev_b", "dev_generic", "edits", "f7", "fields", "monitor", "platform", "profile",
         "serial", "session", "shell", "toolkit", "res/default"]
KINDS = {".cpp", ".h", ".ui", ".ts", ".qss"}
FAMILY_IDS, FULL_ID, POSTSCRIPT_ID, COPYRIGHT_ID, LICENCE_IDS = (1, 16), 4, 6, 0, (13, 14)

top = pathlib.Path(__file__).resolve().parent.parent
out = top / "res/default/fonts"


def characters():
    found = set(map(chr, range(0x20, 0x7F))) | set(map(chr, range(0xA0, 0x100)))
    for room in ROOMS:
        for file in (top / room).rglob("*"):
            if file.suffix in KINDS:
                found |= set(file.read_text(encoding="utf-8"))
    return {ord(c) for c in found if c >= " "}


def face(source, family):
    for number in range(16):
        font = TTFont(SOURCES / source, fontNumber=number, lazy=True)
        if font["name"].getDebugName(1) == family or font["name"].getDebugName(16) == family:
            return font
    sys.exit(f"make_fonts: {source} has no {family}")


def rename(font, family, style):
    full = family if style == "Regular" else f"{family} {style}"
    plain = family.replace(" ", "") + ("" if style == "Regular" else f"-{style}")
    names = font["name"]
    names.names = [n for n in names.names
                   if n.nameID in (COPYRIGHT_ID, 2, 5, *LICENCE_IDS) and n.platformID == 3 and n.langID == 0x409]
    for number in FAMILY_IDS:
        names.setName(family, number, 3, 1, 0x409)
    names.setName(full, FULL_ID, 3, 1, 0x409)
    names.setName(plain, POSTSCRIPT_ID, 3, 1, 0x409)
    top_dict = font["CFF "].cff
    top_dict.fontNames = [plain]
    top_dict.topDictIndex[0].FullName = full
    top_dict.topDictIndex[0].FamilyName = family


def make(file, family, style, source, of, wanted):
    font = face(source, of)
    options = subset.Options()
    options.layout_features = ["kern", "locl", "ccmp"]
    options.name_IDs = ["*"]
    options.desubroutinize = True
    options.hinting = True
    cutter = subset.Subsetter(options)
    cutter.populate(unicodes=wanted)
    cutter.subset(font)
    rename(font, family, style)
    font["head"].modified = font["head"].created
    font.recalcTimestamp = False
    path = out / file
    font.save(path)
    print(f"{path.relative_to(top)}: {len(wanted)} characters, {path.stat().st_size} bytes")


def main():
    out.mkdir(exist_ok=True)
    wanted = characters()
    for row in FONTS:
        make(*row, wanted)


if __name__ == "__main__":
    main()
