#include "tables/mort_morx.h"

int32_t TMORTTableDumper::DumpTableContents() { return 0; }
int32_t TMORXTableDumper::DumpTableContents() { return 0; }
int32_t TMORTTableComparator::DumpTableDeltas() { return 0; }
int32_t TMORXTableComparator::DumpTableDeltas() { return 0; }
