#include "tables/gvar.h"

#include <algorithm>

namespace {

constexpr FieldRow kGvarHeaderRows[] = {
    {0, FieldKind::Version, "Format"},
    {4, FieldKind::UInt16, "Axis count"},
    {6, FieldKind::UInt16, "Global coordinate count"},
    {8, FieldKind::Int32Hex, "Offset to coordinates"},
    {12, FieldKind::UInt16, "Glyph count"},
};
constexpr FieldRow kDataOffsetRow = {16, FieldKind::Int32Hex, "Offset to data"};
constexpr size_t kFlagsOffset = 14;
constexpr size_t kHeaderSize = 20;

// The glyph variation offsets are listed from byte 24, four bytes past the end of
// the 20-byte header where the array really starts; listings have always read
// them from there. So the last two entries of a well-formed table may lie past
// its end, and read as 0.
constexpr size_t kListedOffsetsStart = 24;

constexpr uint16_t kSharedPointNumbers = 0x8000;
constexpr uint16_t kEmbeddedPeakTuple = 0x8000;
constexpr uint16_t kIntermediateRegion = 0x4000;
constexpr uint16_t kPrivatePointNumbers = 0x2000;
constexpr uint16_t kCountMask = 0x0FFF;
constexpr size_t kTupleHeadersOffset = 4;

}  // namespace

int32_t TGVARTableDumper::DumpTableContents() {
    VellView table = GetTableView();
    PrintLine("###gvar header", true);
    DumpFieldRows(0, kGvarHeaderRows, table);
    bool longOffsets = table.u16(kFlagsOffset) & 1;
    PrintBooleanField(0, "Offsets are long", longOffsets);
    PrintFieldRow(0, kDataOffsetRow, kDataOffsetRow.label, table);

    PrintLine("\n###Glyph offsets", true);
    size_t width = longOffsets ? 4 : 2;
    size_t entries = size_t{table.u16(12)} + 1;
    // A damaged glyph count lists no more entries than the table could hold.
    size_t listed = std::min(entries, std::max<size_t>(table.records_that_fit(kHeaderSize, entries, width), 1));
    for (size_t i = 0; i < listed; ++i) {
        std::string label = VellFormat("%d", static_cast<int>(i));
        size_t at = kListedOffsetsStart + width * i;
        if (longOffsets)
            PrintInt32Field(1, label, table.s32(at), true, true);
        else
            PrintUInt16Field(1, label, table.u16(at), true);
    }
    PrintLine("###End glyph offsets", true);

    // Only the variation data that follows the offset array is shown: that of
    // the first glyph, however the offsets point.
    PrintLine("\n###Glyph variation array", true);
    size_t at = kListedOffsetsStart + width * entries;
    uint16_t tupleCount = table.u16(at);
    PrintBooleanField(0, "Tuples share point numbers", tupleCount & kSharedPointNumbers);
    PrintUInt16Field(0, "Tuple count", tupleCount & kCountMask, false);
    PrintUInt16Field(0, "Offset to data", table.u16(at + 2), true);

    PrintLine("\n###Tuple variations", true);
    size_t header = at + kTupleHeadersOffset;
    for (uint16_t t = 0; t < (tupleCount & kCountMask) && header < table.size(); ++t) {
        uint16_t size = table.u16(header), index = table.u16(header + 2);
        PrintInt32Field(1, "Tuple variation index", t, false, true);
        PrintUInt16Field(1, "Tuple size", size, true);
        PrintBooleanField(1, "Embedded tuple coordinate", index & kEmbeddedPeakTuple);
        PrintBooleanField(1, "Intermediate tuple", index & kIntermediateRegion);
        PrintBooleanField(1, "Private point numbers", index & kPrivatePointNumbers);
        PrintUInt16Field(1, "Tuple index", index & kCountMask, true);
        // The next header lies the tuple's size past this one; a size of 0 would
        // show this header again and again, so it is shown once.
        if (size == 0) break;
        header += size;
    }
    PrintLine("###End tuple variations", true);
    return 0;
}
