#include "html/HtmlDrawings.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstring>
#include <set>

#include "VellCmpErrors.h"
#include "dumpers/TTableDumper.h"
#include "framework/VellEncodings.h"
#include "framework/VellGlyphs.h"
#include "framework/VellLayout.h"
#include "tables/LayoutAccount.h"
#include "framework/VellOutlines.h"
#include "tables/CFF.h"
#include "tables/VariationReport.h"
#include "tables/glyf.h"
#include "tables/glyf_outlines.h"
#include "tables/gvar.h"

namespace {

constexpr uint32_t kNoCode = UINT32_MAX;
constexpr size_t kUnitsPerEmOffset = 18;  // 'head'
constexpr size_t kAscenderOffset = 4;     // 'hhea'
constexpr size_t kDescenderOffset = 6;    // 'hhea'

// The component flag bit that says its arguments are an offset, not point numbers.
constexpr uint16_t kArgsAreXYValues = 0x0002;

// Composites nest at most this deep (a cycle of components ends here), and a
// drawing holds at most this many points: a hostile composite that reuses one
// large glyph many times at every level stops growing there.
constexpr int kMostComponentDepth = 8;
constexpr size_t kMostDrawnPoints = 200000;

// The pixel size of a figure's em box.
constexpr int kFigurePixels = 220;

VellTag Tag(const char (&text)[5]) { return VellMakeTag(text); }

double F2Dot14(int32_t value) { return value / 16384.0; }

// A number as the page writes it: whole units without decimals, others to a
// hundredth, which is finer than any screen shows at a figure's size.
std::string Number(double value) {
    if (!std::isfinite(value)) return "0";
    double rounded = std::round(value * 100) / 100;
    if (rounded == 0) return "0";  // never "-0"
    std::string text = VellFormat("%.2f", rounded);
    text.erase(text.find_last_not_of('0') + 1);
    if (text.back() == '.') text.pop_back();
    return text;
}

std::string UnicodeText(uint32_t code) { return VellFormat("U+%04X", code); }

template <typename Read>
auto OrNothing(Read read) -> std::optional<decltype(read())> {
    try {
        return read();
    } catch (const TVellCmpException&) {
        return std::nullopt;
    }
}

// Unicode mappings are looked for in this order of encodings (the framework's
// platform and script numbers, each one above its sfnt ID): Microsoft UCS-4,
// Microsoft Unicode BMP, then any Unicode-platform one.
uint32_t FindUnicodeEncoding(VellFontRef font) {
    ErrorRecord record;
    uint32_t count = VellCountFontEncodings(font, &record);
    if (record.code != 0) return 0;
    uint32_t best = 0;
    int bestRank = 0;
    for (uint32_t index = 1; index <= count; ++index) {
        int32_t script = 0, language = 0;
        int32_t platform = VellGetFontEncoding(font, index, &script, &language, &record);
        if (record.code != 0) return 0;
        int rank = platform == 4 && script == 11 ? 3 : platform == 4 && script == 2 ? 2 : platform == 1 ? 1 : 0;
        if (rank > bestRank) {
            best = index;
            bestRank = rank;
        }
    }
    return best;
}

void Transform(const double matrix[6], double x, double y, double* outX, double* outY) {
    *outX = matrix[0] * x + matrix[2] * y + matrix[4];
    *outY = matrix[1] * x + matrix[3] * y + matrix[5];
}

struct Bounds {
    double xMin = 0, yMin = 0, xMax = 0, yMax = 0;
    void Add(double x, double y) {
        xMin = std::min(xMin, x);
        yMin = std::min(yMin, y);
        xMax = std::max(xMax, x);
        yMax = std::max(yMax, y);
    }
};

// A side's drawing: its outline and advance, read once for the figure.
struct DrawnSide {
    bool present = false;
    TDrawnOutline outline;
    std::optional<uint16_t> advance;
};

DrawnSide ReadSide(const TGlyphSide& side) {
    DrawnSide drawn;
    if (side.source == nullptr) return drawn;
    drawn.present = true;
    drawn.outline = side.outline ? *side.outline : side.source->Outline(side.glyph);
    drawn.advance = side.advance ? side.advance : side.source->Advance(side.glyph);
    return drawn;
}

bool SamePoint(const TDrawnPoint& a, const TDrawnPoint& b) {
    return a.x == b.x && a.y == b.y && a.onCurve == b.onCurve;
}

// The points of `side`, the ones that moved (not where the other side has the
// point of the same number) drawn larger in the highlight colour.
void AppendPoints(std::string& svg, const char* sideClass, const DrawnSide& side, const DrawnSide* other,
                  double radius) {
    svg += VellFormat("<g class=\"points %s\">", sideClass);
    const std::vector<TDrawnPoint>& points = side.outline.points;
    for (size_t p = 0; p < points.size(); ++p) {
        const TDrawnPoint& point = points[p];
        bool moved = other != nullptr && other->present &&
                     (p >= other->outline.points.size() || !SamePoint(point, other->outline.points[p]));
        std::string x = Number(point.x), y = Number(point.y);
        if (moved)
            svg += "<circle class=\"moved\" cx=\"" + x + "\" cy=\"" + y + "\" r=\"" + Number(radius * 2.2) + "\"/>";
        svg += std::string("<circle class=\"") + (point.onCurve ? "on" : "off") + "\" cx=\"" + x + "\" cy=\"" + y +
               "\" r=\"" + Number(radius) + "\"/>";
    }
    svg += "</g>";
}

// The caption line of one side; sideClass ("mod" or "orig") is also its label.
std::string GlyphCaption(const TGlyphSide& side, const char* sideClass) {
    std::string caption = VellFormat("<div class=\"%s\"><b>%s</b> glyph %u", sideClass, sideClass, side.glyph);
    std::string name = side.source->Name(side.glyph);
    if (!name.empty()) caption += " <span class=\"name\">" + HtmlEscape(name) + "</span>";
    if (std::optional<uint32_t> code = side.source->Unicode(side.glyph)) caption += " " + UnicodeText(*code);
    if (std::optional<uint16_t> advance = side.advance ? side.advance : side.source->Advance(side.glyph))
        caption += VellFormat(", advance %u", *advance);
    return caption + "</div>";
}

}  // namespace

