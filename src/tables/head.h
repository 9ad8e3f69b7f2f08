// 'head' (and 'bhed'): the font header, compared field by field. There is no
// 'head' dumper; a lone 'head' prints as a hex dump.
#pragma once

#include "comparators/TTableComparator.h"

class THEADTableComparator : public TTableComparator {
public:
    using TTableComparator::TTableComparator;
    int32_t DumpTableDeltas() override;
    int GetHandlerKind() const override { return 7; }
};
