// 'avar': the axis variations table. Its segment maps are listed per axis tag as
// pairs of from and to coordinates; version 2 adds an axis index map and an item
// variation store whose deltas move the normalized coordinates further.
#pragma once

#include "comparators/TTableComparator.h"

class TAVARTableDumper : public TTableDumper {
public:
    using TTableDumper::TTableDumper;
    int32_t DumpTableContents() override;
};

class TAVARTableComparator : public TTableComparator {
public:
    using TTableComparator::TTableComparator;
    int32_t DumpTableDeltas() override;
};
