#include "comparators/TTableComparator.h"

#include <algorithm>

#include "VellCmpErrors.h"

namespace {

constexpr size_t kDeltaRowBytes = 8;

// A hex-difference row is at most this long: marker, offset, two sides, line end.
constexpr size_t kDeltaRowChars = 4 + 11 + 2 * (3 * kDeltaRowBytes + 3 + kDeltaRowBytes) + 4 + 1;
// Rows are written a block at a time: a 20 MB table makes millions of them.
constexpr size_t kDeltaBlockChars = 64 * 1024;
// The most bytes of each table one --json record of differing bytes holds.
constexpr size_t kDeltaRangeBytes = 4096;

}  // namespace

TTableComparator::TTableComparator(VellHandle modifiedTable, VellHandle originalTable, FILE* out)
    : TTableDumper(std::move(modifiedTable), out, nullptr), fOriginalTable(std::move(originalTable)) {
    if (!fOriginalTable) throw TVellCmpNULLException();
}

TTableComparator::TTableComparator(TFontContext& modified, TFontContext& original, VellTag tag, FILE* out)
    : TTableDumper(modified, tag, out), fOriginalTable(original.CopyTable(tag)), fOriginalFont(original.Font()),
      fOriginalContext(&original) {
    if (!fOriginalTable) throw TVellCmpNULLException();
}

TTableComparator::~TTableComparator() {
    ErrorRecord ignored;
    VelmDisposeHandle(fOriginalTable, &ignored);
}

uint32_t TTableComparator::GetOriginalTableSize() const {
    ErrorRecord record;
    uint32_t size = VelmGetHandleSize(fOriginalTable, &record);
    ThrowIfVellError(record);
    return size;
}

int32_t TTableComparator::DumpTableContents() {
    if (!GetTableHandle() || !fOriginalTable) return 0;
    uint32_t originalSize = GetOriginalTableSize();
    PrintLine("                 ", false);
    PrintLine(VellFormat("  (%ld bytes in the original font)", static_cast<long>(originalSize)), true);
    bool differ = GetTableView() != GetOriginalTableView();
    int32_t result = 0;
    if (differ)
        result = DumpTableDeltas();
    else
        PrintLine("                   No changes", false);
    CloseAccountBudget();
    PrintLine("\n#####\n End table comparison\n\n", true);
    return result;
}

int32_t TTableComparator::DumpTableDeltas() {
    if (!HasBothTables()) return 1;
    if (WritesRecords() || IsCountingPass()) return ReportDifferingRanges();
    VellView modified = GetTableView();
    VellView original = GetOriginalTableView();
    size_t rows = (std::max(modified.size(), original.size()) + 7) / kDeltaRowBytes;
    std::string block;
    block.reserve(kDeltaBlockChars + kDeltaRowChars);
    for (size_t r = 0; r < rows; ++r) {
        size_t offset = r * kDeltaRowBytes;
        size_t m = offset < modified.size() ? std::min(kDeltaRowBytes, modified.size() - offset) : 0;
        size_t o = offset < original.size() ? std::min(kDeltaRowBytes, original.size() - offset) : 0;
        // Positions past the end of a short last row count as equal.
        bool different = m != o || !(modified.sub(offset, m) == original.sub(offset, o));
        char row[kDeltaRowChars];
        char* at = std::copy_n(different ? "==> " : "    ", 4, row);
        at = PutHexOffset(at, offset);
        at = PutHexSide(at, modified, offset, m, kDeltaRowBytes, [](size_t, uint8_t byte) { return byte; });
        at = std::copy_n("\t||\t", 4, at);
        // The original side's character column shows the modified table's byte
        // wherever the original byte is printable: a long-standing mix-up that
        // reports keep. Past the end of the modified table the original byte shows.
        at = PutHexSide(at, original, offset, o, kDeltaRowBytes, [&](size_t i, uint8_t byte) {
            return i < m ? modified.u8(offset + i) : byte;
        });
        *at++ = '\n';
        block.append(row, at);
        if (block.size() >= kDeltaBlockChars) {
            WriteRaw(block);
            block.clear();
            if (OutputExhausted()) return 0;
        }
    }
    WriteRaw(block);
    return 0;
}

// The rows the hex listing marks as differing, joined into ranges while they
// follow one another; a range ends at kDeltaRangeBytes, so that no record holds
// more than that of either table.
int32_t TTableComparator::ReportDifferingRanges() {
    VellView modified = GetTableView();
    VellView original = GetOriginalTableView();
    size_t end = std::max(modified.size(), original.size());
    size_t rangeStart = 0, rangeEnd = 0;
    auto report = [&] {
        if (rangeEnd > rangeStart)
            ReportDifferingBytes(rangeStart, modified.sub(rangeStart, rangeEnd - rangeStart),
                                 original.sub(rangeStart, rangeEnd - rangeStart));
    };
    for (size_t offset = 0; offset < end && !OutputExhausted(); offset += kDeltaRowBytes) {
        size_t m = offset < modified.size() ? std::min(kDeltaRowBytes, modified.size() - offset) : 0;
        size_t o = offset < original.size() ? std::min(kDeltaRowBytes, original.size() - offset) : 0;
        bool different = m != o || !(modified.sub(offset, m) == original.sub(offset, o));
        if (!different) continue;
        if (offset != rangeEnd || rangeEnd - rangeStart >= kDeltaRangeBytes) {
            report();
            rangeStart = offset;
        }
        rangeEnd = offset + kDeltaRowBytes;
    }
    report();
    return 0;
}

bool TTableComparator::FieldDiffers(const FieldRow& row, VellView modified, VellView original) {
    uint32_t at = row.offset;
    switch (FieldWidth(row.kind)) {
        case 1: return modified.u8(at) != original.u8(at);
        case 2: return modified.u16(at) != original.u16(at);
        case 8:
            if (row.kind == FieldKind::DateHighWord) return modified.u32(at) != original.u32(at);
            return modified.u64(at) != original.u64(at);
        default: return modified.u32(at) != original.u32(at);
    }
}

void TTableComparator::CompareFieldRow(int indent, const FieldRow& row, VellView modified, VellView original) {
    if (!FieldDiffers(row, modified, original)) return;
    // A field without a key of its own is named by its offset.
    auto step = row.key != nullptr ? PathStep(row.key) : PathStep(row.offset);
    if (!ShowsChange(step, row.kind, FieldBits(row, modified), FieldBits(row, original))) return;
    PrintFieldRow(indent, row, ModLabel(row.label), modified);
    PrintFieldRow(indent, row, OrigLabel(row.label), original);
}

void TTableComparator::CompareFieldRows(int indent, std::span<const FieldRow> rows, VellView modified,
                                        VellView original) {
    for (const FieldRow& row : rows) CompareFieldRow(indent, row, modified, original);
}

void TTableComparator::PrintGlyphNameLines(const std::optional<std::string>& modified,
                                           const std::optional<std::string>& original, std::string_view modifiedLabel,
                                           std::string_view originalLabel) {
    if (!modified && !original) return;
    if (modified.value_or("") == original.value_or("")) {
        PrintLine("\t\tName:\t" + (modified ? *modified : *original), true);
        return;
    }
    if (modified) PrintLine("\t\t" + std::string(modifiedLabel) + ":\t" + *modified, true);
    if (original) PrintLine("\t\t" + std::string(originalLabel) + ":\t" + *original, true);
}
