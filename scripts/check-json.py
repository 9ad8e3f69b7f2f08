#!/usr/bin/python3
"""Checks --json against the text report it stands for.

For each pair of fonts, runs vellcmp twice with the same options, once with
--json, and checks that every record parses, that the tables listed match, and
that each difference record matches the value lines of the text report, in
order, table by table:

  - changed-value pairs ("Label (mod ):" then "Label (orig):") against field
    records, the values compared as the types they print (a version's two
    halves, a date, a tag, a signed or hexadecimal number, a decimal);
  - 'cmap' remappings, 'name' changes and 'glyf' outlines (bounds and points)
    against their field records, 'hdmx' width changes likewise;
  - the outline accounts of --opentype ('CFF ', 'CFF2', 'glyf'): their
    changed-value pairs (DICT fields, widths, moved points, contours, hints,
    components, instructions) against field records, in order, and the glyphs
    and contours one font has against entry records;
  - the rows a hex difference marks against the byte-range records.

Usage: scripts/check-json.py [--vellcmp PATH] [--opentype] [ORIGINAL MODIFIED ...]
Without font files it checks the Regular-against-Bold pairs of DejaVu Sans,
Liberation Sans and Noto Sans under /usr/share/fonts.
"""
import argparse
import json
import os
import re
import subprocess
import sys

ROOT = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
FONTS = "/usr/share/fonts/truetype"
DEFAULT_PAIRS = [
    (f"{FONTS}/dejavu/DejaVuSans.ttf", f"{FONTS}/dejavu/DejaVuSans-Bold.ttf"),
    (f"{FONTS}/liberation2/LiberationSans-Regular.ttf", f"{FONTS}/liberation2/LiberationSans-Bold.ttf"),
    (f"{FONTS}/noto/NotoSans-Regular.ttf", f"{FONTS}/noto/NotoSans-Bold.ttf"),
]

PAIR_LINE = re.compile(r"^\t+(.*) \(mod \):\t(.*)$")
ORIG_LINE = re.compile(r"^\t+(.*) \(orig\):\t(.*)$")
REMAP_LINE = re.compile(r"^\t(?:U\+|0x)([0-9A-F]+) ==> (\d+) ==> (\d+)$")
POINT_LINE = re.compile(r"^\t\t\t(\d+):\t\( (\S+), (\S+) \)$")
HEX_ROW = re.compile(r"^==> 0x([0-9A-F]{8})\t((?:[0-9A-F]{2} |   ){8})\t\|\t.*\t\|\|\t((?:[0-9A-F]{2} |   ){8})\t\|\t")


class Mismatch(Exception):
    pass


def run(vellcmp, options, original, modified):
    result = subprocess.run([vellcmp, *options, original, modified], capture_output=True)
    if result.returncode not in (0, 1):
        raise Mismatch(f"vellcmp {' '.join(options)} exited {result.returncode}: {result.stderr[:300]!r}")
    return result.stdout.decode("utf-8", "surrogateescape")


def accounts(text):
    """The text report's table accounts: tag -> lines between header and footer."""
    found, tag, lines = {}, None, []
    for line in text.split("\n"):
        header = re.match(r"^##### Table '(.{4})' \(", line)
        if header:
            tag, lines = header.group(1), []
        elif tag and line == " End table comparison":
            found[tag] = lines
            tag = None
        elif tag:
            lines.append(line)
    return found


def listed_tables(text):
    lists, section = {"added": [], "deleted": [], "changed": []}, None
    for line in text.split("\n"):
        if line.startswith("##### Tables added"):
            section = "added"
        elif line.startswith("##### Tables deleted"):
            section = "deleted"
        elif line.startswith("##### Tables changed"):
            section = "changed"
        elif line.startswith("#####End tables changed"):
            section = None
        elif section in ("added", "deleted"):
            match = re.match(r"^\t'(.{4})' \d+ bytes$", line)
            if match:
                lists[section].append(match.group(1))
        elif section == "changed":
            match = re.match(r"^\t'(.{4})'$", line)
            if match:
                lists[section].append(match.group(1))
    return lists


