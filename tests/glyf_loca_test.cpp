// 'glyf' and 'loca' handlers, and the framework's glyph data, points and
// instruction texts, on outlines built here.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>

#include "VellCmpErrors.h"
#include "VellDumpFonts.h"
#include "framework/VellGlyphData.h"
#include "framework/VellInstructions.h"
#include "framework/VellTables.h"
#include "support/Harness.h"
#include "tables/loca.h"

namespace {

using ::testing::EndsWith;
using ::testing::HasSubstr;

// One contour, its points on the curve, stored as word deltas: (10, 20) (30, 40)
// with PUSHB[1] 5 and SRP0, and (0, 0) (0, 100) (100, 100) without instructions.
const Bytes kSide = {0, 1, 0, 10, 0, 20, 0, 30, 0, 40, 0, 1, 0, 3, 0xB0, 5, 0x10, 1, 1, 0, 10, 0, 20, 0, 20, 0, 20};
const Bytes kTriangle = {0, 1, 0, 0, 0, 0, 0, 100, 0, 100, 0, 2, 0, 0, 1, 1, 1, 0, 0, 0, 0, 0, 100, 0, 0, 0, 100, 0, 0};
// Contours ending at points 1 and 3, and the instruction PUSHB[1] cut short. Flag
// 0x37 (short x and y, both positive), then 0x0B (short negative x, word y)
// repeated twice: x deltas 10, -10, -5, -1 and y deltas 1, 0, 3, 256.
const Bytes kMixedDeltas = {0, 2, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1, 0, 3, 0, 1, 0xB0,
                            0x37, 0x0B, 2, 10, 10, 5, 1, 1, 0, 0, 0, 3, 1, 0};

// What velldump prints for one table, in its frame.
std::string Velldump(const FontTables& font, const char (&tag)[5]) {
    LoadedFont loaded(font);
    CapturedStream out;
    ErrorRecord record;
    TFontContext context(loaded.font());
    MakeFontTableDumper(context, VellMakeTag(tag), out.file(), &record)->DumpTable();
    return out.Text();
}

TEST(Glyf, AChangedGlyphPrintsBothBlocksInFull) {
    Bytes moved = kSide;  // the second point one unit right
    SetU16(moved, 6, 31), SetU16(moved, 21, 21);
    auto block = [](const std::string& x) {
        return "\t# contours:\t1\n\tBounds xMin:\t10\n\tBounds xMax:\t" + x +
               "\n\tBounds yMin:\t20\n\tBounds yMax:\t40\n\tLast point indices\n\t\t0:\t1\n"
               "\tInstruction length:\t3\n\tInstruction count:\t2\n\t\t0:\tPUSHB[1] 5\n\t\t1:\tSRP0[]\n"
               "\tPoints:\t2\n\t\tContour:\t0\n\t\t\t0:\t( 10.000000, 20.000000 )\n\t\t\t1:\t( " +
               x + ".000000, 40.000000 )\n";
    };
    // Without -p the glyph line stays open and the heading's line break ends it.
    EXPECT_EQ(
        CompareDeltas(GlyphFont({{}, moved, kTriangle}), GlyphFont({{}, kSide, kTriangle}), "glyf"),
        "Glyph ID:\t1\n\t### Original glyph data\n\n" + block("30") + "\n\t### Modified glyph data\n\n" + block("31"));
}

// A composite glyph's header; its records follow.
TableWriter Composite() { return TableWriter().U16(0xFFFF).U16(0).U16(0).U16(10).U16(10); }

TEST(Glyf, ComponentsGoOnWhileTheWordAfterARecordHasMoreComponentsAndScaleWordsAreNotSkipped) {
    // The first record announces a second whose own flags announce none: the
    // word after the first is the second's flags, so the second is never listed.
    auto twoRecords = [](uint16_t glyph) {
        return Bytes(Composite().U16(0x0022).U16(glyph).U8(3).U8(4).U16(0x0008).U16(2).U8(5).U8(6).U16(0x4000));
    };
    std::string changed =
        CompareDeltas(GlyphFont({{}, kSide, twoRecords(3)}), GlyphFont({{}, kSide, twoRecords(1)}), "glyf");
    EXPECT_THAT(changed, HasSubstr("\tGlyph component:\t0\n\t\tFlags:\t0x0022\n\t\t\tARG_1_AND_2_ARE_WORDS:\tFALSE\n"
                                   "\t\t\tARGS_ARE_XY_VALUES:\tTRUE\n"));
    EXPECT_THAT(changed, EndsWith("\t\tGlyph ID:\t3\n\t\tArg 0:\t3\n\t\tArg 1:\t4\n\t\tNo scale\n"));
    // Word arguments and a scale; the y scale of WE_HAVE_AN_X_AND_Y_SCALE, with
    // bit 5 set, is read as one more record, whose arguments past the data read 0.
    Bytes scaled = Composite().U16(0x0049).U16(2).U16(0xFFFF).U16(4).U16(0x4000).U16(0x3020).U16(7);
    std::string quirk = CompareDeltas(GlyphFont({{}, kSide, scaled}), GlyphFont({{}, kSide, kTriangle}), "glyf");
    EXPECT_THAT(quirk, HasSubstr("\t\tGlyph ID:\t2\n\t\tArg 0:\t65535\n\t\tArg 1:\t4\n\t\tScale:\t0x4000\n"
                                 "\t\tFlags:\t0x3020\n"));
    EXPECT_THAT(quirk, EndsWith("\t\tGlyph ID:\t7\n\t\tArg 0:\t0\n\t\tArg 1:\t0\n\t\tNo scale\n"));
}

TEST(Glyf, UpToFourBytesOfPaddingToAMultipleOfFourAreNoChange) {
    Bytes base = kTriangle;
    base.resize(32);
    for (auto [padding, reported] : {std::pair{4, false}, {0, false}, {2, true}, {8, true}}) {
        Bytes padded = base;
        padded.insert(padded.end(), padding, 0xAA);  // whatever the padding bytes hold
        FontTables longer = GlyphFont({{}, kSide, padded}, true), shorter = GlyphFont({{}, kSide, base}, true);
        EXPECT_EQ(CompareDeltas(longer, shorter, "glyf").empty(), !reported) << padding;
        EXPECT_EQ(CompareDeltas(shorter, longer, "glyf").empty(), !reported) << padding;
    }
}

TEST(Glyf, GlyphRangesOnlyOneFontHasAndGlyphsWithDataInOneFontOnlyAreNotListed) {
    FontTables three = GlyphFont({{}, kSide, kTriangle}), five = GlyphFont({{}, kSide, kTriangle, kTriangle, {}});
    EXPECT_EQ(CompareDeltas(five, three, "glyf"), "\nGlyphs 3 to 4 added\n");
    EXPECT_EQ(CompareDeltas(three, five, "glyf"), "\nGlyphs 3 to 4 deleted\n");
    EXPECT_EQ(CompareDeltas(GlyphFont({{}, kSide, {}}), three, "glyf"), "");
}

TEST(Glyf, DumperListsEachContourAfterTheLastPointOfOneAndTheStoredFlagByteAtEachPoint) {
    // Point 2 shows the repeat count, not the 0x0B it was decoded with.
    std::string dump = Velldump(GlyphFont({{}, kMixedDeltas}), "glyf");
    EXPECT_THAT(dump, HasSubstr("Glyph ID:\t0\n\tNo glyph data\nGlyph ID:\t1\n\t# contours:\t2\n"));
    EXPECT_THAT(dump, HasSubstr("\t\t\t\tFlags:\t0x0B\n\t\t\t\tPoint:\t( 0.000000, 1.000000 )\n\t\tContour:\t1\n"
                                "\t\t\tPoint index:\t2\n\t\t\t\tIs on curve:\tFALSE\n\t\t\t\tFlags:\t0x02\n"));
}

// The registry makes no 'loca' comparator: one made as it would be.
std::string CompareLoca(const FontTables& modified, const FontTables& original) {
    LoadedFont m(modified), o(original);
    TFontContext modifiedContext(m.font()), originalContext(o.font());
    CapturedStream out;
    TLOCATableComparator(modifiedContext, originalContext, VellMakeTag("loca"), out.file()).DumpTable();
    return out.Text();
}

TEST(Loca, OffsetsInLongFormAndTheComparatorsChangedThenExtraGlyphsWithTheirNames) {
    FontTables font = GlyphFont({{}, kSide, kTriangle});
    const std::string footer = "\n#####\n End table\n\n\n";
    EXPECT_EQ(Velldump(font, "loca"), "##### Table 'loca' (8 bytes in the modified font)\n\tGlyph:\t0\n\t\tOffset:\t"
                                      "0x00000000\n\tGlyph:\t1\n\t\tOffset:\t0x00000000\n\tGlyph:\t2\n\t\tOffset:\t"
                                      "0x0000001C\n" + footer);
    // A longer glyph 1 moves glyph 2; two more glyphs follow in the modified font.
    FontTables more = GlyphFont({{}, kTriangle, kTriangle, {}, {}});
    more["post"] = MakePost({".notdef", "space", "Aring", "B", "C"});
    EXPECT_EQ(CompareLoca(more, font),
              "##### Table 'loca' (12 bytes in the modified font)\n\tGlyph:\t2\n\t\tName (mod ):\tAring\n"
              "\t\tName (orig):\tA\n\t\tOffset (mod ):\t0x0000001E\n\t\tOffset (orig):\t0x0000001C\n"
              "\n\n\tOffsets for added glyphs:\n\tGlyph:\t3\n\t\tName (mod ):\tB\n\t\tOffset:\t0x0000003C\n"
              "\tGlyph:\t4\n\t\tName (mod ):\tC\n\t\tOffset:\t0x0000003C\n" + footer);
    // A glyph only the original has gets only its original name line.
    font.Remove("post");
    EXPECT_THAT(CompareLoca(font, more),
                HasSubstr("\tGlyph:\t2\n\t\tName (mod ):\t\n\t\tName (orig):\tAring\n\t\tOffset (mod ):\t0x0000001C\n"
                          "\t\tOffset (orig):\t0x0000001E\n\n\n\tOffsets for deleted glyphs:\n\tGlyph:\t3\n"
                          "\t\tName (orig):\tB\n\t\tOffset:\t0x0000003C\n"));
    // Without 'post' tables both names are empty, and agree.
    more.Remove("post");
    EXPECT_THAT(CompareLoca(font, more), HasSubstr("\tGlyph:\t2\n\t\tName:\t\n\t\tOffset (mod ):"));
}

TEST(GlyphData, AGlyphEndingPastGlyfOrBeforeItsStartAndATablePastTheFileAreBadTables) {
    FontTables font = GlyphFont({{}, kSide, kTriangle});  // short offsets 0, 0, 14, 29
    ASSERT_EQ(font.tables[7].first + font.tables[8].first + font.tables[0].first, "glyflocahead");
    // A 'glyf', 'loca' or 'head' running past the end of the file.
    std::vector<Bytes> files;
    for (size_t entry : {7, 8, 0})
        files.push_back(BuildSfnt(font)), SetU32(files.back(), 12 + 16 * entry + 12, 0x00FFFFF0);
    // Glyph 2 ending past the end of 'glyf', or at an offset cut off and read as 0.
    for (const Bytes& loca : {Bytes{0, 0, 0, 0, 0, 14, 0, 30}, Bytes{0, 0, 0, 0, 0, 14}})
        font["loca"] = loca, files.push_back(BuildSfnt(font));
    for (const Bytes& file : files) {
        ErrorRecord record;
        EXPECT_EQ(VellGetTTGlyphData(LoadedFont(file).font(), 2, &record), nullptr);
        EXPECT_EQ(record.code, kVellBadTableErr);
    }
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
    EXPECT_EQ(PointsOf(kMixedDeltas), (std::vector<std::pair<double, double>>{{10, 1}, {0, 1}, {-5, 4}, {-6, 260}}));
    // Also word x deltas then short y deltas: a cut inside the x words leaves no y.
    const Bytes wordX = {0, 1, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1, 0, 0, 5, 5, 0, 10, 0, 20, 1, 2};
    for (const Bytes& glyph : {kMixedDeltas, wordX}) {
        const auto full = PointsOf(glyph);
        for (size_t size = 0; size < glyph.size(); ++size) {
            auto points = PointsOf(Bytes(glyph.begin(), glyph.begin() + static_cast<ptrdiff_t>(size)));
            ASSERT_LE(points.size(), full.size());
            EXPECT_TRUE(std::equal(points.begin(), points.end(), full.begin())) << size;
        }
    }
    // 65536 points claimed; 8 flags repeated 255 times, with no coordinates
    // stored: as many points as the flags give.
    Bytes hostile = TableWriter().U16(1).Zeros(8).U16(0xFFFF).U16(0);
    for (int i = 0; i < 8; ++i) hostile.insert(hostile.end(), {0x39, 0xFF});
    EXPECT_EQ(PointsOf(hostile).size(), 8u * 256);
    EXPECT_TRUE(PointsOf({0x80}).empty());
}

// One instruction's text and the bytes it takes, from a block with no byte to spare.
std::pair<std::string, uint32_t> Decode(const Bytes& bytes) {
    VellHandle exact = VelmNewHandle(bytes);
    std::array<uint8_t, kVellInstructionTextSize> text{};
    ErrorRecord record;
    uint32_t used = VellDecodeInstructions(VelmView(exact), static_cast<uint32_t>(bytes.size()), text, &record);
    EXPECT_EQ(record.code, 0);
    return {std::string(VellView(text).chars(1, text[0])), used};
}

TEST(Instructions, MnemonicsFlagBitsAndPushesOfOneInstructionUpToTheGivenLength) {
    const std::tuple<Bytes, std::string, uint32_t> cases[] = {
        {{0x00}, "SVTCA[0]", 1}, {{0x10}, "SRP0[]", 1}, {{0x69}, "ROUND[01]", 1}, {{0xED}, "MIRP[01101]", 1},
        {{0x87}, "SDPVTL[1]", 1}, {{0x91}, "GETVARIATION[]", 1}, {{0x28}, "Unknown opcode 0x28", 1},
        {{0xC0, 0x10}, "MDRP[00000]", 1},  // the first opcode past PUSHW[8]
        {{0xB1, 12, 34, 0x10}, "PUSHB[2] 12 34", 3}, {{0xB9, 0xFF, 0xFE, 0x01, 0x00}, "PUSHW[2] -2 256", 5},
        {{0x40, 2, 7, 255}, "NPUSHB[2] 7 255", 4}, {{0x41, 1, 0x80, 0x00}, "NPUSHW[1] -32768", 4},
        // Pushes cut short take the rest; half a word is no value.
        {{0xB2, 1}, "PUSHB[3] 1", 2}, {{0x41, 3, 0, 1, 2}, "NPUSHW[3] 1", 5}, {{0x40}, "NPUSHB[]", 1},
    };
    ErrorRecord record;
    for (const auto& [code, text, size] : cases) {
        EXPECT_EQ(Decode(code), std::pair(text, size));
        EXPECT_EQ(VellCountInstructions(VellView(code), 1000, &record), code.size() == size ? 1u : 2u) << text;
    }
    // Counting and decoding stop at the given length; nothing to decode is a parameter error.
    Bytes code = {0xB0, 5, 0x10, 0x40, 3, 1};  // PUSHB[1] 5, SRP0, NPUSHB[3] cut short
    std::array<uint8_t, kVellInstructionTextSize> text{};
    EXPECT_EQ(VellCountInstructions(VellView(code), 3, &record), 2u);
    EXPECT_EQ(VellDecodeInstructions(VellView(code), 1, text, &record), 1u);
    EXPECT_EQ(VellView(text).chars(1, text[0]), "PUSHB[1]");
    EXPECT_EQ(VellDecodeInstructions(VellView(code), 0, text, &record), 0u);
    EXPECT_EQ(record.code, kVellParamErr);
}

TEST(Instructions, ALongPushIsCutAtTheLastValueThatLeavesRoomForTheCutMark) {
    auto push = [](uint8_t values) {
        Bytes code(2 + values, 100);
        code[0] = 0x40, code[1] = values, code[2] = 7, code[3] = 10;
        return Decode(code).first;
    };
    // "NPUSHB[62] 7 10" and 60 times " 100" fill the 255 characters; one value more
    // is cut at 251 characters, the last that leave room for " ...".
    EXPECT_EQ(push(62).size(), 255u);
    EXPECT_THAT(push(62), EndsWith(" 100 100"));
    EXPECT_EQ(push(63), push(62).replace(8, 1, "3").substr(0, 251) + " ...");
}

}  // namespace
