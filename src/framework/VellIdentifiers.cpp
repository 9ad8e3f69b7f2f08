#include "framework/VellIdentifiers.h"

#include <unicode/uloc.h>
#include <unicode/ustring.h>

#include <span>

namespace {

constexpr int32_t kUnicodePlatform = 0;
constexpr int32_t kMacintoshPlatform = 1;
constexpr int32_t kISOPlatform = 2;
constexpr int32_t kMicrosoftPlatform = 3;
constexpr int32_t kCustomPlatform = 4;
// Language IDs from here up name a language-tag record of a format 1 'name'
// table, on every platform.
constexpr int32_t kFirstLanguageTagID = 0x8000;
constexpr int32_t kFirstFontSpecificNameID = 256;
constexpr int32_t kLastFontSpecificNameID = 32767;

constexpr const char* kPlatforms[] = {"Unicode", "Macintosh", "ISO", "Microsoft", "Custom"};

constexpr const char* kUnicodeEncodings[] = {
    "Unicode 1.0",
    "Unicode 1.1",
    "ISO/IEC 10646",
    "Unicode BMP",
    "Unicode full repertoire",
    "Unicode variation sequences",
    "Unicode full repertoire (format 13)",
};

constexpr const char* kMacintoshScripts[] = {
    "Roman",      "Japanese",  "Chinese (Traditional)", "Korean",   "Arabic",    "Hebrew",    "Greek",
    "Russian",    "RSymbol",   "Devanagari",            "Gurmukhi", "Gujarati",  "Oriya",     "Bengali",
    "Tamil",      "Telugu",    "Kannada",               "Malayalam", "Sinhalese", "Burmese",  "Khmer",
    "Thai",       "Laotian",   "Georgian",              "Armenian", "Chinese (Simplified)", "Tibetan",
    "Mongolian",  "Geez",      "Slavic",                "Vietnamese", "Sindhi",  "Uninterpreted",
};

constexpr const char* kISOEncodings[] = {"7-bit ASCII", "ISO 10646", "ISO 8859-1"};

// IDs 7 to 9 are reserved.
constexpr const char* kMicrosoftEncodings[] = {
    "Symbol", "Unicode BMP", "ShiftJIS", "PRC", "Big5", "Wansung", "Johab", nullptr, nullptr, nullptr,
    "Unicode full repertoire",
};

// The Custom platform's encodings 0 to 255 are Windows NT compatibility mappings.
constexpr int32_t kCustomEncodingCount = 256;

// Macintosh language codes; 95 to 127 are unassigned.
constexpr const char* kMacintoshLanguages[] = {
    "English", "French", "German", "Italian", "Dutch", "Swedish", "Spanish", "Danish", "Portuguese",
    "Norwegian", "Hebrew", "Japanese", "Arabic", "Finnish", "Greek", "Icelandic", "Maltese", "Turkish",
    "Croatian", "Chinese (Traditional)", "Urdu", "Hindi", "Thai", "Korean", "Lithuanian", "Polish",
    "Hungarian", "Estonian", "Latvian", "Sami", "Faroese", "Farsi", "Russian", "Chinese (Simplified)",
    "Flemish", "Irish Gaelic", "Albanian", "Romanian", "Czech", "Slovak", "Slovenian", "Yiddish", "Serbian",
    "Macedonian", "Bulgarian", "Ukrainian", "Byelorussian", "Uzbek", "Kazakh", "Azerbaijani (Cyrillic script)",
    "Azerbaijani (Arabic script)", "Armenian", "Georgian", "Moldavian", "Kirghiz", "Tajiki", "Turkmen",
    "Mongolian (Mongolian script)", "Mongolian (Cyrillic script)", "Pashto", "Kurdish", "Kashmiri", "Sindhi",
    "Tibetan", "Nepali", "Sanskrit", "Marathi", "Bengali", "Assamese", "Gujarati", "Punjabi", "Oriya",
    "Malayalam", "Kannada", "Tamil", "Telugu", "Sinhalese", "Burmese", "Khmer", "Lao", "Vietnamese",
    "Indonesian", "Tagalog", "Malay (Roman script)", "Malay (Arabic script)", "Amharic", "Tigrinya", "Galla",
    "Somali", "Swahili", "Kinyarwanda", "Rundi", "Nyanja", "Malagasy", "Esperanto",
    nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
    nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
    nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
    "Welsh", "Basque", "Catalan", "Latin", "Quechua", "Guarani", "Aymara", "Tatar", "Uighur", "Dzongkha",
    "Javanese (Roman script)", "Sundanese (Roman script)", "Galician", "Afrikaans", "Breton", "Inuktitut",
    "Scottish Gaelic", "Manx Gaelic", "Irish Gaelic (with dot above)", "Tongan", "Greek (polytonic)",
    "Greenlandic", "Azerbaijani (Roman script)",
};
static_assert(std::size(kMacintoshLanguages) == 151);

// ID 15 is reserved.
constexpr const char* kNameTypes[] = {
    "Copyright notice", "Family name", "Subfamily name", "Unique identifier", "Full name",
    "Version string", "PostScript name", "Trademark", "Manufacturer", "Designer", "Description",
    "Vendor URL", "Designer URL", "License description", "License URL", nullptr,
    "Typographic family name", "Typographic subfamily name", "Compatible full name", "Sample text",
    "PostScript CID findfont name", "WWS family name", "WWS subfamily name", "Light background palette",
    "Dark background palette", "Variations PostScript name prefix",
};

// The text for an sfnt ID from a list indexed by ID, or `unknown` and the ID.
std::string FromList(std::span<const char* const> texts, int32_t id, const char* unknown) {
    if (id >= 0 && static_cast<size_t>(id) < texts.size() && texts[static_cast<size_t>(id)] != nullptr)
        return texts[static_cast<size_t>(id)];
    return std::string(unknown) + " " + std::to_string(id);
}

// A Windows LCID as ICU names its locale in English: "English (United States)".
std::string MicrosoftLanguage(int32_t lcid) {
    UErrorCode status = U_ZERO_ERROR;
    char locale[ULOC_FULLNAME_CAPACITY] = "";
    uloc_getLocaleForLCID(static_cast<uint32_t>(lcid), locale, sizeof locale, &status);
    // ICU answers "root" for the neutral and unassigned IDs it knows of.
    if (U_FAILURE(status) || locale[0] == '\0' || std::string_view(locale) == "root") return {};
    UChar display[256];
    int32_t length = uloc_getDisplayName(locale, "en", display, std::size(display), &status);
    if (U_FAILURE(status)) return {};
    char utf8[3 * std::size(display)];
    int32_t utf8Length = 0;
    u_strToUTF8(utf8, sizeof utf8, &utf8Length, display, length, &status);
    if (U_FAILURE(status)) return {};
    return std::string(utf8, static_cast<size_t>(utf8Length));
}

}  // namespace

