#include "tables/hdmx.h"

#include "VellCmpFonts.h"

int32_t THDMXTableDumper::DumpTableContents() { return TTableDumper::DumpTableContents(); }

THDMXTableComparator::THDMXTableComparator(VellHandle modifiedTable, const VellHandle& modifiedPost,
                                           uint32_t modifiedGlyphs, VellHandle originalTable,
                                           const VellHandle& originalPost, uint32_t originalGlyphs, FILE* out)
    : TTableComparator(std::move(modifiedTable), std::move(originalTable), out),
      fModifiedGlyphs(modifiedGlyphs),
      fOriginalGlyphs(originalGlyphs) {
    ErrorRecord record;
    fModifiedPost = VelmHandToHand(modifiedPost, &record);
    ThrowIfVellError(record);
    fOriginalPost = VelmHandToHand(originalPost, &record);
    ThrowIfVellError(record);
}

int32_t THDMXTableComparator::DumpTableDeltas() { return TTableComparator::DumpTableDeltas(); }

void THDMXTableComparator::PrintGlyphNames(uint32_t) {}
