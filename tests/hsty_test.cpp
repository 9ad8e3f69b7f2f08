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
    EXPECT_EQ(THSTYTableDumper(VelmNewHandle(hsty), out.file()).DumpTableContents(), 0);
    return out.Text();
}

TEST(Hsty, TheReservedWordIsComparedButNothingPastTheTwentyTwoBytes) {
    Bytes modified = MakeHsty(), original = MakeHsty();
    SetU16(modified, 20, 0);
    EXPECT_EQ(HstyDeltas(modified, original), "\tExtra unused (mod ):\t0\n\tExtra unused (orig):\t9\n");
    SetU16(modified, 20, 9);
    modified.push_back(1);
    original.push_back(2);
    EXPECT_EQ(HstyDeltas(modified, original), "");
    modified.push_back(3);
    EXPECT_EQ(HstyDeltas(modified, original), "");
}

TEST(Hsty, AllOnesPrintsMinusOneInTheDumpAndTheComparison) {
    Bytes modified = MakeHsty();
    SetU16(modified, 6, 0xFFFF);
    EXPECT_EQ(HstyDeltas(modified, MakeHsty()), "\tExtra bold (mod ):\t-1\n\tExtra bold (orig):\t2\n");
    EXPECT_EQ(DumpHsty(modified),
              "\tVersion:\t1.0\n\tExtra plain:\t1\n\tExtra bold:\t-1\n\tExtra italic:\t3\n\tExtra underline:\t4\n"
              "\tExtra outline:\t5\n\tExtra shadow:\t6\n\tExtra condensed:\t7\n\tExtra extended:\t8\n\tExtra unused:\t9\n");
}

}  // namespace
