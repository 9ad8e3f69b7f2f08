// vellcmp: compares the fonts of an original and a modified font file and reports
// how they differ, table by table.
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <memory>
#include <optional>
#include <string>

#include "CommandLine.h"
#include "FontFiles.h"
#include "VellCmpFonts.h"
#include "dumpers/TJsonReport.h"
#include "framework/VellNames.h"
#include "framework/VellTables.h"
#include "html/HtmlPage.h"

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
    kLongHelp | kLongVersion | kLongColor | kLongSummary | kLongTables | kLongExitCode | kLongOpenType |
    kLongPair | kLongJson | kLongHtml;

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

// A --tables tag that neither font of a pair has names nothing to give an account of.
void WarnOfTablesNeitherFontHas(VellFontRef modifiedFont, VellFontRef originalFont) {
    for (auto tag = gAccountTables.begin(); tag != gAccountTables.end(); ++tag) {
        if (std::find(gAccountTables.begin(), tag, *tag) != tag) continue;
        // A font whose directory cannot be read fails in the comparison itself.
        ErrorRecord scratch;
        if (VellFindFontTable(modifiedFont, *tag, nullptr, nullptr, &scratch) != 0) continue;
        if (VellFindFontTable(originalFont, *tag, nullptr, nullptr, &scratch) != 0) continue;
        ReportWarning("--tables names '" + VellTagText(*tag) + "', which neither font has!");
    }
}

