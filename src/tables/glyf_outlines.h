// 'glyf' under --opentype: glyphs compared by what they decode to (contours,
// points, on-curve flags, instructions, component records), so that a glyph
// whose flags or coordinates are only packed otherwise (a WOFF2 round trip, a
// compiler that repeats flags differently) is not reported. Each changed glyph
// lists only what changed. The dumper lists every glyph decoded. Without
// --opentype the classic 'glyf' account of tables/glyf.h applies, unchanged.
#pragma once

#include <string>
#include <vector>

#include "comparators/TTableComparator.h"

class TGLYFOutlineTableDumper : public TTableDumper {
public:
    using TTableDumper::TTableDumper;
    int32_t DumpTableContents() override;
};

class TGLYFOutlineTableComparator : public TTableComparator {
public:
    using TTableComparator::TTableComparator;
    int32_t DumpTableDeltas() override;
    // Names under -p come from the 'post' of the font the glyph belongs to.
    int32_t GetGlyphName(uint32_t glyph, std::string& name) override;

private:
    std::vector<std::string> fModifiedNames, fOriginalNames;
    const std::vector<std::string>* fNames = &fModifiedNames;
};
