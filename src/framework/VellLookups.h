// Vell lookup tables: the AAT lookups that map glyphs to 16-bit values, expanded
// into one value per glyph ('prop' and the other tables built on them).
#pragma once

#include <cstdint>
#include <vector>

#include "framework/VellMemory.h"
#include "framework/VellTypes.h"
#include "framework/VellView.h"

// One value per glyph below glyphCount from an AAT lookup table (formats 0 simple
// array, 2 segment single, 4 segment array, 6 single table and 8 trimmed array).
// A glyph the lookup gives no value, or one whose value lies outside the lookup,
// keeps defaultValue; so does every glyph of a lookup in any other format. Where
// entries overlap, the first one that covers a glyph gives its value. Units are
// read at the stride the binary-search header states, as many as the lookup
// holds whole; a unit size too small for the unit's fields yields no units.
std::vector<uint16_t> VellLookupValues(VellView lookup, uint32_t glyphCount, uint16_t defaultValue);

// The glyph properties of a 'prop' table, one big-endian 16-bit value per glyph
// (glyph g at byte 2g): what the table's lookup gives each glyph, or the default
// property where it gives none or the table has no lookup (format 0). Release the
// block with VelmDisposePtr. A glyph count beyond the 16-bit glyph space is
// kVellParamErr; a block that cannot be allocated is kVellMemoryErr.
VellHandle VellMakeArrayFromPropTable(VellView prop, uint32_t glyphCount, ErrorRecord* record);

// The system status that stands for a framework status: memory, I/O and missing
// resource failures take their system codes; any other status is already one.
int32_t VellConvertErrorToOSStatus(int32_t frameworkStatus);
