#include "framework/VellNames.h"

#include <unicode/ucnv.h>
#include <unicode/ustring.h>

#include <map>
#include <string_view>

#include "framework/VellTables.h"

namespace {

constexpr uint16_t kUnicodePlatform = 0;
constexpr uint16_t kMacintoshPlatform = 1;
constexpr uint16_t kMicrosoftPlatform = 3;
constexpr size_t kNameRecordSize = 12;

struct NameRecord {
    uint16_t platformID, encodingID, languageID, nameID;
    std::string_view bytes;
};

// The ICU converter for a Macintosh script, or null where ICU has none. Turkish
// is the Roman script with the Turkish language.
const char* MacConverterName(uint16_t encodingID, uint16_t languageID) {
    switch (encodingID) {
        case 0: return languageID == 17 ? "x-mac-turkish" : "macintosh";
        case 1: return "Shift_JIS";
        case 2: return "Big5";
        case 3: return "EUC-KR";
        case 6: return "x-mac-greek";
        case 7: return "x-mac-cyrillic";
        case 25: return "GB2312";
        case 29: return "x-mac-centraleurroman";
        default: return nullptr;
    }
}

bool Utf16ToUtf8(const std::u16string& units, std::string* utf8) {
    UErrorCode status = U_ZERO_ERROR;
    int32_t length = 0;
    u_strToUTF8WithSub(nullptr, 0, &length, units.data(), static_cast<int32_t>(units.size()), 0xFFFD,
                       nullptr, &status);
    if (status != U_BUFFER_OVERFLOW_ERROR && U_FAILURE(status)) return false;
    utf8->assign(static_cast<size_t>(length), '\0');
    status = U_ZERO_ERROR;
    u_strToUTF8WithSub(utf8->data(), length, nullptr, units.data(), static_cast<int32_t>(units.size()),
                       0xFFFD, nullptr, &status);
    return U_SUCCESS(status) || status == U_STRING_NOT_TERMINATED_WARNING;
}

bool IsReadable(uint16_t platformID, uint16_t encodingID, uint16_t languageID) {
    if (platformID == kUnicodePlatform || platformID == kMicrosoftPlatform) return true;
    if (platformID != kMacintoshPlatform) return false;
    const char* name = MacConverterName(encodingID, languageID);
    if (name == nullptr) return false;
    // Whether ICU's data has the converter does not change during a run.
    static std::map<std::string_view, bool> available;
    auto known = available.find(name);
    if (known != available.end()) return known->second;
    UErrorCode status = U_ZERO_ERROR;
    UConverter* converter = ucnv_open(name, &status);
    if (converter != nullptr) ucnv_close(converter);
    return available[name] = U_SUCCESS(status);
}

// A font's 'name' table. One whose directory entry runs past the end of the file
// is an error for every call that reads it; a font without one has no names.
class NameTable {
public:
    NameTable(VellFontRef font, ErrorRecord* record) {
        if (font == nullptr) {
            record->code = kVellParamErr;
            return;
        }
        fTable = VellFontTableView(font, VellMakeTag("name"), record);
        fCount = fTable.records_that_fit(6, fTable.u16(2), kNameRecordSize);
        fStorage = fTable.u16(4);
    }
    size_t count() const { return fCount; }
    NameRecord record(size_t zeroBasedIndex) const {
        size_t at = 6 + zeroBasedIndex * kNameRecordSize;
        return {fTable.u16(at), fTable.u16(at + 2), fTable.u16(at + 4), fTable.u16(at + 6),
                fTable.chars(size_t{fStorage} + fTable.u16(at + 10), fTable.u16(at + 8))};
    }

private:
    VellView fTable;
    size_t fCount = 0;
    uint16_t fStorage = 0;
};

bool Readable(const NameRecord& name) {
    return IsReadable(name.platformID, name.encodingID, name.languageID);
}

bool Matches(const NameRecord& name, int32_t code, int32_t platform, int32_t script, int32_t language) {
    return name.nameID + 1 == code && (platform == 0 || name.platformID + 1 == platform) &&
           (script == 0 || name.encodingID + 1 == script) &&
           (language == 0 || name.languageID + 1 == language);
}

// The 1-based index of the best readable record, or 0 when there is none.
uint32_t BestRecord(const NameTable& table, int32_t code, int32_t platform, int32_t script,
                    int32_t language) {
    if (platform != 0 || script != 0 || language != 0) {
        for (size_t i = 0; i < table.count(); ++i) {
            NameRecord name = table.record(i);
            if (Matches(name, code, platform, script, language) && Readable(name))
                return static_cast<uint32_t>(i + 1);
        }
        return 0;
    }
    // Preference ranks, best first; a record outside all of them ranks last.
    auto rank = [](const NameRecord& name) {
        if (name.platformID == kMicrosoftPlatform && (name.encodingID == 1 || name.encodingID == 10) &&
            name.languageID == 0x409)
            return 0;
        if (name.platformID == kUnicodePlatform) return 1;
        if (name.platformID == kMacintoshPlatform && name.encodingID == 0 && name.languageID == 0)
            return 2;
        return 3;
    };
    uint32_t best = 0;
    int bestRank = 4;
    for (size_t i = 0; i < table.count() && bestRank > 0; ++i) {
        NameRecord name = table.record(i);
        if (name.nameID + 1 != code || !Readable(name)) continue;
        int r = rank(name);
        if (r < bestRank) {
            bestRank = r;
            best = static_cast<uint32_t>(i + 1);
        }
    }
    return best;
}

}  // namespace