def same_value(text, value):
    """Whether a value as the text prints it is the value a record holds."""
    if isinstance(value, list):
        point = re.match(r"^\( (\S+), (\S+) \)$", text)
        return bool(point) and [float(point.group(1)), float(point.group(2))] == [float(v) for v in value]
    if isinstance(value, str):
        date = re.match(r"^(\d\d)/(\d\d)/(\d{4})$", text)
        if date and re.match(r"^\d{4}-\d\d-\d\dT", value):
            month, day, year = date.groups()
            return value.startswith(f"{year}-{month}-{day}")
        if text.startswith("'") and text.endswith("'"):
            return text[1:-1] == value
        return text == value
    if isinstance(value, bool) or value is None:
        return False
    if text in ("TRUE", "FALSE"):
        return (text == "TRUE") == (value != 0)
    if text.startswith("0x"):
        return int(text, 16) & 0xFFFFFFFF == int(value) & 0xFFFFFFFF
    if re.match(r"^-?\d+$", text):
        number = int(text)
        # Counts and 32-bit fields print signed; records hold them unsigned.
        return number == value or (isinstance(value, int) and (number - value) % (1 << 16) == 0 and
                                   abs(number) < (1 << 16)) or number & 0xFFFFFFFF == int(value) & 0xFFFFFFFF
    halves = re.match(r"^(\d+)\.(\d+)$", text)
    if halves:
        major, minor = int(halves.group(1)), int(halves.group(2))
        # A version prints both halves whole: as 16.16, or with its minor digit in
        # the high nibble of the low word.
        if minor < 65536 and (abs((major * 65536 + minor) / 65536 - value) < 1e-4 or
                              abs(major + (minor >> 12) / 10 - value) < 1e-9):
            return True
    try:
        return abs(float(text) - value) < 1e-4
    except ValueError:
        return False


def text_pairs(lines):
    """Changed-value pairs of an account, in order, but for the glyph names that
    head a glyph's lines (they say which glyph, not what changed)."""
    pairs = []
    for i, line in enumerate(lines):
        mod = PAIR_LINE.match(line)
        if not mod or mod.group(1) == "Name":
            continue
        # Detail lines (the style bits after a macStyle) may come between the two.
        for following in lines[i + 1:]:
            orig = ORIG_LINE.match(following)
            if orig and orig.group(1) == mod.group(1):
                pairs.append((mod.group(1), mod.group(2), orig.group(2)))
                break
            if PAIR_LINE.match(following):
                break
    return pairs


def fixed_text(text):
    return float(text)


def glyph_blocks(lines):
    """Each reported glyph of a 'glyf' account: (glyph, original, modified), each
    side its contour count, bounds and points."""
    glyphs, current, side = [], None, None
    for line in lines:
        glyph = re.match(r"^Glyph ID:\t(\d+)", line)
        if glyph:
            current = {"glyph": int(glyph.group(1)), "original": {"points": []}, "modified": {"points": []}}
            glyphs.append(current)
            continue
        if current is None:
            continue
        if line == "\t### Original glyph data":
            side = current["original"]
        elif line == "\t### Modified glyph data":
            side = current["modified"]
        elif side is not None:
            field = re.match(r"^\t(# contours|Bounds [xy]M..):\t(-?\d+)$", line)
            point = POINT_LINE.match(line)
            if field:
                side[field.group(1)] = int(field.group(2))
            elif point:
                side["points"].append([fixed_text(point.group(2)), fixed_text(point.group(3))])
    return glyphs


