#include "tables/name.h"

#include <unicode/ustring.h>
#include <unicode/utf16.h>
#include <unicode/utf8.h>

#include <optional>
#include <set>
#include <unordered_map>
#include <utility>

#include "VellCmpErrors.h"
#include "framework/VellIdentifiers.h"

namespace {

constexpr size_t kRecordsOffset = 6;
constexpr size_t kRecordSize = 12;
constexpr uint16_t kMacintoshPlatform = 1;
// A converted name keeps the whole characters that fit in this many bytes of UTF-8.
constexpr size_t kNameTextBytes = 256;

// The readable texts of a record's identifiers, from the framework, which numbers
// platforms, encodings, languages and name types one above their IDs.
std::string PlatformText(VellView record, ErrorRecord* error) {
    return VellPlatformToString(record.u16(0) + 1, error);
}
std::string EncodingText(VellView record, ErrorRecord* error) {
    return VellScriptToString(record.u16(0) + 1, record.u16(2) + 1, error);
}
std::string LanguageText(VellView record, ErrorRecord* error) {
    return VellLanguageToString(record.u16(0) + 1, record.u16(2) + 1, record.u16(4) + 1, error);
}
std::string NameTypeText(VellView record, ErrorRecord* error) {
    return VellNameTypeToString(record.u16(6) + 1, error);
}

// An identifier field of a name record, printed with its text on an "-aka-" line.
struct IdentifierRow {
    FieldRow field;
    std::string (*text)(VellView record, ErrorRecord* error);
};
constexpr IdentifierRow kPlatformRow = {{0, FieldKind::UInt16, "Platform ID"}, PlatformText};
constexpr IdentifierRow kEncodingRow = {{2, FieldKind::UInt16, "Platform-specific ID"}, EncodingText};
constexpr IdentifierRow kLanguageRow = {{4, FieldKind::UInt16, "Language ID"}, LanguageText};
constexpr IdentifierRow kNameIDRow = {{6, FieldKind::UInt16, "Name ID"}, NameTypeText};
constexpr FieldRow kPlacementRows[] = {
    {8, FieldKind::UInt16, "Length"},
    {10, FieldKind::UInt16, "Offset"},
};

std::string FetchText(const IdentifierRow& row, VellView record) {
    ErrorRecord error;
    std::string text = row.text(record, &error);
    ThrowIfVellError(error);
    return text;
}

void PrintIdentifier(TTableDumper& dumper, int akaIndent, const IdentifierRow& row, VellView record) {
    dumper.PrintFieldRow(2, row.field, row.field.label, record);
    dumper.PrintStringField(akaIndent, "-aka-", FetchText(row, record));
}

// A name record's identifiers (platform, encoding, language and name ID) as one number.
uint64_t Identifiers(VellView record) { return record.u64(0); }
uint16_t Length(VellView record) { return record.u16(8); }

// One 'name' table: as many records as it holds whole, and their strings as far
// as they lie inside it.
class NameTable {
public:
    explicit NameTable(VellView table)
        : fTable(table),
          fStorage(table.u16(4)),
          fCount(table.records_that_fit(kRecordsOffset, table.u16(2), kRecordSize)) {}

    size_t count() const { return fCount; }
    VellView Record(size_t index) const { return fTable.sub(kRecordsOffset + index * kRecordSize, kRecordSize); }
    VellView String(VellView record) const { return fTable.sub(StringOffset(record), Length(record)); }

    // What two names of one length are compared on: their lengths, and the last
    // byte of each string (a byte past the table's end reads 0). Names have always
    // been compared so: the walk over their bytes keeps only the last pair's
    // answer, and an empty string matches any other empty one.
    uint32_t Signature(VellView record) const {
        uint16_t length = Length(record);
        uint8_t last = length == 0 ? 0 : fTable.u8(StringOffset(record) + length - 1);
        return uint32_t{length} << 8 | last;
    }

private:
    size_t StringOffset(VellView record) const { return size_t{fStorage} + record.u16(10); }

    VellView fTable;
    uint16_t fStorage;
    size_t fCount;
};

// The records of one table by their identifiers. Each search the reports make
// walks the table from its first record; this answers it at once with the record
// the walk would stop at, so that tables of thousands of names stay fast.
class NameIndex {
public:
    explicit NameIndex(const NameTable& table) {
        for (size_t index = 0; index < table.count(); ++index) {
            VellView record = table.Record(index);
            uint32_t signature = table.Signature(record);
            auto [group, added] = fGroups.try_emplace(Identifiers(record), Group{index, signature, std::nullopt});
            if (!added && !group->second.firstOther && signature != group->second.firstSignature)
                group->second.firstOther = index;
            fLengths.emplace(Identifiers(record), Length(record));
        }
    }

