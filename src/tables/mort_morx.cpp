#include "tables/mort_morx.h"

#include <algorithm>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace {

constexpr size_t kChainsOffset = 8;
constexpr size_t kChainCountOffset = 4;
constexpr size_t kChainLengthOffset = 4;
constexpr size_t kFeatureEntrySize = 12;
constexpr uint32_t kSubtableTypeMask = 7;
constexpr uint32_t kLigatureSubtable = 2;

constexpr FieldRow kHeaderRows[] = {
    {0, FieldKind::Version, "Version"},
    {kChainCountOffset, FieldKind::Int32, "Number of chains"},
};
constexpr FieldRow kFeatureEntryRows[] = {
    {0, FieldKind::UInt16, "Feature type"},
    {2, FieldKind::UInt16, "Feature selector"},
    {4, FieldKind::Int32Hex, "Enable flags"},
    {8, FieldKind::Int32Hex, "Disable flags"},
};

// ---- Subtable details ----

void PrintMortSubtableType(TTableDumper& dumper, uint32_t coverage) {
    dumper.PrintUInt16Field(4, "Type", static_cast<uint16_t>(coverage & kSubtableTypeMask), false);
}

void PrintMorxCoverage(TTableDumper& dumper, uint32_t coverage) {
    dumper.PrintFlagField(3, "Vertical only", coverage & 0x80000000u);
    dumper.PrintFlagField(3, "Descending order", coverage & 0x40000000u);
    dumper.PrintFlagField(3, "Ignore vertical", coverage & 0x20000000u);
    dumper.PrintInt32Field(4, "Type", static_cast<int32_t>(coverage & 0xFF), false, true);
}

std::string Tabs(int indent) { return std::string(static_cast<size_t>(indent), '\t'); }

// The state array of a state table: the state count its offsets imply, a row of
// class numbers, then one row of entry indices per state. Rows and columns stop
// where the subtable does.
void DumpStateArray(TTableDumper& dumper, int indent, VellView stateTable, uint32_t stateArray, uint32_t entryTable,
                    uint32_t classCount, size_t entryWidth) {
    int64_t rowBytes = int64_t{classCount} * static_cast<int64_t>(entryWidth);
    int64_t states = rowBytes == 0 ? 0 : (int64_t{entryTable} - int64_t{stateArray}) / rowBytes;
    dumper.PrintInt32Field(indent, "State count", static_cast<int32_t>(states), false, true);
    VellView array = stateTable.sub(stateArray);
    size_t columns = array.records_that_fit(0, classCount, entryWidth);
    std::string row = Tabs(indent);
    for (size_t c = 0; c < columns; ++c) row += VellFormat("\t%d", static_cast<int>(c));
    dumper.PrintLine(row, true);
    size_t rows = rowBytes == 0 || states < 0 ? 0 : array.records_that_fit(0, static_cast<size_t>(states), rowBytes);
    for (size_t s = 0; s < rows; ++s) {
        row = Tabs(indent) + VellFormat("s%d", static_cast<int>(s));
        for (size_t c = 0; c < columns; ++c) {
            size_t at = s * static_cast<size_t>(rowBytes) + c * entryWidth;
            row += VellFormat("\t%d", entryWidth == 1 ? array.u8(at) : array.u16(at));
        }
        dumper.PrintLine(row, true);
    }
}

// ---- 'mort' state tables ----

// The number of classes is stateSize's low byte: no 'mort' state table has more
// than 255 classes.
constexpr FieldRow kStateHeaderRows[] = {
    {1, FieldKind::UInt8, "Number of classes"},
    {2, FieldKind::UInt16Hex, "Offset to class table"},
    {4, FieldKind::UInt16Hex, "Offset to state array table"},
    {6, FieldKind::UInt16Hex, "Offset to entry table"},
};
constexpr FieldRow kClassTableRows[] = {
    {0, FieldKind::UInt16, "First glyph"},
    {2, FieldKind::UInt16, "Number of glyph"},
};
constexpr size_t kClassArrayOffset = 4;

