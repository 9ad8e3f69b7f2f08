#include "tables/hdmx.h"

#include <algorithm>
#include <array>
#include <optional>

#include "VellCmpErrors.h"
#include "framework/VellGlyphs.h"

namespace {

constexpr size_t kDeviceRecordsOffset = 8;
// A device record is its pixel size and maximum width, then one width per glyph.
constexpr size_t kWidthsOffset = 2;

constexpr FieldRow kHdmxHeaderRows[] = {
    {0, FieldKind::UInt16, "Version"},
    {2, FieldKind::UInt16, "Number of device records"},
    {4, FieldKind::Int32, "Size of a device record"},
};
constexpr FieldRow kDeviceRecordRows[] = {
    {0, FieldKind::UInt8, "Pixel size"},
    {1, FieldKind::UInt8, "Maximum width"},
};
constexpr FieldRow kVersionRow = {0, FieldKind::UInt16, "Version", "version"};
constexpr FieldRow kMaxWidthRow = {1, FieldKind::UInt8, "Max width", "maxWidth"};

// The device records of one 'hdmx'. They are reached by stepping the record size
// the table states, never one computed from the glyph count, and there are only
// as many as the table holds whole: a record size of 0 makes none.
class DeviceRecords {
public:
    explicit DeviceRecords(VellView table) : fTable(table), fRecordSize(table.u32(4)) {
        fCount = fRecordSize == 0 ? 0 : table.records_that_fit(kDeviceRecordsOffset, table.u16(2), fRecordSize);
        // Pixel sizes are matched to the first record of that size, as a search
        // from the first record finds it; a pixel size is one byte, so 256 slots
        // answer every search.
        for (size_t index = fCount; index-- > 0;) fFirstOfPixelSize[PixelSize(index)] = index;
    }

    size_t count() const { return fCount; }
    VellView Record(size_t index) const {
        return fTable.sub(kDeviceRecordsOffset + index * fRecordSize, fRecordSize);
    }
    uint8_t PixelSize(size_t index) const { return Record(index).u8(0); }
    std::optional<size_t> Find(uint8_t pixelSize) const { return fFirstOfPixelSize[pixelSize]; }

private:
    VellView fTable;
    size_t fRecordSize;
    size_t fCount;
    std::array<std::optional<size_t>, 256> fFirstOfPixelSize{};
};

}  // namespace

int32_t THDMXTableDumper::DumpTableContents() {
    if (!GetTableHandle() || GetOutputFile() == nullptr) return 1;
    VellView table = GetTableView();
    DumpFieldRows(1, kHdmxHeaderRows, table);
    DeviceRecords records(table);
    for (size_t index = 0; index < records.count(); ++index) {
        VellView record = records.Record(index);
        PrintInt32Field(2, "Device record", static_cast<int32_t>(index), false, true);
        DumpFieldRows(3, kDeviceRecordRows, record);
        // A well-formed record holds a width for every glyph; a damaged one whose
        // size falls short prints only the widths it holds, so that a tiny record
        // size cannot multiply the output by the glyph count.
        VellView widths = record.sub(kWidthsOffset);
        size_t shown = std::min<size_t>(fGlyphCount, widths.size());
        for (size_t glyph = 0; glyph < shown; ++glyph)
            PrintWithComment(VellFormat("%d", widths.u8(glyph)), static_cast<int32_t>(glyph));
    }
    return 0;
}

THDMXTableComparator::THDMXTableComparator(TFontContext& modified, TFontContext& original, VellTag tag, FILE* out)
    : TTableComparator(modified, original, tag, out),
      fModifiedGlyphs(modified.GlyphCount()),
      fOriginalGlyphs(original.GlyphCount()) {}

int32_t THDMXTableComparator::DumpTableDeltas() {
    VellView modifiedTable = GetTableView();
    VellView originalTable = GetOriginalTableView();
    DeviceRecords modified(modifiedTable), original(originalTable);
    // Glyphs past the smaller font's count have no counterpart to compare with.
    uint32_t glyphsToCompare = std::min(fModifiedGlyphs, fOriginalGlyphs);

    CompareFieldRow(1, kVersionRow, modifiedTable, originalTable);
    // A pixel size only the original has is reported with the same words as one
    // only the modified font has: reports have always said "added" for both.
    auto recordValue = [](VellView record) {
        return [record](JsonWriter& writer) {
            writer.Key("value");
            writer.StartObject();
            writer.Key("maxWidth");
            writer.Uint(record.u8(1));
            writer.EndObject();
        };
    };
    for (size_t index = 0; index < modified.count(); ++index)
        if (!original.Find(modified.PixelSize(index)) &&
            ShowsDifference(DifferenceKind::Added, modified.PixelSize(index), recordValue(modified.Record(index))))
            PrintUInt8Field(1, "Pixels per em added", modified.PixelSize(index), false);
    for (size_t index = 0; index < original.count(); ++index)
        if (!modified.Find(original.PixelSize(index)) &&
            ShowsDifference(DifferenceKind::Deleted, original.PixelSize(index), recordValue(original.Record(index))))
            PrintUInt8Field(1, "Pixels per em added", original.PixelSize(index), false);

    for (size_t index = 0; index < original.count(); ++index) {
        uint8_t pixelSize = original.PixelSize(index);
        std::optional<size_t> match = modified.Find(pixelSize);
        if (!match) continue;
        VellView originalRecord = original.Record(index);
        VellView modifiedRecord = modified.Record(*match);
        PathScope pixelSizeStep(*this, pixelSize);
        if (ScopeIgnored()) continue;
        PrintUInt8Field(1, "Comparing point size", pixelSize, false);
        CompareFieldRow(2, kMaxWidthRow, modifiedRecord, originalRecord);

        VellView modifiedWidths = modifiedRecord.sub(kWidthsOffset);
        VellView originalWidths = originalRecord.sub(kWidthsOffset);
        // Past the widths both records hold, both sides read 0 and nothing can
        // differ, so a damaged record size bounds the walk as well.
        size_t glyphs = std::min<size_t>(glyphsToCompare, std::max(modifiedWidths.size(), originalWidths.size()));
        for (size_t glyph = 0; glyph < glyphs; ++glyph) {
            uint8_t newWidth = modifiedWidths.u8(glyph), oldWidth = originalWidths.u8(glyph);
            if (newWidth == oldWidth) continue;
            PathScope widths(*this, "widths");
            if (!ShowsChange(glyph, FieldKind::UInt8, newWidth, oldWidth)) continue;
            PrintUInt16Field(2, "Width change for glyph", static_cast<uint16_t>(glyph), false);
            PrintGlyphNames(static_cast<uint32_t>(glyph));
            PrintUInt8Field(3, "New width", newWidth, false);
            PrintUInt8Field(3, "Old width", oldWidth, false);
        }
    }
    return 0;
}

void THDMXTableComparator::PrintGlyphNames(uint32_t glyph) {
    PrintGlyphNameLines(GetModifiedContext()->GlyphName(glyph), GetOriginalContext()->GlyphName(glyph), "Name (new)",
                        "Name (old)");
}