    bool Has(uint64_t identifiers) const { return fGroups.contains(identifiers); }
    bool Has(uint64_t identifiers, uint16_t length) const { return fLengths.contains({identifiers, length}); }

    // The first record with these identifiers whose signature differs from this one.
    std::optional<size_t> FirstChanged(uint64_t identifiers, uint32_t signature) const {
        auto group = fGroups.find(identifiers);
        if (group == fGroups.end()) return std::nullopt;
        if (group->second.firstSignature != signature) return group->second.first;
        return group->second.firstOther;
    }

private:
    struct Group {
        size_t first;
        uint32_t firstSignature;
        std::optional<size_t> firstOther;  // the first whose signature is not the first's
    };
    std::unordered_map<uint64_t, Group> fGroups;
    std::set<std::pair<uint64_t, uint16_t>> fLengths;
};

// The text of a name on any platform but the Macintosh: UTF-16BE turned into
// UTF-8, of which only the whole characters that fit in kNameTextBytes are kept.
// An odd last byte is no code unit and is dropped; an unpaired surrogate before
// the cut makes the name unconvertible, and it reads as empty.
std::string Utf16NameText(VellView bytes) {
    // Every character kept takes at least as many bytes of UTF-8 as it has code
    // units, so the kept characters and the one after them lie in these units.
    size_t count = std::min(bytes.size() / 2, kNameTextBytes + 2);
    std::u16string units(count, u'\0');
    for (size_t i = 0; i < count; ++i) units[i] = static_cast<char16_t>(bytes.u16(2 * i));

    int32_t length = static_cast<int32_t>(count), kept = 0;
    size_t utf8Bytes = 0;
    for (int32_t i = 0; i < length;) {
        UChar32 c;
        U16_NEXT(units.data(), i, length, c);
        if (U_IS_SURROGATE(c)) return {};
        if (utf8Bytes + U8_LENGTH(c) > kNameTextBytes) break;
        utf8Bytes += U8_LENGTH(c);
        kept = i;
    }
    char utf8[kNameTextBytes];
    int32_t utf8Length = 0;
    UErrorCode status = U_ZERO_ERROR;
    u_strToUTF8(utf8, sizeof utf8, &utf8Length, units.data(), kept, &status);
    if (U_FAILURE(status)) return {};
    return std::string(utf8, static_cast<size_t>(utf8Length));
}

// A name's text as the report shows it: a Macintosh name byte for byte, whatever
// its script and length; any other as converted Unicode. Both end at a NUL byte,
// as the C strings the report was always written from.
std::string NameText(const NameTable& table, VellView record) {
    VellView bytes = table.String(record);
    std::string text = record.u16(0) == kMacintoshPlatform ? std::string(bytes.chars(0, bytes.size()))
                                                           : Utf16NameText(bytes);
    text.resize(std::min(text.size(), text.find('\0')));
    return text;
}

void PrintNameText(TTableDumper& dumper, const NameTable& table, VellView record) {
    dumper.PrintLine("\t\t\"" + NameText(table, record) + "\"", true);
}

// A name record's place in a difference's path: its name ID first, so that a
// rule "name.5" names every version string, then its platform ID, encoding ID
// and language ID.
template <typename Values>
bool ShowsNameDifference(TTableDumper& dumper, DifferenceKind kind, VellView record, Values values) {
    TTableDumper::PathScope nameID(dumper, record.u16(6)), platform(dumper, record.u16(0)),
        encoding(dumper, record.u16(2));
    return dumper.ShowsDifference(kind, record.u16(4), values);
}

// A listed record's identifiers with their texts, its length and offset. The
// language's "-aka-" line goes out before the language's text is fetched, so it
// repeats the encoding's text; the language's text is fetched only for the
// failure it may bring. Reports have always read so.
void PrintFieldBlock(TTableDumper& dumper, VellView record) {
    PrintIdentifier(dumper, 2, kPlatformRow, record);
    PrintIdentifier(dumper, 2, kEncodingRow, record);
    PrintIdentifier(dumper, 2, {kLanguageRow.field, kEncodingRow.text}, record);
    FetchText(kLanguageRow, record);
    PrintIdentifier(dumper, 2, kNameIDRow, record);
    dumper.DumpFieldRows(2, kPlacementRows, record);
}

enum class Side { Modified, Original };

void PrintName(TTableDumper& dumper, const NameTable& table, VellView record, Side side, bool withFields) {
    dumper.PrintLine(side == Side::Modified ? "\t\t# name (mod )" : "\t\t# name (orig)", true);
    if (withFields) PrintFieldBlock(dumper, record);
    PrintNameText(dumper, table, record);
}

// Each name of `listed` that has no counterpart in the other table, under its index.
template <typename HasCounterpart>
void ListUnpairedNames(TTableDumper& dumper, const NameTable& listed, Side side, const char* label,
                       HasCounterpart hasCounterpart) {
    DifferenceKind kind = side == Side::Modified ? DifferenceKind::Added : DifferenceKind::Deleted;
    for (size_t index = 0; index < listed.count() && !dumper.OutputExhausted(); ++index) {
        VellView record = listed.Record(index);
        if (hasCounterpart(record)) continue;
        if (!ShowsNameDifference(dumper, kind, record, [&](JsonWriter& writer) {
                writer.Key("value");
                WriteText(writer, NameText(listed, record));
            }))
            continue;
        dumper.PrintInt32Field(1, label, static_cast<int32_t>(index), false, true);
        PrintName(dumper, listed, record, side, true);
    }
}

}  // namespace

