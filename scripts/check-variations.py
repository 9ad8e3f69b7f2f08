#!/usr/bin/env python3
"""Independent reading of the variable tables: velldump --opentype against fontTools.

For each font, the 'fvar', 'avar', 'STAT', 'HVAR', 'VVAR' and 'MVAR' listings that
velldump prints are compared line by line with the same listing written from
fontTools' reading of the table. The fonts are Inter's variable fonts (when
installed) and variable fonts built here with fontTools' fontBuilder and varLib.
A pair with an edited 'fvar' default, 'avar' map and 'STAT' value is compared
with vellcmp --opentype, and the lines the edits must print are looked for. Each
font with a 'gvar' is compared with a copy without variation data, and the tuples
the account lists as added (regions, point numbers and deltas of every glyph)
with fontTools' reading; and with a copy with one 'gvar' delta moved, which
fontTools re-encodes whole: the report must name that delta and nothing else.

    scripts/check-variations.py [--build DIR] [--keep DIR] [font ...]

Exit status 0 when every listing matches, 1 otherwise; without fontTools the
check is skipped with a message (status 0).
"""
import argparse
import os
import subprocess
import sys
import tempfile

try:
    from fontTools.misc.fixedTools import floatToFixedToStr
    from fontTools.ttLib import TTFont
except ImportError:
    # Debian's python3-fonttools lives with the system interpreter.
    if os.path.exists("/usr/bin/python3") and os.path.realpath(sys.executable) != "/usr/bin/python3" \
            and not os.environ.get("VELLCMP_CHECK_REEXEC"):
        os.environ["VELLCMP_CHECK_REEXEC"] = "1"
        os.execv("/usr/bin/python3", ["/usr/bin/python3"] + sys.argv)
    print("check-variations: fontTools is not installed (python3-fonttools); check skipped")
    sys.exit(0)

ROOT = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
INTER = "/usr/share/fonts/truetype/inter-vf"
TABLES = ["fvar", "avar", "STAT", "HVAR", "VVAR", "MVAR"]


# ---- Values as the listings print them ----
# fontTools' own shortest decimal that reads back as the same fixed-point value.
def dec(value):  # 16.16
    return floatToFixedToStr(value, 16)


def f2(value):  # F2Dot14
    return floatToFixedToStr(value, 14)


def tag(text):
    return "'%s'" % text


def name_text(font, name_id):
    name = font["name"].getDebugName(name_id) if "name" in font else None
    return '%d "%s"' % (name_id, name or "")


def name_only(font, name_id):
    return (font["name"].getDebugName(name_id) if "name" in font else None) or ""


def version(value):
    return "%d.%d" % (value >> 16, value & 0xFFFF)


def axis_tags(font):
    return [axis.axisTag for axis in font["fvar"].axes] if "fvar" in font else []


def axis_text(tags, index):
    return tag(tags[index]) if index < len(tags) else "axis %d" % index


def delta_set_text(store, var_idx):
    outer, inner = var_idx >> 16, var_idx & 0xFFFF
    if store is None or outer >= len(store.VarData) or inner >= len(store.VarData[outer].Item):
        return "none"
    data = store.VarData[outer]
    parts = ["region %d: %d" % (r, d) for r, d in zip(data.VarRegionIndex, data.Item[inner])]
    return ", ".join(parts) or "none"


def reached_deltas_text(store, var_idx):
    """The deltas a glyph or a value reaches: by region index, zeros left out."""
    outer, inner = var_idx >> 16, var_idx & 0xFFFF
    if store is None or outer >= len(store.VarData) or inner >= len(store.VarData[outer].Item):
        return "none"
    data = store.VarData[outer]
    pairs = sorted((r, d) for r, d in zip(data.VarRegionIndex, data.Item[inner]) if d != 0)
    return ", ".join("region %d: %d" % pair for pair in pairs) or "none"


def record(lines, heading, fields):
    lines.append("\t" + heading)
    for label, value in fields:
        lines.append("\t\t%s:\t%s" % (label, value))


def unique_keys(records):
    seen = {}
    out = []
    for key, heading, fields in records:
        seen[key] = seen.get(key, 0) + 1
        out.append((key if seen[key] == 1 else "%s #%d" % (key, seen[key]), heading, fields))
    return out


