// What the fuzz targets share: fonts listed from the fuzzer's bytes, a report
// stream that discards, and the switches that make every print path run.
#pragma once

#include <cstdint>
#include <cstdio>
#include <vector>

#include "VellCmpErrors.h"
#include "framework/VellFontFile.h"
#include "framework/VellNames.h"

inline FILE* NullReport() {
    static FILE* null = std::fopen("/dev/null", "w");
    return null;
}

inline VellFontListRef ListFonts(std::vector<uint8_t> bytes) {
    ErrorRecord record;
    return VellMakeFontListFromBytes(VellMappedFile::FromBytes(std::move(bytes)), &record);
}

// Glyph and character names on, the report discarded. Inputs of odd size run
// with --opentype, so that the OpenType handlers see the same inputs.
inline void PrepareRun(size_t inputSize) {
    gReportFile = NullReport();
    gOpenType = inputSize % 2;
    gShowPostScriptNames = 1;
    gShowUnicodeNames = 1;
}

// The tool pairs fonts by their names before it compares them, so a font whose
// 'name' the framework cannot read never reaches the comparison.
inline bool NamesReadable(VellFontRef font) {
    ErrorRecord record;
    VellCountFontNames(font, &record);
    return record.code == 0;
}
