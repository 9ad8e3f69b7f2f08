#include <gtest/gtest.h>

#include <algorithm>

#include "VellCmpFonts.h"
#include "support/Harness.h"
#include "tables/hmtx_vmtx.h"

namespace {

// SampleFont's metrics: long metrics (1000, 0), (500, 0), (1200, 20), then a
// trailing side bearing of 30 for glyph 3 ("B").

TEST(Hmtx, OnlyTheChangedMetricIsPrintedUnderTheGlyphAndItsName) {
    FontTables original = SampleFont(), modified = SampleFont();
    EXPECT_EQ(CompareDeltas(modified, original, "hmtx"), "");
    SetU16(modified["hmtx"], 10, 25);
    EXPECT_EQ(CompareDeltas(modified, original, "hmtx"),
              "\tGlyph:\t2\n\t\tName:\tA\n"
              "\t\tLeft-side bearing (mod ):\t25\n\t\tLeft-side bearing (orig):\t20\n");
}

TEST(Hmtx, GlyphsPastTheLongMetricsInheritTheLastAdvance) {
    FontTables original = SampleFont(), modified = SampleFont();
    SetU16(modified["hmtx"], 8, 1300);
    modified["post"] = MakePost({".notdef", "space", "Aring", "B"});
    EXPECT_EQ(CompareDeltas(modified, original, "hmtx"),
              "\tGlyph:\t2\n\t\tName (mod ):\tAring\n\t\tName (orig):\tA\n"
              "\t\tAdvance width (mod ):\t1300\n\t\tAdvance width (orig):\t1200\n"
              "\tGlyph:\t3\n\t\tName:\tB\n"
              "\t\tAdvance width (mod ):\t1300\n\t\tAdvance width (orig):\t1200\n");
}

TEST(Hmtx, ExtraGlyphsOnEitherSideAreAnnouncedAsNew) {
    FontTables original = SampleFont(), modified = SampleFont();
    original["maxp"] = MakeMaxp(12);
    modified["maxp"] = MakeMaxp(10);
    EXPECT_EQ(CompareDeltas(modified, original, "hmtx"), "\nGlyphs 10 through 11 are new\n");
    original["maxp"] = MakeMaxp(245);
    modified["maxp"] = MakeMaxp(250);
    EXPECT_EQ(CompareDeltas(modified, original, "hmtx"), "\nGlyphs 245 through 249 are new\n");
}

TEST(Hmtx, WithoutPostEveryNameLineIsEmpty) {
    FontTables original = SampleFont(), modified = SampleFont();
    original.Remove("post");
    modified.Remove("post");
    SetU16(modified["hmtx"], 12, static_cast<uint16_t>(-7));
    EXPECT_EQ(CompareDeltas(modified, original, "hmtx"),
              "\tGlyph:\t3\n\t\tName:\t\n"
              "\t\tLeft-side bearing (mod ):\t-7\n\t\tLeft-side bearing (orig):\t30\n");
}

TEST(Hmtx, AFailedMetricsLookupThrows) {
    // No fonts set: the framework cannot answer for glyph 0.
    Bytes hmtx = MakeHmtx({{1000, 0}});
    CapturedStream out;
    THMTXTableComparator comparator(VelmNewHandle(hmtx), VellHandle(), 1, 1, VelmNewHandle(hmtx), VellHandle(), 1,
                                    1, out.file());
    EXPECT_THROW(comparator.DumpTableDeltas(), TVellCmpVellException);
}

constexpr const char* kTrailingGlyph = "\tGlyph:\t3\n\t\tName:\tB\n\t\tAdvance width:\t30\n";

TEST(Hmtx, DumperLeavesTheGlyphLineOpenWithoutNamesSwitch) {
    std::string frame = "##### Table 'hmtx' (14 bytes in the modified font)\n";
    EXPECT_EQ(DumpTable(SampleFont(), "hmtx"),
              frame + "\tGlyph:\t0\t\tAdvance width:\t1000\n\t\tLeft-side bearing:\t0\n" +
                  "\tGlyph:\t1\t\tAdvance width:\t500\n\t\tLeft-side bearing:\t0\n" +
                  "\tGlyph:\t2\t\tAdvance width:\t1200\n\t\tLeft-side bearing:\t20\n" + kTrailingGlyph +
                  "\n#####\n End table\n\n\n");
    SwitchesForTest names(true, false);
    EXPECT_EQ(DumpTable(SampleFont(), "hmtx"),
              frame + "\tGlyph:\t0 (.notdef)\n\t\tAdvance width:\t1000\n\t\tLeft-side bearing:\t0\n" +
                  "\tGlyph:\t1 (space)\n\t\tAdvance width:\t500\n\t\tLeft-side bearing:\t0\n" +
                  "\tGlyph:\t2 (A)\n\t\tAdvance width:\t1200\n\t\tLeft-side bearing:\t20\n" + kTrailingGlyph +
                  "\n#####\n End table\n\n\n");
}

TEST(Hmtx, TruncatedOrHostileCountsReadZerosAndStayBounded) {
    FontTables font = SampleFont();
    font["hmtx"].resize(6);
    EXPECT_EQ(DumpTable(font, "hmtx"),
              "##### Table 'hmtx' (6 bytes in the modified font)\n"
              "\tGlyph:\t0\t\tAdvance width:\t1000\n\t\tLeft-side bearing:\t0\n"
              "\tGlyph:\t1\t\tAdvance width:\t500\n\t\tLeft-side bearing:\t0\n"
              "\tGlyph:\t2\t\tAdvance width:\t0\n\t\tLeft-side bearing:\t0\n"
              "\tGlyph:\t3\n\t\tName:\tB\n\t\tAdvance width:\t0\n"
              "\n#####\n End table\n\n\n");

    // 65535 long metrics claimed over an 8-byte table: one group per glyph, no more.
    CapturedStream out;
    THMTXTableDumper dumper(VelmNewHandle(MakeHmtx({{1000, 0}, {500, 3}})), VellHandle(), 65535, 65535, out.file());
    dumper.DumpTableContents();
    std::string text = out.Text();
    EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), 3 * 65535);
    EXPECT_TRUE(text.starts_with("\tGlyph:\t0\n\t\tAdvance width:\t1000\n\t\tLeft-side bearing:\t0\n"
                                 "\tGlyph:\t1\n\t\tAdvance width:\t500\n\t\tLeft-side bearing:\t3\n"
                                 "\tGlyph:\t2\n\t\tAdvance width:\t0\n\t\tLeft-side bearing:\t0\n"));
    EXPECT_TRUE(text.ends_with("\tGlyph:\t65534\n\t\tAdvance width:\t0\n\t\tLeft-side bearing:\t0\n"));
}

