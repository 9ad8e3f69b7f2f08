// 'cmap': the framework's encodings and subtable decoders, and the comparator's
// report of added, deleted and changed encodings and mappings.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>

#include "VellCmpErrors.h"
#include "framework/VellEncodings.h"
#include "framework/VellIdentifiers.h"
#include "support/Harness.h"
#include "tables/cmap.h"

namespace {

using ::testing::EndsWith;
using Mappings = std::vector<std::pair<uint32_t, int>>;
using Groups = std::vector<std::array<uint32_t, 3>>;  // first code, last code, glyph
struct Record {
    uint16_t platformID, encodingID;
    Bytes subtable;
};

// A 'cmap' whose records point at their subtables, stored in record order.
Bytes Cmap(const std::vector<Record>& records) {
    TableWriter header;
    header.U16(0).U16(records.size());
    size_t offset = 4 + 8 * records.size();
    for (const Record& record : records)
        header.U16(record.platformID).U16(record.encodingID).U32(offset), offset += record.subtable.size();
    Bytes cmap = header;
    for (const Record& record : records) cmap.insert(cmap.end(), record.subtable.begin(), record.subtable.end());
    return cmap;
}

Bytes Format6(uint16_t firstCode, const std::vector<uint16_t>& glyphs, uint16_t language = 0) {
    TableWriter table;
    table.U16(6).U16(0).U16(language).U16(firstCode).U16(glyphs.size());
    for (uint16_t glyph : glyphs) table.U16(glyph);
    return table;
}

// Format 12 or 13.
Bytes GroupsFormat(uint16_t format, const Groups& groups, uint32_t language = 0) {
    TableWriter table;
    table.U16(format).U16(0).U32(0).U32(language).U32(groups.size());
    for (const auto& group : groups) table.U32(group[0]).U32(group[1]).U32(group[2]);
    return table;
}

Mappings Decode(const Bytes& cmap) {
    ErrorRecord record;
    uint16_t format;
    Mappings mappings;
    for (auto [code, glyph] : VellMakeCGArrayFromCMAPTable(VelmNewHandle(cmap), 1, &format, &record))
        mappings.emplace_back(code, glyph);
    EXPECT_EQ(record.code, 0);
    return mappings;
}

TEST(CmapDecoders, EachFormatGivesItsMappingsInCodeOrderAndCutShortStaysInsideTheTable) {
    Bytes format0 = TableWriter().U16(0).U16(0).U16(0).Zeros(256);
    format0[6 + 0x41] = 3;
    // One-byte codes 0xA1 and 0xA2 through subheader 0 (after the two-byte codes in
    // table order); lead byte 0x81 through subheader 1, whose delta of 5 is not added
    // to its glyph 0.
    TableWriter format2;
    format2.U16(2).U16(0).U16(0);
    for (uint32_t high = 0; high < 256; ++high) format2.U16(high == 0x81 ? 8 : 0);
    format2.U16(0xA1).U16(2).U16(0).U16(10).U16(0x40).U16(2).U16(5).U16(6).U16(1).U16(2).U16(3).U16(0);
    // 0x41-0x43 by delta; 0x61-0x62 through the glyph array (delta 1, glyph 0 stays
    // unmapped); the closing 0xFFFF segment maps to glyph 0.
    Bytes format4 = TableWriter().U16(4).U16(0).U16(0).U16(6).Zeros(6).U16(0x43).U16(0x62).U16(0xFFFF).U16(0)
        .U16(0x41).U16(0x61).U16(0xFFFF).U16(0xFFC0).U16(1).U16(1).U16(0).U16(4).U16(0).U16(7).U16(0);
    Bytes format8 = TableWriter().U16(8).U16(0).U32(0).U32(0).Zeros(8192).U32(1).U32(0x10000).U32(0x10001).U32(9);
    Bytes format10 = TableWriter().U16(10).U16(0).U32(0).U32(0).U32(0x10400).U32(2).U16(4).U16(5);
    const std::pair<Bytes, Mappings> cases[] = {
        {format0, {{0x41, 3}}}, {format2, {{0xA1, 1}, {0xA2, 2}, {0x8140, 8}}},
        {format4, {{0x41, 1}, {0x42, 2}, {0x43, 3}, {0x61, 8}}}, {Format6(0x30, {5, 0, 6}), {{0x30, 5}, {0x32, 6}}},
        {format8, {{0x10000, 9}, {0x10001, 10}}}, {format10, {{0x10400, 4}, {0x10401, 5}}},
        {GroupsFormat(12, {{0x20, 0x21, 1}, {0x1F600, 0x1F600, 3}}), {{0x20, 1}, {0x21, 2}, {0x1F600, 3}}},
        {GroupsFormat(13, {{0x4E00, 0x4E01, 7}}), {{0x4E00, 7}, {0x4E01, 7}}},
    };
    for (const auto& [subtable, expected] : cases) {
        Bytes cmap = Cmap({{3, 1, subtable}});
        EXPECT_EQ(Decode(cmap), expected) << "format " << +subtable[1];
        // Cut anywhere after the encoding record, the subtable is read only as far as it goes.
        for (size_t size = 12; size < cmap.size(); ++size) Decode(Bytes(cmap.begin(), cmap.begin() + size));
    }
    // Every subheader key of format 2 far past the end.
    Bytes farKeys = format2;
    for (size_t key = 6; key < 518; key += 2) SetU16(farKeys, key, 0xFFF8);
    EXPECT_EQ(Decode(Cmap({{3, 1, farKeys}})), Mappings{});
}

TEST(CmapDecoders, HostileRangesGiveAtMostOneMappingPerCodePoint) {
    // A group over every 32-bit code: glyphs past 0xFFFF and codes past U+10FFFF are dropped.
    EXPECT_EQ(Decode(Cmap({{3, 10, GroupsFormat(12, {{0, 0xFFFFFFFF, 1}})}})).size(), 0xFFFFu);
    Mappings all = Decode(Cmap({{3, 10, GroupsFormat(13, Groups(2000, {0, 0xFFFFFFFF, 5}))}}));
    EXPECT_EQ(all.size(), 0x110000u);
    EXPECT_EQ(all.back(), (std::pair<uint32_t, int>{0x10FFFF, 5}));
    // Overlapping groups: the first in table order holds each code, a glyph 0 too.
    Groups overlapping = {{0x10, 0x10, 0}, {0x40, 0x41, 1}, {0x10, 0x11, 20}, {0x3F, 0x42, 30}};
    EXPECT_EQ(Decode(Cmap({{3, 10, GroupsFormat(12, overlapping)}})),
              (Mappings{{0x11, 21}, {0x3F, 30}, {0x40, 1}, {0x41, 2}, {0x42, 33}}));
}

FontTables FontWithCmap(const std::vector<Record>& records) {
    FontTables font = SampleFont();
    font["cmap"] = Cmap(records);
    return font;
}

// The doubled colon after each label is the report's own; the texts are the identifiers' own.
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

TEST(Cmap, LoneEncodingsByNameThenMappingsAddedDeletedAndRemappedInCodeOrder) {
    // Encodings are one above the record's IDs and the subtable's language. (0, 3)
    // keeps its mappings in another format, and is compared through its first
    // record only; variation sequences are no encoding.
    FontTables original = FontWithCmap(
        {{1, 0, Format6(0x41, {1}, 17)}, {3, 1, Format6(0x41, {1, 2, 3, 0})}, {0, 3, Format6(0x41, {1})}});
    FontTables modified = FontWithCmap({{3, 1, Format6(0x40, {3, 0, 2, 2, 1})}, {0, 5, TableWriter().U16(14).Zeros(8)},
                                        {3, 10, GroupsFormat(12, {{0x41, 0x41, 2}}, 0x10002)},
                                        {0, 3, GroupsFormat(12, {{0x41, 0x41, 1}})}, {0, 3, Format6(0x41, {3})}});
    EXPECT_EQ(CompareDeltas(modified, original, "cmap"),
              "### Added cmaps:\n\n" + Heading(4, 11, 0x10003) + "\n### End added cmaps:\n\n### Deleted cmaps:\n\n" +
                  Heading(2, 1, 18) + "\n### End deleted cmaps:\n\n### Changed cmaps:\n\n" + Heading(4, 2, 1) +
                  kAdded + "\tU+0040 ==> 3\n\tU+0044 ==> 1\n" + kDeleted + "\tU+0041 ==> 1\n" + kChanged +
                  "\tU+0043 ==> 3 ==> 2\n" + kEnd);
}

TEST(Cmap, CodesPrintAsUnicodeOnlyInUnicodeEncodings) {
    for (auto [platformID, encodingID, code] :
         {std::tuple{0, 3, "U+0041"}, {3, 10, "U+0041"}, {1, 0, "0x41"}, {3, 0, "0x41"}}) {
        auto font = [platform = platformID, encoding = encodingID](uint16_t glyph) {
            return FontWithCmap({{uint16_t(platform), uint16_t(encoding), Format6(0x41, {glyph})}});
        };
        EXPECT_THAT(CompareDeltas(font(2), font(3), "cmap"),
                    EndsWith(kChanged + '\t' + code + " ==> 3 ==> 2\n" + kEnd));
    }
}

TEST(Cmap, NamesFollowTheSwitchesAndBothGlyphsAreNamedFromTheModifiedFont) {
    FontTables original = FontWithCmap({{3, 1, Format6(0x41, {2, 3})}});
    FontTables modified = FontWithCmap({{3, 1, Format6(0x41, {3})}});
    modified["post"] = MakePost({".notdef", "space", "Aring", "B"});
    SwitchesForTest names(true, true);
    // With -p the glyph field ends the line, and the mapping's own line end leaves an empty one.
    EXPECT_EQ(CompareDeltas(modified, original, "cmap"),
              "### Changed cmaps:\n\n" + Heading(4, 2, 1) + kAdded + kDeleted +
                  "\tU+0042 LATIN CAPITAL LETTER B ==> 3 (B)\n\n" + kChanged +
                  "\tU+0041 LATIN CAPITAL LETTER A ==> 2 (Aring) ==> 3 (B)\n\n" + kEnd);
}

TEST(Cmap, ACmapPastTheEndOfTheFileEndsTheComparison) {
    Bytes cmap = Cmap({{3, 1, Format6(0x41, {1})}}), file = BuildSfnt(FontWithCmap({{3, 1, Format6(0x41, {1})}}));
    LoadedFont whole(file), cut(Bytes(file.begin(), file.end() - 8));  // 'cmap' is the last table
    CapturedStream out;
    // Built on copies of the table, as the registry's context would refuse the cut font at once.
    TCMAPTableComparator comparator(VelmNewHandle(cmap), VelmNewHandle(cmap), out.file());
    comparator.SetModifiedFont(cut.font());
    comparator.SetOriginalFont(whole.font());
    EXPECT_THROW(comparator.DumpTableDeltas(), TVellCmpVellException);
    EXPECT_EQ(out.Text(), "");
}

}  // namespace
