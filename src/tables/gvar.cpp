#include "tables/gvar.h"

#include <algorithm>

#include "framework/VellGlyphData.h"
#include "framework/VellTupleVariations.h"
#include "tables/VariationReport.h"

namespace {

constexpr FieldRow kGvarHeaderRows[] = {
    {0, FieldKind::Version, "Format"},
    {4, FieldKind::UInt16, "Axis count"},
    {6, FieldKind::UInt16, "Global coordinate count"},
    {8, FieldKind::Int32Hex, "Offset to coordinates"},
    {12, FieldKind::UInt16, "Glyph count"},
};
constexpr FieldRow kDataOffsetRow = {16, FieldKind::Int32Hex, "Offset to data"};
constexpr size_t kFlagsOffset = 14;
constexpr size_t kHeaderSize = 20;

// The glyph variation offsets are listed from byte 24, four bytes past the end of
// the 20-byte header where the array really starts; listings have always read
// them from there. So the last two entries of a well-formed table may lie past
// its end, and read as 0.
constexpr size_t kListedOffsetsStart = 24;

constexpr uint16_t kSharedPointNumbers = 0x8000;
constexpr uint16_t kEmbeddedPeakTuple = 0x8000;
constexpr uint16_t kIntermediateRegion = 0x4000;
constexpr uint16_t kPrivatePointNumbers = 0x2000;
constexpr uint16_t kCountMask = 0x0FFF;
constexpr size_t kTupleHeadersOffset = 4;

}  // namespace

int32_t TGVARTableDumper::DumpTableContents() {
    VellView table = GetTableView();
    PrintLine("###gvar header", true);
    DumpFieldRows(0, kGvarHeaderRows, table);
    bool longOffsets = table.u16(kFlagsOffset) & 1;
    PrintBooleanField(0, "Offsets are long", longOffsets);
    PrintFieldRow(0, kDataOffsetRow, kDataOffsetRow.label, table);

    PrintLine("\n###Glyph offsets", true);
    size_t width = longOffsets ? 4 : 2;
    size_t entries = size_t{table.u16(12)} + 1;
    // A damaged glyph count lists no more entries than the table could hold.
    size_t listed = std::min(entries, std::max<size_t>(table.records_that_fit(kHeaderSize, entries, width), 1));
    for (size_t i = 0; i < listed; ++i) {
        std::string label = VellFormat("%d", static_cast<int>(i));
        size_t at = kListedOffsetsStart + width * i;
        if (longOffsets)
            PrintInt32Field(1, label, table.s32(at), true, true);
        else
            PrintUInt16Field(1, label, table.u16(at), true);
    }
    PrintLine("###End glyph offsets", true);

    // Only the variation data that follows the offset array is shown: that of
    // the first glyph, however the offsets point.
    PrintLine("\n###Glyph variation array", true);
    size_t at = kListedOffsetsStart + width * entries;
    uint16_t tupleCount = table.u16(at);
    PrintBooleanField(0, "Tuples share point numbers", tupleCount & kSharedPointNumbers);
    PrintUInt16Field(0, "Tuple count", tupleCount & kCountMask, false);
    PrintUInt16Field(0, "Offset to data", table.u16(at + 2), true);

    PrintLine("\n###Tuple variations", true);
    size_t header = at + kTupleHeadersOffset;
    for (uint16_t t = 0; t < (tupleCount & kCountMask) && header < table.size(); ++t) {
        uint16_t size = table.u16(header), index = table.u16(header + 2);
        PrintInt32Field(1, "Tuple variation index", t, false, true);
        PrintUInt16Field(1, "Tuple size", size, true);
        PrintBooleanField(1, "Embedded tuple coordinate", index & kEmbeddedPeakTuple);
        PrintBooleanField(1, "Intermediate tuple", index & kIntermediateRegion);
        PrintBooleanField(1, "Private point numbers", index & kPrivatePointNumbers);
        PrintUInt16Field(1, "Tuple index", index & kCountMask, true);
        // The next header lies the tuple's size past this one; a size of 0 would
        // show this header again and again, so it is shown once.
        if (size == 0) break;
        header += size;
    }
    PrintLine("###End tuple variations", true);
    return 0;
}

