#!/usr/bin/python3
"""Reads 'GPOS' and 'GSUB' of installed fonts twice: as velldump --opentype lists
them, and independently with fontTools, and reports every flattened pair value,
mark and base anchor, and single, multiple, alternate and ligature substitution
on which the two readings differ.

Usage: scripts/check-layout.py [--velldump build/velldump] [font ...]
Without fonts, checks the Debian fonts the project is tested on that are installed.
Exits 0 when every reading agrees, 1 on a mismatch; skips (exit 0) without fontTools.
"""
import argparse
import collections
import glob
import os
import re
import subprocess
import sys

try:
    from fontTools.ttLib import TTFont, TTCollection
except ImportError:
    print("check-layout: fontTools is not installed (python3-fonttools); skipped")
    sys.exit(0)

DEFAULT_FONTS = [
    "/usr/share/fonts/truetype/dejavu/DejaVu*.ttf",
    "/usr/share/fonts/truetype/liberation2/Liberation*.ttf",
    "/usr/share/fonts/truetype/noto/NotoSans-*.ttf",
    "/usr/share/fonts/truetype/noto/NotoSerif-*.ttf",
    "/usr/share/fonts/opentype/noto/NotoSansCJK-Regular.ttc",
    "/usr/share/fonts/opentype/cantarell/*.otf",
    "/usr/share/fonts/truetype/inter-vf/*.ttf",
]

SUBSTITUTIONS = ("Substitution", "Alternates", "Ligature")
ATTACHMENTS = ("Mark", "Base", "Ligature", "Mark2")


# ---- velldump's reading ----

def velldump_sections(velldump, path, number):
    """{table tag: [(section heading, [(label, text)])]} of one font (the first of a
    collection when number is 0) from velldump --opentype."""
    run = subprocess.run([velldump, "--opentype", path, "GPOS", "GSUB"], capture_output=True, check=False)
    tables = collections.defaultdict(list)
    table, font = None, 0
    for line in run.stdout.decode("utf-8", "replace").splitlines():
        match = re.match(r"##### Font (\d+):", line)
        if match:
            font, table = int(match.group(1)) - 1, None
            continue
        match = re.match(r"##### Table '(....)'", line)
        if match:
            table = match.group(1) if font == (number or 0) else None
            continue
        if table is None:
            continue
        if line.startswith("### ") and line.endswith(":"):
            tables[table].append((line[4:-1], []))
            continue
        match = re.match(r"\t([^\t:]+):\t(.*)$", line)
        if match and tables[table]:
            tables[table][-1][1].append((match.group(1), match.group(2)))
    return tables


def section_tag(heading):
    match = re.match(r"('....') rules", heading)
    return match.group(1) if match else None


# ---- fontTools' reading, flattened the same way ----

def subtables(lookup, extension):
    for subtable in lookup.SubTable:
        if lookup.LookupType == extension:
            subtable = subtable.ExtSubTable
        yield subtable


def lookup_type(lookup, extension):
    if lookup.LookupType == extension and lookup.SubTable:
        return lookup.SubTable[0].ExtensionLookupType
    return lookup.LookupType


VARIATION_STORE = [None]  # the 'GDEF' item variation store of the font being checked


def device_text(device):
    if device is None:
        return None
    if device.DeltaFormat == 0x8000:
        outer, inner = device.StartSize, device.EndSize
        store = VARIATION_STORE[0]
        if store is None:
            return "variation %d/%d" % (outer, inner)
        deltas = ""
        if outer < len(store.VarData) and inner < len(store.VarData[outer].Item):
            data = store.VarData[outer]
            deltas = ", ".join("region %d: %d" % (r, d) for r, d in zip(data.VarRegionIndex, data.Item[inner]))
        return "delta set %d/%d (%s)" % (outer, inner, deltas or "no deltas")
    values = getattr(device, "DeltaValue", []) or []
    corrections = ["%d: %d" % (device.StartSize + i, v) for i, v in enumerate(values) if v]
    return "device" + (" ppem " + ", ".join(corrections) if corrections else " without corrections")