void DumpMortStateTable(TTableDumper& dumper, int indent, VellView stateTable) {
    dumper.PrintLine(Tabs(indent) + "State table header:", true);
    dumper.DumpFieldRows(indent + 1, kStateHeaderRows, stateTable);
    dumper.PrintLine(Tabs(indent + 1) + "Class table:", true);
    VellView classTable = stateTable.sub(stateTable.u16(2));
    dumper.DumpFieldRows(indent + 2, kClassTableRows, classTable);
    uint16_t firstGlyph = classTable.u16(0);
    size_t glyphs = classTable.records_that_fit(kClassArrayOffset, classTable.u16(2), 1);
    for (size_t k = 0; k < glyphs; ++k)
        dumper.PrintIndexedUInt8(indent + 2, static_cast<int32_t>(firstGlyph + k), classTable.u8(kClassArrayOffset + k),
                                 false);
    dumper.PrintLine(Tabs(indent + 1) + "State table:", true);
    DumpStateArray(dumper, indent + 2, stateTable, stateTable.u16(4), stateTable.u16(6), stateTable.u8(1), 1);
}

// ---- 'morx' state tables ----

constexpr FieldRow kExtendedStateHeaderRows[] = {
    {0, FieldKind::Int32, "Number of classes"},
    {4, FieldKind::Int32Hex, "Offset to class table"},
    {8, FieldKind::Int32Hex, "Offset to state array table"},
    {12, FieldKind::Int32Hex, "Offset to entry table"},
};
constexpr FieldRow kLookupFormatRow = {0, FieldKind::UInt16, "Format"};
constexpr FieldRow kSegmentRows[] = {
    {2, FieldKind::UInt16, "First glyph"},
    {0, FieldKind::UInt16, "Last glyph"},
    {4, FieldKind::UInt16, "Class"},
};
constexpr FieldRow kTrimmedArrayRows[] = {
    {2, FieldKind::UInt16, "First glyph"},
    {4, FieldKind::UInt16, "Number of glyph"},
};
constexpr size_t kLookupUnitsOffset = 12;
constexpr size_t kSegmentSize = 6;
constexpr size_t kSingleSize = 4;
constexpr size_t kTrimmedValuesOffset = 6;
// Binary-searched lookups end with a unit for glyph 0xFFFF that maps nothing.
constexpr uint16_t kEndOfLookup = 0xFFFF;

// The units of a binary-searched lookup, stepped by the unit size the lookup
// states; a unit size too small for the unit's fields reads none.
std::vector<VellView> LookupUnits(VellView lookup, size_t fieldsSize) {
    std::vector<VellView> units;
    size_t unitSize = lookup.u16(2);
    if (unitSize < fieldsSize) return units;
    size_t count = lookup.records_that_fit(kLookupUnitsOffset, lookup.u16(4), unitSize);
    for (size_t u = 0; u < count; ++u) {
        VellView unit = lookup.sub(kLookupUnitsOffset + u * unitSize, unitSize);
        if (unit.u16(0) != kEndOfLookup) units.push_back(unit);
    }
    return units;
}

// A class table of 'morx' is a lookup table: its segments, single glyphs or
// trimmed array are listed; the other formats show their format only.
void DumpClassLookup(TTableDumper& dumper, int indent, VellView lookup) {
    dumper.PrintFieldRow(indent, kLookupFormatRow, kLookupFormatRow.label, lookup);
    switch (lookup.u16(0)) {
        case 2:
            for (VellView segment : LookupUnits(lookup, kSegmentSize))
                dumper.DumpFieldRows(indent, kSegmentRows, segment);
            break;
        case 6:
            for (VellView single : LookupUnits(lookup, kSingleSize))
                dumper.PrintIndexedUInt16(indent, single.u16(0), single.u16(2), false);
            break;
        case 8: {
            dumper.DumpFieldRows(indent, kTrimmedArrayRows, lookup);
            uint16_t firstGlyph = lookup.u16(2);
            size_t glyphs = lookup.records_that_fit(kTrimmedValuesOffset, lookup.u16(4), 2);
            for (size_t k = 0; k < glyphs; ++k)
                dumper.PrintIndexedUInt16(indent, static_cast<int32_t>(firstGlyph + k),
                                          lookup.u16(kTrimmedValuesOffset + 2 * k), false);
            break;
        }
        default:
            break;
    }
}

