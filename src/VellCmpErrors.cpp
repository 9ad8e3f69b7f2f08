#include "VellCmpErrors.h"

#include <array>

#include "framework/VellPlatform.h"

// ---- Process-wide switches ----

uint8_t gShowPostScriptNames = 0;
uint8_t gShowUnicodeNames = 0;
uint8_t gVerbose = 0;
FILE* gReportFile = stdout;
std::string gFontName;
uint8_t gSummaryOnly = 0;
std::vector<VellTag> gAccountTables;
std::vector<VellTag> gExcludedTables;
uint8_t gColorReport = 0;
uint8_t gExitCodeByDifference = 0;
uint8_t gOpenType = 0;
uint8_t gPairFontsByIndex = 0;
uint8_t gJsonOutput = 0;
std::string gHtmlPath;
uint32_t gHtmlMaxDrawings = 500;
uint8_t gFontsDiffer = 0;
void (*gMessageRecordHook)(const char* level, const std::string& message, const std::string& detail) = nullptr;

// ---- Errors ----

namespace {

// The message of code c is entry -c - 1.
constexpr std::array<const char*, 9> kErrorMessages = {
    "An internal error occurred.",
    "Unable to allocate some needed memory.",
    "An XLT font table input/output routine failed in some way.",
    "Some file input/output operation failed.",
    "A required resource is missing.",
    "The Vellkit reported a problem.",
    "(no message)",
    "The requested named font was not found within one of the font files.",
    "END OF LIST",
};

}  // namespace

const char* VellCmpErrorMessage(int32_t code) {
    if (code > -1 || code < -8) return nullptr;
    return kErrorMessages[static_cast<size_t>(-code - 1)];
}

void MapFrameworkError(ErrorRecord* record) {
    switch (record->code) {
        case kVellInternalErr: record->code = kVellCmpInternalError; break;
        case kVellMemoryErr: record->code = kVellCmpMemoryError; break;
        case kVellIOErr: record->code = kVellCmpFileError; break;
        case kVellResourceErr: record->code = kVellCmpResourceError; break;
        default: record->code = kVellCmpFrameworkError; break;
    }
}

void ReportError(ErrorRecord* record) {
    // -7 marks a record already reported; -8 (a -f name not found) is left silent.
    if (record->code < kVellCmpFrameworkError || record->code > kVellCmpInternalError) return;
    std::string message = VellCopyLocalizedString(VellCmpErrorMessage(record->code), "VellCmpErrors");
    std::fprintf(stderr, "##### ERROR: %s\n", message.c_str());
    if (!record->name.empty()) std::fprintf(stderr, "\t%s\n", record->name.c_str());
    if (!record->sourceFile.empty())
        std::fprintf(stderr, "\tSource file %s, line %d\n", record->sourceFile.c_str(), record->sourceLine);
    if (gMessageRecordHook != nullptr) gMessageRecordHook("error", message, record->name);
    record->code = kVellCmpAlreadyReported;
}

void ReportWarning(const std::string& text) {
    std::fprintf(stderr, "##### WARNING! %s\n", text.c_str());
    if (gMessageRecordHook != nullptr) gMessageRecordHook("warning", text, "");
}

bool ReportFrameworkError(ErrorRecord* record) {
    if (record->code == 0) return false;
    MapFrameworkError(record);
    ReportError(record);
    return true;
}
