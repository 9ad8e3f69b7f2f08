#include "dumpers/TTableDumper.h"

#include <cstdarg>
#include <cstring>
#include <exception>

#include "VellCmpErrors.h"
#include "framework/VellGlyphs.h"
#include "framework/VellNames.h"
#include "framework/VellPlatform.h"

namespace {

constexpr char kHexDigits[] = "0123456789ABCDEF";
constexpr size_t kHexDumpRowBytes = 16;

void AppendHexByte(std::string& row, uint8_t byte) {
    row.push_back(kHexDigits[byte >> 4]);
    row.push_back(kHexDigits[byte & 0xF]);
    row.push_back(' ');
}

// The hex offset column of a listing row: "0x%08lX\t".
void AppendOffset(std::string& row, size_t offset) {
    char text[32];
    int length = std::snprintf(text, sizeof text, "0x%08lX\t", static_cast<unsigned long>(offset));
    row.append(text, static_cast<size_t>(length));
}

// The colours of --color: the modified value of a changed-value pair, the
// original value, and a row of a hex difference whose bytes differ.
constexpr std::string_view kModifiedColor = "\x1b[32m";
constexpr std::string_view kOriginalColor = "\x1b[31m";
constexpr std::string_view kDifferingRowColor = "\x1b[33m";
constexpr std::string_view kResetColor = "\x1b[0m";

std::string_view LineColor(std::string_view line) {
    if (line.starts_with("==> ")) return kDifferingRowColor;
    std::string_view label = line.substr(0, line.find(":\t"));
    if (label.ends_with(" (mod )")) return kModifiedColor;
    if (label.ends_with(" (orig)")) return kOriginalColor;
    return {};
}

}  // namespace

std::string VellFormat(const char* format, ...) {
    char small[256];
    va_list arguments;
    va_start(arguments, format);
    int length = std::vsnprintf(small, sizeof small, format, arguments);
    va_end(arguments);
    if (length < 0) return "";
    if (static_cast<size_t>(length) < sizeof small) return std::string(small, static_cast<size_t>(length));
    std::string text(static_cast<size_t>(length) + 1, '\0');
    va_start(arguments, format);
    std::vsnprintf(text.data(), text.size(), format, arguments);
    va_end(arguments);
    text.resize(static_cast<size_t>(length));
    return text;
}

std::string PostScriptGlyphName(const VellHandle& post, uint32_t glyphCount, uint32_t glyph) {
    std::string name;
    if (!post || glyph >= glyphCount) return name;
    int32_t status = VellFindPSGlyphNameFromTable(post, glyph, &name);
    if (status != 0) throw TVellCmpVellException(status);
    return name;
}

TTableDumper::TTableDumper(VellHandle table, FILE* out, VellFontRef font)
    : fTable(std::move(table)), fOutput(out), fFont(font), fNoOutput(out == nullptr) {}

TTableDumper::~TTableDumper() {
    FlushPendingLine();
    ErrorRecord ignored;
    if (fTable) VelmDisposeHandle(fTable, &ignored);
    fOutput = nullptr;
}

int32_t TTableDumper::DumpTable() {
    if (!fTable || fOutput == nullptr) return 0;
    PrintLine("##### Table '", false);
    PrintLine(VellTagText(fTag), false);
    PrintLine(VellFormat("' (%ld bytes in the modified font)", static_cast<long>(GetTableSize())), true);
    int32_t result = DumpTableContents();
    PrintLine("\n#####\n End table\n\n", true);
    FlushPendingLine();
    return result;
}

int32_t TTableDumper::GetGlyphName(uint32_t glyph, std::string& name) {
    name.clear();
    int32_t status = VellGetGlyphName(fFont, glyph, &name);
    if (status != 0) name = VellFormat("### BAD GLYPH NAME (error %d) ###", status);
    return status;
}

uint32_t TTableDumper::GetGlyphUnicode(uint32_t) { return 0xFFFF; }

int32_t TTableDumper::DumpTableContents() {
    if (!fTable || fOutput == nullptr) return 1;
    VellView table = GetTableView();
    std::string row;
    for (size_t offset = 0; offset < table.size(); offset += kHexDumpRowBytes) {
        size_t count = std::min(kHexDumpRowBytes, table.size() - offset);
        row.clear();
        AppendOffset(row, offset);
        for (size_t i = 0; i < count; ++i) AppendHexByte(row, table.u8(offset + i));
        row.append(3 * (kHexDumpRowBytes - count), ' ');
        row.append("\t|\t");
        for (size_t i = 0; i < count; ++i) {
            uint8_t byte = table.u8(offset + i);
            row.push_back(IsUnprintableByte(byte) ? kUnprintableMark : static_cast<char>(byte));
        }
        row.append(kHexDumpRowBytes - count, ' ');
        row.push_back('\n');
        WriteRaw(row);
    }
    return 0;
}

