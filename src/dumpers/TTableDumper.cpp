#include "dumpers/TTableDumper.h"

#include <algorithm>
#include <cstdarg>
#include <cmath>
#include <cstring>
#include <exception>

#include "VellCmpErrors.h"
#include "framework/VellGlyphs.h"
#include "framework/VellNames.h"
#include "framework/VellPlatform.h"

namespace {

constexpr char kHexDigits[] = "0123456789ABCDEF";
constexpr size_t kHexDumpRowBytes = 16;
// A hex dump row is at most this long: offset, bytes, character column, line end.
constexpr size_t kHexDumpRowChars = 11 + 3 * kHexDumpRowBytes + 3 + kHexDumpRowBytes + 1;
// What an account holds back from its budget for its cut line and its footers.
constexpr uint64_t kAccountClosingBytes = 512;

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

namespace {

// Writes the digits of a number into a buffer that ends at `end`, backwards, with
// at least minDigits digits; returns where they begin.
char* FormatDigits(char* end, uint64_t value, int minDigits) {
    char* at = end;
    do {
        *--at = static_cast<char>('0' + value % 10);
        value /= 10;
    } while (value != 0);
    while (end - at < minDigits) *--at = '0';
    return at;
}

}  // namespace

void AppendDecimal(std::string& out, int64_t value, int minDigits) {
    char buffer[24];
    char* end = buffer + sizeof buffer;
    uint64_t magnitude = value < 0 ? uint64_t{0} - static_cast<uint64_t>(value) : static_cast<uint64_t>(value);
    char* at = FormatDigits(end, magnitude, minDigits);
    if (value < 0) *--at = '-';
    out.append(at, end);
}

void AppendHex(std::string& out, uint32_t value, int minDigits) {
    char buffer[8];
    char* end = buffer + sizeof buffer;
    char* at = end;
    do {
        *--at = kHexDigits[value & 0xF];
        value >>= 4;
    } while (value != 0);
    out.append(static_cast<size_t>(std::max<ptrdiff_t>(minDigits - (end - at), 0)), '0');
    out.append(at, end);
}

void AppendFixed(std::string& out, int32_t value) {
    uint64_t magnitude = value < 0 ? uint64_t{0} - static_cast<uint64_t>(int64_t{value}) : static_cast<uint64_t>(value);
    // The exact binary fraction rounded to six decimals, ties to even.
    uint64_t whole = magnitude >> 16, scaled = (magnitude & 0xFFFF) * 1000000;
    uint64_t micros = scaled >> 16, rest = scaled & 0xFFFF;
    if (rest > 0x8000 || (rest == 0x8000 && (micros & 1) != 0)) ++micros;
    if (micros == 1000000) {
        micros = 0;
        ++whole;
    }
    char buffer[32];
    char* end = buffer + sizeof buffer;
    char* at = FormatDigits(end, micros, 6);
    *--at = '.';
    at = FormatDigits(at, whole, 1);
    if (value < 0) *--at = '-';
    out.append(at, end);
}

namespace {

// A fixed-point value of `unit` steps per whole as the shortest decimal that
// reads back as the same value. Five places tell apart every step of 16.16 and
// of F2Dot14, so the search always ends there.
void AppendShortFraction(std::string& out, int32_t value, double unit) {
    int64_t scale = 1;
    int64_t scaled = 0;
    int decimals = 0;
    for (; decimals < 5; ++decimals, scale *= 10) {
        scaled = std::llround(static_cast<double>(value) * static_cast<double>(scale) / unit);
        if (std::llround(static_cast<double>(scaled) * unit / static_cast<double>(scale)) == value) break;
    }
    if (decimals == 5) scaled = std::llround(static_cast<double>(value) * static_cast<double>(scale) / unit);
    uint64_t magnitude = scaled < 0 ? uint64_t{0} - static_cast<uint64_t>(scaled) : static_cast<uint64_t>(scaled);
    if (scaled < 0) out.push_back('-');
    AppendDecimal(out, static_cast<int64_t>(magnitude / static_cast<uint64_t>(scale)));
    out.push_back('.');
    AppendDecimal(out, static_cast<int64_t>(magnitude % static_cast<uint64_t>(scale)), std::max(decimals, 1));
}

}  // namespace

void AppendShortFixed(std::string& out, int32_t value) { AppendShortFraction(out, value, 65536.0); }

void AppendShortF2Dot14(std::string& out, int16_t value) { AppendShortFraction(out, value, 16384.0); }

void AppendPoint(std::string& out, int32_t x, int32_t y) {
    out.append("( ");
    AppendFixed(out, x);
    out.append(", ");
    AppendFixed(out, y);
    out.append(" )");
}

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

char* PutHexOffset(char* at, size_t offset) {
    char digits[16];
    int count = 0;
    do {
        digits[count++] = kHexDigits[offset & 0xF];
        offset >>= 4;
    } while (offset != 0);
    *at++ = '0';
    *at++ = 'x';
    for (int pad = 8 - count; pad > 0; --pad) *at++ = '0';
    while (count > 0) *at++ = digits[--count];
    *at++ = '\t';
    return at;
}

std::string PostScriptGlyphName(const VellHandle& post, uint32_t glyphCount, uint32_t glyph) {
    std::string name;
    if (!post || glyph >= glyphCount) return name;
    int32_t status = VellFindPSGlyphNameFromTable(post, glyph, &name);
    if (status != 0) throw TVellCmpVellException(status);
    return name;
}

TTableDumper::TTableDumper(VellHandle table, FILE* out, VellFontRef font)
    : fTable(std::move(table)), fOutput(out), fFont(font) {}

TTableDumper::TTableDumper(TFontContext& font, VellTag tag, FILE* out)
    : TTableDumper(font.CopyTable(tag), out, font.Font()) {
    fTag = tag;
    fContext = &font;
}

TTableDumper::~TTableDumper() {
    FlushPendingLine();
    ErrorRecord ignored;
    if (fTable) VelmDisposeHandle(fTable, &ignored);
    fOutput = nullptr;
}

int32_t TTableDumper::DumpTable() {
    if (!fTable || fOutput == nullptr) return 0;
    OpenAccountBudget();
    PrintLine("##### Table '", false);
    PrintLine(VellTagText(fTag), false);
    PrintLine(VellFormat("' (%ld bytes in the modified font)", static_cast<long>(GetTableSize())), true);
    int32_t result = DumpTableContents();
    CloseAccountBudget();
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
    for (size_t offset = 0; offset < table.size() && !OutputExhausted(); offset += kHexDumpRowBytes) {
        size_t count = std::min(kHexDumpRowBytes, table.size() - offset);
        char row[kHexDumpRowChars];
        char* at = PutHexOffset(row, offset);
        at = PutHexSide(at, table, offset, count, kHexDumpRowBytes, [](size_t, uint8_t byte) { return byte; });
        *at++ = '\n';
        WriteRaw({row, static_cast<size_t>(at - row)});
    }
    return 0;
}

// ---- The account's budget ----

void TTableDumper::OpenAccountBudget() {
    uint64_t budget = std::max(kAccountFloorBytes, kAccountBytesPerTableByte * AccountedTableBytes());
    fAccountLimit = budget - kAccountClosingBytes;
    fAccountBytes = 0;
    fAccountCut = false;
}

void TTableDumper::CloseAccountBudget() {
    fAccountLimit = UINT64_MAX;
    fAccountCut = false;
}

void TTableDumper::WriteRecord(std::string_view type, const std::function<void(JsonWriter&)>& members) {
    if (fAccountCut || !WritesRecords()) return;
    uint64_t before = gJsonReport->BytesWritten();
    JsonWriter& writer = gJsonReport->BeginRecord(type);
    writer.Key("table");
    WriteTag(writer, fTag);
    try {
        members(writer);
    } catch (...) {
        gJsonReport->AbandonRecord();
        throw;
    }
    gJsonReport->EndRecord();
    fAccountBytes += gJsonReport->BytesWritten() - before;
    if (fAccountBytes <= fAccountLimit) return;
    // Records go out whole, so the cut falls after the record that crossed the budget.
    fAccountCut = true;
    gJsonReport->MessageRecord("warning", "The account of '" + VellTagText(fTag) + "' was cut at " +
                                              std::to_string(fAccountBytes) + " bytes: an account prints at most " +
                                              std::to_string(kAccountBytesPerTableByte) +
                                              " times the size of the tables it shows, or 16 MB when that is more "
                                              "(a damaged table?)");
}

bool TTableDumper::FilterDifference(DifferenceKind kind, PathStep step,
                                    const std::function<void(JsonWriter&)>& values) {
    fPath.push_back(std::move(step));
    bool shown = gIgnoreRules.empty() || !DifferenceIgnored(fTag, fPath);
    if (shown) {
        ++fDifferences;
        static constexpr const char* kChanges[] = {"changed", "added", "deleted"};
        WriteRecord(kind == DifferenceKind::Changed ? "field" : "entry", [&](JsonWriter& writer) {
            if (kind != DifferenceKind::Changed) {
                writer.Key("change");
                writer.String(kChanges[static_cast<size_t>(kind)]);
            }
            WritePath(writer);
            values(writer);
        });
    }
    fPath.pop_back();
    return shown && !fCountOnly && gJsonReport == nullptr;
}

void TTableDumper::ReportDifferingBytes(size_t offset, VellView modified, VellView original) {
    ++fDifferences;
    WriteRecord("bytes", [&](JsonWriter& writer) {
        writer.Key("offset");
        writer.Uint64(offset);
        writer.Key("original");
        WriteHex(writer, original.data(), original.size());
        writer.Key("modified");
        WriteHex(writer, modified.data(), modified.size());
    });
}

void TTableDumper::WritePath(JsonWriter& writer) const {
    writer.Key("path");
    writer.StartArray();
    for (const PathStep& step : fPath) {
        if (step.isNumber)
            writer.Int64(step.number);
        else
            WriteText(writer, step.text);
    }
    writer.EndArray();
}

void TTableDumper::CutAccount(std::string_view bytes) {
    // Only whole lines go out before the cut, so that no value is shown half printed.
    std::string_view fitting = bytes.substr(0, static_cast<size_t>(fAccountLimit - fAccountBytes));
    size_t lastLineEnd = fitting.rfind('\n');
    if (lastLineEnd != std::string_view::npos) {
        fAccountBytes += lastLineEnd + 1;
        Emit(fitting.substr(0, lastLineEnd + 1));
    }
    std::string cut = fAtLineStart ? "" : "\n";
    cut += "##### The account of '" + VellTagText(fTag) + "' was cut at " + std::to_string(fAccountBytes) +
           " bytes: an account prints at most " + std::to_string(kAccountBytesPerTableByte) +
           " times the size of the tables it shows, or 16 MB when that is more (a damaged table?)\n";
    Emit(cut);
    fAccountCut = true;
}

// ---- Lines ----

void TTableDumper::WriteRaw(std::string_view bytes) {
    if (fOutput == nullptr || bytes.empty() || fAccountCut) return;
    // Under --json and in a counting pass the lines are put together and dropped.
    if (fCountOnly || gJsonReport != nullptr) return;
    if (bytes.size() > fAccountLimit - fAccountBytes) return CutAccount(bytes);
    fAccountBytes += bytes.size();
    Emit(bytes);
}

void TTableDumper::Emit(std::string_view bytes) {
    fAtLineStart = bytes.back() == '\n';
    if (gColorReport) return WriteColoredLines(bytes);
#if defined(__GLIBC__)
    // One thread writes the report: the stream's lock is no use.
    fwrite_unlocked(bytes.data(), 1, bytes.size(), fOutput);
#else
    std::fwrite(bytes.data(), 1, bytes.size(), fOutput);
#endif
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
    BeginLine(0);
    AppendText(text);
    EndLine(lineEnd);
}

// A print operation puts its line together here and writes it in one piece.
void TTableDumper::BeginLine(int indent) { fLine.assign(static_cast<size_t>(std::max(indent, 0)), '\t'); }

// Text is written as it stands but for "%%", which prints "%": reports have always
// passed their text through printf as its format.
void TTableDumper::AppendText(std::string_view text) {
    if (fAccountCut) return;
    for (size_t percent = text.find("%%"); percent != std::string_view::npos; percent = text.find("%%")) {
        fLine.append(text.substr(0, percent + 1));
        text.remove_prefix(percent + 2);
    }
    fLine.append(text);
}

void TTableDumper::AppendLabel(std::string_view label) {
    AppendText(label);
    fLine.append(":\t");
}

void TTableDumper::EndLine(bool lineEnd) {
    if (lineEnd) fLine.push_back('\n');
    WriteRaw(fLine);
}

void TTableDumper::WriteIndent(int indent) {
    BeginLine(indent);
    EndLine(false);
}

void TTableDumper::PrintPascalLine(VellView pascalString, bool lineEnd) {
    PrintLine(pascalString.chars(1, pascalString.u8(0)), lineEnd);
}

void TTableDumper::PrintWithComment(std::string_view text, int32_t number) {
    BeginLine(0);
    AppendText(text);
    fLine.append("\t/* ");
    AppendDecimal(fLine, number);
    fLine.append(" */");
    EndLine(true);
}

// ---- Fields ----

void TTableDumper::PrintUnicodeValue(int indent, const char* label, uint32_t value, bool unicode,
                                     bool lineEnd) {
    // Names are looked up for nothing once the account is cut.
    if (fAccountCut) return;
    BeginLine(indent);
    if (label != nullptr) AppendLabel(label);
    fLine.append(unicode ? "U+" : "0x");
    AppendHex(fLine, value, unicode ? 4 : 2);
    // Without a name to add, the line stays open for the caller's next words.
    if (!unicode || !gShowUnicodeNames) return EndLine(false);
    ErrorRecord record;
    std::string name = VellGetUnicodeScalarName(value, &record);
    if (record.code != 0) std::terminate();
    fLine.push_back(' ');
    AppendText(name);
    EndLine(lineEnd);
}

void TTableDumper::PrintStringField(int indent, std::string_view label, std::string_view text) {
    BeginLine(indent);
    AppendLabel(label);
    AppendText(text);
    EndLine(true);
}

void TTableDumper::PrintPascalStringField(int indent, std::string_view label, VellView pascalString) {
    PrintStringField(indent, label, pascalString.chars(1, pascalString.u8(0)));
}

void TTableDumper::PrintVersionField(int indent, std::string_view label, uint32_t version) {
    // Both halves as whole numbers: 0x00018000 reads 1.32768, as reports always have.
    BeginLine(indent);
    AppendLabel(label);
    AppendDecimal(fLine, version >> 16);
    fLine.push_back('.');
    AppendDecimal(fLine, version & 0xFFFF);
    EndLine(true);
}

void TTableDumper::PrintFixedField(int indent, std::string_view label, int32_t value) {
    BeginLine(indent);
    AppendLabel(label);
    AppendShortFixed(fLine, value);
    EndLine(true);
}

void TTableDumper::PrintTagField(int indent, std::string_view label, VellTag tag) {
    BeginLine(indent);
    AppendLabel(label);
    fLine.push_back('\'');
    AppendText(VellTagText(tag));
    fLine.push_back('\'');
    EndLine(true);
}

std::string TTableDumper::GlyphText(uint32_t glyph) {
    std::string text;
    AppendDecimal(text, glyph);
    if (!gShowPostScriptNames) return text;
    std::string name;
    GetGlyphName(glyph, name);
    return text + " (" + name + ")";
}

void TTableDumper::PrintGlyphValue(int indent, std::string_view label, uint32_t glyph) {
    PrintStringField(indent, label, GlyphText(glyph));
}

void TTableDumper::PrintGlyphField(int indent, const char* label, uint32_t glyph, bool unicode,
                                   bool lineEnd) {
    if (fAccountCut) return;
    if (fFont == nullptr) {
        // As a plain number; a null label reads as the C library writes one.
        PrintInt32Field(indent, label != nullptr ? label : "(null)", static_cast<int32_t>(glyph), false, true);
        return;
    }
    BeginLine(indent);
    if (label != nullptr) AppendLabel(label);
    AppendDecimal(fLine, static_cast<int32_t>(glyph));
    // Without -p the line is left open, so that the caller's next output goes on it.
    if (!gShowPostScriptNames) return EndLine(false);
    std::string name;
    GetGlyphName(glyph, name);
    fLine.append(" (");
    AppendText(name);
    if (unicode) {
        uint32_t value = GetGlyphUnicode(glyph);
        fLine.append(" U+");
        AppendHex(fLine, value, 4);
        if (value != 0xFFFF) {
            ErrorRecord record;
            std::string characterName = VellGetUnicodeScalarName(value, &record);
            if (record.code != 0) std::terminate();
            fLine.push_back('\t');
            AppendText(characterName);
        }
    }
    fLine.push_back(')');
    EndLine(lineEnd);
}

void TTableDumper::PrintNumberField(int indent, std::string_view label, int64_t value, int hexDigits, bool lineEnd) {
    BeginLine(indent);
    AppendLabel(label);
    if (hexDigits > 0) {
        fLine.append("0x");
        AppendHex(fLine, static_cast<uint32_t>(value), hexDigits);
    } else {
        AppendDecimal(fLine, value);
    }
    EndLine(lineEnd);
}

void TTableDumper::PrintInt32Field(int indent, std::string_view label, int32_t value, bool hex, bool lineEnd) {
    PrintNumberField(indent, label, value, hex ? 8 : 0, lineEnd);
}

void TTableDumper::PrintUInt32Field(int indent, std::string_view label, uint32_t value, bool hex) {
    PrintInt32Field(indent, label, static_cast<int32_t>(value), hex, true);
}

void TTableDumper::PrintUInt16Field(int indent, std::string_view label, uint16_t value, bool hex) {
    PrintNumberField(indent, label, value, hex ? 4 : 0, true);
}

// Signed values are sign-extended to 32 bits before they are formatted: -5 in hex
// is 0xFFFFFFFB, however narrow the field.
void TTableDumper::PrintInt16Field(int indent, std::string_view label, int16_t value, bool hex) {
    PrintNumberField(indent, label, value, hex ? 4 : 0, true);
}

void TTableDumper::PrintUInt8Field(int indent, std::string_view label, uint8_t value, bool hex) {
    PrintNumberField(indent, label, value, hex ? 2 : 0, true);
}

void TTableDumper::PrintInt8Field(int indent, std::string_view label, int8_t value, bool hex) {
    PrintNumberField(indent, label, value, hex ? 2 : 0, true);
}

void TTableDumper::PrintBooleanField(int indent, std::string_view label, bool value) {
    BeginLine(indent);
    AppendLabel(label);
    fLine.append(value ? "TRUE" : "FALSE");
    EndLine(true);
}

void TTableDumper::PrintFlagField(int indent, std::string_view label, uint32_t value) {
    PrintBooleanField(indent, label, value != 0);
}

void TTableDumper::PrintDateField(int indent, std::string_view label, uint64_t date) {
    // Only the low 32 bits count: the high word of an sfnt date is ignored.
    VellDate calendar = SecondsToDate(static_cast<uint32_t>(date));
    BeginLine(indent);
    AppendLabel(label);
    AppendDecimal(fLine, calendar.month, 2);
    fLine.push_back('/');
    AppendDecimal(fLine, calendar.day, 2);
    fLine.push_back('/');
    AppendDecimal(fLine, calendar.year, 2);
    EndLine(true);
}

void TTableDumper::PrintPointField(int indent, std::string_view label, int32_t x, int32_t y) {
    BeginLine(indent);
    AppendLabel(label);
    AppendPoint(fLine, x, y);
    EndLine(true);
}

void TTableDumper::PrintIndexedStringField(int indent, std::string_view label, int16_t listID, int16_t index) {
    PrintStringField(indent, label, GetIndString(listID, index));
}

void TTableDumper::PrintFontNameField(int indent, std::string_view label, uint16_t nameID) {
    if (fAccountCut) return;
    BeginLine(indent);
    AppendLabel(label);
    fLine.append(NumToString(nameID));
    if (fFont != nullptr) {
        // The framework numbers names one above their name IDs.
        ErrorRecord record;
        std::string name;
        VellFindFontNameAsUTF8(fFont, nameID + 1, 0, 0, 0, &name, 0, &record);
        if (record.code != 0) std::terminate();
        fLine.append(" \"");
        AppendText(name);
        fLine.push_back('"');
    }
    EndLine(true);
}

void TTableDumper::PrintIndexedPascalString(int indent, int32_t number, VellView pascalString) {
    std::string label;
    AppendDecimal(label, number);
    PrintPascalStringField(indent, label, pascalString);
}

void TTableDumper::PrintIndexedGlyph(int indent, int32_t number, uint32_t glyph, bool unicode) {
    std::string label;
    AppendDecimal(label, number);
    PrintGlyphField(indent, label.c_str(), glyph, unicode, true);
}

void TTableDumper::PrintIndexedUInt8(int indent, int32_t number, uint8_t value, bool hex) {
    std::string label;
    AppendDecimal(label, number);
    PrintNumberField(indent, label, value, hex ? 2 : 0, true);
}

void TTableDumper::PrintIndexedUInt16(int indent, int32_t number, uint16_t value, bool hex) {
    std::string label;
    AppendDecimal(label, number);
    PrintNumberField(indent, label, value, hex ? 4 : 0, true);
}

void TTableDumper::PrintIndexedPoint(int indent, int32_t number, int32_t x, int32_t y) {
    BeginLine(indent);
    AppendDecimal(fLine, number);
    fLine.append(":\t");
    AppendPoint(fLine, x, y);
    EndLine(true);
}

// ---- Fixed layouts ----

void TTableDumper::PrintFieldRow(int indent, const FieldRow& row, std::string_view label, VellView table) {
    uint32_t at = row.offset;
    switch (row.kind) {
        case FieldKind::Version:
        case FieldKind::FixedAsVersion: PrintVersionField(indent, label, table.u32(at)); break;
        case FieldKind::Fixed: PrintFixedField(indent, label, table.s32(at)); break;
        case FieldKind::Int32: PrintInt32Field(indent, label, table.s32(at), false, true); break;
        case FieldKind::Int32Hex: PrintInt32Field(indent, label, table.s32(at), true, true); break;
        case FieldKind::UInt16: PrintUInt16Field(indent, label, table.u16(at), false); break;
        case FieldKind::UInt16Hex: PrintUInt16Field(indent, label, table.u16(at), true); break;
        case FieldKind::UInt16AsSigned:
        case FieldKind::Int16: PrintInt16Field(indent, label, table.s16(at), false); break;
        case FieldKind::UInt8: PrintUInt8Field(indent, label, table.u8(at), false); break;
        case FieldKind::Int8: PrintInt8Field(indent, label, table.s8(at), false); break;
        case FieldKind::Tag: PrintTagField(indent, label, table.tag(at)); break;
        case FieldKind::Flag32: PrintFlagField(indent, label, table.u32(at)); break;
        case FieldKind::Date:
        case FieldKind::DateHighWord: PrintDateField(indent, label, table.u64(at)); break;
        case FieldKind::FontName: PrintFontNameField(indent, label, table.u16(at)); break;
    }
    if (row.details != nullptr) row.details(*this, static_cast<uint32_t>(FieldBits(row, table)));
}

uint64_t TTableDumper::FieldBits(const FieldRow& row, VellView table) {
    switch (FieldWidth(row.kind)) {
        case 1: return table.u8(row.offset);
        case 2: return table.u16(row.offset);
        case 8: return table.u64(row.offset);
        default: return table.u32(row.offset);
    }
}

void TTableDumper::DumpFieldRows(int indent, std::span<const FieldRow> rows, VellView table) {
    for (const FieldRow& row : rows) PrintFieldRow(indent, row, row.label, table);
}

// ---- The table ----

uint32_t TTableDumper::GetTableSize() const { return fTable ? static_cast<uint32_t>(fTable->bytes.size()) : 0; }

uint32_t TTableDumper::GetHandleSize(const VellHandle& handle) {
    ErrorRecord record;
    uint32_t size = VelmGetHandleSize(handle, &record);
    ThrowIfVellError(record);
    return size;
}

