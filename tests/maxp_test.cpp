#include <gtest/gtest.h>

#include "support/Harness.h"

namespace {

TEST(Maxp, CountsPrintSignedKeepTheComponenetSpellingAndPaddingIsNoField) {
    FontTables original = SampleFont(), modified = SampleFont();
    SetU32(original["maxp"], 0, 0x00005000);
    SetU16(modified["maxp"], 4, 40000);
    SetU16(modified["maxp"], 10, 0xFFFF);
    SetU16(modified["maxp"], 30, 3);
    modified["maxp"].push_back(7);  // padding past the layout
    EXPECT_EQ(CompareDeltas(modified, original, "maxp"),
              "\tVersion (mod ):\t1.0\n\tVersion (orig):\t0.20480\n"
              "\tNumber glyphs (mod ):\t-25536\n\tNumber glyphs (orig):\t4\n"
              "\tMaximum componenet points (mod ):\t-1\n\tMaximum componenet points (orig):\t0\n"
              "\tMaximum componenet depth (mod ):\t3\n\tMaximum componenet depth (orig):\t0\n");
}

TEST(Maxp, DumperPrintsEveryFieldAndAShortTableReadsZeros) {
    FontTables font = SampleFont();
    font["maxp"] = TableWriter().U32(0x00005000).U16(4);  // version 0.5: six bytes
    EXPECT_EQ(DumpTable(font, "maxp"),
              "##### Table 'maxp' (6 bytes in the modified font)\n\tVersion:\t0.20480\n\tNumber glyphs:\t4\n"
              "\tMaximum points:\t0\n\tMaximum contours:\t0\n\tMaximum componenet points:\t0\n"
              "\tMaximum componenet contours:\t0\n\tMaximum zones:\t0\n\tMaximum twilight points:\t0\n"
              "\tMaximum storage:\t0\n\tMaximum function definitions:\t0\n\tMaximum instruction definitions:\t0\n"
              "\tMaximum stack elements:\t0\n\tMaximum size of instructions:\t0\n\tMaximum component elements:\t0\n"
              "\tMaximum componenet depth:\t0\n\n#####\n End table\n\n\n");
}

}  // namespace