// ---- One font's glyphs ----

TGlyphSource::TGlyphSource(TFontContext& font) : fFont(font) {
    ErrorRecord record;
    fLocations = VellFindGlyphLocations(font.Font(), &record);
    fHasLocations = record.code == 0 && !fLocations.glyf.empty();
    fGlyphCount = OrNothing([&] { return font.GlyphCount(); }).value_or(0);
    VellView head = OrNothing([&] { return font.Table(Tag("head")); }).value_or(VellView());
    VellView hhea = OrNothing([&] { return font.Table(Tag("hhea")); }).value_or(VellView());
    // A damaged em size falls back to the common 1000 so that the box stays drawable.
    uint16_t unitsPerEm = head.u16(kUnitsPerEmOffset);
    if (unitsPerEm >= 16) fUnitsPerEm = unitsPerEm;
    // A damaged 'hhea' whose descender is not below its ascender gets an em box of its own.
    if (hhea.size() > kDescenderOffset && hhea.s16(kAscenderOffset) > hhea.s16(kDescenderOffset)) {
        fAscender = hhea.s16(kAscenderOffset);
        fDescender = hhea.s16(kDescenderOffset);
    } else {
        fAscender = fUnitsPerEm * 4 / 5;
        fDescender = fAscender - fUnitsPerEm;
    }
}

VellView TGlyphSource::GLYFBytes(uint32_t glyph) {
    if (!fHasLocations) return {};
    ErrorRecord record;
    VellView bytes = VellGetTTGlyphBytes(fLocations, glyph, &record);
    return record.code == 0 ? bytes : VellView();
}

bool TGlyphSource::HasGLYFOutline(uint32_t glyph) { return !GLYFBytes(glyph).empty(); }

void TGlyphSource::AppendGLYFGlyph(uint32_t glyph, const double matrix[6], int depth, TDrawnOutline& outline) {
    VellTrueTypeGlyph decoded;
    VellDecodeTrueTypeGlyph(GLYFBytes(glyph), &decoded);
    if (decoded.contourCount > 0) {
        const VellOutline& points = decoded.outline;
        if (outline.points.size() + points.points.size() > kMostDrawnPoints) return;
        size_t base = outline.points.size();
        for (const VellOutlinePoint& point : points.points) {
            TDrawnPoint drawn;
            Transform(matrix, point.x, point.y, &drawn.x, &drawn.y);
            drawn.onCurve = point.kind != VellPointKind::QuadControl;
            outline.points.push_back(drawn);
        }
        for (uint32_t end : points.contourEnds) outline.contourEnds.push_back(base + end);
        return;
    }
    if (depth >= kMostComponentDepth) return;
    for (const VellGlyphComponent& component : decoded.components) {
        // The component is placed first by its own transform alone, then moved by
        // its offset, or so that its point argument2 lies on the composite's point
        // argument1 (anchor points).
        TDrawnOutline placed;
        const double local[6] = {F2Dot14(component.matrix[0]), F2Dot14(component.matrix[1]),
                                 F2Dot14(component.matrix[2]), F2Dot14(component.matrix[3]), 0, 0};
        AppendGLYFGlyph(component.glyph, local, depth + 1, placed);
        double dx = 0, dy = 0;
        size_t parentPoint = static_cast<uint32_t>(component.argument1), childPoint = static_cast<uint32_t>(component.argument2);
        if (component.flags & kArgsAreXYValues) {
            dx = component.argument1;
            dy = component.argument2;
        } else if (parentPoint < outline.points.size() && childPoint < placed.points.size()) {
            dx = outline.points[parentPoint].x - placed.points[childPoint].x;
            dy = outline.points[parentPoint].y - placed.points[childPoint].y;
        }
        if (outline.points.size() + placed.points.size() > kMostDrawnPoints) return;
        size_t base = outline.points.size();
        for (const TDrawnPoint& point : placed.points) {
            TDrawnPoint moved;
            Transform(matrix, point.x + dx, point.y + dy, &moved.x, &moved.y);
            moved.onCurve = point.onCurve;
            outline.points.push_back(moved);
        }
        for (size_t end : placed.contourEnds) outline.contourEnds.push_back(base + end);
    }
}

TDrawnOutline TGlyphSource::Outline(uint32_t glyph) {
    TDrawnOutline outline;
    if (glyph >= fGlyphCount) return outline;
    static constexpr double kIdentity[6] = {1, 0, 0, 1, 0, 0};
    AppendGLYFGlyph(glyph, kIdentity, 0, outline);
    return outline;
}

