#include <gtest/gtest.h>

#include "support/Harness.h"
#include "tables/hsty.h"

namespace {

TEST(Hsty, AllOnesPrintsMinusOneAndTheReservedWordIsComparedButNothingPastTheTwentyTwoBytes) {
    FontTables original = SampleFont(), modified = SampleFont();
    TableWriter hsty;
    hsty.U32(0x00010000);
    for (uint32_t extra = 1; extra <= 9; ++extra) hsty.U16(extra);
    original["hsty"] = modified["hsty"] = hsty;
    SetU16(modified["hsty"], 6, 0xFFFF);
    SetU16(modified["hsty"], 20, 0);
    original["hsty"].push_back(1);
    modified["hsty"].insert(modified["hsty"].end(), {2, 3});
    EXPECT_EQ(CompareDeltas(modified, original, "hsty"), "\tExtra bold (mod ):\t-1\n\tExtra bold (orig):\t2\n"
                                                         "\tExtra unused (mod ):\t0\n\tExtra unused (orig):\t9\n");
    EXPECT_EQ(DumpContents<THSTYTableDumper>(modified["hsty"]),
              "\tVersion:\t1.0\n\tExtra plain:\t1\n\tExtra bold:\t-1\n\tExtra italic:\t3\n\tExtra underline:\t4\n"
              "\tExtra outline:\t5\n\tExtra shadow:\t6\n\tExtra condensed:\t7\n\tExtra extended:\t8\n"
              "\tExtra unused:\t0\n");
}

}  // namespace
