// 'post': the PostScript header values, then glyph names glyph by glyph, then the
// glyphs only one font has. There is no 'post' dumper.
#pragma once

#include "comparators/TTableComparator.h"

class TPOSTTableComparator : public TTableComparator {
public:
    using TTableComparator::TTableComparator;
    int32_t DumpTableDeltas() override;
    int GetHandlerKind() const override { return 5; }
};