FIELDS = (("XPlacement", "X placement"), ("YPlacement", "Y placement"),
          ("XAdvance", "X advance"), ("YAdvance", "Y advance"))
DEVICES = (("XPlaDevice", "X placement"), ("YPlaDevice", "Y placement"),
           ("XAdvDevice", "X advance"), ("YAdvDevice", "Y advance"))


class Adjustment:
    def __init__(self, record=None):
        self.values = [0, 0, 0, 0]
        self.devices = []
        if record is None:
            return
        for i, (field, _) in enumerate(FIELDS):
            self.values[i] = getattr(record, field, 0) or 0
        for field, name in DEVICES:
            device = getattr(record, field, None)
            if device is not None:
                self.devices.append(name + " " + device_text(device))

    def zero(self):
        return not any(self.values) and not self.devices

    def add(self, other):
        self.values = [a + b for a, b in zip(self.values, other.values)]
        self.devices += other.devices

    def text(self):
        parts = ["%s %d" % (name, v) for (_, name), v in zip(FIELDS, self.values) if v]
        parts += self.devices
        return ", ".join(parts) if parts else "0"


def flatten_pairs(lookup, glyph_count, gid):
    covered, first_covered, values = set(), set(), {}
    for st in subtables(lookup, 9):
        coverage = [gid[g] for g in st.Coverage.glyphs]
        if st.Format == 1:
            for i, first in enumerate(coverage):
                if first in first_covered or i >= len(st.PairSet):
                    continue
                for record in st.PairSet[i].PairValueRecord:
                    pair = (first, gid[record.SecondGlyph])
                    if pair in covered:
                        continue
                    covered.add(pair)
                    a = Adjustment(getattr(record, "Value1", None))
                    b = Adjustment(getattr(record, "Value2", None))
                    if not (a.zero() and b.zero()):
                        values[pair] = (a, b)
        elif st.Format == 2:
            classes1 = {gid[g]: c for g, c in st.ClassDef1.classDefs.items()}
            classes2 = {gid[g]: c for g, c in st.ClassDef2.classDefs.items()}
            members = collections.defaultdict(list)
            for g in range(glyph_count):
                members[classes2.get(g, 0)].append(g)
            for first in coverage:
                if first in first_covered:
                    continue
                first_covered.add(first)
                c1 = classes1.get(first, 0)
                if c1 >= st.Class1Count:
                    continue
                for c2, record in enumerate(st.Class1Record[c1].Class2Record):
                    a = Adjustment(getattr(record, "Value1", None))
                    b = Adjustment(getattr(record, "Value2", None))
                    if a.zero() and b.zero():
                        continue
                    for second in members[c2]:
                        if (first, second) not in covered:
                            values[(first, second)] = (a, b)
    return values


def anchor_text(anchor):
    if anchor is None:
        return "none"
    text = "(%d, %d)" % (anchor.XCoordinate, anchor.YCoordinate)
    if anchor.Format == 2:
        text += " point %d" % anchor.AnchorPoint
    elif anchor.Format == 3:
        if anchor.XDeviceTable:
            text += " X " + device_text(anchor.XDeviceTable)
        if anchor.YDeviceTable:
            text += " Y " + device_text(anchor.YDeviceTable)
    return text


