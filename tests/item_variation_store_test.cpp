// Item variation stores, the delta containers of the variable tables: region
// lists, delta rows in their four widths, and the delta-set index maps that
// reach them, each bounded by its bytes.
#include <gtest/gtest.h>

#include "framework/VellItemVariationStore.h"
#include "support/FontBuilder.h"

namespace {

VellView View(const Bytes& bytes) { return VellView(bytes.data(), bytes.size()); }

// Two axes, two regions: (-1, -1, 0 | 0, 0.5, 1) and (0, 1, 1 | -0.25, 0, 0.25).
Bytes RegionList() {
    return TableWriter()
        .U16(2).U16(2)
        .U16(0xC000).U16(0xC000).U16(0).U16(0).U16(0x2000).U16(0x4000)
        .U16(0).U16(0x4000).U16(0x4000).U16(0xF000).U16(0).U16(0x1000);
}

TEST(ItemVariationStore, RegionsAreReadPerAxisAndCappedByTheirBytes) {
    Bytes list = RegionList();
    VellVariationRegionList regions{View(list)};
    EXPECT_EQ(regions.AxisCount(), 2u);
    ASSERT_EQ(regions.RegionCount(), 2u);
    EXPECT_EQ(regions.Region(0), (std::vector<VellRegionAxis>{{-0x4000, -0x4000, 0}, {0, 0x2000, 0x4000}}));
    EXPECT_EQ(regions.Axis(1, 1), (VellRegionAxis{-0x1000, 0, 0x1000}));
    EXPECT_EQ(regions.Axis(2, 0), VellRegionAxis{});
    EXPECT_TRUE(regions.Region(2).empty());

    list.resize(list.size() - 1);  // the second region's last coordinate cut short
    EXPECT_EQ(VellVariationRegionList(View(list)).RegionCount(), 1u);
    SetU16(list, 2, 0xFFFF);
    EXPECT_EQ(VellVariationRegionList(View(list)).RegionCount(), 1u);
}

// Rows in each width: wordDeltaCount's low bits say how many deltas lead as
// words, its LONG_WORDS flag doubles both widths.
TEST(ItemVariationStore, DeltaRowsInEveryWidth) {
    struct Case {
        const char* name;
        uint16_t itemCount, wordDeltaCount;
        std::vector<uint16_t> regionIndexes;
        Bytes rows;
        size_t expectedItems, expectedWords;
        std::vector<std::vector<int32_t>> expected;
    };
    const Case cases[] = {
        {"one word then bytes", 2, 0x0001, {0, 1, 2},
         TableWriter().U16(0xFF38).U8(0x05).U8(0xFB).U16(0x0100).U8(0).U8(0x7F), 2, 1,
         {{-200, 5, -5}, {256, 0, 127}}},
        {"long words then words", 1, 0x8001, {1, 0},
         TableWriter().U32(0xFFFE7960).U16(0x8000), 1, 1, {{-100000, -32768}}},
        {"all bytes", 1, 0x0000, {0, 1}, TableWriter().U8(0x80).U8(1), 1, 0, {{-128, 1}}},
        {"more words than regions are held to one per region", 1, 0x0005, {0},
         TableWriter().U16(0x0102), 1, 1, {{0x0102}}},
        {"a count past its rows keeps the rows held whole", 9, 0x0000, {0, 1},
         TableWriter().U8(1).U8(2).U8(3), 1, 0, {{1, 2}}},
        {"no regions: every row is empty", 3, 0x0000, {}, {}, 3, 0, {{}, {}, {}}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        TableWriter writer;
        writer.U16(c.itemCount).U16(c.wordDeltaCount).U16(c.regionIndexes.size());
        for (uint16_t index : c.regionIndexes) writer.U16(index);
        Bytes data = writer;
        data.insert(data.end(), c.rows.begin(), c.rows.end());
        VellItemVariationData subtable{View(data)};
        EXPECT_EQ(subtable.RegionIndexes(), c.regionIndexes);
        EXPECT_EQ(subtable.WordCount(), c.expectedWords);
        EXPECT_EQ(subtable.LongWords(), (c.wordDeltaCount & 0x8000) != 0);
        ASSERT_EQ(subtable.ItemCount(), c.expectedItems);
        for (size_t item = 0; item < c.expected.size(); ++item) EXPECT_EQ(subtable.DeltaSet(item), c.expected[item]);
        EXPECT_TRUE(subtable.DeltaSet(c.expectedItems).empty());
    }
}

TEST(ItemVariationStore, DeltaSetsByOuterAndInnerIndex) {
    // format 1, region list at 20, three subtables: one at 36, a null one, one past the end.
    Bytes store = TableWriter().U16(1).U32(20).U16(3).U32(36).U32(0).U32(0xFFFFFF00);
    Bytes regions = TableWriter().U16(1).U16(2).U16(0).U16(0x4000).U16(0x4000).U16(0xC000).U16(0xC000).U16(0);
    Bytes data = TableWriter().U16(2).U16(0).U16(2).U16(1).U16(0).U8(3).U8(4).U8(0xFD).U8(0xFC);
    store.insert(store.end(), regions.begin(), regions.end());
    ASSERT_EQ(store.size(), 36u);
    store.insert(store.end(), data.begin(), data.end());

    VellItemVariationStore ivs{View(store)};
    EXPECT_EQ(ivs.Format(), 1u);
    EXPECT_EQ(ivs.Regions().RegionCount(), 2u);
    EXPECT_EQ(ivs.DataCount(), 3u);
    EXPECT_EQ(ivs.DeltaSet(0, 1), (VellDeltaSet{{1, 0}, {-3, -4}}));
    const std::pair<uint16_t, uint16_t> nothing[] = {{0, 2}, {1, 0}, {2, 0}, {3, 0}};
    for (auto [outer, inner] : nothing) EXPECT_EQ(ivs.DeltaSet(outer, inner), VellDeltaSet{}) << outer << "," << inner;

    SetU16(store, 6, 0xFFFF);  // more subtables than offsets
    EXPECT_EQ(VellItemVariationStore(View(store)).DataCount(), (store.size() - 8) / 4);
}

// entryFormat's low nibble is the inner index's bit count less one, bits 4-5
// the entry size less one; format 1 has a 32-bit mapCount.
TEST(ItemVariationStore, DeltaSetIndexMapEntries) {
    struct Case {
        const char* name;
        Bytes map;
        std::vector<std::pair<uint32_t, VellDeltaSetIndex>> entries;
        size_t expectedCount;
    };
    const Case cases[] = {
        {"format 0, one byte, four inner bits", TableWriter().U16(0x0003).U16(2).U8(0x25).U8(0x0F), 
         {{0, {2, 5}}, {1, {0, 15}}, {7, {0, 15}}}, 2},
        {"format 0, two bytes, eight inner bits", TableWriter().U8(0).U8(0x17).U16(1).U16(0x0304),
         {{0, {3, 4}}}, 1},
        {"format 1, four bytes, sixteen inner bits", TableWriter().U8(1).U8(0x3F).U32(2).U32(0x00010002).U32(0x00000009),
         {{0, {1, 2}}, {1, {0, 9}}, {0xFFFFFFFF, {0, 9}}}, 2},
        {"format 1, three bytes, a count past its entries", TableWriter().U8(1).U8(0x2F).U32(0x7FFFFFFF).U8(1).U8(0).U8(3),
         {{0, {1, 3}}, {5, {1, 3}}}, 1},
        {"no map: the index itself", {}, {{0x00020003, {2, 3}}, {7, {0, 7}}}, 0},
        {"a map without entries: the index itself", TableWriter().U8(0).U8(0).U16(0), {{4, {0, 4}}}, 0},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        VellDeltaSetIndexMap map{View(c.map)};
        EXPECT_EQ(map.MapCount(), c.expectedCount);
        for (const auto& [index, expected] : c.entries) {
            VellDeltaSetIndex entry = map.Entry(index);
            EXPECT_EQ(entry, expected) << index << " -> " << entry.outer << "," << entry.inner;
        }
    }
}

}  // namespace
