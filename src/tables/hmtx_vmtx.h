// 'hmtx' and 'vmtx': per-glyph advances and side bearings. All four classes print
// the horizontal labels ("Advance width", "Left-side bearing"), 'vmtx' included.
#pragma once

#include "comparators/TTableComparator.h"

// What a metrics table needs of its font: its 'post' table (for glyph names; may
// be null), its number of long metrics (numberOfHMetrics or numOfLongVerMetrics)
// and its glyph count.
struct TMetricsFontData {
    TMetricsFontData(TFontContext& font, VellTag metricsTag);
    const VellHandle& post;
    uint16_t longMetrics;
    uint32_t glyphCount;
};

class THMTXTableDumper : public TTableDumper {
public:
    THMTXTableDumper(TFontContext& font, VellTag tag, FILE* out);
    int32_t DumpTableContents() override;
    int GetHandlerKind() const override { return 13; }

protected:
    // How many long metrics the dump lists: no more than the table begins.
    uint32_t LongMetricsShown() const;
    // The glyphs past the long metrics, each with its name line and its side bearing.
    void DumpTrailingSideBearings();

    TMetricsFontData fFont;
};

class TVMTXTableDumper : public THMTXTableDumper {
public:
    using THMTXTableDumper::THMTXTableDumper;
    int32_t DumpTableContents() override;
};

class THMTXTableComparator : public TTableComparator {
public:
    THMTXTableComparator(TFontContext& modified, TFontContext& original, VellTag tag, FILE* out);
    int32_t DumpTableDeltas() override;
    int GetHandlerKind() const override { return 13; }

protected:
    void ReportGlyphsOfOneFont();
    TMetricsFontData fModified;
    TMetricsFontData fOriginal;
};

class TVMTXTableComparator : public THMTXTableComparator {
public:
    using THMTXTableComparator::THMTXTableComparator;
    int32_t DumpTableDeltas() override;

private:
    // The "Glyph" line and the name lines that head every reported glyph.
    void PrintGlyphHeading(uint32_t glyph);
};
