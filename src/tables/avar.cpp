#include "tables/avar.h"

#include "tables/VariationReport.h"

namespace {

constexpr FieldRow kAvarHeaderRows[] = {
    {0, FieldKind::Version, "Version", "version"},
    {6, FieldKind::UInt16, "Axis count", "axisCount"},
};
constexpr size_t kAxisCountOffset = 6;
constexpr size_t kSegmentMapsOffset = 8;
constexpr size_t kAxisValueMapBytes = 4;  // fromCoordinate, toCoordinate
constexpr uint16_t kVersionWithVariations = 2;

// Where each axis's SegmentMaps record starts, and where the maps end; a count of
// pairs past the table's end is cut to what it holds.
struct SegmentMaps {
    std::vector<size_t> starts;
    size_t end = kSegmentMapsOffset;

    explicit SegmentMaps(VellView avar) {
        size_t axisCount = avar.records_that_fit(kSegmentMapsOffset, avar.u16(kAxisCountOffset), 2);
        for (size_t axis = 0; axis < axisCount && end < avar.size(); ++axis) {
            starts.push_back(end);
            end += 2 + avar.records_that_fit(end + 2, avar.u16(end), kAxisValueMapBytes) * kAxisValueMapBytes;
        }
    }
};

// Pairs are labelled by their from coordinate, so an inserted pair leaves the others unchanged.
VariationRecords SegmentMapRecords(VellView avar, const std::vector<VellTag>& axisTags) {
    SegmentMaps maps(avar);
    VariationRecords records;
    for (size_t axis = 0; axis < maps.starts.size(); ++axis) {
        size_t at = maps.starts[axis];
        std::string tag = AxisText(axisTags, axis);
        VariationRecord& record = records.emplace_back(VariationRecord{tag, "Segment map " + tag, {}});
        size_t pairs = avar.records_that_fit(at + 2, avar.u16(at), kAxisValueMapBytes);
        for (size_t pair = 0; pair < pairs; ++pair) {
            size_t mapAt = at + 2 + pair * kAxisValueMapBytes;
            record.Field(F2Dot14Text(avar.s16(mapAt)) + " to", F2Dot14Text(avar.s16(mapAt + 2)));
        }
    }
    MakeKeysUnique(records);
    return records;
}

// Version 2: axisIndexMapOffset and varStoreOffset follow the segment maps.
struct AvarVariations {
    VellDeltaSetIndexMap axisIndexMap;
    VellView store;
    bool present = false;

    explicit AvarVariations(VellView avar) {
        if (avar.u16(0) < kVersionWithVariations) return;
        present = true;
        size_t at = SegmentMaps(avar).end;
        if (uint32_t offset = avar.u32(at); offset != 0) axisIndexMap = VellDeltaSetIndexMap(avar.sub(offset));
        if (uint32_t offset = avar.u32(at + 4); offset != 0) store = avar.sub(offset);
    }
};

// Each axis's deltas, reached through the axis index map (or the axis index itself).
VariationRecords AxisDeltaRecords(VellView avar, const std::vector<VellTag>& axisTags) {
    AvarVariations variations(avar);
    VariationRecords records;
    if (!variations.present) return records;
    VellItemVariationStore store(variations.store);
    size_t axisCount = SegmentMaps(avar).starts.size();
    for (size_t axis = 0; axis < axisCount; ++axis) {
        std::string tag = AxisText(axisTags, axis);
        VellDeltaSetIndex index = variations.axisIndexMap.Entry(static_cast<uint32_t>(axis));
        records.push_back(VariationRecord{tag, "Axis deltas " + tag, {}}
                              .Note("Delta-set index", std::to_string(index.outer) + ", " + std::to_string(index.inner))
                              .Field("Deltas", ReachedDeltasText(store.DeltaSet(index.outer, index.inner))));
    }
    MakeKeysUnique(records);
    return records;
}

}  // namespace

int32_t TAVARTableDumper::DumpTableContents() {
    if (!GetTableHandle() || GetOutputFile() == nullptr) return 1;
    VellView table = GetTableView();
    std::vector<VellTag> axisTags = FontAxisTags(GetContext());
    DumpFieldRows(1, kAvarHeaderRows, table);
    DumpVariationRecords(*this, 1, SegmentMapRecords(table, axisTags));
    AvarVariations variations(table);
    if (!variations.present) return 0;
    DumpVariationRecords(*this, 1, AxisDeltaRecords(table, axisTags));
    DumpItemVariationStore(*this, variations.store, axisTags);
    return 0;
}

int32_t TAVARTableComparator::DumpTableDeltas() {
    if (!HasBothTables()) return 1;
    VellView modified = GetTableView(), original = GetOriginalTableView();
    std::vector<VellTag> modifiedAxes = FontAxisTags(GetModifiedContext()),
                         originalAxes = FontAxisTags(GetOriginalContext());
    CompareFieldRows(1, kAvarHeaderRows, modified, original);
    CompareVariationRecords(*this, "segment maps", SegmentMapRecords(modified, modifiedAxes),
                            SegmentMapRecords(original, originalAxes));
    CompareVariationRecords(*this, "axis deltas", AxisDeltaRecords(modified, modifiedAxes),
                            AxisDeltaRecords(original, originalAxes));
    AvarVariations modifiedVariations(modified), originalVariations(original);
    if (modifiedVariations.present || originalVariations.present)
        CompareItemVariationStores(*this, modifiedVariations.store, modifiedAxes, originalVariations.store,
                                   originalAxes);
    return 0;
}
