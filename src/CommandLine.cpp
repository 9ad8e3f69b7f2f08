#include "CommandLine.h"

#include <fcntl.h>
#include <getopt.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <span>
#include <string>
#include <vector>

#include "VellCmpErrors.h"
#include "dumpers/IgnoreRules.h"
#include "dumpers/TTableDumper.h"

namespace {

constexpr size_t kReportBufferBytes = size_t{1} << 20;

// getopt_long's values for the long options without a letter of their own.
enum : int { kSummaryValue = 256, kTablesValue, kExcludeTablesValue, kExitCodeValue, kColorValue, kLongHelpValue,
             kOpenTypeValue, kPairValue, kJsonValue, kIgnoreValue, kHtmlValue, kHtmlMaxDrawingsValue };

struct LongOptionRow {
    unsigned flag;
    option definition;
    const char* usage;
};

const LongOptionRow kLongOptionRows[] = {
    {kLongSummary, {"summary", no_argument, nullptr, kSummaryValue},
     "\t--summary Print the header and the lists of added, deleted and changed tables, without the tables' "
     "accounts\n"},
    {kLongTables, {"tables", required_argument, nullptr, kTablesValue},
     "\t--tables=TAG[,TAG...] Print the account of only these changed tables; the lists still name every table\n"},
    {kLongTables, {"exclude-tables", required_argument, nullptr, kExcludeTablesValue},
     "\t--exclude-tables=TAG[,TAG...] Print the account of every changed table but these\n"},
    {kLongPair, {"pair", required_argument, nullptr, kPairValue},
     "\t--pair=name|index Pair the fonts of the two files by name (the default: each modified font with the "
     "original font of its full name) or by index (the first font of each file, then the second, ...); -f "
     "overrides it\n"},
    {kLongExitCode, {"exit-code", no_argument, nullptr, kExitCodeValue},
     "\t--exit-code Exit with 0 when the fonts are identical, 1 when they differ or a font has no partner, 2 on "
     "failure\n"},
    {kLongColor, {"color", optional_argument, nullptr, kColorValue},
     "\t--color[=WHEN] Colour the changed values and the differing rows of hex differences: never (the default), "
     "always (when WHEN is left out) or auto (on a terminal, unless NO_COLOR is set)\n"},
    {kLongOpenType, {"opentype", no_argument, nullptr, kOpenTypeValue},
     "\t--opentype Also decode the OpenType tables that otherwise print as hex: layout, outline and variation "
     "tables\n"},
    {kLongJson, {"json", no_argument, nullptr, kJsonValue},
     "\t--json Write the report as JSON Lines, one record per line: the pair, the tables added, deleted and "
     "changed, each differing field, each added or deleted entry, differing byte ranges, warnings and errors\n"},
    {kLongJson, {"ignore", required_argument, nullptr, kIgnoreValue},
     "\t--ignore=RULE[,RULE...] Leave out the differences a rule names by its JSON path (head.modified, name.5, "
     "hmtx.*.advanceWidth) or a whole table (DSIG); a table whose differences are all left out is unchanged. "
     "build: the checksum adjustment, both dates and 'DSIG'\n"},
    {kLongHtml, {"html", required_argument, nullptr, kHtmlValue},
     "\t--html=FILE Also draw the run as one HTML page in FILE: the accounts of the changed tables, with the "
     "changed glyphs, advance widths and character mappings drawn; the text report goes to -o, and nowhere "
     "when no -o is given\n"},
    {kLongHtml, {"html-max-drawings", required_argument, nullptr, kHtmlMaxDrawingsValue},
     "\t--html-max-drawings=N Draw at most N glyphs per table on the --html page (500 unless given)\n"},
    {kLongHelp, {"help", no_argument, nullptr, kLongHelpValue}, "\t--help Output this message with the long options\n"},
    {kLongVersion, {"version", no_argument, nullptr, 'V'}, "\t--version Output the tool's version to stdout\n"},
};

// Adds the tags of a --tables or --exclude-tables list; false for a tag that is
// empty or longer than four characters.
bool AddTags(const char* list, std::vector<VellTag>& tags) {
    std::string_view rest(list);
    while (true) {
        size_t comma = rest.find(',');
        std::string_view text = rest.substr(0, comma);
        if (text.empty() || text.size() > 4) {
            std::fprintf(stderr, "#### ERROR:  Invalid table tag \"%.*s\"\n", static_cast<int>(text.size()),
                         text.data());
            return false;
        }
        tags.push_back(TagFromText(text));
        if (comma == std::string_view::npos) return true;
        rest.remove_prefix(comma + 1);
    }
}

// The position of an option's argument among the words it may be, or -1 after an
// error line that names them all ("use never, always or auto").
int ChooseWord(const char* argument, std::span<const char* const> words, const char* what) {
    std::string choices;
    for (size_t i = 0; i < words.size(); ++i) {
        if (std::strcmp(argument, words[i]) == 0) return static_cast<int>(i);
        choices += (i == 0 ? "" : i + 1 == words.size() ? " or " : ", ") + std::string(words[i]);
    }
    std::fprintf(stderr, "#### ERROR:  Invalid %s \"%s\": use %s\n", what, argument, choices.c_str());
    return -1;
}

bool ParseColorMode(const char* argument, ColorMode* mode) {
    constexpr const char* kWords[] = {"never", "always", "auto"};
    constexpr ColorMode kModes[] = {ColorMode::kNever, ColorMode::kAlways, ColorMode::kAuto};
    int chosen = argument == nullptr ? 1 : ChooseWord(argument, kWords, "colour");
    if (chosen >= 0) *mode = kModes[chosen];
    return chosen >= 0;
}

bool ParsePairing(const char* argument) {
    constexpr const char* kWords[] = {"name", "index"};
    int chosen = ChooseWord(argument, kWords, "pairing");
    if (chosen >= 0) gPairFontsByIndex = chosen == 1;
    return chosen >= 0;
}

// A --html-max-drawings count: decimal digits, at most a million.
bool ParseDrawingCount(const char* argument) {
    constexpr uint32_t kMostDrawings = 1000000;
    uint64_t count = 0;
    bool digits = argument[0] != '\0';
    for (const char* c = argument; digits && *c != '\0'; ++c) {
        digits = *c >= '0' && *c <= '9';
        count = std::min<uint64_t>(count * 10 + static_cast<uint64_t>(*c - '0'), kMostDrawings + 1);
    }
    if (!digits || count > kMostDrawings) {
        std::fprintf(stderr, "#### ERROR:  Invalid drawing count \"%s\": use a number from 0 to %u\n", argument,
                     kMostDrawings);
        return false;
    }
    gHtmlMaxDrawings = static_cast<uint32_t>(count);
    return true;
}

// Opens an -o file for writing as "w" would, but without emptying it yet.
FILE* OpenReportFile(const char* path) {
    int descriptor = open(path, O_WRONLY | O_CREAT, 0666);
    if (descriptor < 0) return nullptr;
    FILE* report = fdopen(descriptor, "w");
    if (report == nullptr) close(descriptor);
    return report;
}

}  // namespace

