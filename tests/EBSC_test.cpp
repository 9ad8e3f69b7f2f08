#include <gtest/gtest.h>

#include "support/Harness.h"
#include "tables/EBSC.h"

namespace {

// An 'EBSC' of version 2.0 stating `count` sizes, then `records` 28-byte size
// records whose bytes count 1, 2, ... 28.
Bytes MakeEbsc(uint32_t count, size_t records) {
    Bytes table = TableWriter().U32(0x00020000).U32(count);
    for (size_t record = 0; record < records; ++record)
        for (uint8_t at = 1; at <= 28; ++at) table.push_back(at);
    return table;
}

std::string DumpContents(const Bytes& table) {
    CapturedStream out;
    EXPECT_EQ(TEBSCTableDumper(VelmNewHandle(table), out.file()).DumpTableContents(), 0);
    return out.Text();
}

TEST(Ebsc, AChangedPairPrintsOnlyTheComparisonFrame) {
    FontTables original = SampleFont(), modified = SampleFont();
    original["EBSC"] = MakeEbsc(1, 1);
    modified["EBSC"] = MakeEbsc(2, 2);
    SetU32(modified["EBSC"], 0, 0x00030000);
    SetU8(modified["EBSC"], 8 + 24, 99);
    EXPECT_EQ(CompareTable(modified, original, "EBSC"),
              "##### Table 'EBSC' (64 bytes in the modified font)\n"
              "                   (36 bytes in the original font)\n"
              "\n#####\n End table comparison\n\n\n\n#####\n End table\n\n\n");
}

TEST(Ebsc, DumperPrintsEveryFieldWithItsSignednessForTheSizesTheTableHolds) {
    EXPECT_EQ(DumpContents(MakeEbsc(0, 0)), "Table version:\t2.0\nNumber of sizes:\t0\n");
    Bytes table = MakeEbsc(0xFFFFFFFF, 2);
    table.pop_back();           // the second record is cut short
    SetU8(table, 8 + 0, 0xF0);  // horizontal ascender
    SetU8(table, 8 + 2, 0xF2);  // horizontal widthMax
    SetU8(table, 8 + 24, 200);  // ppemX
    EXPECT_EQ(DumpContents(table),
              "Table version:\t2.0\nNumber of sizes:\t-1\n\tIndex:\t0\n\t\tHorizontal Ascent:\t-16\n"
              "\t\tHorizontal Descent:\t2\n\t\tHorizontal Maximum width:\t242\n"
              "\t\tHorizontal Caret slope numerator:\t4\n\t\tHorizontal Caret slope denominator:\t5\n"
              "\t\tHorizontal Caret offset:\t6\n\t\tHorizontal Minimum With-stream Bearing:\t7\n"
              "\t\tHorizontal Minimum With-stream Advance:\t8\n\t\tHorizontal Maximum Cross-stream Bearing:\t9\n"
              "\t\tHorizontal Maximum Cross-stream Advance:\t10\n\t\tHorizontal Padding:\t11\n"
              "\t\tHorizontal More Padding:\t12\n\t\tVertical Ascent:\t13\n\t\tVertical Descent:\t14\n"
              "\t\tVertical Maximum width:\t15\n\t\tVertical Caret slope numerator:\t16\n"
              "\t\tVertical Caret slope denominator:\t17\n\t\tVertical Caret offset:\t18\n"
              "\t\tVertical Minimum With-stream Bearing:\t19\n\t\tVertical Minimum With-stream Advance:\t20\n"
              "\t\tVertical Maximum Cross-stream Bearing:\t21\n\t\tVertical Maximum Cross-stream Advance:\t22\n"
              "\t\tVertical Padding:\t23\n\t\tVertical More Padding:\t24\n\t\tHorizontal Points Per Em:\t200\n"
              "\t\tVertical Points Per Em:\t26\n\t\tHorizontal Substituted Points Per Em:\t27\n"
              "\t\tVerticalSubstituted Points Per Em:\t28\n");
}

}  // namespace
