// 'post': the PostScript header values, then glyph names glyph by glyph, then the
// glyphs only one font has. With --opentype velldump lists it too.
#pragma once

#include "comparators/TTableComparator.h"

// The header, then each glyph's name where the table names glyphs.
class TPOSTTableDumper : public TTableDumper {
public:
    using TTableDumper::TTableDumper;
    int32_t DumpTableContents() override;
};

class TPOSTTableComparator : public TTableComparator {
public:
    using TTableComparator::TTableComparator;
    int32_t DumpTableDeltas() override;
    int GetHandlerKind() const override { return 5; }
};
