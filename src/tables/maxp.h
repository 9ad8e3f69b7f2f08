// 'maxp': the maximum profile, printed and compared field by field.
#pragma once

#include "comparators/TTableComparator.h"

class TMAXPTableDumper : public TTableDumper {
public:
    // (table, out); the factory sets the font.
    TMAXPTableDumper(VellHandle table, FILE* out) : TTableDumper(std::move(table), out, nullptr) {}
    int32_t DumpTableContents() override;
    int GetHandlerKind() const override { return 21; }
};

class TMAXPTableComparator : public TTableComparator {
public:
    // (modified table, original table, out)
    using TTableComparator::TTableComparator;
    int32_t DumpTableDeltas() override;
    int GetHandlerKind() const override { return 21; }
};
