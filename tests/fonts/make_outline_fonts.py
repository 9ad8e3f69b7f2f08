#!/usr/bin/python3
"""Builds the small PostScript-outline fonts of the outline tests with fontTools.

  cff-original.otf    name-keyed 'CFF ': .notdef, A (a square), B (a triangle and
                      a curve), C (a square); widths 500, 600, 700, 500
  cff-modified.otf    A with one point moved, B 10 units wider, C with a second
                      contour, .notdef unchanged; glyph D added; FullName and
                      BlueValues changed
  cff-reencoded.otf   cff-original's outlines spelled with other operators and
                      with B drawn through a local subroutine
  cff-hinted.otf      cff-original with stem hints and a hint mask on A, and B
                      hinted through a subroutine
  cid-original.otf    CID-keyed: face 0 of Noto Sans CJK Regular (fonts-noto-cjk)
                      subset to A and three ideographs, CIDs kept
  cid-modified.otf    the same subset to A, B and two of the ideographs
  cff2-original.otf   'CFF2' with a 'wght' axis (100, 400, 900) and the named
                      instances Regular (400) and Bold (900): glyph A's right edge
                      moves 20 units from Regular to Bold
  cff2-modified.otf   the same with that delta 40: equal at the default location,
                      different at Bold

Usage: make_outline_fonts.py [DIRECTORY]   (default: this script's directory)
"""
import os
import sys

from fontTools.cffLib import SubrsIndex
from fontTools.fontBuilder import FontBuilder
from fontTools.misc.psCharStrings import T2CharString
from fontTools.ttLib import TTFont

NOTO_CJK = "/usr/share/fonts/opentype/noto/NotoSansCJK-Regular.ttc"

ORDER = [".notdef", "A", "B", "C"]
CMAP = {0x41: "A", 0x42: "B", 0x43: "C", 0x44: "D"}


def charstring(program):
    return T2CharString(program=program)


# Each glyph as a charstring program; the width comes first.
ORIGINAL = {
    ".notdef": [500, 50, 0, "rmoveto", 400, 0, "rlineto", 0, 700, "rlineto", -400, 0, "rlineto", "endchar"],
    "A": [600, 100, 0, "rmoveto", 400, 0, "rlineto", 0, 400, "rlineto", -400, 0, "rlineto", "endchar"],
    "B": [700, 100, 0, "rmoveto", 500, 0, "rlineto", -250, 600, "rlineto",
          0, 100, "rmoveto", 50, 0, 50, 50, 0, 50, "rrcurveto", "endchar"],
    "C": [500, 100, 100, "rmoveto", 300, 0, "rlineto", 0, 300, "rlineto", -300, 0, "rlineto", "endchar"],
}


def build_cff(path, programs, full_name="Outline Test", blue_values=(-10, 0, 500, 510), subrs=None):
    order = [name for name in ORDER + ["D"] if name in programs]
    fb = FontBuilder(1000, isTTF=False)
    fb.setupGlyphOrder(order)
    fb.setupCharacterMap({code: name for code, name in CMAP.items() if name in programs})
    private = {"BlueValues": list(blue_values), "StdVW": 80, "defaultWidthX": 500, "nominalWidthX": 0}
    fb.setupCFF("OutlineTest-Regular", {"FullName": full_name}, {n: charstring(p) for n, p in programs.items()},
                private)
    if subrs:
        top = fb.font["CFF "].cff.topDictIndex[0]
        index = SubrsIndex()
        for program in subrs:
            index.append(T2CharString(program=program, private=top.Private))
        top.Private.Subrs = index
        for name in order:
            top.CharStrings[name].private = top.Private
    fb.setupHorizontalMetrics({name: (programs[name][0], 0) for name in order})
    fb.setupHorizontalHeader(ascent=800, descent=-200)
    fb.setupNameTable({"familyName": "Outline Test", "styleName": "Regular", "fullName": "Outline Test",
                      "version": "Version 1.000"})
    fb.setupOS2()
    fb.setupPost()
    fb.save(path)


