#include "tables/hhea_vhea.h"

#include "framework/VellTables.h"

namespace {

// The 36-byte metrics header. 'vhea' has the same positions and keeps the
// horizontal labels ("Advance width maximum") that its reports have always used.
// The comparator numbers the reserved words, so a change says which one moved;
// they compare as raw 16-bit words and print signed.
constexpr FieldRow kMetricsHeaderRows[] = {
    {0, FieldKind::Version, "Version", "version"},
    {4, FieldKind::Int16, "Ascent", "ascender"},
    {6, FieldKind::Int16, "Descent", "descender"},
    {8, FieldKind::Int16, "Line gap", "lineGap"},
    {10, FieldKind::UInt16, "Advance width maximum", "advanceMax"},
    {12, FieldKind::Int16, "Minimum left-side bearing", "minLeadingBearing"},
    {14, FieldKind::Int16, "Minimum right-side bearing", "minTrailingBearing"},
    {16, FieldKind::Int16, "Maximum X-extent", "maxExtent"},
    {18, FieldKind::Int16, "Caret slope rise", "caretSlopeRise"},
    {20, FieldKind::Int16, "Caret slope run", "caretSlopeRun"},
    {22, FieldKind::Int16, "Caret offset", "caretOffset"},
    {24, FieldKind::Int16, "Reserved 0", "reserved0"},
    {26, FieldKind::Int16, "Reserved 1", "reserved1"},
    {28, FieldKind::Int16, "Reserved 2", "reserved2"},
    {30, FieldKind::Int16, "Reserved 3", "reserved3"},
    {32, FieldKind::Int16, "Metric data format", "metricDataFormat"},
    {kLongMetricCountOffset, FieldKind::UInt16, "Number of long horizontal metrics", "numberOfLongMetrics"},
};

// The dumper prints the four reserved words under one unnumbered label.
constexpr auto kMetricsHeaderDumpRows = RevisedRows<std::size(kMetricsHeaderRows)>(
    kMetricsHeaderRows, {{24, FieldKind::Int16, "Reserved"}, {26, FieldKind::Int16, "Reserved"},
                         {28, FieldKind::Int16, "Reserved"}, {30, FieldKind::Int16, "Reserved"}});

}  // namespace

int32_t THHEATableDumper::DumpTableContents() {
    DumpFieldRows(1, kMetricsHeaderDumpRows, GetTableView());
    return 0;
}

int32_t THHEATableComparator::DumpTableDeltas() {
    if (!HasBothTables()) return 1;
    CompareFieldRows(1, kMetricsHeaderRows, GetTableView(), GetOriginalTableView());
    return 0;
}