def attachment_rules(lookup, index, gid):
    """{(label, key): value} of a mark attachment lookup, in velldump's words."""
    rules = collections.OrderedDict()
    kind = lookup_type(lookup, 9)
    label = {4: "Base", 5: "Ligature", 6: "Mark2"}[kind]

    def add(key, value):
        rules[key] = rules[key] + "; " + value if key in rules else value

    for st in subtables(lookup, 9):
        if kind == 4:
            marks, bases, mark_array = st.MarkCoverage, st.BaseCoverage, st.MarkArray
            records = [[r.BaseAnchor[c] for c in range(st.ClassCount)] for r in st.BaseArray.BaseRecord]
        elif kind == 5:
            marks, bases, mark_array = st.MarkCoverage, st.LigatureCoverage, st.MarkArray
            records = [[[c.LigatureAnchor[k] for k in range(st.ClassCount)] for c in attach.ComponentRecord]
                       for attach in st.LigatureArray.LigatureAttach]
        else:
            marks, bases, mark_array = st.Mark1Coverage, st.Mark2Coverage, st.Mark1Array
            records = [[r.Mark2Anchor[c] for c in range(st.ClassCount)] for r in st.Mark2Array.Mark2Record]
        for glyph, record in zip(marks.glyphs, mark_array.MarkRecord):
            add(("Mark", "%d lookup %d" % (gid[glyph], index)),
                "class %d %s" % (record.Class, anchor_text(record.MarkAnchor)))
        if st.ClassCount == 0:
            continue
        for glyph, record in zip(bases.glyphs, records):
            def anchors(row):
                return ", ".join("class %d %s" % (c, anchor_text(a)) for c, a in enumerate(row))
            if kind == 5:
                value = "; ".join("component %d: %s" % (i, anchors(row)) for i, row in enumerate(record))
            else:
                value = anchors(record)
            add((label, "%d lookup %d" % (gid[glyph], index)), value)
    return rules


def substitution_rules(lookup, gid):
    """[(label, key, value)] of a single, multiple, alternate or ligature lookup."""
    rules = []
    kind = lookup_type(lookup, 7)
    covered = set()
    for st in subtables(lookup, 7):
        if kind == 1:
            for glyph in st.Coverage.glyphs if hasattr(st, "Coverage") else st.mapping:
                if gid[glyph] not in covered and glyph in st.mapping:
                    covered.add(gid[glyph])
                    rules.append(("Substitution", str(gid[glyph]), "-> %d" % gid[st.mapping[glyph]]))
        elif kind in (2, 3):
            mapping = st.mapping if kind == 2 else st.alternates
            for glyph in st.Coverage.glyphs if hasattr(st, "Coverage") else mapping:
                if gid[glyph] in covered or glyph not in mapping:
                    continue
                covered.add(gid[glyph])
                out = " ".join(str(gid[g]) for g in mapping[glyph])
                rules.append(("Substitution", str(gid[glyph]), "-> " + out) if kind == 2 else
                             ("Alternates", str(gid[glyph]), "-> [" + out + "]"))
        elif kind == 4:
            for first in st.Coverage.glyphs if hasattr(st, "Coverage") else st.ligatures:
                for ligature in st.ligatures.get(first, []):
                    key = " ".join(str(gid[g]) for g in [first] + list(ligature.Component))
                    rules.append(("Ligature", key, "-> %d" % gid[ligature.LigGlyph]))
    return rules


def rule_text(key, value):
    return key + (" " if value.startswith("->") or value.startswith("=>") else ": ") + value


def lookup_lists(table):
    """{feature tag: set of distinct lookup lists} as velldump makes sections of them."""
    lists = collections.defaultdict(list)
    if table.FeatureList:
        for record in table.FeatureList.FeatureRecord:
            indices = tuple(record.Feature.LookupListIndex)
            if indices not in lists["'%s'" % record.FeatureTag]:
                lists["'%s'" % record.FeatureTag].append(indices)
    return lists


