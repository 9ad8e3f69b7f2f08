// Vell glyph data: PostScript glyph names, horizontal metrics, Unicode names.
#pragma once

#include <cstdint>
#include <string>

#include "framework/VellFontFile.h"
#include "framework/VellMemory.h"

// The glyph's PostScript name from the font's 'post' table. Returns 0, or an
// error status for a glyph index at or past the glyph count, or for a 'maxp' or
// 'post' whose entry runs past the end of the file. Format 3, an index past the
// table's names or a malformed table give an empty name and status 0.
int32_t VellGetGlyphName(VellFontRef font, uint32_t glyph, std::string* name);

// The glyph's name from the bytes of a 'post' table (formats 1, 2 and 2.5);
// anything unnamed gives an empty name and status 0.
int32_t VellFindPSGlyphNameFromTable(const VellHandle& post, uint32_t glyph, std::string* name);

// Advance and side bearing of a glyph from 'hhea' and 'hmtx'. Glyphs at or past
// numberOfHMetrics take the last advance and their own trailing side bearing. A
// glyph at or past the glyph count, or a font without the tables, is an error.
void VellGetHMTXMetrics(VellFontRef font, uint32_t glyph, uint16_t* advance, int16_t* sideBearing,
                        ErrorRecord* record);

// The Unicode name of a code point; one without a name gets the extended form,
// such as "<control-0009>".
std::string VellGetUnicodeScalarName(uint32_t codePoint, ErrorRecord* record);

// The 258 glyph names of the standard Macintosh glyph order.
extern const char* const kVellStandardGlyphNames[258];