// ---- The 'gvar' comparator (--opentype) ----

namespace {

constexpr FieldRow kGvarComparedRows[] = {
    {0, FieldKind::Version, "Version", "version"},
    {4, FieldKind::UInt16, "Axis count", "axisCount"},
    {6, FieldKind::UInt16, "Shared tuple count", "sharedTupleCount"},
    {12, FieldKind::UInt16, "Glyph count", "glyphCount"},
    {14, FieldKind::UInt16Hex, "Flags", "flags"},
};
constexpr size_t kAxisCountOffset = 4;
constexpr size_t kSharedTupleCountOffset = 6;
constexpr size_t kSharedTuplesOffset = 8;
constexpr size_t kGlyphCountOffset = 12;
constexpr size_t kDataArrayOffset = 16;

// The glyph variation data of each glyph, and the shared tuples, as one font holds them.
struct GlyphVariations {
    VellView table;
    uint16_t axisCount;
    VellView sharedTuples;
    size_t glyphCount;
    bool longOffsets;

    explicit GlyphVariations(VellView gvar)
        : table(gvar),
          axisCount(gvar.u16(kAxisCountOffset)),
          sharedTuples(gvar.sub(gvar.u32(kSharedTuplesOffset),
                                size_t{gvar.u16(kSharedTupleCountOffset)} * 2 * gvar.u16(kAxisCountOffset))),
          longOffsets(gvar.u16(kFlagsOffset) & 1) {
        // Each glyph needs the offset after its own.
        size_t width = longOffsets ? 4 : 2;
        size_t offsets = gvar.records_that_fit(kHeaderSize, size_t{gvar.u16(kGlyphCountOffset)} + 1, width);
        glyphCount = offsets > 0 ? offsets - 1 : 0;
    }
    size_t Offset(size_t index) const {
        return longOffsets ? table.u32(kHeaderSize + 4 * index) : size_t{table.u16(kHeaderSize + 2 * index)} * 2;
    }
    VellView Glyph(size_t glyph) const {
        if (glyph >= glyphCount) return {};
        size_t start = Offset(glyph), end = Offset(glyph + 1);
        if (end <= start) return {};
        return table.sub(size_t{table.u32(kDataArrayOffset)} + start, end - start);
    }
};

// How many points each glyph's deltas cover, counted in the font's 'glyf'; 0 for
// a font without outlines there, whose tuples over all points are split evenly.
class OutlinePoints {
public:
    explicit OutlinePoints(VellFontRef font) {
        if (font == nullptr) return;
        ErrorRecord record;
        fLocations = VellFindGlyphLocations(font, &record);
        fReadable = record.code == 0 && !fLocations.glyf.empty();
    }
    size_t Count(size_t glyph) const {
        if (!fReadable || glyph >= fLocations.glyphCount) return 0;
        ErrorRecord record;
        VellView bytes = VellGetTTGlyphBytes(fLocations, static_cast<uint32_t>(glyph), &record);
        return record.code == 0 ? VellGlyphVariationPointCount(bytes) : 0;
    }

private:
    VellGlyphLocations fLocations;
    bool fReadable = false;
};

// The region of a tuple: the axes of its peak, and the intermediate start and end.
std::string TupleText(const VellTupleVariation& tuple, const std::vector<VellTag>& axisTags) {
    std::string text;
    for (size_t axis = 0; axis < tuple.peak.size(); ++axis) {
        if (tuple.peak[axis] == 0) continue;
        if (!text.empty()) text += ", ";
        text += AxisText(axisTags, axis) + " " + F2Dot14Text(tuple.peak[axis]);
        if (tuple.intermediate)
            text += " (" + F2Dot14Text(tuple.start[axis]) + " to " + F2Dot14Text(tuple.end[axis]) + ")";
    }
    return text.empty() ? "none" : text;
}

// Point numbers with their runs folded: "0-3, 7"; "all" for all points, listed
// one by one or not (pointCount 0: the glyph's points are not known).
std::string PointsText(const VellTupleVariation& tuple, size_t pointCount) {
    std::string text;
    const std::vector<uint16_t>& points = tuple.points.points;
    bool everyPoint = pointCount != 0 && points.size() == pointCount;
    for (size_t i = 0; everyPoint && i < points.size(); ++i) everyPoint = points[i] == i;
    if (tuple.points.all || everyPoint) return "all";
    for (size_t i = 0; i < points.size();) {
        size_t j = i;
        while (j + 1 < points.size() && points[j + 1] == points[j] + 1) ++j;
        if (i > 0) text += ", ";
        text += std::to_string(points[i]);
        if (j > i) text += "-" + std::to_string(points[j]);
        i = j + 1;
    }
    return text;
}

void AppendGlyphRecords(VariationRecords& records, const std::string& glyphName,
                        const std::vector<VellTupleVariation>& tuples, const std::vector<VellTag>& axisTags,
                        size_t pointCount) {
    for (const VellTupleVariation& tuple : tuples) {
        std::string region = TupleText(tuple, axisTags);
        VariationRecord& record =
            records.emplace_back(VariationRecord{glyphName + ", tuple " + region, glyphName + ", tuple " + region, {}});
        // Whether the points are the glyph's shared ones or the tuple's own is a
        // choice of encoding: it is shown, but two tuples over the same points are
        // the same however they store them.
        record.Note("Point numbers stored", tuple.privatePoints ? "private" : "shared");
        record.Field("Point numbers", PointsText(tuple, pointCount));
        for (size_t i = 0; i < tuple.x.size() && i < tuple.y.size(); ++i) {
            size_t point = tuple.points.all ? i : tuple.points.points[i];
            record.Field("Point " + std::to_string(point),
                         "( " + std::to_string(tuple.x[i]) + ", " + std::to_string(tuple.y[i]) + " )");
        }
    }
}

}  // namespace

