#!/usr/bin/python3
"""Builds font pairs with one kind of layout edit each, from fonts packaged by
Debian, to read what vellcmp --opentype says of them:

  kerning    Liberation Sans, three pair values changed and one pair added
  marks      DejaVu Sans, two base anchors and one mark anchor of 'mark' moved
  ligatures  DejaVu Sans, the 'fl' ligature dropped and one single substitution
             of 'case' changed
  classes    DejaVu Sans, three 'GDEF' glyph classes changed
  renumbered Cantarell (a 'CFF ' font whose 'post' names no glyph), one glyph
             dropped so that every later glyph moves down by one: rules still
             match by the names of the charset

Both fonts of a pair are written by the same library, so that they differ only
where the edit says.

Usage: make-layout-pairs.py DIRECTORY
"""
import os
import sys

from fontTools import subset
from fontTools.ttLib import TTFont

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "bench"))
import make_pairs  # noqa: E402

DEJAVU = "/usr/share/fonts/truetype/dejavu/DejaVuSans.ttf"
CANTARELL = "/usr/share/fonts/opentype/cantarell/Cantarell-Regular.otf"


def load(path):
    font = TTFont(path)
    for tag in font.keys():
        font[tag]
    return font


def lookups(font, tag, kind):
    """(index, subtable) of every subtable of one lookup type, Extensions followed."""
    extension = 7 if tag == "GSUB" else 9
    for index, lookup in enumerate(font[tag].table.LookupList.Lookup):
        for subtable in lookup.SubTable:
            if lookup.LookupType == extension:
                subtable = subtable.ExtSubTable
            if subtable.LookupType == kind:
                yield index, subtable


def write_pair(directory, name, original, modified, extension="ttf"):
    original.save(os.path.join(directory, "%s-original.%s" % (name, extension)))
    modified.save(os.path.join(directory, "%s-modified.%s" % (name, extension)))


def kerning(directory):
    # The bench's kerning pair: Liberation Sans with three values changed and one pair added.
    make_pairs.kerning(directory)


def marks(directory):
    modified = load(DEJAVU)
    _, subtable = next(lookups(modified, "GPOS", 4))
    for record in subtable.BaseArray.BaseRecord[:2]:
        anchor = next(a for a in record.BaseAnchor if a is not None)
        anchor.YCoordinate += 20
    subtable.MarkArray.MarkRecord[0].MarkAnchor.XCoordinate -= 15
    write_pair(directory, "marks", load(DEJAVU), modified)


def ligatures(directory):
    modified = load(DEJAVU)
    for _, subtable in lookups(modified, "GSUB", 4):
        for first, ligatures in subtable.ligatures.items():
            if first == "f":
                ligatures[:] = [lig for lig in ligatures if lig.LigGlyph != "fl"]
    case = modified["GSUB"].table.FeatureList.FeatureRecord
    index = next(r.Feature.LookupListIndex[0] for r in case if r.FeatureTag == "case")
    lookup = modified["GSUB"].table.LookupList.Lookup[index].SubTable[0]
    inputs = sorted(lookup.mapping)
    lookup.mapping[inputs[0]] = lookup.mapping[inputs[1]]
    write_pair(directory, "ligatures", load(DEJAVU), modified)


def classes(directory):
    modified = load(DEJAVU)
    class_defs = modified["GDEF"].table.GlyphClassDef.classDefs
    # A base that becomes a mark, a mark that becomes a base, a base that becomes a ligature.
    bases = [g for g, c in sorted(class_defs.items(), key=lambda i: modified.getGlyphID(i[0])) if c == 1]
    mark = next(g for g, c in sorted(class_defs.items(), key=lambda i: modified.getGlyphID(i[0])) if c == 3)
    class_defs[bases[40]] = 3
    class_defs[mark] = 1
    class_defs[bases[41]] = 2
    write_pair(directory, "classes", load(DEJAVU), modified)


def renumbered(directory):
    def subset_of(drop):
        font = load(CANTARELL)
        options = subset.Options()
        options.layout_features = ["*"]
        options.name_IDs = ["*"]
        options.notdef_outline = True
        options.glyph_names = True
        options.drop_tables = []
        keep = [g for g in font.getGlyphOrder() if g not in drop]
        subsetter = subset.Subsetter(options)
        subsetter.populate(glyphs=keep)
        subsetter.subset(font)
        return font
    # 'Aacute' stands early in the glyph order and has a mark anchor.
    write_pair(directory, "renumbered", subset_of(()), subset_of(("Aacute",)), "otf")


def main():
    if len(sys.argv) != 2:
        sys.exit(__doc__)
    directory = sys.argv[1]
    os.makedirs(directory, exist_ok=True)
    kerning(directory)
    marks(directory)
    ligatures(directory)
    classes(directory)
    renumbered(directory)


if __name__ == "__main__":
    main()
