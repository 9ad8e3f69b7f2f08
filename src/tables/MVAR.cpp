#include "tables/MVAR.h"

#include <algorithm>

#include "tables/VariationReport.h"

namespace {

constexpr FieldRow kMvarHeaderRows[] = {
    {0, FieldKind::Version, "Version", "version"},
    {6, FieldKind::UInt16, "Value record size", "valueRecordSize"},
    {8, FieldKind::UInt16, "Value record count", "valueRecordCount"},
};
constexpr size_t kValueRecordSizeOffset = 6;
constexpr size_t kValueRecordCountOffset = 8;
constexpr size_t kItemVariationStoreOffset = 10;
constexpr size_t kValueRecordsOffset = 12;
// ValueRecord: valueTag, deltaSetOuterIndex, deltaSetInnerIndex.
constexpr size_t kValueRecordBytes = 8;

VellView StoreOf(VellView mvar) {
    uint16_t offset = mvar.u16(kItemVariationStoreOffset);
    return offset == 0 ? VellView() : mvar.sub(offset);
}

VariationRecords ValueRecords(VellView mvar) {
    VellItemVariationStore store(StoreOf(mvar));
    size_t size = std::max<size_t>(mvar.u16(kValueRecordSizeOffset), kValueRecordBytes);
    size_t count = mvar.records_that_fit(kValueRecordsOffset, mvar.u16(kValueRecordCountOffset), size);
    VariationRecords records;
    for (size_t index = 0; index < count; ++index) {
        size_t at = kValueRecordsOffset + index * size;
        std::string tag = TagText(mvar.tag(at));
        uint16_t outer = mvar.u16(at + 4), inner = mvar.u16(at + 6);
        records.push_back(VariationRecord{tag, "Value " + tag, {}}
                              .Note("Delta-set index", std::to_string(outer) + ", " + std::to_string(inner))
                              .Field("Deltas", ReachedDeltasText(store.DeltaSet(outer, inner))));
    }
    MakeKeysUnique(records);
    return records;
}

}  // namespace

int32_t TMVARTableDumper::DumpTableContents() {
    if (!GetTableHandle() || GetOutputFile() == nullptr) return 1;
    VellView table = GetTableView();
    DumpFieldRows(1, kMvarHeaderRows, table);
    DumpVariationRecords(*this, 1, ValueRecords(table));
    DumpItemVariationStore(*this, StoreOf(table), FontAxisTags(GetContext()));
    return 0;
}

int32_t TMVARTableComparator::DumpTableDeltas() {
    if (!HasBothTables()) return 1;
    VellView modified = GetTableView(), original = GetOriginalTableView();
    CompareFieldRows(1, kMvarHeaderRows, modified, original);
    CompareVariationRecords(*this, "value records", ValueRecords(modified), ValueRecords(original));
    CompareItemVariationStores(*this, StoreOf(modified), FontAxisTags(GetModifiedContext()), StoreOf(original),
                               FontAxisTags(GetOriginalContext()));
    return 0;
}
