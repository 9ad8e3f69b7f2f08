// 'prop': glyph properties, one 16-bit value per glyph decoded into its fields;
// two fonts compared glyph by glyph, showing only the fields that changed.
#pragma once

#include "comparators/TTableComparator.h"

class TPROPTableDumper : public TTableDumper {
public:
    using TTableDumper::TTableDumper;
    int32_t DumpTableContents() override;
    int GetHandlerKind() const override { return 29; }

    // The label line, then every field of the property; the bracketing glyph
    // counts from `glyph`.
    virtual void PrintProperty(int indent, const char* label, uint16_t property, uint32_t glyph);
};

class TPROPTableComparator : public TTableComparator {
public:
    // Both fonts' properties are expanded here, the original's first.
    TPROPTableComparator(TFontContext& modified, TFontContext& original, VellTag tag, FILE* out);
    int32_t DumpTableDeltas() override;
    int GetHandlerKind() const override { return 29; }

    // As the dumper's property printer.
    virtual void PrintProperty(int indent, const char* label, uint16_t property, uint32_t glyph);
    // The label line, then each field that differs as a changed-value pair.
    virtual void PrintPropertyPair(int indent, const char* label, uint16_t modified, uint16_t original,
                                   uint32_t glyph);
    // The "Name" lines of a glyph, from each font's own 'post'.
    void PrintGlyphNames(uint32_t glyph);

private:
    void PrintGlyphHeading(uint32_t glyph);

    uint32_t fModifiedGlyphs = 0, fOriginalGlyphs = 0;
    VellHandle fModifiedProperties, fOriginalProperties;
};
