#include "tables/hmtx_vmtx.h"

#include <algorithm>
#include <exception>

#include "VellCmpErrors.h"
#include "framework/VellGlyphs.h"

namespace {

constexpr size_t kLongMetricBytes = 4;
constexpr size_t kSideBearingBytes = 2;
// Glyph indices are 16-bit: no font holds more glyphs than this.
constexpr uint32_t kMaxGlyphCount = 0xFFFF;

struct LongMetric {
    uint16_t advance;
    int16_t sideBearing;
    bool operator==(const LongMetric&) const = default;
};

LongMetric LongMetricAt(VellView table, uint32_t glyph) {
    size_t at = kLongMetricBytes * size_t{glyph};
    return {table.u16(at), table.s16(at + 2)};
}

// The side bearing of a glyph at or past its font's long metrics, from the array
// that follows them.
int16_t TrailingSideBearingAt(VellView table, uint32_t longMetrics, uint32_t glyph) {
    return table.s16(kLongMetricBytes * size_t{longMetrics} + kSideBearingBytes * (size_t{glyph} - longMetrics));
}

// 'vmtx' names glyphs from whichever 'post' each font has, with no glyph-count check.
constexpr uint32_t kAnyGlyph = UINT32_MAX;

void PrintNameLine(TTableDumper& dumper, const VellHandle& post, uint32_t glyph) {
    if (post) dumper.PrintLine("\t\tName:\t" + PostScriptGlyphName(post, kAnyGlyph, glyph), true);
}

// Advance and side bearing of one glyph, as the font's own metrics lookup sees them.
LongMetric FontMetrics(VellFontRef font, uint32_t glyph) {
    ErrorRecord record;
    LongMetric metric{};
    VellGetHMTXMetrics(font, glyph, &metric.advance, &metric.sideBearing, &record);
    ThrowIfVellError(record);
    return metric;
}

}  // namespace

TMetricsFontData::TMetricsFontData(TFontContext& font, VellTag metricsTag)
    : post(font.Post()),
      longMetrics(font.LongMetricCount(metricsTag)),
      glyphCount(std::min(font.GlyphCount(), kMaxGlyphCount)) {}

// ---- Dumpers ----

THMTXTableDumper::THMTXTableDumper(TFontContext& font, VellTag tag, FILE* out)
    : TTableDumper(font, tag, out), fFont(font, tag) {}

// The glyphs a dump lists are those whose entries the table holds, however many
// the font's counts claim: a damaged 'hhea' or 'maxp' cannot make a short table
// list 65,535 glyphs of zeros.
uint32_t THMTXTableDumper::LongMetricsShown() const {
    return static_cast<uint32_t>(GetTableView().records_that_begin(0, fFont.longMetrics, kLongMetricBytes));
}

void THMTXTableDumper::DumpTrailingSideBearings() {
    VellView table = GetTableView();
    uint32_t first = fFont.longMetrics;
    uint32_t shown = first >= fFont.glyphCount ? 0
                     : static_cast<uint32_t>(table.records_that_begin(kLongMetricBytes * size_t{first},
                                                                      fFont.glyphCount - first, kSideBearingBytes));
    for (uint32_t glyph = first; glyph < first + shown; ++glyph) {
        PrintInt32Field(1, "Glyph", static_cast<int32_t>(glyph), false, true);
        if (fFont.post) {
            std::string name;
            // A name that cannot be read here ends the run, unreported.
            if (VellFindPSGlyphNameFromTable(fFont.post, glyph, &name) != 0) std::terminate();
            PrintLine("\t\tName:\t" + name, true);
        }
        // A side bearing, but under the advance-width label these listings have always used.
        PrintInt16Field(2, "Advance width", TrailingSideBearingAt(table, fFont.longMetrics, glyph), false);
    }
}

