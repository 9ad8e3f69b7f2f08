#include "tables/EBSC.h"

#include <algorithm>

namespace {

constexpr size_t kSizesOffset = 8;
constexpr size_t kSizeRecordBytes = 28;

constexpr FieldRow kEbscHeaderRows[] = {
    {0, FieldKind::Version, "Table version"},
    {4, FieldKind::Int32, "Number of sizes"},
};

// One bitmapScaleTable: the horizontal and the vertical sbitLineMetrics, then the
// target and substituted ppem. Offsets are within the 28-byte record; the labels
// are the ones reports have always printed, "With-stream" and the run-together
// "VerticalSubstituted" included.
constexpr FieldRow kSizeRecordRows[] = {
    {0, FieldKind::Int8, "Horizontal Ascent"},
    {1, FieldKind::Int8, "Horizontal Descent"},
    {2, FieldKind::UInt8, "Horizontal Maximum width"},
    {3, FieldKind::Int8, "Horizontal Caret slope numerator"},
    {4, FieldKind::Int8, "Horizontal Caret slope denominator"},
    {5, FieldKind::Int8, "Horizontal Caret offset"},
    {6, FieldKind::Int8, "Horizontal Minimum With-stream Bearing"},
    {7, FieldKind::Int8, "Horizontal Minimum With-stream Advance"},
    {8, FieldKind::Int8, "Horizontal Maximum Cross-stream Bearing"},
    {9, FieldKind::Int8, "Horizontal Maximum Cross-stream Advance"},
    {10, FieldKind::Int8, "Horizontal Padding"},
    {11, FieldKind::Int8, "Horizontal More Padding"},
    {12, FieldKind::Int8, "Vertical Ascent"},
    {13, FieldKind::Int8, "Vertical Descent"},
    {14, FieldKind::UInt8, "Vertical Maximum width"},
    {15, FieldKind::Int8, "Vertical Caret slope numerator"},
    {16, FieldKind::Int8, "Vertical Caret slope denominator"},
    {17, FieldKind::Int8, "Vertical Caret offset"},
    {18, FieldKind::Int8, "Vertical Minimum With-stream Bearing"},
    {19, FieldKind::Int8, "Vertical Minimum With-stream Advance"},
    {20, FieldKind::Int8, "Vertical Maximum Cross-stream Bearing"},
    {21, FieldKind::Int8, "Vertical Maximum Cross-stream Advance"},
    {22, FieldKind::Int8, "Vertical Padding"},
    {23, FieldKind::Int8, "Vertical More Padding"},
    {24, FieldKind::UInt8, "Horizontal Points Per Em"},
    {25, FieldKind::UInt8, "Vertical Points Per Em"},
    {26, FieldKind::UInt8, "Horizontal Substituted Points Per Em"},
    {27, FieldKind::UInt8, "VerticalSubstituted Points Per Em"},
};

// The stated number of sizes, cut to the records the table holds whole.
size_t SizeCount(VellView table) { return table.records_that_fit(kSizesOffset, table.u32(4), kSizeRecordBytes); }

VellView SizeRecord(VellView table, size_t index) {
    return table.sub(kSizesOffset + index * kSizeRecordBytes, kSizeRecordBytes);
}

void DumpSizeRecord(TTableDumper& dumper, VellView table, size_t index) {
    dumper.PrintInt32Field(1, "Index", static_cast<int32_t>(index), false, true);
    dumper.DumpFieldRows(2, kSizeRecordRows, SizeRecord(table, index));
}

}  // namespace

int32_t TEBSCTableDumper::DumpTableContents() {
    VellView table = GetTableView();
    DumpFieldRows(0, kEbscHeaderRows, table);
    size_t sizes = SizeCount(table);
    for (size_t index = 0; index < sizes; ++index) DumpSizeRecord(*this, table, index);
    return 0;
}

// A changed 'EBSC' reports its frame and no field lines: its old side has always
// been read from the modified table, so no field of it ever differs.
int32_t TEBSCTableComparator::DumpTableDeltas() { return 0; }
