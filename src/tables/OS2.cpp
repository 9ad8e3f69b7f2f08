#include "tables/OS2.h"

namespace {

// Byte sizes that name a layout. Only the size decides; the version field is
// never consulted, so a version 3 table padded to 96 bytes reads as version 2.
constexpr uint32_t kVersion0Size = 78;
constexpr uint32_t kVersion1Size = 86;
constexpr uint32_t kVersion2Size = 96;

// The version 2 layout as the comparison names it. Version 1 is the same table
// up to ulCodePageRange2 (offsets 0 to 85). Of the ten PANOSE bytes only
// bFamilyType is looked at. The ranges and first/last character indexes print in
// decimal here, where the one-table dump shows them in hexadecimal.
constexpr FieldRow kCompareRows[] = {
    {0, FieldKind::UInt16, "version", "version"},
    {2, FieldKind::Int16, "xAvgCharWidth", "xAvgCharWidth"},
    {4, FieldKind::UInt16, "usWeightClass", "usWeightClass"},
    {6, FieldKind::UInt16, "usWidthClass", "usWidthClass"},
    {8, FieldKind::UInt16AsSigned, "fsType", "fsType"},
    {10, FieldKind::Int16, "ySubscriptXSize", "ySubscriptXSize"},
    {12, FieldKind::Int16, "ySubscriptYSize", "ySubscriptYSize"},
    {14, FieldKind::Int16, "ySubscriptXOffset", "ySubscriptXOffset"},
    {16, FieldKind::Int16, "ySubscriptYOffset", "ySubscriptYOffset"},
    {18, FieldKind::Int16, "ySuperscriptXSize", "ySuperscriptXSize"},
    {20, FieldKind::Int16, "ySuperscriptYSize", "ySuperscriptYSize"},
    {22, FieldKind::Int16, "ySuperscriptXOffset", "ySuperscriptXOffset"},
    {24, FieldKind::Int16, "ySuperscriptYOffset", "ySuperscriptYOffset"},
    {26, FieldKind::Int16, "yStrikeoutSize", "yStrikeoutSize"},
    {28, FieldKind::Int16, "yStrikeoutPosition", "yStrikeoutPosition"},
    {30, FieldKind::Int16, "sFamilyClass", "sFamilyClass"},
    {32, FieldKind::UInt8, "panose.bFamilyType", "panoseFamilyType"},
    {42, FieldKind::Int32, "ulUnicodeRange1", "ulUnicodeRange1"},
    {46, FieldKind::Int32, "ulUnicodeRange2", "ulUnicodeRange2"},
    {50, FieldKind::Int32, "ulUnicodeRange3", "ulUnicodeRange3"},
    {54, FieldKind::Int32, "ulUnicodeRange4", "ulUnicodeRange4"},
    {58, FieldKind::Tag, "achVendID", "achVendID"},
    {62, FieldKind::UInt16, "fsSelection", "fsSelection"},
    {64, FieldKind::UInt16, "usFirstCharIndex", "usFirstCharIndex"},
    {66, FieldKind::UInt16, "usLastCharIndex", "usLastCharIndex"},
    {68, FieldKind::Int16, "sTypoAscender", "sTypoAscender"},
    {70, FieldKind::Int16, "sTypoDescender", "sTypoDescender"},
    {72, FieldKind::Int16, "sTypoLineGap", "sTypoLineGap"},
    {74, FieldKind::UInt16, "usWinAscent", "usWinAscent"},
    {76, FieldKind::UInt16, "usWinDescent", "usWinDescent"},
    {78, FieldKind::Int32, "ulCodePageRange1", "ulCodePageRange1"},
    {82, FieldKind::Int32, "ulCodePageRange2", "ulCodePageRange2"},
    // Version 2 only.
    {86, FieldKind::Int16, "sxHeight", "sxHeight"},
    {88, FieldKind::Int16, "sCapHeight", "sCapHeight"},
    {90, FieldKind::UInt16, "usDefaultChar", "usDefaultChar"},
    {92, FieldKind::UInt16, "usBreakChar", "usBreakChar"},
    {94, FieldKind::UInt16, "usMaxContext", "usMaxContext"},
};
constexpr size_t kVersion1CompareRowCount = 32;
static_assert(kCompareRows[kVersion1CompareRowCount].offset == kVersion1Size);

// The version 2 layout as the one-table dump prints it: capitalised names, and
// the ranges and first/last character indexes in hexadecimal.
constexpr auto kDumpRows = RevisedRows<std::size(kCompareRows)>(
    kCompareRows, {{0, FieldKind::UInt16, "Version"},
                   {32, FieldKind::UInt8, "PANOSE bFamilyType"},
                   {42, FieldKind::Int32Hex, "ulUnicodeRange1"},
                   {46, FieldKind::Int32Hex, "ulUnicodeRange2"},
                   {50, FieldKind::Int32Hex, "ulUnicodeRange3"},
                   {54, FieldKind::Int32Hex, "ulUnicodeRange4"},
                   {64, FieldKind::UInt16Hex, "usFirstCharIndex"},
                   {66, FieldKind::UInt16Hex, "usLastCharIndex"},
                   {78, FieldKind::Int32Hex, "ulCodePageRange1"},
                   {82, FieldKind::Int32Hex, "ulCodePageRange2"}});
constexpr size_t kVersion1DumpRowCount = 32;
static_assert(kDumpRows[kVersion1DumpRowCount].offset == kVersion1Size);

// Version 0 tables predate Unicode ranges: the same four words were character
// ranges, and the dump keeps their old names. Otherwise it is the dump's layout
// up to usWinDescent.
constexpr auto kVersion0DumpRows = RevisedRows<30>(
    kDumpRows, {{42, FieldKind::Int32Hex, "ulCharRange1"}, {46, FieldKind::Int32Hex, "ulCharRange2"},
                {50, FieldKind::Int32Hex, "ulCharRange3"}, {54, FieldKind::Int32Hex, "ulCharRange4"}});
static_assert(kVersion0DumpRows.back().offset == 76);

// The older layout: the first 68 bytes under the names of the first 'OS/2'
// drafts, where most fields were still filler. It is used for every size but the
// three known ones, and by the comparison for 78-byte tables too, so nothing past
// offset 67 is ever compared in them. The "filler2[i]" and "filler3[i]" labels
// are printed literally, letter i and all, as reports always have.
constexpr FieldRow kOlderCompareRows[] = {
    {0, FieldKind::UInt16, "Version", "version"},
    {2, FieldKind::Int16, "filler1", "xAvgCharWidth"},
    {4, FieldKind::UInt16, "usWeightClass", "usWeightClass"},
    {6, FieldKind::UInt16, "usWidthClass", "usWidthClass"},
    {8, FieldKind::Int16, "filler2[i]", "fsType"},
    {10, FieldKind::Int16, "filler2[i]", "ySubscriptXSize"},
    {12, FieldKind::Int16, "filler2[i]", "ySubscriptYSize"},
    {14, FieldKind::Int16, "filler2[i]", "ySubscriptXOffset"},
    {16, FieldKind::Int16, "filler2[i]", "ySubscriptYOffset"},
    {18, FieldKind::Int16, "filler2[i]", "ySuperscriptXSize"},
    {20, FieldKind::Int16, "filler2[i]", "ySuperscriptYSize"},
    {22, FieldKind::Int16, "filler2[i]", "ySuperscriptXOffset"},
    {24, FieldKind::Int16, "filler2[i]", "ySuperscriptYOffset"},
    {26, FieldKind::Int16, "filler2[i]", "yStrikeoutSize"},
    {28, FieldKind::Int16, "filler2[i]", "yStrikeoutPosition"},
    {30, FieldKind::Int16, "filler2[i]", "sFamilyClass"},
    {32, FieldKind::UInt8, "panose.bFamilyType", "panoseFamilyType"},
    {42, FieldKind::Int32, "filler3[i]", "ulUnicodeRange1"},
    {46, FieldKind::Int32, "filler3[i]", "ulUnicodeRange2"},
    {50, FieldKind::Int32, "filler3[i]", "ulUnicodeRange3"},
    {54, FieldKind::Int32, "filler3[i]", "ulUnicodeRange4"},
    {58, FieldKind::Tag, "filler4", "achVendID"},
    {62, FieldKind::UInt16, "fsSelection", "fsSelection"},
    {64, FieldKind::UInt16, "filler5[0]", "usFirstCharIndex"},
    {66, FieldKind::UInt16, "filler5[1]", "usLastCharIndex"},
};

// The older layout's dump. Its four 32-bit filler lines all show the vendor
// bytes at offset 58 read as a number, not the words at 42 to 57: a repetition
// that reports have always printed and that scripts reading them expect.
constexpr FieldRow kOlderDumpRows[] = {
    {0, FieldKind::UInt16, "Version"},
    {2, FieldKind::Int16, "filler"},
    {4, FieldKind::UInt16, "usWeightClass"},
    {6, FieldKind::UInt16, "usWidthClass"},
    {8, FieldKind::Int16, "filler"},
    {10, FieldKind::Int16, "filler"},
    {12, FieldKind::Int16, "filler"},
    {14, FieldKind::Int16, "filler"},
    {16, FieldKind::Int16, "filler"},
    {18, FieldKind::Int16, "filler"},
    {20, FieldKind::Int16, "filler"},
    {22, FieldKind::Int16, "filler"},
    {24, FieldKind::Int16, "filler"},
    {26, FieldKind::Int16, "filler"},
    {28, FieldKind::Int16, "filler"},
    {30, FieldKind::Int16, "filler"},
    {32, FieldKind::UInt8, "PANOSE bFamilyType"},
    {58, FieldKind::Int32, "filler"},
    {58, FieldKind::Int32, "filler"},
    {58, FieldKind::Int32, "filler"},
    {58, FieldKind::Int32, "filler"},
    {58, FieldKind::Tag, "filler"},
    {62, FieldKind::UInt16, "fsSelection"},
    {64, FieldKind::UInt16, "filler"},
    {66, FieldKind::UInt16, "filler"},
};

}  // namespace