# ---- Listings written from fontTools' reading ----
def list_fvar(font):
    fvar = font["fvar"]
    tags = axis_tags(font)
    has_ps = any(i.postscriptNameID != 0xFFFF for i in fvar.instances)
    lines = ["\tVersion:\t1.0", "\tAxis count:\t%d" % len(fvar.axes), "\tAxis size:\t20",
             "\tInstance count:\t%d" % len(fvar.instances),
             "\tInstance size:\t%d" % (4 + 4 * len(fvar.axes) + (2 if has_ps else 0))]
    for axis in fvar.axes:
        record(lines, "Axis " + tag(axis.axisTag),
               [("Minimum", dec(axis.minValue)), ("Default", dec(axis.defaultValue)),
                ("Maximum", dec(axis.maxValue)), ("Flags", "0x%04X" % axis.flags),
                ("Name", name_text(font, axis.axisNameID))])
    for instance in fvar.instances:
        name = name_only(font, instance.subfamilyNameID) or "name %d" % instance.subfamilyNameID
        fields = [("Subfamily name", name_text(font, instance.subfamilyNameID)), ("Flags", "0x%04X" % instance.flags)]
        fields += [(tag(t), dec(instance.coordinates[t])) for t in tags]
        if has_ps:
            fields.append(("PostScript name", name_text(font, instance.postscriptNameID)))
        record(lines, 'Instance "%s"' % name, fields)
    return lines


def list_avar(font):
    avar = font["avar"]
    tags = axis_tags(font)
    lines = ["\tVersion:\t1.0", "\tAxis count:\t%d" % len(tags)]
    for t in tags:
        segments = sorted(avar.segments.get(t, {}).items())
        record(lines, "Segment map " + tag(t), [(f2(a) + " to", f2(b)) for a, b in segments])
    return lines


def stat_value_record(font, stat_axes, value):
    fields = [("Format", str(value.Format)), ("Flags", "0x%04X" % value.Flags),
              ("Name", name_text(font, value.ValueNameID))]
    if value.Format == 4:
        tags = []
        for rec in value.AxisValueRecord:
            t = axis_text(stat_axes, rec.AxisIndex)
            tags.append(t)
            fields.append(("Value " + t, dec(rec.Value)))
        axes = ", ".join(tags)
    else:
        axes = axis_text(stat_axes, value.AxisIndex)
        fields.append(("Value", dec(value.NominalValue if value.Format == 2 else value.Value)))
        if value.Format == 2:
            fields += [("Range minimum", dec(value.RangeMinValue)), ("Range maximum", dec(value.RangeMaxValue))]
        if value.Format == 3:
            fields.append(("Linked value", dec(value.LinkedValue)))
    name = name_only(font, value.ValueNameID) or "name %d" % value.ValueNameID
    key = '%s "%s"' % (axes, name)
    return key, "Axis value " + key, fields


def list_stat(font):
    stat = font["STAT"].table
    lines = ["\tVersion:\t" + version(stat.Version), "\tDesign axis size:\t%d" % stat.DesignAxisRecordSize,
             "\tDesign axis count:\t%d" % stat.DesignAxisCount, "\tAxis value count:\t%d" % stat.AxisValueCount,
             "\tElided fallback name:\t" + (name_text(font, stat.ElidedFallbackNameID)
                                            if stat.Version >= 0x00010001 else "none")]
    axes = stat.DesignAxisRecord.Axis if stat.DesignAxisRecord else []
    for axis in axes:
        record(lines, "Design axis " + tag(axis.AxisTag),
               [("Name", name_text(font, axis.AxisNameID)), ("Ordering", str(axis.AxisOrdering))])
    values = stat.AxisValueArray.AxisValue if stat.AxisValueArray else []
    stat_axes = [axis.AxisTag for axis in axes]
    for key, heading, fields in unique_keys([stat_value_record(font, stat_axes, v) for v in values]):
        record(lines, heading.replace(heading[len("Axis value "):], key), fields)
    return lines