def check_font(velldump, path, font, number, problems):
    gid = {name: i for i, name in enumerate(font.getGlyphOrder())}
    gdef = font["GDEF"].table if "GDEF" in font else None
    VARIATION_STORE[0] = getattr(gdef, "VarStore", None) if gdef is not None and gdef.Version >= 0x00010003 else None
    glyph_count = len(gid)
    dumped = velldump_sections(velldump, path, number)
    where = path if number is None else "%s#%d" % (path, number)
    counts = collections.Counter()

    def compare(kind, tag, mine, theirs):
        # Both readings as a multiset of sections, each a sorted tuple of rule texts.
        if collections.Counter(mine) != collections.Counter(theirs):
            missing = set().union(*theirs) - set().union(*mine) if theirs else set()
            extra = set().union(*mine) - set().union(*theirs) if mine else set()
            problems.append("%s: %s %s: %d rules only fontTools reads, %d only velldump lists; e.g. %s / %s" % (
                where, kind, tag, len(missing), len(extra), sorted(missing)[:3], sorted(extra)[:3]))

    if "GPOS" in font and font["GPOS"].table.LookupList:
        table = font["GPOS"].table
        lookups = table.LookupList.Lookup
        sections = dumped.get("GPOS", [])
        for tag, lists in lookup_lists(table).items():
            theirs = []
            for indices in lists:
                sums = {}
                for index in indices:
                    if index < len(lookups) and lookup_type(lookups[index], 9) == 2:
                        for pair, (a, b) in flatten_pairs(lookups[index], glyph_count, gid).items():
                            total = sums.setdefault(pair, (Adjustment(), Adjustment()))
                            total[0].add(a)
                            total[1].add(b)
                rules = []
                for pair, (a, b) in sums.items():
                    if a.zero() and b.zero():
                        continue
                    value = a.text() + ("; second " + b.text() if not b.zero() else "")
                    rules.append("Pair\t" + rule_text("%d %d" % pair, value))
                theirs.append(tuple(sorted(rules)))
            mine = [tuple(sorted(label + "\t" + text for label, text in rules if label == "Pair"))
                    for heading, rules in sections if section_tag(heading) == tag]
            counts["pairs"] += sum(len(s) for s in theirs)
            compare("pairs of", tag, mine, theirs)
        used = sorted({i for lists in lookup_lists(table).values() for indices in lists for i in indices})
        theirs = set()
        for index in used:
            if index < len(lookups) and lookup_type(lookups[index], 9) in (4, 5, 6):
                for (label, key), value in attachment_rules(lookups[index], index, gid).items():
                    theirs.add(label + "\t" + rule_text(key, value))
        mine = {label + "\t" + text for heading, rules in sections for label, text in rules if label in ATTACHMENTS}
        counts["anchors"] += len(theirs)
        compare("anchors", "", [tuple(sorted(mine))], [tuple(sorted(theirs))])

    if "GSUB" in font and font["GSUB"].table.LookupList:
        table = font["GSUB"].table
        lookups = table.LookupList.Lookup
        sections = dumped.get("GSUB", [])
        for tag, lists in lookup_lists(table).items():
            theirs = []
            for indices in lists:
                merged = collections.OrderedDict()
                for index in indices:
                    if index < len(lookups) and lookup_type(lookups[index], 7) in (1, 2, 3, 4):
                        for label, key, value in substitution_rules(lookups[index], gid):
                            k = (label, key)
                            merged[k] = merged[k] + "; " + value if k in merged else value
                theirs.append(tuple(sorted("%s\t%s" % (label, rule_text(key, value))
                                           for (label, key), value in merged.items())))
            mine = [tuple(sorted(label + "\t" + text for label, text in rules if label in SUBSTITUTIONS))
                    for heading, rules in sections if section_tag(heading) == tag]
            counts["substitutions"] += sum(len(s) for s in theirs)
            compare("substitutions of", tag, mine, theirs)
    return counts


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--velldump", default=os.path.join(os.path.dirname(__file__), "..", "build", "velldump"))
    parser.add_argument("fonts", nargs="*")
    arguments = parser.parse_args()
    fonts = arguments.fonts or sorted(p for pattern in DEFAULT_FONTS for p in glob.glob(pattern))
    problems = []
    for path in fonts:
        if path.endswith(".ttc"):
            # A collection's first face: the others share its layout tables' kind.
            faces = [(TTCollection(path).fonts[0], 0)]
        else:
            faces = [(TTFont(path, lazy=False), None)]
        for font, number in faces:
            before = len(problems)
            counts = check_font(arguments.velldump, path, font, number, problems)
            print("%s %s: %d pairs, %d anchors, %d substitutions" % (
                "ok  " if len(problems) == before else "FAIL", os.path.basename(path),
                counts["pairs"], counts["anchors"], counts["substitutions"]))
    for problem in problems:
        print(problem)
    sys.exit(1 if problems else 0)


if __name__ == "__main__":
    main()