// The dump lists neither the name ID nor its text.
int32_t TNAMETableDumper::DumpTableContents() {
    if (!GetTableHandle() || GetOutputFile() == nullptr) return 1;
    NameTable table(GetTableView());
    for (size_t index = 0; index < table.count() && !OutputExhausted(); ++index) {
        VellView record = table.Record(index);
        PrintInt32Field(1, "Name", static_cast<int32_t>(index), false, true);
        for (const IdentifierRow& row : {kPlatformRow, kEncodingRow, kLanguageRow})
            PrintIdentifier(*this, 3, row, record);
        DumpFieldRows(2, kPlacementRows, record);
        PrintNameText(*this, table, record);
    }
    return 0;
}

int32_t TNAMETableComparator::DumpTableDeltas() {
    if (!HasBothTables()) return 1;
    ReportAddedNames();
    ReportDeletedNames();
    ReportChangedNames();
    return 0;
}

// A name is added when the original has none with its four identifiers.
void TNAMETableComparator::ReportAddedNames() {
    NameIndex original{NameTable(GetOriginalTableView())};
    PrintLine("\t### Added names ### \n", false);
    ListUnpairedNames(*this, NameTable(GetTableView()), Side::Modified, "Added name, name index",
                      [&](VellView record) { return original.Has(Identifiers(record)); });
}

// A name is deleted when the modified font has none with its four identifiers
// and its length: one whose length changed is listed here, and not as added.
void TNAMETableComparator::ReportDeletedNames() {
    NameIndex modified{NameTable(GetTableView())};
    PrintLine("\t### Deleted names ### \n", false);
    ListUnpairedNames(*this, NameTable(GetOriginalTableView()), Side::Original, "Deleted name, name index",
                      [&](VellView record) { return modified.Has(Identifiers(record), Length(record)); });
}

// Each original name is paired with the first modified name of its identifiers
// whose length or string differs from it.
void TNAMETableComparator::ReportChangedNames() {
    NameTable modified(GetTableView()), original(GetOriginalTableView());
    NameIndex modifiedIndex(modified);
    PrintLine("\t### Changed names ### \n", false);
    for (size_t index = 0; index < original.count() && !OutputExhausted(); ++index) {
        VellView record = original.Record(index);
        std::optional<size_t> match = modifiedIndex.FirstChanged(Identifiers(record), original.Signature(record));
        if (!match) continue;
        VellView modifiedRecord = modified.Record(*match);
        if (!ShowsNameDifference(*this, DifferenceKind::Changed, record, [&](JsonWriter& writer) {
                writer.Key("original");
                WriteText(writer, NameText(original, record));
                writer.Key("modified");
                WriteText(writer, NameText(modified, modifiedRecord));
            }))
            continue;
        PrintInt32Field(1, "Changed name, name index", static_cast<int32_t>(index), false, true);
        PrintFieldBlock(*this, record);
        PrintName(*this, original, record, Side::Original, false);
        PrintName(*this, modified, modifiedRecord, Side::Modified, false);
    }
}
