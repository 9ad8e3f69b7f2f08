#include "comparators/TTableComparator.h"

#include <algorithm>

#include "VellCmpErrors.h"

namespace {

constexpr size_t kDeltaRowBytes = 8;
constexpr char kHexDigits[] = "0123456789ABCDEF";

// One side of a hex-difference row: the bytes, the gaps for missing ones, then the
// character column. `shown` gives the byte whose character the column shows.
template <typename Shown>
void AppendSide(std::string& row, VellView side, size_t offset, size_t count, Shown shown) {
    for (size_t i = 0; i < count; ++i) {
        uint8_t byte = side.u8(offset + i);
        row.push_back(kHexDigits[byte >> 4]);
        row.push_back(kHexDigits[byte & 0xF]);
        row.push_back(' ');
    }
    row.append(3 * (kDeltaRowBytes - count), ' ');
    row.append("\t|\t");
    for (size_t i = 0; i < count; ++i) {
        uint8_t byte = side.u8(offset + i);
        row.push_back(IsUnprintableByte(byte) ? kUnprintableMark : static_cast<char>(shown(i, byte)));
    }
    row.append(kDeltaRowBytes - count, ' ');
}

}  // namespace

TTableComparator::TTableComparator(VellHandle modifiedTable, VellHandle originalTable, FILE* out)
    : TTableDumper(std::move(modifiedTable), out, nullptr), fOriginalTable(std::move(originalTable)) {
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
    PrintLine("\n#####\n End table comparison\n\n", true);
    return result;
}

int32_t TTableComparator::DumpTableDeltas() {
    if (!HasBothTables()) return 1;
    VellView modified = GetTableView();
    VellView original = GetOriginalTableView();
    size_t rows = (std::max(modified.size(), original.size()) + 7) / kDeltaRowBytes;
    std::string row;
    for (size_t r = 0; r < rows; ++r) {
        size_t offset = r * kDeltaRowBytes;
        size_t m = offset < modified.size() ? std::min(kDeltaRowBytes, modified.size() - offset) : 0;
        size_t o = offset < original.size() ? std::min(kDeltaRowBytes, original.size() - offset) : 0;
        // Positions past the end of a short last row count as equal.
        bool different = m != o || !std::equal(modified.data() + offset, modified.data() + offset + m,
                                               original.data() + offset);
        row.assign(different ? "==> " : "    ");
        row.append(VellFormat("0x%08lX\t", static_cast<unsigned long>(offset)));
        AppendSide(row, modified, offset, m, [](size_t, uint8_t byte) { return byte; });
        row.append("\t||\t");
        // The original side's character column shows the modified table's byte
        // wherever the original byte is printable: a long-standing mix-up that
        // reports keep. Past the end of the modified table the original byte shows.
        AppendSide(row, original, offset, o, [&](size_t i, uint8_t byte) {
            return i < m ? modified.u8(offset + i) : byte;
        });
        row.push_back('\n');
        WriteRaw(row);
    }
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
    PrintFieldRow(indent, row, ModLabel(row.label), modified);
    PrintFieldRow(indent, row, OrigLabel(row.label), original);
}

void TTableComparator::CompareFieldRows(int indent, std::span<const FieldRow> rows, VellView modified,
                                        VellView original) {
    for (const FieldRow& row : rows) CompareFieldRow(indent, row, modified, original);
}
