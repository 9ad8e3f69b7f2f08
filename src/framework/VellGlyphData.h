// Vell glyph outlines: a glyph's bytes in 'glyf' by way of 'loca', the long form
// of a font's 'loca', and the outline points of a simple glyph.
#pragma once

#include <cstdint>

#include "framework/VellFontFile.h"
#include "framework/VellMemory.h"

// Where one font's outlines lie, looked up once so that walking every glyph of a
// large font never searches the table directory again.
struct VellGlyphLocations {
    VellView glyf;
    VellView loca;
    bool longOffsets = false;  // 'head' indexToLocFormat: 0 short offsets, any other value long
    uint32_t glyphCount = 0;   // 'maxp' numGlyphs
};

// The font's 'glyf', 'loca', offset format and glyph count. A missing table reads
// as an empty one; a 'glyf', 'loca', 'head' or 'maxp' whose directory entry runs
// past the end of the file is an error.
VellGlyphLocations VellFindGlyphLocations(VellFontRef font, ErrorRecord* record);

// loca[index] in long form: a short offset doubled; 0 past the end of 'loca'.
uint32_t VellGlyphOffset(const VellGlyphLocations& locations, uint32_t index);

// A new block holding the bytes of 'glyf' from loca[glyph] up to loca[glyph + 1];
// null when the range is empty (a glyph without an outline). A glyph at or past
// the glyph count is a parameter error; a decreasing range or one that ends past
// 'glyf' is a bad-table error.
VellHandle VellGetTTGlyphData(const VellGlyphLocations& locations, uint32_t glyph, ErrorRecord* record);
VellHandle VellGetTTGlyphData(VellFontRef font, uint32_t glyph, ErrorRecord* record);

// The same bytes in place, without a copy: a view into the font's 'glyf', valid
// while its font list is open; empty for a glyph without an outline.
VellView VellGetTTGlyphBytes(const VellGlyphLocations& locations, uint32_t glyph, ErrorRecord* record);

// The byte size of a block from VellGetTTGlyphData and its kin; a null block is a
// parameter error.
uint32_t VelmGetPtrSize(const VellHandle& pointer, ErrorRecord* record);

// A block of numGlyphs + 1 big-endian 32-bit offsets into 'glyf': the font's
// 'loca' in long form, short offsets doubled. Entries past the end of 'loca' read
// as 0, so a font without 'loca' gives numGlyphs + 1 zeros.
VellHandle VellMakeLongLOCA(VellFontRef font, ErrorRecord* record);

// The outline points of a simple glyph's data, decoded from its flags (repeat
// counts expanded) and its x then y coordinate deltas: a block holding a
// big-endian 32-bit point count, then per point x and y as 32-bit 16.16 values.
// No phantom points; no points for a composite or empty glyph. A glyph cut short
// gives the points whose flag and coordinates it still holds, and never more than
// the last endPtsOfContours value + 1.
VellHandle VellExtractGLYFCoords(const VellHandle& glyphData, ErrorRecord* record);
