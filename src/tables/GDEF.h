// 'GDEF': glyph classes, attachment points, ligature carets, mark attachment classes and mark
// glyph sets, per glyph.
// Handled under --opentype only.
#pragma once

#include "comparators/TTableComparator.h"

class TGDEFTableDumper : public TTableDumper {
public:
    using TTableDumper::TTableDumper;
    int32_t DumpTableContents() override;
};

class TGDEFTableComparator : public TTableComparator {
public:
    using TTableComparator::TTableComparator;
    int32_t DumpTableDeltas() override;
};
