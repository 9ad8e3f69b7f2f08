#include "tables/loca.h"

#include <algorithm>

#include "VellCmpErrors.h"
#include "framework/VellGlyphData.h"
#include "framework/VellGlyphs.h"
#include "framework/VellTables.h"

namespace {

constexpr size_t kOffsetBytes = 4;

uint32_t OffsetAt(const VellHandle& longOffsets, uint32_t glyph) {
    return VelmView(longOffsets).u32(kOffsetBytes * size_t{glyph});
}

// The font's glyph count and its offsets in long form.
void ReadOffsets(TFontContext& font, uint32_t* glyphCount, VellHandle* longOffsets) {
    *glyphCount = font.GlyphCount();
    ErrorRecord record;
    *longOffsets = VellMakeLongLOCA(font.Font(), &record);
    ThrowIfVellError(record);
}

}  // namespace

// ---- Dumper ----

TLOCATableDumper::TLOCATableDumper(TFontContext& font, VellTag tag, FILE* out) : TTableDumper(font, tag, out) {
    ReadOffsets(font, &fGlyphCount, &fLongOffsets);
    if (gVerbose) std::fprintf(stderr, "\tCreated a 'loca' table dumper\n");
}

int32_t TLOCATableDumper::DumpTableContents() {
    if (!GetTableHandle() || GetOutputFile() == nullptr) return 1;
    for (uint32_t glyph = 0; glyph < fGlyphCount; ++glyph) {
        PrintInt32Field(1, "Glyph", static_cast<int32_t>(glyph), false, true);
        PrintInt32Field(2, "Offset", static_cast<int32_t>(OffsetAt(fLongOffsets, glyph)), true, true);
    }
    return 0;
}

// ---- Comparator ----

TLOCATableComparator::TLOCATableComparator(TFontContext& modified, TFontContext& original, VellTag tag, FILE* out)
    : TTableComparator(modified, original, tag, out) {
    if (gVerbose) std::fprintf(stderr, "\tCreating a 'loca' table comparator\n");
    ReadOffsets(modified, &fModifiedGlyphs, &fModifiedOffsets);
    ReadOffsets(original, &fOriginalGlyphs, &fOriginalOffsets);
    if (gVerbose) std::fprintf(stderr, "\tCreated a 'loca' table comparator\n");
}

void TLOCATableComparator::PrintGlyphHeading(uint32_t glyph) {
    PrintInt32Field(1, "Glyph", static_cast<int32_t>(glyph), false, true);
    // Printed whether or not glyph names are switched on; two glyphs without
    // names agree, and get an empty name line.
    auto name = [glyph](TFontContext& font) -> std::optional<std::string> {
        if (glyph >= font.GlyphCount()) return std::nullopt;
        return font.GlyphName(glyph);
    };
    PrintGlyphNameLines(name(*GetModifiedContext()), name(*GetOriginalContext()), "Name (mod )",
                        "Name (orig)");
}

int32_t TLOCATableComparator::DumpTableContents() {
    if (!HasBothTables()) return 1;
    uint32_t sharedGlyphs = std::min(fModifiedGlyphs, fOriginalGlyphs);
    uint32_t allGlyphs = std::max(fModifiedGlyphs, fOriginalGlyphs);
    if (gVerbose) std::fprintf(stderr, "\tDumping 'loca' table deltas\n");
    for (uint32_t glyph = 0; glyph < sharedGlyphs; ++glyph) {
        uint32_t modified = OffsetAt(fModifiedOffsets, glyph), original = OffsetAt(fOriginalOffsets, glyph);
        if (modified == original) continue;
        PrintGlyphHeading(glyph);
        PrintInt32Field(2, ModLabel("Offset"), static_cast<int32_t>(modified), true, true);
        PrintInt32Field(2, OrigLabel("Offset"), static_cast<int32_t>(original), true, true);
    }
    // The closing offset after each font's last glyph is neither compared nor listed.
    const VellHandle* extra = &fModifiedOffsets;
    if (sharedGlyphs < fModifiedGlyphs) {
        if (gVerbose) std::fprintf(stderr, "\tFound entries for added glyphs\n");
        PrintLine("\n\n\tOffsets for added glyphs:", true);
    } else if (sharedGlyphs < fOriginalGlyphs) {
        if (gVerbose) std::fprintf(stderr, "\tFound entries for deleted glyphs\n");
        PrintLine("\n\n\tOffsets for deleted glyphs:", true);
        extra = &fOriginalOffsets;
    }
    for (uint32_t glyph = sharedGlyphs; glyph < allGlyphs; ++glyph) {
        PrintGlyphHeading(glyph);
        PrintInt32Field(2, "Offset", static_cast<int32_t>(OffsetAt(*extra, glyph)), true, true);
    }
    return 0;
}
