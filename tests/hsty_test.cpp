#include <gtest/gtest.h>

#include "support/Harness.h"
#include "tables/hsty.h"

namespace {

// Version 1.0 and the nine extra widths 1 to 9.
Bytes MakeHsty() {
    TableWriter hsty;
    hsty.U32(0x00010000);
    for (uint32_t extra = 1; extra <= 9; ++extra) hsty.U16(extra);
    return hsty;
}

std::string HstyDeltas(const Bytes& modifiedHsty, const Bytes& originalHsty) {
    FontTables original = SampleFont(), modified = SampleFont();
    original["hsty"] = originalHsty;
    modified["hsty"] = modifiedHsty;
    return CompareDeltas(modified, original, "hsty");
}

std::string DumpHsty(const Bytes& hsty) {
    CapturedStream out;
    THSTYTableDumper dumper(VelmNewHandle(hsty), out.file());
    dumper.SetTableTag(VellMakeTag("hsty"));
    EXPECT_EQ(dumper.DumpTable(), 0);
    return out.Text();
}

TEST(Hsty, ReservedFieldChangePrintsTheExtraUnusedPair) {
    Bytes modified = MakeHsty();
    SetU16(modified, 20, 0);
    EXPECT_EQ(HstyDeltas(modified, MakeHsty()), "\tExtra unused (mod ):\t0\n\tExtra unused (orig):\t9\n");
}

TEST(Hsty, AllOnesPrintsMinusOneInTheDumpAndTheComparison) {
    Bytes modified = MakeHsty();
    SetU32(modified, 0, 0x00018000);
    SetU16(modified, 6, 0xFFFF);
    EXPECT_EQ(HstyDeltas(modified, MakeHsty()),
              "\tVersion (mod ):\t1.32768\n\tVersion (orig):\t1.0\n"
              "\tExtra bold (mod ):\t-1\n\tExtra bold (orig):\t2\n");
    EXPECT_EQ(DumpHsty(modified),
              "##### Table 'hsty' (22 bytes in the modified font)\n"
              "\tVersion:\t1.32768\n\tExtra plain:\t1\n\tExtra bold:\t-1\n\tExtra italic:\t3\n"
              "\tExtra underline:\t4\n\tExtra outline:\t5\n\tExtra shadow:\t6\n\tExtra condensed:\t7\n"
              "\tExtra extended:\t8\n\tExtra unused:\t9\n"
              "\n#####\n End table\n\n\n");
}

TEST(Hsty, BytesPastTheTwentyTwoPrintNothing) {
    Bytes modified = MakeHsty(), original = MakeHsty();
    modified.push_back(1);
    original.push_back(2);
    EXPECT_EQ(HstyDeltas(modified, original), "");
    modified.push_back(3);
    EXPECT_EQ(HstyDeltas(modified, original), "");
}

TEST(Hsty, ShortTableShowsZerosForTheFieldsItLacks) {
    Bytes shortTable = MakeHsty();
    shortTable.resize(7);  // version, plain, and half of bold
    EXPECT_EQ(HstyDeltas(shortTable, MakeHsty()),
              "\tExtra bold (mod ):\t0\n\tExtra bold (orig):\t2\n"
              "\tExtra italic (mod ):\t0\n\tExtra italic (orig):\t3\n"
              "\tExtra underline (mod ):\t0\n\tExtra underline (orig):\t4\n"
              "\tExtra outline (mod ):\t0\n\tExtra outline (orig):\t5\n"
              "\tExtra shadow (mod ):\t0\n\tExtra shadow (orig):\t6\n"
              "\tExtra condensed (mod ):\t0\n\tExtra condensed (orig):\t7\n"
              "\tExtra extended (mod ):\t0\n\tExtra extended (orig):\t8\n"
              "\tExtra unused (mod ):\t0\n\tExtra unused (orig):\t9\n");
    std::string dump = DumpHsty(shortTable);
    EXPECT_NE(dump.find("\tExtra plain:\t1\n\tExtra bold:\t0\n"), std::string::npos);
}

TEST(Hsty, DumperWithoutTableOrOutputReturnsOne) {
    EXPECT_EQ(THSTYTableDumper(nullptr, stdout).DumpTableContents(), 1);
    EXPECT_EQ(THSTYTableDumper(VelmNewHandle(MakeHsty()), nullptr).DumpTableContents(), 1);
}

}  // namespace
