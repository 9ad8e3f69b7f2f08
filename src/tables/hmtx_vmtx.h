// 'hmtx' and 'vmtx': per-glyph advances and side bearings. All four classes print
// the horizontal labels ("Advance width", "Left-side bearing"), 'vmtx' included.
#pragma once

#include "comparators/TTableComparator.h"

// What a metrics table needs of its font: a private copy of its 'post' table (for
// glyph names; may be null), its number of long metrics (numberOfHMetrics or
// numOfLongVerMetrics) and its glyph count.
struct TMetricsFontData {
    TMetricsFontData(const VellHandle& post, uint16_t longMetrics, uint32_t glyphCount);
    VellHandle post;
    uint16_t longMetrics;
    uint32_t glyphCount;
};

class THMTXTableDumper : public TTableDumper {
public:
    // (table, 'post' table, number of long metrics, glyph count, out)
    THMTXTableDumper(VellHandle table, const VellHandle& post, uint16_t longMetrics, uint32_t glyphCount, FILE* out);
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
    // (modified table, its 'post', long metrics, glyph count, then the same of the
    // original font, out)
    THMTXTableComparator(VellHandle modifiedTable, const VellHandle& modifiedPost, uint16_t modifiedLongMetrics,
                         uint32_t modifiedGlyphs, VellHandle originalTable, const VellHandle& originalPost,
                         uint16_t originalLongMetrics, uint32_t originalGlyphs, FILE* out);
    int32_t DumpTableDeltas() override;
    int GetHandlerKind() const override { return 13; }

protected:
    // "\t\tName:\t" when both names read the same, else one line per font, the
    // modified one under modifiedLabel.
    void PrintNameLines(const std::string& modifiedName, const std::string& originalName,
                        const char* modifiedLabel);

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
