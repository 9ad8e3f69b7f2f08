#include "tables/head.h"

namespace {

// The seven macStyle bits the report names; bits 7 to 15 show only in the hex value.
void PrintMacStyleBits(TTableDumper& dumper, uint32_t macStyle) {
    static constexpr const char* kStyles[] = {"Bold", "Italic", "Underline", "Outline", "Shadow", "Condense", "Extend"};
    for (uint32_t bit = 0; bit < 7; ++bit) dumper.PrintBooleanField(2, kStyles[bit], macStyle & (1u << bit));
}

// indexToLocFormat 0 is short 'loca' offsets, 1 long; any other value is neither.
void PrintLocationFormatFlags(TTableDumper& dumper, uint32_t value) {
    int16_t format = static_cast<int16_t>(value);
    dumper.PrintFlagField(2, "Use short offsets", format == 0);
    dumper.PrintFlagField(2, "Use long offsets", format == 1);
}

// The creation date is compared on its high word only, the modification date on
// all 64 bits: a creation date that moves within its high word is not reported.
constexpr FieldRow kHeadRows[] = {
    {0, FieldKind::FixedAsVersion, "Version", "version"},
    {4, FieldKind::FixedAsVersion, "Font revision", "fontRevision"},
    {8, FieldKind::Int32Hex, "Checksum adjustment", "checkSumAdjustment"},
    {12, FieldKind::Int32Hex, "Magic number", "magicNumber"},
    {16, FieldKind::UInt16Hex, "Flags", "flags"},
    {18, FieldKind::UInt16, "Units per em", "unitsPerEm"},
    {20, FieldKind::DateHighWord, "Date created", "created"},
    {28, FieldKind::Date, "Date modified", "modified"},
    {36, FieldKind::Int16, "X minimum", "xMin"},
    {38, FieldKind::Int16, "Y minimum", "yMin"},
    {40, FieldKind::Int16, "X maximum", "xMax"},
    {42, FieldKind::Int16, "Y maximum", "yMax"},
    {44, FieldKind::UInt16Hex, "Mac styles", "macStyle", PrintMacStyleBits},
    {46, FieldKind::UInt16, "Lowest recommended pixels per em", "lowestRecPPEM"},
    {48, FieldKind::Int16, "Font direction hint", "fontDirectionHint"},
    {50, FieldKind::Int16, "Index to the location table format", "indexToLocFormat", PrintLocationFormatFlags},
    {52, FieldKind::Int16, "Glyph data format", "glyphDataFormat"},
};

// The dump shows the two 16.16 values as the decimals they are.
constexpr auto kHeadDumpRows = RevisedRows<std::size(kHeadRows)>(
    kHeadRows, {{0, FieldKind::Fixed, "Version"}, {4, FieldKind::Fixed, "Font revision"}});

}  // namespace

int32_t THEADTableDumper::DumpTableContents() {
    DumpFieldRows(1, kHeadDumpRows, GetTableView());
    return 0;
}

int32_t THEADTableComparator::DumpTableDeltas() {
    if (!HasBothTables()) return 1;
    CompareFieldRows(1, kHeadRows, GetTableView(), GetOriginalTableView());
    return 0;
}