// ---- Lines ----

void TTableDumper::WriteRaw(std::string_view bytes) {
    if (fOutput == nullptr || bytes.empty()) return;
    if (gColorReport) return WriteColoredLines(bytes);
    std::fwrite(bytes.data(), 1, bytes.size(), fOutput);
}

void TTableDumper::WriteColoredLines(std::string_view bytes) {
    for (size_t end = bytes.find('\n'); end != std::string_view::npos; end = bytes.find('\n')) {
        fPendingLine.append(bytes.substr(0, end));
        std::string_view color = LineColor(fPendingLine);
        if (!color.empty()) fPendingLine = std::string(color) + fPendingLine + std::string(kResetColor);
        fPendingLine.push_back('\n');
        std::fwrite(fPendingLine.data(), 1, fPendingLine.size(), fOutput);
        fPendingLine.clear();
        bytes.remove_prefix(end + 1);
    }
    fPendingLine.append(bytes);
}

void TTableDumper::FlushPendingLine() {
    if (fOutput != nullptr && !fPendingLine.empty())
        std::fwrite(fPendingLine.data(), 1, fPendingLine.size(), fOutput);
    fPendingLine.clear();
}

void TTableDumper::PrintLine(std::string_view text, bool lineEnd) {
    if (fOutput == nullptr) return;
    size_t start = 0;
    for (size_t percent = text.find("%%"); percent != std::string_view::npos;
         percent = text.find("%%", start)) {
        WriteRaw(text.substr(start, percent + 1 - start));
        start = percent + 2;
    }
    WriteRaw(text.substr(start));
    if (lineEnd) WriteRaw("\n");
}

void TTableDumper::WriteIndent(int indent) {
    static constexpr std::string_view kTabs = "\t\t\t\t\t\t\t\t\t\t\t\t\t\t\t\t";
    for (; indent > 0; indent -= static_cast<int>(kTabs.size()))
        PrintLine(kTabs.substr(0, std::min<size_t>(static_cast<size_t>(indent), kTabs.size())), false);
}

void TTableDumper::PrintPascalLine(VellView pascalString, bool lineEnd) {
    PrintLine(pascalString.chars(1, pascalString.u8(0)), lineEnd);
}

void TTableDumper::PrintWithComment(std::string_view text, int32_t number) {
    PrintLine(std::string(text) + VellFormat("\t/* %d */", number), true);
}

// ---- Fields ----

void TTableDumper::PrintUnicodeValue(int indent, const char* label, uint32_t value, bool unicode,
                                     bool lineEnd) {
    WriteIndent(indent);
    if (label != nullptr) PrintLine(std::string(label) + ":\t", false);
    PrintLine(unicode ? VellFormat("U+%04X", value) : VellFormat("0x%02X", value), false);
    // Without a name to add, the line stays open for the caller's next words.
    if (!unicode || !gShowUnicodeNames) return;
    ErrorRecord record;
    std::string name = VellGetUnicodeScalarName(value, &record);
    if (record.code != 0) std::terminate();
    PrintLine(" " + name, false);
    PrintLine("", lineEnd);
}

void TTableDumper::PrintStringField(int indent, std::string_view label, std::string_view text) {
    WriteIndent(indent);
    PrintLine(std::string(label) + ":\t" + std::string(text), true);
}

void TTableDumper::PrintPascalStringField(int indent, std::string_view label, VellView pascalString) {
    WriteIndent(indent);
    PrintLine(std::string(label) + ":\t", false);
    PrintPascalLine(pascalString, true);
}

void TTableDumper::PrintVersionField(int indent, std::string_view label, uint32_t version) {
    WriteIndent(indent);
    PrintLine(std::string(label) + VellFormat(":\t%u.%u", version >> 16, version & 0xFFFF), true);
}

void TTableDumper::PrintTagField(int indent, std::string_view label, VellTag tag) {
    WriteIndent(indent);
    PrintLine(std::string(label) + ":\t'" + VellTagText(tag) + "'", true);
}

