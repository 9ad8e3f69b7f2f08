#include "tables/fvar.h"

#include <algorithm>

#include "tables/VariationReport.h"

namespace {

constexpr FieldRow kFvarHeaderRows[] = {
    {0, FieldKind::Version, "Version", "version"},
    {8, FieldKind::UInt16, "Axis count", "axisCount"},
    {10, FieldKind::UInt16, "Axis size", "axisSize"},
    {12, FieldKind::UInt16, "Instance count", "instanceCount"},
    {14, FieldKind::UInt16, "Instance size", "instanceSize"},
};
constexpr size_t kAxesArrayOffset = 4;
constexpr size_t kAxisCountOffset = 8;
constexpr size_t kAxisSizeOffset = 10;
constexpr size_t kInstanceCountOffset = 12;
constexpr size_t kInstanceSizeOffset = 14;

// VariationAxisRecord: axisTag, minValue, defaultValue, maxValue, flags, axisNameID.
constexpr size_t kAxisRecordBytes = 20;
constexpr size_t kDefaultValueOffset = 8;
// InstanceRecord: subfamilyNameID, flags, coordinates[axisCount], then
// postScriptNameID when instanceSize leaves room for it.
constexpr size_t kCoordinatesOffset = 4;

// Where the axes and instances lie, with counts capped by the table's bytes.
// Records shorter than their layout are read at the layout's size.
struct FvarLayout {
    size_t axesStart, axisSize, axisCount;
    size_t instancesStart, instanceSize, instanceCount;
    bool hasPostScriptNames;

    explicit FvarLayout(VellView fvar) {
        axesStart = fvar.u16(kAxesArrayOffset);
        axisSize = std::max<size_t>(fvar.u16(kAxisSizeOffset), kAxisRecordBytes);
        axisCount = fvar.records_that_fit(axesStart, fvar.u16(kAxisCountOffset), axisSize);
        // Instances follow the axes that the header declares.
        instancesStart = axesStart + size_t{fvar.u16(kAxisCountOffset)} * axisSize;
        size_t coordinatesEnd = kCoordinatesOffset + 4 * axisCount;
        instanceSize = std::max<size_t>(fvar.u16(kInstanceSizeOffset), coordinatesEnd);
        hasPostScriptNames = fvar.u16(kInstanceSizeOffset) >= coordinatesEnd + 2;
        instanceCount = fvar.records_that_fit(instancesStart, fvar.u16(kInstanceCountOffset), instanceSize);
    }
};

VariationRecords AxisRecords(VellView fvar, VellFontRef font) {
    FvarLayout layout(fvar);
    VariationRecords records;
    for (size_t axis = 0; axis < layout.axisCount; ++axis) {
        VellView record = fvar.sub(layout.axesStart + axis * layout.axisSize, layout.axisSize);
        std::string tag = TagText(record.tag(0));
        records.push_back(VariationRecord{tag, "Axis " + tag, {}}
                              .Field("Minimum", FixedText(record.s32(4)))
                              .Field("Default", FixedText(record.s32(kDefaultValueOffset)))
                              .Field("Maximum", FixedText(record.s32(12)))
                              .Field("Flags", HexText(record.u16(16)))
                              .NameField("Name", font, record.u16(18)));
    }
    MakeKeysUnique(records);
    return records;
}

// Coordinates are labelled by their axis tags, so that they too are matched by axis.
VariationRecords InstanceRecords(VellView fvar, VellFontRef font) {
    FvarLayout layout(fvar);
    std::vector<VellTag> tags;
    for (size_t axis = 0; axis < layout.axisCount; ++axis)
        tags.push_back(fvar.tag(layout.axesStart + axis * layout.axisSize));
    VariationRecords records;
    for (size_t instance = 0; instance < layout.instanceCount; ++instance) {
        VellView record = fvar.sub(layout.instancesStart + instance * layout.instanceSize, layout.instanceSize);
        uint16_t nameID = record.u16(0);
        std::string name = NameOnly(font, nameID);
        if (name.empty()) name = "name " + std::to_string(nameID);
        VariationRecord& entry = records.emplace_back(VariationRecord{name, "Instance \"" + name + "\"", {}});
        entry.NameField("Subfamily name", font, nameID).Field("Flags", HexText(record.u16(2)));
        for (size_t axis = 0; axis < layout.axisCount; ++axis) {
            int32_t coordinate = record.s32(kCoordinatesOffset + 4 * axis);
            entry.Field(AxisText(tags, axis), FixedText(coordinate));
            size_t defaultAt = layout.axesStart + axis * layout.axisSize + kDefaultValueOffset;
            entry.fields.back().sameWhenAbsent = coordinate == fvar.s32(defaultAt);
        }
        if (layout.hasPostScriptNames)
            entry.NameField("PostScript name", font, record.u16(kCoordinatesOffset + 4 * layout.axisCount));
    }
    MakeKeysUnique(records);
    return records;
}

}  // namespace

int32_t TFVARTableDumper::DumpTableContents() {
    if (!GetTableHandle() || GetOutputFile() == nullptr) return 1;
    VellView table = GetTableView();
    DumpFieldRows(1, kFvarHeaderRows, table);
    DumpVariationRecords(*this, 1, AxisRecords(table, GetFont()));
    DumpVariationRecords(*this, 1, InstanceRecords(table, GetFont()));
    return 0;
}

int32_t TFVARTableComparator::DumpTableDeltas() {
    if (!HasBothTables()) return 1;
    VellView modified = GetTableView(), original = GetOriginalTableView();
    CompareFieldRows(1, kFvarHeaderRows, modified, original);
    CompareVariationRecords(*this, "axes", AxisRecords(modified, GetModifiedFont()),
                            AxisRecords(original, GetOriginalFont()));
    CompareVariationRecords(*this, "instances", InstanceRecords(modified, GetModifiedFont()),
                            InstanceRecords(original, GetOriginalFont()));
    return 0;
}
