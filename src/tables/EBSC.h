// 'EBSC': embedded bitmap scaling, its size records printed and compared by position.
#pragma once

#include "comparators/TTableComparator.h"

class TEBSCTableDumper : public TTableDumper {
public:
    using TTableDumper::TTableDumper;
    int32_t DumpTableContents() override;
    int GetHandlerKind() const override { return 22; }
};

class TEBSCTableComparator : public TTableComparator {
public:
    using TTableComparator::TTableComparator;
    int32_t DumpTableDeltas() override;
    int GetHandlerKind() const override { return 22; }
};
