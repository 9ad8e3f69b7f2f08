#include "tables/maxp.h"

namespace {

// The version 1.0 layout, whatever the table's version or length. The counts are
// unsigned in the font but print signed, so 40000 glyphs read -25536; and three
// labels keep the "componenet" spelling that reports have always had.
constexpr FieldRow kMaxpRows[] = {
    {0, FieldKind::Version, "Version", "version"},
    {4, FieldKind::UInt16AsSigned, "Number glyphs", "numGlyphs"},
    {6, FieldKind::UInt16AsSigned, "Maximum points", "maxPoints"},
    {8, FieldKind::UInt16AsSigned, "Maximum contours", "maxContours"},
    {10, FieldKind::UInt16AsSigned, "Maximum componenet points", "maxCompositePoints"},
    {12, FieldKind::UInt16AsSigned, "Maximum componenet contours", "maxCompositeContours"},
    {14, FieldKind::UInt16AsSigned, "Maximum zones", "maxZones"},
    {16, FieldKind::UInt16AsSigned, "Maximum twilight points", "maxTwilightPoints"},
    {18, FieldKind::UInt16AsSigned, "Maximum storage", "maxStorage"},
    {20, FieldKind::UInt16AsSigned, "Maximum function definitions", "maxFunctionDefs"},
    {22, FieldKind::UInt16AsSigned, "Maximum instruction definitions", "maxInstructionDefs"},
    {24, FieldKind::UInt16AsSigned, "Maximum stack elements", "maxStackElements"},
    {26, FieldKind::UInt16AsSigned, "Maximum size of instructions", "maxSizeOfInstructions"},
    {28, FieldKind::UInt16AsSigned, "Maximum component elements", "maxComponentElements"},
    {30, FieldKind::UInt16AsSigned, "Maximum componenet depth", "maxComponentDepth"},
};

}  // namespace

int32_t TMAXPTableDumper::DumpTableContents() {
    DumpFieldRows(1, kMaxpRows, GetTableView());
    return 0;
}

int32_t TMAXPTableComparator::DumpTableDeltas() {
    if (!HasBothTables()) return 1;
    CompareFieldRows(1, kMaxpRows, GetTableView(), GetOriginalTableView());
    return 0;
}
