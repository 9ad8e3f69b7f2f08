// Outlines under --opentype: 'CFF ' and 'CFF2' on the small fonts that
// tests/fonts/make_outline_fonts.py builds, 'glyf' on glyphs encoded here, and
// the CFF structures read on their own.
#include <gtest/gtest.h>
#include <woff2/encode.h>

#include <algorithm>
#include <sstream>

#include "VellCmpErrors.h"
#include "comparators/TOutlineDeltas.h"
#include "dumpers/TFontContext.h"
#include "framework/VellCFF.h"
#include "framework/VellOutlines.h"
#include "support/Harness.h"

namespace {

FontTables FontTablesOf(const Bytes& file) {
    LoadedFont loaded(file, false);
    FontTables tables;
    for (const VellTableEntry& entry : loaded.font()->tables) {
        VellView bytes = loaded.font()->data.sub(entry.offset, entry.length);
        tables[VellTagText(entry.tag)] = Bytes(bytes.data(), bytes.data() + bytes.size());
    }
    return tables;
}

FontTables FontFile(const std::string& name) {
    std::string file = ReadFile(std::string(VELLCMP_SOURCE_DIR "/tests/fonts/") + name);
    return FontTablesOf(Bytes(file.begin(), file.end()));
}

struct PairCase {
    const char* modified;
    const char* original;
    const char* tag;
    const char* deltas;
};

// Each pair's whole account: only what changed, and nothing for a glyph drawn
// alike however it is encoded.
TEST(Outlines, PostScriptPairs) {
    OpenTypeForTest openType;
    const PairCase kCases[] = {
        {"cff-modified.otf", "cff-original.otf", "CFF ",
         "\tTop DICT\n"
         "\t\tFullName (mod ):\tOutline Test Edited\n"
         "\t\tFullName (orig):\tOutline Test\n"
         "\t\tFontBBox (mod ):\t0 0 600 800\n"
         "\t\tFontBBox (orig):\t50 0 600 800\n"
         "\tPrivate DICT\n"
         "\t\tBlueValues (mod ):\t-12 0 500 510\n"
         "\t\tBlueValues (orig):\t-10 0 500 510\n"
         "\n### Added glyph names (in modified font and not original font):\n"
         "\tGlyph name:\tD\n"
         "\n### Changed glyphs:\n"
         "\tGlyph ID:\t1\n"
         "\t\tContour 0 point 1 (mod ):\t( 520, 0 )\n"
         "\t\tContour 0 point 1 (orig):\t( 500, 0 )\n"
         "\tGlyph ID:\t2\n"
         "\t\tWidth (mod ):\t710\n"
         "\t\tWidth (orig):\t700\n"
         "\tGlyph ID:\t3\n"
         "\t\tAdded contour 1:\tM 150 450 L 250 450 L 250 550\n"},
        // The other way round: the glyph and the contour are deleted.
        {"cff-original.otf", "cff-modified.otf", "CFF ",
         "\tTop DICT\n"
         "\t\tFullName (mod ):\tOutline Test\n"
         "\t\tFullName (orig):\tOutline Test Edited\n"
         "\t\tFontBBox (mod ):\t50 0 600 800\n"
         "\t\tFontBBox (orig):\t0 0 600 800\n"
         "\tPrivate DICT\n"
         "\t\tBlueValues (mod ):\t-10 0 500 510\n"
         "\t\tBlueValues (orig):\t-12 0 500 510\n"
         "\n### Deleted glyph names (in original font but not in modified font):\n"
         "\tGlyph name:\tD\n"
         "\n### Changed glyphs:\n"
         "\tGlyph ID:\t1\n"
         "\t\tContour 0 point 1 (mod ):\t( 500, 0 )\n"
         "\t\tContour 0 point 1 (orig):\t( 520, 0 )\n"
         "\tGlyph ID:\t2\n"
         "\t\tWidth (mod ):\t700\n"
         "\t\tWidth (orig):\t710\n"
         "\tGlyph ID:\t3\n"
         "\t\tDeleted contour 1:\tM 150 450 L 250 450 L 250 550\n"},
        // Other operators and a local subroutine draw the same outlines.
        {"cff-reencoded.otf", "cff-original.otf", "CFF ",
         "\tNo field, glyph name or outline differs: the tables differ only in how they are encoded\n"},
        // Hints read from the charstrings, one through a subroutine: a glyph whose
        // hints alone differ is reported with its hint lines only.
        {"cff-hinted.otf", "cff-original.otf", "CFF ",
         "\n### Changed glyphs:\n"
         "\tGlyph ID:\t1\n"
         "\t\tHints (mod ):\thstem 0 60 340 400 vstem 100 160 440 500 hintmask 1111\n"
         "\t\tHints (orig):\t(none)\n"
         "\tGlyph ID:\t2\n"
         "\t\tHints (mod ):\thstem 0 20\n"
         "\t\tHints (orig):\t(none)\n"},
        // A CID-keyed font: glyphs paired by CID, wherever the subset put them.
        {"cid-modified.otf", "cid-original.otf", "CFF ",
         "\n### Added CIDs (in modified font and not original font):\n"
         "\tCID:\t35\n"
         "\n### Deleted CIDs (in original font but not in modified font):\n"
         "\tCID:\t15364\n"
         "\tCID:\t15365\n"},
        // A changed blend: equal at the default location, different at Bold.
        {"cff2-modified.otf", "cff2-original.otf", "CFF2",
         "\n### Changed glyphs:\n"
         "\tGlyph ID:\t1\n"
         "\t\tNamed instance:\t257 \"Bold\"\n"
         "\t\t\tContour 0 point 1 (mod ):\t( 540, 0 )\n"
         "\t\t\tContour 0 point 1 (orig):\t( 520, 0 )\n"
         "\t\t\tContour 0 point 2 (mod ):\t( 540, 400 )\n"
         "\t\t\tContour 0 point 2 (orig):\t( 520, 400 )\n"},
    };
    for (const PairCase& c : kCases)
        EXPECT_EQ(CompareDeltas(FontFile(c.modified), FontFile(c.original), c.tag), c.deltas) << c.modified;
}

// velldump lists each glyph as FreeType draws it: 'CFF2' at the default location
// (its blend read), 'CFF ' with its width and its hints.
TEST(Outlines, VelldumpListsGlyphs) {
    struct Case {
        const char* font;
        const char* tag;
        const char* glyph;
    } const kCases[] = {
        {"cff2-original.otf", "CFF2", "Glyph ID:\t1 (A)\n\tContour 0:\tM 100 0 L 500 0 L 500 400 L 100 400\n"},
        {"cff-hinted.otf", "CFF ",
         "Glyph ID:\t1 (A)\n\tWidth:\t600\n\tContour 0:\tM 100 0 L 500 0 L 500 400 L 100 400\n"
         "\tHints:\thstem 0 60 340 400 vstem 100 160 440 500 hintmask 1111\n"},
    };
    for (const Case& c : kCases) {
        RunResult run = RunVelldump({"--opentype", "-p", std::string(VELLCMP_SOURCE_DIR "/tests/fonts/") + c.font, c.tag});
        EXPECT_EQ(run.status, 0) << c.font;
        EXPECT_NE(run.out.find(c.glyph), std::string::npos) << c.font << "\n" << run.out;
    }
}

// Without --opentype a changed 'CFF ' is still the hex difference.
// A table FreeType or the CFF reader refuses is compared in hex after a note.
TEST(Outlines, UnreadableTableFallsBackToHex) {
    OpenTypeForTest openType;
    struct Case {
        size_t cutTo;
        const char* note;
    } const kCases[] = {
        {3, "\tNote: the table does not begin with a CFF header; the difference in hex follows\n"},
        {60, "\tNote: the Top DICT leads to no CharStrings INDEX; the difference in hex follows\n"},
    };
    for (const Case& c : kCases) {
        FontTables modified = FontFile("cff-original.otf");
        modified["CFF "].resize(c.cutTo);
        std::string deltas = CompareDeltas(modified, FontFile("cff-original.otf"), "CFF ");
        EXPECT_EQ(deltas.substr(0, std::string(c.note).size()), c.note) << c.cutTo;
    }
}

// ---- 'glyf' ----

struct Point {
    int16_t x, y;
    bool on = true;
};

// A simple glyph; `packed` spells coordinates in their short forms and repeats
// flags, otherwise every coordinate takes a word and every point its own flag.
Bytes SimpleGlyph(const std::vector<std::vector<Point>>& contours, const Bytes& instructions, bool packed) {
    TableWriter glyph;
    glyph.U16(contours.size()).U16(0).U16(0).U16(600).U16(700);
    std::vector<Point> points;
    for (const auto& contour : contours) {
        points.insert(points.end(), contour.begin(), contour.end());
        glyph.U16(points.size() - 1);
    }
    glyph.U16(instructions.size());
    for (uint8_t byte : instructions) glyph.U8(byte);
    std::vector<uint8_t> flags;
    Bytes xs, ys;
    int16_t x = 0, y = 0;
    for (const Point& p : points) {
        int dx = p.x - x, dy = p.y - y;
        uint8_t flag = p.on ? 1 : 0;
        auto put = [&](int delta, uint8_t shortBit, uint8_t sameBit, Bytes& out) {
            if (packed && delta == 0) {
                flag |= sameBit;
            } else if (packed && delta > -256 && delta < 256) {
                flag |= shortBit | (delta > 0 ? sameBit : 0);
                out.push_back(static_cast<uint8_t>(delta > 0 ? delta : -delta));
            } else {
                out.push_back(static_cast<uint8_t>(delta >> 8));
                out.push_back(static_cast<uint8_t>(delta));
            }
        };
        put(dx, 0x02, 0x10, xs);
        put(dy, 0x04, 0x20, ys);
        flags.push_back(flag);
        x = p.x;
        y = p.y;
    }
    for (size_t i = 0; i < flags.size();) {
        size_t run = 1;
        while (packed && i + run < flags.size() && flags[i + run] == flags[i] && run < 255) ++run;
        if (run > 1) {
            glyph.U8(flags[i] | 0x08).U8(run - 1);
        } else {
            glyph.U8(flags[i]);
        }
        i += run;
    }
    for (uint8_t b : xs) glyph.U8(b);
    for (uint8_t b : ys) glyph.U8(b);
    return glyph;
}

// A composite of one component with a word offset.
Bytes CompositeGlyph(uint16_t component, int16_t dx, int16_t dy) {
    return TableWriter().U16(0xFFFF).U16(0).U16(0).U16(600).U16(700).U16(0x0003).U16(component).U16(dx).U16(dy);
}

// The sample font's four glyphs with these outlines, 'loca' in long offsets.
FontTables GlyfFont(const std::vector<Bytes>& glyphs) {
    FontTables font = SampleFont();
    Bytes glyf;
    TableWriter loca;
    for (const Bytes& glyph : glyphs) {
        loca.U32(glyf.size());
        glyf.insert(glyf.end(), glyph.begin(), glyph.end());
        while (glyf.size() % 4 != 0) glyf.push_back(0);
    }
    loca.U32(glyf.size());
    SetU16(font["head"], 50, 1);
    font["glyf"] = glyf;
    font["loca"] = loca;
    return font;
}

const std::vector<Point> kSquare = {{100, 0}, {500, 0}, {500, 400}, {100, 400}};
const std::vector<Point> kBowl = {{100, 0}, {300, 0, false}, {300, 200}, {100, 200, false}};
const Bytes kInstructions = {0xB0, 0x05, 0x2E};  // PUSHB[1] 5, MDAP[0]

FontTables GlyfSample(bool packed, std::vector<Point> square = kSquare, std::vector<Point> bowl = kBowl,
                      Bytes instructions = kInstructions, int16_t componentX = 10) {
    return GlyfFont({Bytes(), SimpleGlyph({square}, instructions, packed), SimpleGlyph({bowl, kSquare}, {}, packed),
                     CompositeGlyph(1, componentX, 0)});
}

TEST(Outlines, TrueTypeGlyphs) {
    OpenTypeForTest openType;
    std::vector<Point> moved = kSquare, unflagged = kBowl;
    moved[2] = {510, 400};
    unflagged[1].on = true;
    struct Case {
        const char* what;
        FontTables modified;
        const char* deltas;
    } const kCases[] = {
        {"flags and coordinates packed otherwise", GlyfSample(false),
         "\tNo glyph differs: the tables differ only in how their glyphs are encoded\n"},
        {"one point moved", GlyfSample(true, moved),
         "\n### Changed glyphs:\n"
         "\tGlyph ID:\t1\n"
         "\t\tContour 0 point 2 (mod ):\t( 510, 400 )\n"
         "\t\tContour 0 point 2 (orig):\t( 500, 400 )\n"},
        {"an off-curve point made on-curve", GlyfSample(true, kSquare, unflagged),
         "\n### Changed glyphs:\n"
         "\tGlyph ID:\t2\n"
         "\t\tContour 0 (mod ):\tM 100 0 L 300 0 L 300 200 Q 100 200\n"
         "\t\tContour 0 (orig):\tM 100 0 Q 300 0 L 300 200 Q 100 200\n"},
        {"an instruction changed", GlyfSample(true, kSquare, kBowl, {0xB0, 0x06, 0x2E}),
         "\n### Changed glyphs:\n"
         "\tGlyph ID:\t1\n"
         "\t\tInstruction 0 (mod ):\tPUSHB[1] 6\n"
         "\t\tInstruction 0 (orig):\tPUSHB[1] 5\n"},
        {"a component moved", GlyfSample(true, kSquare, kBowl, kInstructions, 20),
         "\n### Changed glyphs:\n"
         "\tGlyph ID:\t3\n"
         "\t\tComponent 0 (mod ):\tglyph 1, offset 20 0\n"
         "\t\tComponent 0 (orig):\tglyph 1, offset 10 0\n"},
    };
    for (const Case& c : kCases) EXPECT_EQ(CompareDeltas(c.modified, GlyfSample(true), "glyf"), c.deltas) << c.what;
}

// A WOFF2 round trip re-encodes every glyph's flags and coordinates: nothing to report.
TEST(Outlines, WebFontRoundTrip) {
    OpenTypeForTest openType;
    std::string font = ReadFile(VELLCMP_SOURCE_DIR "/tests/fonts/DejaVuSans-subset.ttf");
    size_t length = woff2::MaxWOFF2CompressedSize(reinterpret_cast<const uint8_t*>(font.data()), font.size());
    Bytes woff2(length);
    ASSERT_TRUE(woff2::ConvertTTFToWOFF2(reinterpret_cast<const uint8_t*>(font.data()), font.size(), woff2.data(),
                                         &length));
    woff2.resize(length);
    FontTables original = FontFile("DejaVuSans-subset.ttf"), modified = FontTablesOf(woff2);
    ASSERT_NE(modified["glyf"], original["glyf"]);
    EXPECT_EQ(CompareDeltas(modified, original, "glyf"),
              "\tNo glyph differs: the tables differ only in how their glyphs are encoded\n");
}

// Glyphs are paired by name when both fonts name every glyph: a glyph inserted
// before the others shifts no comparison.
TEST(Outlines, GlyphsPairedByName) {
    OpenTypeForTest openType;
    std::vector<Point> moved = kBowl;
    moved[2] = {310, 200};
    FontTables original = GlyfSample(true);
    FontTables modified =
        GlyfFont({Bytes(), SimpleGlyph({kSquare}, kInstructions, true), SimpleGlyph({kBowl}, {}, true),
                  SimpleGlyph({moved, kSquare}, {}, true), CompositeGlyph(1, 10, 0)});
    modified["maxp"] = MakeMaxp(5);
    modified["hmtx"] = MakeHmtx({{500, 0}, {500, 0}, {500, 0}, {500, 0}, {500, 0}});
    modified["hhea"] = MakeHhea(5);
    modified["post"] = MakePost({".notdef", "space", "Aring", "A", "B"});
    original["post"] = MakePost({".notdef", "space", "A", "B"});
    EXPECT_EQ(CompareDeltas(modified, original, "glyf"),
              "\n### Added glyphs (in modified font and not original font):\n"
              "\tGlyph name:\tAring\n"
              "\n### Changed glyphs:\n"
              "\tGlyph ID:\t3\n"
              "\t\tOriginal glyph ID:\t2\n"
              "\t\tContour 0 point 2 (mod ):\t( 310, 200 )\n"
              "\t\tContour 0 point 2 (orig):\t( 300, 200 )\n");
}

// ---- One outline's account ----

VellOutline Squares(const std::vector<int32_t>& offsets, int32_t advance = 500) {
    VellOutline outline;
    outline.advance = advance;
    for (int32_t offset : offsets) {
        for (auto [x, y] : {std::pair{0, 0}, {100, 0}, {100, 100}})
            outline.points.push_back({x + offset, y, outline.points.size() == outline.ContourStart(outline.ContourCount())
                                                         ? VellPointKind::Move
                                                         : VellPointKind::Line});
        outline.contourEnds.push_back(static_cast<uint32_t>(outline.points.size()));
    }
    return outline;
}

TEST(Outlines, OutlineDeltas) {
    VellOutline manyMoved = Squares(std::vector<int32_t>(10, 0)), curved = Squares({0});
    for (VellOutlinePoint& point : manyMoved.points) point.y += 1;
    curved.points[1].kind = VellPointKind::QuadControl;
    curved.points[2].kind = VellPointKind::CurveEnd;
    std::string moved;
    for (int k = 0; k < 24; ++k)
        moved += VellFormat("\tContour %d point %d (mod ):\t( %d, %d )\n\tContour %d point %d (orig):\t( %d, %d )\n",
                            k / 3, k % 3, k % 3 == 0 ? 0 : 100, k % 3 == 2 ? 101 : 1, k / 3, k % 3,
                            k % 3 == 0 ? 0 : 100, k % 3 == 2 ? 100 : 0);
    struct Case {
        const char* what;
        VellOutline modified, original;
        std::string lines;
    } const kCases[] = {
        {"equal", Squares({0, 200}), Squares({0, 200}), ""},
        {"the width", Squares({0}, 510), Squares({0}), "\tWidth (mod ):\t510\n\tWidth (orig):\t500\n"},
        {"contours in another order", Squares({200, 0}), Squares({0, 200}), "\tContours:\treordered\n"},
        {"a contour inserted first", Squares({400, 0, 200}), Squares({0, 200}),
         "\tAdded contour 0:\tM 400 0 L 500 0 L 500 100\n"},
        {"a segment of another kind", curved, Squares({0}),
         "\tContour 0 (mod ):\tM 0 0 Q 100 0 100 100\n\tContour 0 (orig):\tM 0 0 L 100 0 L 100 100\n"},
        {"more moved points than are listed", manyMoved, Squares(std::vector<int32_t>(10, 0)),
         moved + "\tMoved points not listed:\t6\n"},
    };
    for (const Case& c : kCases) {
        CapturedStream out;
        TTableDumper dumper(VelmNewHandle(Bytes{0}), out.file(), nullptr);
        EXPECT_EQ(PrintOutlineDeltas(dumper, 1, c.modified, c.original, true), !c.lines.empty()) << c.what;
        EXPECT_EQ(out.Text(), c.lines) << c.what;
    }
}

// Names pair glyphs only when each names one glyph in each font.
TEST(Outlines, PairingFallsBackToNumbers) {
    struct Case {
        std::vector<std::string> modified, original;
        bool byName;
        std::vector<uint32_t> added, deleted;
    } const kCases[] = {
        {{".notdef", "A", "B"}, {".notdef", "B"}, true, {1}, {}},
        {{".notdef", "A", "A"}, {".notdef", "A"}, false, {2}, {}},
        {{".notdef", ""}, {".notdef", "A", "B"}, false, {}, {2}},
    };
    for (const Case& c : kCases) {
        GlyphPairing pairing = PairGlyphs(c.modified, static_cast<uint32_t>(c.modified.size()), c.original,
                                          static_cast<uint32_t>(c.original.size()));
        EXPECT_EQ(pairing.byName, c.byName);
        EXPECT_EQ(pairing.added, c.added);
        EXPECT_EQ(pairing.deleted, c.deleted);
    }
}

// ---- The CFF structures ----

TEST(Outlines, CFFGlyphNamesAndDicts) {
    FontTables font = FontFile("cff-original.otf");
    const Bytes& table = font["CFF "];
    std::vector<std::string> names;
    ASSERT_TRUE(VellCFFGlyphNames(VellView(table.data(), table.size()), &names));
    EXPECT_EQ(names, (std::vector<std::string>{".notdef", "A", "B", "C"}));
    // Every operand encoding of a DICT, one entry each: 1, 2, 3 and 5 bytes, and a real.
    Bytes cff = {1, 0, 4, 1,                          // header
                 0, 0,                                // Name INDEX: empty
                 0, 1, 1, 1, 18,                      // Top DICT INDEX: one DICT of 17 bytes
                 139, 12, 2,                          // ItalicAngle 0
                 247, 0, 13,                          // UniqueID 108
                 28, 0xFF, 0x9C, 12, 3,               // UnderlinePosition -100
                 30, 0xE2, 0xA5, 0xFF, 12, 4,         // UnderlineThickness -2.5
                 0, 0, 0, 0};                         // String and Global Subr INDEXes: empty
    VellCFF parsed;
    std::string why;
    EXPECT_FALSE(VellReadCFF(VellView(cff.data(), cff.size()), false, &parsed, &why));
    EXPECT_EQ(why, "the Top DICT leads to no CharStrings INDEX");
    EXPECT_EQ(parsed.top.Number(VellCFFEscaped(2), 0, 9), 0);
    EXPECT_EQ(parsed.top.Number(13), 108);
    EXPECT_EQ(parsed.top.Number(VellCFFEscaped(3)), -100);
    EXPECT_EQ(parsed.top.Number(VellCFFEscaped(4)), -2.5);
}

// Where 'post' names no glyph, the accounts of --opentype name glyphs from the
// 'CFF ' charset (CIDs for a CID-keyed font); the classic report never does, and a
// 'post' that names glyphs keeps naming them.
TEST(Outlines, CharsetNamesGlyphsWherePostNamesNone) {
    struct Case {
        const char* font;
        bool openType;
        uint32_t glyph;
        const char* name;
        size_t charsetNames;
    };
    const Case kCases[] = {
        {"cff-original.otf", true, 1, "A", 4},
        {"cff-original.otf", false, 1, "", 4},
        {"cid-original.otf", true, 0, ".notdef", 7},
        {"cid-original.otf", true, 2, "cid13185", 7},
        {"DejaVuSans-subset.ttf", true, 1, "space", 0},
    };
    for (const Case& c : kCases) {
        gOpenType = c.openType;
        LoadedFont loaded(TestFontTables(c.font));
        TFontContext context(loaded.font());
        EXPECT_EQ(context.GlyphName(c.glyph), c.name) << c.font << " " << c.glyph;
        EXPECT_EQ(context.CharsetGlyphNames().size(), c.charsetNames) << c.font;
    }
    gOpenType = 0;
    // A font whose 'post' runs past the end of the file has no charset names either,
    // and asking does not throw: the layout accounts ask while 'post' has its own account.
    FontTables font = TestFontTables("cff-original.otf");
    Bytes file = BuildSfnt(font);
    size_t post = std::ranges::find(font.tables, std::string("post"), &decltype(font.tables)::value_type::first) -
                  font.tables.begin();
    SetU32(file, 12 + 16 * post + 12, 0x00FFFFFF);
    LoadedFont pastTheEnd(file, false);
    TFontContext context(pastTheEnd.font());
    EXPECT_THROW(context.Post(), TVellCmpVellException);
    EXPECT_TRUE(context.CharsetGlyphNames().empty());
}

// A subroutine that calls itself ends the hint reading at the nesting cap, and the
// comparison still finishes.
TEST(Outlines, RecursiveSubroutine) {
    OpenTypeForTest openType;
    FontTables font = FontFile("cff-hinted.otf");
    Bytes& table = font["CFF "];
    // Local subroutine 0, "0 20 hstem return", becomes "-107 callsubr 0 return".
    const Bytes kSubroutine = {0x8B, 0x9F, 0x01, 0x0B};
    auto at = std::search(table.begin(), table.end(), kSubroutine.begin(), kSubroutine.end());
    ASSERT_NE(at, table.end());
    std::copy_n(Bytes{0x20, 0x0A, 0x8B, 0x0B}.begin(), 4, at);
    VellCFF cff;
    std::string why;
    ASSERT_TRUE(VellReadCFF(VellView(table.data(), table.size()), false, &cff, &why));
    EXPECT_EQ(VellCFFHintText(cff, 2), "");
    EXPECT_NE(CompareDeltas(font, FontFile("cff-hinted.otf"), "CFF ").find("\tGlyph ID:\t2\n"), std::string::npos);
}

// Counts and offsets that claim more than the table holds read as fewer objects.
TEST(Outlines, HostileIndexCounts) {
    struct Case {
        const char* what;
        Bytes index;
        uint32_t count;
    } const kCases[] = {
        {"count past the offsets", {0xFF, 0xFF, 1, 1, 2, 3}, 2},
        {"offSize 0", {0, 2, 0, 1, 1}, 0},
        {"offSize 5", {0, 2, 5, 1, 1}, 0},
        {"offsets out of order", {0, 2, 1, 1, 3, 2, 0xAA, 0xBB}, 2},
    };
    for (const Case& c : kCases) {
        // An INDEX read as the CharStrings INDEX (at 17) of a minimal table.
        Bytes cff = {1, 0, 4, 1, 0, 0, 0, 1, 1, 1, 3, 139 + 17, 17, 0, 0, 0, 0};
        cff.insert(cff.end(), c.index.begin(), c.index.end());
        VellCFF parsed;
        std::string why;
        VellReadCFF(VellView(cff.data(), cff.size()), false, &parsed, &why);
        EXPECT_EQ(parsed.charStrings.count, c.count) << c.what;
        for (uint32_t i = 0; i < parsed.charStrings.count; ++i) EXPECT_LE(parsed.charStrings.Object(i).size(), 2u);
    }
}

}  // namespace