def check_glyphs(lines, records):
    texts = glyph_blocks(lines)
    if len(texts) != len(records):
        raise Mismatch(f"'glyf': {len(texts)} glyphs in the text, {len(records)} field records")
    keys = {"# contours": "numberOfContours", "Bounds xMin": "xMin", "Bounds yMin": "yMin", "Bounds xMax": "xMax",
            "Bounds yMax": "yMax"}
    for text, record in zip(texts, records):
        if record["path"] != [text["glyph"]]:
            raise Mismatch(f"'glyf': glyph {text['glyph']} against path {record['path']}")
        for side in ("original", "modified"):
            value = record[side]
            for label, key in keys.items():
                if text[side].get(label) != value.get(key):
                    raise Mismatch(f"'glyf' glyph {text['glyph']} {side} {key}: {text[side].get(label)} "
                                   f"against {value.get(key)}")
            points = value.get("points", [])
            if len(points) != len(text[side]["points"]) or any(
                    abs(a - b) > 1e-4 for p, q in zip(points, text[side]["points"]) for a, b in zip(p, q)):
                raise Mismatch(f"'glyf' glyph {text['glyph']} {side}: the points differ")
    return len(records)


def check_names(lines, records):
    texts = []
    starts = [i for i, line in enumerate(lines) if line.startswith("\tChanged name, name index:")]
    for i, end in zip(starts, starts[1:] + [lines.index("#####", starts[-1]) if starts else 0]):
        # A name may run over several lines: each text lasts until the next mark.
        j = lines.index("\t\t# name (orig)", i)
        k = lines.index("\t\t# name (mod )", j)
        modified = lines[k + 1:end]
        while modified and modified[-1] == "":
            modified.pop()
        texts.append(("\n".join(lines[j + 1:k])[3:-1], "\n".join(modified)[3:-1]))
    if len(texts) != len(records):
        raise Mismatch(f"'name': {len(texts)} changed names in the text, {len(records)} field records")
    for (original, modified), record in zip(texts, records):
        if (original, modified) != (record["original"], record["modified"]):
            raise Mismatch(f"'name' {record['path']}: {(original, modified)} against the record")
    return len(records)


def check_remappings(lines, records):
    texts = [REMAP_LINE.match(line) for line in lines]
    texts = [(int(m.group(1), 16), int(m.group(2)), int(m.group(3))) for m in texts if m]
    if len(texts) != len(records):
        raise Mismatch(f"'cmap': {len(texts)} remapped codes in the text, {len(records)} field records")
    for (code, original, modified), record in zip(texts, records):
        if (code, original, modified) != (record["path"][-1], record["original"], record["modified"]):
            raise Mismatch(f"'cmap' code {code:04X}: {original} ==> {modified} against {record}")
    return len(records)


def check_widths(lines, records):
    texts = []
    for i, line in enumerate(lines):
        glyph = re.match(r"^\t\tWidth change for glyph:\t(\d+)$", line)
        if glyph:
            new = next(l for l in lines[i:] if l.startswith("\t\t\tNew width:\t"))
            old = next(l for l in lines[i:] if l.startswith("\t\t\tOld width:\t"))
            texts.append((int(glyph.group(1)), int(old.split("\t")[-1]), int(new.split("\t")[-1])))
    others = [r for r in records if r["path"][-2:-1] == ["widths"]]
    if len(texts) != len(others):
        raise Mismatch(f"'hdmx': {len(texts)} width changes in the text, {len(others)} records")
    for (glyph, old, new), record in zip(texts, others):
        if (glyph, old, new) != (record["path"][-1], record["original"], record["modified"]):
            raise Mismatch(f"'hdmx' glyph {glyph}: {old} -> {new} against {record}")
    return len(others) + check_pairs("hdmx", lines, [r for r in records if r not in others])


def check_pairs(tag, lines, records):
    # A value only one font has prints under that font's label alone.
    records = [r for r in records if r["original"] is not None and r["modified"] is not None]
    texts = text_pairs(lines)
    if len(texts) != len(records):
        raise Mismatch(f"'{tag}': {len(texts)} changed-value pairs in the text, {len(records)} field records")
    for (label, modified, original), record in zip(texts, records):
        if not same_value(modified, record["modified"]) or not same_value(original, record["original"]):
            raise Mismatch(f"'{tag}' {label}: ({modified!r}, {original!r}) against {record}")
    return len(records)


