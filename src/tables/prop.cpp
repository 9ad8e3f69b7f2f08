#include "tables/prop.h"

int32_t TPROPTableDumper::DumpTableContents() { return 0; }

TPROPTableComparator::TPROPTableComparator(VellFontRef modifiedFont, VellHandle modifiedTable, const VellHandle&,
                                           VellFontRef originalFont, VellHandle originalTable, const VellHandle&,
                                           FILE* out)
    : TTableComparator(std::move(modifiedTable), std::move(originalTable), out) {
    SetModifiedFont(modifiedFont);
    SetOriginalFont(originalFont);
}

int32_t TPROPTableComparator::DumpTableDeltas() { return 0; }
