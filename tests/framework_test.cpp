// Vell, the font-access layer: reading font files of each kind, choosing among
// name records, glyph names from 'post', and the platform conversions (Unicode
// names are left to the print operations' tests).
#include <gtest/gtest.h>

#include <set>

#include "framework/VellGlyphs.h"
#include "framework/VellNames.h"
#include "framework/VellPlatform.h"
#include "support/Harness.h"

namespace {

std::string FullName(VellFontRef font) {
    ErrorRecord record;
    std::string name;
    VellFindFontNameAsUTF8(font, 5, 0, 0, 0, &name, 0, &record);
    return name;
}

// Collections and resource forks list their fonts in order; damaged directories
// that the command-line tests do not reach are no fonts.
TEST(FontFiles, CollectionsAndResourceForksListTheirFontsInOrder) {
    const std::vector<FontTables> fonts = {SampleFont("A"), SampleFont("B"), SampleFont("C")};
    Bytes hugeCount = BuildCollection(fonts), badFork = BuildResourceFork(fonts);
    SetU32(hugeCount, 8, 0xFFFFFFFF);
    SetU32(badFork, 4, 0xFFFFFF00);  // the map's offset
    const std::pair<Bytes, std::string> cases[] = {
        {BuildCollection(fonts), "AC"}, {BuildResourceFork(fonts), "AC"}, {hugeCount, ""}, {badFork, ""}};
    for (const auto& [file, names] : cases) {
        ErrorRecord record;
        VellFontListRef list = VellMakeFontListFromBytes(VellMappedFile::FromBytes(file), &record);
        EXPECT_EQ(record.code, names.empty() ? kVellNotAFontErr : 0);
        if (!list) continue;
        ASSERT_EQ(list->entries.size(), 3u);
        EXPECT_EQ(FullName(list->entries[0].font) + FullName(list->entries[2].font), names);
    }
}

TEST(Names, TheLookupPrefersWindowsEnglishThenUnicodeThenMacRoman) {
    const NameEntry unicode = {0, 3, 0, 4, Utf16BE("Unicode")}, french = {3, 1, 0x40C, 4, Utf16BE("French")};
    const NameEntry macRoman = {1, 0, 0, 4, Bytes{'M', 'a', 'c', ' ', 0x8A}};  // 0x8A: a-dieresis
    const NameEntry bmp = {3, 1, 0x409, 4, Utf16BE("BMP")}, full = {3, 10, 0x409, 4, Utf16BE("Full")};
    const std::pair<std::vector<NameEntry>, std::string> cases[] = {
        {{macRoman, unicode, french, {3, 1, 0x409, 4, Utf16BE("English")}}, "English"},
        // English in the full repertoire ranks with the BMP's; between records of one rank the first wins.
        {{unicode, full}, "Full"}, {{full, bmp}, "Full"}, {{bmp, full}, "BMP"},
        {{french, unicode, {0, 4, 0, 4, Utf16BE("Later")}}, "Unicode"},
        {{macRoman, unicode, french}, "Unicode"},
        {{french, macRoman}, "Mac \xC3\xA4"},
        {{french}, "French"},
        {{{7, 0, 0, 4, Bytes{'?'}}}, ""},  // a platform nobody reads
    };
    for (const auto& [names, expected] : cases) {
        FontTables tables = SampleFont();
        tables["name"] = MakeNameRecords(names);
        EXPECT_EQ(FullName(LoadedFont(tables).font()), expected);
    }
}

// What the command line's -f lookup reads: records numbered from one, their name
// IDs, platforms, encodings and languages one up, and only the records that fit.
TEST(Names, RecordsAreNumberedFromOneWithCodesOneAboveTheirIDs) {
    FontTables tables = SampleFont();
    tables["name"] = MakeName({{4, "Full Name"}});
    SetU16(tables["name"], 2, 5000);       // more records than the table holds
    SetU16(tables["name"], 6 + 10, 9000);  // a string offset past the end: the text reads empty
    LoadedFont font(tables);
    ErrorRecord record;
    int32_t code, platform, script, language;
    EXPECT_TRUE(VellCanGetFontNameAsUnicode(font.font(), 1, &code, &platform, &script, &language, &record));
    EXPECT_EQ(std::vector({code, platform, script, language}), std::vector({5, 4, 2, 0x40A}));
    EXPECT_EQ(FullName(font.font()), "");
    EXPECT_EQ(VellCountFontNames(font.font(), &record), 2u);
    VellCanGetFontNameAsUnicode(font.font(), 3, &code, &platform, &script, &language, &record);
    EXPECT_NE(record.code, 0);
}

TEST(GlyphNames, PostFormatsOneTwoAndTwoPointFive) {
    VellHandle format1 = VelmNewHandle(TableWriter().U32(0x00010000).Zeros(28).bytes());
    VellHandle format25 = VelmNewHandle(TableWriter().U32(0x00025000).Zeros(28).U16(3).U8(3).U8(0xFF).U8(26).bytes());
    VellHandle format2 = VelmNewHandle(MakePost({".notdef", "A", "A.alt", "B.alt", "zero"}));
    VellHandle format3 = VelmNewHandle(TableWriter().U32(0x00030000).bytes());
    const std::tuple<const VellHandle&, uint32_t, std::string> cases[] = {
        {format1, 36, "A"}, {format1, 258, ""},  {format25, 1, ".notdef"}, {format25, 2, "nine"},
        {format2, 3, "B.alt"}, {format2, 4, "zero"}, {format2, 5, ""}, {format3, 0, ""},
    };
    for (const auto& [post, glyph, expected] : cases) {
        std::string name = "not cleared";
        EXPECT_EQ(VellFindPSGlyphNameFromTable(post, glyph, &name), 0);
        EXPECT_EQ(name, expected) << glyph;
    }
    std::set<std::string> names(std::begin(kVellStandardGlyphNames), std::end(kVellStandardGlyphNames));
    EXPECT_EQ(names.size(), 258u);
}

TEST(Platform, TheLastDateAndStringsTables) {
    VellDate date = SecondsToDate(0xFFFFFFFF);
    EXPECT_EQ(std::vector({date.year, date.month, date.day}), std::vector({2040, 2, 6}));
    std::string value;
    EXPECT_TRUE(VellLookUpStringsText("/* errors */\n\"An \\\"error\\\".\" = \"Une \\\"erreur\\\".\";\n",
                                      "An \"error\".", &value));
    EXPECT_EQ(value, "Une \"erreur\".");
    EXPECT_FALSE(VellLookUpStringsText("\"a\" = \"b\";", "c", &value));
}

}  // namespace
