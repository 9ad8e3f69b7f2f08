// 'loca': a font's glyph offsets, and the offsets of two fonts compared, both in
// their long form. The registry makes no 'loca' comparator (a changed 'loca' gets
// only its tag line: its offsets follow from the outlines), but both classes are
// complete, and velldump prints a 'loca' through its dumper.
#pragma once

#include "comparators/TTableComparator.h"

class TLOCATableDumper : public TTableDumper {
public:
    TLOCATableDumper(TFontContext& font, VellTag tag, FILE* out);
    int32_t DumpTableContents() override;
    int GetHandlerKind() const override { return 17; }

private:
    uint32_t fGlyphCount;
    VellHandle fLongOffsets;  // glyph count + 1 offsets, 32 bits each
};

class TLOCATableComparator : public TTableComparator {
public:
    TLOCATableComparator(TFontContext& modified, TFontContext& original, VellTag tag, FILE* out);
    // Replaces the comparison frame: no original size, no "No changes" line.
    int32_t DumpTableContents() override;
    int GetHandlerKind() const override { return 17; }

private:
    // The "Glyph" line and the glyph's names under it.
    void PrintGlyphHeading(uint32_t glyph);

    VellHandle fModifiedOffsets;
    uint32_t fModifiedGlyphs = 0;
    VellHandle fOriginalOffsets;
    uint32_t fOriginalGlyphs = 0;
};
