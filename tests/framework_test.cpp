// Vell, the font-access layer: reading font files of each kind, choosing among
// name records, glyph names from 'post', metrics from 'hmtx', and the platform
// conversions.
#include <gtest/gtest.h>

#include <set>

#include "framework/VellGlyphs.h"
#include "framework/VellNames.h"
#include "framework/VellPlatform.h"
#include "framework/VellTables.h"
#include "support/Harness.h"

namespace {

VellFontListRef ListOf(const Bytes& file, ErrorRecord* record) {
    return VellMakeFontListFromBytes(VellMappedFile::FromBytes(file), record);
}

std::string FullName(VellFontRef font) {
    ErrorRecord record;
    std::string name;
    VellFindFontNameAsUTF8(font, 5, 0, 0, 0, &name, 0, &record);
    return name;
}

TEST(FontFiles, CollectionsAndResourceForksListTheirFontsInOrder) {
    for (const Bytes& file : {BuildCollection({SampleFont("A"), SampleFont("B"), SampleFont("C")}),
                              BuildResourceFork({SampleFont("A"), SampleFont("B"), SampleFont("C")})}) {
        ErrorRecord record;
        VellFontListRef list = ListOf(file, &record);
        ASSERT_TRUE(list);
        ASSERT_EQ(list->entries.size(), 3u);
        EXPECT_EQ(FullName(list->entries[0].font), "A");
        EXPECT_EQ(FullName(list->entries[2].font), "C");
        EXPECT_EQ(VellCountFontGlyphs(list->entries[1].font, &record), 4u);
    }
}

TEST(FontFiles, DamagedDirectoriesAreNotFonts) {
    Bytes collection = BuildCollection({SampleFont("A"), SampleFont("B")});
    Bytes badOffset = collection;
    SetU32(badOffset, 16, 0x7FFFFFF0);
    Bytes hugeCount = collection;
    SetU32(hugeCount, 8, 0xFFFFFFFF);
    Bytes sfnt = BuildSfnt(SampleFont());
    Bytes manyTables = sfnt;
    SetU16(manyTables, 4, 0xFFFF);
    Bytes fork = BuildResourceFork({SampleFont()});
    Bytes badFork = fork;
    SetU32(badFork, 4, 0xFFFFFF00);
    for (const Bytes& file : {badOffset, hugeCount, manyTables, badFork, Bytes{0, 1, 0, 0}, Bytes{}}) {
        ErrorRecord record;
        EXPECT_FALSE(ListOf(file, &record));
        EXPECT_EQ(record.code, kVellNotAFontErr);
    }
}

TEST(FontFiles, TablesKeepTheirStoredOrderAndZeroLengthTablesAreEmptyBlocks) {
    FontTables tables = SampleFont();
    tables["zero"] = Bytes{};
    LoadedFont font(tables);
    ErrorRecord record;
    ASSERT_EQ(VellCountFontTables(font.font(), &record), 8u);
    VellTag tag = 0;
    EXPECT_EQ(VellGetFontTable(font.font(), 1, nullptr, &tag, &record), 54u);
    EXPECT_EQ(tag, VellMakeTag("head"));
    EXPECT_EQ(VellFindFontTable(font.font(), VellMakeTag("zero"), nullptr, nullptr, &record), 0u);
    VellHandle empty = VellGetFontTableHandle(font.font(), VellMakeTag("zero"), nullptr, &record);
    ASSERT_TRUE(empty);
    EXPECT_EQ(empty->bytes.size(), 0u);
    EXPECT_FALSE(VellGetFontTableHandle(font.font(), VellMakeTag("none"), nullptr, &record));
    EXPECT_EQ(record.code, 0);
    VellGetFontTable(font.font(), 9, nullptr, &tag, &record);
    EXPECT_NE(record.code, 0);
}

// A 'name' table with the same name ID on several platforms, in table order.
Bytes NamesOnEveryPlatform() {
    return MakeNameRecords({
        {1, 0, 0, 4, Bytes{'M', 'a', 'c', ' ', 0x8A}},  // Mac Roman: a-dieresis
        {0, 3, 0, 4, Utf16BE("Unicode")},
        {3, 1, 0x40C, 4, Utf16BE("Windows French")},
        {3, 1, 0x409, 4, Utf16BE("Windows English")},
        {1, 0, 0, 6, Bytes{'P', 'S'}},
        {7, 0, 0, 1, Bytes{'?'}},  // a platform nobody reads
    });
}

TEST(Names, TheLookupPrefersWindowsEnglishThenUnicodeThenMacRoman) {
    FontTables tables = SampleFont();
    tables["name"] = NamesOnEveryPlatform();
    EXPECT_EQ(FullName(LoadedFont(tables).font()), "Windows English");
    tables["name"] = MakeNameRecords({{1, 0, 0, 4, Bytes{'M', 'a', 'c', ' ', 0x8A}}, {0, 3, 0, 4, Utf16BE("Unicode")}});
    EXPECT_EQ(FullName(LoadedFont(tables).font()), "Unicode");
    tables["name"] = MakeNameRecords({{3, 1, 0x40C, 4, Utf16BE("French")}, {1, 0, 0, 4, Bytes{'M', 'a', 'c', ' ', 0x8A}}});
    EXPECT_EQ(FullName(LoadedFont(tables).font()), "Mac \xC3\xA4");
    tables["name"] = MakeNameRecords({{3, 1, 0x40C, 4, Utf16BE("French")}});
    EXPECT_EQ(FullName(LoadedFont(tables).font()), "French");
    tables["name"] = MakeNameRecords({{7, 0, 0, 4, Bytes{'?'}}});
    EXPECT_EQ(FullName(LoadedFont(tables).font()), "");
}

TEST(Names, RecordsAreNumberedFromOneWithCodesOneAboveTheirIDs) {
    FontTables tables = SampleFont();
    tables["name"] = NamesOnEveryPlatform();
    LoadedFont font(tables);
    ErrorRecord record;
    ASSERT_EQ(VellCountFontNames(font.font(), &record), 6u);
    int32_t code, platform, script, language;
    EXPECT_TRUE(VellCanGetFontNameAsUnicode(font.font(), 3, &code, &platform, &script, &language, &record));
    EXPECT_EQ(code, 5);
    EXPECT_EQ(platform, 4);
    EXPECT_EQ(script, 2);
    EXPECT_EQ(language, 0x40D);
    EXPECT_FALSE(VellCanGetFontNameAsUnicode(font.font(), 6, &code, &platform, &script, &language, &record));
    std::string text;
    VellGetFontNameAsUTF8(font.font(), 5, code, platform, script, language, &text, &record);
    EXPECT_EQ(text, "PS");
    EXPECT_EQ(record.code, 0);
    VellCanGetFontNameAsUnicode(font.font(), 7, &code, &platform, &script, &language, &record);
    EXPECT_NE(record.code, 0);
}

TEST(Names, DamagedNameTablesStayInsideTheTable) {
    FontTables tables = SampleFont();
    Bytes name = MakeName({{4, "Full Name"}});
    SetU16(name, 2, 5000);       // more records than the table holds
    SetU16(name, 6 + 10, 9000);  // a string offset past the end
    tables["name"] = name;
    LoadedFont font(tables);
    ErrorRecord record;
    // Only the records that fit count; the one whose text lies outside reads empty.
    EXPECT_EQ(VellCountFontNames(font.font(), &record), 2u);
    EXPECT_EQ(FullName(font.font()), "");
}

TEST(GlyphNames, PostFormatsOneTwoAndTwoPointFive) {
    VellHandle format1 = VelmNewHandle(TableWriter().U32(0x00010000).Zeros(28).bytes());
    Bytes format25 = TableWriter().U32(0x00025000).Zeros(28).U16(3).U8(3).U8(0xFF).U8(26).bytes();
    VellHandle format2 = VelmNewHandle(MakePost({".notdef", "A", "A.alt", "B.alt", "zero"}));
    std::string name;
    VellFindPSGlyphNameFromTable(format1, 36, &name);
    EXPECT_EQ(name, "A");
    VellFindPSGlyphNameFromTable(format1, 258, &name);
    EXPECT_EQ(name, "");
    VellFindPSGlyphNameFromTable(VelmNewHandle(format25), 1, &name);
    EXPECT_EQ(name, ".notdef");
    VellFindPSGlyphNameFromTable(VelmNewHandle(format25), 2, &name);
    EXPECT_EQ(name, "nine");
    VellFindPSGlyphNameFromTable(format2, 3, &name);
    EXPECT_EQ(name, "B.alt");
    VellFindPSGlyphNameFromTable(format2, 4, &name);
    EXPECT_EQ(name, "zero");
    VellFindPSGlyphNameFromTable(format2, 5, &name);
    EXPECT_EQ(name, "");
    EXPECT_EQ(VellFindPSGlyphNameFromTable(VelmNewHandle(TableWriter().U32(0x00030000).bytes()), 0, &name), 0);
    EXPECT_EQ(name, "");
}

TEST(GlyphNames, TheStandardOrderHas258DistinctNames) {
    std::set<std::string> names(std::begin(kVellStandardGlyphNames), std::end(kVellStandardGlyphNames));
    EXPECT_EQ(names.size(), 258u);
    EXPECT_STREQ(kVellStandardGlyphNames[3], "space");
    EXPECT_STREQ(kVellStandardGlyphNames[68], "a");
    EXPECT_STREQ(kVellStandardGlyphNames[257], "dcroat");
}

TEST(Platform, DatesStringsAndUnicodeNames) {
    VellDate date = SecondsToDate(0xFFFFFFFF);
    EXPECT_EQ(date.year, 2040);
    EXPECT_EQ(date.month, 2);
    EXPECT_EQ(date.day, 6);
    std::string value;
    EXPECT_TRUE(VellLookUpStringsText("/* errors */\n\"An \\\"error\\\".\" = \"Une \\\"erreur\\\".\";\n",
                                      "An \"error\".", &value));
    EXPECT_EQ(value, "Une \"erreur\".");
    EXPECT_FALSE(VellLookUpStringsText("\"a\" = \"b\";", "c", &value));
    ErrorRecord record;
    EXPECT_EQ(VellGetUnicodeScalarName(0x00E9, &record), "LATIN SMALL LETTER E WITH ACUTE");
    EXPECT_EQ(VellGetUnicodeScalarName(0x0009, &record), "<control-0009>");
}

}  // namespace
