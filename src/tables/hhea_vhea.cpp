#include "tables/hhea_vhea.h"

int32_t THHEATableDumper::DumpTableContents() { return TTableDumper::DumpTableContents(); }

int32_t THHEATableComparator::DumpTableDeltas() { return TTableComparator::DumpTableDeltas(); }