void DumpMorxStateTable(TTableDumper& dumper, int indent, VellView stateTable) {
    dumper.PrintLine(Tabs(indent) + "State table header:", true);
    dumper.DumpFieldRows(indent + 1, kExtendedStateHeaderRows, stateTable);
    dumper.PrintLine(Tabs(indent + 1) + "Class table:", true);
    DumpClassLookup(dumper, indent + 2, stateTable.sub(stateTable.u32(4)));
    dumper.PrintLine(Tabs(indent + 1) + "State table:", true);
    DumpStateArray(dumper, indent + 2, stateTable, stateTable.u32(8), stateTable.u32(12), stateTable.u32(0), 2);
}

// ---- The two layouts ----

// What differs between 'mort' and 'morx': 'morx' widens the chain counts and the
// subtable header to 32 bits and extends the state tables.
struct MetamorphosisLayout {
    size_t chainHeaderSize;
    size_t subtableHeaderSize;
    bool extended;
    std::span<const FieldRow> chainRows;
    FieldRow subtableCountRow;
    std::span<const FieldRow> subtableRows;
    void (*dumpStateTable)(TTableDumper& dumper, int indent, VellView stateTable);

    uint32_t FeatureEntryCount(VellView chain) const { return extended ? chain.u32(8) : chain.u16(8); }
    uint32_t SubtableCount(VellView chain) const { return extended ? chain.u32(12) : chain.u16(10); }
    uint32_t SubtableLength(VellView subtable) const { return extended ? subtable.u32(0) : subtable.u16(0); }
    uint32_t Coverage(VellView subtable) const { return extended ? subtable.u32(4) : subtable.u16(2); }

    // The feature entries the chain holds whole, of the count it states.
    size_t FeatureEntriesThatFit(VellView chain) const {
        return chain.records_that_fit(chainHeaderSize, FeatureEntryCount(chain), kFeatureEntrySize);
    }
    VellView FeatureEntry(VellView chain, size_t index) const {
        return chain.sub(chainHeaderSize + index * kFeatureEntrySize, kFeatureEntrySize);
    }

    // The chains of a table, each chainLength bytes after the one before. A chain
    // too short for its own header, or one that runs past the table, ends the walk.
    std::vector<VellView> Chains(VellView table) const {
        std::vector<VellView> chains;
        size_t at = kChainsOffset;
        for (uint32_t c = 0; c < table.u32(kChainCountOffset); ++c) {
            uint32_t length = table.u32(at + kChainLengthOffset);
            if (length < chainHeaderSize || !table.has(at, length)) break;
            chains.push_back(table.sub(at, length));
            at += length;
        }
        return chains;
    }
    // Whether every chain the table counts can be walked.
    bool WholeChains(VellView table, const std::vector<VellView>& chains) const {
        return chains.size() == table.u32(kChainCountOffset);
    }

    // The subtables of a chain, after its feature entries, each its length after the
    // one before; a length too short for the subtable header, or one that runs past
    // the chain, ends the walk.
    std::vector<VellView> Subtables(VellView chain) const {
        std::vector<VellView> subtables;
        // Subtables past a feature count the chain cannot hold would lie past it.
        if (FeatureEntryCount(chain) > chain.size() / kFeatureEntrySize) return subtables;
        size_t at = chainHeaderSize + size_t{FeatureEntryCount(chain)} * kFeatureEntrySize;
        for (uint32_t s = 0; s < SubtableCount(chain); ++s) {
            uint32_t length = SubtableLength(chain.sub(at));
            if (length < subtableHeaderSize || !chain.has(at, length)) break;
            subtables.push_back(chain.sub(at, length));
            at += length;
        }
        return subtables;
    }
};

constexpr FieldRow kMortChainRows[] = {
    {0, FieldKind::Int32Hex, "Default flags for this chain"},
    {4, FieldKind::Int32Hex, "Byte length of this chain"},
    {8, FieldKind::UInt16, "Number of feature entries"},
};
constexpr FieldRow kMortSubtableRows[] = {
    {0, FieldKind::UInt16Hex, "Length"},
    {2, FieldKind::UInt16Hex, "Coverage", "coverage", PrintMortSubtableType},
    {4, FieldKind::Int32Hex, "Flags"},
};
constexpr FieldRow kMorxChainRows[] = {
    {0, FieldKind::Int32Hex, "Default flags for this chain"},
    {4, FieldKind::Int32Hex, "Byte length of this chain"},
    {8, FieldKind::Int32, "Number of feature entries"},
};
constexpr FieldRow kMorxSubtableRows[] = {
    {0, FieldKind::Int32Hex, "Length"},
    {4, FieldKind::Int32Hex, "Coverage", "coverage", PrintMorxCoverage},
    {8, FieldKind::Int32Hex, "Flags"},
};

