// TJsonReport: the report as JSON Lines (--json). The comparisons print through
// the same operations as the text report; under --json those operations write
// records here instead of lines. A RapidJSON Writer puts each record together,
// and a FileWriteStream with a fixed buffer streams it into the report file, so
// memory stays flat however long the report runs (one record at most is held).
// doc/vellcmp-json.md describes every record.
#pragma once

#include <rapidjson/filewritestream.h>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include <cstdint>
#include <cstdio>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "dumpers/FieldRow.h"
#include "framework/VellTypes.h"

// Each record is put together in memory and written whole through a
// FileWriteStream, so that a comparison that fails halfway through a record (a
// damaged glyph) leaves no half record behind.
using JsonWriter = rapidjson::Writer<rapidjson::StringBuffer>;

// One step of a difference's path: a field's key, or a number (a glyph, a code,
// a name ID, a pixel size).
struct PathStep {
    PathStep(const char* key) : text(key != nullptr ? key : "") {}
    PathStep(std::string key) : text(std::move(key)) {}
    PathStep(int64_t value) : number(value), isNumber(true) {}
    PathStep(uint32_t value) : number(value), isNumber(true) {}
    PathStep(int32_t value) : number(value), isNumber(true) {}
    PathStep(size_t value) : number(static_cast<int64_t>(value)), isNumber(true) {}
    PathStep(uint16_t value) : number(value), isNumber(true) {}
    PathStep(uint8_t value) : number(value), isNumber(true) {}

    // The step as an --ignore rule spells it: the key, or the number in decimal.
    std::string Text() const { return isNumber ? std::to_string(number) : text; }

    std::string text;
    int64_t number = 0;
    bool isNumber = false;
};

// What a difference is: a value that changed, or an entry of a list that only
// one font has.
enum class DifferenceKind : uint8_t { Changed, Added, Deleted };

class TJsonReport {
public:
    explicit TJsonReport(FILE* out);
    ~TJsonReport();
    TJsonReport(const TJsonReport&) = delete;
    TJsonReport& operator=(const TJsonReport&) = delete;

    // Opens a record, {"type": type, ...; the caller writes its members and
    // closes it with EndRecord, which ends the line.
    JsonWriter& BeginRecord(std::string_view type);
    void EndRecord();
    // Drops the record begun, after a failure while its members were written.
    void AbandonRecord();
    uint64_t BytesWritten() const { return fBytesWritten; }
    void Flush() { fStream.Flush(); }

    // Whole records of the report's frame.
    void PairRecord(const std::string& originalFile, const std::string& originalName,
                    const std::string& originalVersion, const std::string& modifiedFile,
                    const std::string& modifiedName, const std::string& modifiedVersion);
    // A table only one font has (originalSize or modifiedSize is then 0 and left
    // out), or one both have that changed.
    void TableRecord(DifferenceKind kind, VellTag tag, uint32_t modifiedSize, uint32_t originalSize);
    // An error or warning, with the line of detail the text gives after it.
    void MessageRecord(std::string_view level, std::string_view message, std::string_view detail = {});

private:
    char fBuffer[64 * 1024];
    rapidjson::FileWriteStream fStream;
    rapidjson::StringBuffer fRecord;
    JsonWriter fWriter;
    uint64_t fBytesWritten = 0;
};

// The report's JSON form for this run (--json), or null for the text report.
extern TJsonReport* gJsonReport;

// ---- Values, typed as the font holds them ----
// Text as valid UTF-8: a byte that starts no valid sequence becomes U+FFFD.
void WriteText(JsonWriter& writer, std::string_view text);
void WriteTag(JsonWriter& writer, VellTag tag);
// A signed 16.16 value as the shortest decimal that reads back as it (1.07).
void WriteFixed(JsonWriter& writer, int32_t value);
// A 2.14 value as the shortest decimal that reads back as it (-0.5, 0.70001).
void WriteF2Dot14(JsonWriter& writer, int16_t value);
// A 16.16 version whose minor digit sits in the high nibble of the low word, as
// 'maxp', 'post' and 'vhea' write them (0x00005000 is 0.5, 0x00011000 is 1.1); a
// value with other low bits set is written as the 16.16 decimal it is.
void WriteVersion(JsonWriter& writer, uint32_t version);
// Seconds since 1904-01-01 00:00 UTC, as ISO 8601 ("2003-08-01T09:26:40Z").
void WriteDate(JsonWriter& writer, int64_t seconds);
// A point of two 16.16 coordinates, [x, y]: whole coordinates as integers.
void WritePoint(JsonWriter& writer, int32_t x, int32_t y);
// A fixed-layout field of this print kind, from its bits as read (zero-extended).
void WriteFieldValue(JsonWriter& writer, FieldKind kind, uint64_t bits);
// Bytes as upper-case hexadecimal text.
void WriteHex(JsonWriter& writer, const uint8_t* bytes, size_t count);
