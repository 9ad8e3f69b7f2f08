#include "framework/VellItemVariationStore.h"

namespace {

// VariationRegionList: axisCount, regionCount, then the regions.
constexpr size_t kRegionCountOffset = 2;
constexpr size_t kRegionsOffset = 4;
constexpr size_t kRegionAxisBytes = 6;  // startCoord, peakCoord, endCoord

// ItemVariationData: itemCount, wordDeltaCount, regionIndexCount, regionIndexes.
constexpr size_t kItemCountOffset = 0;
constexpr size_t kRegionIndexCountOffset = 4;
constexpr size_t kRegionIndexesOffset = 6;
constexpr uint16_t kWordCountMask = 0x7FFF;

// ItemVariationStore: format, variationRegionListOffset, itemVariationDataCount,
// then the subtables' 32-bit offsets.
constexpr size_t kRegionListOffsetOffset = 2;
constexpr size_t kDataCountOffset = 6;
constexpr size_t kDataOffsetsOffset = 8;

// DeltaSetIndexMap: format, entryFormat, mapCount.
constexpr size_t kMapCountOffset = 2;
constexpr uint8_t kLongMapCountFormat = 1;

}  // namespace

VellVariationRegionList::VellVariationRegionList(VellView list) : fList(list) {
    fRegionCount = list.records_that_fit(kRegionsOffset, list.u16(kRegionCountOffset),
                                         size_t{AxisCount()} * kRegionAxisBytes);
}

VellRegionAxis VellVariationRegionList::Axis(size_t region, size_t axis) const {
    if (region >= fRegionCount || axis >= AxisCount()) return {};
    size_t at = kRegionsOffset + (region * AxisCount() + axis) * kRegionAxisBytes;
    return {fList.s16(at), fList.s16(at + 2), fList.s16(at + 4)};
}

std::vector<VellRegionAxis> VellVariationRegionList::Region(size_t region) const {
    std::vector<VellRegionAxis> axes;
    if (region >= fRegionCount) return axes;
    axes.reserve(AxisCount());
    for (size_t axis = 0; axis < AxisCount(); ++axis) axes.push_back(Axis(region, axis));
    return axes;
}

VellItemVariationData::VellItemVariationData(VellView data) : fData(data) {
    size_t regionIndexCount = data.records_that_fit(kRegionIndexesOffset, data.u16(kRegionIndexCountOffset), 2);
    fRegionIndexes.reserve(regionIndexCount);
    for (size_t i = 0; i < regionIndexCount; ++i) fRegionIndexes.push_back(data.u16(kRegionIndexesOffset + 2 * i));
    // A word count above the region index count would make rows longer than
    // their deltas; it is held to one word per region.
    fWordCount = WordDeltaCount() & kWordCountMask;
    if (fWordCount > regionIndexCount) fWordCount = regionIndexCount;
    size_t wordBytes = LongWords() ? 4 : 2;
    fRowBytes = fWordCount * wordBytes + (regionIndexCount - fWordCount) * (wordBytes / 2);
    // Rows follow the region indexes that the stored count declares, even where
    // the bytes hold fewer of them.
    size_t rowsOffset = kRegionIndexesOffset + 2 * size_t{data.u16(kRegionIndexCountOffset)};
    fItemCount = fRowBytes == 0 ? data.u16(kItemCountOffset)
                                : data.records_that_fit(rowsOffset, data.u16(kItemCountOffset), fRowBytes);
}

std::vector<int32_t> VellItemVariationData::DeltaSet(size_t inner) const {
    std::vector<int32_t> deltas;
    if (inner >= fItemCount) return deltas;
    deltas.reserve(fRegionIndexes.size());
    size_t at = kRegionIndexesOffset + 2 * size_t{fData.u16(kRegionIndexCountOffset)} + inner * fRowBytes;
    bool longWords = LongWords();
    for (size_t i = 0; i < fRegionIndexes.size(); ++i) {
        bool word = i < fWordCount;
        if (longWords) {
            deltas.push_back(word ? fData.s32(at) : fData.s16(at));
            at += word ? 4 : 2;
        } else {
            deltas.push_back(word ? fData.s16(at) : fData.s8(at));
            at += word ? 2 : 1;
        }
    }
    return deltas;
}

VellItemVariationStore::VellItemVariationStore(VellView store) : fStore(store) {
    uint32_t regionListOffset = store.u32(kRegionListOffsetOffset);
    if (regionListOffset != 0) fRegions = VellVariationRegionList(store.sub(regionListOffset));
    fDataCount = store.records_that_fit(kDataOffsetsOffset, store.u16(kDataCountOffset), 4);
}

VellItemVariationData VellItemVariationStore::Data(size_t outer) const {
    if (outer >= fDataCount) return {};
    uint32_t offset = fStore.u32(kDataOffsetsOffset + 4 * outer);
    if (offset == 0) return {};
    return VellItemVariationData(fStore.sub(offset));
}

VellDeltaSet VellItemVariationStore::DeltaSet(uint16_t outer, uint16_t inner) const {
    VellDeltaSet set;
    VellItemVariationData data = Data(outer);
    if (inner >= data.ItemCount()) return set;
    set.regionIndexes = data.RegionIndexes();
    set.deltas = data.DeltaSet(inner);
    return set;
}

VellDeltaSetIndexMap::VellDeltaSetIndexMap(VellView map) : fMap(map) {
    uint32_t count = Format() == kLongMapCountFormat ? map.u32(kMapCountOffset) : map.u16(kMapCountOffset);
    fMapCount = map.records_that_fit(EntriesOffset(), count, EntrySize());
}

VellDeltaSetIndex VellDeltaSetIndexMap::Entry(uint32_t index) const {
    if (fMapCount == 0) return {static_cast<uint16_t>(index >> 16), static_cast<uint16_t>(index & 0xFFFF)};
    if (index >= fMapCount) index = static_cast<uint32_t>(fMapCount - 1);
    size_t at = EntriesOffset() + size_t{index} * EntrySize();
    uint32_t entry = 0;
    for (size_t i = 0; i < EntrySize(); ++i) entry = entry << 8 | fMap.u8(at + i);
    size_t innerBits = InnerBitCount();
    return {static_cast<uint16_t>(entry >> innerBits), static_cast<uint16_t>(entry & ((1u << innerBits) - 1))};
}
