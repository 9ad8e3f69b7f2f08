#include "CommandLine.h"

#include <unistd.h>

#include <cstdio>
#include <cstring>
#include <string>

#include "VellCmpErrors.h"

CommandLineOptions ParseOptions(int argc, char* argv[], const char* letters) {
    CommandLineOptions options;
    // '+': stop at the first operand, as POSIX getopt does.
    const std::string optionString = std::string("+") + letters;
    int option;
    while (!options.error && (option = getopt(argc, argv, optionString.c_str())) != -1) {
        switch (option) {
            case 'f': gFontName = optarg; break;
            case 'h': options.help = true; break;
            case 'o': {
                FILE* report = std::fopen(optarg, "w");
                if (report == nullptr) {
                    std::fprintf(stderr, "#### ERROR:  Cannot open output file \"%s\"\n", optarg);
                    options.error = 1;
                } else {
                    gReportFile = report;
                }
                break;
            }
            case 'p': gShowPostScriptNames = 1; break;
            case 'u': gShowUnicodeNames = 1; break;
            case 'v': gVerbose = 1; break;
            case 'V': options.version = true; break;
            default:
                std::fprintf(stderr, "#### ERROR:  Unknown option: %c\n", option);
                options.error = 1;
                break;
        }
    }
    return options;
}

std::string BaseName(const char* path) {
    const char* slash = std::strrchr(path, '/');
    return slash ? slash + 1 : path;
}

void PrintVersion(const std::string& name) {
    std::printf("%s, version %s, %s\n", name.c_str(), kToolVersion, VellVersion());
}