bool VellDecodeNameText(uint16_t platformID, uint16_t encodingID, uint16_t languageID,
                        std::string_view bytes, std::string* utf8) {
    utf8->clear();
    if (platformID == kUnicodePlatform || platformID == kMicrosoftPlatform) {
        std::u16string units;
        units.reserve(bytes.size() / 2);
        for (size_t i = 0; i + 1 < bytes.size(); i += 2)
            units.push_back(static_cast<char16_t>(static_cast<uint8_t>(bytes[i]) << 8 |
                                                  static_cast<uint8_t>(bytes[i + 1])));
        return Utf16ToUtf8(units, utf8);
    }
    const char* name = platformID == kMacintoshPlatform ? MacConverterName(encodingID, languageID) : nullptr;
    if (name == nullptr) return false;
    UErrorCode status = U_ZERO_ERROR;
    UConverter* converter = ucnv_open(name, &status);
    if (U_FAILURE(status)) return false;
    std::u16string units(bytes.size() * 2 + 1, u'\0');
    int32_t length = ucnv_toUChars(converter, units.data(), static_cast<int32_t>(units.size()), bytes.data(),
                                   static_cast<int32_t>(bytes.size()), &status);
    ucnv_close(converter);
    if (U_FAILURE(status)) return false;
    units.resize(static_cast<size_t>(length));
    return Utf16ToUtf8(units, utf8);
}

uint32_t VellCountFontNames(VellFontRef font, ErrorRecord* record) {
    return static_cast<uint32_t>(NameTable(font, record).count());
}

bool VellCanGetFontNameAsUnicode(VellFontRef font, uint32_t index, int32_t* code, int32_t* platform,
                                 int32_t* script, int32_t* language, ErrorRecord* record) {
    NameTable table(font, record);
    if (record->code != 0) return false;
    if (index < 1 || index > table.count()) {
        record->code = kVellParamErr;
        return false;
    }
    NameRecord name = table.record(index - 1);
    *code = name.nameID + 1;
    *platform = name.platformID + 1;
    *script = name.encodingID + 1;
    *language = name.languageID + 1;
    return Readable(name);
}

uint32_t VellGetFontNameAsUTF8(VellFontRef font, uint32_t index, int32_t, int32_t, int32_t, int32_t,
                               std::string* text, ErrorRecord* record) {
    NameTable table(font, record);
    if (record->code != 0) return 0;
    if (index < 1 || index > table.count()) {
        record->code = kVellParamErr;
        return 0;
    }
    NameRecord name = table.record(index - 1);
    std::string utf8;
    VellDecodeNameText(name.platformID, name.encodingID, name.languageID, name.bytes, &utf8);
    if (text != nullptr) *text = utf8;
    return static_cast<uint32_t>(utf8.size());
}

bool VellCanFindFontNameAsUnicode(VellFontRef font, int32_t code, uint32_t* index, int32_t platform,
                                  int32_t script, int32_t language, ErrorRecord* record) {
    NameTable table(font, record);
    if (record->code != 0) return false;
    uint32_t best = BestRecord(table, code, platform, script, language);
    if (index != nullptr) *index = best;
    return best != 0;
}

uint32_t VellFindFontNameAsUTF8(VellFontRef font, int32_t code, int32_t platform, int32_t script,
                                int32_t language, std::string* text, uint32_t, ErrorRecord* record) {
    if (text != nullptr) text->clear();
    NameTable table(font, record);
    if (record->code != 0) return 0;
    uint32_t best = BestRecord(table, code, platform, script, language);
    if (best == 0) return 0;
    NameRecord name = table.record(best - 1);
    std::string utf8;
    VellDecodeNameText(name.platformID, name.encodingID, name.languageID, name.bytes, &utf8);
    if (text != nullptr) *text = utf8;
    return static_cast<uint32_t>(utf8.size());
}
