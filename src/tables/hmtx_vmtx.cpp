#include "tables/hmtx_vmtx.h"

#include "VellCmpFonts.h"

TMetricsFontData::TMetricsFontData(const VellHandle& postTable, uint16_t longMetricCount, uint32_t glyphs)
    : longMetrics(longMetricCount), glyphCount(glyphs) {
    ErrorRecord record;
    post = VelmHandToHand(postTable, &record);
    ThrowIfVellError(record);
}

THMTXTableDumper::THMTXTableDumper(VellHandle table, const VellHandle& post, uint16_t longMetrics,
                                   uint32_t glyphCount, FILE* out)
    : TTableDumper(std::move(table), out, nullptr), fFont(post, longMetrics, glyphCount) {}

int32_t THMTXTableDumper::DumpTableContents() { return TTableDumper::DumpTableContents(); }

int32_t TVMTXTableDumper::DumpTableContents() { return TTableDumper::DumpTableContents(); }

THMTXTableComparator::THMTXTableComparator(VellHandle modifiedTable, const VellHandle& modifiedPost,
                                           uint16_t modifiedLongMetrics, uint32_t modifiedGlyphs,
                                           VellHandle originalTable, const VellHandle& originalPost,
                                           uint16_t originalLongMetrics, uint32_t originalGlyphs, FILE* out)
    : TTableComparator(std::move(modifiedTable), std::move(originalTable), out),
      fModified(modifiedPost, modifiedLongMetrics, modifiedGlyphs),
      fOriginal(originalPost, originalLongMetrics, originalGlyphs) {}

int32_t THMTXTableComparator::DumpTableDeltas() { return TTableComparator::DumpTableDeltas(); }

int32_t TVMTXTableComparator::DumpTableDeltas() { return TTableComparator::DumpTableDeltas(); }
