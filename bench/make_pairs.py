#!/usr/bin/python3
"""Builds the benchmark's font pairs from fonts packaged by Debian.

Each pair is an original and a modified font file, as a font engineer meets
them in CI: an unchanged CJK collection, a Latin font with a few hundred glyphs
edited, a CJK font with every advance width changed, a CJK font with every
outline moved by one unit, a family's Regular against its Bold, and a CJK
font with PostScript outlines ('CFF ', CID-keyed) with three charstrings
redrawn. Both fonts of a pair are written by the same library, so that they
differ only where the edit says.

Usage: make_pairs.py DIRECTORY [PAIR ...]   (default: every pair)
"""
import os
import shutil
import sys

from fontTools.ttLib import TTFont

DEJAVU = "/usr/share/fonts/truetype/dejavu/DejaVuSans.ttf"
DEJAVU_BOLD = "/usr/share/fonts/truetype/dejavu/DejaVuSans-Bold.ttf"
WQY = "/usr/share/fonts/truetype/wqy/wqy-zenhei.ttc"
NOTO_CJK = "/usr/share/fonts/opentype/noto/NotoSansCJK-Regular.ttc"


def load(path, number=-1):
    # Every table decompiled, so that the library writes each font of a pair the
    # same way (a table it never loaded it copies as it stands, one it loaded it
    # compiles anew, glyph encodings and all).
    font = TTFont(path, fontNumber=number)
    for tag in font.keys():
        font[tag]
    return font


def save(font, directory, name):
    font.save(os.path.join(directory, name))


def cjk_collection(directory):
    # Two copies of the same collection, three fonts of 45,000 glyphs each.
    for name in ("cjk-collection-original.ttc", "cjk-collection-modified.ttc"):
        shutil.copyfile(WQY, os.path.join(directory, name))


def edited_latin(directory):
    save(load(DEJAVU), directory, "dejavu-edited-original.ttf")
    modified = load(DEJAVU)
    order = modified.getGlyphOrder()
    glyf, hmtx = modified["glyf"], modified["hmtx"]
    # 150 outlines moved, 150 other glyphs with a wider advance.
    for name in order[100:250]:
        glyph = glyf[name]
        if glyph.numberOfContours > 0:
            glyph.coordinates.translate((5, 0))
    for name in order[250:400]:
        advance, lsb = hmtx[name]
        hmtx[name] = (advance + 10, lsb)
    # One character mapped to another glyph, in every Unicode subtable.
    for table in modified["cmap"].tables:
        if table.isUnicode() and 0x41 in table.cmap:
            table.cmap[0x41] = table.cmap.get(0x42, table.cmap[0x41])
    # A new version string.
    modified["name"].setName("Version 2.37.1", 5, 3, 1, 0x409)
    save(modified, directory, "dejavu-edited-modified.ttf")


def cjk_font(directory, stem, edit):
    save(load(WQY, 0), directory, stem + "-original.ttf")
    modified = load(WQY, 0)
    edit(modified)
    save(modified, directory, stem + "-modified.ttf")


def every_advance_wider(font):
    hmtx = font["hmtx"]
    for name in font.getGlyphOrder():
        advance, lsb = hmtx[name]
        hmtx[name] = (advance + 1, lsb)


def every_outline_moved(font):
    glyf = font["glyf"]
    for name in font.getGlyphOrder():
        glyph = glyf[name]
        if glyph.numberOfContours > 0:
            glyph.coordinates.translate((1, 0))


def family(directory):
    # The Bold carries the Regular's names, so that the two pair up.
    regular = load(DEJAVU)
    bold = load(DEJAVU_BOLD)
    bold["name"] = regular["name"]
    save(regular, directory, "family-original.ttf")
    save(bold, directory, "family-modified.ttf")


def redraw_three_charstrings(font):
    # Three ideographs redrawn: one point moved, the last contour dropped, and
    # a control point moved with the width 10 units wider.
    from fontTools.pens.recordingPen import RecordingPen
    from fontTools.pens.t2CharStringPen import T2CharStringPen

    cmap = font.getBestCmap()
    charstrings = font["CFF "].cff.topDictIndex[0].CharStrings
    for edit, code in enumerate((0x6C38, 0x56FD, 0x5B57)):
        charstring = charstrings[cmap[code]]
        recording = RecordingPen()
        charstring.draw(recording)
        width, drawing = charstring.width, list(recording.value)
        if edit == 0:
            at = next(i for i, (operator, _) in enumerate(drawing) if operator == "lineTo")
            (x, y), = drawing[at][1]
            drawing[at] = ("lineTo", ((x + 20, y),))
        elif edit == 1:
            drawing = drawing[:max(i for i, (operator, _) in enumerate(drawing) if operator == "moveTo")]
        else:
            width += 10
            at = next(i for i, (operator, _) in enumerate(drawing) if operator == "curveTo")
            points = list(drawing[at][1])
            points[0] = (points[0][0], points[0][1] + 15)
            drawing[at] = ("curveTo", tuple(points))
        pen = T2CharStringPen(width, None)
        for operator, arguments in drawing:
            getattr(pen, operator)(*arguments)
        redrawn = pen.getCharString(private=charstring.private, globalSubrs=charstring.globalSubrs)
        charstrings.charStringsIndex.items[charstrings.charStrings[cmap[code]]] = redrawn


def cjk_postscript(directory):
    # Face 0 of the collection, saved on its own: 65,535 glyphs, CID-keyed.
    save(TTFont(NOTO_CJK, fontNumber=0), directory, "cjk-cff-original.otf")
    modified = TTFont(NOTO_CJK, fontNumber=0)
    redraw_three_charstrings(modified)
    save(modified, directory, "cjk-cff-modified.otf")


PAIRS = {
    "cjk-collection": cjk_collection,
    "dejavu-edited": edited_latin,
    "cjk-advances": lambda directory: cjk_font(directory, "cjk-advances", every_advance_wider),
    "cjk-outlines": lambda directory: cjk_font(directory, "cjk-outlines", every_outline_moved),
    "family": family,
    "cjk-cff": cjk_postscript,
}


def main():
    if len(sys.argv) < 2 or any(pair not in PAIRS for pair in sys.argv[2:]):
        sys.exit(__doc__)
    directory = sys.argv[1]
    os.makedirs(directory, exist_ok=True)
    for pair in sys.argv[2:] or PAIRS:
        PAIRS[pair](directory)


if __name__ == "__main__":
    main()