namespace {

// ---- The outline accounts under --json and --ignore ----

// The records of one table's account from a run of vellcmp with --opentype and
// these options, each as its line.
std::vector<std::string> OutlineRecords(const FontTables& modified, const FontTables& original, const char* tag,
                                        std::vector<std::string> options = {"--json"}) {
    TempDir dir;
    options.insert(options.begin(), "--opentype");
    options.push_back(dir.Write("a.otf", BuildSfnt(original)));
    options.push_back(dir.Write("b.otf", BuildSfnt(modified)));
    RunResult run = RunVellcmp(options);
    std::vector<std::string> records;
    std::istringstream lines(run.out);
    for (std::string line; std::getline(lines, line);)
        if (line.find("\"table\":\"" + std::string(tag) + "\"") != std::string::npos &&
            !line.starts_with(R"({"type":"table")"))
            records.push_back(line);
    return records;
}

// Each 'glyf' difference of the account is a record under its glyph, typed as
// the glyph holds it; a glyph drawn alike however encoded gives none.
TEST(Outlines, TrueTypeGlyphRecords) {
    std::vector<Point> moved = kSquare, unflagged = kBowl;
    moved[2] = {510, 400};
    unflagged[1].on = true;
    FontTables swapped = GlyfFont({Bytes(), SimpleGlyph({kSquare}, kInstructions, true),
                                   SimpleGlyph({kSquare, kBowl}, {}, true), CompositeGlyph(1, 10, 0)});
    struct Case {
        const char* what;
        FontTables modified;
        std::vector<std::string> records;
    } const kCases[] = {
        {"flags and coordinates packed otherwise", GlyfSample(false), {}},
        {"one point moved", GlyfSample(true, moved),
         {R"({"type":"field","table":"glyf","path":["space","contours",0,"points",2],"original":[500,400],)"
          R"("modified":[510,400]})"}},
        {"an off-curve point made on-curve", GlyfSample(true, kSquare, unflagged),
         {R"({"type":"field","table":"glyf","path":["A","contours",0],"original":"M 100 0 Q 300 0 L 300 200 Q 100 200",)"
          R"("modified":"M 100 0 L 300 0 L 300 200 Q 100 200"})"}},
        {"an instruction changed", GlyfSample(true, kSquare, kBowl, {0xB0, 0x06, 0x2E}),
         {R"({"type":"field","table":"glyf","path":["space","instructions",0],"original":"PUSHB[1] 5","modified":"PUSHB[1] 6"})"}},
        {"an instruction added", GlyfSample(true, kSquare, kBowl, {0xB0, 0x05, 0x2E, 0x2E}),
         {R"({"type":"field","table":"glyf","path":["space","instructions",2],"original":null,"modified":"MDAP[0]"})"}},
        {"a component moved", GlyfSample(true, kSquare, kBowl, kInstructions, 20),
         {R"({"type":"field","table":"glyf","path":["B","components",0],"original":{"glyphIndex":1,"flags":2,)"
          R"("arguments":[10,0]},"modified":{"glyphIndex":1,"flags":2,"arguments":[20,0]}})"}},
        {"two contours swapped", swapped,
         {R"({"type":"field","table":"glyf","path":["A","contourOrder"],"original":[0,1],"modified":[1,0]})"}},
    };
    for (const Case& c : kCases) EXPECT_EQ(OutlineRecords(c.modified, GlyfSample(true), "glyf"), c.records) << c.what;
}

// 'CFF ', CID-keyed 'CFF ' and 'CFF2': DICT fields by operator name with typed
// operands, glyphs keyed by name, a named instance's outline under its number,
// and never a byte range.
TEST(Outlines, PostScriptRecords) {
    struct Case {
        const char* original;
        const char* modified;
        const char* tag;
        std::vector<std::string> records;
    } const kCases[] = {
        {"cff-original.otf", "cff-modified.otf", "CFF ",
         {R"({"type":"field","table":"CFF ","path":["Top DICT","FullName"],"original":"Outline Test",)"
          R"("modified":"Outline Test Edited"})",
          R"({"type":"field","table":"CFF ","path":["Top DICT","FontBBox"],"original":[50,0,600,800],)"
          R"("modified":[0,0,600,800]})",
          // A delta array as the absolute values it stands for.
          R"({"type":"field","table":"CFF ","path":["Private DICT","BlueValues"],"original":[-10,0,500,510],)"
          R"("modified":[-12,0,500,510]})",
          R"({"type":"entry","table":"CFF ","change":"added","path":["D"],"value":{"glyph":4,"name":"D"}})",
          R"({"type":"field","table":"CFF ","path":["A","contours",0,"points",1],"original":[500,0],"modified":[520,0]})",
          R"({"type":"field","table":"CFF ","path":["B","width"],"original":700,"modified":710})",
          R"({"type":"entry","table":"CFF ","change":"added","path":["C","contours",1],)"
          R"("value":"M 150 450 L 250 450 L 250 550"})"}},
        {"cid-original.otf", "cid-modified.otf", "CFF ",
         {R"({"type":"entry","table":"CFF ","change":"added","path":["cid00035"],)"
          R"("value":{"glyph":2,"name":"cid00035","CID":35}})",
          R"({"type":"entry","table":"CFF ","change":"deleted","path":["cid15364"],)"
          R"("value":{"glyph":3,"name":"cid15364","CID":15364}})",
          R"({"type":"entry","table":"CFF ","change":"deleted","path":["cid15365"],)"
          R"("value":{"glyph":4,"name":"cid15365","CID":15365}})"}},
        {"cff2-original.otf", "cff2-modified.otf", "CFF2",
         {R"({"type":"field","table":"CFF2","path":["A","instance",1,"contours",0,"points",1],"original":[520,0],)"
          R"("modified":[540,0]})",
          R"({"type":"field","table":"CFF2","path":["A","instance",1,"contours",0,"points",2],"original":[520,400],)"
          R"("modified":[540,400]})"}},
        {"cff-original.otf", "cff-hinted.otf", "CFF ",
         {R"({"type":"field","table":"CFF ","path":["A","hints"],"original":null,)"
          R"("modified":"hstem 0 60 340 400 vstem 100 160 440 500 hintmask 1111"})",
          R"({"type":"field","table":"CFF ","path":["B","hints"],"original":null,"modified":"hstem 0 20"})"}},
    };
    for (const Case& c : kCases)
        EXPECT_EQ(OutlineRecords(FontFile(c.modified), FontFile(c.original), c.tag), c.records) << c.modified;
}

// --ignore names the outline accounts' differences by the same paths: a glyph
// whose every difference is left out loses its heading, and a table changed only
// in what the rules leave out is unchanged.
TEST(Outlines, IgnoreRulesNameOutlineDifferences) {
    FontTables original = FontFile("cff-original.otf");
    TempDir dir;
    std::string a = dir.Write("a.otf", BuildSfnt(original));
    std::string modified = dir.Write("b.otf", BuildSfnt(FontFile("cff-modified.otf")));
    RunResult run = RunVellcmp({"--opentype", "--ignore=CFF .B.width,CFF .Top DICT", a, modified});
    EXPECT_EQ(run.out.find("FullName"), std::string::npos) << run.out;
    EXPECT_EQ(run.out.find("\tWidth (mod )"), std::string::npos) << run.out;
    EXPECT_EQ(run.out.find("\tGlyph ID:\t2\n"), std::string::npos) << run.out;
    EXPECT_NE(run.out.find("\tGlyph ID:\t1\n\t\tContour 0 point 1 (mod ):\t( 520, 0 )\n"), std::string::npos) << run.out;
    EXPECT_NE(run.out.find("BlueValues (mod ):\t-12 0 500 510"), std::string::npos) << run.out;
    std::string hinted = dir.Write("c.otf", BuildSfnt(FontFile("cff-hinted.otf")));
    run = RunVellcmp({"--opentype", "--exit-code", "--ignore=CFF .*.hints", a, hinted});
    EXPECT_EQ(run.out.find("'CFF '"), std::string::npos) << run.out;
}

}  // namespace