OUTLINE_TAGS = ("CFF ", "CFF2")
NOT_LISTED = re.compile(r"^\t+(?:Not listed|Changed glyphs not listed|Moved points not listed|"
                        r"Changed contours not listed|Differing instructions not listed):\t\d+$")


def number_text(value):
    return str(value) if isinstance(value, int) else f"{value:.10g}"


def outline_text(label, value):
    """A field record's value as the outline accounts print it."""
    if value is None:
        return "(none)"
    if isinstance(value, dict):
        text = f"glyph {value['glyphIndex']}, " + ("offset " if value["flags"] & 2 else "points ")
        text += f"{value['arguments'][0]} {value['arguments'][1]}"
        if "matrix" in value:
            text += ", matrix" + "".join(f" {m:.6g}" for m in value["matrix"])
        if value["flags"] & ~2:
            text += f", flags 0x{value['flags']:04X}"
        return text
    if isinstance(value, list):
        if " point " in label:
            return f"( {value[0]}, {value[1]} )"
        return " ".join(number_text(v) for v in value)
    if isinstance(value, (int, float)):
        return number_text(value)
    return value


def check_outlines(tag, lines, fields, entries):
    """An outline account's pairs against its field records and its lines of one
    font (glyphs, contours) against its entry records. The text lists at most so
    many glyphs, points and contours; where it counts the rest, its lines need
    only come in the records' order."""
    cut = any(NOT_LISTED.match(line) for line in lines)
    texts = text_pairs(lines)
    # A reordering prints no pair.
    fields = [r for r in fields if r["path"][-1] != "contourOrder"]
    if not cut and len(texts) != len(fields):
        raise Mismatch(f"'{tag}': {len(texts)} changed-value pairs in the text, {len(fields)} field records")
    at = 0
    for label, modified, original in texts:
        while at < len(fields) and (outline_text(label, fields[at]["modified"]) != modified or
                                    outline_text(label, fields[at]["original"]) != original):
            if not cut:
                raise Mismatch(f"'{tag}' {label}: ({modified!r}, {original!r}) against {fields[at]}")
            at += 1
        if at == len(fields):
            raise Mismatch(f"'{tag}' {label}: ({modified!r}, {original!r}) has no field record")
        at += 1
    listing, alone = False, 0
    for line in lines:
        if line.startswith("### "):
            listing = line.startswith("### Added ") or line.startswith("### Deleted ")
        elif listing and re.match(r"^\t(Glyph name|Glyph ID|CID):\t", line):
            alone += 1
        elif re.match(r"^\t+(Added|Deleted) contour \d+:\t", line):
            alone += 1
    if alone != len(entries) if not cut else alone > len(entries):
        raise Mismatch(f"'{tag}': {alone} glyphs and contours of one font in the text, {len(entries)} entry records")
    return at + alone


