#include <gtest/gtest.h>

#include <algorithm>

#include "VellCmpErrors.h"
#include "support/Harness.h"
#include "tables/hmtx_vmtx.h"

namespace {

// SampleFont's metrics: long metrics (1000, 0), (500, 0), (1200, 20), then a
// trailing side bearing of 30 for glyph 3 ("B").

TEST(Hmtx, ChangedGlyphsShowTheirNamesAndOnlyTheMetricsThatDiffer) {
    FontTables original = SampleFont(), modified = SampleFont();
    EXPECT_EQ(CompareDeltas(modified, original, "hmtx"), "");
    // Glyph 3, past the long metrics, inherits glyph 2's advance.
    SetU16(modified["hmtx"], 8, 1300);
    modified["post"] = MakePost({".notdef", "space", "Aring", "B"});
    EXPECT_EQ(CompareDeltas(modified, original, "hmtx"),
              "\tGlyph:\t2\n\t\tName (mod ):\tAring\n\t\tName (orig):\tA\n"
              "\t\tAdvance width (mod ):\t1300\n\t\tAdvance width (orig):\t1200\n"
              "\tGlyph:\t3\n\t\tName:\tB\n\t\tAdvance width (mod ):\t1300\n\t\tAdvance width (orig):\t1200\n");

    original = SampleFont(), modified = SampleFont();
    original.Remove("post");
    modified.Remove("post");
    SetU16(modified["hmtx"], 12, static_cast<uint16_t>(-7));
    EXPECT_EQ(CompareDeltas(modified, original, "hmtx"),
              "\tGlyph:\t3\n\t\tName:\t\n\t\tLeft-side bearing (mod ):\t-7\n\t\tLeft-side bearing (orig):\t30\n");
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

TEST(Hmtx, DumperLeavesTheGlyphLineOpenWithoutNamesSwitch) {
    auto dump = [](const char* g0, const char* g1, const char* g2) {
        return std::string("##### Table 'hmtx' (14 bytes in the modified font)\n") + g0 +
               "\t\tAdvance width:\t1000\n\t\tLeft-side bearing:\t0\n" + g1 +
               "\t\tAdvance width:\t500\n\t\tLeft-side bearing:\t0\n" + g2 +
               "\t\tAdvance width:\t1200\n\t\tLeft-side bearing:\t20\n"
               "\tGlyph:\t3\n\t\tName:\tB\n\t\tAdvance width:\t30\n\n#####\n End table\n\n\n";
    };
    EXPECT_EQ(DumpTable(SampleFont(), "hmtx"), dump("\tGlyph:\t0", "\tGlyph:\t1", "\tGlyph:\t2"));
    SwitchesForTest names(true, false);
    EXPECT_EQ(DumpTable(SampleFont(), "hmtx"),
              dump("\tGlyph:\t0 (.notdef)\n", "\tGlyph:\t1 (space)\n", "\tGlyph:\t2 (A)\n"));
}

TEST(Hmtx, HostileCountsListOnlyTheEntriesTheTableHolds) {
    // 65535 long metrics, or 65535 glyphs past two long metrics, over a 10-byte table.
    const std::string twoLong = "\tGlyph:\t0\n\t\tAdvance width:\t1000\n\t\tLeft-side bearing:\t0\n"
                                "\tGlyph:\t1\n\t\tAdvance width:\t500\n\t\tLeft-side bearing:\t3\n\tGlyph:\t2\n";
    for (auto [longMetrics, rest] : {std::pair<uint16_t, std::string>{65535, "\t\tAdvance width:\t65529\n\t\tLeft-side bearing:\t0\n"},
                                     {2, "\t\tAdvance width:\t-7\n"}}) {
        CapturedStream out;
        THMTXTableDumper(VelmNewHandle(MakeHmtx({{1000, 0}, {500, 3}}, {-7})), VellHandle(), longMetrics, 65535,
                         out.file())
            .DumpTableContents();
        EXPECT_EQ(out.Text(), twoLong + rest);
    }
}

// ---- 'vmtx' ----

// A font whose 'vhea' states `longMetrics` and whose 'maxp' counts the glyphs `names` names.
FontTables VerticalFont(uint16_t longMetrics, const Bytes& vmtx, const std::vector<std::string>& names) {
    FontTables font = SampleFont();
    font["maxp"] = MakeMaxp(static_cast<uint16_t>(names.size()));
    font["vhea"] = MakeHhea(longMetrics);
    font["vmtx"] = vmtx;
    font["post"] = MakePost(names);
    return font;
}

// The comparator over raw tables, without 'post' tables.
std::string VmtxDeltas(const Bytes& modified, uint16_t modifiedLong, uint32_t modifiedGlyphs, const Bytes& original,
                       uint16_t originalLong, uint32_t originalGlyphs) {
    CapturedStream out;
    TVMTXTableComparator comparator(VelmNewHandle(modified), VellHandle(), modifiedLong, modifiedGlyphs,
                                    VelmNewHandle(original), VellHandle(), originalLong, originalGlyphs, out.file());
    comparator.DumpTableDeltas();
    return out.Text();
}

TEST(Vmtx, ThreePhasesWithMissingGlyphsEachFollowedByAnEmptyLine) {
    // Three long metrics and four glyphs against two and six; glyph 1 differs in its side bearing only.
    FontTables fewer = VerticalFont(3, MakeHmtx({{1000, 0}, {500, 5}, {1200, 20}}, {30}),
                                    {".notdef", "space", "A", "B"}),
               more = VerticalFont(2, MakeHmtx({{1000, 0}, {500, 0}}, {20, 30, 40, 50}),
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
    EXPECT_EQ(CompareDeltas(fewer, fewer, "vmtx"), "");
    EXPECT_EQ(CompareDeltas(more, fewer, "vmtx"),
              "\tGlyph:\t1\n\t\tName:\tspace\n\t\tAdvance width (mod ):\t500\n\t\tLeft-side bearing (mod ):\t0\n"
              "\t\tAdvance width (orig):\t500\n\t\tLeft-side bearing (orig):\t5\n"
              "\tGlyph:\t2\n\t\tName:\tA\n\t\tAdvance width (mod ):\t20\n"
              "\t\tAdvance width (orig):\t1200\n\t\tLeft-side bearing (orig):\t20\n"
              "\tGlyph:\t4\n\t\tName (new):\tC\n\t\tName (orig):\t\n"
              "\t\tAdvance width (mod ):\t40\n\t\t### No glyph in orig table\n\n"
              "\tGlyph:\t5\n\t\tName (new):\tD\n\t\tName (orig):\t\n"
              "\t\tAdvance width (mod ):\t50\n\t\t### No glyph in orig table\n\n");
}

TEST(Vmtx, PhaseTwoGlyphPastTheShorterFontIsMissingAndHostileCountsStayBounded) {
    // Original: one long metric and two glyphs; modified: three long metrics.
    EXPECT_EQ(VmtxDeltas(MakeHmtx({{1000, 0}, {600, 1}, {700, 2}}), 3, 3, MakeHmtx({{1000, 0}}, {9}), 1, 2),
              "\tGlyph:\t1\n\t\tName:\t\n\t\tAdvance width (mod ):\t600\n\t\tLeft-side bearing (mod ):\t1\n"
              "\t\tAdvance width (orig):\t9\n"
              "\tGlyph:\t2\n\t\tName:\t\n\t\tAdvance width (mod ):\t700\n\t\tLeft-side bearing (mod ):\t2\n"
              "\t\t### No glyph in orig table\n\n");
    // 65535 glyphs over tables of one long metric: past the tables' ends every
    // entry reads 0, so only the glyph whose bytes exist and differ is reported.
    EXPECT_EQ(VmtxDeltas(MakeHmtx({{1000, 0}}, {7}), 1, 65535, MakeHmtx({{1000, 0}}), 1, 65535),
              "\tGlyph:\t1\n\t\tName:\t\n\t\tAdvance width (mod ):\t7\n\t\tAdvance width (orig):\t0\n");
}

TEST(Vmtx, DumperNamesEveryGlyphWhetherOrNotNamesAreSwitchedOn) {
    FontTables sample = SampleFont();
    LoadedFont font(sample);
    auto dump = [&](const VellHandle& post, const Bytes& vmtx) {
        CapturedStream out;
        TVMTXTableDumper dumper(VelmNewHandle(vmtx), post, 1, 2, out.file());
        dumper.SetFont(font.font());
        dumper.DumpTableContents();
        return out.Text();
    };
    Bytes vmtx = MakeHmtx({{1000, 7}}, {-2});
    VellHandle post = VelmNewHandle(sample["post"]);
    const std::string expected =
        "\tGlyph:\t0\n\t\tName:\t.notdef\n\t\tAdvance width:\t1000\n\t\tLeft-side bearing:\t7\n"
        "\tGlyph:\t1\n\t\tName:\tspace\n\t\tAdvance width:\t-2\n";
    EXPECT_EQ(dump(post, vmtx), expected);
    {
        SwitchesForTest names(true, false);
        EXPECT_EQ(dump(post, vmtx), expected);
    }
    // Cut inside the trailing side bearing: its one remaining byte is the high byte.
    vmtx.resize(5);
    EXPECT_EQ(dump(VellHandle(), vmtx),
              "\tGlyph:\t0\n\t\tAdvance width:\t1000\n\t\tLeft-side bearing:\t7\n"
              "\tGlyph:\t1\n\t\tAdvance width:\t-256\n");
}

}  // namespace
