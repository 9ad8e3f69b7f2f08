// 'hdmx': horizontal device metrics. Device records are matched by pixel size, and
// the widths of the glyphs both fonts have are compared.
#pragma once

#include "comparators/TTableComparator.h"

class THDMXTableDumper : public TTableDumper {
public:
    // The font's glyph count is the number of widths per record.
    THDMXTableDumper(TFontContext& font, VellTag tag, FILE* out)
        : TTableDumper(font, tag, out), fGlyphCount(font.GlyphCount()) {}
    int32_t DumpTableContents() override;
    int GetHandlerKind() const override { return 8; }

private:
    uint32_t fGlyphCount;
};

class THDMXTableComparator : public TTableComparator {
public:
    THDMXTableComparator(TFontContext& modified, TFontContext& original, VellTag tag, FILE* out);
    int32_t DumpTableDeltas() override;
    int GetHandlerKind() const override { return 28; }

    // The "Name" lines of a glyph whose width changed.
    void PrintGlyphNames(uint32_t glyph);

private:
    uint32_t fModifiedGlyphs;
    uint32_t fOriginalGlyphs;
};
