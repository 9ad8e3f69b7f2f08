// 'HVAR' and 'VVAR': the metrics variations tables. Both hold an item variation
// store and delta-set index maps per metric; each glyph's advance and side-bearing
// deltas are reached through its map, or through the glyph index itself where the
// table has no map for advances. 'VVAR' adds a map for vertical origins.
#pragma once

#include "comparators/TTableComparator.h"

class THVARTableDumper : public TTableDumper {
public:
    using TTableDumper::TTableDumper;
    int32_t DumpTableContents() override;
};

class TVVARTableDumper : public THVARTableDumper {
public:
    using THVARTableDumper::THVARTableDumper;
};

class THVARTableComparator : public TTableComparator {
public:
    using TTableComparator::TTableComparator;
    int32_t DumpTableDeltas() override;
};

class TVVARTableComparator : public THVARTableComparator {
public:
    using THVARTableComparator::THVARTableComparator;
};
