// 'glyf' and 'loca' handlers, and the framework's glyph data, points and
// instruction texts, on outlines built here.
#include <gtest/gtest.h>

#include <algorithm>
#include <random>

#include "VellCmpErrors.h"
#include "framework/VellGlyphData.h"
#include "framework/VellInstructions.h"
#include "support/Harness.h"
#include "tables/glyf.h"
#include "tables/loca.h"

namespace {

struct Point {
    int16_t x, y;
};

// A simple glyph, every point on the curve and stored as word deltas; the bounds
// are the first and the last point.
Bytes SimpleGlyph(const std::vector<std::vector<Point>>& contours, const Bytes& instructions = {}) {
    std::vector<Point> points;
    for (const auto& contour : contours) points.insert(points.end(), contour.begin(), contour.end());
    TableWriter glyph;
    glyph.U16(contours.size()).U16(points[0].x).U16(points[0].y).U16(points.back().x).U16(points.back().y);
    size_t end = 0;
    for (const auto& contour : contours) glyph.U16((end += contour.size()) - 1);
    glyph.U16(instructions.size());
    for (uint8_t byte : instructions) glyph.U8(byte);
    for (size_t p = 0; p < points.size(); ++p) glyph.U8(0x01);
    for (int16_t Point::*axis : {&Point::x, &Point::y})
        for (size_t p = 0; p < points.size(); ++p) glyph.U16(points[p].*axis - (p ? points[p - 1].*axis : 0));
    return glyph;
}

// SampleFont with these glyphs and their 'loca'; short offsets pad each glyph to
// an even length.
FontTables GlyphFont(const std::vector<Bytes>& glyphs, bool longLoca = false) {
    FontTables font = SampleFont();
    font["maxp"] = MakeMaxp(static_cast<uint16_t>(glyphs.size()));
    Bytes& glyf = font["glyf"];
    TableWriter loca;
    for (size_t g = 0; g <= glyphs.size(); ++g) {
        longLoca ? loca.U32(glyf.size()) : loca.U16(glyf.size() / 2);
        if (g == glyphs.size()) break;
        glyf.insert(glyf.end(), glyphs[g].begin(), glyphs[g].end());
        if (!longLoca && glyf.size() % 2 != 0) glyf.push_back(0);
    }
    if (longLoca) SetU16(font["head"], 50, 1);
    font["loca"] = loca;
    return font;
}

const Bytes kSide = SimpleGlyph({{{10, 20}, {30, 40}}}, {0xB0, 5, 0x10});
const Bytes kTriangle = SimpleGlyph({{{0, 0}, {0, 100}, {100, 100}}});

// Glyph 0 empty, glyph 1 kSide, glyph 2 `third`.
FontTables ThreeGlyphs(const Bytes& third, bool longLoca = false) { return GlyphFont({{}, kSide, third}, longLoca); }

VellHandle TableOf(const FontTables& font, const std::string& tag) {
    for (const auto& [name, bytes] : font.tables)
        if (name == tag) return VelmNewHandle(bytes);
    return nullptr;
}

std::string DumpGlyf(const FontTables& font) {
    LoadedFont loaded(font);
    CapturedStream out;
    TGLYFTableDumper dumper(TableOf(font, "glyf"), out.file());
    dumper.SetFont(loaded.font());
    dumper.DumpTableContents();
    return out.Text();
}

bool Has(const std::string& text, const std::string& part) { return text.find(part) != std::string::npos; }

TEST(Glyf, AMovedPointPrintsBothGlyphBlocksInFull) {
    FontTables modified = GlyphFont({{}, SimpleGlyph({{{10, 20}, {31, 40}}}, {0xB0, 5, 0x10}), kTriangle});
    auto block = [](const std::string& x) {
        return "\t# contours:\t1\n\tBounds xMin:\t10\n\tBounds xMax:\t" + x +
               "\n\tBounds yMin:\t20\n\tBounds yMax:\t40\n\tLast point indices\n\t\t0:\t1\n"
               "\tInstruction length:\t3\n\tInstruction count:\t2\n\t\t0:\tPUSHB[1] 5\n\t\t1:\tSRP0[]\n"
               "\tPoints:\t2\n\t\tContour:\t0\n\t\t\t0:\t( 10.000000, 20.000000 )\n\t\t\t1:\t( " +
               x + ".000000, 40.000000 )\n";
    };
    // Without -p the glyph line stays open and the heading's line break ends it.
    EXPECT_EQ(
        CompareDeltas(modified, ThreeGlyphs(kTriangle), "glyf"),
        "Glyph ID:\t1\n\t### Original glyph data\n\n" + block("30") + "\n\t### Modified glyph data\n\n" + block("31"));
}

TEST(Glyf, AnAddedContourAndAChangedInstructionShowInTheirLines) {
    FontTables original = ThreeGlyphs(kTriangle);
    std::string added =
        CompareDeltas(ThreeGlyphs(SimpleGlyph({{{0, 0}, {0, 100}, {100, 100}}, {{5, 5}, {6, 6}}})), original, "glyf");
    EXPECT_TRUE(Has(added, "\tLast point indices\n\t\t0:\t2\n\t\t1:\t4\n"));
    EXPECT_TRUE(
        Has(added, "\t\t\t2:\t( 100.000000, 100.000000 )\n\t\tContour:\t1\n\t\t\t3:\t( 5.000000, 5.000000 )\n"));
    std::string changed =
        CompareDeltas(ThreeGlyphs(SimpleGlyph({{{0, 0}, {0, 100}, {100, 100}}}, {0xED})), original, "glyf");
    EXPECT_TRUE(Has(changed, "\tInstruction length:\t1\n\tInstruction count:\t1\n\t\t0:\tMIRP[01101]\n"));
}

Bytes Composite(const TableWriter& records) {
    Bytes glyph = TableWriter().U16(0xFFFF).U16(0).U16(0).U16(10).U16(10);
    glyph.insert(glyph.end(), records.bytes().begin(), records.bytes().end());
    return glyph;
}

TEST(Glyf, ComponentsGoOnOnlyWhileTheWordAfterARecordHasMoreComponents) {
    // The first record announces a second whose own flags announce none: the
    // word after the first is the second's flags, so the second is never listed.
    auto twoRecords = [](uint16_t glyph) {
        return Composite(TableWriter().U16(0x0022).U16(glyph).U8(3).U8(4).U16(0x0008).U16(2).U8(5).U8(6).U16(0x4000));
    };
    std::string changed = CompareDeltas(ThreeGlyphs(twoRecords(3)), ThreeGlyphs(twoRecords(1)), "glyf");
    EXPECT_TRUE(Has(changed,
                    "\tGlyph component:\t0\n\t\tFlags:\t0x0022\n\t\t\tARG_1_AND_2_ARE_WORDS:\tFALSE\n"
                    "\t\t\tARGS_ARE_XY_VALUES:\tTRUE\n"));
    EXPECT_TRUE(Has(changed, "\t\tGlyph ID:\t1\n\t\tArg 0:\t3\n\t\tArg 1:\t4\n\t\tNo scale\n\n\t### Modified"));
    EXPECT_TRUE(changed.ends_with("\t\tGlyph ID:\t3\n\t\tArg 0:\t3\n\t\tArg 1:\t4\n\t\tNo scale\n")) << changed;

    // The scale words of WE_HAVE_AN_X_AND_Y_SCALE are not skipped: an x scale
    // with bit 5 set is read as one more record, whose bytes past the data read 0.
    Bytes scaled = Composite(TableWriter().U16(0x0040).U16(2).U8(0xFF).U8(4).U16(0x3020).U16(0x4000));
    std::string quirk = CompareDeltas(ThreeGlyphs(scaled), ThreeGlyphs(kTriangle), "glyf");
    EXPECT_TRUE(Has(quirk, "\t\tGlyph ID:\t2\n\t\tArg 0:\t255\n\t\tArg 1:\t4\n\t\tNo scale\n\t\tFlags:\t0x3020\n"));
    EXPECT_TRUE(quirk.ends_with("\t\tGlyph ID:\t16384\n\t\tArg 0:\t0\n\t\tArg 1:\t0\n\t\tNo scale\n")) << quirk;
}

TEST(Glyf, UpToFourBytesOfPaddingToAMultipleOfFourAreNoChange) {
    Bytes base = kTriangle;
    base.resize(32);
    for (auto [padding, reported] : {std::pair{4, false}, {0, false}, {2, true}, {8, true}}) {
        Bytes padded = base;
        padded.insert(padded.end(), padding, 0xAA);  // whatever the padding bytes hold
        FontTables longer = ThreeGlyphs(padded, true), shorter = ThreeGlyphs(base, true);
        EXPECT_EQ(CompareDeltas(longer, shorter, "glyf").empty(), !reported) << padding;
        EXPECT_EQ(CompareDeltas(shorter, longer, "glyf").empty(), !reported) << padding;
    }
}

TEST(Glyf, GlyphRangesOnlyOneFontHasAndEmptyGlyphs) {
    FontTables three = ThreeGlyphs(kTriangle), five = GlyphFont({{}, kSide, kTriangle, kTriangle, {}});
    EXPECT_EQ(CompareDeltas(five, three, "glyf"), "\nGlyphs 3 to 4 added\n");
    EXPECT_EQ(CompareDeltas(three, five, "glyf"), "\nGlyphs 3 to 4 deleted\n");
    EXPECT_EQ(CompareDeltas(ThreeGlyphs({}), three, "glyf"), "");  // data in one font only
}

TEST(Glyf, DumperShowsTheStoredFlagByteAtEachPointIndex) {
    // One flag repeated twice covers three points: the flag shown for point 1 is
    // the repeat count, for point 2 the first x delta's high byte.
    Bytes glyph = {0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 2, 0, 0, 0x29, 2, 0x01, 0x00, 0x00, 0x10, 0xFF, 0xFF};
    std::string dump = DumpGlyf(GlyphFont({{}, glyph}));
    EXPECT_TRUE(dump.starts_with("Glyph ID:\t0\n\tNo glyph data\nGlyph ID:\t1\n\t# contours:\t1\n")) << dump;
    EXPECT_TRUE(Has(dump,
                    "\tPoints:\t3\n\t\tContour:\t0\n"
                    "\t\t\tPoint index:\t0\n\t\t\t\tIs on curve:\tTRUE\n\t\t\t\tFlags:\t0x29\n"
                    "\t\t\t\tPoint:\t( 256.000000, 0.000000 )\n"
                    "\t\t\tPoint index:\t1\n\t\t\t\tIs on curve:\tFALSE\n\t\t\t\tFlags:\t0x02\n"
                    "\t\t\t\tPoint:\t( 272.000000, 0.000000 )\n"
                    "\t\t\tPoint index:\t2\n\t\t\t\tIs on curve:\tTRUE\n\t\t\t\tFlags:\t0x01\n"));
}

TEST(Glyf, DamagedOutlinesEndInAnErrorOrABoundedReport) {
    std::mt19937 random(6301);
    FontTables original = ThreeGlyphs(Composite(TableWriter().U16(0x0041).U16(1).U16(7).U16(9).U16(0x20)));
    for (int round = 0; round < 200; ++round) {
        FontTables modified = original;
        Bytes& bytes = modified[round % 3 == 0 ? "loca" : "glyf"];
        if (round % 2 == 0) bytes.resize(random() % bytes.size());
        for (uint8_t& byte : bytes)
            if (random() % 6 == 0) byte = static_cast<uint8_t>(random());
        try {
            EXPECT_LT(CompareDeltas(modified, original, "glyf").size() + DumpGlyf(modified).size(), 1u << 20);
        } catch (const TVellCmpVellException& error) {
            EXPECT_EQ(error.GetCode(), kVellBadTableErr) << round;
        }
    }
}

// ---- 'loca' ----

std::string CompareLoca(const FontTables& modified, const FontTables& original) {
    LoadedFont modifiedFont(modified), originalFont(original);
    CapturedStream out;
    TLOCATableComparator comparator(modifiedFont.font(), TableOf(modified, "loca"), TableOf(modified, "post"),
                                    originalFont.font(), TableOf(original, "loca"), TableOf(original, "post"),
                                    out.file());
    comparator.SetTableTag(VellMakeTag("loca"));
    comparator.DumpTable();
    return out.Text();
}

TEST(Loca, OffsetsInLongFormAndTheComparatorsChangedThenExtraGlyphsWithTheirNames) {
    FontTables font = ThreeGlyphs(kTriangle);
    LoadedFont loaded(font);
    CapturedStream out;
    TLOCATableDumper(loaded.font(), TableOf(font, "loca"), out.file()).DumpTableContents();
    EXPECT_EQ(out.Text(),
              "\tGlyph:\t0\n\t\tOffset:\t0x00000000\n\tGlyph:\t1\n\t\tOffset:\t0x00000000\n"
              "\tGlyph:\t2\n\t\tOffset:\t0x0000001C\n");
    const std::string footer = "\n#####\n End table\n\n\n";
    EXPECT_EQ(CompareLoca(font, font), "##### Table 'loca' (8 bytes in the modified font)\n" + footer);
    // A longer glyph 1 moves glyph 2; two more glyphs follow in the modified font.
    FontTables more = GlyphFont({{}, kTriangle, kTriangle, {}, {}});
    more["post"] = MakePost({".notdef", "space", "Aring", "B", "C"});
    EXPECT_EQ(CompareLoca(more, font),
              "##### Table 'loca' (12 bytes in the modified font)\n\tGlyph:\t2\n\t\tName (mod ):\tAring\n"
              "\t\tName (orig):\tA\n\t\tOffset (mod ):\t0x0000001E\n\t\tOffset (orig):\t0x0000001C\n"
              "\n\n\tOffsets for added glyphs:\n\tGlyph:\t3\n\t\tName (mod ):\tB\n\t\tOffset:\t0x0000003C\n"
              "\tGlyph:\t4\n\t\tName (mod ):\tC\n\t\tOffset:\t0x0000003C\n" +
                  footer);
    for (FontTables* side : {&more, &font}) side->Remove("post");
    EXPECT_TRUE(Has(CompareLoca(font, more),
                    "\tGlyph:\t2\n\t\tName:\t\n\t\tOffset (mod ):\t0x0000001C\n\t\tOffset (orig):\t0x0000001E\n"
                    "\n\n\tOffsets for deleted glyphs:\n\tGlyph:\t3\n\t\tName:\t\n\t\tOffset:\t0x0000003C\n"));
}

// ---- Framework ----

TEST(GlyphData, RangesFromLocaAndEveryWayAnOffsetCanBeWrong) {
    FontTables font = ThreeGlyphs(kTriangle);  // short offsets 0, 0, 14, 29
    struct {
        std::vector<uint16_t> loca;
        uint32_t glyph;
        size_t size;
        int32_t code;
    } cases[] = {
        {{0, 0, 14, 29}, 2, 30, kVellNoErr},      {{0, 0, 14, 29}, 0, 0, kVellNoErr},  // empty: no block
        {{0, 0, 14, 29}, 3, 0, kVellParamErr},                                         // past the glyph count
        {{0, 0, 14, 30}, 2, 0, kVellBadTableErr},                                      // past the end of 'glyf'
        {{0, 14, 0, 29}, 1, 0, kVellBadTableErr},                                      // decreasing
        {{0, 0, 14}, 2, 0, kVellBadTableErr},                                          // cut short: the end reads 0
    };
    for (const auto& c : cases) {
        TableWriter loca;
        for (uint16_t offset : c.loca) loca.U16(offset);
        font["loca"] = loca;
        LoadedFont loaded(font);
        ErrorRecord record;
        EXPECT_EQ(VelmView(VellGetTTGlyphData(loaded.font(), c.glyph, &record)).size(), c.size) << c.glyph;
        EXPECT_EQ(record.code, c.code) << c.glyph;
    }
    // A 'glyf', 'loca' or 'head' running past the end of the file.
    ASSERT_EQ(font.tables[7].first + font.tables[8].first + font.tables[0].first, "glyflocahead");
    for (size_t entry : {7, 8, 0}) {
        Bytes file = BuildSfnt(font);
        SetU32(file, 12 + 16 * entry + 12, 0x00FFFFF0);
        ErrorRecord record;
        EXPECT_EQ(VellGetTTGlyphData(LoadedFont(file).font(), 2, &record), nullptr);
        EXPECT_EQ(record.code, kVellBadTableErr) << entry;
    }
}

TEST(GlyphData, LongLocaDoublesShortOffsetsAndReadsZerosPastTheTable) {
    auto longOffsets = [](const FontTables& font) {
        ErrorRecord record;
        VellHandle block = VellMakeLongLOCA(LoadedFont(font).font(), &record);
        std::vector<uint32_t> offsets;
        for (size_t at = 0; at < VelmView(block).size(); at += 4) offsets.push_back(VelmView(block).u32(at));
        return offsets;
    };
    FontTables font = ThreeGlyphs(kTriangle);
    EXPECT_EQ(longOffsets(font), (std::vector<uint32_t>{0, 0, 28, 58}));
    EXPECT_EQ(longOffsets(ThreeGlyphs(kTriangle, true)), (std::vector<uint32_t>{0, 0, 27, 56}));
    font["loca"].resize(6);
    EXPECT_EQ(longOffsets(font), (std::vector<uint32_t>{0, 0, 28, 0}));
    font.Remove("loca");
    EXPECT_EQ(longOffsets(font), (std::vector<uint32_t>{0, 0, 0, 0}));
}

std::vector<std::pair<double, double>> PointsOf(const Bytes& glyph) {
    ErrorRecord record;
    VellHandle coordinates = VellExtractGLYFCoords(VelmNewHandle(glyph), &record);
    VellView block = VelmView(coordinates);
    std::vector<std::pair<double, double>> points;
    for (size_t p = 0; p < block.u32(0); ++p)
        points.emplace_back(block.s32(4 + 8 * p) / 65536.0, block.s32(8 + 8 * p) / 65536.0);
    return points;
}

TEST(GlyphData, PointsOfTruncatedAndHostileGlyphsStayWithinTheirData) {
    // Four points: short x deltas of either sign under a repeated flag, then y
    // as one short and three word deltas.
    Bytes glyph = {0, 1, 0, 0, 0, 0, 0, 0, 0, 0, 0, 3, 0, 1, 0xB0, 0x37, 0x0B, 2, 10, 10, 5, 1, 1, 0, 0, 0, 3, 1, 0};
    const std::vector<std::pair<double, double>> full = {{10, 1}, {0, 1}, {-5, 4}, {-6, 260}};
    EXPECT_EQ(PointsOf(glyph), full);
    for (size_t size = 0; size < glyph.size(); ++size) {
        auto points = PointsOf(Bytes(glyph.begin(), glyph.begin() + static_cast<ptrdiff_t>(size)));
        ASSERT_LE(points.size(), full.size());
        EXPECT_TRUE(std::equal(points.begin(), points.end(), full.begin())) << size;
    }
    // 65536 points claimed; 8 flags repeated 255 times, with no coordinates
    // stored: as many points as the flags give.
    Bytes hostile = TableWriter().U16(1).Zeros(8).U16(0xFFFF).U16(0);
    for (int i = 0; i < 8; ++i) hostile.insert(hostile.end(), {0x39, 0xFF});
    EXPECT_EQ(PointsOf(hostile).size(), 8u * 256);
    EXPECT_TRUE(PointsOf({0x80}).empty());
}

std::string Decode(const Bytes& bytes, uint32_t length, uint32_t* size = nullptr, int32_t* code = nullptr) {
    VellHandle exact = VelmNewHandle(bytes);  // no byte to spare, for the sanitizers
    std::array<uint8_t, kVellInstructionTextSize> text{};
    ErrorRecord record;
    uint32_t used = VellDecodeInstructions(VelmView(exact), length, text, &record);
    if (size != nullptr) *size = used;
    if (code != nullptr) *code = record.code;
    return std::string(VellView(text).chars(1, text[0]));
}

TEST(Instructions, MnemonicsFlagBitsAndPushesOfOneInstruction) {
    struct {
        Bytes code;
        const char* text;
        uint32_t size;
    } cases[] = {
        {{0x00}, "SVTCA[0]", 1},
        {{0x10}, "SRP0[]", 1},
        {{0x69}, "ROUND[01]", 1},
        {{0xED}, "MIRP[01101]", 1},
        {{0x87}, "SDPVTL[1]", 1},
        {{0x91}, "GETVARIATION[]", 1},
        {{0x28}, "Unknown opcode 0x28", 1},
        {{0xB1, 12, 34, 0x10}, "PUSHB[2] 12 34", 3},
        {{0xB9, 0xFF, 0xFE, 0x01, 0x00}, "PUSHW[2] -2 256", 5},
        {{0x40, 2, 7, 255}, "NPUSHB[2] 7 255", 4},
        {{0x41, 1, 0x80, 0x00}, "NPUSHW[1] -32768", 4},
        // Pushes cut short take the rest; half a word is no value.
        {{0xB2, 1}, "PUSHB[3] 1", 2},
        {{0x41, 3, 0, 1, 2}, "NPUSHW[3] 1", 5},
        {{0x40}, "NPUSHB[]", 1},
    };
    for (const auto& c : cases) {
        uint32_t size = 0;
        int32_t code = 0;
        EXPECT_EQ(Decode(c.code, static_cast<uint32_t>(c.code.size()), &size, &code), c.text);
        EXPECT_EQ(size, c.size) << c.text;
        EXPECT_EQ(code, 0) << c.text;
        ErrorRecord record;
        EXPECT_EQ(VellCountInstructions(VellView(c.code), size, &record), 1u) << c.text;
    }
}

TEST(Instructions, CountingAndDecodingStopAtTheGivenLength) {
    Bytes code = {0xB0, 5, 0x10, 0x40, 3, 1};  // PUSHB[1] 5, SRP0, NPUSHB[3] cut short
    ErrorRecord record;
    EXPECT_EQ(VellCountInstructions(VellView(code), 1000, &record), 3u);
    EXPECT_EQ(VellCountInstructions(VellView(code), 3, &record), 2u);
    EXPECT_EQ(Decode(code, 1), "PUSHB[1]");
    int32_t status = 0;
    Decode(code, 0, nullptr, &status);
    EXPECT_EQ(status, kVellParamErr);
}

TEST(Instructions, ALongPushIsCutAtAValueWithinTheLengthByte) {
    auto push = [](uint8_t values) {
        Bytes code = {0x40, values};
        code.insert(code.end(), values, 100);
        return Decode(code, static_cast<uint32_t>(code.size()));
    };
    EXPECT_EQ(push(61).size(), 254u);  // "NPUSHB[61]" and 61 times " 100" fit
    EXPECT_TRUE(push(62).ends_with(" 100 100 ...") && push(62).size() == 254u) << push(62);
    EXPECT_LE(push(255).size(), 255u);
}

}  // namespace