int32_t THMTXTableDumper::DumpTableContents() {
    VellView table = GetTableView();
    for (uint32_t glyph = 0, shown = LongMetricsShown(); glyph < shown; ++glyph) {
        // Without -p the "Glyph" line stays open and the advance width goes on it.
        PrintGlyphField(1, "Glyph", glyph, false, true);
        LongMetric metric = LongMetricAt(table, glyph);
        PrintUInt16Field(2, "Advance width", metric.advance, false);
        PrintInt16Field(2, "Left-side bearing", metric.sideBearing, false);
    }
    DumpTrailingSideBearings();
    return 0;
}

int32_t TVMTXTableDumper::DumpTableContents() {
    VellView table = GetTableView();
    for (uint32_t glyph = 0, shown = LongMetricsShown(); glyph < shown; ++glyph) {
        PrintInt32Field(1, "Glyph", static_cast<int32_t>(glyph), false, true);
        PrintNameLine(*this, fFont.post, glyph);
        LongMetric metric = LongMetricAt(table, glyph);
        PrintUInt16Field(2, "Advance width", metric.advance, false);
        PrintInt16Field(2, "Left-side bearing", metric.sideBearing, false);
    }
    DumpTrailingSideBearings();
    return 0;
}

// ---- Comparators ----

THMTXTableComparator::THMTXTableComparator(TFontContext& modified, TFontContext& original, VellTag tag, FILE* out)
    : TTableComparator(modified, original, tag, out), fModified(modified, tag), fOriginal(original, tag) {}

int32_t THMTXTableComparator::DumpTableDeltas() {
    if (!HasBothTables()) return 1;
    uint32_t sharedGlyphs = std::min(fModified.glyphCount, fOriginal.glyphCount);
    for (uint32_t glyph = 0; glyph < sharedGlyphs; ++glyph) {
        // Each font's own view of its metrics, so a glyph past numberOfHMetrics
        // compares with the last advance it inherits.
        LongMetric modified = FontMetrics(GetModifiedFont(), glyph);
        LongMetric original = FontMetrics(GetOriginalFont(), glyph);
        if (modified == original) continue;
        PathScope glyphStep(*this, glyph);
        bool advance = modified.advance != original.advance &&
                       ShowsChange("advanceWidth", FieldKind::UInt16, modified.advance, original.advance);
        bool bearing = modified.sideBearing != original.sideBearing &&
                       ShowsChange("lsb", FieldKind::Int16, static_cast<uint16_t>(modified.sideBearing),
                                   static_cast<uint16_t>(original.sideBearing));
        if (!advance && !bearing) continue;
        PrintInt32Field(1, "Glyph", static_cast<int32_t>(glyph), false, true);
        PrintGlyphNameLines(PostScriptGlyphName(fModified.post, fModified.glyphCount, glyph),
                            PostScriptGlyphName(fOriginal.post, fOriginal.glyphCount, glyph), "Name (mod )",
                            "Name (orig)");
        if (advance) {
            PrintUInt16Field(2, ModLabel("Advance width"), modified.advance, false);
            PrintUInt16Field(2, OrigLabel("Advance width"), original.advance, false);
        }
        if (bearing) {
            PrintInt16Field(2, ModLabel("Left-side bearing"), modified.sideBearing, false);
            PrintInt16Field(2, OrigLabel("Left-side bearing"), original.sideBearing, false);
        }
    }
    ReportGlyphsOfOneFont();
    // Glyphs only the original font has are announced as new too, as reports
    // always have.
    auto asInt = [](uint32_t count) { return static_cast<int>(count); };
    if (fModified.glyphCount > fOriginal.glyphCount)
        PrintLine(VellFormat("\nGlyphs %d through %d are new", asInt(fOriginal.glyphCount),
                             asInt(fModified.glyphCount) - 1),
                  true);
    if (fOriginal.glyphCount > fModified.glyphCount)
        PrintLine(VellFormat("\nGlyphs %d through %d are new", asInt(fModified.glyphCount),
                             asInt(fOriginal.glyphCount) - 1),
                  true);
    return 0;
}

