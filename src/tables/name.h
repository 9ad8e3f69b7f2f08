// 'name': every name record of one table with its identifiers and text; and the
// records added, deleted and changed between two tables.
#pragma once

#include "comparators/TTableComparator.h"

class TNAMETableDumper : public TTableDumper {
public:
    using TTableDumper::TTableDumper;
    int32_t DumpTableContents() override;
    int GetHandlerKind() const override { return 19; }
};

class TNAMETableComparator : public TTableComparator {
public:
    using TTableComparator::TTableComparator;
    int32_t DumpTableDeltas() override;
    int GetHandlerKind() const override { return 19; }

    virtual void ReportAddedNames();
    virtual void ReportDeletedNames();
    virtual void ReportChangedNames();
};