int32_t TGVARTableComparator::DumpTableDeltas() {
    if (!HasBothTables()) return 1;
    VellView modifiedTable = GetTableView(), originalTable = GetOriginalTableView();
    CompareFieldRows(1, kGvarComparedRows, modifiedTable, originalTable);
    GlyphVariations modified(modifiedTable), original(originalTable);
    std::vector<VellTag> modifiedAxes = FontAxisTags(GetModifiedContext()),
                         originalAxes = FontAxisTags(GetOriginalContext());
    // Glyphs whose bytes are equal are equal, unless the shared tuples they may
    // name or the axes their tuples span are not.
    bool sameContext = modified.axisCount == original.axisCount && modified.sharedTuples == original.sharedTuples &&
                       modifiedAxes == originalAxes;
    size_t allowance = 64 * (modifiedTable.size() + originalTable.size()) + (1 << 20);
    OutlinePoints modifiedPoints(GetModifiedFont()), originalPoints(GetOriginalFont());
    VariationRecords modifiedRecords, originalRecords;
    size_t glyphCount = std::max(modified.glyphCount, original.glyphCount);
    for (size_t glyph = 0; glyph < glyphCount && allowance > 0; ++glyph) {
        VellView modifiedGlyph = modified.Glyph(glyph), originalGlyph = original.Glyph(glyph);
        if (sameContext && modifiedGlyph == originalGlyph) continue;
        std::string name = GlyphHeading(GetModifiedContext(), static_cast<uint32_t>(glyph));
        size_t modifiedCount = modifiedPoints.Count(glyph), originalCount = originalPoints.Count(glyph);
        AppendGlyphRecords(modifiedRecords, name,
                           VellReadGlyphVariations(modifiedGlyph, modified.sharedTuples, modified.axisCount,
                                                   modifiedCount, &allowance),
                           modifiedAxes, modifiedCount);
        AppendGlyphRecords(originalRecords, name,
                           VellReadGlyphVariations(originalGlyph, original.sharedTuples, original.axisCount,
                                                   originalCount, &allowance),
                           originalAxes, originalCount);
    }
    MakeKeysUnique(modifiedRecords);
    MakeKeysUnique(originalRecords);
    CompareVariationRecords(*this, "glyph variations", modifiedRecords, originalRecords);
    if (allowance == 0) PrintBudgetSpent(*this);
    return 0;
}