// The glyphs past the smaller font's count, each an entry added or deleted with
// its metrics; the text names only their range.
void THMTXTableComparator::ReportGlyphsOfOneFont() {
    if (!WritesRecords() && !IsCountingPass()) return;
    bool added = fModified.glyphCount > fOriginal.glyphCount;
    VellFontRef font = added ? GetModifiedFont() : GetOriginalFont();
    uint32_t first = std::min(fModified.glyphCount, fOriginal.glyphCount);
    uint32_t end = std::max(fModified.glyphCount, fOriginal.glyphCount);
    for (uint32_t glyph = first; glyph < end && !OutputExhausted(); ++glyph) {
        LongMetric metric = FontMetrics(font, glyph);
        ShowsDifference(added ? DifferenceKind::Added : DifferenceKind::Deleted, glyph, [&](JsonWriter& writer) {
            writer.Key("value");
            writer.StartObject();
            writer.Key("advanceWidth");
            writer.Uint(metric.advance);
            writer.Key("lsb");
            writer.Int(metric.sideBearing);
            writer.EndObject();
        });
    }
}

void TVMTXTableComparator::PrintGlyphHeading(uint32_t glyph) {
    PrintInt32Field(1, "Glyph", static_cast<int32_t>(glyph), false, true);
    // Names come from whichever 'post' each font has, with no glyph-count check,
    // and the modified one is labelled "(new)" in 'vmtx' reports.
    PrintGlyphNameLines(PostScriptGlyphName(fModified.post, kAnyGlyph, glyph),
                        PostScriptGlyphName(fOriginal.post, kAnyGlyph, glyph), "Name (new)", "Name (orig)");
}

namespace {

// One font's side of a 'vmtx' comparison: its table, its counts and its labels.
struct VerticalSide {
    VellView table;
    const TMetricsFontData& font;
    std::string advanceLabel, sideBearingLabel;
    const char* noGlyph;  // ends in "\n" and is printed with a line end too

    int16_t TrailingSideBearing(uint32_t glyph) const {
        return TrailingSideBearingAt(table, font.longMetrics, glyph);
    }
};

void PrintLongMetricPair(TTableDumper& dumper, const VerticalSide& side, uint32_t glyph) {
    LongMetric metric = LongMetricAt(side.table, glyph);
    dumper.PrintUInt16Field(2, side.advanceLabel, metric.advance, false);
    dumper.PrintInt16Field(2, side.sideBearingLabel, metric.sideBearing, false);
}

// A glyph's trailing side bearing, under the advance-width label, or the
// no-glyph line once the glyph lies past the font's glyph count.
void PrintTrailingSide(TTableDumper& dumper, const VerticalSide& side, uint32_t glyph) {
    if (glyph < side.font.glyphCount)
        dumper.PrintInt16Field(2, side.advanceLabel, side.TrailingSideBearing(glyph), false);
    else
        dumper.PrintLine(side.noGlyph, true);
}

// One font's metrics of a glyph as the 'vmtx' comparison reads them: a long
// metric, a trailing side bearing alone, or no glyph.
struct VerticalMetric {
    bool present = false, hasAdvance = false;
    uint16_t advance = 0;
    int16_t sideBearing = 0;
};

VerticalMetric VerticalMetricOf(const VerticalSide& side, uint32_t glyph) {
    if (glyph < side.font.longMetrics) {
        LongMetric metric = LongMetricAt(side.table, glyph);
        return {true, true, metric.advance, metric.sideBearing};
    }
    if (glyph < side.font.glyphCount) return {true, false, 0, side.TrailingSideBearing(glyph)};
    return {};
}

// A glyph the comparison lists, as records under [glyph]: each value both fonts
// have and that differs, or the glyph as an entry when one font lacks it. False
// when no record of it is shown, and its lines are left out too.
bool ShowsGlyphMetrics(TTableComparator& comparator, const VerticalSide& modifiedSide,
                       const VerticalSide& originalSide, uint32_t glyph) {
    if (!comparator.WritesRecords() && !comparator.IsCountingPass() && gIgnoreRules.empty()) return true;
    VerticalMetric modified = VerticalMetricOf(modifiedSide, glyph), original = VerticalMetricOf(originalSide, glyph);
    if (!modified.present || !original.present) {
        const VerticalMetric& present = modified.present ? modified : original;
        return comparator.ShowsDifference(modified.present ? DifferenceKind::Added : DifferenceKind::Deleted, glyph,
                               [&](JsonWriter& writer) {
                                   writer.Key("value");
                                   writer.StartObject();
                                   if (present.hasAdvance) {
                                       writer.Key("advanceHeight");
                                       writer.Uint(present.advance);
                                   }
                                   writer.Key("topSideBearing");
                                   writer.Int(present.sideBearing);
                                   writer.EndObject();
                               });
    }
    TTableDumper::PathScope glyphStep(comparator, glyph);
    bool shown = false;
    if (modified.hasAdvance && original.hasAdvance && modified.advance != original.advance)
        shown |= comparator.ShowsChange("advanceHeight", FieldKind::UInt16, modified.advance, original.advance);
    if (modified.sideBearing != original.sideBearing)
        shown |= comparator.ShowsChange("topSideBearing", FieldKind::Int16, static_cast<uint16_t>(modified.sideBearing),
                             static_cast<uint16_t>(original.sideBearing));
    // Long metrics on one side only are listed even when every value matches.
    return shown || (modified.hasAdvance != original.hasAdvance && !comparator.ScopeIgnored());
}

}  // namespace

