#include "comparators/TOutlineDeltas.h"

#include <algorithm>
#include <unordered_map>

#include "VellCmpErrors.h"
#include "comparators/TTableComparator.h"

namespace {

bool NamesEveryGlyph(const std::vector<std::string>& names, uint32_t count,
                     std::unordered_map<std::string_view, uint32_t>* index) {
    if (names.size() != count) return false;
    index->reserve(count);
    for (uint32_t glyph = 0; glyph < count; ++glyph)
        if (names[glyph].empty() || !index->emplace(names[glyph], glyph).second) return false;
    return true;
}

// The points of one contour, for comparing contours wherever they stand.
struct ContourSpan {
    const VellOutlinePoint* begin;
    const VellOutlinePoint* end;
    size_t size() const { return static_cast<size_t>(end - begin); }
    bool operator==(const ContourSpan& other) const {
        return size() == other.size() && std::equal(begin, end, other.begin);
    }
    bool SameKinds(const ContourSpan& other) const {
        return size() == other.size() &&
               std::equal(begin, end, other.begin, [](const auto& a, const auto& b) { return a.kind == b.kind; });
    }
};

std::vector<ContourSpan> Contours(const VellOutline& outline) {
    std::vector<ContourSpan> contours;
    for (size_t c = 0; c < outline.ContourCount(); ++c)
        contours.push_back({outline.points.data() + outline.ContourStart(c), outline.points.data() + outline.contourEnds[c]});
    return contours;
}

// Font units, which a 16.16 point field could not hold whole.
std::string PointText(const VellOutlinePoint& point) {
    std::string text = "( ";
    AppendDecimal(text, point.x);
    text.append(", ");
    AppendDecimal(text, point.y);
    text.append(" )");
    return text;
}

std::string Label(const char* what, size_t contour) { return std::string(what) + " " + std::to_string(contour); }

}  // namespace

GlyphPairing PairGlyphs(const std::vector<std::string>& modifiedNames, uint32_t modifiedCount,
                        const std::vector<std::string>& originalNames, uint32_t originalCount) {
    GlyphPairing pairing;
    std::unordered_map<std::string_view, uint32_t> modifiedIndex, originalIndex;
    pairing.byName = NamesEveryGlyph(modifiedNames, modifiedCount, &modifiedIndex) &&
                     NamesEveryGlyph(originalNames, originalCount, &originalIndex);
    if (!pairing.byName) {
        uint32_t shared = std::min(modifiedCount, originalCount);
        for (uint32_t glyph = 0; glyph < shared; ++glyph) pairing.pairs.emplace_back(glyph, glyph);
        for (uint32_t glyph = shared; glyph < modifiedCount; ++glyph) pairing.added.push_back(glyph);
        for (uint32_t glyph = shared; glyph < originalCount; ++glyph) pairing.deleted.push_back(glyph);
        return pairing;
    }
    for (uint32_t glyph = 0; glyph < modifiedCount; ++glyph) {
        auto found = originalIndex.find(modifiedNames[glyph]);
        if (found == originalIndex.end())
            pairing.added.push_back(glyph);
        else
            pairing.pairs.emplace_back(glyph, found->second);
    }
    for (uint32_t glyph = 0; glyph < originalCount; ++glyph)
        if (!modifiedIndex.contains(originalNames[glyph])) pairing.deleted.push_back(glyph);
    return pairing;
}

std::string PathText(const VellOutline& outline, size_t contour, size_t limit) {
    std::string text;
    uint32_t end = outline.contourEnds[contour];
    VellPointKind previous = VellPointKind::Move;
    for (uint32_t p = outline.ContourStart(contour), listed = 0; p < end; ++p, ++listed) {
        if (listed == limit) {
            text.append(" ...");
            break;
        }
        const VellOutlinePoint& point = outline.points[p];
        const char* command = nullptr;
        switch (point.kind) {
            case VellPointKind::Move: command = "M"; break;
            case VellPointKind::Line: command = "L"; break;
            case VellPointKind::QuadControl: command = previous == VellPointKind::QuadControl ? nullptr : "Q"; break;
            case VellPointKind::CubicControl: command = previous == VellPointKind::CubicControl ? nullptr : "C"; break;
            case VellPointKind::CurveEnd: break;
        }
        if (!text.empty()) text.push_back(' ');
        if (command != nullptr) text.append(command).push_back(' ');
        AppendDecimal(text, point.x);
        text.push_back(' ');
        AppendDecimal(text, point.y);
        previous = point.kind;
    }
    return text;
}

