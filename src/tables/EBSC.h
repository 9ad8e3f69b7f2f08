// 'EBSC': embedded bitmap scaling, its size records printed and compared by position.
#pragma once

#include "comparators/TTableComparator.h"

class TEBSCTableDumper : public TTableDumper {
public:
    // (table, out)
    TEBSCTableDumper(VellHandle table, FILE* out) : TTableDumper(std::move(table), out, nullptr) {}
    int32_t DumpTableContents() override;
    int GetHandlerKind() const override { return 22; }
};

class TEBSCTableComparator : public TTableComparator {
public:
    // (modified table, original table, out)
    using TTableComparator::TTableComparator;
    int32_t DumpTableDeltas() override;
    int GetHandlerKind() const override { return 22; }
};
