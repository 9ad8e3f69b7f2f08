// 'mort' and 'morx': the glyph metamorphosis chains. The dumpers list chains,
// feature entries and subtable headers, with the state-table header of ligature
// subtables; the comparators compare chain headers and feature entries and fall
// back to the hex difference when the chain structure differs.
#pragma once

#include "comparators/TTableComparator.h"

class TMORTTableDumper : public TTableDumper {
public:
    using TTableDumper::TTableDumper;
    int32_t DumpTableContents() override;
    int GetHandlerKind() const override { return 23; }
};

class TMORXTableDumper : public TTableDumper {
public:
    using TTableDumper::TTableDumper;
    int32_t DumpTableContents() override;
    int GetHandlerKind() const override { return 32; }
};

class TMORTTableComparator : public TTableComparator {
public:
    using TTableComparator::TTableComparator;
    int32_t DumpTableDeltas() override;
    int GetHandlerKind() const override { return 7; }
};

class TMORXTableComparator : public TTableComparator {
public:
    using TTableComparator::TTableComparator;
    int32_t DumpTableDeltas() override;
    int GetHandlerKind() const override { return 7; }
};
