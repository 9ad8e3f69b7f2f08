#!/usr/bin/python3
"""Checks the --html page in a real browser.

Makes a font pair from the test suite's DejaVu Sans subset with fontTools (outlines
moved, a composite's component shifted, an outline emptied, an advance width and
character mappings changed, a class pair's kerning changed, and a full name
holding markup), runs vellcmp --opentype --html
on it, and loads the page in headless Chromium from the file:

  - the page renders without a console message (a script or a fetch the page's
    policy blocks would log one, as would a page the browser cannot parse);
  - the parsed page holds no script element, and the full name's markup shows as text;
  - each table's figures are as many as fontTools counts changes: glyphs whose
    outline or instructions differ ('glyf'), advance widths ('hmtx'), Unicode
    mappings ('cmap'), and glyph pairs whose kerning differs ('GPOS', under
    --opentype);
  - its screenshot is not blank, and shows both sides' outline colours.

Usage: check-html.py VELLCMP WORKDIR. Exits 77 (a skip for CTest) when no Chromium
is installed, unless VELLCMP_REQUIRE_BROWSER is set (as CI sets it).
"""

import os
import re
import shutil
import struct
import subprocess
import sys
import zlib

from fontTools.ttLib import TTFont

HERE = os.path.dirname(os.path.abspath(__file__))
BASE_FONT = os.path.join(HERE, "..", "tests", "fonts", "DejaVuSans-subset.ttf")
HOSTILE_NAME = "Evil <script>alert(1)</script> & Sons"


def make_pair(workdir):
    original = os.path.join(workdir, "original.ttf")
    modified = os.path.join(workdir, "modified.ttf")
    # Both fonts' glyphs are decoded and encoded again by fontTools (saving a
    # changed 'glyf' re-encodes every glyph's flags), so that the glyphs left
    # alone keep the same bytes in both.
    font = TTFont(BASE_FONT)
    for name in font.getGlyphOrder():
        font["glyf"][name]
    font.save(original)
    font = TTFont(original)
    glyf = font["glyf"]
    # Every point of 'a' moves; one point of 'B' moves.
    glyph = glyf["a"]
    glyph.coordinates.translate((12, 0))
    glyph = glyf["B"]
    x, y = glyph.coordinates[0]
    glyph.coordinates[0] = (x + 30, y - 20)
    # A composite's accent moves.
    glyf["Aacute"].components[-1].x += 40
    # An outline emptied: drawn alone.
    glyf["comma"].numberOfContours = 0
    glyf["comma"].coordinates = type(glyf["a"].coordinates)()
    glyf["comma"].endPtsOfContours = []
    glyf["comma"].flags = bytearray()
    glyf["comma"].program = type(glyf["a"].program)()
    glyf["comma"].program.fromBytecode(b"")
    # An advance width.
    advance, bearing = font["hmtx"]["C"]
    font["hmtx"]["C"] = (advance + 100, bearing)
    # Character mappings: one dropped, one added.
    for table in font["cmap"].tables:
        if table.isUnicode():
            table.cmap.pop(ord("%"), None)
            table.cmap[0x2030] = "percent"
    # One class pair's kerning value: every glyph pair of the two classes changes.
    pairs = font["GPOS"].table.LookupList.Lookup[0].SubTable[0]
    pairs.Class1Record[1].Class2Record[1].Value1.XAdvance -= 50
    font["name"].setName(HOSTILE_NAME, 4, 3, 1, 0x409)
    font.save(modified)
    return original, modified


def outline_key(glyph, glyf):
    if glyph.isComposite():
        return ("composite", [(c.glyphName, c.x, c.y, getattr(c, "transform", None)) for c in glyph.components])
    if glyph.numberOfContours == 0:
        return ("empty",)
    coordinates, ends, flags = glyph.getCoordinates(glyf)
    program = glyph.program.getBytecode() if hasattr(glyph, "program") else b""
    return ("simple", list(coordinates), list(ends), [f & 1 for f in flags], program)


def kerning(font):
    """Every glyph pair's x advance adjustment from the font's class-based 'GPOS' pairs."""
    subtable = font["GPOS"].table.LookupList.Lookup[0].SubTable[0]
    first_classes, second_classes = subtable.ClassDef1.classDefs, subtable.ClassDef2.classDefs
    values = {}
    for first in subtable.Coverage.glyphs:
        row = subtable.Class1Record[first_classes.get(first, 0)]
        for second in font.getGlyphOrder():
            value = getattr(row.Class2Record[second_classes.get(second, 0)].Value1, "XAdvance", 0) or 0
            values[first, second] = value
    return values


def expected_counts(original_path, modified_path):
    original, modified = TTFont(original_path), TTFont(modified_path)
    counts = {}
    og, mg = original["glyf"], modified["glyf"]
    counts["glyf"] = sum(outline_key(og[n], og) != outline_key(mg[n], mg) for n in original.getGlyphOrder())
    counts["hmtx"] = sum(original["hmtx"][n][0] != modified["hmtx"][n][0] for n in original.getGlyphOrder())
    om, mm = original.getBestCmap(), modified.getBestCmap()
    counts["cmap"] = sum(om.get(code) != mm.get(code) for code in set(om) | set(mm))
    ok, mk = kerning(original), kerning(modified)
    counts["GPOS"] = sum(ok.get(pair, 0) != mk.get(pair, 0) for pair in set(ok) | set(mk))
    return counts


