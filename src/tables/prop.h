// 'prop': glyph properties, one 16-bit value per glyph decoded into its fields;
// two fonts compared glyph by glyph, showing only the fields that changed.
#pragma once

#include "comparators/TTableComparator.h"

class TPROPTableDumper : public TTableDumper {
public:
    // (table, out); the glyphs are those of the font set with SetFont.
    TPROPTableDumper(VellHandle table, FILE* out) : TTableDumper(std::move(table), out, nullptr) {}
    int32_t DumpTableContents() override;
    int GetHandlerKind() const override { return 29; }
};

class TPROPTableComparator : public TTableComparator {
public:
    // (modified font, modified table, modified 'post', original font, original
    // table, original 'post', out)
    TPROPTableComparator(VellFontRef modifiedFont, VellHandle modifiedTable, const VellHandle& modifiedPost,
                         VellFontRef originalFont, VellHandle originalTable, const VellHandle& originalPost,
                         FILE* out);
    int32_t DumpTableDeltas() override;
    int GetHandlerKind() const override { return 29; }
};
