// Font files and font selection: a path to a file reference, a font found by
// name in a font list, and one name of a font as UTF-8.
#pragma once

#include <cstdint>
#include <string>

#include "framework/VellFontFile.h"

// Status codes of the file system, as the tool reports them.
enum FileStatus : int32_t {
    kFileNotFound = -43,
    kFilePermission = -54,
    kFileIOError = -36,
    kFileParamError = -50,
};

// Fills `fileRef` for `path`. Returns 0, or a file-system status after printing its
// error line. A directory prints its line and returns 0 with `fileRef` unfilled.
int32_t OpenFontFile(const char* path, VellFSSpec* fileRef, bool strict);

// The index of the first font of the list with a full name or PostScript name
// equal to `name`, or `count` when none has one (or after a reported error).
uint32_t FindFontByName(const VellFontList* list, uint32_t count, const std::string& name, ErrorRecord* record);

// One name of a font (framework name code) as UTF-8; on failure reports it.
void GetFontNameUTF8(VellFontRef font, int32_t nameCode, std::string* text, ErrorRecord* record);

// Framework name codes are name IDs plus one.
inline constexpr int32_t kFullNameCode = 5;
inline constexpr int32_t kVersionNameCode = 6;
inline constexpr int32_t kPostScriptNameCode = 7;
