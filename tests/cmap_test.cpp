// 'cmap': the framework's encodings and subtable decoders, and the comparator's
// report of added, deleted and changed encodings and mappings.
#include <gtest/gtest.h>

#include <array>

#include "VellCmpErrors.h"
#include "framework/VellEncodings.h"
#include "framework/VellIdentifiers.h"
#include "support/Harness.h"
#include "tables/cmap.h"

namespace {

using Mappings = std::vector<std::pair<uint32_t, int>>;

struct Record {
    uint16_t platformID, encodingID;
    Bytes subtable;
};

// A 'cmap' whose records point at their subtables, stored in record order.
Bytes Cmap(const std::vector<Record>& records) {
    TableWriter header;
    header.U16(0).U16(static_cast<uint32_t>(records.size()));
    Bytes subtables;
    for (const Record& record : records) {
        uint32_t offset = static_cast<uint32_t>(4 + 8 * records.size() + subtables.size());
        header.U16(record.platformID).U16(record.encodingID).U32(offset);
        subtables.insert(subtables.end(), record.subtable.begin(), record.subtable.end());
    }
    Bytes cmap = header;
    cmap.insert(cmap.end(), subtables.begin(), subtables.end());
    return cmap;
}

Bytes Format6(uint16_t firstCode, const std::vector<uint16_t>& glyphs, uint16_t language = 0) {
    TableWriter table;
    table.U16(6).U16(0).U16(language).U16(firstCode).U16(static_cast<uint32_t>(glyphs.size()));
    for (uint16_t glyph : glyphs) table.U16(glyph);
    return table;
}

// Formats 12 and 13: (first code, last code, glyph) groups.
Bytes Groups(uint16_t format, const std::vector<std::array<uint32_t, 3>>& groups, uint32_t language = 0) {
    TableWriter table;
    table.U16(format).U16(0).U32(0).U32(language).U32(static_cast<uint32_t>(groups.size()));
    for (const auto& group : groups) table.U32(group[0]).U32(group[1]).U32(group[2]);
    return table;
}

Mappings Decode(const Bytes& cmap, uint32_t index = 1) {
    ErrorRecord record;
    uint16_t format;
    Mappings mappings;
    for (const VellCGPair& pair : VellMakeCGArrayFromCMAPTable(VelmNewHandle(cmap), index, &format, &record))
        mappings.emplace_back(pair.code, pair.glyph);
    EXPECT_EQ(record.code, 0);
    return mappings;
}

// ---- Decoders ----

// One-byte codes 0xA1 and 0xA2 through subheader 0 (after the two-byte codes in
// table order); lead byte 0x81 through subheader 1, whose delta of 5 is not added
// to its glyph 0.
Bytes Format2() {
    TableWriter table;
    table.U16(2).U16(0).U16(0);
    for (uint32_t high = 0; high < 256; ++high) table.U16(high == 0x81 ? 8 : 0);
    return table.U16(0xA1).U16(2).U16(0).U16(10).U16(0x40).U16(2).U16(5).U16(6).U16(1).U16(2).U16(3).U16(0);
}

// 0x41-0x43 by delta; 0x61-0x62 through the glyph array (delta 1, glyph 0 stays
// unmapped); the closing 0xFFFF segment maps to glyph 0.
Bytes Format4() {
    return TableWriter().U16(4).U16(0).U16(0).U16(6).Zeros(6).U16(0x43).U16(0x62).U16(0xFFFF).U16(0)
        .U16(0x41).U16(0x61).U16(0xFFFF).U16(0xFFC0).U16(1).U16(1).U16(0).U16(4).U16(0).U16(7).U16(0);
}

TEST(CmapDecoders, EachFormatGivesItsMappingsInCodeOrderAndCutShortStaysInsideTheTable) {
    Bytes format0 = TableWriter().U16(0).U16(0).U16(0).Zeros(256);
    format0[6 + 0x41] = 3;
    Bytes format8 = TableWriter().U16(8).U16(0).U32(0).U32(0).Zeros(8192).U32(1).U32(0x10000).U32(0x10001).U32(9);
    Bytes format10 = TableWriter().U16(10).U16(0).U32(0).U32(0).U32(0x10400).U32(2).U16(4).U16(5);
    struct {
        const char* name;
        Bytes subtable;
        Mappings expected;
    } cases[] = {
        {"format0", format0, {{0x41, 3}}},
        {"format2", Format2(), {{0xA1, 1}, {0xA2, 2}, {0x8140, 8}}},
        {"format4", Format4(), {{0x41, 1}, {0x42, 2}, {0x43, 3}, {0x61, 8}}},
        {"format6", Format6(0x30, {5, 0, 6}), {{0x30, 5}, {0x32, 6}}},
        {"format8", format8, {{0x10000, 9}, {0x10001, 10}}},
        {"format10", format10, {{0x10400, 4}, {0x10401, 5}}},
        {"format12", Groups(12, {{0x20, 0x21, 1}, {0x1F600, 0x1F600, 3}}), {{0x20, 1}, {0x21, 2}, {0x1F600, 3}}},
        {"format13", Groups(13, {{0x4E00, 0x4E01, 7}}), {{0x4E00, 7}, {0x4E01, 7}}},
    };
    for (const auto& test : cases) {
        Bytes cmap = Cmap({{3, 1, test.subtable}});
        EXPECT_EQ(Decode(cmap), test.expected) << test.name;
        // From the end of the encoding record on, the subtable is what is cut.
        for (size_t size = 12; size < cmap.size(); ++size) {
            Mappings mappings = Decode(Bytes(cmap.begin(), cmap.begin() + size));
            for (size_t i = 0; i < mappings.size(); ++i)
                ASSERT_TRUE(mappings[i].second != 0 && (i == 0 || mappings[i - 1].first < mappings[i].first))
                    << test.name << " cut at " << size;
        }
    }
}

TEST(CmapDecoders, HostileRangesGiveAtMostOneMappingPerCodePoint) {
    // A group over every 32-bit code: glyphs past 0xFFFF and codes past U+10FFFF are dropped.
    Mappings all = Decode(Cmap({{3, 10, Groups(12, {{0, 0xFFFFFFFF, 1}})}}));
    EXPECT_EQ(all.size(), 0xFFFFu);
    all = Decode(Cmap({{3, 10, Groups(13, std::vector<std::array<uint32_t, 3>>(2000, {0, 0xFFFFFFFF, 5}))}}));
    EXPECT_EQ(all.size(), 0x110000u);
    EXPECT_EQ(all.back(), (std::pair<uint32_t, int>{0x10FFFF, 5}));
    // Overlapping groups: the first in table order holds each code, a glyph 0 too.
    Bytes overlapping = Groups(12, {{0x10, 0x10, 0}, {0x40, 0x41, 1}, {0x10, 0x11, 20}, {0x3F, 0x42, 30}});
    EXPECT_EQ(Decode(Cmap({{3, 10, overlapping}})),
              (Mappings{{0x11, 21}, {0x3F, 30}, {0x40, 1}, {0x41, 2}, {0x42, 33}}));
    // Format 4: a segment count of 0xFFFF over 20 bytes; an idRangeOffset past the end.
    Bytes format4 = Format4();
    SetU16(format4, 6, 0xFFFF);
    EXPECT_EQ(Decode(Cmap({{3, 1, Bytes(format4.begin(), format4.begin() + 20)}})), Mappings{});
    SetU16(format4, 6, 6);
    SetU16(format4, 36, 0xFFF0);
    EXPECT_EQ(Decode(Cmap({{3, 1, format4}})), (Mappings{{0x41, 1}, {0x42, 2}, {0x43, 3}}));
    // Format 2: every subheader key far past the end.
    Bytes format2 = Format2();
    for (size_t key = 6; key < 518; key += 2) SetU16(format2, key, 0xFFF8);
    EXPECT_EQ(Decode(Cmap({{3, 1, format2}})), Mappings{});
}

// ---- Encodings ----

TEST(CmapEncodings, StoredOrderWithoutVariationSequencesFoundByFirstMatchAndFailingPastTheFile) {
    FontTables tables = SampleFont();
    ErrorRecord record;
    EXPECT_EQ(VellCountFontEncodings(LoadedFont(tables).font(), &record), 0u);
    Bytes variationSequences = TableWriter().U16(14).U32(10).U32(0);
    tables["cmap"] = Cmap({{0, 3, Format6(0x41, {2})}, {0, 5, variationSequences}, {3, 10, Groups(12, {}, 0x10002)},
                           {1, 0, Format6(0x41, {2}, 17)}, {0, 3, Format6(0x41, {3})}});
    LoadedFont font(tables);
    std::vector<std::array<int32_t, 3>> listed(VellCountFontEncodings(font.font(), &record));
    for (uint32_t index = 1; index <= listed.size(); ++index) {
        auto& [platform, script, language] = listed[index - 1];
        platform = VellGetFontEncoding(font.font(), index, &script, &language, &record);
    }
    EXPECT_EQ(listed, (std::vector<std::array<int32_t, 3>>{{1, 4, 1}, {4, 11, 0x10003}, {2, 1, 18}, {1, 4, 1}}));
    EXPECT_EQ(VellFindFontEncoding(font.font(), 1, 4, 1, &record), 1u);
    EXPECT_EQ(VellFindFontEncoding(font.font(), 2, 1, 1, &record), 0u);
    EXPECT_EQ(Decode(tables["cmap"], 4), (Mappings{{0x41, 3}}));
    EXPECT_EQ(record.code, 0);
    Bytes file = BuildSfnt(tables);  // 'cmap' is the last table: cutting the file cuts it
    VellCountFontEncodings(LoadedFont(Bytes(file.begin(), file.end() - 8)).font(), &record);
    EXPECT_EQ(record.code, kVellBadTableErr);
}

// ---- The comparator ----

FontTables FontWithCmap(const std::vector<Record>& records) {
    FontTables font = SampleFont();
    font["cmap"] = Cmap(records);
    return font;
}

// Built from the identifier texts themselves, whatever they read.
std::string Heading(int32_t platform, int32_t script, int32_t language) {
    ErrorRecord record;
    return "Platform:  :\t" + VellPlatformToString(platform, &record) + "\nScript:  :\t" +
           VellScriptToString(platform, script, &record) + "\nLanguage:  :\t" +
           VellLanguageToString(platform, script, language, &record) + "\n";
}

const std::string kAdded = "\t### Added mappings (in modified font and not original font):\n\n";
const std::string kDeleted = "\n\t### Deleted mappings (in original font but not in modified font):\n\n";
const std::string kChanged =
    "\n\t### Changed mappings (char code ==> original font glyph ==> modified font glyph):\n\n";
const std::string kEnd = "\n\n### End changed cmaps:\n\n";

TEST(Cmap, MappingsAddedDeletedAndRemappedInCodeOrder) {
    FontTables original = FontWithCmap({{3, 1, Format6(0x41, {1, 2, 3, 0})}});
    FontTables modified = FontWithCmap({{3, 1, Format6(0x40, {3, 0, 2, 2, 1})}});
    EXPECT_EQ(CompareDeltas(modified, original, "cmap"),
              "### Changed cmaps:\n\n" + Heading(4, 2, 1) + kAdded + "\tU+0040 ==> 3\n\tU+0044 ==> 1\n" + kDeleted +
                  "\tU+0041 ==> 1\n" + kChanged + "\tU+0043 ==> 3 ==> 2\n" + kEnd);
}

TEST(Cmap, EncodingsOnlyOneFontHasAreListedByNameAndSameMappingsPrintNothing) {
    FontTables original = FontWithCmap({{1, 0, Format6(0x41, {1})}, {3, 1, Format6(0x41, {1})}});
    FontTables modified = FontWithCmap({{3, 1, Groups(12, {{0x41, 0x41, 1}})}, {3, 10, Format6(0x41, {2})}});
    EXPECT_EQ(CompareDeltas(modified, original, "cmap"),
              "### Added cmaps:\n\n" + Heading(4, 11, 1) + "\n### End added cmaps:\n\n### Deleted cmaps:\n\n" +
                  Heading(2, 1, 1) + "\n### End deleted cmaps:\n\n### Changed cmaps:\n\n\n### End changed cmaps:\n\n");
}

TEST(Cmap, CodesPrintAsUnicodeOnlyInUnicodeEncodings) {
    struct {
        uint16_t platformID, encodingID;
        const char* code;
    } cases[] = {{0, 3, "U+0041"}, {3, 1, "U+0041"}, {3, 10, "U+0041"}, {1, 0, "0x41"}, {3, 0, "0x41"}, {3, 2, "0x41"}};
    for (const auto& test : cases) {
        auto font = [&](uint16_t glyph) {
            return FontWithCmap({{test.platformID, test.encodingID, Format6(0x41, {glyph})}});
        };
        std::string changed = kChanged + "\t" + test.code + " ==> 3 ==> 2\n" + kEnd;
        EXPECT_TRUE(CompareDeltas(font(2), font(3), "cmap").ends_with(changed)) << test.code;
    }
}

TEST(Cmap, NamesFollowTheSwitchesAndBothGlyphsAreNamedFromTheModifiedFont) {
    FontTables original = FontWithCmap({{3, 1, Format6(0x41, {2, 3})}});
    FontTables modified = FontWithCmap({{3, 1, Format6(0x41, {3})}});
    modified["post"] = MakePost({".notdef", "space", "Aring", "B"});
    SwitchesForTest names(true, true);
    EXPECT_EQ(CompareDeltas(modified, original, "cmap"),
              "### Changed cmaps:\n\n" + Heading(4, 2, 1) + kAdded + kDeleted +
                  "\tU+0042 LATIN CAPITAL LETTER B ==> 3 (B)\n\n" + kChanged +
                  "\tU+0041 LATIN CAPITAL LETTER A ==> 2 (Aring) ==> 3 (B)\n\n" + kEnd);
}

TEST(Cmap, FrameworkFailuresEndTheComparison) {
    CapturedStream out;
    Bytes cmap = Cmap({{3, 1, Format4()}});
    TCMAPTableComparator comparator(VelmNewHandle(cmap), nullptr, VelmNewHandle(cmap), nullptr, out.file());
    EXPECT_THROW(comparator.DumpTableDeltas(), TVellCmpVellException);
}

}  // namespace
