// What the two front ends share: their option loop, which sets the process-wide
// switches, and the version line.
#pragma once

#include <string>

inline constexpr const char* kToolVersion = "1.1d1e11";

struct CommandLineOptions {
    int error = 0;         // an unknown option, a missing argument, or an -o file that cannot be opened
    bool help = false;     // -h
    bool version = false;  // -V
};

// Parses the options of `letters` (a getopt option string: any of f:, h, o:, p, u,
// v and V) into the process-wide switches. Parsing stops at the first operand and
// at the first error; optind is left at the first operand.
CommandLineOptions ParseOptions(int argc, char* argv[], const char* letters);

// The part of a path after its last '/'.
std::string BaseName(const char* path);

// "<name>, version <tool version>, <framework version>" on standard output.
void PrintVersion(const std::string& name);