// Every call takes the framework's numbers, one above the sfnt IDs, so that 0 can
// mean "any"; an unknown identifier's text names its sfnt ID, the number the
// report's ID line beside it shows.

std::string VellPlatformToString(int32_t platform, ErrorRecord*) {
    if (platform == 0) return "Any platform";
    return FromList(kPlatforms, platform - 1, "Unknown platform");
}

std::string VellScriptToString(int32_t platform, int32_t script, ErrorRecord*) {
    if (script == 0) return "Any encoding";
    int32_t encodingID = script - 1;
    switch (platform - 1) {
        case kUnicodePlatform: return FromList(kUnicodeEncodings, encodingID, "Unknown encoding");
        case kMacintoshPlatform: return FromList(kMacintoshScripts, encodingID, "Unknown script");
        case kISOPlatform: return FromList(kISOEncodings, encodingID, "Unknown encoding");
        case kMicrosoftPlatform: return FromList(kMicrosoftEncodings, encodingID, "Unknown encoding");
        case kCustomPlatform:
            if (encodingID < kCustomEncodingCount) return "Windows NT compatibility mapping";
            break;
    }
    return "Unknown encoding " + std::to_string(encodingID);
}

std::string VellLanguageToString(int32_t platform, int32_t, int32_t language, ErrorRecord*) {
    if (language == 0) return "Any language";
    int32_t languageID = language - 1;
    if (languageID >= kFirstLanguageTagID)
        return "Language tag record " + std::to_string(languageID - kFirstLanguageTagID);
    std::string text;
    switch (platform - 1) {
        case kMacintoshPlatform: return FromList(kMacintoshLanguages, languageID, "Unknown language");
        // LCID 0 names no language: it is what a Microsoft 'cmap' subtable, which
        // serves every language, carries.
        case kMicrosoftPlatform:
            if (languageID == 0) return "Language-independent";
            text = MicrosoftLanguage(languageID);
            break;
        // The other platforms define no languages; their records carry 0.
        default:
            if (languageID == 0) return "Language-independent";
    }
    return text.empty() ? "Unknown language " + std::to_string(languageID) : text;
}

std::string VellNameTypeToString(int32_t nameCode, ErrorRecord*) {
    if (nameCode == 0) return "Any name";
    int32_t nameID = nameCode - 1;
    if (nameID >= kFirstFontSpecificNameID && nameID <= kLastFontSpecificNameID) return "Font-specific name";
    return FromList(kNameTypes, nameID, "Reserved name");
}