std::optional<uint16_t> TGlyphSource::Advance(uint32_t glyph) {
    if (glyph >= fGlyphCount) return std::nullopt;
    ErrorRecord record;
    uint16_t advance = 0;
    int16_t sideBearing = 0;
    VellGetHMTXMetrics(fFont.Font(), glyph, &advance, &sideBearing, &record);
    if (record.code != 0) return std::nullopt;
    return advance;
}

std::string TGlyphSource::Name(uint32_t glyph) {
    return OrNothing([&] { return fFont.GlyphName(glyph); }).value_or(std::string());
}

const std::vector<std::pair<uint32_t, uint16_t>>& TGlyphSource::UnicodeMappings() {
    if (fMappings) return *fMappings;
    fMappings.emplace();
    fFirstCodes.assign(fGlyphCount, kNoCode);
    uint32_t encoding = FindUnicodeEncoding(fFont.Font());
    std::optional<VellHandle> cmap = OrNothing([&] { return fFont.CopyTable(Tag("cmap")); });
    if (encoding == 0 || !cmap || !*cmap) return *fMappings;
    ErrorRecord record;
    uint16_t format = 0;
    VellCGArray mappings = VellMakeCGArrayFromCMAPTable(*cmap, encoding, &format, &record);
    if (record.code != 0) return *fMappings;
    fMappings->reserve(mappings.size());
    for (const VellCGPair& mapping : mappings) {
        fMappings->emplace_back(mapping.code, mapping.glyph);
        // Codes come in ascending order, so the first one kept is the lowest.
        if (mapping.glyph < fFirstCodes.size() && fFirstCodes[mapping.glyph] == kNoCode)
            fFirstCodes[mapping.glyph] = mapping.code;
    }
    return *fMappings;
}

std::optional<uint32_t> TGlyphSource::Unicode(uint32_t glyph) {
    UnicodeMappings();
    if (glyph >= fFirstCodes.size() || fFirstCodes[glyph] == kNoCode) return std::nullopt;
    return fFirstCodes[glyph];
}

// ---- Figures ----

std::string OutlinePathData(const TDrawnOutline& outline) {
    std::string d;
    auto at = [](const TDrawnPoint& point) { return Number(point.x) + " " + Number(point.y); };
    size_t start = 0;
    for (size_t end : outline.contourEnds) {
        if (end <= start || end > outline.points.size()) continue;
        const TDrawnPoint* contour = outline.points.data() + start;
        size_t count = end - start;
        start = end;
        // The contour is walked from a point on the curve: its first, else its last,
        // else (quadratic, every point off the curve) the one implied between them.
        TDrawnPoint origin = contour[0];
        size_t restStart = 1, restCount = count - 1;
        if (!contour[0].onCurve && contour[count - 1].onCurve) {
            origin = contour[count - 1];
            restStart = 0;
        } else if (!contour[0].onCurve) {
            origin = {(contour[0].x + contour[count - 1].x) / 2, (contour[0].y + contour[count - 1].y) / 2, true};
            restStart = 0;
            restCount = count;
        }
        d += "M" + at(origin);
        std::vector<TDrawnPoint> controls;
        auto segmentTo = [&](const TDrawnPoint& point) {
            if (controls.empty())
                d += "L" + at(point);
            else if (controls.size() == 1)
                d += "Q" + at(controls[0]) + " " + at(point);
            else
                d += "C" + at(controls[0]) + " " + at(controls[1]) + " " + at(point);
            controls.clear();
        };
        for (size_t k = 0; k < restCount; ++k) {
            const TDrawnPoint& point = contour[(restStart + k) % count];
            if (point.onCurve) {
                segmentTo(point);
            } else if (!outline.cubic && !controls.empty()) {
                // Two quadratic controls in a row imply the on-curve point between them.
                segmentTo({(controls[0].x + point.x) / 2, (controls[0].y + point.y) / 2, true});
                controls.push_back(point);
            } else if (controls.size() < 2) {
                controls.push_back(point);
            }
        }
        segmentTo(origin);
        d += "Z";
    }
    return d;
}

void ApplyTupleDeltas(TDrawnOutline& outline, const std::vector<uint16_t>& points, bool allPoints,
                      const std::vector<int32_t>& x, const std::vector<int32_t>& y) {
    size_t count = outline.points.size();
    std::vector<bool> listed(count, false);
    std::vector<double> dx(count, 0), dy(count, 0);
    size_t deltas = std::min(x.size(), y.size());
    for (size_t i = 0; i < deltas; ++i) {
        size_t point = allPoints ? i : (i < points.size() ? points[i] : count);
        if (point >= count) continue;
        listed[point] = true;
        dx[point] += x[i];
        dy[point] += y[i];
    }
    // One axis of an unlisted point, from the listed points before and after it.
    auto infer = [](double at, double before, double after, double deltaBefore, double deltaAfter) {
        if (before > after) {
            std::swap(before, after);
            std::swap(deltaBefore, deltaAfter);
        }
        if (before == after) return deltaBefore == deltaAfter ? deltaBefore : 0.0;
        if (at <= before) return deltaBefore;
        if (at >= after) return deltaAfter;
        return deltaBefore + (at - before) * (deltaAfter - deltaBefore) / (after - before);
    };
    size_t start = 0;
    for (size_t end : outline.contourEnds) {
        if (end <= start || end > count) continue;
        std::vector<size_t> anchors;
        for (size_t p = start; p < end; ++p)
            if (listed[p]) anchors.push_back(p);
        for (size_t p = start; p < end && !anchors.empty(); ++p) {
            if (listed[p]) continue;
            // The listed points before and after p in the contour's cycle.
            auto next = std::lower_bound(anchors.begin(), anchors.end(), p);
            size_t after = next == anchors.end() ? anchors.front() : *next;
            size_t before = next == anchors.begin() ? anchors.back() : *(next - 1);
            const TDrawnPoint &a = outline.points[before], &b = outline.points[after], &point = outline.points[p];
            dx[p] = infer(point.x, a.x, b.x, dx[before], dx[after]);
            dy[p] = infer(point.y, a.y, b.y, dy[before], dy[after]);
        }
        start = end;
    }
    for (size_t p = 0; p < count; ++p) {
        outline.points[p].x += dx[p];
        outline.points[p].y += dy[p];
    }
}

