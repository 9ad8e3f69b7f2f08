#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>

#include "support/Harness.h"

namespace {

using ::testing::HasSubstr;

// SampleFont (glyphs .notdef, space, A, B) with an 'hdmx' of records of `size` bytes.
FontTables WithHdmx(const std::vector<DeviceRecord>& records, uint16_t version = 0, uint32_t size = 8) {
    FontTables font = SampleFont();
    font["hdmx"] = MakeHdmx(records, version, size);
    return font;
}

const DeviceRecord k12 = {12, 9, 6, 3, 8, 7}, k16 = {16, 12, 8, 4, 10, 9}, k20 = {20, 15, 10, 5, 13, 12};

TEST(Hdmx, SizesOnlyInEitherFontPrintAddedAndSharedOnesAreComparedInTheOriginalsOrder) {
    // The first record of a size counts; a fifth glyph only the modified font has is not compared.
    FontTables modified = WithHdmx({{12, 200, 6, 3, 8, 7, 40}, k16, {20, 15, 10, 5, 11, 12}, {12, 9, 1, 1}}, 1);
    FontTables original = WithHdmx({k20, {24, 18}, k12});
    modified["maxp"] = MakeMaxp(5);
    EXPECT_EQ(CompareDeltas(modified, original, "hdmx"),
              "\tVersion (mod ):\t1\n\tVersion (orig):\t0\n\tPixels per em added:\t16\n\tPixels per em added:\t24\n"
              "\tComparing point size:\t20\n\t\tWidth change for glyph:\t2\n\t\tName:\tA\n"
              "\t\t\tNew width:\t11\n\t\t\tOld width:\t13\n\tComparing point size:\t12\n"
              "\t\tMax width (mod ):\t200\n\t\tMax width (orig):\t9\n");
    // Names come from each font's own 'post'; a font without one leaves its name empty.
    modified["post"] = MakePost({".notdef", "space", "Ay", "B", "C"});
    original.Remove("post");
    EXPECT_THAT(CompareDeltas(modified, original, "hdmx"), HasSubstr("\t2\n\t\tName (new):\tAy\n\t\tName (old):\t\n"));
}

TEST(Hdmx, DumperListsOnlyTheRecordsTheTableHoldsWithOneCommentedWidthPerGlyph) {
    FontTables font = WithHdmx({k12});
    SetU16(font["hdmx"], 2, 5);  // five records stated, one present
    EXPECT_EQ(DumpTable(font, "hdmx"),
              "##### Table 'hdmx' (16 bytes in the modified font)\n\tVersion:\t0\n\tNumber of device records:\t5\n"
              "\tSize of a device record:\t8\n\t\tDevice record:\t0\n\t\t\tPixel size:\t12\n\t\t\tMaximum width:\t9\n"
              "6\t/* 0 */\n3\t/* 1 */\n8\t/* 2 */\n7\t/* 3 */\n\n#####\n End table\n\n\n");
    auto lines = [](const std::string& text) { return std::count(text.begin(), text.end(), '\n'); };
    for (uint32_t recordSize : {0u, 17u, 0xFFFFFFFFu}) {  // no record fits
        SetU32(font["hdmx"], 4, recordSize);
        EXPECT_EQ(lines(DumpTable(font, "hdmx")), 1 + 3 + 5);
    }
    // 65535 one-byte records, 65535 glyphs: no widths to print or compare, maximum widths read 0.
    std::vector<DeviceRecord> records;
    for (uint32_t record = 0; record < 0xFFFF; ++record) records.push_back({static_cast<uint8_t>(record)});
    font = WithHdmx(records, 0, 1);
    font["maxp"] = MakeMaxp(0xFFFF);
    std::string dump = DumpTable(font, "hdmx");
    EXPECT_EQ(lines(dump), 1 + 3 + 3 * 0xFFFF + 5);
    EXPECT_THAT(dump, HasSubstr("Device record:\t1\n\t\t\tPixel size:\t1\n\t\t\tMaximum width:\t0\n\t\tDevice"));
    // Sizes the original lacks are "added"; each of its sizes: a line, the max width pair, four widths.
    EXPECT_EQ(lines(CompareDeltas(font, WithHdmx({k12, k16, k20}), "hdmx")), 0xFFFF - 3 * 256 + 3 * (1 + 2 + 4 * 4));
}

}  // namespace
