// TTableDumper: one table of one font, and the whole vocabulary of the report.
// Every line any handler prints goes through the print operations here, so the
// report's line formats live in this class alone, and so does the budget that
// bounds one table's account: a damaged table can claim far more than its bytes
// hold (65,535 'name' records sharing one 64 KB string), and its account stops
// at the budget with one line saying so.
#pragma once

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <functional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "dumpers/FieldRow.h"
#include "dumpers/IgnoreRules.h"
#include "dumpers/TFontContext.h"
#include "dumpers/TJsonReport.h"
#include "framework/VellFontFile.h"
#include "framework/VellMemory.h"
#include "framework/VellView.h"

class TTableDumper {
public:
    TTableDumper(VellHandle table, FILE* out, VellFontRef font);
    // The handler form: a copy of the font's table with this tag, the tag and the
    // font set. The context outlives the dumper.
    TTableDumper(TFontContext& font, VellTag tag, FILE* out);
    virtual ~TTableDumper();
    TTableDumper(const TTableDumper&) = delete;
    TTableDumper& operator=(const TTableDumper&) = delete;

    VellTag GetTableTag() const { return fTag; }
    void SetTableTag(VellTag tag) { fTag = tag; }

    // The table's frame: the "##### Table" header, the contents, the footer.
    virtual int32_t DumpTable();
    FILE* GetOutputFile() const { return fOutput; }
    virtual int32_t GetGlyphName(uint32_t glyph, std::string& name);
    // No dumper knows a glyph's Unicode value; 0xFFFF says so.
    virtual uint32_t GetGlyphUnicode(uint32_t glyph);
    // The table body; here, a hex dump.
    virtual int32_t DumpTableContents();

    // ---- The account's budget ----
    // An account, from its "##### Table" header to its footer, prints at most the
    // larger of kAccountFloorBytes and kAccountBytesPerTableByte times the size of
    // the tables it shows; at the budget it ends with one line saying so, and
    // every print operation after it prints nothing. A loop that prints much per
    // table byte asks here, so that it stops once nothing more can be printed.
    static constexpr uint64_t kAccountFloorBytes = uint64_t{16} << 20;
    static constexpr uint64_t kAccountBytesPerTableByte = 64;
    bool OutputExhausted() const { return fAccountCut; }

    // ---- Lines ----
    // Writes text as it stands, but for "%%", which prints "%" (the text is never
    // a format), then "\n" when lineEnd is set. Silent without an output file.
    void PrintLine(std::string_view text, bool lineEnd);
    // A length-prefixed string (at most 255 bytes, never past the view's end).
    void PrintPascalLine(VellView pascalString, bool lineEnd);
    void PrintWithComment(std::string_view text, int32_t number);

    // ---- Fields: indent tabs, the label, ":\t", the value ----
    void PrintUnicodeValue(int indent, const char* label, uint32_t value, bool unicode, bool lineEnd);
    void PrintStringField(int indent, std::string_view label, std::string_view text);
    void PrintPascalStringField(int indent, std::string_view label, VellView pascalString);
    void PrintVersionField(int indent, std::string_view label, uint32_t version);
    void PrintFixedField(int indent, std::string_view label, int32_t value);
    void PrintTagField(int indent, std::string_view label, VellTag tag);
    void PrintGlyphField(int indent, const char* label, uint32_t glyph, bool unicode, bool lineEnd);
    // A glyph as the newer accounts show it: its number, or "36 (A)" with -p.
    std::string GlyphText(uint32_t glyph);
    // "<label>:\t" and GlyphText, ending the line.
    void PrintGlyphValue(int indent, std::string_view label, uint32_t glyph);
    void PrintInt32Field(int indent, std::string_view label, int32_t value, bool hex, bool lineEnd);
    void PrintUInt32Field(int indent, std::string_view label, uint32_t value, bool hex);
    void PrintUInt16Field(int indent, std::string_view label, uint16_t value, bool hex);
    void PrintInt16Field(int indent, std::string_view label, int16_t value, bool hex);
    void PrintUInt8Field(int indent, std::string_view label, uint8_t value, bool hex);
    void PrintInt8Field(int indent, std::string_view label, int8_t value, bool hex);
    void PrintBooleanField(int indent, std::string_view label, bool value);
    void PrintFlagField(int indent, std::string_view label, uint32_t value);
    void PrintDateField(int indent, std::string_view label, uint64_t date);
    void PrintPointField(int indent, std::string_view label, int32_t x, int32_t y);
    void PrintIndexedStringField(int indent, std::string_view label, int16_t listID, int16_t index);
    void PrintFontNameField(int indent, std::string_view label, uint16_t nameID);
    void PrintIndexedPascalString(int indent, int32_t number, VellView pascalString);
    void PrintIndexedGlyph(int indent, int32_t number, uint32_t glyph, bool unicode);
    void PrintIndexedUInt8(int indent, int32_t number, uint8_t value, bool hex);
    void PrintIndexedUInt16(int indent, int32_t number, uint16_t value, bool hex);
    void PrintIndexedPoint(int indent, int32_t number, int32_t x, int32_t y);

