// Vell: the font-access layer. Basic types shared by every framework call.
#pragma once

#include <cstdint>
#include <string>

// A table tag: four bytes read as a big-endian number.
using VellTag = uint32_t;

constexpr VellTag VellMakeTag(const char (&text)[5]) {
    return static_cast<VellTag>(static_cast<uint8_t>(text[0])) << 24 |
           static_cast<VellTag>(static_cast<uint8_t>(text[1])) << 16 |
           static_cast<VellTag>(static_cast<uint8_t>(text[2])) << 8 |
           static_cast<VellTag>(static_cast<uint8_t>(text[3]));
}

// The characters of a tag in stored order, as printed: up to its first NUL byte.
std::string VellTagText(VellTag tag);

// Status codes the framework leaves in an ErrorRecord. The tool knows only the
// first four by meaning; every other one is "the framework reported a problem".
enum VellStatus : int32_t {
    kVellNoErr = 0,
    kVellInternalErr = -1,
    kVellMemoryErr = -2,
    kVellIOErr = -3,
    kVellResourceErr = -7,
    kVellParamErr = -50,          // an argument out of range (a glyph or table index)
    kVellNotAFontErr = -100,      // a file that holds no font the framework can read
    kVellBadTableErr = -101,      // a table whose directory entry lies outside the file
    kVellNoFileErr = -102,        // a file reference that names no file
};

// The error record passed to every framework call that can fail.
struct ErrorRecord {
    int32_t code = 0;
    std::string name;         // at most 255 bytes, as the record's length-prefixed text
    std::string sourceFile;   // at most 255 bytes
    int32_t sourceLine = 0;
};

// Clears a record: no error, no texts.
void ClearUSN(ErrorRecord* record);

// Records where a failing call was made, so that a report can name the place.
void VellSetErrorSource(ErrorRecord* record, const char* sourceFile, int32_t line);

// Records what went wrong in words (a file that holds no font, a table that runs
// past the end of its file), for the report's line under the error's message.
void VellSetErrorName(ErrorRecord* record, std::string text);

// The framework's own version text.
const char* VellVersion();
