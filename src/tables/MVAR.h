// 'MVAR': the metrics variations table: value records by tag, each reaching a
// delta set of the table's item variation store.
#pragma once

#include "comparators/TTableComparator.h"

class TMVARTableDumper : public TTableDumper {
public:
    using TTableDumper::TTableDumper;
    int32_t DumpTableContents() override;
};

class TMVARTableComparator : public TTableComparator {
public:
    using TTableComparator::TTableComparator;
    int32_t DumpTableDeltas() override;
};