void TTableDumper::PrintGlyphField(int indent, const char* label, uint32_t glyph, bool unicode,
                                   bool lineEnd) {
    if (fFont == nullptr) {
        // As a plain number; a null label reads as the C library writes one.
        PrintInt32Field(indent, label != nullptr ? label : "(null)", static_cast<int32_t>(glyph), false, true);
        return;
    }
    WriteIndent(indent);
    if (label != nullptr) PrintLine(std::string(label) + ":\t", false);
    PrintLine(VellFormat("%d", static_cast<int32_t>(glyph)), false);
    // Without -p the line is left open, so that the caller's next output goes on it.
    if (!gShowPostScriptNames) return;
    std::string name;
    GetGlyphName(glyph, name);
    PrintLine(" (" + name, false);
    if (unicode) {
        uint32_t value = GetGlyphUnicode(glyph);
        PrintLine(VellFormat(" U+%04X", value), false);
        if (value != 0xFFFF) {
            ErrorRecord record;
            std::string characterName = VellGetUnicodeScalarName(value, &record);
            if (record.code != 0) std::terminate();
            PrintLine("\t" + characterName, false);
        }
    }
    PrintLine(")", lineEnd);
}

void TTableDumper::PrintInt32Field(int indent, std::string_view label, int32_t value, bool hex, bool lineEnd) {
    WriteIndent(indent);
    PrintLine(std::string(label) +
                  (hex ? VellFormat(":\t0x%08lX", static_cast<unsigned long>(static_cast<uint32_t>(value)))
                       : VellFormat(":\t%d", value)),
              lineEnd);
}

void TTableDumper::PrintUInt32Field(int indent, std::string_view label, uint32_t value, bool hex) {
    PrintInt32Field(indent, label, static_cast<int32_t>(value), hex, true);
}

void TTableDumper::PrintUInt16Field(int indent, std::string_view label, uint16_t value, bool hex) {
    WriteIndent(indent);
    PrintLine(std::string(label) + (hex ? VellFormat(":\t0x%04lX", static_cast<unsigned long>(value))
                                        : VellFormat(":\t%d", value)),
              true);
}

void TTableDumper::PrintInt16Field(int indent, std::string_view label, int16_t value, bool hex) {
    // Sign-extended to 32 bits: -5 in hex is 0xFFFFFFFB.
    uint32_t extended = static_cast<uint32_t>(static_cast<int32_t>(value));
    WriteIndent(indent);
    PrintLine(std::string(label) + (hex ? VellFormat(":\t0x%04lX", static_cast<unsigned long>(extended))
                                        : VellFormat(":\t%d", value)),
              true);
}

void TTableDumper::PrintUInt8Field(int indent, std::string_view label, uint8_t value, bool hex) {
    WriteIndent(indent);
    PrintLine(std::string(label) + (hex ? VellFormat(":\t0x%02X", value) : VellFormat(":\t%d", value)), true);
}

void TTableDumper::PrintInt8Field(int indent, std::string_view label, int8_t value, bool hex) {
    uint32_t extended = static_cast<uint32_t>(static_cast<int32_t>(value));
    WriteIndent(indent);
    PrintLine(std::string(label) + (hex ? VellFormat(":\t0x%02X", extended) : VellFormat(":\t%d", value)), true);
}

void TTableDumper::PrintBooleanField(int indent, std::string_view label, bool value) {
    WriteIndent(indent);
    PrintLine(std::string(label) + (value ? ":\tTRUE" : ":\tFALSE"), true);
}

void TTableDumper::PrintFlagField(int indent, std::string_view label, uint32_t value) {
    PrintBooleanField(indent, label, value != 0);
}

void TTableDumper::PrintDateField(int indent, std::string_view label, uint64_t date) {
    // Only the low 32 bits count: the high word of an sfnt date is ignored.
    VellDate calendar = SecondsToDate(static_cast<uint32_t>(date));
    WriteIndent(indent);
    PrintLine(std::string(label) + VellFormat(":\t%02d/%02d/%02d", calendar.month, calendar.day, calendar.year),
              true);
}

void TTableDumper::PrintPointField(int indent, std::string_view label, int32_t x, int32_t y) {
    WriteIndent(indent);
    PrintLine(std::string(label) + VellFormat(":\t( %2f, %2f )", x / 65536.0, y / 65536.0), true);
}

void TTableDumper::PrintIndexedStringField(int indent, std::string_view label, int16_t listID, int16_t index) {
    PrintStringField(indent, label, GetIndString(listID, index));
}