namespace {

// Whether two glyphs' records agree in every compared field, as the account
// would find them: nothing of the glyph would be printed.
bool SameRecords(const VariationRecords& modified, const VariationRecords& original) {
    if (modified.size() != original.size()) return false;
    auto compared = [](const VariationRecord& record) {
        std::vector<std::pair<std::string, std::string>> fields;
        for (const VariationField& field : record.fields)
            if (field.compared) fields.emplace_back(field.label, field.Compared());
        std::sort(fields.begin(), fields.end());
        return std::make_pair(record.key, fields);
    };
    std::vector<std::pair<std::string, std::vector<std::pair<std::string, std::string>>>> mine, theirs;
    for (const VariationRecord& record : modified) mine.push_back(compared(record));
    for (const VariationRecord& record : original) theirs.push_back(compared(record));
    std::sort(mine.begin(), mine.end());
    std::sort(theirs.begin(), theirs.end());
    return mine == theirs;
}

}  // namespace

std::vector<GVARGlyphChange> FindGVARGlyphChanges(TFontContext& modifiedFont, TFontContext& originalFont) {
    std::vector<GVARGlyphChange> changes;
    VellView modifiedTable = modifiedFont.Table(VellMakeTag("gvar")), originalTable = originalFont.Table(VellMakeTag("gvar"));
    GlyphVariations modified(modifiedTable), original(originalTable);
    std::vector<VellTag> modifiedAxes = FontAxisTags(&modifiedFont), originalAxes = FontAxisTags(&originalFont);
    bool sameContext = modified.axisCount == original.axisCount && modified.sharedTuples == original.sharedTuples &&
                       modifiedAxes == originalAxes;
    size_t allowance = 64 * (modifiedTable.size() + originalTable.size()) + (1 << 20);
    OutlinePoints modifiedPoints(modifiedFont.Font()), originalPoints(originalFont.Font());
    size_t glyphCount = std::max(modified.glyphCount, original.glyphCount);
    for (size_t glyph = 0; glyph < glyphCount && allowance > 0; ++glyph) {
        VellView modifiedGlyph = modified.Glyph(glyph), originalGlyph = original.Glyph(glyph);
        if (sameContext && modifiedGlyph == originalGlyph) continue;
        size_t modifiedCount = modifiedPoints.Count(glyph), originalCount = originalPoints.Count(glyph);
        GVARGlyphChange change{static_cast<uint32_t>(glyph),
                               VellReadGlyphVariations(modifiedGlyph, modified.sharedTuples, modified.axisCount,
                                                       modifiedCount, &allowance),
                               VellReadGlyphVariations(originalGlyph, original.sharedTuples, original.axisCount,
                                                       originalCount, &allowance)};
        VariationRecords modifiedRecords, originalRecords;
        AppendGlyphRecords(modifiedRecords, "", change.modified, modifiedAxes, modifiedCount);
        AppendGlyphRecords(originalRecords, "", change.original, originalAxes, originalCount);
        MakeKeysUnique(modifiedRecords);
        MakeKeysUnique(originalRecords);
        if (!SameRecords(modifiedRecords, originalRecords)) changes.push_back(std::move(change));
    }
    return changes;
}
