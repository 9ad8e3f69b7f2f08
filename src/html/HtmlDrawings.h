// The drawings of the --html page: glyph outlines as SVG paths in font units,
// the y axis flipped by the drawing's transform, with their points and advance
// widths; and which glyphs a changed table asks to draw. Nothing is rasterized:
// the browser fills the paths.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "dumpers/TFontContext.h"
#include "framework/VellGlyphData.h"

// One point of a drawn outline, after component transforms (so not always whole units).
struct TDrawnPoint {
    double x = 0;
    double y = 0;
    bool onCurve = true;
};

// A glyph as drawn: its contours (composites resolved into their components'
// contours) and whether its off-curve points are cubic (PostScript outlines)
// rather than quadratic ('glyf').
struct TDrawnOutline {
    std::vector<TDrawnPoint> points;
    std::vector<size_t> contourEnds;  // one past the last point of each contour
    bool cubic = false;
};

// What one font offers a drawing: outlines, advance widths, glyph names, the
// Unicode value a glyph is reached by, and the vertical metrics of its em box.
// Read lazily from the font's context; a table that cannot be read draws nothing
// rather than failing the page.
class TGlyphSource {
public:
    explicit TGlyphSource(TFontContext& font);

    uint32_t GlyphCount() const { return fGlyphCount; }
    // The glyph's outline; empty for a glyph without one or one that cannot be read.
    TDrawnOutline Outline(uint32_t glyph);
    // Whether the glyph's bytes in 'glyf' are empty (no outline).
    bool HasGLYFOutline(uint32_t glyph);
    // The glyph's bytes in 'glyf', in place.
    VellView GLYFBytes(uint32_t glyph);
    std::optional<uint16_t> Advance(uint32_t glyph);
    std::string Name(uint32_t glyph);
    // The lowest code of the font's Unicode mapping that reaches the glyph.
    std::optional<uint32_t> Unicode(uint32_t glyph);
    // The font's Unicode mapping: (code, glyph) in code order.
    const std::vector<std::pair<uint32_t, uint16_t>>& UnicodeMappings();

    TFontContext& Context() { return fFont; }
    int32_t UnitsPerEm() const { return fUnitsPerEm; }
    int32_t Ascender() const { return fAscender; }
    int32_t Descender() const { return fDescender; }

private:
    void AppendGLYFGlyph(uint32_t glyph, const double matrix[6], int depth, TDrawnOutline& outline);

    TFontContext& fFont;
    VellGlyphLocations fLocations;
    bool fHasLocations = false;
    uint32_t fGlyphCount = 0;
    int32_t fUnitsPerEm = 1000;
    int32_t fAscender = 800;
    int32_t fDescender = -200;
    std::optional<std::vector<std::pair<uint32_t, uint16_t>>> fMappings;
    std::vector<uint32_t> fFirstCodes;  // per glyph, or kNoCode
};

// One glyph figure: the original and the modified outline overlaid on one em box
// (either side may be absent: then the other is drawn alone), each with its own
// colour, its on-curve and off-curve points, the points that moved highlighted,
// and the advance widths as vertical lines. The caption gives the glyph number,
// its name, its Unicode value and both advances; `note` adds a line.
struct TGlyphSide {
    TGlyphSource* source = nullptr;
    uint32_t glyph = 0;
    const TDrawnOutline* outline = nullptr;  // drawn instead of the glyph's own (a variation's outline)
    std::optional<uint16_t> advance = std::nullopt;  // shown instead of 'hmtx' (a charstring's width)
};
std::string DrawGlyphFigure(const TGlyphSide& modified, const TGlyphSide& original, std::string_view note);

// One font's setting of a kerning pair: its two glyphs, the first one's x
// placement and x advance adjustment, and the second one's x placement (zero
// where the font has no rule).
struct TKerningValue {
    int32_t firstPlacement = 0, advance = 0, secondPlacement = 0;
};
struct TKerningSide {
    TGlyphSource* source = nullptr;
    uint16_t first = 0, second = 0;
    TKerningValue value;
    bool kerned = false;  // the font has a rule for the pair
};
// A kerning figure: the pair set as the original font sets it, then as the
// modified font does, one row above the other.
std::string DrawKerningFigure(const TKerningSide& modified, const TKerningSide& original);

// A pair rule's value as the layout account writes it ("X placement 5, X advance
// -80; second X placement 3").
TKerningValue ReadKerningValue(std::string_view value);

// A simple glyph's outline moved by a tuple's deltas at its peak. Points the
// tuple does not list move as their contour's listed neighbours do
// (interpolated between them, or shifted as the nearer one beyond them); a
// contour with no listed point stays. Phantom points are not drawn.
void ApplyTupleDeltas(TDrawnOutline& outline, const std::vector<uint16_t>& points, bool allPoints,
                      const std::vector<int32_t>& x, const std::vector<int32_t>& y);

// The path data of an outline: quadratic or cubic segments, each contour closed.
std::string OutlinePathData(const TDrawnOutline& outline);

// The figures of a changed table whose changes can be drawn ('glyf', 'hmtx',
// 'cmap', and under --opentype the pairs of 'GPOS' and 'kern' and the glyphs of
// 'gvar'), at most maxDrawings of them, followed by a line counting the ones left
// out; empty for any other table. *drawn receives the number of figures.
std::string DrawTableChanges(VellTag tag, TGlyphSource& modified, TGlyphSource& original, uint32_t maxDrawings,
                             uint32_t* drawn);

// Text from a font, or any text, made safe inside HTML elements and attributes.
std::string HtmlEscape(std::string_view text);