std::string DrawGlyphFigure(const TGlyphSide& modified, const TGlyphSide& original, std::string_view note) {
    DrawnSide mod = ReadSide(modified), orig = ReadSide(original);
    TGlyphSource* metrics = modified.source ? modified.source : original.source;
    if (metrics == nullptr) return {};
    // The em box: the advance and the ascender and descender, widened to every point drawn.
    Bounds box;
    box.yMin = std::min(metrics->Descender(), 0);
    box.yMax = std::max(metrics->Ascender(), metrics->UnitsPerEm() / 2);
    box.xMax = metrics->UnitsPerEm() / 2.0;
    for (const DrawnSide* side : {&mod, &orig}) {
        if (side->advance) box.Add(*side->advance, 0);
        for (const TDrawnPoint& point : side->outline.points) box.Add(point.x, point.y);
    }
    double margin = metrics->UnitsPerEm() / 20.0;
    double width = box.xMax - box.xMin + 2 * margin, height = box.yMax - box.yMin + 2 * margin;
    double scale = std::max(width, height);
    double radius = metrics->UnitsPerEm() / 160.0;

    // y up in font units: the group flips the axis, and the view box is given in
    // the flipped coordinates.
    std::string svg = "<svg xmlns=\"http://www.w3.org/2000/svg\" viewBox=\"" + Number(box.xMin - margin) + " " +
                      Number(-box.yMax - margin) + " " + Number(width) + " " + Number(height) + "\" width=\"" +
                      Number(kFigurePixels * width / scale) + "\" height=\"" + Number(kFigurePixels * height / scale) +
                      "\" style=\"--r:" + Number(radius) + "\"><g transform=\"scale(1 -1)\">";
    svg += "<rect class=\"em\" x=\"" + Number(box.xMin) + "\" y=\"" + Number(metrics->Descender()) + "\" width=\"" +
           Number(box.xMax - box.xMin) + "\" height=\"" + Number(metrics->Ascender() - metrics->Descender()) + "\"/>";
    svg += "<line class=\"baseline\" x1=\"" + Number(box.xMin - margin) + "\" y1=\"0\" x2=\"" +
           Number(box.xMax + margin) + "\" y2=\"0\"/>";
    bool advancesDiffer = mod.present && orig.present && mod.advance != orig.advance;
    for (auto [side, sideClass] : {std::pair{&orig, "orig"}, std::pair{&mod, "mod"}}) {
        if (!side->present) continue;
        svg += VellFormat("<path class=\"outline %s\" d=\"", sideClass) + OutlinePathData(side->outline) + "\"/>";
        if (side->advance)
            svg += VellFormat("<line class=\"advance %s%s\" x1=\"%u\" y1=\"%s\" x2=\"%u\" y2=\"%s\"/>", sideClass,
                              advancesDiffer ? " changed" : "", *side->advance, Number(box.yMin - margin).c_str(),
                              *side->advance, Number(box.yMax + margin).c_str());
    }
    if (orig.present) AppendPoints(svg, "orig", orig, nullptr, radius);
    if (mod.present) AppendPoints(svg, "mod", mod, &orig, radius);
    svg += "</g></svg>";

    const TGlyphSide& named = modified.source ? modified : original;
    std::string figure = VellFormat("<figure class=\"glyph\" data-glyph=\"%u\">", named.glyph) + svg + "<figcaption>";
    if (modified.source) figure += GlyphCaption(modified, "mod");
    if (original.source) figure += GlyphCaption(original, "orig");
    if (!note.empty()) figure += "<div class=\"note\">" + HtmlEscape(note) + "</div>";
    return figure + "</figcaption></figure>\n";
}

TKerningValue ReadKerningValue(std::string_view value) {
    auto number = [](std::string_view text, std::string_view label) {
        int32_t found = 0;
        size_t at = text.find(label);
        if (at != std::string_view::npos) {
            std::string_view digits = text.substr(at + label.size());
            std::from_chars(digits.data(), digits.data() + digits.size(), found);
        }
        return found;
    };
    size_t second = value.find("; second ");
    std::string_view first = value.substr(0, second);
    TKerningValue read{number(first, "X placement "), number(first, "X advance "), 0};
    if (second != std::string_view::npos) read.secondPlacement = number(value.substr(second), "X placement ");
    return read;
}

