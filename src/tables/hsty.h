// 'hsty': the extra widths of the classic styles, printed and compared field by field.
#pragma once

#include "comparators/TTableComparator.h"

class THSTYTableDumper : public TTableDumper {
public:
    // (table, out)
    THSTYTableDumper(VellHandle table, FILE* out) : TTableDumper(std::move(table), out, nullptr) {}
    int32_t DumpTableContents() override;
    int GetHandlerKind() const override { return 18; }
};

class THSTYTableComparator : public TTableComparator {
public:
    // (modified table, original table, out)
    using TTableComparator::TTableComparator;
    int32_t DumpTableDeltas() override;
    int GetHandlerKind() const override { return 18; }
};
