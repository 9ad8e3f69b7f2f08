// Web fonts: a WOFF and a WOFF2 made from a font report exactly as the font does,
// and damaged or bomb-like ones fail with the framework's error line.
#include <gtest/gtest.h>

#include <tuple>
#include <woff2/encode.h>
#include <zlib.h>

#include <algorithm>

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
    SetU16(head, 16, static_cast<uint16_t>(head[16] << 8 | head[17] | 0x0800));
    SetU32(head, 8, 0);
    uint32_t n = static_cast<uint32_t>(font.tables.size()), selector = 0;
    while ((2u << selector) <= n) ++selector;
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
        uLongf length = compressBound(bytes.size());
        Bytes stored(length);
        compress2(stored.data(), &length, bytes.data(), bytes.size(), 9);
        stored.resize(length);
        if (stored.size() >= bytes.size()) stored = bytes;  // a table that does not shrink is stored as it is
        directory.Tag(tag.c_str()).U32(static_cast<uint32_t>(at + data.size()));  // offset
        directory.U32(static_cast<uint32_t>(stored.size())).U32(static_cast<uint32_t>(bytes.size()));
        directory.U32(Checksum(bytes));
        data.insert(data.end(), stored.begin(), stored.end());
        data.resize((data.size() + 3) & ~size_t{3}, 0);
        sfntSize += (bytes.size() + 3) & ~size_t{3};
    }
    TableWriter header;
    header.Tag("wOFF").U32(0x00010000).U32(static_cast<uint32_t>(at + data.size()));
    header.U16(static_cast<uint32_t>(n)).U16(0).U32(static_cast<uint32_t>(sfntSize)).U16(1).U16(0).Zeros(20);
    Bytes file = header;
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

std::string Replaced(std::string text, const std::string& from, const std::string& to) {
    for (size_t at; (at = text.find(from)) != std::string::npos;) text.replace(at, from.size(), to);
    return text;
}

class WebFonts : public ::testing::Test {
protected:
    static FontTables Font(uint32_t revision, Bytes cvt) {
        FontTables font = SampleFont();
        SetU32(font["head"], 4, revision);
        font["cvt "] = std::move(cvt);
        return AsWOFF2Leaves(font);
    }
    TempDir dir;
    FontTables original = Font(0x00010000, Bytes{0, 1, 0, 2}), modified = Font(0x00010042, Bytes(200, 7));
};

TEST_F(WebFonts, ReportAndDumpAsTheSfntDoes) {
    std::string o = dir.Write("o.ttf", BuildSfnt(original)), m = dir.Write("m.ttf", BuildSfnt(modified));
    RunResult sfnt = RunVellcmp({o, m}), dump = RunVelldump({m});
    ASSERT_NE(sfnt.out.find("Checksum adjustment (mod )"), std::string::npos);
    const std::pair<std::string, Bytes> webFonts[] = {
        {"woff", BuildWOFF(modified)},
        {"woff2", BuildWOFF2(BuildSfnt(modified))},
    };
    for (const auto& [flavor, bytes] : webFonts) {
        std::string web = dir.Write("m." + flavor, bytes);
        EXPECT_EQ(Replaced(RunVellcmp({o, web}).out, web, m), sfnt.out) << flavor;
        EXPECT_EQ(RunVelldump({web}).out, dump.out) << flavor;
    }
}

TEST_F(WebFonts, AWOFF2CollectionListsEveryFont) {
    Bytes collection = BuildCollection({AsWOFF2Leaves(SampleFont("One")), AsWOFF2Leaves(SampleFont("Two"))});
    std::string ttc = dir.Write("a.ttc", collection), web = dir.Write("a.woff2", BuildWOFF2(collection));
    EXPECT_EQ(RunVelldump({web, "maxp"}).out, RunVelldump({ttc, "maxp"}).out);
}

TEST_F(WebFonts, DamagedAndBombLikeFilesFailAsFontsThatCannotBeRead) {
    Bytes woff = BuildWOFF(modified), woff2 = BuildWOFF2(BuildSfnt(modified));
    FontTables zeros = modified;
    zeros["zero"] = Bytes(4 << 20, 0);  // four megabytes that compress to a few kilobytes
    auto patched = [](Bytes file, size_t offset, size_t value) {
        SetU32(file, offset, static_cast<uint32_t>(value));
        return file;
    };
    size_t cvt = 44;  // the directory entry of 'cvt ', 200 bytes stored as a zlib stream
    while (woff[cvt] != 'c') cvt += 20;
    const std::string damagedWOFF = "a damaged WOFF file: its tables do not decode to what its directory claims";
    const std::string damagedWOFF2 = "a damaged WOFF2 file: its tables do not decode to what its directory claims";
    const std::string tooLarge = "a web font that would decode to more than 100 times its size, or 256 MB";
    const std::tuple<const char*, Bytes, std::string> cases[] = {
        {"WOFF cut short", Bytes(woff.begin(), woff.end() - 40), damagedWOFF},
        {"WOFF2 cut short", Bytes(woff2.begin(), woff2.end() - 40), damagedWOFF2},
        {"WOFF totalSfntSize past 100 times the file", patched(woff, 16, 100 * woff.size() + 1), tooLarge},
        {"WOFF2 totalSfntSize past 100 times the file", patched(woff2, 16, 100 * woff2.size() + 1), tooLarge},
        {"WOFF table claiming 2 GB", patched(woff, cvt + 12, 0x7FFFFFFF), tooLarge},
        {"WOFF stream longer than its table", patched(woff, cvt + 12, 199), damagedWOFF},
        {"WOFF stream shorter than its table", patched(woff, cvt + 12, 201), damagedWOFF},
        {"WOFF of a zero-filled table", BuildWOFF(zeros), tooLarge},
        {"WOFF2 of a zero-filled table", BuildWOFF2(BuildSfnt(zeros)), tooLarge},
    };
    std::string o = dir.Write("o.ttf", BuildSfnt(original));
    for (const auto& [name, bytes, why] : cases) {
        std::string bad = dir.Write("bad", bytes);
        RunResult run = RunVellcmp({o, bad});
        EXPECT_EQ(run.err, "##### ERROR: The Vellkit reported a problem.\n\t" + bad + ": " + why +
                               "\n\tSource file vellcmp/Source/main, line 212\n"
                               "##### ERROR:  Aborting after failure to diff " + bad + " and " + o + ".\n")
            << name;
        EXPECT_EQ(run.status, 1) << name;
    }
    // Exactly 100 times the file is still a font.
    EXPECT_EQ(RunVellcmp({o, dir.Write("ok", patched(woff, 16, 100 * woff.size()))}).status, 0);
}

}  // namespace