int32_t TVMTXTableComparator::DumpTableDeltas() {
    if (!HasBothTables()) return 1;
    const VerticalSide modified{GetTableView(), fModified, ModLabel("Advance width"), ModLabel("Left-side bearing"),
                                "\t\t### No glyph in mod table\n"};
    const VerticalSide original{GetOriginalTableView(), fOriginal, OrigLabel("Advance width"),
                                OrigLabel("Left-side bearing"), "\t\t### No glyph in orig table\n"};
    uint32_t maxGlyphs = std::max(fModified.glyphCount, fOriginal.glyphCount);
    uint32_t minLong = std::min(fModified.longMetrics, fOriginal.longMetrics);
    uint32_t maxLong = std::max(fModified.longMetrics, fOriginal.longMetrics);

    // Long metrics both fonts have: a changed glyph shows all four values.
    for (uint32_t glyph = 0; glyph < minLong; ++glyph) {
        if (LongMetricAt(modified.table, glyph) == LongMetricAt(original.table, glyph)) continue;
        if (!ShowsGlyphMetrics(*this, modified, original, glyph)) continue;
        PrintGlyphHeading(glyph);
        PrintLongMetricPair(*this, modified, glyph);
        PrintLongMetricPair(*this, original, glyph);
    }

    // Long metrics only one font has: every glyph is listed, the other font's
    // side as its trailing side bearing or as missing.
    for (uint32_t glyph = minLong; glyph < maxLong; ++glyph) {
        if (!ShowsGlyphMetrics(*this, modified, original, glyph)) continue;
        PrintGlyphHeading(glyph);
        for (const VerticalSide* side : {&modified, &original}) {
            if (glyph < side->font.longMetrics)
                PrintLongMetricPair(*this, *side, glyph);
            else
                PrintTrailingSide(*this, *side, glyph);
        }
    }

    // Trailing side bearings. Each font's value for a glyph is the entry at
    // (glyph - its own long-metric count) of the array after its long metrics, so
    // the font with more long metrics reads its own trailing array from its start.
    for (uint32_t glyph = maxLong; glyph < maxGlyphs; ++glyph) {
        bool inBoth = glyph < fModified.glyphCount && glyph < fOriginal.glyphCount;
        if (inBoth && modified.TrailingSideBearing(glyph) == original.TrailingSideBearing(glyph)) continue;
        if (!ShowsGlyphMetrics(*this, modified, original, glyph)) continue;
        PrintGlyphHeading(glyph);
        PrintTrailingSide(*this, modified, glyph);
        PrintTrailingSide(*this, original, glyph);
    }
    return 0;
}