    // ---- Differences ----
    // Every difference a comparator finds passes here before its lines are
    // printed, named by its path: the steps of the enclosing PathScopes, then
    // `step`. The answer is whether the text report prints it: not when an
    // --ignore rule names it; not in a counting pass, which only counts it; and
    // not under --json, where it becomes a record instead, with the members that
    // `values` writes ("original" and "modified" for a change, "value" for an
    // entry only one font has). Without those options nothing else runs.
    template <typename Step, typename Values>
    bool ShowsDifference(DifferenceKind kind, Step step, Values values) {
        if (gJsonReport == nullptr && gIgnoreRules.empty() && !fCountOnly) return true;
        return FilterDifference(kind, PathStep(step), values);
    }
    // A changed value of a fixed layout's field kind, as a changed-value pair.
    template <typename Step>
    bool ShowsChange(Step step, FieldKind kind, uint64_t modifiedBits, uint64_t originalBits) {
        return ShowsDifference(DifferenceKind::Changed, step, [&](JsonWriter& writer) {
            writer.Key("original");
            WriteFieldValue(writer, kind, originalBits);
            writer.Key("modified");
            WriteFieldValue(writer, kind, modifiedBits);
        });
    }
    // A range of differing bytes of a table without a handler: a record with
    // both sides in hexadecimal, counted as one difference.
    void ReportDifferingBytes(size_t offset, VellView modified, VellView original);
    // Whether an --ignore rule names everything under the enclosing PathScopes,
    // so that even their headings are left out.
    bool ScopeIgnored() const { return !gIgnoreRules.empty() && DifferenceIgnored(fTag, fPath); }
    // The steps of the path below a table; a scope adds one for as long as it lives.
    class PathScope {
    public:
        PathScope(TTableDumper& dumper, PathStep step) : fDumper(dumper) { fDumper.fPath.push_back(std::move(step)); }
        ~PathScope() { fDumper.fPath.pop_back(); }
        PathScope(const PathScope&) = delete;
        PathScope& operator=(const PathScope&) = delete;

    private:
        TTableDumper& fDumper;
    };
    // A counting pass prints nothing and writes no record; it counts the
    // differences that no --ignore rule names.
    void SetCountingPass() { fCountOnly = true; }
    bool IsCountingPass() const { return fCountOnly; }
    uint64_t DifferencesCounted() const { return fDifferences; }
    // Whether the account goes out as JSON records rather than as text lines.
    bool WritesRecords() const { return gJsonReport != nullptr && !fCountOnly; }
    // Writes one record of the account ({"type": type, "table": tag, ...}), held
    // to the account's budget like its lines.
    void WriteRecord(std::string_view type, const std::function<void(JsonWriter&)>& members);

    // ---- Fixed layouts ----
    // One field of `table`, printed under `label` with the row's print operation,
    // followed by the row's detail lines.
    void PrintFieldRow(int indent, const FieldRow& row, std::string_view label, VellView table);
    void DumpFieldRows(int indent, std::span<const FieldRow> rows, VellView table);
    // A field's bits as its width reads them, zero-extended.
    static uint64_t FieldBits(const FieldRow& row, VellView table);

    // ---- The table and its font ----
    const VellHandle& GetTableHandle() const { return fTable; }
    uint32_t GetTableSize() const;
    VellView GetTableView() const { return VelmView(fTable); }
    VellFontRef GetFont() const { return fFont; }
    void SetFont(VellFontRef font) { fFont = font; }
    // The font's context, for handlers built in the handler form; null otherwise.
    TFontContext* GetContext() const { return fContext; }
    virtual int GetHandlerKind() const { return 0; }
    uint32_t GetHandleSize(const VellHandle& handle);

protected:
    // The bytes of the tables the account shows: here, the one table.
    virtual uint64_t AccountedTableBytes() const { return GetTableSize(); }
    // The footers are printed outside the budget, so that a cut account still
    // closes as every other does.
    void CloseAccountBudget();

