#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>

#include "VellDumpFonts.h"
#include "framework/VellLookups.h"
#include "support/Harness.h"
#include "tables/prop.h"

namespace {

using ::testing::HasSubstr;
using Values = std::vector<uint16_t>;

// A binary-search lookup and whatever follows its units; units of size 0 claim 65535.
Values BinarySearch(uint16_t format, uint16_t unitSize, Values units) {
    units.insert(units.begin(), {format, unitSize, uint16_t(unitSize ? units.size() * 2 / unitSize : 0xFFFF), 0, 0, 0});
    return units;
}

Values Expand(const Bytes& prop, uint32_t glyphCount) {
    ErrorRecord record;
    VellHandle properties = VellMakeArrayFromPropTable(VellView(prop.data(), prop.size()), glyphCount, &record);
    VellView block = VelmView(properties);
    EXPECT_EQ(block.size(), 2 * size_t{glyphCount});
    Values values;
    for (uint32_t glyph = 0; glyph < glyphCount; ++glyph) values.push_back(block.u16(2 * size_t{glyph}));
    return values;
}

constexpr uint16_t D = 0x00AA;  // the default property

TEST(PropLookup, EachFormatGivesEveryGlyphItsValueOrTheDefaultPropertyReadingOnlyWhatTheLookupHolds) {
    const struct { Bytes prop; Values expected; } kCases[] = {
        {MakeProp(0, D, {0, 1, 2, 3}), {D, D, D, D, D, D}},  // no lookup
        {MakeProp(1, D, {0, 1, 2, 3}), {1, 2, 3, D, D, D}},  // a simple array cut short
        // Overlapping segments: the first one to cover a glyph gives its value.
        {MakeProp(1, D, BinarySearch(2, 6, {2, 1, 7, 4, 2, 8, 0xFFFF, 0xFFFF, 0})), {D, 7, 7, 8, 8, D}},
        // Values 24 bytes into the lookup; the second segment's lie outside it.
        {MakeProp(1, D, BinarySearch(4, 6, {3, 2, 24, 5, 5, 200, 5, 6})), {D, D, 5, 6, D, D}},
        {MakeProp(1, D, BinarySearch(6, 4, {4, 9, 1, 3, 4, 10})), {D, 3, D, D, 9, D}},
        {MakeProp(1, D, {8, 3, 5, 1, 2, 3, 4, 5}), {D, D, D, 1, 2, 3}},  // a trimmed array
        {MakeProp(1, D, {10, 1, 2, 3}), {D, D, D, D, D, D}},             // an unknown format
        // Units too small for a segment; 65535 units of size 0; 65535 stated, one present; last glyph below the first.
        {MakeProp(1, D, BinarySearch(2, 2, {2, 1, 7})), {D, D, D, D}},
        {MakeProp(1, D, BinarySearch(2, 0, {})), Values(0xFFFF, D)},
        {MakeProp(1, D, {2, 6, 0xFFFF, 0, 0, 0, 2, 1, 7}), {D, 7, 7, D}},
        {MakeProp(1, D, BinarySearch(2, 6, {1, 2, 7})), {D, D, D, D}},
    };
    for (const auto& [prop, expected] : kCases) {
        uint32_t glyphs = static_cast<uint32_t>(expected.size());
        EXPECT_EQ(Expand(prop, glyphs), expected);
        for (size_t length = 0; length < prop.size(); ++length)
            Expand(Bytes(prop.begin(), prop.begin() + length), glyphs);  // cut short anywhere, still one per glyph
    }
}

TEST(PropLookup, SegmentsOverEveryGlyphTakeBoundedTimeAndTooManyGlyphsAreRefused) {
    // Ten thousand segment arrays, each over every glyph, at most 65535 glyphs each.
    Values segments;
    for (int i = 0; i < 10000; ++i) segments.insert(segments.end(), {0xFFFF, 0, static_cast<uint16_t>(i % 3 * 2)});
    auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(Expand(MakeProp(1, D, BinarySearch(4, 6, segments)), 0xFFFF)[0], 4);  // the lookup's format word
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(5));
    ErrorRecord record;
    EXPECT_EQ(VellMakeArrayFromPropTable(VellView(), 0x10001, &record), nullptr);
    EXPECT_EQ(record.code, kVellParamErr);
}

