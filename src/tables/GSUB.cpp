#include "tables/GSUB.h"

#include "tables/LayoutAccount.h"

int32_t TGSUBTableDumper::DumpTableContents() {
    DumpLayoutAccount(*this, VellReadGSUB(GetTableView()));
    return 0;
}

int32_t TGSUBTableComparator::DumpTableDeltas() {
    if (!HasBothTables()) return 1;
    CompareLayoutAccounts(*this, VellReadGSUB(GetTableView()), VellReadGSUB(GetOriginalTableView()));
    return 0;
}
