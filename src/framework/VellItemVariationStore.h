// Vell item variation stores: the structures that 'HVAR', 'VVAR', 'MVAR', 'avar'
// version 2, 'GDEF' and the other variable tables share to hold their deltas.
// Every count is capped by what the bytes hold, so a hostile store yields fewer
// regions or items, never a read outside its table.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "framework/VellView.h"

// One axis of a variation region: F2Dot14 start, peak and end coordinates.
struct VellRegionAxis {
    int16_t start = 0;
    int16_t peak = 0;
    int16_t end = 0;
    bool operator==(const VellRegionAxis&) const = default;
};

// A VariationRegionList: axisCount, then regionCount regions of one
// VellRegionAxis per axis.
class VellVariationRegionList {
public:
    VellVariationRegionList() = default;
    explicit VellVariationRegionList(VellView list);

    uint16_t AxisCount() const { return fList.u16(0); }
    // The regions whose axes the list holds whole.
    size_t RegionCount() const { return fRegionCount; }
    VellRegionAxis Axis(size_t region, size_t axis) const;
    std::vector<VellRegionAxis> Region(size_t region) const;

private:
    VellView fList;
    size_t fRegionCount = 0;
};

// An ItemVariationData subtable: itemCount delta sets (rows), each with one delta
// per region index; the first wordCount deltas of a row are 16-bit (32-bit when
// the LONG_WORDS flag 0x8000 of wordDeltaCount is set), the rest 8-bit (16-bit).
class VellItemVariationData {
public:
    VellItemVariationData() = default;
    explicit VellItemVariationData(VellView data);

    // The delta sets that the bytes hold whole.
    size_t ItemCount() const { return fItemCount; }
    // wordDeltaCount as stored, the LONG_WORDS flag included.
    uint16_t WordDeltaCount() const { return fData.u16(2); }
    // How many deltas of a row are words: the stored count without its flag, at
    // most one per region index.
    size_t WordCount() const { return fWordCount; }
    bool LongWords() const { return (WordDeltaCount() & kLongWords) != 0; }
    const std::vector<uint16_t>& RegionIndexes() const { return fRegionIndexes; }
    // The deltas of one item, one per region index; empty past ItemCount().
    std::vector<int32_t> DeltaSet(size_t inner) const;

    static constexpr uint16_t kLongWords = 0x8000;

private:
    VellView fData;
    std::vector<uint16_t> fRegionIndexes;
    size_t fWordCount = 0;
    size_t fRowBytes = 0;
    size_t fItemCount = 0;
};

// The deltas an (outer, inner) index reaches, each beside the region it applies in.
struct VellDeltaSet {
    std::vector<uint16_t> regionIndexes;
    std::vector<int32_t> deltas;
    bool operator==(const VellDeltaSet&) const = default;
};

// An ItemVariationStore: format, the region list, and itemVariationDataCount
// subtables addressed by outer index.
class VellItemVariationStore {
public:
    VellItemVariationStore() = default;
    explicit VellItemVariationStore(VellView store);

    bool empty() const { return fStore.empty(); }
    uint16_t Format() const { return fStore.u16(0); }
    const VellVariationRegionList& Regions() const { return fRegions; }
    // The subtables whose offsets the store holds; a null offset is an empty one.
    size_t DataCount() const { return fDataCount; }
    VellItemVariationData Data(size_t outer) const;
    // The delta set of item inner of subtable outer; empty when either is out of range.
    VellDeltaSet DeltaSet(uint16_t outer, uint16_t inner) const;

private:
    VellView fStore;
    VellVariationRegionList fRegions;
    size_t fDataCount = 0;
};

// An (outer, inner) pair: which ItemVariationData, and which delta set in it.
struct VellDeltaSetIndex {
    uint16_t outer = 0;
    uint16_t inner = 0;
    bool operator==(const VellDeltaSetIndex&) const = default;
};

// A DeltaSetIndexMap: format 0 (16-bit mapCount) or 1 (32-bit mapCount), then
// mapCount entries of entryFormat's size whose low bits are the inner index.
class VellDeltaSetIndexMap {
public:
    VellDeltaSetIndexMap() = default;
    explicit VellDeltaSetIndexMap(VellView map);

    bool empty() const { return fMap.empty(); }
    uint8_t Format() const { return fMap.u8(0); }
    uint8_t EntryFormat() const { return fMap.u8(1); }
    size_t EntrySize() const { return ((EntryFormat() & kMapEntrySizeMask) >> 4) + 1; }
    size_t InnerBitCount() const { return (EntryFormat() & kInnerIndexBitCountMask) + 1; }
    // The entries the bytes hold whole.
    size_t MapCount() const { return fMapCount; }
    // The entry for index: an index past the last entry takes the last one; with
    // no map, or a map without entries, the index itself is the pair (implicit
    // mapping: outer from its high 16 bits, inner from its low 16).
    VellDeltaSetIndex Entry(uint32_t index) const;

    static constexpr uint8_t kInnerIndexBitCountMask = 0x0F;
    static constexpr uint8_t kMapEntrySizeMask = 0x30;

private:
    size_t EntriesOffset() const { return Format() == 1 ? 6 : 4; }

    VellView fMap;
    size_t fMapCount = 0;
};