void TTableDumper::PrintFontNameField(int indent, std::string_view label, uint16_t nameID) {
    WriteIndent(indent);
    PrintLine(std::string(label) + ":\t" + NumToString(nameID), false);
    if (fFont != nullptr) {
        // The framework numbers names one above their name IDs.
        ErrorRecord record;
        std::string name;
        VellFindFontNameAsUTF8(fFont, nameID + 1, 0, 0, 0, &name, 0, &record);
        if (record.code != 0) std::terminate();
        PrintLine(" \"" + name + "\"", false);
    }
    PrintLine("\n", false);
}

void TTableDumper::PrintIndexedPascalString(int indent, int32_t number, VellView pascalString) {
    PrintPascalStringField(indent, VellFormat("%d", number), pascalString);
}

void TTableDumper::PrintIndexedGlyph(int indent, int32_t number, uint32_t glyph, bool unicode) {
    PrintGlyphField(indent, VellFormat("%d", number).c_str(), glyph, unicode, true);
}

void TTableDumper::PrintIndexedUInt8(int indent, int32_t number, uint8_t value, bool hex) {
    WriteIndent(indent);
    PrintLine(hex ? VellFormat("%d:\t0x%02X", number, value) : VellFormat("%d:\t%d", number, value), true);
}

void TTableDumper::PrintIndexedUInt16(int indent, int32_t number, uint16_t value, bool hex) {
    WriteIndent(indent);
    PrintLine(hex ? VellFormat("%d:\t0x%04lX", number, static_cast<unsigned long>(value))
                  : VellFormat("%d:\t%d", number, value),
              true);
}

void TTableDumper::PrintIndexedPoint(int indent, int32_t number, int32_t x, int32_t y) {
    WriteIndent(indent);
    PrintLine(VellFormat("%d:\t( %2f, %2f )", number, x / 65536.0, y / 65536.0), true);
}

// ---- Fixed layouts ----

void TTableDumper::PrintFieldRow(int indent, const FieldRow& row, std::string_view label, VellView table) {
    uint32_t at = row.offset;
    switch (row.kind) {
        case FieldKind::Version: PrintVersionField(indent, label, table.u32(at)); break;
        case FieldKind::Int32: PrintInt32Field(indent, label, table.s32(at), false, true); break;
        case FieldKind::Int32Hex: PrintInt32Field(indent, label, table.s32(at), true, true); break;
        case FieldKind::UInt16: PrintUInt16Field(indent, label, table.u16(at), false); break;
        case FieldKind::UInt16Hex: PrintUInt16Field(indent, label, table.u16(at), true); break;
        case FieldKind::Int16: PrintInt16Field(indent, label, table.s16(at), false); break;
        case FieldKind::UInt8: PrintUInt8Field(indent, label, table.u8(at), false); break;
        case FieldKind::Int8: PrintInt8Field(indent, label, table.s8(at), false); break;
        case FieldKind::Tag: PrintTagField(indent, label, table.tag(at)); break;
        case FieldKind::Flag32: PrintFlagField(indent, label, table.u32(at)); break;
        case FieldKind::Date:
        case FieldKind::DateHighWord: PrintDateField(indent, label, table.u64(at)); break;
        case FieldKind::FontName: PrintFontNameField(indent, label, table.u16(at)); break;
    }
    if (row.details != nullptr) {
        uint32_t width = FieldWidth(row.kind);
        row.details(*this, width == 1 ? table.u8(at) : width == 2 ? table.u16(at) : table.u32(at));
    }
}

void TTableDumper::DumpFieldRows(int indent, std::span<const FieldRow> rows, VellView table) {
    for (const FieldRow& row : rows) PrintFieldRow(indent, row, row.label, table);
}

// ---- The table ----

uint32_t TTableDumper::GetTableSize() const { return fTable ? static_cast<uint32_t>(fTable->bytes.size()) : 0; }

void TTableDumper::LockHandle(const VellHandle& handle) {
    ErrorRecord record;
    VelmHLock(handle, &record);
    ThrowIfVellError(record);
}

void TTableDumper::UnlockHandle(const VellHandle& handle) {
    ErrorRecord record;
    VelmHUnlock(handle, &record);
    ThrowIfVellError(record);
}

uint32_t TTableDumper::GetHandleSize(const VellHandle& handle) {
    ErrorRecord record;
    uint32_t size = VelmGetHandleSize(handle, &record);
    ThrowIfVellError(record);
    return size;
}

void TTableDumper::DisposeHandle(VellHandle& handle) {
    ErrorRecord record;
    VelmDisposeHandle(handle, &record);
    ThrowIfVellError(record);
}

void TTableDumper::CopyHandle(VellHandle& handle) {
    ErrorRecord record;
    handle = VelmHandToHand(handle, &record);
    ThrowIfVellError(record);
}
