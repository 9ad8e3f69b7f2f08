// Web fonts: a WOFF and a WOFF2 report and dump exactly as the sfnt they decode
// to, and damaged or bomb-like ones fail with the framework's error line.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <woff2/decode.h>
#include <woff2/encode.h>
#include <woff2/output.h>
#include <zlib.h>

#include "support/FontBuilder.h"

namespace {

// Each table as a zlib stream, or as it is when that is no shorter.
Bytes BuildWOFF(const FontTables& font) {
    size_t n = font.tables.size(), at = 44 + 20 * n, sfntSize = 12 + 16 * n;
    TableWriter directory;
    Bytes data;
    for (const auto& [tag, bytes] : font.tables) {
        Bytes stored(compressBound(bytes.size()));
        uLongf length = stored.size();
        compress2(stored.data(), &length, bytes.data(), bytes.size(), 9);
        stored.resize(length);
        if (stored.size() >= bytes.size()) stored = bytes;
        directory.Tag(tag.c_str()).U32(at + data.size()).U32(stored.size()).U32(bytes.size()).U32(0);  // no checksum
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

// What the reference decoder makes of a WOFF2 file: tables in tag order, 'head'
// flagged as transformed, checksums filled in.
Bytes DecodedByTheReference(const Bytes& file) {
    std::string sfnt(woff2::ComputeWOFF2FinalSize(file.data(), file.size()), '\0');
    woff2::WOFF2StringOut out(&sfnt);
    EXPECT_TRUE(woff2::ConvertWOFF2ToTTF(file.data(), file.size(), &out));
    return Bytes(sfnt.begin(), sfnt.begin() + out.Size());
}

class WebFonts : public ::testing::Test {
protected:
    TempDir dir;
    FontTables modified = [] {
        FontTables font = SampleFont();
        font["cvt "] = Bytes(200, 7);  // a WOFF stores it as a zlib stream
        return font;
    }();
    std::string o = dir.Write("o.ttf", BuildSfnt(SampleFont())), m = dir.Path("m");
};

TEST_F(WebFonts, ReportAndDumpAsTheirSfntDoes) {
    Bytes woff2 = BuildWOFF2(BuildSfnt(modified));
    Bytes collection = BuildWOFF2(BuildCollection({SampleFont("One"), modified}));
    const std::tuple<const char*, Bytes, Bytes> webFonts[] = {
        {"WOFF", BuildSfnt(modified), BuildWOFF(modified)},
        {"WOFF2", DecodedByTheReference(woff2), woff2},
        {"WOFF2 collection", DecodedByTheReference(collection), collection}};
    for (const auto& [flavor, sfnt, webFont] : webFonts) {
        // One file name for both, so that the reports' headers agree.
        dir.Write("m", sfnt);
        std::string report = RunVellcmp({o, m}).out, dump = RunVelldump({m}).out;
        dir.Write("m", webFont);
        EXPECT_EQ(RunVellcmp({o, m}).out, report) << flavor;
        EXPECT_EQ(RunVelldump({m}).out, dump) << flavor;
    }
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