int32_t TOS2TableDumper::DumpTableContents() {
    VellView table = GetTableView();
    std::span<const FieldRow> rows = kOlderDumpRows;
    if (table.size() >= kVersion2Size)
        rows = kDumpRows;
    else if (table.size() >= kVersion1Size)
        rows = std::span(kDumpRows).first(kVersion1DumpRowCount);
    else if (table.size() >= kVersion0Size)
        rows = kVersion0DumpRows;
    DumpFieldRows(1, rows, table);
    return 0;
}

int32_t TOS2TableComparator::DumpTableDeltas() {
    if (!HasBothTables()) return 1;
    uint32_t modifiedSize = GetTableSize();
    uint32_t originalSize = GetOriginalTableSize();
    if (modifiedSize != originalSize) {
        ReportResizedTable();
        PrintLine("\n##### Sizes don't match", true);
        PrintLine("##### Original data", true);
        DumpOneTable(GetOriginalTableHandle());
        PrintLine("##### Modified data", true);
        DumpOneTable(GetTableHandle());
    } else if (modifiedSize == kVersion1Size) {
        CompareVersion1();
    } else if (modifiedSize == kVersion2Size) {
        CompareVersion2();
    } else {
        CompareOlderLayout();
    }
    return 0;
}

// Tables of two sizes are listed whole, one after the other. As records: the
// sizes, then each field of the version 2 layout that both tables hold and that
// differs, and each that only the longer one holds, as an entry.
void TOS2TableComparator::ReportResizedTable() {
    if (!WritesRecords() && !IsCountingPass()) return;
    VellView modified = GetTableView(), original = GetOriginalTableView();
    ShowsChange("tableSize", FieldKind::Int32, modified.size(), original.size());
    for (const FieldRow& row : kCompareRows) {
        bool inModified = modified.has(row.offset, FieldWidth(row.kind));
        bool inOriginal = original.has(row.offset, FieldWidth(row.kind));
        if (inModified && inOriginal) {
            if (FieldDiffers(row, modified, original))
                ShowsChange(row.key, row.kind, FieldBits(row, modified), FieldBits(row, original));
        } else if (inModified || inOriginal) {
            VellView holder = inModified ? modified : original;
            ShowsDifference(inModified ? DifferenceKind::Added : DifferenceKind::Deleted, row.key,
                            [&](JsonWriter& writer) {
                                writer.Key("value");
                                WriteFieldValue(writer, row.kind, FieldBits(row, holder));
                            });
        }
    }
}

