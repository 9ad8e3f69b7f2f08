// 'glyf': the outline data of every glyph of one font; and the glyphs whose
// outline data differ between two fonts, both versions of each. Glyph data come
// from the framework by glyph index; the handler decodes the glyph header, the
// contour end points and the composite component records itself.
#pragma once

#include "comparators/TTableComparator.h"
#include "framework/VellGlyphData.h"

class TGLYFTableDumper : public TTableDumper {
public:
    using TTableDumper::TTableDumper;
    int32_t DumpTableContents() override;
    int GetHandlerKind() const override { return 26; }
};

class TGLYFTableComparator : public TTableComparator {
public:
    using TTableComparator::TTableComparator;
    int32_t DumpTableDeltas() override;
    int GetHandlerKind() const override { return 26; }

    // One glyph's data block, with its points listed without their flags.
    void PrintGlyph(const VellHandle& glyphData);

private:
    void ReportGlyphsOfOneFont(const VellGlyphLocations& font, DifferenceKind kind, uint32_t first);
};

// Whether two glyphs' data differ, allowing up to four bytes of trailing padding
// that bring the longer one to a multiple of four (whatever those bytes hold):
// the comparator's test, which the --html drawings share.
bool GLYFGlyphDataDiffer(VellView modified, VellView original);
