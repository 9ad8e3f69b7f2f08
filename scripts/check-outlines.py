#!/usr/bin/python3
"""Checks velldump's reading of outlines against fontTools, glyph by glyph.

For a PostScript font, every glyph of 'CFF ' (or 'CFF2' at its default
location) is drawn by fontTools into a recording pen, subroutines expanded, and
compared with the contours and width that `velldump --opentype` prints. For a
TrueType font, every glyph of 'glyf' is compared as fontTools decodes it:
contours of points with their on-curve flags, and component records.

Both readings are brought to the same closed-contour form: a line back to the
contour's first point and a line of no length draw nothing, so neither is kept.

Usage: check-outlines.py [--all-faces] [FONT[#FACE] ...]
Without fonts: face 0 of Noto Sans CJK Regular, Cantarell Regular, Inter, and
the test suite's small 'CFF2' font.
Exits 0 when every glyph agrees, 1 otherwise; 0 with a message when fontTools
is missing.
"""
import os
import subprocess
import sys

try:
    from fontTools.pens.recordingPen import RecordingPen
    from fontTools.ttLib import TTCollection, TTFont
except ImportError:
    print("check-outlines: fontTools is not installed (python3-fonttools); nothing checked")
    sys.exit(0)

ROOT = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
VELLDUMP = os.environ.get("VELLDUMP", os.path.join(ROOT, "build", "velldump"))
DEFAULT_FONTS = [
    "/usr/share/fonts/opentype/noto/NotoSansCJK-Regular.ttc#0",
    "/usr/share/fonts/opentype/cantarell/Cantarell-Regular.otf",
    "/usr/share/fonts/truetype/inter-vf/Inter.var.ttf",
    os.path.join(ROOT, "tests", "fonts", "cff2-original.otf"),
]


def number(value):
    # fontTools may read a whole coordinate as a float (after a div or a blend).
    return str(int(value)) if float(value).is_integer() else repr(value)


def path_text(commands):
    """Contours as velldump writes them, from (command, points) pairs."""
    contours, current = [], []

    def close():
        if len(current) > 1 and current[-1][0] == "L" and current[-1][1] == current[0][1]:
            current.pop()
        if len(current) > 1:
            contours.append(current[:])
        current.clear()

    for command, points in commands:
        if command == "M":
            close()
            current.append(("M", points[0]))
        elif command == "L":
            if not current or current[-1][1] != points[0]:
                current.append(("L", points[0]))
        elif command == "Z":
            close()
        else:
            for k, point in enumerate(points):
                kind = command if k < len(points) - 1 else "E"
                current.append((kind, point))
    close()
    texts = []
    for contour in contours:
        words, previous = [], "M"
        for kind, (x, y) in contour:
            if kind in "ML" or (kind in "CQ" and previous != kind):
                words.append(kind)
            words += [number(x), number(y)]
            previous = kind
        texts.append(" ".join(words))
    return texts


def pen_commands(recording):
    commands = []
    for operator, arguments in recording.value:
        if operator == "moveTo":
            commands.append(("M", list(arguments)))
        elif operator == "lineTo":
            commands.append(("L", list(arguments)))
        elif operator == "curveTo":
            # A poly-Bézier of control pairs and ends, one cubic at a time.
            for k in range(0, len(arguments), 3):
                commands.append(("C", list(arguments[k:k + 3])))
        elif operator == "qCurveTo":
            commands.append(("Q", list(arguments)))
        elif operator in ("closePath", "endPath"):
            commands.append(("Z", []))
    return commands


def fonttools_cff(font, tag):
    table = font[tag].cff
    top = table.topDictIndex[0]
    charstrings = top.CharStrings
    glyphs = {}
    for gid, name in enumerate(font.getGlyphOrder()):
        charstring = charstrings[name]
        recording = RecordingPen()
        charstring.draw(recording)
        width = None if tag == "CFF2" else number(charstring.width)
        glyphs[gid] = (width, path_text(pen_commands(recording)), [])
    return glyphs


