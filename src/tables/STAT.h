// 'STAT': the style attributes table: its design axes, its axis values of
// formats 1 to 4 and the elided fallback name. Design axes are matched between
// the fonts by tag, axis values by their axes and name.
#pragma once

#include "comparators/TTableComparator.h"

class TSTATTableDumper : public TTableDumper {
public:
    using TTableDumper::TTableDumper;
    int32_t DumpTableContents() override;
};

class TSTATTableComparator : public TTableComparator {
public:
    using TTableComparator::TTableComparator;
    int32_t DumpTableDeltas() override;
};