bool PrintOutlineDeltas(TTableDumper& out, int indent, const VellOutline& modified, const VellOutline& original,
                        bool widths) {
    bool printed = false;
    if (widths && modified.advance != original.advance) {
        out.PrintInt32Field(indent, ModLabel("Width"), modified.advance, false, true);
        out.PrintInt32Field(indent, OrigLabel("Width"), original.advance, false, true);
        printed = true;
    }
    if (modified.points == original.points && modified.contourEnds == original.contourEnds) return printed;

    // Contours drawn alike in both fonts are paired first, so that one contour
    // inserted or deleted does not make every later one a change.
    std::vector<ContourSpan> modifiedContours = Contours(modified), originalContours = Contours(original);
    std::vector<bool> modifiedPaired(modifiedContours.size()), originalPaired(originalContours.size());
    bool reordered = false;
    for (size_t m = 0; m < modifiedContours.size(); ++m)
        for (size_t o = 0; o < originalContours.size(); ++o)
            if (!originalPaired[o] && modifiedContours[m] == originalContours[o]) {
                modifiedPaired[m] = originalPaired[o] = true;
                reordered |= m != o;
                break;
            }
    std::vector<size_t> modifiedLeft, originalLeft;
    for (size_t m = 0; m < modifiedContours.size(); ++m)
        if (!modifiedPaired[m]) modifiedLeft.push_back(m);
    for (size_t o = 0; o < originalContours.size(); ++o)
        if (!originalPaired[o]) originalLeft.push_back(o);

    size_t movedPoints = 0, contoursListed = 0, contoursUnlisted = 0;
    auto listContour = [&]() { return contoursListed++ < kListedContours || (++contoursUnlisted, false); };
    size_t redrawn = std::min(modifiedLeft.size(), originalLeft.size());
    for (size_t k = 0; k < redrawn; ++k) {
        size_t m = modifiedLeft[k], o = originalLeft[k];
        const ContourSpan &mod = modifiedContours[m], &orig = originalContours[o];
        if (mod.SameKinds(orig)) {
            for (size_t p = 0; p < mod.size(); ++p) {
                if (mod.begin[p] == orig.begin[p]) continue;
                if (movedPoints++ >= kListedPoints) continue;
                std::string point = " point " + std::to_string(p);
                out.PrintStringField(indent, ModLabel(Label("Contour", m) + point), PointText(mod.begin[p]));
                out.PrintStringField(indent, OrigLabel(Label("Contour", o) + point), PointText(orig.begin[p]));
            }
        } else if (listContour()) {
            out.PrintStringField(indent, ModLabel(Label("Contour", m)), PathText(modified, m));
            out.PrintStringField(indent, OrigLabel(Label("Contour", o)), PathText(original, o));
        }
    }
    for (size_t k = redrawn; k < modifiedLeft.size(); ++k)
        if (listContour()) out.PrintStringField(indent, Label("Added contour", modifiedLeft[k]), PathText(modified, modifiedLeft[k]));
    for (size_t k = redrawn; k < originalLeft.size(); ++k)
        if (listContour()) out.PrintStringField(indent, Label("Deleted contour", originalLeft[k]), PathText(original, originalLeft[k]));
    if (movedPoints > kListedPoints)
        out.PrintUInt32Field(indent, "Moved points not listed", static_cast<uint32_t>(movedPoints - kListedPoints), false);
    if (contoursUnlisted > 0)
        out.PrintUInt32Field(indent, "Changed contours not listed", static_cast<uint32_t>(contoursUnlisted), false);
    if (reordered && modifiedLeft.empty() && originalLeft.empty()) out.PrintStringField(indent, "Contours", "reordered");
    return true;
}

void PrintOutline(TTableDumper& out, int indent, const VellOutline& outline) {
    for (size_t c = 0; c < outline.ContourCount(); ++c) out.PrintStringField(indent, Label("Contour", c), PathText(outline, c, kListedContourPoints));
}

void PrintGlyphLine(TTableDumper& out, int indent, const char* label, uint32_t glyph) {
    if (gShowPostScriptNames)
        out.PrintGlyphField(indent, label, glyph, false, true);
    else
        out.PrintUInt32Field(indent, label, glyph, false);
}