def run_browser(browser, *arguments):
    command = [browser, "--headless", "--no-sandbox", "--disable-gpu", "--hide-scrollbars", "--enable-logging=stderr",
               "--v=0", *arguments]
    result = subprocess.run(command, capture_output=True, text=True, timeout=180)
    return result.stdout, result.stderr


def png_pixels(path):
    """The pixels of an 8-bit RGB or RGBA PNG, as (width, height, rows of bytes, bytes per pixel)."""
    data = open(path, "rb").read()
    if data[:8] != b"\x89PNG\r\n\x1a\n":
        raise ValueError("not a PNG")
    at, idat = 8, b""
    while at < len(data):
        length, kind = struct.unpack(">I4s", data[at:at + 8])
        body = data[at + 8:at + 8 + length]
        if kind == b"IHDR":
            width, height, depth, color = struct.unpack(">IIBB", body[:10])
            if depth != 8 or color not in (2, 6):
                raise ValueError("unexpected PNG format")
        elif kind == b"IDAT":
            idat += body
        at += 12 + length
    bpp = 4 if color == 6 else 3
    raw = zlib.decompress(idat)
    stride = width * bpp
    rows, previous = [], bytearray(stride)
    for r in range(height):
        kind = raw[r * (stride + 1)]
        row = bytearray(raw[r * (stride + 1) + 1:(r + 1) * (stride + 1)])
        for i in range(stride):
            left = row[i - bpp] if i >= bpp else 0
            up = previous[i]
            corner = previous[i - bpp] if i >= bpp else 0
            if kind == 1:
                row[i] = (row[i] + left) & 0xFF
            elif kind == 2:
                row[i] = (row[i] + up) & 0xFF
            elif kind == 3:
                row[i] = (row[i] + (left + up) // 2) & 0xFF
            elif kind == 4:
                p = left + up - corner
                pa, pb, pc = abs(p - left), abs(p - up), abs(p - corner)
                predictor = left if pa <= pb and pa <= pc else up if pb <= pc else corner
                row[i] = (row[i] + predictor) & 0xFF
        rows.append(row)
        previous = row
    return width, height, rows, bpp


def check_screenshot(path, failures):
    width, height, rows, bpp = png_pixels(path)
    inked = blue = red = 0
    for row in rows[::2]:
        for i in range(0, width * bpp, bpp * 2):
            r, g, b = row[i], row[i + 1], row[i + 2]
            if r < 240 or g < 240 or b < 240:
                inked += 1
            if b > 150 and r < 80 and 60 < g < 130:
                blue += 1
            if r > 160 and g < 80 and b < 80:
                red += 1
    sampled = (height // 2) * (width // 2)
    print(f"screenshot {width}x{height}: {inked} of {sampled} sampled pixels inked, {blue} blue, {red} red")
    if inked < sampled // 100:
        failures.append("the screenshot is blank")
    if blue == 0 or red == 0:
        failures.append("the screenshot shows no modified (blue) or no original (red) outline")


def main():
    if len(sys.argv) != 3:
        print(__doc__)
        return 2
    vellcmp, workdir = sys.argv[1], sys.argv[2]
    browser = shutil.which("chromium") or shutil.which("chromium-browser")
    if browser is None:
        if os.environ.get("VELLCMP_REQUIRE_BROWSER"):
            print("FAIL: no chromium installed (scripts/install-deps installs it)")
            return 1
        print("SKIP: no chromium installed")
        return 77
    os.makedirs(workdir, exist_ok=True)
    original, modified = make_pair(workdir)
    page = os.path.join(workdir, "page.html")
    report = os.path.join(workdir, "report.txt")
    subprocess.run([vellcmp, "--opentype", "--pair=index", "--html=" + page, "-o", report, original, modified],
                   check=True)

    failures = []
    url = "file://" + os.path.abspath(page)
    dom, log = run_browser(browser, "--dump-dom", url)
    console = [line for line in log.splitlines() if ":CONSOLE" in line]
    if console:
        failures.append("console messages:\n" + "\n".join(console))
    if re.search(r"<script", dom, re.IGNORECASE):
        failures.append("the rendered page holds a script element")
    if "Evil &lt;script&gt;alert(1)&lt;/script&gt; &amp; Sons" not in dom:
        failures.append("the hostile full name is not shown as text")

    expected = expected_counts(original, modified)
    sections = dict(re.findall(r'<section class="table" id="[^"]*" data-tag="([^"]*)">(.*?)</section>', dom, re.S))
    for tag, count in expected.items():
        drawn = len(re.findall(r'<figure class="(?:glyph|kern)"', sections.get(tag, "")))
        print(f"'{tag}': {drawn} figures drawn, {count} changes")
        if drawn != count or count == 0:
            failures.append(f"'{tag}' draws {drawn} glyph figures for {count} changes")

    screenshot = os.path.join(workdir, "page.png")
    run_browser(browser, "--screenshot=" + screenshot, "--window-size=1200,2400", url)
    if not os.path.exists(screenshot):
        failures.append("no screenshot was taken")
    else:
        check_screenshot(screenshot, failures)

    for failure in failures:
        print("FAIL:", failure)
    if not failures:
        print("PASS: the page renders cleanly, with a figure for every change")
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main())
