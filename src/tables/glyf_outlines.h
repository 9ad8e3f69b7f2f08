// 'glyf' under --opentype: glyphs compared by what they decode to (contours,
// points, on-curve flags, instructions, component records), so that a glyph
// whose flags or coordinates are only packed otherwise (a WOFF2 round trip, a
// compiler that repeats flags differently) is not reported. Each changed glyph
// lists only what changed. The dumper lists every glyph decoded. Without
// --opentype the classic 'glyf' account of tables/glyf.h applies, unchanged.
#pragma once

#include <string>
#include <vector>

#include "comparators/TOutlineDeltas.h"

class TGLYFOutlineTableDumper : public TTableDumper {
public:
    using TTableDumper::TTableDumper;
    int32_t DumpTableContents() override;
};

class TGLYFOutlineTableComparator : public TOutlineTableComparator {
public:
    using TOutlineTableComparator::TOutlineTableComparator;
    int32_t DumpTableDeltas() override;
};

// The glyphs this comparator reports: the pairs (modified, original) whose
// decoded glyphs differ, and the glyphs only one font has. The --html page draws them.
struct GLYFOutlineChanges {
    std::vector<std::pair<uint32_t, uint32_t>> changed;
    std::vector<uint32_t> added, deleted;
};
GLYFOutlineChanges FindGLYFOutlineChanges(TFontContext& modified, TFontContext& original);
