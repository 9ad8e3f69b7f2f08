// 'bdat' with 'bloc': bitmap data compared glyph bitmap by glyph bitmap, through
// each font's bitmap locations sorted by data offset. The registry builds this
// comparator (a damaged 'bloc' fails there) but reports a changed 'bdat' through
// the 'head' comparator over the two 'bdat' tables, as reports always have.
#pragma once

#include <vector>

#include "comparators/TTableComparator.h"

// Where one strike's bitmap of one glyph lies in 'bdat', as the font's 'bloc'
// locates it.
struct TGlyphBitmapLocation {
    uint32_t offset = 0;       // into 'bdat'
    uint32_t size = 0;         // bytes of the image
    uint16_t pointSize = 0;    // the strike's ppemX
    uint16_t glyph = 0;
    uint16_t indexFormat = 0;  // of the index subtable that located it
    uint16_t imageFormat = 0;
    uint32_t metrics1 = 0;     // the big glyph metrics of an index format 2 subtable
    uint32_t metrics2 = 0;
};

class TBDATTableComparator : public TTableComparator {
public:
    TBDATTableComparator(TFontContext& modified, TFontContext& original, VellTag tag, FILE* out);
    int32_t DumpTableDeltas() override;
    int GetHandlerKind() const override { return 20; }

    // Every glyph bitmap of every strike of the font's 'bloc', sorted by data
    // offset; empty for a font without one. More entries than strikes times
    // glyphs throws TVellCmpOSException with status -50.
    static std::vector<TGlyphBitmapLocation> BuildLocationList(VellFontRef font);

    const std::vector<TGlyphBitmapLocation>& GetModifiedLocations() const { return fModifiedLocations; }
    const std::vector<TGlyphBitmapLocation>& GetOriginalLocations() const { return fOriginalLocations; }

private:
    // A heading line, the location's fields and the line of its bitmap's bytes.
    void PrintLocation(const char* heading, const TGlyphBitmapLocation& location, VellView bdat);

    std::vector<TGlyphBitmapLocation> fOriginalLocations;
    std::vector<TGlyphBitmapLocation> fModifiedLocations;
};