CommandLineOptions ParseOptions(int argc, char* argv[], const char* letters, unsigned longOptions) {
    CommandLineOptions options;
    // '+': stop at the first operand, as POSIX getopt does.
    const std::string optionString = std::string("+") + letters;
    std::vector<option> definitions;
    for (const LongOptionRow& row : kLongOptionRows)
        if (longOptions & row.flag) definitions.push_back(row.definition);
    definitions.push_back({nullptr, 0, nullptr, 0});
    ColorMode color = ColorMode::kNever;
    int option;
    while (!options.error &&
           (option = getopt_long(argc, argv, optionString.c_str(), definitions.data(), nullptr)) != -1) {
        switch (option) {
            case 'f': gFontName = optarg; break;
            case 'h': options.help = true; break;
            case 'o': {
                FILE* report = OpenReportFile(optarg);
                if (report == nullptr) {
                    std::fprintf(stderr, "#### ERROR:  Cannot open output file \"%s\"\n", optarg);
                    options.error = 1;
                } else {
                    gReportFile = report;
                    options.reportFiles.push_back({report, optarg});
                }
                break;
            }
            case 'p': gShowPostScriptNames = 1; break;
            case 'u': gShowUnicodeNames = 1; break;
            case 'v': gVerbose = 1; break;
            case 'V': options.version = true; break;
            case kSummaryValue: gSummaryOnly = 1; break;
            case kTablesValue: options.error = !AddTags(optarg, gAccountTables); break;
            case kExcludeTablesValue: options.error = !AddTags(optarg, gExcludedTables); break;
            case kExitCodeValue: gExitCodeByDifference = 1; break;
            case kColorValue: options.error = !ParseColorMode(optarg, &color); break;
            case kLongHelpValue: options.help = options.longHelp = true; break;
            case kOpenTypeValue: gOpenType = 1; break;
            case kPairValue: options.error = !ParsePairing(optarg); break;
            case kJsonValue: gJsonOutput = 1; break;
            case kIgnoreValue: options.error = !AddIgnoreRules(optarg, gIgnoreRules); break;
            case kHtmlValue: {
                FILE* page = optarg[0] != '\0' ? OpenReportFile(optarg) : nullptr;
                if (page == nullptr) {
                    std::fprintf(stderr, "#### ERROR:  Cannot open output file \"%s\"\n", optarg);
                    options.error = 1;
                    break;
                }
                if (options.htmlFile.stream != nullptr) std::fclose(options.htmlFile.stream);
                options.htmlFile = {page, optarg};
                gHtmlPath = optarg;
                break;
            }
            case kHtmlMaxDrawingsValue: options.error = !ParseDrawingCount(optarg); break;
            default:
                std::fprintf(stderr, "#### ERROR:  Unknown option: %c\n", option);
                options.error = 1;
                break;
        }
    }
    bool terminal = isatty(fileno(gReportFile)) != 0;
    // JSON records are never coloured.
    gColorReport = !gJsonOutput && ColorWanted(color, terminal, std::getenv("NO_COLOR"));
    // A report to a file or a pipe is written in large blocks (a CJK family's can
    // run to hundreds of megabytes); on a terminal it stays line by line.
    if (!terminal) std::setvbuf(gReportFile, nullptr, _IOFBF, kReportBufferBytes);
    return options;
}