void TOS2TableComparator::DumpOneTable(const VellHandle& table) {
    // An older-layout table shorter than 68 bytes shows 0 for every field past
    // its end: the view yields 0 there rather than reading beyond the block.
    VellView bytes = VelmView(table);
    uint32_t size = GetHandleSize(table);
    PrintInt32Field(1, "Table size", static_cast<int32_t>(size), false, true);
    std::span<const FieldRow> rows;
    switch (size) {
        case kVersion0Size:
            PrintLine("\t\t== size of Version 0 OS/2 table", true);
            rows = kVersion0DumpRows;
            break;
        case kVersion1Size:
            PrintLine("\t\t== size of Version 1 OS/2 table", true);
            rows = std::span(kDumpRows).first(kVersion1DumpRowCount);
            break;
        case kVersion2Size:
            PrintLine("\t\t== size of Version 2 OS/2 table", true);
            rows = kDumpRows;
            break;
        default:
            PrintLine("\t\t!= size of Version 0, 1 or 2 OS/2 table", true);
            rows = kOlderDumpRows;
            break;
    }
    DumpFieldRows(1, rows, bytes);
}

void TOS2TableComparator::CompareOlderLayout() {
    // Equal sizes shorter than 68 bytes compare as 0 against 0 past their end.
    CompareFieldRows(1, kOlderCompareRows, GetTableView(), GetOriginalTableView());
}

void TOS2TableComparator::CompareVersion1() {
    CompareFieldRows(1, std::span(kCompareRows).first(kVersion1CompareRowCount), GetTableView(),
                     GetOriginalTableView());
}

void TOS2TableComparator::CompareVersion2() {
    CompareFieldRows(1, kCompareRows, GetTableView(), GetOriginalTableView());
}
