// What the outline accounts ('CFF ', 'CFF2', and 'glyf' under --opentype) share:
// pairing the glyphs of two fonts, the short account of one changed outline, and
// an outline written as path text.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "comparators/TTableComparator.h"
#include "dumpers/TTableDumper.h"
#include "framework/VellOutlines.h"

// The frame of an outline comparator: under -p a glyph is named by the font it
// belongs to, which the account switches to while it lists that font's glyphs.
class TOutlineTableComparator : public TTableComparator {
public:
    using TTableComparator::TTableComparator;
    int32_t GetGlyphName(uint32_t glyph, std::string& name) override;

protected:
    std::vector<std::string> fModifiedNames, fOriginalNames;
    const std::vector<std::string>* fNames = &fModifiedNames;
};

// Which glyph of the original font each glyph of the modified font is compared
// with. By name when both fonts name every glyph, each name once; otherwise by
// glyph number.
struct GlyphPairing {
    bool byName = false;
    std::vector<std::pair<uint32_t, uint32_t>> pairs;  // (modified, original), in modified glyph order
    std::vector<uint32_t> added;                       // modified glyphs with no original partner
    std::vector<uint32_t> deleted;                     // original glyphs with no modified partner
};

GlyphPairing PairGlyphs(const std::vector<std::string>& modifiedNames, uint32_t modifiedCount,
                        const std::vector<std::string>& originalNames, uint32_t originalCount);

// A contour as path text: "M 10 20 L 30 40 C 1 2 3 4 5 6 Q 7 8 9 10", at most
// `limit` points, then "...".
inline constexpr size_t kPathTextPoints = 64;
std::string PathText(const VellOutline& outline, size_t contour, size_t limit = kPathTextPoints);

// At most this many moved points, and this many added, deleted or redrawn
// contours, are listed per glyph; the rest are counted.
inline constexpr size_t kListedPoints = 24;
inline constexpr size_t kListedContours = 8;
// At most this many glyphs are listed in a section of added, deleted or changed
// glyphs; the rest are counted.
inline constexpr size_t kListedGlyphs = 2000;

// The differences of two outlines, only what changed: the width (when `widths`),
// contours added or deleted, points moved in a contour whose segments are of the
// same kinds, and whole contours otherwise. Contours equal in both are paired
// first, wherever they stand. Returns whether anything was printed.
// Each difference passes the account's gate under the enclosing PathScopes as
// ["width"], ["contours", contour, "points", point], ["contours", contour] or
// ["contourOrder"]; `listed`, when given, is asked before the lines of one the
// gate lets through, and says whether the glyph's lines are printed at all.
bool PrintOutlineDeltas(TTableDumper& out, int indent, const VellOutline& modified, const VellOutline& original,
                        bool widths, const std::function<bool()>& listed = {});

// A glyph's step in the outline accounts' paths: its name where the glyphs are
// paired by name, its number otherwise.
PathStep GlyphStep(const GlyphPairing& pairing, const std::vector<std::string>& names, uint32_t glyph);

// A glyph number on a line of its own, with its name under -p.
void PrintGlyphLine(TTableDumper& out, int indent, const char* label, uint32_t glyph);

// Every contour of an outline as path text, numbered; a contour is cut only past
// kListedContourPoints points, which no real glyph reaches.
inline constexpr size_t kListedContourPoints = 4096;
void PrintOutline(TTableDumper& out, int indent, const VellOutline& outline);
