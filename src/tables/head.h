// 'head' (and 'bhed'): the font header, compared field by field. Without
// --opentype a lone 'head' prints as a hex dump.
#pragma once

#include "comparators/TTableComparator.h"

// With --opentype, velldump lists every field of the comparison's layout.
class THEADTableDumper : public TTableDumper {
public:
    using TTableDumper::TTableDumper;
    int32_t DumpTableContents() override;
};

class THEADTableComparator : public TTableComparator {
public:
    using TTableComparator::TTableComparator;
    int32_t DumpTableDeltas() override;
    int GetHandlerKind() const override { return 7; }
};
