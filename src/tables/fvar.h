// 'fvar': the font variations table, its axes and named instances. Axes are
// matched between the fonts by tag and instances by subfamily name, so an
// inserted axis or instance does not turn the rest into changes.
#pragma once

#include "comparators/TTableComparator.h"

class TFVARTableDumper : public TTableDumper {
public:
    using TTableDumper::TTableDumper;
    int32_t DumpTableContents() override;
};

class TFVARTableComparator : public TTableComparator {
public:
    using TTableComparator::TTableComparator;
    int32_t DumpTableDeltas() override;
};