// SampleFont (.notdef, space, A, B) with a 'prop' of one value per glyph.
FontTables WithProp(Values properties, uint16_t defaultProperty = 0) {
    properties.insert(properties.begin(), 0);  // a simple array
    FontTables font = SampleFont();
    font["prop"] = MakeProp(1, defaultProperty, properties);
    return font;
}

TEST(Prop, OnlyFieldsThatChangedPrintAndGlyphsOnlyOneFontHasAreListedWithTheirOwnFontsNames) {
    // Without -p the bracketing glyph's line is left open; glyph 0 with an offset of -1 is bracketed by 65535.
    // Glyph 3 changes only reserved bits; glyph 4, the modified font's alone, has the most negative offset.
    FontTables modified = WithProp({0x0F01, 1, 0x9082, 0x0071, 0x0801}), original = WithProp({1, 1, 1, 1});
    modified["maxp"] = MakeMaxp(5);
    modified["post"] = MakePost({".notdef", "space", "A", "Bee", "C"});
    EXPECT_EQ(CompareDeltas(modified, original, "prop"),
              "\tGlyph:\t0\n\t\tName:\t.notdef\n\t\tProperties (mod vs. orig):\t\n"
              "\t\t\tRLBracketingGlyphOffset (mod ):\t-1\n\t\t\tRLBracketingGlyph (mod ):\t65535"
              "\t\t\tRLBracketingGlyphOffset (orig):\t0\n\tGlyph:\t2\n\t\tName:\tA\n\t\tProperties (mod vs. orig):\t\n"
              "\t\t\tisFloater (mod ):\tTRUE\n\t\t\tisFloater (orig):\tFALSE\n"
              "\t\t\tuseRLBracketingGlyph (mod ):\tTRUE\n\t\t\tuseRLBracketingGlyph (orig):\tFALSE\n"
              "\t\t\tglyphConnectsOnRight (mod ):\tTRUE\n\t\t\tglyphConnectsOnRight (orig):\tFALSE\n"
              "\t\t\tdirectionClass (mod ):\t2\n\t\t\tdirectionClass (orig):\t1\n"
              "\tGlyph:\t3\n\t\tName (mod ):\tBee\n\t\tName (orig ):\tB\n\t\tProperties (mod vs. orig):\t\n"
              "\n\n\tValues for added glyphs:\n\tGlyph:\t4\n\t\tName (mod ):\tC\n\t\tOffset:\t\n"
              "\t\t\tisFloater:\tFALSE\n\t\t\tisLeftTopHanger:\tFALSE\n\t\t\tisRightBottomHanger:\tFALSE\n"
              "\t\t\tuseRLBracketingGlyph:\tFALSE\n\t\t\tRLBracketingGlyphOffset:\t-8\n\t\t\tRLBracketingGlyph:\t65532"
              "\t\t\tglyphConnectsOnRight:\tFALSE\n\t\t\tdirectionClass:\t1\n");
    EXPECT_THAT(CompareDeltas(original, modified, "prop"),
                HasSubstr("\n\n\tValues for deleted glyphs:\n\tGlyph:\t4\n\t\tName (orig ):\tC\n\t\tOffset:\t\n"));
    // A font without 'post' gives no name; with neither, no name line is printed.
    original.Remove("post");
    EXPECT_THAT(CompareDeltas(modified, original, "prop"), HasSubstr("\tGlyph:\t3\n\t\tName (mod ):\tBee\n\t\tProp"));
    modified.Remove("post");
    EXPECT_THAT(CompareDeltas(modified, original, "prop"), HasSubstr("\tGlyph:\t3\n\t\tProperties"));
}

TEST(Prop, DumperBracketsTheDefaultPropertyFromGlyph65535) {
    SwitchesForTest switches(true, false);
    LoadedFont font(WithProp({1, 1, 1, 1}, 0x0100));
    CapturedStream out;
    ErrorRecord record;
    TFontContext context(font.font());
    MakeFontTableDumper(context, VellMakeTag("prop"), out.file(), &record)->DumpTableContents();
    EXPECT_THAT(out.Text(), testing::AllOf(HasSubstr("\tFormat:\t1\n\tDefault property:\t\n\t\tisFloater:\tFALSE\n"),
                                           HasSubstr("\t\tRLBracketingGlyph:\t0 (.notdef U+FFFF)\n\t\tglyphConnects"),
                                           HasSubstr("\tGlyph:\t3 (B U+FFFF)\n\t\tProperty:\t\n\t\t\tisFloater:\t")));
}

}  // namespace
