// 'gvar': the glyph variations header, the glyph variation offsets and the first
// glyph's tuple variation headers of one font. There is no 'gvar' comparator.
#pragma once

#include "comparators/TTableComparator.h"

class TGVARTableDumper : public TTableDumper {
public:
    using TTableDumper::TTableDumper;
    int32_t DumpTableContents() override;
    int GetHandlerKind() const override { return 4; }
};

class TGVARTableComparator : public TTableComparator {
public:
    using TTableComparator::TTableComparator;
    int32_t DumpTableDeltas() override;
};
