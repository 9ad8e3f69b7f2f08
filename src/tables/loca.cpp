#include "tables/loca.h"

TLOCATableDumper::TLOCATableDumper(VellFontRef, VellHandle table, FILE* out)
    : TTableDumper(std::move(table), out, nullptr) {}

int32_t TLOCATableDumper::DumpTableContents() { return 0; }

TLOCATableComparator::TLOCATableComparator(VellFontRef, VellHandle modifiedTable, const VellHandle&, VellFontRef,
                                           VellHandle originalTable, const VellHandle&, FILE* out)
    : TTableComparator(std::move(modifiedTable), std::move(originalTable), out) {}

int32_t TLOCATableComparator::DumpTableContents() { return 0; }
