// Large font pairs for the benchmarks: the size of a CJK font, and glyph counts
// at the 16-bit limit.
#pragma once

#include "support/FontBuilder.h"

// A font with a 20 MB table of outline-like bytes under 'CFF ', which has no
// handler, so a change in it is printed as a hex difference; and 65535 glyphs with
// metrics and names.
FontTables LargeFont();

// The same font as built by a later release: one byte of the large table, every
// advance width and every glyph name changed.
FontTables LargeFontModified();
