// Vell table access: counting, finding and copying a font's tables.
#pragma once

#include <cstdint>

#include "framework/VellFontFile.h"
#include "framework/VellMemory.h"

// Number of tables in the font's directory.
uint32_t VellCountFontTables(VellFontRef font, ErrorRecord* record);

// The table at a 1-based directory index: returns its length and writes its tag.
uint32_t VellGetFontTable(VellFontRef font, uint32_t index, void* unused, VellTag* tag,
                          ErrorRecord* record);

// The length of the table with this tag, or 0 when the font has none.
uint32_t VellFindFontTable(VellFontRef font, VellTag tag, void* unused1, void* unused2,
                           ErrorRecord* record);

// Copies length bytes of a table, starting at offset, into buffer.
void VellFindFontTableParts(VellFontRef font, VellTag tag, uint32_t offset, uint32_t length,
                            uint8_t* buffer, void* unused, ErrorRecord* record);

// A block holding a copy of the whole table, or null when the font has none. A
// table of 0 bytes gives an empty block. size, when given, receives the length.
VellHandle VellGetFontTableHandle(VellFontRef font, VellTag tag, uint32_t* size,
                                  ErrorRecord* record);

// The font's glyph count: numGlyphs of 'maxp' (unsigned 16-bit), or 0 without
// 'maxp'. A 'maxp' whose entry runs past the end of the file is an error.
uint32_t VellCountFontGlyphs(VellFontRef font, ErrorRecord* record);

// The bytes of a table in place, without a copy; an empty view when the font has
// no such table or its entry lies outside the file (which, with a record, is an
// error as it is for VellGetFontTableHandle).
VellView VellFontTableView(VellFontRef font, VellTag tag, ErrorRecord* record = nullptr);

// The metrics headers 'hhea' and 'vhea' share one layout: numberOfHMetrics
// (numOfLongVerMetrics) stands at this offset in both.
inline constexpr uint32_t kLongMetricCountOffset = 34;