def build_cff2(path, delta):
    fb = FontBuilder(1000, isTTF=False)
    fb.setupGlyphOrder([".notdef", "A"])
    fb.setupCharacterMap({0x41: "A"})
    notdef = [50, 0, "rmoveto", 400, 0, "rlineto", 0, 700, "rlineto", -400, 0, "rlineto"]
    # The right edge: 400 at the default location, 400 + delta at wght 900.
    glyph = [100, 0, "rmoveto", 400, delta, 1, "blend", 0, "rlineto", 0, 400, "rlineto",
             -400, -delta, 1, "blend", 0, "rlineto"]
    fb.setupNameTable({"familyName": "Outline Variable", "styleName": "Regular", "fullName": "Outline Variable",
                      "version": "Version 1.000"})
    fb.setupFvar([("wght", 100, 400, 900, "Weight")],
                 [{"location": {"wght": 400}, "stylename": "Regular"},
                  {"location": {"wght": 900}, "stylename": "Bold"}])
    fb.setupCFF2({".notdef": charstring(notdef), "A": charstring(glyph)}, regions=[{"wght": (0, 1, 1)}])
    fb.setupHorizontalMetrics({".notdef": (500, 50), "A": (600, 100)})
    fb.setupHorizontalHeader(ascent=800, descent=-200)
    fb.setupOS2()
    fb.setupPost()
    fb.save(path)


def build_cid(path, codes):
    from fontTools import subset

    options = subset.Options()
    options.notdef_outline = True
    font = TTFont(NOTO_CJK, fontNumber=0)
    subsetter = subset.Subsetter(options)
    subsetter.populate(unicodes=codes)
    subsetter.subset(font)
    font.save(path)


def main():
    directory = sys.argv[1] if len(sys.argv) > 1 else os.path.dirname(os.path.abspath(__file__))
    build_cff(os.path.join(directory, "cff-original.otf"), ORIGINAL)

    modified = {name: list(program) for name, program in ORIGINAL.items()}
    # A's second point at ( 520, 0 ) for ( 500, 0 ), and no other point moved.
    modified["A"] = [600, 100, 0, "rmoveto", 420, 0, "rlineto", -20, 400, "rlineto", -400, 0, "rlineto", "endchar"]
    modified["B"][0] = 710
    modified["C"] = modified["C"][:-1] + [50, 50, "rmoveto", 100, 0, "rlineto", 0, 100, "rlineto", "endchar"]
    modified["D"] = [500, 0, 0, "rmoveto", 100, 100, "rlineto", "endchar"]
    build_cff(os.path.join(directory, "cff-modified.otf"), modified, full_name="Outline Test Edited",
              blue_values=(-12, 0, 500, 510))

    # The same outlines: lines in their horizontal and vertical forms, B's
    # triangle from a subroutine (local subroutine 0 is called with bias -107).
    reencoded = dict(ORIGINAL)
    reencoded["A"] = [600, 100, 0, "rmoveto", 400, 400, -400, "hlineto", "endchar"]
    reencoded["B"] = [700, 100, 0, "rmoveto", -107, "callsubr", 0, 100, "rmoveto",
                      50, 0, 50, 50, 0, 50, "rrcurveto", "endchar"]
    reencoded["C"] = [500, 100, 100, "rmoveto", 300, 300, -300, "hlineto", "endchar"]
    build_cff(os.path.join(directory, "cff-reencoded.otf"), reencoded,
              subrs=[[500, 0, "rlineto", -250, 600, "rlineto", "return"]])

    # Stems by edges: A's bottom and top (0 to 60, 340 to 400) and its sides.
    hinted = dict(ORIGINAL)
    hinted["A"] = [600, 0, 60, 280, 60, "hstemhm", 100, 60, 280, 60, "vstemhm", "hintmask", bytes([0xF0]),
                   100, 0, "rmoveto", 400, 0, "rlineto", 0, 400, "rlineto", -400, 0, "rlineto", "endchar"]
    hinted["B"] = [700, -107, "callsubr", 100, 0, "rmoveto", 500, 0, "rlineto", -250, 600, "rlineto",
                   0, 100, "rmoveto", 50, 0, 50, 50, 0, 50, "rrcurveto", "endchar"]
    build_cff(os.path.join(directory, "cff-hinted.otf"), hinted, subrs=[[0, 20, "hstem", "return"]])

    if os.path.exists(NOTO_CJK):
        build_cid(os.path.join(directory, "cid-original.otf"), [0x41, 0x6C38, 0x56FD, 0x5B57])
        build_cid(os.path.join(directory, "cid-modified.otf"), [0x41, 0x42, 0x6C38, 0x56FD])

    build_cff2(os.path.join(directory, "cff2-original.otf"), 20)
    build_cff2(os.path.join(directory, "cff2-modified.otf"), 40)


if __name__ == "__main__":
    main()