// Pairs each font of the modified file with the original font of the same name,
// or of the same index with --pair=index, and diffs each pair under a header.
// Returns 0, or 1 once a failure is reported.
int DiffFontFiles(const char* modifiedPath, const char* originalPath) {
    ErrorRecord record;
    ClearUSN(&record);
    // Under --json the report holds records only.
    if (gVerbose)
        std::fprintf(gJsonReport ? stderr : gReportFile, "Diffing \"%s\" and \"%s\"\n", modifiedPath, originalPath);

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

    auto dispose = [&] { return DisposeAndReport(modifiedList, modifiedCount, originalList, originalCount, &record); };
    // One pair, under its header unless -f chose it (under --json, always after
    // its pair record); 0, or 1 once the failure is reported.
    auto diffPair = [&](VellFontRef modifiedFont, VellFontRef originalFont, bool header) {
        if (gHtmlPage) gHtmlPage->BeginPair(modifiedPath, originalPath, modifiedFont, originalFont);
        if (header || gJsonReport != nullptr) {
            std::string modifiedName, modifiedVersion, originalName, originalVersion;
            GetFontNameUTF8(modifiedFont, kFullNameCode, &modifiedName, &record);
            if (record.code == 0) GetFontNameUTF8(modifiedFont, kVersionNameCode, &modifiedVersion, &record);
            if (record.code == 0) GetFontNameUTF8(originalFont, kFullNameCode, &originalName, &record);
            if (record.code == 0) GetFontNameUTF8(originalFont, kVersionNameCode, &originalVersion, &record);
            if (record.code != 0) return 1;

            if (gJsonReport != nullptr) {
                gJsonReport->PairRecord(originalPath, originalName, originalVersion, modifiedPath, modifiedName,
                                        modifiedVersion);
            } else {
                std::fprintf(gReportFile, "%s\n", kHeaderRule);
                std::fprintf(gReportFile, "Original font: \n");
                std::fprintf(gReportFile, "  file name: %s, full name: %s, version: %s\n", originalPath,
                             originalName.c_str(), originalVersion.c_str());
                std::fprintf(gReportFile, "Modified font:\n");
                std::fprintf(gReportFile, "  file name: %s, full name: %s, version: %s\n\n", modifiedPath,
                             modifiedName.c_str(), modifiedVersion.c_str());
                std::fprintf(gReportFile, "%s\n\n", kHeaderRule);
            }
        }
        WarnOfTablesNeitherFontHas(modifiedFont, originalFont);
        DiffFonts(modifiedFont, originalFont, &record);
        if (gHtmlPage) gHtmlPage->EndPair();
        return record.code != 0 ? dispose() : 0;
    };
    // The pairing's own lookup of a full name; false once its failure is reported.
    auto findFullName = [&](VellFontRef font, std::string* fullName) {
        VellSetErrorSource(&record, kMainSource, kPairingLine);
        VellFindFontNameAsUTF8(font, kFullNameCode, 0, 0, 0, fullName, 0, &record);
        return !Failed(&record);
    };
    auto warnUnpaired = [](const std::string& fullName) {
        // A font dropped from a family is a difference for --exit-code.
        gFontsDiffer = 1;
        ReportWarning("Could not find match for font " + fullName + "!");
    };

    if (!gFontName.empty()) {
        uint32_t modifiedIndex = FindFontByName(modifiedList.get(), modifiedCount, gFontName, &record);
        if (record.code != 0) return dispose();
        uint32_t originalIndex = FindFontByName(originalList.get(), originalCount, gFontName, &record);
        if (record.code != 0) return dispose();
        if (modifiedIndex >= modifiedCount || originalIndex >= originalCount) {
            // Reported by nothing but the "Aborting" line: -8 is outside ReportError's codes.
            record.code = kVellCmpFontNotFound;
            record.name = gFontName.substr(0, 255);
            return dispose();
        }
        if (diffPair(modifiedList->entries[modifiedIndex].font, originalList->entries[originalIndex].font, false) != 0)
            return 1;
    } else if (gPairFontsByIndex) {
        for (uint32_t f = 0; f < std::max(modifiedCount, originalCount); ++f) {
            if (f < modifiedCount && f < originalCount) {
                if (diffPair(modifiedList->entries[f].font, originalList->entries[f].font, true) != 0) return 1;
                continue;
            }
            std::string fullName;
            if (!findFullName(f < modifiedCount ? modifiedList->entries[f].font : originalList->entries[f].font,
                              &fullName))
                return dispose();
            warnUnpaired(fullName);
        }
    } else {
        for (uint32_t f = 0; f < modifiedCount; ++f) {
            VellFontRef modifiedFont = modifiedList->entries[f].font;
            std::string fullName;
            if (!findFullName(modifiedFont, &fullName)) return dispose();
            uint32_t match = FindFontByName(originalList.get(), originalCount, fullName, &record);
            if (record.code != 0) return dispose();
            if (match >= originalCount) {
                warnUnpaired(fullName);
                continue;
            }
            if (diffPair(modifiedFont, originalList->entries[match].font, true) != 0) return 1;
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
    // With --exit-code, failures exit 2 as diff's do, leaving 1 to say "different".
    const int failure = gExitCodeByDifference ? 2 : 1;
    if (!ClaimReportFiles(options, argv + optind, argc - optind)) return failure;
    // With --html and no -o the page is the only output asked for: the text
    // report goes nowhere.
    FILE* page = options.htmlFile.stream;
    if (page != nullptr && options.reportFiles.empty() && !gJsonOutput && optind == argc - 2) {
        FILE* nowhere = std::fopen("/dev/null", "w");
        if (nowhere != nullptr) gReportFile = nowhere;
    }
    // Under --json every record, errors and warnings too, goes to the report.
    std::optional<TJsonReport> json;
    if (gJsonOutput && optind == argc - 2) {
        json.emplace(gReportFile);
        gJsonReport = &*json;
        gMessageRecordHook = [](const char* level, const std::string& message, const std::string& detail) {
            gJsonReport->MessageRecord(level, message, detail);
        };
    }
    if (options.help || optind == argc) PrintUsage(name, options.longHelp);
    if (options.version) PrintVersion(name);
    if (optind == argc) return error ? failure : 0;
    if (optind == argc - 2) {
        // The modified file goes first.
        std::unique_ptr<THtmlPage> html;
        if (page != nullptr) gHtmlPage = (html = std::make_unique<THtmlPage>(page, gHtmlMaxDrawings)).get();
        int result = DiffFontFiles(argv[optind + 1], argv[optind]);
        if (html) {
            // A failed run still leaves a page with the pairs compared before the failure.
            bool written = html->Finish();
            gHtmlPage = nullptr;
            if (std::fclose(page) != 0 || !written) {
                std::fprintf(stderr, "#### ERROR:  Cannot write the page \"%s\"\n", options.htmlFile.path.c_str());
                if (result == 0) result = 1;
            }
        }
        // A mistyped option fails a CI run though the fonts were compared.
        if (result == 0 && gExitCodeByDifference && error) return failure;
        if (result == 0) return gExitCodeByDifference && gFontsDiffer ? 1 : 0;
        std::fprintf(stderr, "##### ERROR:  Aborting after failure to diff %s and %s.\n", argv[optind + 1],
                     argv[optind]);
        if (gMessageRecordHook != nullptr)
            gMessageRecordHook("error", std::string("Aborting after failure to diff ") + argv[optind + 1] + " and " +
                                            argv[optind] + ".", "");
        return failure;
    }
    std::fprintf(stderr,
                 "##### ERROR:  There must be exactly two font files as arguments, when there appears to be %d!\n",
                 argc - optind);
    return failure;
}
