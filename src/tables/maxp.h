// 'maxp': the maximum profile, printed and compared field by field.
#pragma once

#include "comparators/TTableComparator.h"

class TMAXPTableDumper : public TTableDumper {
public:
    using TTableDumper::TTableDumper;
    int32_t DumpTableContents() override;
    int GetHandlerKind() const override { return 21; }
};

class TMAXPTableComparator : public TTableComparator {
public:
    using TTableComparator::TTableComparator;
    int32_t DumpTableDeltas() override;
    int GetHandlerKind() const override { return 21; }
};