def check_bytes(tag, lines, records):
    rows = {}
    for line in lines:
        row = HEX_ROW.match(line)
        if row:
            rows[int(row.group(1), 16)] = (row.group(2).replace(" ", ""), row.group(3).replace(" ", ""))
    recorded = {}
    for record in records:
        modified, original = record["modified"], record["original"]
        for at in range(0, max(len(modified), len(original)), 16):
            recorded[record["offset"] + at // 2] = (modified[at:at + 16], original[at:at + 16])
    if rows != recorded:
        missing = sorted(set(rows) ^ set(recorded))[:3]
        raise Mismatch(f"'{tag}': the differing rows and the byte records disagree (first at {missing})")
    return len(records)


def text_entries(tag, lines):
    """How many entries only one font has the text lists for a table, or None
    where the text does not count them one by one."""
    if tag == "cmap":
        return sum(1 for line in lines if re.match(r"^\t(?:U\+|0x)[0-9A-F]+ ==> \d+$", line)) + \
            sum(1 for line in lines if line.startswith("Platform:  :\t") and in_lone_encodings(lines, line))
    if tag == "name":
        return sum(1 for line in lines if re.match(r"^\t(Added|Deleted) name, name index:\t", line))
    if tag == "hmtx":
        for line in lines:
            new = re.match(r"^Glyphs (\d+) through (\d+) are new$", line)
            if new:
                return int(new.group(2)) - int(new.group(1)) + 1
        return 0
    if tag in ("GSUB", "GPOS", "GDEF", "kern"):
        count, listing = 0, False
        for line in lines:
            if line.startswith("### "):
                listing = line.startswith("### Added ") or line.startswith("### Deleted ")
            elif listing and re.match(r"^\t[^\t]+:\t", line):
                count += 1
        return count
    return None


def in_lone_encodings(lines, line):
    before = lines[:lines.index(line)]
    marks = [l for l in before if l.startswith("### ")]
    return bool(marks) and marks[-1] in ("### Added cmaps:", "### Deleted cmaps:")


def check_pair(vellcmp, options, original, modified):
    text = run(vellcmp, options, original, modified)
    lines = run(vellcmp, ["--json", *options], original, modified).splitlines()
    records = []
    for number, line in enumerate(lines, 1):
        try:
            records.append(json.loads(line))
        except json.JSONDecodeError as error:
            raise Mismatch(f"line {number} does not parse: {error}")
    lists = listed_tables(text)
    for change in ("added", "deleted", "changed"):
        tags = [r["table"] for r in records if r["type"] == "table" and r["change"] == change]
        if tags != lists[change]:
            raise Mismatch(f"tables {change}: {lists[change]} in the text, {tags} in the records")
    checked, notes, opentype = 0, [], "--opentype" in options
    for tag, account in accounts(text).items():
        of_table = [r for r in records if r.get("table") == tag and r["type"] != "table"]
        fields = [r for r in of_table if r["type"] == "field"]
        entries = [r for r in of_table if r["type"] == "entry"]
        expected = text_entries(tag, account)
        if expected is not None and expected != len(entries):
            raise Mismatch(f"'{tag}': {expected} entries of one font in the text, {len(entries)} entry records")
        checked += len(entries) if expected is not None else 0
        if any(r["type"] == "bytes" for r in of_table):
            if not any(HEX_ROW.match(line) for line in account):
                # An account that gave byte ranges without a hex difference.
                notes.append(f"'{tag}' as byte ranges")
                continue
            checked += check_bytes(tag, account, [r for r in of_table if r["type"] == "bytes"])
        elif tag in OUTLINE_TAGS or (tag == "glyf" and opentype):
            checked += check_outlines(tag, account, fields, entries)
        elif tag == "glyf":
            checked += check_glyphs(account, fields)
        elif tag == "name":
            checked += check_names(account, fields)
        elif tag == "cmap":
            checked += check_remappings(account, fields)
        elif tag == "hdmx":
            checked += check_widths(account, fields)
        else:
            checked += check_pairs(tag, account, fields)
    return len(records), checked, notes


def main():
    parser = argparse.ArgumentParser(description=__doc__.split("\n\n")[0])
    parser.add_argument("--vellcmp", default=os.path.join(ROOT, "build", "vellcmp"))
    parser.add_argument("--opentype", action="store_true", help="also decode the OpenType tables")
    parser.add_argument("fonts", nargs="*")
    arguments = parser.parse_args()
    pairs = list(zip(arguments.fonts[::2], arguments.fonts[1::2])) or DEFAULT_PAIRS
    options = ["--pair=index"] + (["--opentype"] if arguments.opentype else [])
    failed = 0
    for original, modified in pairs:
        name = f"{os.path.basename(original)} -> {os.path.basename(modified)}"
        try:
            records, checked, notes = check_pair(arguments.vellcmp, options, original, modified)
            print(f"ok    {name}: {records} records, {checked} differences matched to the text" +
                  (f" (not decoded: {', '.join(notes)})" if notes else ""))
        except Mismatch as mismatch:
            failed += 1
            print(f"FAIL  {name}: {mismatch}")
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())
