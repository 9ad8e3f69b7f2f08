// What the two front ends share: their option loop, which sets the process-wide
// switches, the usage lines of the long options, and the version line.
#pragma once

#include <cstdio>
#include <string>
#include <string_view>
#include <vector>

#include "framework/VellTypes.h"

inline constexpr const char* kToolVersion = "1.1d1e11";

// The long options, as flags: each front end accepts the ones it names. Every
// one of them is opt-in, so a run without them prints what it always has.
enum LongOption : unsigned {
    kLongHelp = 1u << 0,      // --help: the usage text, then the long options
    kLongVersion = 1u << 1,   // --version, as -V
    kLongColor = 1u << 2,     // --color[=never|always|auto]
    kLongSummary = 1u << 3,   // --summary
    kLongTables = 1u << 4,    // --tables=TAG[,TAG...] and --exclude-tables=TAG[,TAG...]
    kLongExitCode = 1u << 5,  // --exit-code
    kLongOpenType = 1u << 6,  // --opentype
    kLongPair = 1u << 7,      // --pair=name|index
    kLongJson = 1u << 8,      // --json and --ignore=RULE[,RULE...]
    kLongHtml = 1u << 9,      // --html=FILE and --html-max-drawings=N
};

// A file -o opened, kept as it is until it is known to be none of the font files.
struct ReportFile {
    FILE* stream;
    std::string path;
};

struct CommandLineOptions {
    int error = 0;          // an unknown option, a missing or bad argument, or an -o file that cannot be opened
    bool help = false;      // -h or --help
    bool longHelp = false;  // --help
    bool version = false;   // -V or --version
    std::vector<ReportFile> reportFiles;  // every -o given, the last one the report's
    ReportFile htmlFile{nullptr, {}};     // the --html page's file (the last one given)
};

// Parses the options of `letters` (a getopt option string: any of f:, h, o:, p, u,
// v and V) and the long options of `longOptions` into the process-wide switches.
// Parsing stops at the first operand and at the first error; optind is left at
// the first operand. Colour is decided last, for the report stream -o chose.
CommandLineOptions ParseOptions(int argc, char* argv[], const char* letters, unsigned longOptions = 0);

// Whether a report file of `options` is one of `fontFiles` (the same file by any
// path or link): if so, prints an error line and answers false, leaving every
// file as it was; otherwise empties the report files, as opening them always has.
// The --html file is claimed alike.
bool ClaimReportFiles(const CommandLineOptions& options, char* const fontFiles[], int count);

enum class ColorMode { kNever, kAuto, kAlways };

// Whether a report is coloured: auto colours only a terminal, and not when
// NO_COLOR is set to a non-empty value (noColor is its value, or null).
bool ColorWanted(ColorMode mode, bool terminal, const char* noColor);

// The usage lines of the long options in `longOptions`, on standard output.
void PrintLongOptionUsage(unsigned longOptions);

// A tag as typed: up to four characters, padded with blanks ("cvt" is 'cvt ').
VellTag TagFromText(std::string_view text);

// The part of a path after its last '/'.
std::string BaseName(const char* path);

// "<name>, version <tool version>, <framework version>" on standard output.
void PrintVersion(const std::string& name);
