// Vell web fonts: WOFF (zlib) and WOFF2 (Brotli) files are decoded in memory to
// the sfnt they wrap (a collection, for a WOFF2 collection) before anything reads
// a table, so every handler sees a web font as it sees any other font file.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "framework/VellView.h"

// A web font never decodes to more than this many times its own size, nor to
// more than kVellMaxDecodedFontBytes: anything larger is taken for a
// decompression bomb and refused before a byte is allocated for it.
inline constexpr uint64_t kVellMaxWebFontExpansion = 100;
inline constexpr uint64_t kVellMaxDecodedFontBytes = uint64_t{256} << 20;

// Whether the bytes begin with the signature of a WOFF or a WOFF2 file.
bool VellIsWebFont(VellView file);

// Decodes a WOFF or WOFF2 file into the sfnt (or collection) bytes it holds.
// Returns null, or why the file cannot be read (with *sfnt empty): a damaged
// file, a table whose decoded length is not the one its directory entry claims,
// or a font that would decode past the bound above.
const char* VellDecodeWebFont(VellView file, std::vector<uint8_t>* sfnt);
