#include "tables/feat.h"

int32_t TFEATTableDumper::DumpTableContents() { return 0; }

int32_t TFEATTableComparator::DumpTableDeltas() { return 0; }