def fonttools_glyf(font):
    glyf = font["glyf"]
    glyphs = {}
    for gid, name in enumerate(font.getGlyphOrder()):
        glyph = glyf[name]
        contours, components = [], []
        if glyph.isComposite():
            for component in glyph.components:
                # fontTools keeps ARGS_ARE_XY_VALUES as the choice of offset or points.
                flags = component.flags & 0x1E04 | (0 if hasattr(component, "firstPt") else 0x2)
                text = "glyph %d" % font.getGlyphID(component.glyphName)
                if hasattr(component, "firstPt"):
                    text += ", points %d %d" % (component.firstPt, component.secondPt)
                else:
                    text += ", offset %d %d" % (component.x, component.y)
                if hasattr(component, "transform"):
                    matrix = [v for row in component.transform for v in row]
                    if matrix != [1, 0, 0, 1]:
                        text += ", matrix " + " ".join("%.6g" % v for v in matrix)
                if flags & ~0x2:
                    text += ", flags 0x%04X" % flags
                components.append(text)
        elif glyph.numberOfContours > 0:
            start = 0
            for end in glyph.endPtsOfContours:
                words, previous = [], None
                for p in range(start, end + 1):
                    x, y = glyph.coordinates[p]
                    kind = ("M" if p == start else "L") if glyph.flags[p] & 1 else "Q"
                    if kind != "Q" or previous != "Q":
                        words.append(kind)
                    words += [str(x), str(y)]
                    previous = kind
                contours.append(" ".join(words))
                start = end + 1
        glyphs[gid] = (None, contours, components)
    return glyphs


def velldump_glyphs(path, tag, full_name):
    command = [VELLDUMP, "--opentype"]
    if full_name:
        command += ["-f", full_name]
    command += [path, tag]
    output = subprocess.run(command, check=True, capture_output=True, text=True).stdout
    glyphs, gid = {}, None
    for line in output.splitlines():
        if line.startswith("Glyph ID:\t"):
            gid = int(line.split("\t")[1])
            glyphs[gid] = [None, [], []]
        elif gid is not None and line.startswith("\tWidth:\t"):
            glyphs[gid][0] = line.split("\t")[2]
        elif gid is not None and line.startswith("\tContour "):
            glyphs[gid][1].append(line.split(":\t", 1)[1])
        elif gid is not None and line.startswith("\tComponent "):
            glyphs[gid][2].append(line.split(":\t", 1)[1])
    return {gid: tuple(value) for gid, value in glyphs.items()}


def check(entry):
    path, _, face = entry.partition("#")
    number_in_file = int(face) if face else -1
    font = TTFont(path, fontNumber=number_in_file, lazy=True)
    full_name = font["name"].getDebugName(4) if path.lower().endswith((".ttc", ".otc")) else None
    tag = next((t for t in ("CFF ", "CFF2", "glyf") if t in font), None)
    if tag is None:
        print(f"{entry}: no outlines")
        return True
    expected = fonttools_glyf(font) if tag == "glyf" else fonttools_cff(font, tag)
    found = velldump_glyphs(path, tag, full_name)
    wrong = [gid for gid in expected if found.get(gid) != expected[gid]]
    wrong += [gid for gid in found if gid not in expected]
    print(f"{entry} '{tag}': {len(expected)} glyphs, {len(expected) - len(wrong)} agree, {len(wrong)} differ")
    for gid in wrong[:5]:
        print(f"  glyph {gid}:\n    fontTools {expected.get(gid)}\n    velldump  {found.get(gid)}")
    return not wrong


def main():
    arguments = sys.argv[1:]
    all_faces = "--all-faces" in arguments
    fonts = [a for a in arguments if a != "--all-faces"] or DEFAULT_FONTS
    entries = []
    for entry in fonts:
        path = entry.partition("#")[0]
        if all_faces and path.lower().endswith((".ttc", ".otc")):
            entries += [f"{path}#{n}" for n in range(len(TTCollection(path).fonts))]
        else:
            entries.append(entry)
    missing = [s for s in entries if not os.path.exists(s.partition("#")[0])]
    for entry in missing:
        print(f"{entry}: not installed, skipped")
    results = [check(entry) for entry in entries if entry not in missing]
    sys.exit(0 if all(results) else 1)


if __name__ == "__main__":
    main()