const MetamorphosisLayout kMort = {.chainHeaderSize = 12,
                                   .subtableHeaderSize = 8,
                                   .extended = false,
                                   .chainRows = kMortChainRows,
                                   .subtableCountRow = {10, FieldKind::UInt16, "Number of subtables"},
                                   .subtableRows = kMortSubtableRows,
                                   .dumpStateTable = DumpMortStateTable};
const MetamorphosisLayout kMorx = {.chainHeaderSize = 16,
                                   .subtableHeaderSize = 12,
                                   .extended = true,
                                   .chainRows = kMorxChainRows,
                                   .subtableCountRow = {12, FieldKind::Int32, "Number of subtables"},
                                   .subtableRows = kMorxSubtableRows,
                                   .dumpStateTable = DumpMorxStateTable};

// ---- Dump ----

int32_t DumpMetamorphosis(TTableDumper& dumper, const MetamorphosisLayout& layout) {
    if (!dumper.GetTableHandle() || dumper.GetOutputFile() == nullptr) return 1;
    VellView table = dumper.GetTableView();
    dumper.DumpFieldRows(1, kHeaderRows, table);
    for (VellView chain : layout.Chains(table)) {
        dumper.DumpFieldRows(2, layout.chainRows, chain);
        for (size_t k = 0; k < layout.FeatureEntriesThatFit(chain); ++k)
            dumper.DumpFieldRows(3, kFeatureEntryRows, layout.FeatureEntry(chain, k));
        dumper.PrintFieldRow(2, layout.subtableCountRow, layout.subtableCountRow.label, chain);
        for (VellView subtable : layout.Subtables(chain)) {
            dumper.DumpFieldRows(3, layout.subtableRows, subtable);
            // Of subtable bodies only a ligature subtable's state table is shown.
            if ((layout.Coverage(subtable) & kSubtableTypeMask) != kLigatureSubtable) continue;
            dumper.PrintLine("\t\t\tLigature subtable:", true);
            layout.dumpStateTable(dumper, 4, subtable.sub(layout.subtableHeaderSize));
        }
    }
    return 0;
}

// ---- Compare ----

// A chain value that differs: the chain's index, then the two values.
void CompareChainValue(TTableDumper& dumper, const char* label, size_t chain, uint32_t modified, uint32_t original,
                       bool hex) {
    if (modified == original) return;
    // Records name the value by its field in the chain header: [chain, key].
    static constexpr std::pair<std::string_view, const char*> kKeys[] = {
        {"Chain flags", "defaultFlags"},
        {"Chain length", "chainLength"},
        {"Chain feature count", "nFeatureEntries"},
        {"Chain subtable count", "nSubtables"},
    };
    const char* key = label;
    for (const auto& [chainLabel, chainKey] : kKeys)
        if (chainLabel == label) key = chainKey;
    TTableDumper::PathScope chainStep(dumper, chain);
    if (!dumper.ShowsChange(key, FieldKind::Int32, modified, original)) return;
    dumper.PrintInt32Field(1, label, static_cast<int32_t>(chain), false, true);
    dumper.PrintInt32Field(2, "mod ", static_cast<int32_t>(modified), hex, true);
    dumper.PrintInt32Field(2, "orig", static_cast<int32_t>(original), hex, true);
}

// Whether two 'mort' tables have one chain structure: the same chains, each with
// the same length, counts and contents; only their default flags may differ.
bool SameChainStructure(VellView modified, const std::vector<VellView>& modifiedChains, VellView original,
                        const std::vector<VellView>& originalChains) {
    if (modified.u32(kChainCountOffset) != original.u32(kChainCountOffset)) return false;
    // A chain that cannot be walked leaves nothing to compare it by; the byte
    // listing shows it.
    if (!kMort.WholeChains(modified, modifiedChains) || !kMort.WholeChains(original, originalChains)) return false;
    for (size_t c = 0; c < modifiedChains.size(); ++c)
        if (modifiedChains[c].sub(kChainLengthOffset) != originalChains[c].sub(kChainLengthOffset)) return false;
    return true;
}