// ---- 'vmtx' ----

FontTables VerticalFont(uint16_t longMetrics, uint16_t glyphs, const Bytes& vmtx, const std::vector<std::string>& names) {
    FontTables font = SampleFont();
    font["maxp"] = MakeMaxp(glyphs);
    font["vhea"] = MakeHhea(longMetrics);
    font["vmtx"] = vmtx;
    font["post"] = MakePost(names);
    return font;
}

// Three long metrics and four glyphs against two long metrics and six glyphs.
FontTables FewerGlyphs() {
    return VerticalFont(3, 4, MakeHmtx({{1000, 0}, {600, 0}, {1200, 20}}, {30}), {".notdef", "space", "A", "B"});
}
FontTables MoreGlyphs() {
    return VerticalFont(2, 6, MakeHmtx({{1000, 0}, {500, 0}}, {20, 30, 40, 50}),
                        {".notdef", "space", "A", "B", "C", "D"});
}

TEST(Vmtx, ThreePhasesWithMissingGlyphsEachFollowedByAnEmptyLine) {
    // Glyph 3 reads 30 on both sides: each font takes its trailing entries from
    // the start of its own side-bearing array.
    EXPECT_EQ(CompareDeltas(FewerGlyphs(), MoreGlyphs(), "vmtx"),
              "\tGlyph:\t1\n\t\tName:\tspace\n"
              "\t\tAdvance width (mod ):\t600\n\t\tLeft-side bearing (mod ):\t0\n"
              "\t\tAdvance width (orig):\t500\n\t\tLeft-side bearing (orig):\t0\n"
              "\tGlyph:\t2\n\t\tName:\tA\n"
              "\t\tAdvance width (mod ):\t1200\n\t\tLeft-side bearing (mod ):\t20\n"
              "\t\tAdvance width (orig):\t20\n"
              "\tGlyph:\t4\n\t\tName (new):\t\n\t\tName (orig):\tC\n"
              "\t\t### No glyph in mod table\n\n\t\tAdvance width (orig):\t40\n"
              "\tGlyph:\t5\n\t\tName (new):\t\n\t\tName (orig):\tD\n"
              "\t\t### No glyph in mod table\n\n\t\tAdvance width (orig):\t50\n");
    EXPECT_EQ(CompareDeltas(MoreGlyphs(), FewerGlyphs(), "vmtx"),
              "\tGlyph:\t1\n\t\tName:\tspace\n"
              "\t\tAdvance width (mod ):\t500\n\t\tLeft-side bearing (mod ):\t0\n"
              "\t\tAdvance width (orig):\t600\n\t\tLeft-side bearing (orig):\t0\n"
              "\tGlyph:\t2\n\t\tName:\tA\n"
              "\t\tAdvance width (mod ):\t20\n"
              "\t\tAdvance width (orig):\t1200\n\t\tLeft-side bearing (orig):\t20\n"
              "\tGlyph:\t4\n\t\tName (new):\tC\n\t\tName (orig):\t\n"
              "\t\tAdvance width (mod ):\t40\n\t\t### No glyph in orig table\n\n"
              "\tGlyph:\t5\n\t\tName (new):\tD\n\t\tName (orig):\t\n"
              "\t\tAdvance width (mod ):\t50\n\t\t### No glyph in orig table\n\n");
}

