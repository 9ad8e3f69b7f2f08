// Vell encodings: the character-to-glyph mappings of a font's 'cmap'.
//
// An encoding is one encoding record of the 'cmap', numbered from 1 in stored
// order; records whose subtable is a format 14 one (variation sequences) map no
// characters and are not listed. Platform and script are the record's platform
// and encoding IDs plus one, the language the subtable's language field plus one
// (so that 0 can mean "any", as for names). A 'cmap' whose directory entry runs
// past the end of the file fails every call here; a font without one has no
// encodings.
#pragma once

#include <cstdint>
#include <vector>

#include "framework/VellFontFile.h"
#include "framework/VellMemory.h"

uint32_t VellCountFontEncodings(VellFontRef font, ErrorRecord* record);

// Encoding `index`: returns its platform and writes its script and language.
int32_t VellGetFontEncoding(VellFontRef font, uint32_t index, int32_t* script, int32_t* language,
                            ErrorRecord* record);

// The index of the first encoding with this platform, script and language, or 0.
uint32_t VellFindFontEncoding(VellFontRef font, int32_t platform, int32_t script, int32_t language,
                              ErrorRecord* record);

// One mapping: a character code and the glyph it maps to.
struct VellCGPair {
    uint32_t code;
    uint16_t glyph;
};
using VellCGArray = std::vector<VellCGPair>;

// The mapping of encoding `index` of a 'cmap' table's bytes: every code that maps
// to a glyph other than 0, once, in ascending order. Where a code is mapped twice
// the first mapping in table order holds; codes above U+10FFFF are dropped.
// Formats 0, 2, 4, 6, 8, 10, 12 and 13 are read; any other gives no mappings.
// *format receives the subtable's format. A damaged subtable gives what of it
// lies inside the table, and never more than one mapping per code.
VellCGArray VellMakeCGArrayFromCMAPTable(const VellHandle& cmap, uint32_t index, uint16_t* format,
                                         ErrorRecord* record);