def list_store(lines, store, tags):
    regions = store.VarRegionList.Region if store.VarRegionList else []
    lines.append("\tItem variation store format:\t%d" % store.Format)
    lines.append("\tRegion axis count:\t%d" % (store.VarRegionList.RegionAxisCount if store.VarRegionList else 0))
    for r, region in enumerate(regions):
        record(lines, "Region %d" % r,
               [(axis_text(tags, i), "peak %s (%s to %s)" % (f2(a.PeakCoord), f2(a.StartCoord), f2(a.EndCoord)))
                for i, a in enumerate(region.VarRegionAxis)])
    for o, data in enumerate(store.VarData):
        indexes = " ".join(str(i) for i in data.VarRegionIndex) or "none"
        record(lines, "Item variation data %d" % o,
               [("Item count", str(data.ItemCount)), ("Word delta count", "0x%04X" % data.NumShorts),
                ("Region indexes", indexes)])
    for o, data in enumerate(store.VarData):
        for i in range(len(data.Item)):
            record(lines, "Delta set %d, item %d" % (o, i), [("Deltas", delta_set_text(store, o << 16 | i))])


def list_metrics_variations(font, table_tag):
    table = font[table_tag].table
    tags = axis_tags(font)
    lines = ["\tVersion:\t" + version(table.Version)]
    list_store(lines, table.VarStore, tags)
    if table_tag == "HVAR":
        maps = [("AdvWidthMap", "Advance deltas"), ("LsbMap", "Left side bearing deltas"),
                ("RsbMap", "Right side bearing deltas")]
    else:
        maps = [("AdvHeightMap", "Advance deltas"), ("TsbMap", "Top side bearing deltas"),
                ("BsbMap", "Bottom side bearing deltas"), ("VOrgMap", "Vertical origin deltas")]
    present = [(getattr(table, attr, None), label) for attr, label in maps]
    present = [(m, label) for i, (m, label) in enumerate(present) if m is not None or i == 0]
    for glyph, glyph_name in enumerate(font.getGlyphOrder()):
        fields = []
        for mapping, label in present:
            index = mapping.mapping[glyph_name] if mapping is not None else glyph
            fields.append((label, reached_deltas_text(table.VarStore, index)))
        record(lines, "Glyph %d" % glyph, fields)
    return lines


def list_mvar(font):
    mvar = font["MVAR"].table
    lines = ["\tVersion:\t" + version(mvar.Version), "\tValue record size:\t%d" % mvar.ValueRecordSize,
             "\tValue record count:\t%d" % mvar.ValueRecordCount]
    for rec in mvar.ValueRecord:
        record(lines, "Value " + tag(rec.ValueTag),
               [("Delta-set index", "%d, %d" % (rec.VarIdx >> 16, rec.VarIdx & 0xFFFF)),
                ("Deltas", reached_deltas_text(mvar.VarStore, rec.VarIdx))])
    list_store(lines, mvar.VarStore, axis_tags(font))
    return lines


LISTERS = {"fvar": list_fvar, "avar": list_avar, "STAT": list_stat, "MVAR": list_mvar,
           "HVAR": lambda font: list_metrics_variations(font, "HVAR"),
           "VVAR": lambda font: list_metrics_variations(font, "VVAR")}


# ---- velldump's listings ----
def velldump_listings(velldump, path, tags):
    output = subprocess.run([velldump, "--opentype", path] + tags, capture_output=True, check=True).stdout
    listings, current, lines = {}, None, []
    for line in output.decode("utf-8", "replace").split("\n"):
        if line.startswith("##### Table '"):
            current, lines = line[len("##### Table '"):len("##### Table '") + 4], []
        elif line == "#####" and current is not None:
            while lines and lines[-1] == "":
                lines.pop()
            listings[current] = lines
            current = None
        elif current is not None:
            lines.append(line)
    return listings


def check_font(velldump, path):
    font = TTFont(path)
    tags = [t for t in TABLES if t in font]
    listings = velldump_listings(velldump, path, tags)
    failures = 0
    for t in tags:
        expected = LISTERS[t](font)
        actual = listings.get(t, [])
        if expected == actual:
            print("ok    %-40s %s (%d lines)" % (os.path.basename(path), t, len(expected)))
            continue
        failures += 1
        print("FAIL  %-40s %s" % (os.path.basename(path), t))
        for i in range(max(len(expected), len(actual))):
            e = expected[i] if i < len(expected) else "<none>"
            a = actual[i] if i < len(actual) else "<none>"
            if e != a:
                print("      line %d\n        fontTools: %r\n        velldump:  %r" % (i + 1, e, a))
                break
    return failures


