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

// --opentype for about half the inputs, chosen by the low bit of the last byte,
// which the fuzzer flips as freely as any other: the OpenType accounts and the
// classic ones each get their share.
inline void ChooseOpenType(const uint8_t* data, size_t size) { gOpenType = size > 0 && (data[size - 1] & 1); }

// Glyph and character names on, the report discarded.
inline void PrepareRun() {
    gReportFile = NullReport();
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
