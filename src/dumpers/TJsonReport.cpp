#include "dumpers/TJsonReport.h"

#include <unicode/utf8.h>


#include "dumpers/TTableDumper.h"

TJsonReport* gJsonReport = nullptr;

namespace {

constexpr int64_t kSecondsPerDay = 86400;
// Days from 1904-01-01, the sfnt epoch, to 1970-01-01.
constexpr int64_t kEpochDays = 24107;

// A number already spelled as JSON wants it.
void WriteNumberText(JsonWriter& writer, const std::string& text) {
    writer.RawValue(text.data(), text.size(), rapidjson::kNumberType);
}

}  // namespace

TJsonReport::TJsonReport(FILE* out) : fStream(out, fBuffer, sizeof fBuffer), fWriter(fRecord) {}

TJsonReport::~TJsonReport() { fStream.Flush(); }

JsonWriter& TJsonReport::BeginRecord(std::string_view type) {
    AbandonRecord();
    fWriter.StartObject();
    fWriter.Key("type");
    fWriter.String(type.data(), static_cast<rapidjson::SizeType>(type.size()));
    return fWriter;
}

void TJsonReport::EndRecord() {
    fWriter.EndObject();
    const char* text = fRecord.GetString();
    size_t size = fRecord.GetSize();
    for (size_t i = 0; i < size; ++i) fStream.Put(text[i]);
    fStream.Put('\n');
    fBytesWritten += size + 1;
    AbandonRecord();
}

void TJsonReport::AbandonRecord() {
    // Each line is a document of its own; a large record's memory is not kept.
    if (fRecord.GetSize() > (size_t{1} << 20)) fRecord.ShrinkToFit();
    fRecord.Clear();
    fWriter.Reset(fRecord);
}

void TJsonReport::PairRecord(const std::string& originalFile, const std::string& originalName,
                             const std::string& originalVersion, const std::string& modifiedFile,
                             const std::string& modifiedName, const std::string& modifiedVersion) {
    JsonWriter& writer = BeginRecord("pair");
    auto font = [&](const char* side, const std::string& file, const std::string& name, const std::string& version) {
        writer.Key(side);
        writer.StartObject();
        writer.Key("file");
        WriteText(writer, file);
        writer.Key("fullName");
        WriteText(writer, name);
        writer.Key("version");
        WriteText(writer, version);
        writer.EndObject();
    };
    font("original", originalFile, originalName, originalVersion);
    font("modified", modifiedFile, modifiedName, modifiedVersion);
    EndRecord();
}

void TJsonReport::TableRecord(DifferenceKind kind, VellTag tag, uint32_t modifiedSize, uint32_t originalSize) {
    static constexpr const char* kChanges[] = {"changed", "added", "deleted"};
    JsonWriter& writer = BeginRecord("table");
    writer.Key("change");
    writer.String(kChanges[static_cast<size_t>(kind)]);
    writer.Key("table");
    WriteTag(writer, tag);
    if (kind != DifferenceKind::Deleted) {
        writer.Key("modifiedSize");
        writer.Uint(modifiedSize);
    }
    if (kind != DifferenceKind::Added) {
        writer.Key("originalSize");
        writer.Uint(originalSize);
    }
    EndRecord();
}

void TJsonReport::MessageRecord(std::string_view level, std::string_view message, std::string_view detail) {
    JsonWriter& writer = BeginRecord(level);
    writer.Key("message");
    WriteText(writer, message);
    if (!detail.empty()) {
        writer.Key("detail");
        WriteText(writer, detail);
    }
    EndRecord();
}

// ---- Values ----

void WriteText(JsonWriter& writer, std::string_view text) {
    const auto* bytes = reinterpret_cast<const uint8_t*>(text.data());
    int32_t length = static_cast<int32_t>(std::min<size_t>(text.size(), INT32_MAX));
    bool valid = true;
    for (int32_t i = 0; i < length && valid;) {
        UChar32 c;
        U8_NEXT(bytes, i, length, c);
        valid = c >= 0;
    }
    if (valid) {
        writer.String(text.data(), static_cast<rapidjson::SizeType>(length));
        return;
    }
    std::string repaired;
    for (int32_t i = 0; i < length;) {
        int32_t start = i;
        UChar32 c;
        U8_NEXT(bytes, i, length, c);
        if (c >= 0)
            repaired.append(text.substr(static_cast<size_t>(start), static_cast<size_t>(i - start)));
        else
            repaired.append("\xEF\xBF\xBD");
    }
    writer.String(repaired.data(), static_cast<rapidjson::SizeType>(repaired.size()));
}

