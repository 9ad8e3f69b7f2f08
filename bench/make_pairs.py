#!/usr/bin/python3
"""Builds the benchmark's font pairs from fonts packaged by Debian.

Each pair is an original and a modified font file, as a font engineer meets
them in CI: an unchanged CJK collection, a Latin font with a few hundred glyphs
edited, a CJK font with every advance width changed, a CJK font with every
outline moved by one unit, a family's Regular against its Bold, a CJK font
with PostScript outlines ('CFF ', CID-keyed) with three charstrings redrawn,
and for the layout accounts of --opentype Liberation Sans with its kerning
edited and a Noto Sans CJK face with edited 'GPOS' and 'GSUB'. For the outline
accounts, pairs that must report no glyph or one: the CID-keyed face against
its desubroutinized copy, DejaVu Sans against its WOFF2, and DejaVu Sans with
one point of one glyph moved (not timed unless named). Both fonts of a
pair are written by the same library, so that they differ only where the edit
says.

Usage: make_pairs.py DIRECTORY [PAIR ...]   (default: every pair)
"""
import copy
import os
import shutil
import sys

from fontTools.ttLib import TTFont

DEJAVU = "/usr/share/fonts/truetype/dejavu/DejaVuSans.ttf"
DEJAVU_BOLD = "/usr/share/fonts/truetype/dejavu/DejaVuSans-Bold.ttf"
WQY = "/usr/share/fonts/truetype/wqy/wqy-zenhei.ttc"
LIBERATION = "/usr/share/fonts/truetype/liberation2/LiberationSans-Regular.ttf"
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


def pair_adjustments(font):
    """The PairPos subtables of a font's 'GPOS', Extension lookups followed."""
    for lookup in font["GPOS"].table.LookupList.Lookup:
        for subtable in lookup.SubTable:
            if lookup.LookupType == 9:
                subtable = subtable.ExtSubTable
            if subtable.LookupType == 2:
                yield subtable


def kerning(directory):
    # Liberation Sans with three kerning values changed and one pair added (DejaVu
    # Sans kerns by classes only, where one value stands for many pairs).
    save(load(LIBERATION), directory, "kerning-original.ttf")
    modified = load(LIBERATION)
    changed = 0
    for subtable in pair_adjustments(modified):
        if subtable.Format != 1:
            continue
        for pair_set in subtable.PairSet:
            for record in pair_set.PairValueRecord:
                if changed < 3 and getattr(record.Value1, "XAdvance", 0):
                    record.Value1.XAdvance -= 10
                    changed += 1
        if changed == 3:
            added = copy.deepcopy(subtable.PairSet[0].PairValueRecord[0])
            added.SecondGlyph = "zero"
            added.Value1.XAdvance = -33
            subtable.PairSet[0].PairValueRecord.insert(0, added)
            subtable.PairSet[0].PairValueCount += 1
            break
    save(modified, directory, "kerning-modified.ttf")


def cjk_layout(directory):
    # A Noto Sans CJK face with one single adjustment and one substitution edited.
    save(load(NOTO_CJK, 0), directory, "cjk-layout-original.otf")
    modified = load(NOTO_CJK, 0)
    for lookup in modified["GPOS"].table.LookupList.Lookup:
        subtables = [s.ExtSubTable if lookup.LookupType == 9 else s for s in lookup.SubTable]
        singles = [s for s in subtables if s.LookupType == 1 and s.Format == 2]
        if singles:
            value = singles[0].Value[0]
            field = next(f for f in ("XPlacement", "XAdvance", "YPlacement", "YAdvance") if hasattr(value, f))
            setattr(value, field, getattr(value, field) + 5)
            break
    for lookup in modified["GSUB"].table.LookupList.Lookup:
        subtables = [s.ExtSubTable if lookup.LookupType == 7 else s for s in lookup.SubTable]
        singles = [s for s in subtables if s.LookupType == 1 and len(s.mapping) > 6]
        if singles:
            inputs = sorted(singles[0].mapping)
            singles[0].mapping[inputs[5]] = singles[0].mapping[inputs[6]]
            break
    save(modified, directory, "cjk-layout-modified.otf")


def cjk_desubroutinized(directory):
    # The same face with every subroutine expanded into its charstrings: each
    # charstring's bytes change, no outline does.
    save(TTFont(NOTO_CJK, fontNumber=0), directory, "cjk-desubroutinized-original.otf")
    modified = TTFont(NOTO_CJK, fontNumber=0)
    modified["CFF "].cff.desubroutinize()
    save(modified, directory, "cjk-desubroutinized-modified.otf")


def dejavu_woff2(directory):
    # DejaVu Sans as packaged against its WOFF2, whose 'glyf' transform stores
    # every glyph's flags and coordinates anew.
    shutil.copy(DEJAVU, os.path.join(directory, "dejavu-woff2-original.ttf"))
    modified = TTFont(DEJAVU)
    modified.flavor = "woff2"
    save(modified, directory, "dejavu-woff2-modified.woff2")


def moved_point(directory):
    # One point of DejaVu Sans's "a" moved 12 units right. Bounds are kept as
    # stored in both, so that no other glyph's record is written anew.
    for name, shift in (("moved-point-original.ttf", 0), ("moved-point-modified.ttf", 12)):
        font = TTFont(DEJAVU, recalcBBoxes=False)
        glyph = font["glyf"]["a"]
        x, y = glyph.coordinates[5]
        glyph.coordinates[5] = (x + shift, y)
        save(font, directory, name)


PAIRS = {
    "cjk-collection": cjk_collection,
    "dejavu-edited": edited_latin,
    "cjk-advances": lambda directory: cjk_font(directory, "cjk-advances", every_advance_wider),
    "cjk-outlines": lambda directory: cjk_font(directory, "cjk-outlines", every_outline_moved),
    "family": family,
    "cjk-cff": cjk_postscript,
    "kerning": kerning,
    "cjk-layout": cjk_layout,
    "cjk-desubroutinized": cjk_desubroutinized,
    "dejavu-woff2": dejavu_woff2,
    "moved-point": moved_point,
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
