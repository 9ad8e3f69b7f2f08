#include <gtest/gtest.h>

#include "support/Harness.h"

namespace {

std::string HeadDeltas(void (*change)(Bytes& head)) {
    FontTables original = SampleFont(), modified = SampleFont();
    change(modified["head"]);
    return CompareDeltas(modified, original, "head");
}

TEST(Head, FieldsInTableOrderEachInItsKindAndThoseOfATruncatedTableReadZero) {
    EXPECT_EQ(HeadDeltas([](Bytes& head) {
                  SetU16(head, 36, static_cast<uint16_t>(-5)), SetU16(head, 18, 1000);
                  SetU32(head, 8, 0xE7006EFF), SetU32(head, 4, 0x00018000);
                  head.resize(40);
              }),
              "\tFont revision (mod ):\t1.32768\n\tFont revision (orig):\t1.0\n"
              "\tChecksum adjustment (mod ):\t0xE7006EFF\n\tChecksum adjustment (orig):\t0x12345678\n"
              "\tUnits per em (mod ):\t1000\n\tUnits per em (orig):\t2048\n"
              "\tX minimum (mod ):\t-5\n\tX minimum (orig):\t-100\n"
              "\tX maximum (mod ):\t0\n\tX maximum (orig):\t1000\n\tY maximum (mod ):\t0\n\tY maximum (orig):\t1800\n"
              "\tLowest recommended pixels per em (mod ):\t0\n\tLowest recommended pixels per em (orig):\t9\n"
              "\tFont direction hint (mod ):\t0\n\tFont direction hint (orig):\t2\n");
}

TEST(Head, MacStyleAndLocationFormatAreEachFollowedByTheirFlagsOnEachSide) {
    const std::string styles = "\t\tItalic:\tFALSE\n\t\tUnderline:\tFALSE\n\t\tOutline:\tFALSE\n\t\tShadow:\tFALSE\n"
                               "\t\tCondense:\tFALSE\n\t\tExtend:\tFALSE\n";
    // An indexToLocFormat of neither 0 nor 1 is neither short nor long.
    EXPECT_EQ(HeadDeltas([](Bytes& head) { SetU16(head, 44, 0x0081), SetU16(head, 50, 2); }),
              "\tMac styles (mod ):\t0x0081\n\t\tBold:\tTRUE\n" + styles + "\tMac styles (orig):\t0x0000\n"
              "\t\tBold:\tFALSE\n" + styles + "\tIndex to the location table format (mod ):\t2\n"
              "\t\tUse short offsets:\tFALSE\n\t\tUse long offsets:\tFALSE\n"
              "\tIndex to the location table format (orig):\t0\n"
              "\t\tUse short offsets:\tTRUE\n\t\tUse long offsets:\tFALSE\n");
}

TEST(Head, CreationDateComparesItsHighWordOnlyButModificationDateAllOfIt) {
    // 3140000000 s after 1904 is 2003-07-02; one day later is 07/03/2003.
    EXPECT_EQ(HeadDeltas([](Bytes& head) { SetU32(head, 24, 3140000000u + 86400); }), "");
    EXPECT_EQ(HeadDeltas([](Bytes& head) { SetU32(head, 32, 3140000000u + 86400); }),
              "\tDate modified (mod ):\t07/03/2003\n\tDate modified (orig):\t07/02/2003\n");
    // A change in the high word is reported, though the date prints from the low word.
    EXPECT_EQ(HeadDeltas([](Bytes& head) { SetU32(head, 20, 1); }),
              "\tDate created (mod ):\t07/02/2003\n\tDate created (orig):\t07/02/2003\n");
}

TEST(Head, BdatAndBhedAreReportedByTheHeadComparator) {
    for (const char* tag : {"bdat", "bhed"}) {
        FontTables original = SampleFont(), modified = SampleFont();
        original[tag] = modified[tag] = MakeHead();
        SetU16(modified[tag], 18, 1000);
        EXPECT_EQ(CompareDeltas(modified, original, tag),
                  "\tUnits per em (mod ):\t1000\n\tUnits per em (orig):\t2048\n");
    }
}

}  // namespace