bool ClaimReportFiles(const CommandLineOptions& options, char* const fontFiles[], int count) {
    std::vector<ReportFile> claimed = options.reportFiles;
    if (options.htmlFile.stream != nullptr) claimed.push_back(options.htmlFile);
    for (const ReportFile& report : claimed) {
        struct stat reportStatus;
        if (fstat(fileno(report.stream), &reportStatus) != 0) continue;
        for (int i = 0; i < count; ++i) {
            struct stat fontStatus;
            if (stat(fontFiles[i], &fontStatus) != 0) continue;
            if (fontStatus.st_dev == reportStatus.st_dev && fontStatus.st_ino == reportStatus.st_ino) {
                std::fprintf(stderr, "##### ERROR:  The output file \"%s\" is the font file \"%s\"; it is left "
                             "untouched\n", report.path.c_str(), fontFiles[i]);
                return false;
            }
        }
    }
    // A terminal or a pipe has nothing to empty, and refuses.
    for (const ReportFile& report : claimed)
        if (ftruncate(fileno(report.stream), 0) != 0 && errno != EINVAL)
            std::fprintf(stderr, "#### ERROR:  Cannot open output file \"%s\"\n", report.path.c_str());
    return true;
}

bool ColorWanted(ColorMode mode, bool terminal, const char* noColor) {
    if (mode != ColorMode::kAuto) return mode == ColorMode::kAlways;
    return terminal && (noColor == nullptr || noColor[0] == '\0');
}

void PrintLongOptionUsage(unsigned longOptions) {
    std::printf("Long options:\n");
    for (const LongOptionRow& row : kLongOptionRows)
        if (longOptions & row.flag) std::printf("%s", row.usage);
    std::printf("Font files may be TrueType or OpenType fonts, collections, resource-fork font files, or WOFF and "
                "WOFF2 web fonts.\n");
    std::printf("An -o file that is one of the font files, by any path or link, is refused and left untouched.\n");
    std::printf("No table's account prints more than %llu times the size of its tables, or %llu MB when that is more: "
                "a damaged table's account is cut there, with a line saying so.\n",
                static_cast<unsigned long long>(TTableDumper::kAccountBytesPerTableByte),
                static_cast<unsigned long long>(TTableDumper::kAccountFloorBytes >> 20));
}

VellTag TagFromText(std::string_view text) {
    uint8_t bytes[4] = {' ', ' ', ' ', ' '};
    for (size_t i = 0; i < text.size() && i < 4; ++i) bytes[i] = static_cast<uint8_t>(text[i]);
    return static_cast<VellTag>(bytes[0]) << 24 | static_cast<VellTag>(bytes[1]) << 16 |
           static_cast<VellTag>(bytes[2]) << 8 | bytes[3];
}

std::string BaseName(const char* path) {
    const char* slash = std::strrchr(path, '/');
    return slash ? slash + 1 : path;
}

void PrintVersion(const std::string& name) {
    std::printf("%s, version %s, %s\n", name.c_str(), kToolVersion, VellVersion());
}
