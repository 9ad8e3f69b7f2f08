#include "tables/OS2.h"

int32_t TOS2TableComparator::DumpTableDeltas() { return TTableComparator::DumpTableDeltas(); }
void TOS2TableComparator::DumpOneTable(const VellHandle&) {}
void TOS2TableComparator::CompareOlderLayout() {}
void TOS2TableComparator::CompareVersion1() {}
void TOS2TableComparator::CompareVersion2() {}
