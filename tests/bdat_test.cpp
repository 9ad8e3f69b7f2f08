#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "VellCmpErrors.h"
#include "support/Harness.h"
#include "tables/bdat.h"

namespace {

using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::Not;

// An index subtable: the glyphs it covers, its header, and what follows the header.
struct IndexSubtable {
    uint16_t first, last, indexFormat, imageFormat;
    uint32_t imageData;
    Bytes body;
};
struct Strike {
    uint8_t ppem;
    std::vector<IndexSubtable> subtables;
};

// Strike records, then each strike's index subtable array followed by its subtables.
Bytes MakeBloc(const std::vector<Strike>& strikes) {
    TableWriter records;
    records.U32(0x00020000).U32(static_cast<uint32_t>(strikes.size()));
    Bytes arrays;
    for (const Strike& strike : strikes) {
        size_t arrayOffset = 8 + 48 * strikes.size() + arrays.size();
        records.U32(static_cast<uint32_t>(arrayOffset)).U32(0).U32(static_cast<uint32_t>(strike.subtables.size()));
        records.Zeros(32).U8(strike.ppem).U8(strike.ppem).U8(1).U8(0);
        TableWriter array, subtables;
        for (const IndexSubtable& subtable : strike.subtables) {
            array.U16(subtable.first).U16(subtable.last);
            array.U32(static_cast<uint32_t>(8 * strike.subtables.size() + subtables.bytes().size()));
            subtables.U16(subtable.indexFormat).U16(subtable.imageFormat).U32(subtable.imageData);
            for (uint8_t byte : subtable.body) subtables.U8(byte);
        }
        arrays.insert(arrays.end(), array.bytes().begin(), array.bytes().end());
        arrays.insert(arrays.end(), subtables.bytes().begin(), subtables.bytes().end());
    }
    Bytes bloc = records;
    bloc.insert(bloc.end(), arrays.begin(), arrays.end());
    return bloc;
}

Bytes Offsets32(std::initializer_list<uint32_t> offsets) {
    TableWriter body;
    for (uint32_t offset : offsets) body.U32(offset);
    return body;
}

// SampleFont (four glyphs) whose strike of 12 pixels places each bitmap, glyphs
// 1 on, one after the other from imageData in 'bdat'.
FontTables WithBitmaps(const std::vector<Bytes>& bitmaps, uint32_t imageData = 4) {
    Bytes bdat = TableWriter().U32(0x00020000).Zeros(imageData - 4);
    std::vector<uint32_t> offsets = {0};
    for (const Bytes& bitmap : bitmaps) {
        bdat.insert(bdat.end(), bitmap.begin(), bitmap.end());
        offsets.push_back(offsets.back() + static_cast<uint32_t>(bitmap.size()));
    }
    TableWriter body;
    for (uint32_t offset : offsets) body.U32(offset);
    FontTables font = SampleFont();
    font["bdat"] = bdat;
    font["bloc"] = MakeBloc({{12, {{1, static_cast<uint16_t>(bitmaps.size()), 1, 1, imageData, body}}}});
    return font;
}

std::string BitmapDeltas(FontTables modified, FontTables original) {
    LoadedFont modifiedFont(modified), originalFont(original);
    CapturedStream out;
    TBDATTableComparator comparator(modifiedFont.font(), VelmNewHandle(modified["bdat"]), originalFont.font(),
                                    VelmNewHandle(original["bdat"]), out.file());
    comparator.DumpTableDeltas();
    return out.Text();
}

std::vector<TGlyphBitmapLocation> Locations(const FontTables& font) {
    LoadedFont loaded(font);
    return TBDATTableComparator::BuildLocationList(loaded.font());
}

TEST(BdatLocations, EachIndexFormatLocatesItsBitmapsSortedByUnsignedOffset) {
    FontTables font = SampleFont();
    font["maxp"] = MakeMaxp(9);
    font["bloc"] = MakeBloc({{12,
                              {{1, 2, 1, 1, 100, Offsets32({0, 3, 7})},
                               {3, 4, 2, 5, 10, Offsets32({5, 0x01020304, 0x05060708})},
                               {5, 5, 3, 1, 200, TableWriter().U16(0).U16(2)},
                               {6, 6, 4, 1, 300, {}},
                               {7, 7, 5, 1, 300, {}},
                               {8, 8, 2, 5, 0x80000000, Offsets32({1})}}}});
    std::vector<std::tuple<uint32_t, uint32_t, uint16_t>> found;  // offset, size, glyph
    for (const TGlyphBitmapLocation& location : Locations(font))
        found.emplace_back(location.offset, location.size, location.glyph);
    EXPECT_EQ(found, (decltype(found){{0, 0, 6}, {0, 0, 7}, {10, 5, 3}, {15, 5, 4}, {100, 3, 1}, {103, 4, 2},
                                      {200, 2, 5}, {0x80000000, 1, 8}}));
    EXPECT_EQ(std::pair(Locations(font)[2].metrics1, Locations(font)[2].metrics2), std::pair(0x01020304u, 0x05060708u));
    EXPECT_EQ(Locations(SampleFont()).size(), 0u);  // no 'bloc'
}

class Bdat : public testing::Test {
protected:
    const Bytes kSmall = {0xAA, 0xBB, 0xCC};
    FontTables original = WithBitmaps({kSmall, {0x11, 0x22}});
};

TEST_F(Bdat, AMovedBitmapIsReportedWithBothLocationsAndBytes) {
    EXPECT_EQ(BitmapDeltas(WithBitmaps({kSmall}, 6), WithBitmaps({kSmall})),
              "Table version:\t2.0\n\tIndex:\t0\n"
              "\t\tOld data:\n\t\t\tPoint size:\t12\n\t\t\tGlyph index:\t1\n\t\t\tOffset:\t0x00000004\n"
              "\t\t\tSize:\t3\n\t\t\tIndex format:\t1\n\t\t\tImage format:\t1\n\t\t\tData:\tAA BB CC \n"
              "\t\tNew data:\n\t\t\tPoint size:\t12\n\t\t\tGlyph index:\t1\n\t\t\tOffset:\t0x00000006\n"
              "\t\t\tSize:\t3\n\t\t\tIndex format:\t1\n\t\t\tImage format:\t1\n\t\t\tData:\tAA BB CC \n");
}

TEST_F(Bdat, BytesAreComparedAndListedOnlyBelow256) {
    std::string changed = BitmapDeltas(WithBitmaps({kSmall, {0x11, 0x23}}), original);
    EXPECT_THAT(changed, ::testing::StartsWith("Table version:\t2.0\n\tIndex:\t1\n"));
    EXPECT_THAT(changed, HasSubstr("\t\t\tData:\t11 22 \n\t\tNew data:\n"));
    EXPECT_THAT(changed, EndsWith("\t\t\tData:\t11 23 \n"));
    // A bitmap of 256 bytes or more leaves its data line open for the next line.
    EXPECT_THAT(BitmapDeltas(WithBitmaps({Bytes(300, 1)}), WithBitmaps({kSmall})),
                EndsWith("\t\t\tData:\tAA BB CC \n\t\tNew data:\n\t\t\tPoint size:\t12\n\t\t\tGlyph index:\t1\n"
                         "\t\t\tOffset:\t0x00000004\n\t\t\tSize:\t300\n\t\t\tIndex format:\t1\n"
                         "\t\t\tImage format:\t1\n\t\t\tData:\t"));
    EXPECT_THAT(BitmapDeltas(WithBitmaps({Bytes(301, 1)}), WithBitmaps({Bytes(300, 1)})),
                HasSubstr("\t\t\tData:\t\t\tNew data:\n"));
    EXPECT_EQ(BitmapDeltas(WithBitmaps({Bytes(300, 1)}), WithBitmaps({Bytes(300, 2)})), "Table version:\t2.0\n");
}

TEST_F(Bdat, AnExtraStrikeShiftsThePositionsAndEntriesPastTheOtherListAreSilent) {
    FontTables modified = original;
    modified["bloc"] = MakeBloc({{10, {{1, 2, 1, 1, 4, Offsets32({0, 3, 5})}}},
                                 {12, {{1, 2, 1, 1, 9, Offsets32({0, 3, 5})}}}});
    std::string deltas = BitmapDeltas(modified, original);
    EXPECT_THAT(deltas, HasSubstr("\tIndex:\t0\n\t\tOld data:\n\t\t\tPoint size:\t12\n"));
    EXPECT_THAT(deltas, HasSubstr("\tIndex:\t1\n\t\tOld data:\n\t\t\tPoint size:\t12\n"));
    EXPECT_THAT(deltas, HasSubstr("\t\tNew data:\n\t\t\tPoint size:\t10\n"));
    EXPECT_THAT(deltas, Not(HasSubstr("Index:\t2")));
}

TEST(BdatLocations, MorePlacementsThanStrikesTimesGlyphsFailWithParamErr) {
    const std::vector<Strike> kTooMany[] = {
        {{12, {{0, 0xFFFF, 2, 1, 4, Offsets32({1})}}}},  // the 16-bit glyph counter wraps
        {{12, {{0, 3, 2, 1, 4, Offsets32({1})}, {0, 0, 2, 1, 4, Offsets32({1})}}}},
    };
    for (const std::vector<Strike>& strikes : kTooMany) {
        FontTables font = WithBitmaps({{1}});
        font["bloc"] = MakeBloc(strikes);
        try {
            Locations(font);
            ADD_FAILURE() << "no failure";
        } catch (const TVellCmpOSException& failure) {
            EXPECT_EQ(failure.GetStatus(), -50);
        }
        // Through the registry, which builds the bitmap comparator, the comparison ends there.
        int32_t code = 0;
        EXPECT_THAT(DiffReport(font, WithBitmaps({{2}}), &code), EndsWith("\n\t'bdat'\n"));
        EXPECT_EQ(code, kVellCmpAlreadyReported);
    }
}

TEST(BdatLocations, TruncatedAndHostileBlocStayInsideTheirTables) {
    // At most one entry per glyph, or refused by the same bound.
    auto boundedOrRefused = [](const FontTables& font) {
        try {
            return Locations(font).size() <= 4;
        } catch (const TVellCmpOSException& failure) {
            return failure.GetStatus() == -50;
        }
    };
    FontTables font = WithBitmaps({{1, 2, 3}, {4}, {5, 6}});
    const Bytes bloc = font["bloc"];
    for (size_t length = 0; length < bloc.size(); ++length) {
        font["bloc"] = Bytes(bloc.begin(), bloc.begin() + length);
        EXPECT_TRUE(boundedOrRefused(font)) << length;
    }
    // Strike and subtable counts of four billion; array and subtable offsets past the end.
    for (size_t at : {4, 16, 8, 60}) {
        font["bloc"] = bloc;
        SetU32(font["bloc"], at, 0xFFFFFFFF);
        EXPECT_TRUE(boundedOrRefused(font)) << at;
    }
    // A bitmap past the end of 'bdat' reads as zeros.
    FontTables far = WithBitmaps({{0, 0}, {4}, {5, 6}});
    SetU32(far["bloc"], 56 + 8 + 4, 0xFFFFFFF0);
    EXPECT_THAT(BitmapDeltas(far, WithBitmaps({{0, 0}, {4}, {5, 6}})),
                HasSubstr("\t\t\tOffset:\t0xFFFFFFF0\n\t\t\tSize:\t2\n\t\t\tIndex format:\t1\n\t\t\tImage format:\t1\n"
                          "\t\t\tData:\t00 00 \n"));
}

}  // namespace
