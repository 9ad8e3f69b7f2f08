// 'hhea' and 'vhea': the horizontal and vertical metrics headers. Both share one
// 36-byte layout, and the 'vhea' classes print the horizontal labels too.
#pragma once

#include "comparators/TTableComparator.h"

class THHEATableDumper : public TTableDumper {
public:
    using TTableDumper::TTableDumper;
    int32_t DumpTableContents() override;
    int GetHandlerKind() const override { return 12; }
};

class TVHEATableDumper : public THHEATableDumper {
public:
    using THHEATableDumper::THHEATableDumper;
    int GetHandlerKind() const override { return 14; }
};

class THHEATableComparator : public TTableComparator {
public:
    using TTableComparator::TTableComparator;
    int32_t DumpTableDeltas() override;
    int GetHandlerKind() const override { return 12; }
};

class TVHEATableComparator : public THHEATableComparator {
public:
    using THHEATableComparator::THHEATableComparator;
    int GetHandlerKind() const override { return 14; }
};
