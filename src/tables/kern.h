// 'kern': the 16-bit-version table (formats 0 and 2) and the 32-bit-version layout (format 0),
// flattened to pairs summed over the subtables of one kind.
// Handled under --opentype only.
#pragma once

#include "comparators/TTableComparator.h"

class TKERNTableDumper : public TTableDumper {
public:
    using TTableDumper::TTableDumper;
    int32_t DumpTableContents() override;
};

class TKERNTableComparator : public TTableComparator {
public:
    using TTableComparator::TTableComparator;
    int32_t DumpTableDeltas() override;
};
