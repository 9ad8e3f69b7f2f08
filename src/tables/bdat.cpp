#include "tables/bdat.h"

TBDATTableComparator::TBDATTableComparator(VellFontRef modifiedFont, VellHandle modifiedTable,
                                           VellFontRef originalFont, VellHandle originalTable, FILE* out)
    : TTableComparator(std::move(modifiedTable), std::move(originalTable), out) {
    SetModifiedFont(modifiedFont);
    SetOriginalFont(originalFont);
}

int32_t TBDATTableComparator::DumpTableDeltas() { return 0; }
