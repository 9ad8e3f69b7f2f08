#include "tables/hsty.h"

int32_t THSTYTableDumper::DumpTableContents() { return TTableDumper::DumpTableContents(); }

int32_t THSTYTableComparator::DumpTableDeltas() { return TTableComparator::DumpTableDeltas(); }