# ---- Variable fonts built with fontBuilder and varLib ----
def build_master(weight, x_height):
    from fontTools.fontBuilder import FontBuilder
    from fontTools.pens.ttGlyphPen import TTGlyphPen

    def box(width, height, stem):
        pen = TTGlyphPen(None)
        pen.moveTo((50, 0)), pen.lineTo((50, height)), pen.lineTo((50 + stem, height)), pen.lineTo((50 + stem, 0))
        pen.closePath()
        pen.moveTo((width - 50 - stem, 0)), pen.lineTo((width - 50, 0)), pen.lineTo((width - 50, height))
        pen.lineTo((width - 50 - stem, height)), pen.closePath()
        return pen.glyph()

    order = [".notdef", "space", "A", "B", "C"]
    stem = weight // 4
    glyphs = {".notdef": box(500, 700, 40), "space": TTGlyphPen(None).glyph(),
              "A": box(600 + stem, 700, stem), "B": box(580 + stem // 2, 700, stem), "C": box(560, x_height, stem)}
    fb = FontBuilder(1000, isTTF=True)
    fb.setupGlyphOrder(order)
    fb.setupCharacterMap({0x20: "space", 0x41: "A", 0x42: "B", 0x43: "C"})
    fb.setupGlyf(glyphs)
    advances = {".notdef": 500, "space": 250 + stem // 4, "A": 600 + stem, "B": 580 + stem // 2, "C": 560}
    fb.setupHorizontalMetrics({g: (advances[g], glyphs[g].xMin if hasattr(glyphs[g], "xMin") else 0) for g in order})
    fb.setupHorizontalHeader(ascent=800, descent=-200)
    # Vertical metrics that vary with the weight too, so that varLib builds a 'VVAR'.
    fb.setupVerticalMetrics({g: (1000 + stem // 2, 800 - (700 if g != "C" else x_height)) for g in order})
    fb.setupVerticalHeader(ascent=500, descent=-500)
    fb.setupNameTable({"familyName": "Vell Check", "styleName": "Regular", "fullName": "Vell Check Regular",
                      "psName": "VellCheck-Regular", "version": "Version 1.000", "uniqueFontIdentifier": "VellCheck"})
    fb.setupOS2(sxHeight=x_height, sCapHeight=700, sTypoAscender=800, sTypoDescender=-200)
    fb.setupPost()
    return fb.font


def build_variable_font(directory, name, with_width):
    from fontTools import varLib
    from fontTools.designspaceLib import AxisDescriptor, DesignSpaceDocument, InstanceDescriptor, SourceDescriptor
    from fontTools.otlLib.builder import buildStatTable

    doc = DesignSpaceDocument()
    weight = AxisDescriptor()
    weight.tag, weight.name, weight.minimum, weight.default, weight.maximum = "wght", "Weight", 100, 400, 900
    weight.map = [(100, 100), (300, 350), (400, 400), (700, 760), (900, 900)]
    doc.addAxis(weight)
    if with_width:
        width = AxisDescriptor()
        width.tag, width.name, width.minimum, width.default, width.maximum = "wdth", "Width", 75, 100, 100
        doc.addAxis(width)
    masters = [({"Weight": 100}, 100, 500), ({"Weight": 400}, 400, 520), ({"Weight": 900}, 900, 560)]
    if with_width:
        masters = [(dict(loc, Width=100), w, x) for loc, w, x in masters] + [({"Weight": 400, "Width": 75}, 300, 510)]
    for i, (location, w, x) in enumerate(masters):
        source = SourceDescriptor()
        source.font = build_master(w, x)
        source.location = location
        source.name = "master%d" % i
        doc.addSource(source)
    for style, w in [("Thin", 100), ("Regular", 400), ("Bold", 700), ("Black", 900)]:
        instance = InstanceDescriptor()
        instance.styleName, instance.familyName = style, "Vell Check"
        instance.location = {"Weight": w, **({"Width": 100} if with_width else {})}
        instance.postScriptFontName = "VellCheck-" + style
        doc.addInstance(instance)
    font, _, _ = varLib.build(doc, exclude=[])
    axes = [dict(tag="wght", name="Weight", values=[
        dict(value=100, name="Thin"), dict(value=400, name="Regular", flags=0x2, linkedValue=700),
        dict(value=700, name="Bold"), dict(nominalValue=900, rangeMinValue=800, rangeMaxValue=900, name="Black")])]
    locations = []
    if with_width:
        axes.append(dict(tag="wdth", name="Width", values=[dict(value=100, name="Normal", flags=0x2),
                                                             dict(value=75, name="Condensed")]))
        locations = [dict(name="Condensed Bold", location=dict(wght=700, wdth=75))]
    buildStatTable(font, axes, locations)
    path = os.path.join(directory, name)
    font.save(path)
    return path


def check_edited_pair(vellcmp, directory, original_path):
    """An fvar default, an avar map and a STAT value edited: each shows in the report."""
    font = TTFont(original_path)
    font["fvar"].axes[0].defaultValue = 450.0
    segments = font["avar"].segments["wght"]
    moved = sorted(k for k in segments if 0 < k < 1)[0]
    segments[moved] = 0.25
    for value in font["STAT"].table.AxisValueArray.AxisValue:
        if value.Format == 1 and value.Value == 700:
            value.Value = 720.0
    modified_path = os.path.join(directory, "edited.ttf")
    font.save(modified_path)
    report = subprocess.run([vellcmp, "--opentype", original_path, modified_path], capture_output=True).stdout
    report = report.decode("utf-8", "replace")
    wanted = ["\tAxis 'wght'\n\t\tDefault (mod ):\t450.0\n\t\tDefault (orig):\t400.0\n",
              "\tSegment map 'wght'\n\t\t%s to (mod ):\t0.25\n" % f2(moved),
              "\tAxis value 'wght' \"Bold\"\n\t\tValue (mod ):\t720.0\n\t\tValue (orig):\t700.0\n"]
    failures = 0
    for text in wanted:
        found = text in report
        failures += not found
        print("%s  edited pair: %r" % ("ok  " if found else "FAIL", text.strip().split("\n")[0]))
    return failures


def table_block(report, table_tag):
    """The lines of one table's account in a vellcmp report, between its frame lines."""
    lines, inside = [], False
    for line in report.split("\n"):
        if line.startswith("##### Table '%s'" % table_tag):
            inside = True
        elif inside and line == "#####":
            break
        elif inside:
            lines.append(line)
    return [line for line in lines[1:] if line != ""]


def check_gvar_pair(vellcmp, directory, path):
    """One delta of one glyph moved by fontTools, which re-encodes every glyph's
    variation data as it compiles 'gvar': the report names that delta alone."""
    font = TTFont(path)
    tags = axis_tags(font)
    gvar = font["gvar"]
    order = font.getGlyphOrder()
    glyph = next(g for g in order if g in gvar.variations and gvar.variations[g]
                 and any(c is not None for c in gvar.variations[g][0].coordinates) and g not in (".notdef",))
    variation = gvar.variations[glyph][0]
    point = next(i for i, c in enumerate(variation.coordinates) if c is not None)
    x, y = variation.coordinates[point]
    variation.coordinates[point] = (x + 5, y)
    modified_path = os.path.join(directory, "gvar-moved.ttf")
    font.save(modified_path)
    report = subprocess.run([vellcmp, "--opentype", "--tables=gvar", path, modified_path],
                            capture_output=True).stdout.decode("utf-8", "replace")
    expected = ["\t### Changed glyph variations:",
                "\tGlyph %d, tuple %s" % (order.index(glyph), region_text(tags, variation)),
                "\t\tPoint %d (mod ):\t( %d, %d )" % (point, x + 5, y),
                "\t\tPoint %d (orig):\t( %d, %d )" % (point, x, y)]
    actual = table_block(report, "gvar")
    ok = actual == expected
    print("%s  %s: one 'gvar' delta of %s moved, every glyph re-encoded" % ("ok  " if ok else "FAIL",
                                                                      os.path.basename(path), glyph))
    if not ok:
        print("      expected: %r\n      report:   %r" % (expected, actual[:8]))
    return 0 if ok else 1


def region_text(tags, variation):
    """A tuple's region as the 'gvar' account prints it: the axes with a peak, and
    the start and end of an intermediate region, which fontTools writes only when
    they are not the ones the peak implies."""
    parts = []
    for t in tags:
        start, peak, end = variation.axes.get(t, (0, 0, 0))
        if peak == 0:
            continue
        text = "%s %s" % (tag(t), f2(peak))
        if (start, end) != (min(peak, 0), max(peak, 0)):
            text += " (%s to %s)" % (f2(start), f2(end))
        parts.append(text)
    return ", ".join(parts) or "none"


def points_text(points, count):
    if len(points) == count:
        return "all"
    runs, i = [], 0
    while i < len(points):
        j = i
        while j + 1 < len(points) and points[j + 1] == points[j] + 1:
            j += 1
        runs.append(str(points[i]) if j == i else "%d-%d" % (points[i], points[j]))
        i = j + 1
    return ", ".join(runs)


def gvar_tuple_lines(font):
    """Every tuple of every glyph as the 'gvar' account lists an added one, from
    fontTools' reading; the line that says whether the points are shared or
    private is left out, for fontTools does not keep it."""
    tags = axis_tags(font)
    gvar = font["gvar"]
    lines, count = [], 0
    for index, glyph in enumerate(font.getGlyphOrder()):
        for variation in gvar.variations.get(glyph, []):
            count += 1
            lines.append("\tGlyph %d, tuple %s" % (index, region_text(tags, variation)))
            points = [i for i, c in enumerate(variation.coordinates) if c is not None]
            lines.append("\t\tPoint numbers:\t" + points_text(points, len(variation.coordinates)))
            for i in points:
                x, y = variation.coordinates[i]
                lines.append("\t\tPoint %d:\t( %d, %d )" % (i, x, y))
    return lines, count


def check_gvar_tuples(vellcmp, directory, path):
    """Every tuple of every glyph: the font against a copy without variation data,
    so that the account lists each tuple as added, compared with fontTools' reading."""
    font = TTFont(path)
    expected, tuples = gvar_tuple_lines(font)
    for glyph in font["gvar"].variations:
        font["gvar"].variations[glyph] = []
    bare_path = os.path.join(directory, "gvar-bare.ttf")
    font.save(bare_path)
    report = subprocess.run([vellcmp, "--opentype", "--tables=gvar", bare_path, path],
                            capture_output=True).stdout.decode("utf-8", "replace")
    heading = "\t### Added glyph variations (in modified font and not original font):"
    block = table_block(report, "gvar")
    actual = block[block.index(heading) + 1:] if heading in block else []
    actual = [line for line in actual if not line.startswith("\t\tPoint numbers stored:\t")]
    ok = actual == expected
    print("%s  %-40s gvar: %d tuples of %d glyphs, %d lines" % ("ok  " if ok else "FAIL", os.path.basename(path),
                                                                 tuples, len(font.getGlyphOrder()), len(expected)))
    if not ok:
        for i in range(max(len(expected), len(actual))):
            e = expected[i] if i < len(expected) else "<none>"
            a = actual[i] if i < len(actual) else "<none>"
            if e != a:
                print("      line %d\n        fontTools: %r\n        vellcmp:   %r" % (i + 1, e, a))
                break
    return 0 if ok else 1


def main():
    parser = argparse.ArgumentParser(description=__doc__.split("\n")[0])
    parser.add_argument("--build", default=os.path.join(ROOT, "build"), help="the build directory")
    parser.add_argument("--keep", help="write the built fonts here instead of a temporary directory")
    parser.add_argument("fonts", nargs="*")
    options = parser.parse_args()
    velldump = os.path.join(options.build, "velldump")
    vellcmp = os.path.join(options.build, "vellcmp")
    failures = 0
    with tempfile.TemporaryDirectory() as temporary:
        directory = options.keep or temporary
        os.makedirs(directory, exist_ok=True)
        fonts = list(options.fonts)
        if not fonts:
            fonts = [os.path.join(INTER, f) for f in sorted(os.listdir(INTER))] if os.path.isdir(INTER) else []
            if not fonts:
                print("note: Inter's variable fonts are not installed (fonts-inter-variable); built fonts only")
            built = build_variable_font(directory, "weight.ttf", False)
            fonts += [built, build_variable_font(directory, "weight-width.ttf", True)]
            failures += check_edited_pair(vellcmp, directory, built)
        for path in fonts:
            failures += check_font(velldump, path)
            if "gvar" in TTFont(path):
                failures += check_gvar_tuples(vellcmp, directory, path)
                failures += check_gvar_pair(vellcmp, directory, path)
    print("check-variations: %s" % ("all listings match" if failures == 0 else "%d mismatches" % failures))
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main())
