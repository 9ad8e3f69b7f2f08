#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "VellCmpErrors.h"
#include "support/Harness.h"
#include "tables/bdat.h"

namespace {

using ::testing::EndsWith;
using ::testing::HasSubstr;

// SampleFont (four glyphs) whose 12-pixel strike places each bitmap, glyphs 1 on, in turn from imageData in 'bdat'.
FontTables WithBitmaps(const std::vector<Bytes>& bitmaps, uint32_t imageData = 4) {
    TableWriter bdat;
    bdat.U32(0x00020000).Zeros(imageData - 4);
    std::vector<uint32_t> offsets = {0};
    for (const Bytes& bitmap : bitmaps)
        offsets.push_back(static_cast<uint32_t>(bdat.Append(bitmap).bytes().size() - imageData));
    FontTables font = SampleFont();
    font["bdat"] = bdat;
    font["bloc"] = MakeBloc({{12, 1, static_cast<uint16_t>(bitmaps.size()), 1, 1, imageData, offsets}});
    return font;
}

std::string BitmapDeltas(FontTables modified, FontTables original) {
    LoadedFont modifiedFont(modified), originalFont(original);
    TFontContext modifiedContext(modifiedFont.font()), originalContext(originalFont.font());
    CapturedStream out;
    TBDATTableComparator(modifiedContext, originalContext, VellMakeTag("bdat"), out.file()).DumpTableDeltas();
    return out.Text();
}

std::vector<TGlyphBitmapLocation> Locations(const FontTables& font) {
    return TBDATTableComparator::BuildLocationList(LoadedFont(font).font());
}

TEST(BdatLocations, EachIndexFormatLocatesItsBitmapsSortedByUnsignedOffset) {
    FontTables font = SampleFont();
    font["maxp"] = MakeMaxp(9);
    font["bloc"] = MakeBloc({{12, 1, 2, 1, 1, 100, {0, 3, 7}},
                             {12, 3, 4, 2, 5, 10, {5, 0x01020304, 0x05060708}},  // image size, big metrics
                             {12, 5, 5, 3, 1, 200, {2}},                         // 16-bit offsets 0 and 2
                             {12, 6, 6, 4, 1, 300, {}},
                             {12, 7, 7, 5, 1, 300, {}},
                             {12, 8, 8, 2, 5, 0x80000000, {1}}});
    std::vector<std::tuple<uint32_t, uint32_t, uint16_t>> found;  // offset, size, glyph
    for (const TGlyphBitmapLocation& location : Locations(font))
        found.emplace_back(location.offset, location.size, location.glyph);
    EXPECT_EQ(found, (decltype(found){{0, 0, 6}, {0, 0, 7}, {10, 5, 3}, {15, 5, 4}, {100, 3, 1}, {103, 4, 2},
                                      {200, 2, 5}, {0x80000000, 1, 8}}));
}

const Bytes kSmall = {0xAA, 0xBB, 0xCC};

TEST(Bdat, BitmapsAreComparedPositionByPositionInOffsetOrderWithBothLocations) {
    EXPECT_EQ(BitmapDeltas(WithBitmaps({kSmall}, 6), WithBitmaps({kSmall})),
              "Table version:\t2.0\n\tIndex:\t0\n"
              "\t\tOld data:\n\t\t\tPoint size:\t12\n\t\t\tGlyph index:\t1\n\t\t\tOffset:\t0x00000004\n"
              "\t\t\tSize:\t3\n\t\t\tIndex format:\t1\n\t\t\tImage format:\t1\n\t\t\tData:\tAA BB CC \n"
              "\t\tNew data:\n\t\t\tPoint size:\t12\n\t\t\tGlyph index:\t1\n\t\t\tOffset:\t0x00000006\n"
              "\t\t\tSize:\t3\n\t\t\tIndex format:\t1\n\t\t\tImage format:\t1\n\t\t\tData:\tAA BB CC \n");
    // An extra strike shifts the positions; those past the other font's list are silent.
    FontTables modified = WithBitmaps({kSmall, {0x11, 0x22}});
    modified["bloc"] = MakeBloc({{10, 1, 2, 1, 1, 4, {0, 3, 5}}, {12, 1, 2, 1, 1, 9, {0, 3, 5}}});
    EXPECT_THAT(BitmapDeltas(modified, WithBitmaps({kSmall, {0x11, 0x22}})),
                testing::AllOf(HasSubstr("\tIndex:\t1\n\t\tOld data:\n\t\t\tPoint size:\t12\n"),
                               testing::Not(HasSubstr("Index:\t2"))));
}

TEST(Bdat, BytesAreComparedAndListedOnlyBelow256AndReadAsZerosPastTheTable) {
    EXPECT_THAT(BitmapDeltas(WithBitmaps({kSmall, {0x11, 0x23}}), WithBitmaps({kSmall, {0x11, 0x22}})),
                EndsWith("\t\t\tData:\t11 23 \n"));
    // A bitmap of 256 bytes or more is compared by location alone, and leaves its data line open for the next.
    EXPECT_EQ(BitmapDeltas(WithBitmaps({Bytes(256, 1)}), WithBitmaps({Bytes(256, 2)})), "Table version:\t2.0\n");
    EXPECT_THAT(BitmapDeltas(WithBitmaps({Bytes(255, 1)}), WithBitmaps({Bytes(256, 1)})),
                testing::AllOf(HasSubstr("\t\t\tData:\t\t\tNew data:\n"), EndsWith(" 01 01 \n")));
    FontTables far = WithBitmaps({{1, 2}});
    SetU32(far["bloc"], 56 + 8 + 4, 0xFFFFFFF0);  // imageDataOffset
    EXPECT_THAT(BitmapDeltas(far, WithBitmaps({{1, 2}})), EndsWith("\t\t\tImage format:\t1\n\t\t\tData:\t00 00 \n"));
}

TEST(BdatLocations, HostileBlocStaysInsideItsTableAndPlacesNoMoreThanStrikesTimesGlyphs) {
    FontTables font = WithBitmaps({{1, 2, 3}, {4}, {5, 6}});
    const Bytes bloc = font["bloc"];
    // A range past the glyph count, and one to 0xFFFF, whose 16-bit glyph counter wraps, fail with paramErr;
    // through the registry, which builds the bitmap comparator, the comparison ends there.
    for (uint16_t last : {4, 0xFFFF}) {
        font["bloc"] = MakeBloc({{12, 0, last, 2, 1, 4, {1}}});
        EXPECT_THAT([&] { Locations(font); },
                    testing::Throws<TVellCmpOSException>(testing::Property(&TVellCmpOSException::GetStatus, -50)));
        int32_t code = 0;
        EXPECT_THAT(DiffReport(font, WithBitmaps({{2}}), &code), EndsWith("\n\t'bdat'\n"));
        EXPECT_EQ(code, kVellCmpAlreadyReported);
    }
    // Strike and subtable counts of four billion; array and subtable offsets past the end: at most one entry per
    // glyph, or refused by the same bound.
    for (size_t at : {4, 16, 8, 60}) {
        font["bloc"] = bloc;
        SetU32(font["bloc"], at, 0xFFFFFFFF);
        try {
            EXPECT_LE(Locations(font).size(), 4u);
        } catch (const TVellCmpOSException& failure) {
            EXPECT_EQ(failure.GetStatus(), -50);
        }
    }
}

}  // namespace