TEST(Vmtx, ASideBearingChangePrintsAllFourMetricLines) {
    FontTables original = FewerGlyphs(), modified = FewerGlyphs();
    EXPECT_EQ(CompareDeltas(modified, original, "vmtx"), "");
    SetU16(modified["vmtx"], 2, 5);
    SetU16(modified["vmtx"], 12, 31);
    EXPECT_EQ(CompareDeltas(modified, original, "vmtx"),
              "\tGlyph:\t0\n\t\tName:\t.notdef\n"
              "\t\tAdvance width (mod ):\t1000\n\t\tLeft-side bearing (mod ):\t5\n"
              "\t\tAdvance width (orig):\t1000\n\t\tLeft-side bearing (orig):\t0\n"
              "\tGlyph:\t3\n\t\tName:\tB\n"
              "\t\tAdvance width (mod ):\t31\n\t\tAdvance width (orig):\t30\n");
}

TEST(Vmtx, PhaseTwoGlyphPastTheShorterFontWithoutPostIsMissing) {
    // Original: one long metric and two glyphs; modified: three long metrics.
    Bytes modified = MakeHmtx({{1000, 0}, {600, 1}, {700, 2}});
    Bytes original = MakeHmtx({{1000, 0}}, {9});
    CapturedStream out;
    TVMTXTableComparator comparator(VelmNewHandle(modified), VellHandle(), 3, 3, VelmNewHandle(original),
                                    VellHandle(), 1, 2, out.file());
    comparator.DumpTableDeltas();
    EXPECT_EQ(out.Text(),
              "\tGlyph:\t1\n\t\tName:\t\n"
              "\t\tAdvance width (mod ):\t600\n\t\tLeft-side bearing (mod ):\t1\n"
              "\t\tAdvance width (orig):\t9\n"
              "\tGlyph:\t2\n\t\tName:\t\n"
              "\t\tAdvance width (mod ):\t700\n\t\tLeft-side bearing (mod ):\t2\n"
              "\t\t### No glyph in orig table\n\n");
}

