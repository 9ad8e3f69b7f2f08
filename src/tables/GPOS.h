// 'GPOS': glyph positioning, read as its scripts, language systems and features, then per feature tag
// its adjustments: single glyphs, pairs (summed over the feature's lookups, non-zero only), cursive
// anchors, mark attachment classes and anchors, and contextual rules.
// Handled under --opentype only.
#pragma once

#include "comparators/TTableComparator.h"

class TGPOSTableDumper : public TTableDumper {
public:
    using TTableDumper::TTableDumper;
    int32_t DumpTableContents() override;
};

class TGPOSTableComparator : public TTableComparator {
public:
    using TTableComparator::TTableComparator;
    int32_t DumpTableDeltas() override;
};
