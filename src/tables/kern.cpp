#include "tables/kern.h"

#include "tables/LayoutAccount.h"

int32_t TKERNTableDumper::DumpTableContents() {
    DumpLayoutAccount(*this, VellReadKern(GetTableView()));
    return 0;
}

int32_t TKERNTableComparator::DumpTableDeltas() {
    if (!HasBothTables()) return 1;
    CompareLayoutAccounts(*this, VellReadKern(GetTableView()), VellReadKern(GetOriginalTableView()));
    return 0;
}
