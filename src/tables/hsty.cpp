#include "tables/hsty.h"

namespace {

// The extra advance each classic style adds, after the table version. The table
// is 22 bytes; anything past it is ignored, and a shorter table shows 0 for the
// fields it lacks.
constexpr FieldRow kHstyRows[] = {
    {0, FieldKind::Version, "Version", "version"},
    {4, FieldKind::Int16, "Extra plain", "plain"},
    {6, FieldKind::Int16, "Extra bold", "bold"},
    {8, FieldKind::Int16, "Extra italic", "italic"},
    {10, FieldKind::Int16, "Extra underline", "underline"},
    {12, FieldKind::Int16, "Extra outline", "outline"},
    {14, FieldKind::Int16, "Extra shadow", "shadow"},
    {16, FieldKind::Int16, "Extra condensed", "condensed"},
    {18, FieldKind::Int16, "Extra extended", "extended"},
    {20, FieldKind::Int16, "Extra unused", "unused"},
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
