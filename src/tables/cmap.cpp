#include "tables/cmap.h"

TCMAPTableComparator::TCMAPTableComparator(VellHandle modifiedTable, VellFontRef modifiedFont,
                                           VellHandle originalTable, VellFontRef originalFont, FILE* out)
    : TTableComparator(std::move(modifiedTable), std::move(originalTable), out) {
    SetModifiedFont(modifiedFont);
    SetOriginalFont(originalFont);
}

int32_t TCMAPTableComparator::DumpTableDeltas() { return 0; }
