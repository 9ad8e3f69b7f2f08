#include "tables/maxp.h"

namespace {

// The version 1.0 layout, whatever the table's version or length. The counts are
// unsigned in the font but print signed, so 40000 glyphs read -25536; and three
// labels keep the "componenet" spelling that reports have always had.
constexpr FieldRow kMaxpRows[] = {
    {0, FieldKind::Version, "Version"},
    {4, FieldKind::Int16, "Number glyphs"},
    {6, FieldKind::Int16, "Maximum points"},
    {8, FieldKind::Int16, "Maximum contours"},
    {10, FieldKind::Int16, "Maximum componenet points"},
    {12, FieldKind::Int16, "Maximum componenet contours"},
    {14, FieldKind::Int16, "Maximum zones"},
    {16, FieldKind::Int16, "Maximum twilight points"},
    {18, FieldKind::Int16, "Maximum storage"},
    {20, FieldKind::Int16, "Maximum function definitions"},
    {22, FieldKind::Int16, "Maximum instruction definitions"},
    {24, FieldKind::Int16, "Maximum stack elements"},
    {26, FieldKind::Int16, "Maximum size of instructions"},
    {28, FieldKind::Int16, "Maximum component elements"},
    {30, FieldKind::Int16, "Maximum componenet depth"},
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
