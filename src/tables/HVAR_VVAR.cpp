#include "tables/HVAR_VVAR.h"

#include <algorithm>

#include "tables/VariationReport.h"

namespace {

constexpr FieldRow kMetricsVariationsHeaderRows[] = {
    {0, FieldKind::Version, "Version", "version"},
};
constexpr size_t kItemVariationStoreOffset = 4;

// The delta-set index maps after the store offset, in table order: advances,
// then the two side bearings, then (in 'VVAR' alone) vertical origins. An
// advance without a map is reached implicitly; a side bearing without one has
// no deltas of its own.
struct MetricMap {
    size_t offset;
    const char* label;
    bool implicit;
};
constexpr MetricMap kHvarMaps[] = {
    {8, "Advance deltas", true},
    {12, "Left side bearing deltas", false},
    {16, "Right side bearing deltas", false},
};
constexpr MetricMap kVvarMaps[] = {
    {8, "Advance deltas", true},
    {12, "Top side bearing deltas", false},
    {16, "Bottom side bearing deltas", false},
    {20, "Vertical origin deltas", false},
};

std::span<const MetricMap> MapsOf(VellTag tag) {
    if (tag == VellMakeTag("VVAR")) return kVvarMaps;
    return kHvarMaps;
}

VellView StoreOf(VellView table) {
    uint32_t offset = table.u32(kItemVariationStoreOffset);
    return offset == 0 ? VellView() : table.sub(offset);
}

// One record per glyph: its deltas per metric, each beside its region.
VariationRecords GlyphRecords(VellView table, VellTag tag, TFontContext* font, VariationBudget& budget) {
    uint32_t glyphCount = font != nullptr ? font->GlyphCount() : 0;
    VellItemVariationStore store(StoreOf(table));
    struct Map {
        VellDeltaSetIndexMap map;
        const MetricMap* metric;
    };
    std::vector<Map> maps;
    for (const MetricMap& metric : MapsOf(tag)) {
        uint32_t offset = table.u32(metric.offset);
        if (offset != 0) maps.push_back({VellDeltaSetIndexMap(table.sub(offset)), &metric});
        else if (metric.implicit) maps.push_back({VellDeltaSetIndexMap(), &metric});
    }
    VariationRecords records;
    for (uint32_t glyph = 0; glyph < glyphCount && !maps.empty(); ++glyph) {
        std::string name = "Glyph " + std::to_string(glyph);
        VariationRecord record{name, GlyphHeading(font, glyph), {}};
        for (const Map& map : maps) {
            VellDeltaSetIndex index = map.map.Entry(glyph);
            VellDeltaSet set = store.DeltaSet(index.outer, index.inner);
            if (!budget.Spend(1 + set.deltas.size())) return records;
            record.Field(map.metric->label, ReachedDeltasText(set));
        }
        records.push_back(std::move(record));
    }
    return records;
}


}  // namespace

int32_t THVARTableDumper::DumpTableContents() {
    if (!GetTableHandle() || GetOutputFile() == nullptr) return 1;
    VellView table = GetTableView();
    DumpFieldRows(1, kMetricsVariationsHeaderRows, table);
    DumpItemVariationStore(*this, StoreOf(table), FontAxisTags(GetContext()));
    VariationBudget budget(table.size());
    DumpVariationRecords(*this, 1, GlyphRecords(table, GetTableTag(), GetContext(), budget));
    if (budget.Spent()) PrintBudgetSpent(*this);
    return 0;
}

int32_t THVARTableComparator::DumpTableDeltas() {
    if (!HasBothTables()) return 1;
    VellView modified = GetTableView(), original = GetOriginalTableView();
    CompareFieldRows(1, kMetricsVariationsHeaderRows, modified, original);
    CompareItemVariationStores(*this, StoreOf(modified), FontAxisTags(GetModifiedContext()), StoreOf(original),
                               FontAxisTags(GetOriginalContext()));
    VariationBudget budget(modified.size() + original.size());
    CompareVariationRecords(*this, "glyph deltas", GlyphRecords(modified, GetTableTag(), GetModifiedContext(), budget),
                            GlyphRecords(original, GetTableTag(), GetOriginalContext(), budget));
    if (budget.Spent()) PrintBudgetSpent(*this);
    return 0;
}
