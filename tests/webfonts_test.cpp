// Web fonts: a WOFF and a WOFF2 made from a font report exactly as the font does,
// and damaged or bomb-like ones fail with the framework's error line.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <woff2/encode.h>
#include <zlib.h>

#include <algorithm>
#include <bit>

#include "support/FontBuilder.h"

namespace {

uint32_t Checksum(const Bytes& bytes) {
    uint32_t sum = 0;
    for (size_t i = 0; i < bytes.size(); ++i) sum += static_cast<uint32_t>(bytes[i]) << (24 - 8 * (i % 4));
    return sum;
}

// A font as a WOFF2 round trip leaves it: tables in tag order, 'head' flagged as
// losslessly transformed (bit 11) with the checkSumAdjustment of the whole sfnt,
// whose directory carries the table checksums and binary-search fields.
FontTables AsWOFF2Leaves(FontTables font) {
    std::sort(font.tables.begin(), font.tables.end());
    Bytes& head = font["head"];
    head[16] |= 0x08;
    SetU32(head, 8, 0);
    uint32_t n = static_cast<uint32_t>(font.tables.size()), selector = std::bit_width(n) - 1;
    // searchRange and rangeShift add up to 16 n; entrySelector is a high half-word.
    uint32_t total = Checksum(BuildSfnt(font)) + 16 * n + (selector << 16);
    for (const auto& table : font.tables) total += Checksum(table.second);  // each directory entry's checksum
    SetU32(head, 8, 0xB1B0AFBA - total);
    return font;
}

Bytes BuildWOFF(const FontTables& font) {
    size_t n = font.tables.size(), at = 44 + 20 * n, sfntSize = 12 + 16 * n;
    TableWriter directory;
    Bytes data;
    for (const auto& [tag, bytes] : font.tables) {
        Bytes stored(compressBound(bytes.size()));
        uLongf length = stored.size();
        compress2(stored.data(), &length, bytes.data(), bytes.size(), 9);
        stored.resize(length);
        if (stored.size() >= bytes.size()) stored = bytes;  // a table that does not shrink is stored as it is
        directory.Tag(tag.c_str()).U32(at + data.size()).U32(stored.size()).U32(bytes.size()).U32(Checksum(bytes));
        data.insert(data.end(), stored.begin(), stored.end());
        data.resize((data.size() + 3) & ~size_t{3}, 0);
        sfntSize += (bytes.size() + 3) & ~size_t{3};
    }
    Bytes file = TableWriter().Tag("wOFF").U32(0x00010000).U32(at + data.size()).U16(n).U16(0).U32(sfntSize).U16(1)
                     .U16(0).Zeros(20);
    file.insert(file.end(), directory.bytes().begin(), directory.bytes().end());
    file.insert(file.end(), data.begin(), data.end());
    return file;
}

Bytes BuildWOFF2(const Bytes& sfnt) {
    size_t length = woff2::MaxWOFF2CompressedSize(sfnt.data(), sfnt.size());
    Bytes file(length);
    if (!woff2::ConvertTTFToWOFF2(sfnt.data(), sfnt.size(), file.data(), &length)) throw std::runtime_error("woff2");
    file.resize(length);
    return file;
}

// A font whose 'cvt ' a WOFF stores as a zlib stream, as a WOFF2 round trip leaves it.
FontTables Modified() {
    FontTables font = SampleFont();
    font["cvt "] = Bytes(200, 7);
    return AsWOFF2Leaves(font);
}

class WebFonts : public ::testing::Test {
protected:
    TempDir dir;
    FontTables modified = Modified();
    std::string o = dir.Write("o.ttf", BuildSfnt(SampleFont()));
};

TEST_F(WebFonts, ReportAndDumpAsTheSfntDoes) {
    // One file name for every flavour, so that the reports' headers agree.
    std::string m = dir.Write("m", BuildSfnt(modified));
    std::string report = RunVellcmp({o, m}).out, dump = RunVelldump({m}).out;
    ASSERT_NE(report.find("Checksum adjustment (mod )"), std::string::npos);
    const std::pair<std::string, Bytes> webFonts[] = {{"WOFF", BuildWOFF(modified)},
                                                      {"WOFF2", BuildWOFF2(BuildSfnt(modified))}};
    for (const auto& [flavor, bytes] : webFonts) {
        dir.Write("m", bytes);
        EXPECT_EQ(RunVellcmp({o, m}).out, report) << flavor;
        EXPECT_EQ(RunVelldump({m}).out, dump) << flavor;
    }
    Bytes collection = BuildCollection({AsWOFF2Leaves(SampleFont("One")), AsWOFF2Leaves(SampleFont("Two"))});
    dump = RunVelldump({dir.Write("m", collection), "maxp"}).out;
    EXPECT_EQ(RunVelldump({dir.Write("m", BuildWOFF2(collection)), "maxp"}).out, dump);
}

TEST_F(WebFonts, DamagedAndBombLikeFilesFailAsFontsThatCannotBeRead) {
    Bytes woff = BuildWOFF(modified), woff2 = BuildWOFF2(BuildSfnt(modified));
    FontTables zeros = modified;
    zeros["zero"] = Bytes(4 << 20, 0);  // four megabytes that compress to a few kilobytes
    auto patched = [](Bytes file, size_t at, size_t value) { SetU32(file, at, value); return file; };
    size_t cvt = 44;  // the directory entry of 'cvt ', 200 bytes stored as a zlib stream
    while (woff[cvt] != 'c') cvt += 20;
    const std::string damaged = " file: its tables do not decode to what its directory claims";
    const std::string tooLarge = "a web font that would decode to more than 100 times its size, or 256 MB";
    const std::pair<Bytes, std::string> cases[] = {
        {Bytes(woff.begin(), woff.end() - 40), "a damaged WOFF" + damaged},
        {Bytes(woff2.begin(), woff2.end() - 40), "a damaged WOFF2" + damaged},
        {patched(woff, 16, 100 * woff.size() + 1), tooLarge},  // totalSfntSize
        {patched(woff2, 16, 100 * woff2.size() + 1), tooLarge},
        {patched(woff, cvt + 12, 0x7FFFFFFF), tooLarge},  // origLength
        {patched(woff, cvt + 12, 199), "a damaged WOFF" + damaged},  // a stream that inflates to more
        {patched(woff, cvt + 12, 201), "a damaged WOFF" + damaged},  // or to less
        {BuildWOFF(zeros), tooLarge},
        {BuildWOFF2(BuildSfnt(zeros)), tooLarge},
    };
    for (const auto& [bytes, why] : cases) {
        RunResult run = RunVellcmp({o, dir.Write("bad", bytes)});
        EXPECT_THAT(run.err, ::testing::HasSubstr("/bad: " + why + "\n\tSource file vellcmp/Source/main, line 212\n"));
        EXPECT_EQ(run.status, 1) << why;
    }
    // Exactly 100 times the file is still a font.
    EXPECT_EQ(RunVellcmp({o, dir.Write("ok", patched(woff, 16, 100 * woff.size()))}).status, 0);
}

}  // namespace