void WriteTag(JsonWriter& writer, VellTag tag) { WriteText(writer, VellTagText(tag)); }

// The same shortest decimals as the report's own accounts print.
void WriteFixed(JsonWriter& writer, int32_t value) {
    std::string text;
    AppendShortFixed(text, value);
    WriteNumberText(writer, text);
}

void WriteF2Dot14(JsonWriter& writer, int16_t value) {
    std::string text;
    AppendShortF2Dot14(text, value);
    WriteNumberText(writer, text);
}

void WriteVersion(JsonWriter& writer, uint32_t version) {
    uint32_t minor = version & 0xFFFF;
    if ((minor & 0x0FFF) != 0 || (minor >> 12) > 9) return WriteFixed(writer, static_cast<int32_t>(version));
    std::string text;
    AppendDecimal(text, version >> 16);
    text.push_back('.');
    AppendDecimal(text, minor >> 12);
    WriteNumberText(writer, text);
}

void WriteDate(JsonWriter& writer, int64_t seconds) {
    int64_t days = seconds / kSecondsPerDay, rest = seconds % kSecondsPerDay;
    if (rest < 0) {
        rest += kSecondsPerDay;
        --days;
    }
    // Days since 1970, then the civil date in the proleptic Gregorian calendar.
    int64_t z = days - kEpochDays + 719468;
    int64_t era = (z >= 0 ? z : z - 146096) / 146097;
    int64_t dayOfEra = z - era * 146097;
    int64_t yearOfEra = (dayOfEra - dayOfEra / 1460 + dayOfEra / 36524 - dayOfEra / 146096) / 365;
    int64_t dayOfYear = dayOfEra - (365 * yearOfEra + yearOfEra / 4 - yearOfEra / 100);
    int64_t monthPrime = (5 * dayOfYear + 2) / 153;
    int64_t day = dayOfYear - (153 * monthPrime + 2) / 5 + 1;
    int64_t month = monthPrime < 10 ? monthPrime + 3 : monthPrime - 9;
    int64_t year = yearOfEra + era * 400 + (month <= 2 ? 1 : 0);
    std::string text;
    AppendDecimal(text, year, 4);
    text.push_back('-');
    AppendDecimal(text, month, 2);
    text.push_back('-');
    AppendDecimal(text, day, 2);
    text.push_back('T');
    AppendDecimal(text, rest / 3600, 2);
    text.push_back(':');
    AppendDecimal(text, rest / 60 % 60, 2);
    text.push_back(':');
    AppendDecimal(text, rest % 60, 2);
    text.push_back('Z');
    WriteText(writer, text);
}

void WritePoint(JsonWriter& writer, int32_t x, int32_t y) {
    writer.StartArray();
    for (int32_t coordinate : {x, y}) {
        if ((coordinate & 0xFFFF) == 0)
            writer.Int(coordinate / 65536);
        else
            WriteFixed(writer, coordinate);
    }
    writer.EndArray();
}

void WriteFieldValue(JsonWriter& writer, FieldKind kind, uint64_t bits) {
    switch (kind) {
        case FieldKind::Version: return WriteVersion(writer, static_cast<uint32_t>(bits));
        case FieldKind::Fixed:
        case FieldKind::FixedAsVersion: return WriteFixed(writer, static_cast<int32_t>(bits));
        case FieldKind::Int16: writer.Int(static_cast<int16_t>(bits)); return;
        case FieldKind::Int8: writer.Int(static_cast<int8_t>(bits)); return;
        case FieldKind::Int32:
        case FieldKind::Int32Hex:
        case FieldKind::UInt16:
        case FieldKind::UInt16Hex:
        case FieldKind::UInt16AsSigned:
        case FieldKind::UInt8:
        case FieldKind::Flag32:
        case FieldKind::FontName: writer.Uint(static_cast<uint32_t>(bits)); return;
        case FieldKind::Tag: return WriteTag(writer, static_cast<VellTag>(bits));
        case FieldKind::Date:
        case FieldKind::DateHighWord: return WriteDate(writer, static_cast<int64_t>(bits));
    }
}

void WriteHex(JsonWriter& writer, const uint8_t* bytes, size_t count) {
    constexpr char kDigits[] = "0123456789ABCDEF";
    std::string text(2 * count, '0');
    for (size_t i = 0; i < count; ++i) {
        text[2 * i] = kDigits[bytes[i] >> 4];
        text[2 * i + 1] = kDigits[bytes[i] & 0xF];
    }
    writer.String(text.data(), static_cast<rapidjson::SizeType>(text.size()));
}