std::string DrawKerningFigure(const TKerningSide& modified, const TKerningSide& original) {
    TGlyphSource* metrics = modified.source ? modified.source : original.source;
    if (metrics == nullptr) return {};
    struct Row {
        const TKerningSide* side;
        const char* sideClass;
        TDrawnOutline first, second;
        double firstAt = 0, secondAt = 0, end = 0;
    };
    Row rows[] = {{&original, "orig", {}, {}}, {&modified, "mod", {}, {}}};
    double right = 0;
    for (Row& row : rows) {
        TGlyphSource& source = *row.side->source;
        row.first = source.Outline(row.side->first);
        row.second = source.Outline(row.side->second);
        const TKerningValue& value = row.side->value;
        row.firstAt = value.firstPlacement;
        row.secondAt = source.Advance(row.side->first).value_or(0) + value.advance + value.secondPlacement;
        row.end = row.secondAt + source.Advance(row.side->second).value_or(0);
        right = std::max(right, row.end);
    }
    double margin = metrics->UnitsPerEm() / 10.0;
    double rowHeight = std::max(metrics->Ascender() - metrics->Descender(), metrics->UnitsPerEm() / 2);
    double width = right + 2 * margin, height = 2 * rowHeight + 3 * margin;
    double scale = std::max(width, height);
    std::string svg = "<svg xmlns=\"http://www.w3.org/2000/svg\" viewBox=\"" + Number(-margin) + " 0 " + Number(width) +
                      " " + Number(height) + "\" width=\"" + Number(1.5 * kFigurePixels * width / scale) + "\" height=\"" +
                      Number(1.5 * kFigurePixels * height / scale) + "\" style=\"--r:" +
                      Number(metrics->UnitsPerEm() / 160.0) + "\">";
    for (size_t i = 0; i < std::size(rows); ++i) {
        const Row& row = rows[i];
        double baseline = margin + i * (rowHeight + margin) + metrics->Ascender();
        svg += "<g transform=\"translate(0 " + Number(baseline) + ") scale(1 -1)\">";
        svg += "<line class=\"baseline\" x1=\"0\" y1=\"0\" x2=\"" + Number(right) + "\" y2=\"0\"/>";
        svg += VellFormat("<path class=\"outline %s\" transform=\"translate(", row.sideClass) + Number(row.firstAt) +
               " 0)\" d=\"" + OutlinePathData(row.first) + "\"/>";
        svg += VellFormat("<path class=\"outline %s\" transform=\"translate(", row.sideClass) + Number(row.secondAt) +
               " 0)\" d=\"" + OutlinePathData(row.second) + "\"/>";
        svg += "</g>";
    }
    svg += "</svg>";

    auto setting = [](const TKerningSide& side, const char* sideClass) {
        std::string text = VellFormat("<div class=\"%s\"><b>%s</b> ", sideClass, sideClass);
        for (uint16_t glyph : {side.first, side.second}) {
            std::string name = side.source->Name(glyph);
            text += VellFormat("glyph %u", glyph) +
                    (name.empty() ? "" : " <span class=\"name\">" + HtmlEscape(name) + "</span>") + " ";
        }
        if (!side.kerned) return text + "not kerned</div>";
        text += VellFormat("kerned %d", side.value.advance);
        if (side.value.firstPlacement != 0) text += VellFormat(", first placed %d", side.value.firstPlacement);
        if (side.value.secondPlacement != 0) text += VellFormat(", second placed %d", side.value.secondPlacement);
        return text + "</div>";
    };
    return "<figure class=\"kern\">" + svg + "<figcaption>" + setting(modified, "mod") + setting(original, "orig") +
           "<div class=\"note\">Original setting above, modified below</div></figcaption></figure>\n";
}

// ---- What a changed table draws ----

