// One row of a fixed table layout: where a field is, how it is printed, and
// under which label. Handlers describe their fixed layouts as arrays of rows; one
// loop prints them for a dumper (TTableDumper::DumpFieldRows) and one compares
// them for a comparator (TTableComparator::CompareFieldRows).
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <initializer_list>

class TTableDumper;

enum class FieldKind : uint8_t {
    Version,         // 16.16 version, PrintVersionField: both halves as whole numbers
    FixedAsVersion,  // signed 16.16 value, printed as a version is (1.07 reads 1.4587)
    Fixed,           // signed 16.16, PrintFixedField: as a decimal
    Int32,           // 32 bits (unsigned in every layout), PrintInt32Field, decimal, signed
    Int32Hex,        // 32 bits (unsigned in every layout), PrintInt32Field, hexadecimal
    UInt16,          // PrintUInt16Field, decimal
    UInt16Hex,       // PrintUInt16Field, hexadecimal
    UInt16AsSigned,  // unsigned 16 bits (a count), printed signed as PrintInt16Field does
    Int16,           // PrintInt16Field, decimal
    UInt8,         // PrintUInt8Field, decimal
    Int8,          // PrintInt8Field, decimal
    Tag,           // four bytes, PrintTagField
    Flag32,        // 32 bits, PrintFlagField
    Date,          // 64-bit seconds, compared whole, PrintDateField
    DateHighWord,  // 64-bit seconds compared on the high 32 bits only, PrintDateField
    FontName,      // 16-bit name ID, PrintFontNameField
};

// Lines printed right after a field's value line, from that value (the style bits
// after a macStyle, say).
using FieldDetails = void (*)(TTableDumper& dumper, uint32_t value);

// The key names the field in a --json record and an --ignore rule: the field's
// name in the table's published layout, whatever the label says.
struct FieldRow {
    uint32_t offset;
    FieldKind kind;
    const char* label;
    const char* key = nullptr;
    FieldDetails details = nullptr;
};

// Bytes a field of this kind occupies in the table.
constexpr uint32_t FieldWidth(FieldKind kind) {
    switch (kind) {
        case FieldKind::UInt8:
        case FieldKind::Int8:
            return 1;
        case FieldKind::UInt16:
        case FieldKind::UInt16Hex:
        case FieldKind::UInt16AsSigned:
        case FieldKind::Int16:
        case FieldKind::FontName:
            return 2;
        case FieldKind::Date:
        case FieldKind::DateHighWord:
            return 8;
        default:
            return 4;
    }
}

// The first Count rows of a layout, with some fields printed otherwise: each
// revision gives, for the field at its offset, another print kind and label. For
// a layout that two listings (or two versions of a table) print differently.
template <size_t Count, typename Rows>
constexpr std::array<FieldRow, Count> RevisedRows(const Rows& rows, std::initializer_list<FieldRow> revisions) {
    std::array<FieldRow, Count> revised{};
    for (size_t i = 0; i < Count; ++i) {
        revised[i] = rows[i];
        for (const FieldRow& revision : revisions)
            if (revision.offset == rows[i].offset) {
                revised[i].kind = revision.kind;
                revised[i].label = revision.label;
            }
    }
    return revised;
}
