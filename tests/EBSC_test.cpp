#include <gtest/gtest.h>

#include "support/Harness.h"
#include "tables/EBSC.h"

namespace {

TEST(Ebsc, AChangedPairPrintsOnlyTheComparisonFrame) {
    FontTables original = SampleFont(), modified = SampleFont();
    original["EBSC"] = MakeEbsc(1, 1);
    modified["EBSC"] = MakeEbsc(2, 2);
    EXPECT_EQ(CompareTable(modified, original, "EBSC"),
              "##### Table 'EBSC' (64 bytes in the modified font)\n                   (36 bytes in the original font)\n"
              "\n#####\n End table comparison\n\n\n\n#####\n End table\n\n\n");
}

TEST(Ebsc, DumperPrintsEveryFieldWithItsSignednessForTheSizesTheTableHolds) {
    Bytes table = MakeEbsc(0xFFFFFFFF, 2);
    table.pop_back();  // the second record is cut short
    EXPECT_EQ(DumpContents<TEBSCTableDumper>(table),
              "Table version:\t2.0\nNumber of sizes:\t-1\n\tIndex:\t0\n\t\tHorizontal Ascent:\t-28\n"
              "\t\tHorizontal Descent:\t-27\n\t\tHorizontal Maximum width:\t230\n"
              "\t\tHorizontal Caret slope numerator:\t-25\n\t\tHorizontal Caret slope denominator:\t-24\n"
              "\t\tHorizontal Caret offset:\t-23\n\t\tHorizontal Minimum With-stream Bearing:\t-22\n"
              "\t\tHorizontal Minimum With-stream Advance:\t-21\n\t\tHorizontal Maximum Cross-stream Bearing:\t-20\n"
              "\t\tHorizontal Maximum Cross-stream Advance:\t-19\n\t\tHorizontal Padding:\t-18\n"
              "\t\tHorizontal More Padding:\t-17\n\t\tVertical Ascent:\t-16\n\t\tVertical Descent:\t-15\n"
              "\t\tVertical Maximum width:\t242\n\t\tVertical Caret slope numerator:\t-13\n"
              "\t\tVertical Caret slope denominator:\t-12\n\t\tVertical Caret offset:\t-11\n"
              "\t\tVertical Minimum With-stream Bearing:\t-10\n\t\tVertical Minimum With-stream Advance:\t-9\n"
              "\t\tVertical Maximum Cross-stream Bearing:\t-8\n\t\tVertical Maximum Cross-stream Advance:\t-7\n"
              "\t\tVertical Padding:\t-6\n\t\tVertical More Padding:\t-5\n\t\tHorizontal Points Per Em:\t252\n"
              "\t\tVertical Points Per Em:\t253\n\t\tHorizontal Substituted Points Per Em:\t254\n"
              "\t\tVerticalSubstituted Points Per Em:\t255\n");
}

}  // namespace