TEST(Vmtx, TruncatedTablesAndHostileCountsReadZerosAndStayBounded) {
    FontTables original = FewerGlyphs(), modified = FewerGlyphs();
    modified["vmtx"].resize(6);  // glyph 1's side bearing reads 0, as it is
    EXPECT_EQ(CompareDeltas(modified, original, "vmtx"),
              "\tGlyph:\t2\n\t\tName:\tA\n"
              "\t\tAdvance width (mod ):\t0\n\t\tLeft-side bearing (mod ):\t0\n"
              "\t\tAdvance width (orig):\t1200\n\t\tLeft-side bearing (orig):\t20\n"
              "\tGlyph:\t3\n\t\tName:\tB\n"
              "\t\tAdvance width (mod ):\t0\n\t\tAdvance width (orig):\t30\n");

    // 65535 glyphs over tables of one long metric: only the glyph whose bytes
    // exist and differ is reported.
    Bytes tiny = MakeHmtx({{1000, 0}}, {7});
    Bytes empty = MakeHmtx({{1000, 0}});
    CapturedStream out;
    TVMTXTableComparator comparator(VelmNewHandle(tiny), VellHandle(), 1, 65535, VelmNewHandle(empty), VellHandle(),
                                    1, 65535, out.file());
    comparator.DumpTableDeltas();
    EXPECT_EQ(out.Text(), "\tGlyph:\t1\n\t\tName:\t\n\t\tAdvance width (mod ):\t7\n\t\tAdvance width (orig):\t0\n");
}

TEST(Vmtx, DumperNamesEveryGlyphWhetherOrNotNamesAreSwitchedOn) {
    const std::string expected =
        "\tGlyph:\t0\n\t\tName:\t.notdef\n\t\tAdvance width:\t1000\n\t\tLeft-side bearing:\t0\n"
        "\tGlyph:\t1\n\t\tName:\tspace\n\t\tAdvance width:\t500\n\t\tLeft-side bearing:\t0\n"
        "\tGlyph:\t2\n\t\tName:\tA\n\t\tAdvance width:\t1200\n\t\tLeft-side bearing:\t20\n"
        "\tGlyph:\t3\n\t\tName:\tB\n\t\tAdvance width:\t30\n";
    FontTables sample = SampleFont();
    LoadedFont font(sample);
    auto dump = [&](const VellHandle& post, const Bytes& vmtx) {
        CapturedStream out;
        TVMTXTableDumper dumper(VelmNewHandle(vmtx), post, 3, 4, out.file());
        dumper.SetFont(font.font());
        dumper.DumpTableContents();
        return out.Text();
    };
    VellHandle post = VelmNewHandle(sample["post"]);
    EXPECT_EQ(dump(post, sample["hmtx"]), expected);
    {
        SwitchesForTest names(true, false);
        EXPECT_EQ(dump(post, sample["hmtx"]), expected);
    }
    Bytes truncated = sample["hmtx"];
    truncated.resize(9);
    EXPECT_EQ(dump(VellHandle(), truncated),
              "\tGlyph:\t0\n\t\tAdvance width:\t1000\n\t\tLeft-side bearing:\t0\n"
              "\tGlyph:\t1\n\t\tAdvance width:\t500\n\t\tLeft-side bearing:\t0\n"
              "\tGlyph:\t2\n\t\tAdvance width:\t1024\n\t\tLeft-side bearing:\t0\n"
              "\tGlyph:\t3\n\t\tAdvance width:\t0\n");
}

}  // namespace
