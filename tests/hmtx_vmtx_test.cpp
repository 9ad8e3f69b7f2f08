#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "VellDumpFonts.h"
#include "support/Harness.h"
#include "tables/hmtx_vmtx.h"

namespace {

using ::testing::EndsWith;

// SampleFont's metrics: long metrics (1000, 0), (500, 0), (1200, 20), then a
// trailing side bearing of 30 for glyph 3 ("B").

TEST(Hmtx, ChangedGlyphsShowTheirNamesAndOnlyTheMetricsThatDifferThenExtraGlyphsOnEitherSideAreNew) {
    FontTables original = SampleFont(), modified = SampleFont();
    // Glyph 3, past the long metrics, inherits glyph 2's advance.
    SetU16(modified["hmtx"], 6, 5), SetU16(modified["hmtx"], 8, 1300), SetU16(modified["hmtx"], 12, uint16_t(-7));
    modified["post"] = MakePost({".notdef", "space", "Aring", "B"});
    original["maxp"] = MakeMaxp(6);
    EXPECT_EQ(CompareDeltas(modified, original, "hmtx"),
              "\tGlyph:\t1\n\t\tName:\tspace\n\t\tLeft-side bearing (mod ):\t5\n\t\tLeft-side bearing (orig):\t0\n"
              "\tGlyph:\t2\n\t\tName (mod ):\tAring\n\t\tName (orig):\tA\n"
              "\t\tAdvance width (mod ):\t1300\n\t\tAdvance width (orig):\t1200\n"
              "\tGlyph:\t3\n\t\tName:\tB\n\t\tAdvance width (mod ):\t1300\n\t\tAdvance width (orig):\t1200\n"
              "\t\tLeft-side bearing (mod ):\t-7\n\t\tLeft-side bearing (orig):\t30\n\nGlyphs 4 through 5 are new\n");
    // Without 'post' tables both names are empty, and agree.
    original.Remove("post"), modified.Remove("post");
    original["maxp"] = MakeMaxp(4), modified["maxp"] = MakeMaxp(7);
    std::string report = CompareDeltas(modified, original, "hmtx");
    EXPECT_THAT(report, testing::StartsWith("\tGlyph:\t1\n\t\tName:\t\n\t\tLeft"));
    EXPECT_THAT(report, EndsWith("\n\nGlyphs 4 through 6 are new\n"));
}

TEST(Hmtx, DumperLeavesTheGlyphLineOpenWithoutNamesSwitchAndShowsTrailingSideBearingsAsAdvances) {
    EXPECT_EQ(DumpTable(SampleFont(), "hmtx"),
              "##### Table 'hmtx' (14 bytes in the modified font)\n\tGlyph:\t0\t\tAdvance width:\t1000\n"
              "\t\tLeft-side bearing:\t0\n\tGlyph:\t1\t\tAdvance width:\t500\n\t\tLeft-side bearing:\t0\n"
              "\tGlyph:\t2\t\tAdvance width:\t1200\n\t\tLeft-side bearing:\t20\n"
              "\tGlyph:\t3\n\t\tName:\tB\n\t\tAdvance width:\t30\n\n#####\n End table\n\n\n");
    SwitchesForTest names(true, false);
    EXPECT_THAT(DumpTable(SampleFont(), "hmtx"), testing::HasSubstr("\tGlyph:\t2 (A)\n\t\tAdvance width:\t1200\n"));
}

// A font without 'post' whose metrics header ('hhea' for 'hmtx', 'vhea' for
// 'vmtx') states `longMetrics` and whose 'maxp' counts `glyphs`.
FontTables MetricsFont(const std::string& tag, const Bytes& table, uint16_t longMetrics, uint16_t glyphs) {
    FontTables font = SampleFont();
    font.Remove("post");
    font["maxp"] = MakeMaxp(glyphs);
    font[tag == "vmtx" ? "vhea" : "hhea"] = MakeHhea(longMetrics);
    font[tag] = table;
    return font;
}

TEST(Hmtx, HostileCountsListOnlyTheEntriesTheTableHolds) {
    // 65535 long metrics, or 65535 glyphs past two long metrics, over a 10-byte table;
    // an entry that only begins in it is listed, its missing bytes read as 0.
    const std::string twoLong = "\tGlyph:\t0\t\tAdvance width:\t1000\n\t\tLeft-side bearing:\t0\n"
                                "\tGlyph:\t1\t\tAdvance width:\t500\n\t\tLeft-side bearing:\t3\n\tGlyph:\t2";
    const std::pair<uint16_t, std::string> cases[] = {
        {65535, "\t\tAdvance width:\t65529\n\t\tLeft-side bearing:\t0\n"}, {2, "\n\t\tAdvance width:\t-7\n"}};
    for (const auto& [longMetrics, rest] : cases) {
        CapturedStream out;
        LoadedFont font(MetricsFont("hmtx", MakeHmtx({{1000, 0}, {500, 3}}, {-7}), longMetrics, 65535));
        TFontContext context(font.font());
        THMTXTableDumper(context, VellMakeTag("hmtx"), out.file()).DumpTableContents();
        EXPECT_EQ(out.Text(), twoLong + rest);
    }
}

// A font whose 'vhea' states `longMetrics` and whose 'maxp' counts the glyphs `names` names.
FontTables VerticalFont(uint16_t longMetrics, const Bytes& vmtx, const std::vector<std::string>& names) {
    FontTables font = SampleFont();
    font["maxp"] = MakeMaxp(static_cast<uint16_t>(names.size()));
    font["vhea"] = MakeHhea(longMetrics);
    font["vmtx"] = vmtx;
    font["post"] = MakePost(names);
    return font;
}

TEST(Vmtx, ThreePhasesWithMissingGlyphsEachFollowedByAnEmptyLine) {
    // Three long metrics and four glyphs against two and six; glyph 1 differs in its side bearing only.
    FontTables fewer =
        VerticalFont(3, MakeHmtx({{1000, 0}, {500, 5}, {1200, 20}}, {30}), {".notdef", "space", "A", "B"});
    FontTables more = VerticalFont(2, MakeHmtx({{1000, 0}, {500, 0}}, {20, 30, 40, 50}),
                                   {".notdef", "space", "A", "B", "C", "D"});
    // A changed long metric shows all four values. Glyph 3 reads 30 on both sides:
    // each font takes its trailing entries from the start of its own side-bearing array.
    EXPECT_EQ(CompareDeltas(fewer, more, "vmtx"),
              "\tGlyph:\t1\n\t\tName:\tspace\n\t\tAdvance width (mod ):\t500\n\t\tLeft-side bearing (mod ):\t5\n"
              "\t\tAdvance width (orig):\t500\n\t\tLeft-side bearing (orig):\t0\n"
              "\tGlyph:\t2\n\t\tName:\tA\n\t\tAdvance width (mod ):\t1200\n\t\tLeft-side bearing (mod ):\t20\n"
              "\t\tAdvance width (orig):\t20\n"
              "\tGlyph:\t4\n\t\tName (new):\t\n\t\tName (orig):\tC\n"
              "\t\t### No glyph in mod table\n\n\t\tAdvance width (orig):\t40\n"
              "\tGlyph:\t5\n\t\tName (new):\t\n\t\tName (orig):\tD\n"
              "\t\t### No glyph in mod table\n\n\t\tAdvance width (orig):\t50\n");
    EXPECT_THAT(CompareDeltas(more, fewer, "vmtx"),
                EndsWith("\t\tAdvance width (mod ):\t50\n\t\t### No glyph in orig table\n\n"));
}

TEST(Vmtx, APhaseTwoGlyphPastTheShorterFontIsMissingAndHostileCountsStayBounded) {
    auto deltas = [](const Bytes& modified, uint16_t modifiedLong, const Bytes& original, uint16_t originalGlyphs) {
        LoadedFont modifiedFont(MetricsFont("vmtx", modified, modifiedLong, 65535));
        LoadedFont originalFont(MetricsFont("vmtx", original, 1, originalGlyphs));
        TFontContext modifiedContext(modifiedFont.font()), originalContext(originalFont.font());
        CapturedStream out;
        TVMTXTableComparator(modifiedContext, originalContext, VellMakeTag("vmtx"), out.file()).DumpTableDeltas();
        return out.Text();
    };
    EXPECT_THAT(deltas(MakeHmtx({{1000, 0}, {600, 1}, {700, 2}}), 3, MakeHmtx({{1000, 0}}, {9}), 2),
                testing::HasSubstr("\tGlyph:\t2\n\t\tName:\t\n\t\tAdvance width (mod ):\t700\n"
                                   "\t\tLeft-side bearing (mod ):\t2\n\t\t### No glyph in orig table\n\n"));
    // 65535 glyphs over tables of one long metric: only the glyph whose bytes exist and differ is reported.
    EXPECT_EQ(deltas(MakeHmtx({{1000, 0}}, {7}), 1, MakeHmtx({{1000, 0}}), 65535),
              "\tGlyph:\t1\n\t\tName:\t\n\t\tAdvance width (mod ):\t7\n\t\tAdvance width (orig):\t0\n");
}

// What velldump's 'vmtx' dumper lists.
std::string DumpVmtx(const FontTables& font) {
    LoadedFont loaded(font);
    CapturedStream out;
    ErrorRecord record;
    TFontContext context(loaded.font());
    MakeFontTableDumper(context, VellMakeTag("vmtx"), out.file(), &record)->DumpTableContents();
    return out.Text();
}

TEST(Vmtx, DumperNamesEveryGlyphWhetherOrNotNamesAreSwitchedOn) {
    FontTables font = VerticalFont(1, MakeHmtx({{1000, 7}}, {-2}), {".notdef", "space"});
    const std::string expected = "\tGlyph:\t0\n\t\tName:\t.notdef\n\t\tAdvance width:\t1000\n"
                                 "\t\tLeft-side bearing:\t7\n\tGlyph:\t1\n\t\tName:\tspace\n\t\tAdvance width:\t-2\n";
    EXPECT_EQ(DumpVmtx(font), expected);
    SwitchesForTest names(true, false);
    EXPECT_EQ(DumpVmtx(font), expected);
    font.Remove("post");
    EXPECT_EQ(DumpVmtx(font), "\tGlyph:\t0\n\t\tAdvance width:\t1000\n\t\tLeft-side bearing:\t7\n"
                              "\tGlyph:\t1\n\t\tAdvance width:\t-2\n");
}

}  // namespace
