// 'loca': a font's glyph offsets, and the offsets of two fonts compared, both in
// their long form. The registry makes no 'loca' comparator (a changed 'loca' gets
// only its tag line: its offsets follow from the outlines), but both classes are
// complete, and velldump prints a 'loca' through its dumper.
#pragma once

#include "comparators/TTableComparator.h"

class TLOCATableDumper : public TTableDumper {
public:
    // (font, table, out)
    TLOCATableDumper(VellFontRef font, VellHandle table, FILE* out);
    int32_t DumpTableContents() override;
    int GetHandlerKind() const override { return 17; }

private:
    uint32_t fGlyphCount;
    VellHandle fLongOffsets;  // glyph count + 1 offsets, 32 bits each
};

class TLOCATableComparator : public TTableComparator {
public:
    // (modified font, modified table, modified 'post', original font, original
    // table, original 'post', out); the 'post' tables are copied.
    TLOCATableComparator(VellFontRef modifiedFont, VellHandle modifiedTable, const VellHandle& modifiedPost,
                         VellFontRef originalFont, VellHandle originalTable, const VellHandle& originalPost, FILE* out);
    // Replaces the comparison frame: no original size, no "No changes" line.
    int32_t DumpTableContents() override;
    int GetHandlerKind() const override { return 17; }

private:
    // The "Glyph" line and the glyph's names under it.
    void PrintGlyphHeading(uint32_t glyph);

    VellHandle fModifiedPost;
    VellHandle fModifiedOffsets;
    uint32_t fModifiedGlyphs = 0;
    VellHandle fOriginalPost;
    VellHandle fOriginalOffsets;
    uint32_t fOriginalGlyphs = 0;
};
