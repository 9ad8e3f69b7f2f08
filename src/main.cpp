// vellcmp: compares the fonts of an original and a modified font file and reports
// how they differ, table by table.
#include <unistd.h>

#include <cstdio>
#include <cstring>
#include <string>

#include "CommandLine.h"
#include "FontFiles.h"
#include "VellCmpFonts.h"
#include "framework/VellNames.h"

namespace {

// Where DiffFontFiles records its framework calls.
constexpr int32_t kModifiedListLine = 212;
constexpr int32_t kOriginalListLine = 220;
constexpr int32_t kPairingLine = 241;
constexpr int32_t kCloseOriginalLine = 287;
constexpr int32_t kCloseModifiedLine = 293;

constexpr const char* kHeaderRule = "================================================================";

// The long options vellcmp takes.
constexpr unsigned kVellcmpLongOptions =
    kLongHelp | kLongVersion | kLongColor | kLongSummary | kLongTables | kLongExitCode | kLongOpenType;

void PrintUsage(const std::string& name, bool longOptions) {
    PrintVersion(name);
    std::printf("Usage:  %s [-hpuvV] [-f font name] [-o output file] originalfontfile modifiedfontfile \n",
                name.c_str());
    std::printf("Options:\n");
    std::printf("\t-f The name of the font within the font files to compare; use single quotes if the font name "
                "has spaces in it\n");
    std::printf("\t-o An optional output file for the results of a diff; stdout is used if this parameter is not "
                "specified\n");
    std::printf("\t-h Output this message\n");
    std::printf("\t-p Show the PostScript names of glyphs\n");
    std::printf("\t-u Show the Unicode names of characters\n");
    std::printf("\t-v Verbose operation, additional data is output to stderr\n");
    std::printf("\t-V Output the tool's version to stdout\n");
    if (longOptions) PrintLongOptionUsage(kVellcmpLongOptions);
}

bool Failed(ErrorRecord* record) {
    if (record->code == 0) return false;
    MapFrameworkError(record);
    return true;
}

// Releases both lists after a failure, ignoring their own errors, and reports.
int DisposeAndReport(VellFontListRef& modifiedList, uint32_t modifiedCount, VellFontListRef& originalList,
                     uint32_t originalCount, ErrorRecord* record) {
    ErrorRecord scratch;
    ClearUSN(&scratch);
    VellDisposeFontList(originalList, originalCount, &scratch);
    ClearUSN(&scratch);
    VellDisposeFontList(modifiedList, modifiedCount, &scratch);
    ReportError(record);
    return 1;
}

// Pairs each font of the modified file with the original font of the same name
// and diffs each pair under a header. Returns 0, or 1 once a failure is reported.
int DiffFontFiles(const char* modifiedPath, const char* originalPath) {
    ErrorRecord record;
    ClearUSN(&record);
    if (gVerbose) std::fprintf(gReportFile, "Diffing \"%s\" and \"%s\"\n", modifiedPath, originalPath);

    VellFSSpec modifiedSpec, originalSpec;
    if (OpenFontFile(modifiedPath, &modifiedSpec, true) != 0) return 1;
    if (OpenFontFile(originalPath, &originalSpec, true) != 0) return 1;

    uint32_t modifiedCount = 0, originalCount = 0;
    VellSetErrorSource(&record, kMainSource, kModifiedListLine);
    VellFontListRef modifiedList = VellFSSpecToFontList(modifiedSpec, 1, &modifiedCount, &record);
    if (Failed(&record)) {
        ReportError(&record);
        return 1;
    }
    VellSetErrorSource(&record, kMainSource, kOriginalListLine);
    VellFontListRef originalList = VellFSSpecToFontList(originalSpec, 1, &originalCount, &record);
    if (Failed(&record)) {
        ErrorRecord scratch;
        VellDisposeFontList(modifiedList, modifiedCount, &scratch);
        ReportError(&record);
        return 1;
    }

    if (!gFontName.empty()) {
        uint32_t modifiedIndex = FindFontByName(modifiedList.get(), modifiedCount, gFontName, &record);
        if (record.code != 0)
            return DisposeAndReport(modifiedList, modifiedCount, originalList, originalCount, &record);
        uint32_t originalIndex = FindFontByName(originalList.get(), originalCount, gFontName, &record);
        if (record.code != 0)
            return DisposeAndReport(modifiedList, modifiedCount, originalList, originalCount, &record);
        if (modifiedIndex >= modifiedCount || originalIndex >= originalCount) {
            // Reported by nothing but the "Aborting" line: -8 is outside ReportError's codes.
            record.code = kVellCmpFontNotFound;
            record.name = gFontName.substr(0, 255);
            return DisposeAndReport(modifiedList, modifiedCount, originalList, originalCount, &record);
        }
        DiffFonts(modifiedList->entries[modifiedIndex].font, originalList->entries[originalIndex].font, &record);
        if (record.code != 0)
            return DisposeAndReport(modifiedList, modifiedCount, originalList, originalCount, &record);
    } else {
        for (uint32_t f = 0; f < modifiedCount; ++f) {
            VellFontRef modifiedFont = modifiedList->entries[f].font;
            std::string fullName;
            VellSetErrorSource(&record, kMainSource, kPairingLine);
            VellFindFontNameAsUTF8(modifiedFont, kFullNameCode, 0, 0, 0, &fullName, 0, &record);
            if (Failed(&record))
                return DisposeAndReport(modifiedList, modifiedCount, originalList, originalCount, &record);
            uint32_t match = FindFontByName(originalList.get(), originalCount, fullName, &record);
            if (record.code != 0)
                return DisposeAndReport(modifiedList, modifiedCount, originalList, originalCount, &record);
            if (match >= originalCount) {
                // A font dropped from a family is a difference for --exit-code.
                gFontsDiffer = 1;
                std::fprintf(stderr, "##### WARNING! Could not find match for font %s!\n", fullName.c_str());
                continue;
            }
            VellFontRef originalFont = originalList->entries[match].font;
            std::string modifiedName, modifiedVersion, originalName, originalVersion;
            GetFontNameUTF8(modifiedFont, kFullNameCode, &modifiedName, &record);
            if (record.code == 0) GetFontNameUTF8(modifiedFont, kVersionNameCode, &modifiedVersion, &record);
            if (record.code == 0) GetFontNameUTF8(originalFont, kFullNameCode, &originalName, &record);
            if (record.code == 0) GetFontNameUTF8(originalFont, kVersionNameCode, &originalVersion, &record);
            if (record.code != 0) return 1;

            std::fprintf(gReportFile, "%s\n", kHeaderRule);
            std::fprintf(gReportFile, "Original font: \n");
            std::fprintf(gReportFile, "  file name: %s, full name: %s, version: %s\n", originalPath,
                         originalName.c_str(), originalVersion.c_str());
            std::fprintf(gReportFile, "Modified font:\n");
            std::fprintf(gReportFile, "  file name: %s, full name: %s, version: %s\n\n", modifiedPath,
                         modifiedName.c_str(), modifiedVersion.c_str());
            std::fprintf(gReportFile, "%s\n\n", kHeaderRule);
            DiffFonts(modifiedFont, originalFont, &record);
            if (record.code != 0)
                return DisposeAndReport(modifiedList, modifiedCount, originalList, originalCount, &record);
        }
    }

    VellSetErrorSource(&record, kMainSource, kCloseOriginalLine);
    VellDisposeAndCloseFontList(originalCount, originalList, &record);
    if (Failed(&record)) {
        ErrorRecord scratch;
        VellDisposeFontList(modifiedList, modifiedCount, &scratch);
        ReportError(&record);
        return 1;
    }
    VellSetErrorSource(&record, kMainSource, kCloseModifiedLine);
    VellDisposeAndCloseFontList(modifiedCount, modifiedList, &record);
    if (Failed(&record)) {
        ReportError(&record);
        return 1;
    }
    return 0;
}

}  // namespace

int main(int argc, char* argv[]) {
    gFontName.clear();
    CommandLineOptions options = ParseOptions(argc, argv, "f:ho:puvV", kVellcmpLongOptions);
    int error = options.error;
    std::string name = BaseName(argv[0]);
    if (options.help || optind == argc) PrintUsage(name, options.longHelp);
    if (options.version) PrintVersion(name);
    // With --exit-code, failures exit 2 as diff's do, leaving 1 to say "different".
    const int failure = gExitCodeByDifference ? 2 : 1;
    if (optind == argc) return error ? failure : 0;
    if (optind == argc - 2) {
        // The modified file goes first.
        int result = DiffFontFiles(argv[optind + 1], argv[optind]);
        if (result == 0) return gExitCodeByDifference && gFontsDiffer ? 1 : 0;
        std::fprintf(stderr, "##### ERROR:  Aborting after failure to diff %s and %s.\n", argv[optind + 1],
                     argv[optind]);
        return failure;
    }
    std::fprintf(stderr,
                 "##### ERROR:  There must be exactly two font files as arguments, when there appears to be %d!\n",
                 argc - optind);
    return failure;
}
