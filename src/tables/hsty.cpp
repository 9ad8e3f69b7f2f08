#include "tables/hsty.h"

namespace {

// The extra advance each classic style adds, after the table version. The table
// is 22 bytes; anything past it is ignored, and a shorter table shows 0 for the
// fields it lacks.
constexpr FieldRow kHstyRows[] = {
    {0, FieldKind::Version, "Version"},
    {4, FieldKind::Int16, "Extra plain"},
    {6, FieldKind::Int16, "Extra bold"},
    {8, FieldKind::Int16, "Extra italic"},
    {10, FieldKind::Int16, "Extra underline"},
    {12, FieldKind::Int16, "Extra outline"},
    {14, FieldKind::Int16, "Extra shadow"},
    {16, FieldKind::Int16, "Extra condensed"},
    {18, FieldKind::Int16, "Extra extended"},
    {20, FieldKind::Int16, "Extra unused"},
};

}  // namespace

int32_t THSTYTableDumper::DumpTableContents() {
    if (!GetTableHandle() || GetOutputFile() == nullptr) return 1;
    DumpFieldRows(1, kHstyRows, GetTableView());
    return 0;
}

int32_t THSTYTableComparator::DumpTableDeltas() {
    if (!HasBothTables()) return 1;
    CompareFieldRows(1, kHstyRows, GetTableView(), GetOriginalTableView());
    return 0;
}
