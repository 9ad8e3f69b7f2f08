// The variable tables under --opentype: 'fvar', 'avar', 'STAT', 'HVAR', 'MVAR'
// and the 'gvar' comparator, on small tables built by tests/support, and the tuple
// variation decoding beneath 'gvar'.
#include <gtest/gtest.h>

#include "VellCmpErrors.h"
#include "comparators/TTableComparator.h"
#include "dumpers/TFontContext.h"
#include "dumpers/TableHandlers.h"
#include "framework/VellTupleVariations.h"
#include "support/Harness.h"
#include "tables/VariationReport.h"

namespace {

// What velldump --opentype prints for the table, without its frame.
std::string DumpOpenType(const FontTables& font, const char* tag) {
    OpenTypeForTest openType;
    LoadedFont loaded(font);
    TFontContext context(loaded.font());
    CapturedStream out;
    VellTag tableTag = static_cast<VellTag>(tag[0]) << 24 | static_cast<VellTag>(tag[1]) << 16 |
                       static_cast<VellTag>(tag[2]) << 8 | static_cast<VellTag>(tag[3]);
    const TableHandler* handler = FindDumperHandler(tableTag, true);
    if (handler == nullptr) return "";
    handler->dumper(context, tableTag, out.file())->DumpTableContents();
    return out.Text();
}

std::string CompareOpenType(const FontTables& modified, const FontTables& original, const char* tag) {
    OpenTypeForTest openType;
    return CompareDeltas(modified, original, tag);
}

// An inserted axis is one added axis, not a change of every axis after it; instances
// are matched by name and their coordinates by axis tag, and an instance at the
// inserted axis's default ("Regular") lies where it lay before.
TEST(Variations, FvarAxesByTagAndInstancesByName) {
    FontTables original = VariableFont(), modified = VariableFont();
    modified["fvar"] = MakeFvar({{"wdth", 75, 100, 100, 257}, {"wght", 100, 450, 900, 256}},
                                {{260, {100, 400}, 261}, {258, {75, 720}, 259}, {262, {75, 400}, 263}});
    EXPECT_EQ(CompareOpenType(modified, original, "fvar"),
              "\tAxis count (mod ):\t2\n\tAxis count (orig):\t1\n\tInstance count (mod ):\t3\n"
              "\tInstance count (orig):\t2\n\tInstance size (mod ):\t14\n\tInstance size (orig):\t10\n"
              "\t### Added axes (in modified font and not original font):\n"
              "\tAxis 'wdth'\n\t\tMinimum:\t75.0\n\t\tDefault:\t100.0\n\t\tMaximum:\t100.0\n"
              "\t\tFlags:\t0x0000\n\t\tName:\t257 \"Width\"\n\n"
              "\t### Changed axes:\n\tAxis 'wght'\n\t\tDefault (mod ):\t450.0\n\t\tDefault (orig):\t400.0\n\n"
              "\t### Added instances (in modified font and not original font):\n"
              "\tInstance \"Condensed\"\n\t\tSubfamily name:\t262 \"Condensed\"\n\t\tFlags:\t0x0000\n"
              "\t\t'wdth':\t75.0\n\t\t'wght':\t400.0\n\t\tPostScript name:\t263 \"Sample-Condensed\"\n\n"
              "\t### Changed instances:\n"
              "\tInstance \"Bold\"\n\t\t'wdth' (mod ):\t75.0\n\t\t'wght' (mod ):\t720.0\n"
              "\t\t'wght' (orig):\t700.0\n\n");
    EXPECT_EQ(CompareOpenType(original, original, "fvar"), "");
    // Names renumbered (as around an inserted axis) are the same names: "Regular" under 2 is no change.
    FontTables renumbered = VariableFont();
    renumbered["fvar"] = MakeFvar({{"wght", 100, 400, 900, 256}}, {{2, {400}, 261}, {258, {700}, 259}});
    EXPECT_EQ(CompareOpenType(renumbered, original, "fvar"), "");
}

TEST(Variations, AvarPairsByFromCoordinateAndVersionTwoDeltas) {
    FontTables original = VariableFont(), modified = VariableFont();
    original["avar"] = MakeAvar({{-1, -1}, {0, 0}, {0.5, 0.625}, {1, 1}});
    modified["avar"] = MakeAvar({{-1, -1}, {0, 0}, {0.5, 0.75}, {0.75, 0.875}, {1, 1}});
    EXPECT_EQ(CompareOpenType(modified, original, "avar"),
              "\t### Changed segment maps:\n\tSegment map 'wght'\n\t\t0.5 to (mod ):\t0.75\n"
              "\t\t0.5 to (orig):\t0.625\n\t\t0.75 to (mod ):\t0.875\n\n");

    // Version 2: no axis index map (the axis index itself), a store at byte 20.
    FontTables two = VariableFont();
    two["avar"] = Joined(TableWriter().U32(0x00020000).U16(0).U16(1).U16(0).U32(0).U32(18), MakeStore({{-8, 3}}));
    EXPECT_EQ(DumpOpenType(two, "avar"),
              "\tVersion:\t2.0\n\tAxis count:\t1\n\tSegment map 'wght'\n"
              "\tAxis deltas 'wght'\n\t\tDelta-set index:\t0, 0\n\t\tDeltas:\tregion 0: -8, region 1: 3\n"
              "\tItem variation store format:\t1\n\tRegion axis count:\t1\n"
              "\tRegion 0\n\t\t'wght':\tpeak 1.0 (0.0 to 1.0)\n"
              "\tRegion 1\n\t\t'wght':\tpeak -1.0 (-1.0 to 0.0)\n"
              "\tItem variation data 0\n\t\tItem count:\t1\n\t\tWord delta count:\t0x0000\n\t\tRegion indexes:\t0 1\n"
              "\tDelta set 0, item 0\n\t\tDeltas:\tregion 0: -8, region 1: 3\n");
}

TEST(Variations, StatAxisValuesOfEveryFormat) {
    FontTables original = VariableFont(), modified = VariableFont();
    original["STAT"] = MakeStat(2, 700);
    modified["STAT"] = MakeStat(262, 720);
    EXPECT_EQ(DumpOpenType(original, "STAT"),
              "\tVersion:\t1.1\n\tDesign axis size:\t8\n\tDesign axis count:\t2\n\tAxis value count:\t4\n"
              "\tElided fallback name:\t2 \"Regular\"\n"
              "\tDesign axis 'wght'\n\t\tName:\t256 \"Weight\"\n\t\tOrdering:\t0\n"
              "\tDesign axis 'wdth'\n\t\tName:\t257 \"Width\"\n\t\tOrdering:\t1\n"
              "\tAxis value 'wght' \"Bold\"\n\t\tFormat:\t1\n\t\tFlags:\t0x0000\n\t\tName:\t258 \"Bold\"\n"
              "\t\tValue:\t700.0\n"
              "\tAxis value 'wght' \"Black\"\n\t\tFormat:\t2\n\t\tFlags:\t0x0000\n\t\tName:\t264 \"Black\"\n"
              "\t\tValue:\t900.0\n\t\tRange minimum:\t800.0\n\t\tRange maximum:\t900.0\n"
              "\tAxis value 'wght' \"Regular\"\n\t\tFormat:\t3\n\t\tFlags:\t0x0002\n\t\tName:\t260 \"Regular\"\n"
              "\t\tValue:\t400.0\n\t\tLinked value:\t700.0\n"
              "\tAxis value 'wght', 'wdth' \"Bold Condensed\"\n\t\tFormat:\t4\n\t\tFlags:\t0x0000\n"
              "\t\tName:\t265 \"Bold Condensed\"\n\t\tValue 'wght':\t700.0\n\t\tValue 'wdth':\t75.0\n");
    EXPECT_EQ(CompareOpenType(modified, original, "STAT"),
              "\tElided fallback name (mod ):\t262 \"Condensed\"\n\tElided fallback name (orig):\t2 \"Regular\"\n"
              "\t### Changed axis values:\n\tAxis value 'wght' \"Regular\"\n"
              "\t\tLinked value (mod ):\t720.0\n\t\tLinked value (orig):\t700.0\n\n");
    // The same name under another name ID is not a change.
    FontTables renumbered = VariableFont();
    renumbered["STAT"] = MakeStat(260, 700);
    EXPECT_EQ(CompareOpenType(renumbered, original, "STAT"), "");
}

// 'HVAR' with implicit advances and a left side bearing map whose glyphs past its
// end take its last entry; one changed item shows as a delta set and as the glyph
// that reaches it.
TEST(Variations, HvarDeltaSetsAndTheGlyphsThatReachThem) {
    FontTables original = VariableFont(), modified = VariableFont();
    original["HVAR"] = MakeMetricsVariations(false, -20);
    modified["HVAR"] = MakeMetricsVariations(false, -25);
    EXPECT_EQ(CompareOpenType(modified, original, "HVAR"),
              "\t### Changed delta sets:\n\tDelta set 0, item 2\n"
              "\t\tDeltas (mod ):\tregion 0: 20, region 1: -25\n\t\tDeltas (orig):\tregion 0: 20, region 1: -20\n\n"
              "\t### Changed glyph deltas:\n\tGlyph 2\n"
              "\t\tAdvance deltas (mod ):\tregion 0: 20, region 1: -25\n"
              "\t\tAdvance deltas (orig):\tregion 0: 20, region 1: -20\n\n");
    std::string dump = DumpOpenType(original, "HVAR");
    EXPECT_NE(dump.find("\tGlyph 0\n\t\tAdvance deltas:\tregion 0: 10, region 1: -10\n"
                        "\t\tLeft side bearing deltas:\tnone\n"),
              std::string::npos)
        << dump;
    EXPECT_NE(dump.find("\tGlyph 3\n\t\tAdvance deltas:\tregion 0: 30, region 1: -30\n"
                        "\t\tLeft side bearing deltas:\tregion 0: 10, region 1: -10\n"),
              std::string::npos)
        << dump;
}

// A region over a second axis without a peak is the region over the first axis
// alone, as in a font that gained that axis; a peak there makes it another region.
TEST(Variations, RegionsCompareTheAxesWithAPeak) {
    auto hvar = [](double secondPeak) {
        TableWriter table;
        table.U32(0x00010000).U32(20).U32(0).U32(0).U32(0);
        table.U16(1).U32(12).U16(1).U32(40).U16(2).U16(2);
        table.U16(0).U16(F2Dot14(1)).U16(F2Dot14(1)).U16(0).U16(F2Dot14(secondPeak)).U16(F2Dot14(secondPeak));
        table.U16(F2Dot14(-1)).U16(F2Dot14(-1)).U16(0).U16(0).U16(0).U16(0);
        return Bytes(table.U16(1).U16(0).U16(2).U16(0).U16(1).U8(10).U8(0xF6));
    };
    FontTables original = VariableFont(), modified = VariableFont(), peaked = VariableFont();
    original["HVAR"] = Joined(TableWriter().U32(0x00010000).U32(20).U32(0).U32(0).U32(0), MakeStore({{10, -10}}));
    modified["HVAR"] = hvar(0);
    peaked["HVAR"] = hvar(1);
    EXPECT_EQ(CompareOpenType(modified, original, "HVAR"), "");
    EXPECT_EQ(CompareOpenType(peaked, original, "HVAR"),
              "\t### Changed regions:\n\tRegion 0\n\t\taxis 1 (mod ):\tpeak 1.0 (0.0 to 1.0)\n\n");
}

TEST(Variations, MvarValueRecordsByTag) {
    FontTables original = VariableFont(), modified = VariableFont();
    original["MVAR"] = MakeMvar(1);
    modified["MVAR"] = MakeMvar(3);
    EXPECT_EQ(CompareOpenType(modified, original, "MVAR"),
              "\t### Changed value records:\n\tValue 'xhgt'\n"
              "\t\tDeltas (mod ):\tregion 0: 30, region 1: -30\n\t\tDeltas (orig):\tnone\n\n");
}

// What a glyph or a value reaches is compared without the store's encoding: the
// order of a row's regions and the zero deltas that pad it.
TEST(Variations, ReachedDeltasByRegionWithoutZeros) {
    const std::pair<VellDeltaSet, const char*> cases[] = {
        {{{1, 0}, {5, -3}}, "region 0: -3, region 1: 5"},
        {{{0, 1}, {0, 0}}, "none"},
        {{{2, 0, 1}, {0, 7, 0}}, "region 0: 7"},
        {{{}, {}}, "none"},
    };
    for (const auto& [set, expected] : cases) EXPECT_EQ(ReachedDeltasText(set), expected) << expected;
}

// Glyph 1: one shared tuple over all points; glyph 2: an embedded peak with
// private points 1 and 3. The modified font moves one delta of glyph 1 and only
// re-encodes glyph 2's zero y deltas as words.
Bytes MakeGvar(uint8_t movedDelta, bool wordZeros) {
    TableWriter glyph1;
    glyph1.U16(0x8001).U16(8).U16(8).U16(0).U8(0);
    glyph1.U8(2).U8(10).U8(20).U8(30).U8(2).U8(0).U8(0).U8(movedDelta).U8(0);
    TableWriter glyph2;
    glyph2.U16(1).U16(10).U16(wordZeros ? 12 : 8).U16(0xA000).U16(F2Dot14(-1));
    glyph2.U8(2).U8(1).U8(1).U8(2).U8(1).U8(5).U8(6);
    if (wordZeros) glyph2.U8(0x41).U16(0).U16(0);
    else glyph2.U8(0x81);
    Bytes data = Joined(glyph1, glyph2);
    uint16_t end1 = glyph1.bytes().size() / 2, end2 = data.size() / 2;
    TableWriter header;
    header.U32(0x00010000).U16(1).U16(1).U32(30).U16(4).U16(0).U32(32);
    header.U16(0).U16(0).U16(end1).U16(end2).U16(end2).U16(F2Dot14(1));
    return Joined(header, data);
}

TEST(Variations, GvarReportsOnlyTheDeltasThatDiffer) {
    FontTables original = VariableFont(), modified = VariableFont();
    original["gvar"] = MakeGvar(5, false);
    modified["gvar"] = MakeGvar(7, true);
    EXPECT_EQ(CompareOpenType(modified, original, "gvar"),
              "\t### Changed glyph variations:\n\tGlyph 1, tuple 'wght' 1.0\n"
              "\t\tPoint 2 (mod ):\t( 30, 7 )\n\t\tPoint 2 (orig):\t( 30, 5 )\n\n");
    // Without --opentype 'gvar' has no comparator, and velldump keeps its classic dumper.
    EXPECT_EQ(CompareDeltas(modified, original, "gvar").find("Point"), std::string::npos);
    EXPECT_EQ(DumpOpenType(original, "gvar").substr(0, 15), "###gvar header\n");
}

TEST(TupleVariations, PackedPointNumbersAndDeltasStopAtTheirBytes) {
    struct Case {
        const char* name;
        Bytes bytes;
        VellPackedPoints points;
        size_t end;
    };
    const Case pointCases[] = {
        {"all points", {0x00, 0x55}, {true, {}}, 1},
        {"byte runs add up", {0x03, 0x02, 1, 2, 3}, {false, {1, 3, 6}}, 5},
        {"a two-byte count and a word run", {0x80, 0x02, 0x81, 0x01, 0x00, 0x00, 0x05}, {false, {256, 261}}, 7},
        {"a count far past its bytes", {0xFF, 0xFF, 0x7F, 9}, {false, {9}}, 4},
    };
    for (const Case& c : pointCases) {
        size_t offset = 0;
        EXPECT_EQ(VellReadPackedPoints(VellView(c.bytes.data(), c.bytes.size()), &offset), c.points) << c.name;
        EXPECT_EQ(offset, c.end) << c.name;
    }
    std::vector<int32_t> ZerosThenSeven(64, 0);
    ZerosThenSeven.push_back(7);
    struct DeltaCase {
        const char* name;
        Bytes bytes;
        size_t count;
        std::vector<int32_t> deltas;
    };
    const DeltaCase deltaCases[] = {
        {"bytes, zeros and words", {0x01, 0xFF, 0x02, 0x81, 0x40, 0x01, 0x00}, 5, {-1, 2, 0, 0, 256}},
        {"longs", {0xC0, 0xFF, 0xFE, 0x79, 0x60}, 1, {-100000}},
        {"a run longer than the count is cut", {0xBF}, 3, {0, 0, 0}},
        {"a huge count ends with the bytes", {0xBF, 0x00, 7}, 1000000, ZerosThenSeven},
    };
    for (const DeltaCase& c : deltaCases) {
        size_t offset = 0;
        std::vector<int32_t> deltas = VellReadPackedDeltas(VellView(c.bytes.data(), c.bytes.size()), &offset, c.count);
        EXPECT_EQ(deltas, c.deltas) << c.name;
        EXPECT_EQ(offset, c.bytes.size()) << c.name;
    }
}

// Tuples over all points cover the outline's points (one per component of a
// composite) and the four phantom points.
TEST(TupleVariations, AllPointsCoverTheOutlineAndPhantomPoints) {
    const std::pair<Bytes, size_t> cases[] = {
        {TableWriter().U16(2).Zeros(8).U16(3).U16(7), 12},
        // A component with word arguments and a 2x2 matrix, then one with byte arguments.
        {TableWriter().U16(0xFFFF).Zeros(8).U16(0x00A1).U16(1).U32(0).Zeros(8).U16(0x0000).U16(2).U16(0), 6},
        {{}, 4},
        {TableWriter().U16(1).Zeros(7), 4},  // a header cut short
    };
    for (const auto& [glyph, expected] : cases)
        EXPECT_EQ(VellGlyphVariationPointCount(VellView(glyph.data(), glyph.size())), expected) << glyph.size();
}

// Tuples that all name one shared tuple across a huge axis count, and zero runs
// that claim every point: decoding stops when the allowance is spent.
TEST(TupleVariations, HostileGlyphDataSpendsItsAllowance) {
    TableWriter glyph;
    glyph.U16(0x0FFF).U16(4 + 4 * 4095);
    for (int t = 0; t < 4095; ++t) glyph.U16(0).U16(0);
    Bytes shared(2 * 0xFFFF, 0);
    size_t allowance = 100000;
    auto tuples = VellReadGlyphVariations(VellView(glyph.bytes().data(), glyph.bytes().size()),
                                          VellView(shared.data(), shared.size()), 0xFFFF, 0, &allowance);
    EXPECT_EQ(allowance, 0u);
    EXPECT_LE(tuples.size(), 2u);
}

}  // namespace
