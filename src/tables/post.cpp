#include "tables/post.h"

TPOSTTableComparator::TPOSTTableComparator(VellFontRef modifiedFont, VellHandle modifiedTable,
                                           VellFontRef originalFont, VellHandle originalTable, FILE* out)
    : TTableComparator(std::move(modifiedTable), std::move(originalTable), out) {
    SetModifiedFont(modifiedFont);
    SetOriginalFont(originalFont);
}

int32_t TPOSTTableComparator::DumpTableDeltas() { return TTableComparator::DumpTableDeltas(); }
