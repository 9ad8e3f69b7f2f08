// velldump: prints tables of one font file in full, through the same dumpers the
// comparison report is built on.
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include "CommandLine.h"
#include "FontFiles.h"
#include "VellCmpErrors.h"
#include "VellDumpFonts.h"
#include "framework/VellNames.h"

namespace {

// The long options velldump takes: those that make sense for one font.
constexpr unsigned kVelldumpLongOptions = kLongHelp | kLongVersion | kLongColor | kLongOpenType;

void PrintUsage(const std::string& name, bool longOptions) {
    PrintVersion(name);
    std::printf("Usage:  %s [-hpuV] [-f font name] [-o output file] fontfile [tag ...] \n", name.c_str());
    std::printf("Options:\n");
    std::printf("\t-f The name of the font within the font file to dump; use single quotes if the font name has "
                "spaces in it\n");
    std::printf("\t-o An optional output file for the dump; stdout is used if this parameter is not specified\n");
    std::printf("\t-h Output this message\n");
    std::printf("\t-p Show the PostScript names of glyphs\n");
    std::printf("\t-u Show the Unicode names of characters\n");
    std::printf("\t-V Output the tool's version to stdout\n");
    std::printf("Without tags, every table of the font is printed, in directory order.\n");
    if (longOptions) PrintLongOptionUsage(kVelldumpLongOptions);
}

int DumpFontFile(const char* path, const std::vector<VellTag>& tags) {
    ErrorRecord record;
    VellFSSpec fileRef;
    if (OpenFontFile(path, &fileRef, true) != 0) return 1;
    uint32_t count = 0;
    VellFontListRef list = VellFSSpecToFontList(fileRef, 1, &count, &record);
    if (ReportFrameworkError(&record)) return 1;
    if (!gFontName.empty()) {
        uint32_t index = FindFontByName(list.get(), count, gFontName, &record);
        if (record.code != 0 || index >= count) return 1;
        return DumpFont(list->entries[index].font, tags);
    }
    for (uint32_t f = 0; f < count; ++f) {
        VellFontRef font = list->entries[f].font;
        if (count > 1) {
            std::string fullName;
            VellFindFontNameAsUTF8(font, kFullNameCode, 0, 0, 0, &fullName, 0, &record);
            std::fprintf(gReportFile, "##### Font %u: %s\n", f + 1, fullName.c_str());
        }
        if (DumpFont(font, tags) != 0) return 1;
    }
    return 0;
}

}  // namespace

int main(int argc, char* argv[]) {
    CommandLineOptions options = ParseOptions(argc, argv, "f:ho:puV", kVelldumpLongOptions);
    int error = options.error;
    std::string name = BaseName(argv[0]);
    if (!ClaimReportFiles(options, argv + optind, std::min(argc - optind, 1))) return 1;
    if (options.help || optind == argc) PrintUsage(name, options.longHelp);
    if (options.version) PrintVersion(name);
    if (optind == argc) return error;
    std::vector<VellTag> tags;
    for (int arg = optind + 1; arg < argc; ++arg) tags.push_back(TagFromText(argv[arg]));
    if (DumpFontFile(argv[optind], tags) == 0) return error;
    std::fprintf(stderr, "##### ERROR:  Aborting after failure to dump %s.\n", argv[optind]);
    return 1;
}
