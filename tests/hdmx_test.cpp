#include <gtest/gtest.h>

#include <algorithm>

#include "support/Harness.h"

namespace {

using DeviceRecord = std::vector<uint8_t>;  // pixel size, maximum width, then the glyph widths

// SampleFont (glyphs .notdef, space, A, B) with an 'hdmx' of 8-byte records.
FontTables WithHdmx(const std::vector<DeviceRecord>& records, uint16_t version = 0) {
    TableWriter table;
    table.U16(version).U16(static_cast<uint32_t>(records.size())).U32(8);
    for (const DeviceRecord& record : records) {
        for (uint8_t byte : record) table.U8(byte);
        table.Zeros(8 - record.size());
    }
    FontTables font = SampleFont();
    font["hdmx"] = table;
    return font;
}

const DeviceRecord k12 = {12, 9, 6, 3, 8, 7}, k16 = {16, 12, 8, 4, 10, 9}, k20 = {20, 15, 10, 5, 13, 12};

TEST(Hdmx, SizesOnlyInEitherFontPrintAddedAndSharedOnesFollowTheOriginalOrder) {
    EXPECT_EQ(CompareDeltas(WithHdmx({{12, 200, 6, 3, 8, 7}, k16, k20}, 1), WithHdmx({k20, {24, 18}, k12}), "hdmx"),
              "\tVersion (mod ):\t1\n\tVersion (orig):\t0\n\tPixels per em added:\t16\n\tPixels per em added:\t24\n"
              "\tComparing point size:\t20\n"
              "\tComparing point size:\t12\n\t\tMax width (mod ):\t200\n\t\tMax width (orig):\t9\n");
}

TEST(Hdmx, WidthChangesPrintUnderTheirOwnSizeWithEachFontsGlyphName) {
    EXPECT_EQ(CompareDeltas(WithHdmx({k12, {16, 12, 8, 4, 11, 9}, k20}), WithHdmx({k12, k16, k20}), "hdmx"),
              "\tComparing point size:\t12\n\tComparing point size:\t16\n"
              "\t\tWidth change for glyph:\t2\n\t\tName:\tA\n\t\t\tNew width:\t11\n\t\t\tOld width:\t10\n"
              "\tComparing point size:\t20\n");

    FontTables modified = WithHdmx({{12, 9, 6, 3, 8, 9}}), original = WithHdmx({k12});
    const std::string before = "\tComparing point size:\t12\n\t\tWidth change for glyph:\t3\n";
    const std::string after = "\t\t\tNew width:\t9\n\t\t\tOld width:\t7\n";
    modified["post"] = MakePost({".notdef", "space", "A", "Bee"});
    EXPECT_EQ(CompareDeltas(modified, original, "hdmx"), before + "\t\tName (new):\tBee\n\t\tName (old):\tB\n" + after);
    original.Remove("post");
    modified.Remove("post");
    EXPECT_EQ(CompareDeltas(modified, original, "hdmx"), before + "\t\tName:\t\n" + after);

    // Only the first record of a pixel size counts, and only widths below the smaller glyph count.
    modified = WithHdmx({{12, 9, 6, 3, 8, 5, 40}, {12, 9, 1, 1, 1, 1}});
    modified["maxp"] = MakeMaxp(5);
    EXPECT_EQ(CompareDeltas(modified, WithHdmx({k12}), "hdmx"),
              "\tComparing point size:\t12\n"
              "\t\tWidth change for glyph:\t3\n\t\tName:\tB\n\t\t\tNew width:\t5\n\t\t\tOld width:\t7\n");
}

TEST(Hdmx, DumperPrintsEveryRecordWithOneCommentedWidthPerGlyph) {
    EXPECT_EQ(DumpTable(WithHdmx({k12, k16}), "hdmx"),
              "##### Table 'hdmx' (24 bytes in the modified font)\n"
              "\tVersion:\t0\n\tNumber of device records:\t2\n\tSize of a device record:\t8\n"
              "\t\tDevice record:\t0\n\t\t\tPixel size:\t12\n\t\t\tMaximum width:\t9\n6\t/* 0 */\n3\t/* 1 */\n8\t/* 2 */\n"
              "7\t/* 3 */\n\t\tDevice record:\t1\n\t\t\tPixel size:\t16\n\t\t\tMaximum width:\t12\n8\t/* 0 */\n4\t/* 1 */\n"
              "10\t/* 2 */\n9\t/* 3 */\n\n#####\n End table\n\n\n");
}

TEST(Hdmx, HostileRecordSizesAndCountsStayInsideTheTable) {
    auto lines = [](const std::string& text) { return std::count(text.begin(), text.end(), '\n'); };
    FontTables font = WithHdmx({k12});
    SetU16(font["hdmx"], 2, 5);  // five records stated, one present
    EXPECT_EQ(lines(DumpTable(font, "hdmx")), 1 + 3 + (3 + 4) + 5);
    for (uint32_t recordSize : {0u, 17u, 0xFFFFFFFFu}) {  // no record fits
        SetU32(font["hdmx"], 4, recordSize);
        EXPECT_EQ(lines(DumpTable(font, "hdmx")), 1 + 3 + 5);
    }
    // The most one-byte records, in a font of 65535 glyphs: such a record holds no
    // widths to print or compare, and its maximum width reads 0, not the next pixel size.
    TableWriter many;
    many.U16(0).U16(0xFFFF).U32(1);
    for (uint32_t record = 0; record < 0xFFFF; ++record) many.U8(record & 0xFF);
    font["hdmx"] = many;
    font["maxp"] = MakeMaxp(0xFFFF);
    std::string dump = DumpTable(font, "hdmx");
    EXPECT_EQ(lines(dump), 1 + 3 + 3 * 0xFFFF + 5);
    EXPECT_NE(dump.find("Device record:\t1\n\t\t\tPixel size:\t1\n\t\t\tMaximum width:\t0\n\t\tDevice"),
              std::string::npos);
    // Sizes the original lacks are "added"; each original size is compared once:
    // its line, the maximum width pair, four width changes.
    EXPECT_EQ(lines(CompareDeltas(font, WithHdmx({k12, k16, k20}), "hdmx")), 0xFFFF - 3 * 256 + 3 * (1 + 2 + 4 * 4));
}

}  // namespace
