#include "tables/name.h"

int32_t TNAMETableDumper::DumpTableContents() { return 0; }

int32_t TNAMETableComparator::DumpTableDeltas() {
    ReportAddedNames();
    ReportDeletedNames();
    ReportChangedNames();
    return 0;
}

void TNAMETableComparator::ReportAddedNames() {}
void TNAMETableComparator::ReportDeletedNames() {}
void TNAMETableComparator::ReportChangedNames() {}