    // Writes bytes with no "%%" folding: pieces of the hex listings, which the
    // report prints one at a time, so two '%' bytes stay two.
    void WriteRaw(std::string_view bytes);
    void WriteIndent(int indent);
    // A line put together piece by piece and written once: indent tabs, text with
    // "%%" folded, "label:\t", then the line end if asked for.
    void BeginLine(int indent);
    void AppendText(std::string_view text);
    void AppendLabel(std::string_view label);
    void EndLine(bool lineEnd);
    // "<label>:\t" and the value in decimal, or in hexadecimal with at least
    // hexDigits digits (a negative value sign-extended to 32 bits).
    void PrintNumberField(int indent, std::string_view label, int64_t value, int hexDigits, bool lineEnd);

private:
    bool FilterDifference(DifferenceKind kind, PathStep step, const std::function<void(JsonWriter&)>& values);
    void WritePath(JsonWriter& writer) const;

    // With --color, lines are held until their end, then written wrapped in the
    // colour of what they show; FlushPendingLine writes a line left open as it is.
    void WriteColoredLines(std::string_view bytes);
    void FlushPendingLine();
    void Emit(std::string_view bytes);
    void OpenAccountBudget();
    // Writes the whole lines of `bytes` that fit in the budget, then the cut line.
    void CutAccount(std::string_view bytes);

    VellHandle fTable;
    FILE* fOutput;
    VellFontRef fFont;
    TFontContext* fContext = nullptr;
    VellTag fTag = 0x20202020;
    std::string fPendingLine;
    std::string fLine;
    uint64_t fAccountLimit = UINT64_MAX;  // what the account may print before its cut line and footers
    uint64_t fAccountBytes = 0;
    bool fAccountCut = false;
    bool fAtLineStart = true;
    std::vector<PathStep> fPath;
    bool fCountOnly = false;
    uint64_t fDifferences = 0;
};

// The printable form of a byte in a hex listing's character column: itself, or
// the unprintable mark (the single byte 0xC2) for control bytes, DEL and every
// byte from 0x80 up.
inline bool IsUnprintableByte(uint8_t byte) {
    return static_cast<int8_t>(byte) < 32 || byte == 127;
}
inline constexpr char kUnprintableMark = static_cast<char>(0xC2);

// The pieces of a hex listing's row, written into a buffer: the offset column
// ("0x%08lX\t"), then count bytes ("%02X " each) padded with three blanks for each
// of the row's missing bytes, then "\t|\t" and the character column, whose byte i
// is shown(i, byte) or the unprintable mark, padded with a blank for each missing
// byte. Each returns where the next piece goes.
char* PutHexOffset(char* at, size_t offset);
template <typename Shown>
char* PutHexSide(char* at, VellView bytes, size_t offset, size_t count, size_t rowBytes, Shown shown);

// A glyph's PostScript name from a font's own 'post' table: empty without one, or
// for a glyph at or past the font's glyph count. A framework failure throws.
std::string PostScriptGlyphName(const VellHandle& post, uint32_t glyphCount, uint32_t glyph);

// Numbers as the report prints them, appended without a printf call: decimal with
// at least minDigits digits ("%02d"), upper-case hexadecimal with at least minDigits
// digits ("%04lX"), and a 16.16 value as "%f" prints value / 65536.0.
void AppendDecimal(std::string& out, int64_t value, int minDigits = 1);
void AppendHex(std::string& out, uint32_t value, int minDigits);
void AppendFixed(std::string& out, int32_t value);
// A 16.16 value as the shortest decimal that reads back as the same value: 1.07,
// -12.5, 1.0 (font tools write 16.16 values the same way).
void AppendShortFixed(std::string& out, int32_t value);
// An F2Dot14 value the same way: 9830 (0.59997...) prints 0.6, 16384 prints 1.0.
void AppendShortF2Dot14(std::string& out, int16_t value);
// "( x, y )" of two 16.16 values.
void AppendPoint(std::string& out, int32_t x, int32_t y);

// printf into a std::string.
std::string VellFormat(const char* format, ...) __attribute__((format(printf, 1, 2)));

template <typename Shown>
char* PutHexSide(char* at, VellView bytes, size_t offset, size_t count, size_t rowBytes, Shown shown) {
    constexpr char kHexDigits[] = "0123456789ABCDEF";
    for (size_t i = 0; i < count; ++i) {
        uint8_t byte = bytes.u8(offset + i);
        *at++ = kHexDigits[byte >> 4];
        *at++ = kHexDigits[byte & 0xF];
        *at++ = ' ';
    }
    for (size_t i = count; i < rowBytes; ++i) at = std::copy_n("   ", 3, at);
    at = std::copy_n("\t|\t", 3, at);
    for (size_t i = 0; i < count; ++i) {
        uint8_t byte = bytes.u8(offset + i);
        *at++ = IsUnprintableByte(byte) ? kUnprintableMark : static_cast<char>(shown(i, byte));
    }
    for (size_t i = count; i < rowBytes; ++i) *at++ = ' ';
    return at;
}
