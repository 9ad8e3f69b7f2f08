// 'hsty': the extra widths of the classic styles, printed and compared field by field.
#pragma once

#include "comparators/TTableComparator.h"

class THSTYTableDumper : public TTableDumper {
public:
    using TTableDumper::TTableDumper;
    int32_t DumpTableContents() override;
    int GetHandlerKind() const override { return 18; }
};

class THSTYTableComparator : public TTableComparator {
public:
    using TTableComparator::TTableComparator;
    int32_t DumpTableDeltas() override;
    int GetHandlerKind() const override { return 18; }
};
