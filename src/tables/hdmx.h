// 'hdmx': horizontal device metrics. Device records are matched by pixel size, and
// the widths of the glyphs both fonts have are compared.
#pragma once

#include "comparators/TTableComparator.h"

class THDMXTableDumper : public TTableDumper {
public:
    // (table, glyph count, out): the glyph count is the number of widths per record.
    THDMXTableDumper(VellHandle table, uint32_t glyphCount, FILE* out)
        : TTableDumper(std::move(table), out, nullptr), fGlyphCount(glyphCount) {}
    int32_t DumpTableContents() override;
    int GetHandlerKind() const override { return 8; }

private:
    uint32_t fGlyphCount;
};

class THDMXTableComparator : public TTableComparator {
public:
    // (modified table, its 'post', its glyph count, then the same of the original
    // font, out); the 'post' tables are copied.
    THDMXTableComparator(VellHandle modifiedTable, const VellHandle& modifiedPost, uint32_t modifiedGlyphs,
                         VellHandle originalTable, const VellHandle& originalPost, uint32_t originalGlyphs, FILE* out);
    int32_t DumpTableDeltas() override;
    int GetHandlerKind() const override { return 28; }

    // The "Name" lines of a glyph whose width changed.
    void PrintGlyphNames(uint32_t glyph);

private:
    VellHandle fModifiedPost;
    uint32_t fModifiedGlyphs;
    VellHandle fOriginalPost;
    uint32_t fOriginalGlyphs;
};
