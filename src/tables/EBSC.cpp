#include "tables/EBSC.h"

int32_t TEBSCTableDumper::DumpTableContents() { return TTableDumper::DumpTableContents(); }

int32_t TEBSCTableComparator::DumpTableDeltas() { return TTableComparator::DumpTableDeltas(); }
