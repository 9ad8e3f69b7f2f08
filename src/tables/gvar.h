// 'gvar': the glyph variations header, the glyph variation offsets and the first
// glyph's tuple variation headers of one font. There is no 'gvar' comparator.
#pragma once

#include <vector>

#include "comparators/TTableComparator.h"
#include "framework/VellTupleVariations.h"

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

// A glyph whose variations differ between two fonts, as the comparator finds
// them (tuples matched by region, compared by their points and deltas, however
// the points are stored): its tuples in each font.
struct GVARGlyphChange {
    uint32_t glyph = 0;
    std::vector<VellTupleVariation> modified, original;
};
// Every such glyph, in glyph order, decoded under the comparator's budget. The
// --html page draws them.
std::vector<GVARGlyphChange> FindGVARGlyphChanges(TFontContext& modified, TFontContext& original);
