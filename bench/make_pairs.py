#!/usr/bin/python3
"""Builds the benchmark's font pairs from fonts packaged by Debian.

Each pair is an original and a modified font file, as a font engineer meets
them in CI: an unchanged CJK collection, a Latin font with a few hundred glyphs
edited, a CJK font with every advance width changed, a CJK font with every
outline moved by one unit, a family's Regular against its Bold, and for the
layout accounts of --opentype Liberation Sans with its kerning edited and a Noto
Sans CJK face with edited 'GPOS' and 'GSUB'. Both fonts
of a pair are written by the same library, so that they differ only where the
edit says.

Usage: make_pairs.py DIRECTORY
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


def main():
    if len(sys.argv) != 2:
        sys.exit(__doc__)
    directory = sys.argv[1]
    os.makedirs(directory, exist_ok=True)
    cjk_collection(directory)
    edited_latin(directory)
    cjk_font(directory, "cjk-advances", every_advance_wider)
    cjk_font(directory, "cjk-outlines", every_outline_moved)
    family(directory)
    kerning(directory)
    cjk_layout(directory)


if __name__ == "__main__":
    main()