namespace {

// Collects figures up to the limit and counts the rest.
class FigureList {
public:
    explicit FigureList(uint32_t limit) : fLimit(limit) {}
    // Whether the next figure is drawn; counts it either way.
    bool Take() { return fCount++ < fLimit; }
    void Add(std::string figure) { fHtml += figure; }
    std::string Finish(const char* what, uint32_t* drawn) {
        *drawn = std::min(fCount, fLimit);
        if (fCount > fLimit)
            fHtml += VellFormat("<p class=\"more\">%u more %s not drawn (--html-max-drawings=%u).</p>\n",
                                fCount - fLimit, what, fLimit);
        return fHtml.empty() ? fHtml : "<div class=\"drawings\">\n" + fHtml + "</div>\n";
    }

private:
    uint32_t fLimit;
    uint32_t fCount = 0;
    std::string fHtml;
};

// Under --opentype, the glyphs the outline account reports: pairs whose decoded
// glyphs differ (paired by name as it pairs them), then glyphs only one font has.
std::string DrawGLYFOutlineChanges(TGlyphSource& modified, TGlyphSource& original, uint32_t limit, uint32_t* drawn) {
    FigureList figures(limit);
    std::optional<GLYFOutlineChanges> changes =
        OrNothing([&] { return FindGLYFOutlineChanges(modified.Context(), original.Context()); });
    if (!changes) return figures.Finish("changed glyphs are", drawn);
    for (auto [m, o] : changes->changed)
        if (figures.Take()) figures.Add(DrawGlyphFigure({&modified, m}, {&original, o}, ""));
    for (uint32_t glyph : changes->added)
        if (figures.Take()) figures.Add(DrawGlyphFigure({&modified, glyph}, {}, "Added glyph"));
    for (uint32_t glyph : changes->deleted)
        if (figures.Take()) figures.Add(DrawGlyphFigure({}, {&original, glyph}, "Deleted glyph"));
    return figures.Finish("changed glyphs are", drawn);
}

// Every glyph whose outline bytes differ, as the classic 'glyf' account finds
// them, and also a glyph whose outline only one font has, and the glyphs past
// the other font's glyph count, each drawn alone.
std::string DrawGLYFChanges(TGlyphSource& modified, TGlyphSource& original, uint32_t limit, uint32_t* drawn) {
    if (gOpenType) return DrawGLYFOutlineChanges(modified, original, limit, drawn);
    FigureList figures(limit);
    uint32_t shared = std::min(modified.GlyphCount(), original.GlyphCount());
    for (uint32_t glyph = 0; glyph < shared; ++glyph) {
        VellView modifiedBytes = modified.GLYFBytes(glyph), originalBytes = original.GLYFBytes(glyph);
        if (modifiedBytes.empty() && originalBytes.empty()) continue;
        if (!modifiedBytes.empty() && !originalBytes.empty() && !GLYFGlyphDataDiffer(modifiedBytes, originalBytes))
            continue;
        if (!figures.Take()) continue;
        const char* note = modifiedBytes.empty()   ? "No outline in the modified font"
                           : originalBytes.empty() ? "No outline in the original font"
                                                   : "";
        figures.Add(DrawGlyphFigure({&modified, glyph}, {&original, glyph}, note));
    }
    for (uint32_t glyph = shared; glyph < modified.GlyphCount(); ++glyph)
        if (figures.Take()) figures.Add(DrawGlyphFigure({&modified, glyph}, {}, "Added glyph"));
    for (uint32_t glyph = shared; glyph < original.GlyphCount(); ++glyph)
        if (figures.Take()) figures.Add(DrawGlyphFigure({}, {&original, glyph}, "Deleted glyph"));
    return figures.Finish("changed glyphs are", drawn);
}

// Every glyph of both fonts whose advance width differs.
std::string DrawAdvanceChanges(TGlyphSource& modified, TGlyphSource& original, uint32_t limit, uint32_t* drawn) {
    FigureList figures(limit);
    uint32_t shared = std::min(modified.GlyphCount(), original.GlyphCount());
    for (uint32_t glyph = 0; glyph < shared; ++glyph) {
        if (modified.Advance(glyph) == original.Advance(glyph) || !figures.Take()) continue;
        figures.Add(DrawGlyphFigure({&modified, glyph}, {&original, glyph}, "Advance width changed"));
    }
    return figures.Finish("changed advance widths are", drawn);
}

// The Unicode mappings of both fonts walked together: a code only one font maps
// shows that font's glyph, a code mapped to another glyph shows both.
std::string DrawMappingChanges(TGlyphSource& modified, TGlyphSource& original, uint32_t limit, uint32_t* drawn) {
    FigureList figures(limit);
    const auto& modifiedMappings = modified.UnicodeMappings();
    const auto& originalMappings = original.UnicodeMappings();
    auto m = modifiedMappings.begin(), o = originalMappings.begin();
    while (m != modifiedMappings.end() || o != originalMappings.end()) {
        if (o == originalMappings.end() || (m != modifiedMappings.end() && m->first < o->first)) {
            if (figures.Take())
                figures.Add(DrawGlyphFigure({&modified, m->second}, {}, "Mapping added: " + UnicodeText(m->first)));
            ++m;
        } else if (m == modifiedMappings.end() || o->first < m->first) {
            if (figures.Take())
                figures.Add(DrawGlyphFigure({}, {&original, o->second}, "Mapping deleted: " + UnicodeText(o->first)));
            ++o;
        } else {
            if (m->second != o->second && figures.Take())
                figures.Add(DrawGlyphFigure({&modified, m->second}, {&original, o->second},
                                            "Mapping changed: " + UnicodeText(m->first)));
            ++m;
            ++o;
        }
    }
    return figures.Finish("changed mappings are", drawn);
}

VellLayoutAccount ReadPairs(TGlyphSource& source, VellTag tag) {
    VellView table = OrNothing([&] { return source.Context().Table(tag); }).value_or(VellView());
    return tag == Tag("kern") ? VellReadKern(table) : VellReadGPOS(table, source.GlyphCount());
}

// The glyph of `to` that stands for `glyph` of `from`: by name when both fonts
// name every glyph (as the layout accounts match them), else by number.
std::optional<uint16_t> Counterpart(uint16_t glyph, const VellGlyphIdentity& from, const VellGlyphIdentity& to,
                                    uint32_t toCount) {
    if (!from.names.empty() && !to.names.empty()) {
        if (glyph >= from.names.size()) return std::nullopt;
        auto found = std::find(to.names.begin(), to.names.end(), from.names[glyph]);
        if (found == to.names.end()) return std::nullopt;
        return static_cast<uint16_t>(found - to.names.begin());
    }
    if (glyph >= toCount) return std::nullopt;
    return glyph;
}

// The pair rules the layout account finds added, deleted or changed, each pair
// once however many feature lists and language systems hold it. A pair only one
// font kerns is set unkerned in the other, with that font's own glyphs.
std::string DrawKerningChanges(VellTag tag, TGlyphSource& modified, TGlyphSource& original, uint32_t limit,
                               uint32_t* drawn) {
    FigureList figures(limit);
    VellLayoutAccount modifiedPairs = ReadPairs(modified, tag), originalPairs = ReadPairs(original, tag);
    VellGlyphIdentity modifiedGlyphs = VellLayoutGlyphIdentity(modified.Context().Font());
    VellGlyphIdentity originalGlyphs = VellLayoutGlyphIdentity(original.Context().Font());
    auto isPair = [](const VellLayoutRule* rule) {
        return std::strcmp(rule->label, "Pair") == 0 && rule->glyphs.size() >= 2;
    };
    auto sideOf = [](TGlyphSource& source, const VellLayoutRule* rule) {
        return TKerningSide{&source, rule->glyphs[0], rule->glyphs[1], ReadKerningValue(rule->value), true};
    };
    // The unkerned pair in `to`, or in the kerning font's own glyphs when `to` lacks one of them.
    auto unkerned = [](const TKerningSide& kerned, TGlyphSource& to, const VellGlyphIdentity& fromGlyphs,
                       const VellGlyphIdentity& toGlyphs) {
        std::optional<uint16_t> first = Counterpart(kerned.first, fromGlyphs, toGlyphs, to.GlyphCount());
        std::optional<uint16_t> second = Counterpart(kerned.second, fromGlyphs, toGlyphs, to.GlyphCount());
        if (!first || !second) return TKerningSide{kerned.source, kerned.first, kerned.second, {}, false};
        return TKerningSide{&to, *first, *second, {}, false};
    };
    std::set<std::pair<std::string, std::string>> seen;
    auto firstTime = [&](const VellLayoutRule* rule, const VellGlyphIdentity& glyphs) {
        auto identity = [&](uint16_t glyph) {
            return glyph < glyphs.names.size() ? glyphs.names[glyph] : std::to_string(glyph);
        };
        return seen.insert({identity(rule->glyphs[0]), identity(rule->glyphs[1])}).second;
    };
    for (const auto& [mine, theirs] : PairLayoutLists(modifiedPairs, originalPairs)) {
        VellLayoutDelta delta = VellCompareLayoutRules(mine, theirs, modifiedGlyphs, originalGlyphs);
        for (const VellLayoutRule* rule : delta.added) {
            if (!isPair(rule) || !firstTime(rule, modifiedGlyphs) || !figures.Take()) continue;
            TKerningSide side = sideOf(modified, rule);
            figures.Add(DrawKerningFigure(side, unkerned(side, original, modifiedGlyphs, originalGlyphs)));
        }
        for (const VellLayoutRule* rule : delta.deleted) {
            if (!isPair(rule) || !firstTime(rule, originalGlyphs) || !figures.Take()) continue;
            TKerningSide side = sideOf(original, rule);
            figures.Add(DrawKerningFigure(unkerned(side, modified, originalGlyphs, modifiedGlyphs), side));
        }
        for (const auto& [mineRule, theirRule] : delta.changed) {
            if (!isPair(mineRule) || !isPair(theirRule) || !firstTime(mineRule, modifiedGlyphs) || !figures.Take())
                continue;
            figures.Add(DrawKerningFigure(sideOf(modified, mineRule), sideOf(original, theirRule)));
        }
    }
    return figures.Finish("changed kerning pairs are", drawn);
}

bool SameRegion(const VellTupleVariation& a, const VellTupleVariation& b) {
    return a.peak == b.peak && a.intermediate == b.intermediate && (!a.intermediate || (a.start == b.start && a.end == b.end));
}

bool SameDeltas(const VellTupleVariation& a, const VellTupleVariation& b) {
    return a.points == b.points && a.x == b.x && a.y == b.y;
}

// Each glyph whose variations the 'gvar' account reports, drawn at the peak of
// the first region whose deltas differ: each font's outline moved by its tuple
// of that region (not moved where the font has none). Composite glyphs, whose
// deltas move components, are drawn unmoved.
std::string DrawGVARChanges(TGlyphSource& modified, TGlyphSource& original, uint32_t limit, uint32_t* drawn) {
    FigureList figures(limit);
    std::optional<std::vector<GVARGlyphChange>> changes =
        OrNothing([&] { return FindGVARGlyphChanges(modified.Context(), original.Context()); });
    if (!changes) return figures.Finish("changed glyph variations are", drawn);
    std::vector<VellTag> axes = FontAxisTags(&modified.Context());
    for (const GVARGlyphChange& change : *changes) {
        if (!figures.Take()) continue;
        auto find = [](const std::vector<VellTupleVariation>& tuples, const VellTupleVariation& region) {
            auto found = std::find_if(tuples.begin(), tuples.end(),
                                      [&](const VellTupleVariation& tuple) { return SameRegion(tuple, region); });
            return found == tuples.end() ? nullptr : &*found;
        };
        const VellTupleVariation* shown = nullptr;
        for (const VellTupleVariation& tuple : change.modified) {
            const VellTupleVariation* other = find(change.original, tuple);
            if (!other || !SameDeltas(tuple, *other)) {
                shown = &tuple;
                break;
            }
        }
        for (const VellTupleVariation& tuple : change.original)
            if (!shown && !find(change.modified, tuple)) shown = &tuple;
        if (!shown && !change.modified.empty()) shown = &change.modified.front();
        auto moved = [&](TGlyphSource& source, const std::vector<VellTupleVariation>& tuples) {
            TDrawnOutline outline = source.Outline(change.glyph);
            const VellTupleVariation* tuple = shown ? find(tuples, *shown) : nullptr;
            if (tuple && source.GLYFBytes(change.glyph).s16(0) > 0)
                ApplyTupleDeltas(outline, tuple->points.points, tuple->points.all, tuple->x, tuple->y);
            return outline;
        };
        TDrawnOutline modifiedOutline = moved(modified, change.modified);
        TDrawnOutline originalOutline = moved(original, change.original);
        std::string region;
        for (size_t axis = 0; shown && axis < shown->peak.size(); ++axis) {
            if (shown->peak[axis] == 0) continue;
            region += (region.empty() ? "" : ", ") + AxisText(axes, axis) + " " + F2Dot14Text(shown->peak[axis]);
        }
        figures.Add(DrawGlyphFigure({&modified, change.glyph, &modifiedOutline},
                                    {&original, change.glyph, &originalOutline},
                                    "At the peak of the region " + (region.empty() ? "none" : region)));
    }
    return figures.Finish("changed glyph variations are", drawn);
}

// A PostScript outline as drawn: cubic, its control points off the curve.
TDrawnOutline CubicOutline(const VellOutline& outline) {
    TDrawnOutline drawn;
    drawn.cubic = true;
    for (const VellOutlinePoint& point : outline.points)
        drawn.points.push_back({static_cast<double>(point.x), static_cast<double>(point.y),
                                point.kind != VellPointKind::CubicControl && point.kind != VellPointKind::QuadControl});
    drawn.contourEnds.assign(outline.contourEnds.begin(), outline.contourEnds.end());
    return drawn;
}

// Each glyph whose outline the 'CFF ' or 'CFF2' account reports, both fonts'
// glyphs overlaid (paired by name when both fonts name every glyph) at the
// default location or, for a 'CFF2' glyph that differs only there, at the first
// named instance where it differs; then the glyphs only one font has, drawn
// alone at the default location. Widths are the charstrings' where they give one.
std::string DrawCFFChanges(VellTag tag, TGlyphSource& modified, TGlyphSource& original, uint32_t limit,
                           uint32_t* drawn) {
    FigureList figures(limit);
    CFFGlyphChanges changes;
    if (!OrNothing([&] { return FindCFFGlyphChanges(modified.Context(), original.Context(), tag, &changes); })
             .value_or(false))
        return figures.Finish("changed glyphs are", drawn);
    struct Loaded {
        TDrawnOutline outline;
        std::optional<uint16_t> advance;
    };
    auto load = [](VellOutlineFace& face, uint32_t glyph) {
        VellOutline loaded;
        face.Load(glyph, &loaded);
        Loaded side{CubicOutline(loaded), std::nullopt};
        if (loaded.advance > 0 && loaded.advance <= UINT16_MAX) side.advance = static_cast<uint16_t>(loaded.advance);
        return side;
    };
    for (const CFFGlyphChange& change : changes.changed) {
        if (!figures.Take()) continue;
        std::string note;
        if (change.location >= 0) {
            changes.modifiedFace->SetInstance(change.location);
            changes.originalFace->SetInstance(change.location);
            uint16_t nameID = changes.modifiedFace->Instances()[change.location].subfamilyNameID;
            note = VellFormat("At the named instance %u", nameID);
            std::string name =
                OrNothing([&] { return NameOnly(modified.Context().Font(), nameID); }).value_or(std::string());
            if (!name.empty()) note += " \"" + name + "\"";
        }
        Loaded mod = load(*changes.modifiedFace, change.modified), orig = load(*changes.originalFace, change.original);
        if (change.location >= 0) {
            changes.modifiedFace->SetInstance(-1);
            changes.originalFace->SetInstance(-1);
        }
        figures.Add(DrawGlyphFigure({&modified, change.modified, &mod.outline, mod.advance},
                                    {&original, change.original, &orig.outline, orig.advance}, note));
    }
    for (uint32_t glyph : changes.added) {
        if (!figures.Take()) continue;
        Loaded added = load(*changes.modifiedFace, glyph);
        figures.Add(DrawGlyphFigure({&modified, glyph, &added.outline, added.advance}, {}, "Added glyph"));
    }
    for (uint32_t glyph : changes.deleted) {
        if (!figures.Take()) continue;
        Loaded deleted = load(*changes.originalFace, glyph);
        figures.Add(DrawGlyphFigure({}, {&original, glyph, &deleted.outline, deleted.advance}, "Deleted glyph"));
    }
    return figures.Finish("changed glyphs are", drawn);
}

}  // namespace

