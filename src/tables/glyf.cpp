#include "tables/glyf.h"

int32_t TGLYFTableDumper::DumpTableContents() { return 0; }

TGLYFTableComparator::TGLYFTableComparator(VellHandle modifiedTable, VellFontRef modifiedFont,
                                           VellHandle originalTable, VellFontRef originalFont, FILE* out)
    : TTableComparator(std::move(modifiedTable), std::move(originalTable), out) {
    SetModifiedFont(modifiedFont);
    SetOriginalFont(originalFont);
}

int32_t TGLYFTableComparator::DumpTableDeltas() { return 0; }
