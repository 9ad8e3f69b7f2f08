#include "tables/STAT.h"

#include <algorithm>

#include "tables/VariationReport.h"

namespace {

constexpr FieldRow kStatHeaderRows[] = {
    {0, FieldKind::Version, "Version", "version"},
    {4, FieldKind::UInt16, "Design axis size", "designAxisSize"},
    {6, FieldKind::UInt16, "Design axis count", "designAxisCount"},
    {12, FieldKind::UInt16, "Axis value count", "axisValueCount"},
};
constexpr size_t kDesignAxisSizeOffset = 4;
constexpr size_t kDesignAxisCountOffset = 6;
constexpr size_t kDesignAxesOffset = 8;
constexpr size_t kAxisValueCountOffset = 12;
constexpr size_t kAxisValueOffsetsOffset = 14;
constexpr size_t kElidedFallbackNameOffset = 18;
constexpr uint32_t kVersionWithElidedName = 0x00010001;  // 1.0 has no elidedFallbackNameID

// AxisRecord: axisTag, axisNameID, axisOrdering.
constexpr size_t kAxisRecordBytes = 8;
// AxisValueAxisFormat 4's AxisValueRecord: axisIndex, value.
constexpr size_t kAxisValueRecordBytes = 6;

// The design axes, as many as the table holds, read at designAxisSize apart.
struct DesignAxes {
    size_t start, size, count;
    explicit DesignAxes(VellView stat)
        : start(stat.u32(kDesignAxesOffset)),
          size(std::max<size_t>(stat.u16(kDesignAxisSizeOffset), kAxisRecordBytes)),
          count(stat.records_that_fit(start, stat.u16(kDesignAxisCountOffset), size)) {}
    VellTag Tag(VellView stat, size_t axis) const { return stat.tag(start + axis * size); }
};

VariationRecords DesignAxisRecords(VellView stat, VellFontRef font) {
    DesignAxes axes(stat);
    VariationRecords records;
    for (size_t axis = 0; axis < axes.count; ++axis) {
        VellView record = stat.sub(axes.start + axis * axes.size, axes.size);
        std::string tag = TagText(record.tag(0));
        records.push_back(VariationRecord{tag, "Design axis " + tag, {}}
                              .NameField("Name", font, record.u16(4))
                              .Field("Ordering", std::to_string(record.u16(6))));
    }
    MakeKeysUnique(records);
    return records;
}

std::string DesignAxisText(VellView stat, const DesignAxes& axes, uint16_t axisIndex) {
    if (axisIndex < axes.count) return TagText(axes.Tag(stat, axisIndex));
    return "axis " + std::to_string(axisIndex);
}

// An axis value is keyed by the axes it names and its name, so that a moved value
// or range is a change of that value, and a renamed one a deletion and an addition.
VariationRecords AxisValueRecords(VellView stat, VellFontRef font) {
    DesignAxes axes(stat);
    size_t offsetsStart = stat.u32(kAxisValueOffsetsOffset);
    size_t count = stat.records_that_fit(offsetsStart, stat.u16(kAxisValueCountOffset), 2);
    VariationRecords records;
    for (size_t index = 0; index < count; ++index) {
        VellView value = stat.sub(offsetsStart + stat.u16(offsetsStart + 2 * index));
        uint16_t format = value.u16(0);
        // Every format but 4 names one axis at axisIndex; all keep flags and
        // valueNameID at the same place.
        uint16_t flags = value.u16(4), nameID = value.u16(6);
        VariationRecord record;
        record.Field("Format", std::to_string(format)).Field("Flags", HexText(flags)).NameField("Name", font, nameID);
        std::string axisTags;
        if (format == 4) {
            size_t axisCount = value.records_that_fit(8, value.u16(2), kAxisValueRecordBytes);
            for (size_t k = 0; k < axisCount; ++k) {
                size_t at = 8 + k * kAxisValueRecordBytes;
                std::string tag = DesignAxisText(stat, axes, value.u16(at));
                axisTags += (axisTags.empty() ? "" : ", ") + tag;
                record.Field("Value " + tag, FixedText(value.s32(at + 2)));
            }
        } else if (format >= 1 && format <= 3) {
            axisTags = DesignAxisText(stat, axes, value.u16(2));
            record.Field("Value", FixedText(value.s32(8)));
            if (format == 2) {
                record.Field("Range minimum", FixedText(value.s32(12)));
                record.Field("Range maximum", FixedText(value.s32(16)));
            }
            if (format == 3) record.Field("Linked value", FixedText(value.s32(12)));
        } else {
            axisTags = "unknown format";
        }
        std::string name = NameOnly(font, nameID);
        if (name.empty()) name = "name " + std::to_string(nameID);
        record.key = axisTags + " \"" + name + "\"";
        record.heading = "Axis value " + record.key;
        records.push_back(std::move(record));
    }
    MakeKeysUnique(records);
    return records;
}

VariationField ElidedFallbackName(VellView stat, VellFontRef font) {
    constexpr const char* kLabel = "Elided fallback name";
    if (stat.u32(0) < kVersionWithElidedName) return {kLabel, "none", true, {}, false};
    return NameValue(kLabel, font, stat.u16(kElidedFallbackNameOffset));
}

}  // namespace

int32_t TSTATTableDumper::DumpTableContents() {
    if (!GetTableHandle() || GetOutputFile() == nullptr) return 1;
    VellView table = GetTableView();
    DumpFieldRows(1, kStatHeaderRows, table);
    VariationField elidedName = ElidedFallbackName(table, GetFont());
    PrintStringField(1, elidedName.label, elidedName.value);
    DumpVariationRecords(*this, 1, DesignAxisRecords(table, GetFont()));
    DumpVariationRecords(*this, 1, AxisValueRecords(table, GetFont()));
    return 0;
}

int32_t TSTATTableComparator::DumpTableDeltas() {
    if (!HasBothTables()) return 1;
    VellView modified = GetTableView(), original = GetOriginalTableView();
    CompareFieldRows(1, kStatHeaderRows, modified, original);
    CompareField(*this, 1, ElidedFallbackName(modified, GetModifiedFont()),
                 ElidedFallbackName(original, GetOriginalFont()));
    CompareVariationRecords(*this, "design axes", DesignAxisRecords(modified, GetModifiedFont()),
                            DesignAxisRecords(original, GetOriginalFont()));
    CompareVariationRecords(*this, "axis values", AxisValueRecords(modified, GetModifiedFont()),
                            AxisValueRecords(original, GetOriginalFont()));
    return 0;
}