// The feature entries of two 'morx' chains of one count. The report has always
// been made this way: an entry also counts as changed when the modified enable
// flags differ from the original disable flags; each group is headed by the
// chain's index, not the entry's; and both of its value lines show the modified
// value.
void CompareMorxFeatureEntries(TTableDumper& dumper, size_t c, VellView modified, VellView original) {
    int32_t chain = static_cast<int32_t>(c);
    // Past the entries both chains hold, both read as zeros and none differs.
    size_t entries = std::max(kMorx.FeatureEntriesThatFit(modified), kMorx.FeatureEntriesThatFit(original));
    for (size_t k = 0; k < entries; ++k) {
        VellView m = kMorx.FeatureEntry(modified, k), o = kMorx.FeatureEntry(original, k);
        bool typeDiffers = m.u16(0) != o.u16(0);
        bool settingDiffers = m.u16(2) != o.u16(2);
        bool enableDiffers = m.u32(4) != o.u32(4);
        bool enableDiffersFromDisable = m.u32(4) != o.u32(8);
        if (!typeDiffers && !settingDiffers && !enableDiffers && !enableDiffersFromDisable) continue;
        dumper.PrintInt32Field(2, "Chain feature", static_cast<int32_t>(k), false, true);
        auto group = [&](const char* label, bool hex, const FieldRow& value) {
            dumper.PrintInt32Field(3, label, chain, hex, true);
            dumper.PrintFieldRow(3, value, "mod ", m);
            dumper.PrintFieldRow(3, value, "orig", m);
        };
        if (typeDiffers) group("Feature type", false, kFeatureEntryRows[0]);
        if (settingDiffers) group("Feature selector", false, kFeatureEntryRows[1]);
        if (enableDiffers) group("Feature selector", true, kFeatureEntryRows[2]);
        if (enableDiffersFromDisable) group("Feature selector", true, kFeatureEntryRows[3]);
    }
}

void CompareMorxChain(TTableDumper& dumper, size_t c, VellView modified, VellView original) {
    CompareChainValue(dumper, "Chain flags", c, modified.u32(0), original.u32(0), true);
    CompareChainValue(dumper, "Chain length", c, modified.u32(4), original.u32(4), false);
    uint32_t featureEntries = kMorx.FeatureEntryCount(modified);
    if (featureEntries == kMorx.FeatureEntryCount(original))
        CompareMorxFeatureEntries(dumper, c, modified, original);
    else
        CompareChainValue(dumper, "Chain feature count", c, featureEntries, kMorx.FeatureEntryCount(original), false);
    CompareChainValue(dumper, "Chain subtable count", c, kMorx.SubtableCount(modified), kMorx.SubtableCount(original),
                      false);
}

}  // namespace

int32_t TMORTTableDumper::DumpTableContents() { return DumpMetamorphosis(*this, kMort); }

int32_t TMORXTableDumper::DumpTableContents() { return DumpMetamorphosis(*this, kMorx); }

int32_t TMORTTableComparator::DumpTableDeltas() {
    if (!HasBothTables()) return 1;
    VellView modified = GetTableView(), original = GetOriginalTableView();
    std::vector<VellView> modifiedChains = kMort.Chains(modified), originalChains = kMort.Chains(original);
    if (!SameChainStructure(modified, modifiedChains, original, originalChains))
        return TTableComparator::DumpTableDeltas();
    for (size_t c = 0; c < modifiedChains.size(); ++c)
        CompareChainValue(*this, "Chain flags", c, modifiedChains[c].u32(0), originalChains[c].u32(0), true);
    return 0;
}

int32_t TMORXTableComparator::DumpTableDeltas() {
    if (!HasBothTables()) return 1;
    VellView modified = GetTableView(), original = GetOriginalTableView();
    std::vector<VellView> modifiedChains = kMorx.Chains(modified), originalChains = kMorx.Chains(original);
    if (modified.u32(kChainCountOffset) != original.u32(kChainCountOffset) ||
        !kMorx.WholeChains(modified, modifiedChains) || !kMorx.WholeChains(original, originalChains))
        return TTableComparator::DumpTableDeltas();
    for (size_t c = 0; c < modifiedChains.size(); ++c) CompareMorxChain(*this, c, modifiedChains[c], originalChains[c]);
    return 0;
}