std::string DrawTableChanges(VellTag tag, TGlyphSource& modified, TGlyphSource& original, uint32_t maxDrawings,
                             uint32_t* drawn) {
    *drawn = 0;
    if (tag == Tag("glyf")) return DrawGLYFChanges(modified, original, maxDrawings, drawn);
    if (tag == Tag("hmtx")) return DrawAdvanceChanges(modified, original, maxDrawings, drawn);
    if (tag == Tag("cmap")) return DrawMappingChanges(modified, original, maxDrawings, drawn);
    if (gOpenType && tag == Tag("gvar")) return DrawGVARChanges(modified, original, maxDrawings, drawn);
    if (gOpenType && (tag == Tag("CFF ") || tag == Tag("CFF2")))
        return DrawCFFChanges(tag, modified, original, maxDrawings, drawn);
    if (gOpenType && (tag == Tag("GPOS") || tag == Tag("kern")))
        return DrawKerningChanges(tag, modified, original, maxDrawings, drawn);
    return {};
}

std::string HtmlEscape(std::string_view text) {
    std::string escaped;
    escaped.reserve(text.size());
    for (char c : text) {
        switch (c) {
            case '&': escaped += "&amp;"; break;
            case '<': escaped += "&lt;"; break;
            case '>': escaped += "&gt;"; break;
            case '"': escaped += "&quot;"; break;
            case '\'': escaped += "&#39;"; break;
            // Control characters other than tab and line ends have no place in a page.
            default:
                if (static_cast<unsigned char>(c) < 0x20 && c != '\t' && c != '\n' && c != '\r')
                    escaped += "&#xFFFD;";
                else
                    escaped += c;
        }
    }
    return escaped;
}
