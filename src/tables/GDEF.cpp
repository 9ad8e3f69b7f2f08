#include "tables/GDEF.h"

#include "tables/LayoutAccount.h"

int32_t TGDEFTableDumper::DumpTableContents() {
    DumpLayoutAccount(*this, VellReadGDEF(GetTableView()));
    return 0;
}

int32_t TGDEFTableComparator::DumpTableDeltas() {
    if (!HasBothTables()) return 1;
    CompareLayoutAccounts(*this, VellReadGDEF(GetTableView()), VellReadGDEF(GetOriginalTableView()));
    return 0;
}
