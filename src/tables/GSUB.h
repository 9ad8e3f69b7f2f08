// 'GSUB': glyph substitution, read as its scripts, language systems and features, then per feature tag
// its substitutions: input glyphs -> output glyphs, alternates in brackets, and contextual rules as
// backtrack | input | lookahead with the lookups they apply.
// Handled under --opentype only.
#pragma once

#include "comparators/TTableComparator.h"

class TGSUBTableDumper : public TTableDumper {
public:
    using TTableDumper::TTableDumper;
    int32_t DumpTableContents() override;
};

class TGSUBTableComparator : public TTableComparator {
public:
    using TTableComparator::TTableComparator;
    int32_t DumpTableDeltas() override;
};
