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
                        bool widths, const std::function<bool()>& listed) {
    auto printed = [&] { return !listed || listed(); };
    auto pointValue = [](const char* key, const VellOutlinePoint& point) {
        return [key, &point](JsonWriter& writer) {
            writer.Key(key);
            writer.StartArray();
            writer.Int(point.x);
            writer.Int(point.y);
            writer.EndArray();
        };
    };
    auto textValue = [](const char* key, const std::string& text) {
        return [key, &text](JsonWriter& writer) {
            writer.Key(key);
            WriteText(writer, text);
        };
    };
    bool any = false;
    if (widths && modified.advance != original.advance) {
        any = true;
        if (out.ShowsDifference(DifferenceKind::Changed, "width", [&](JsonWriter& writer) {
                writer.Key("original");
                writer.Int(original.advance);
                writer.Key("modified");
                writer.Int(modified.advance);
            }) && printed()) {
            out.PrintInt32Field(indent, ModLabel("Width"), modified.advance, false, true);
            out.PrintInt32Field(indent, OrigLabel("Width"), original.advance, false, true);
        }
    }
    if (modified.points == original.points && modified.contourEnds == original.contourEnds) return any;

    // Contours drawn alike in both fonts are paired first, so that one contour
    // inserted or deleted does not make every later one a change.
    std::vector<ContourSpan> modifiedContours = Contours(modified), originalContours = Contours(original);
    std::vector<bool> modifiedPaired(modifiedContours.size()), originalPaired(originalContours.size());
    std::vector<size_t> pairedWith(modifiedContours.size());
    bool reordered = false;
    for (size_t m = 0; m < modifiedContours.size(); ++m)
        for (size_t o = 0; o < originalContours.size(); ++o)
            if (!originalPaired[o] && modifiedContours[m] == originalContours[o]) {
                modifiedPaired[m] = originalPaired[o] = true;
                pairedWith[m] = o;
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
        // A contour is named by its number in the modified outline.
        TTableDumper::PathScope contours(out, "contours");
        if (mod.SameKinds(orig)) {
            TTableDumper::PathScope contour(out, m);
            TTableDumper::PathScope points(out, "points");
            for (size_t p = 0; p < mod.size(); ++p) {
                if (mod.begin[p] == orig.begin[p]) continue;
                if (!out.ShowsDifference(DifferenceKind::Changed, p, [&](JsonWriter& writer) {
                        pointValue("original", orig.begin[p])(writer);
                        pointValue("modified", mod.begin[p])(writer);
                    }))
                    continue;
                if (movedPoints++ >= kListedPoints || !printed()) continue;
                std::string point = " point " + std::to_string(p);
                out.PrintStringField(indent, ModLabel(Label("Contour", m) + point), PointText(mod.begin[p]));
                out.PrintStringField(indent, OrigLabel(Label("Contour", o) + point), PointText(orig.begin[p]));
            }
        } else {
            std::string modText = PathText(modified, m), origText = PathText(original, o);
            if (!out.ShowsDifference(DifferenceKind::Changed, m, [&](JsonWriter& writer) {
                    textValue("original", origText)(writer);
                    textValue("modified", modText)(writer);
                }))
                continue;
            if (listContour() && printed()) {
                out.PrintStringField(indent, ModLabel(Label("Contour", m)), modText);
                out.PrintStringField(indent, OrigLabel(Label("Contour", o)), origText);
            }
        }
    }
    auto oneSide = [&](DifferenceKind kind, const char* label, const VellOutline& outline, size_t contour) {
        TTableDumper::PathScope contours(out, "contours");
        std::string text = PathText(outline, contour);
        if (out.ShowsDifference(kind, contour, textValue("value", text)) && listContour() && printed())
            out.PrintStringField(indent, Label(label, contour), text);
    };
    for (size_t k = redrawn; k < modifiedLeft.size(); ++k)
        oneSide(DifferenceKind::Added, "Added contour", modified, modifiedLeft[k]);
    for (size_t k = redrawn; k < originalLeft.size(); ++k)
        oneSide(DifferenceKind::Deleted, "Deleted contour", original, originalLeft[k]);
    if (movedPoints > kListedPoints && printed())
        out.PrintUInt32Field(indent, "Moved points not listed", static_cast<uint32_t>(movedPoints - kListedPoints), false);
    if (contoursUnlisted > 0 && printed())
        out.PrintUInt32Field(indent, "Changed contours not listed", static_cast<uint32_t>(contoursUnlisted), false);
    // Contours only reordered: which original contour each modified one is.
    if (reordered && modifiedLeft.empty() && originalLeft.empty() &&
        out.ShowsDifference(DifferenceKind::Changed, "contourOrder", [&](JsonWriter& writer) {
            writer.Key("original");
            writer.StartArray();
            for (size_t o = 0; o < originalContours.size(); ++o) writer.Uint64(o);
            writer.EndArray();
            writer.Key("modified");
            writer.StartArray();
            for (size_t o : pairedWith) writer.Uint64(o);
            writer.EndArray();
        }) && printed())
        out.PrintStringField(indent, "Contours", "reordered");
    return true;
}

PathStep GlyphStep(const GlyphPairing& pairing, const std::vector<std::string>& names, uint32_t glyph) {
    if (pairing.byName && glyph < names.size()) return PathStep(names[glyph]);
    return PathStep(glyph);
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

int32_t TOutlineTableComparator::GetGlyphName(uint32_t glyph, std::string& name) {
    name = glyph < fNames->size() ? (*fNames)[glyph] : std::string();
    return 0;
}
