#include "tables/glyf.h"

#include <algorithm>
#include <array>

#include "VellCmpErrors.h"
#include "framework/VellGlyphData.h"
#include "framework/VellInstructions.h"

namespace {

constexpr size_t kEndPtsOfContoursOffset = 10;
constexpr size_t kComponentsOffset = 10;
constexpr size_t kPointRecordOffset = 4;  // after the coordinates block's point count
constexpr size_t kPointRecordBytes = 8;

// Component flag bits the record layout depends on.
constexpr uint16_t kArg1And2AreWords = 0x0001;
constexpr uint16_t kWeHaveAScale = 0x0008;
constexpr uint16_t kMoreComponents = 0x0020;

// The bounds print with xMax before yMin, unlike their order in the glyph.
constexpr FieldRow kGlyphHeaderRows[] = {
    {0, FieldKind::Int16, "# contours", "numberOfContours"},
    {2, FieldKind::Int16, "Bounds xMin", "xMin"},
    {6, FieldKind::Int16, "Bounds xMax", "xMax"},
    {4, FieldKind::Int16, "Bounds yMin", "yMin"},
    {8, FieldKind::Int16, "Bounds yMax", "yMax"},
};

// Bits 0 to 10 of a component's flags, in bit order.
void PrintComponentFlagBits(TTableDumper& dumper, uint32_t flags) {
    static constexpr const char* kFlags[] = {
        "ARG_1_AND_2_ARE_WORDS", "ARGS_ARE_XY_VALUES", "ROUND_XY_TO_GRID",         "WE_HAVE_A_SCALE",
        "(obsolete flag)",       "MORE_COMPONENTS",    "WE_HAVE_AN_X_AND_Y_SCALE", "WE_HAVE_A_TWO_BY_TWO",
        "WE_HAVE_INSTRUCTIONS",  "USE_MY_METRICS",     "OVERLAP_COMPOUND",
    };
    for (uint32_t bit = 0; bit < std::size(kFlags); ++bit) dumper.PrintFlagField(3, kFlags[bit], flags & (1u << bit));
}

constexpr FieldRow kComponentRows[] = {
    {0, FieldKind::UInt16Hex, "Flags", "flags", PrintComponentFlagBits},
    {2, FieldKind::UInt16, "Glyph ID", "glyphIndex"},
};

// How a glyph's points are listed: numbered coordinates in a comparison, or each
// with its index, its stored flag byte and its coordinates in a dump.
enum class PointLines { Numbered, Detailed };

void DisposeBlock(VellHandle& block) {
    ErrorRecord record;
    VelmDisposePtr(block, &record);
    ThrowIfVellError(record);
}

// The instructions of a simple glyph, one line each.
void PrintInstructions(TTableDumper& dumper, VellView instructions, uint16_t instructionLength) {
    ErrorRecord record;
    uint32_t count = VellCountInstructions(instructions, instructionLength, &record);
    ThrowIfVellError(record);
    dumper.PrintUInt16Field(1, "Instruction length", instructionLength, false);
    dumper.PrintUInt16Field(1, "Instruction count", static_cast<uint16_t>(count), false);
    std::array<uint8_t, kVellInstructionTextSize> text{};
    size_t at = 0;
    for (uint32_t k = 0; k < static_cast<uint16_t>(count); ++k) {
        at +=
            VellDecodeInstructions(instructions.sub(at), static_cast<uint32_t>(instructionLength - at), text, &record);
        ThrowIfVellError(record);
        dumper.PrintIndexedPascalString(2, static_cast<int32_t>(k), VellView(text));
    }
}

void PrintSimpleGlyph(TTableDumper& dumper, const VellHandle& data, PointLines lines) {
    VellView glyph = VelmView(data);
    size_t contours = static_cast<size_t>(glyph.s16(0));
    auto endPoint = [&](size_t contour) { return glyph.u16(kEndPtsOfContoursOffset + 2 * contour); };
    dumper.PrintLine("\tLast point indices", true);
    // A damaged contour count lists only the end points the glyph holds.
    size_t listed = glyph.records_that_fit(kEndPtsOfContoursOffset, contours, 2);
    for (size_t i = 0; i < listed; ++i) dumper.PrintIndexedUInt16(2, static_cast<int32_t>(i), endPoint(i), false);

    size_t instructionLengthAt = kEndPtsOfContoursOffset + 2 * contours;
    uint16_t instructionLength = glyph.u16(instructionLengthAt);
    PrintInstructions(dumper, glyph.sub(instructionLengthAt + 2, instructionLength), instructionLength);

    ErrorRecord record;
    VellHandle coordinates = VellExtractGLYFCoords(data, &record);
    ThrowIfVellError(record);
    VellView points = VelmView(coordinates);
    size_t pointCount = points.records_that_fit(kPointRecordOffset, points.u32(0), kPointRecordBytes);
    dumper.PrintInt32Field(1, "Points", static_cast<int32_t>(pointCount), false, true);
    dumper.PrintInt32Field(2, "Contour", 0, false, true);
    // The flag shown for point p is the stored flag byte at p, repeat counts and
    // all, not the flag the point was decoded with.
    size_t flagsAt = instructionLengthAt + 2 + instructionLength;
    size_t contour = 0;
    for (size_t p = 0; p < pointCount; ++p) {
        int32_t x = points.s32(kPointRecordOffset + kPointRecordBytes * p);
        int32_t y = points.s32(kPointRecordOffset + kPointRecordBytes * p + 4);
        if (lines == PointLines::Numbered) {
            dumper.PrintIndexedPoint(3, static_cast<int32_t>(p), x, y);
        } else {
            uint8_t flag = glyph.u8(flagsAt + p);
            dumper.PrintUInt16Field(3, "Point index", static_cast<uint16_t>(p), false);
            dumper.PrintFlagField(4, "Is on curve", flag & 1);
            dumper.PrintInt8Field(4, "Flags", static_cast<int8_t>(flag), true);
            dumper.PrintPointField(4, "Point", x, y);
        }
        if (contour < contours && p == endPoint(contour) && ++contour < contours)
            dumper.PrintInt32Field(2, "Contour", static_cast<int32_t>(contour), false, true);
    }
    DisposeBlock(coordinates);
}

// The component records. Each is read as its flags, glyph index, two arguments
// and, with WE_HAVE_A_SCALE, one scale word; the words an x-and-y scale or a
// two-by-two announce are not skipped. Another record follows while the word
// after this one has MORE_COMPONENTS set, so the word after the last record
// (instructions, or a second scale word) can start one more; past the end of the
// data it reads 0 and the list ends.
void PrintCompositeGlyph(TTableDumper& dumper, VellView glyph) {
    dumper.PrintInt32Field(1, "Glyph component", 0, false, true);
    size_t at = kComponentsOffset;
    do {
        VellView component = glyph.sub(at);
        uint16_t flags = component.u16(0);
        dumper.DumpFieldRows(2, kComponentRows, component);
        bool words = flags & kArg1And2AreWords;
        // Unsigned either way: a negative offset prints as a large number.
        dumper.PrintUInt16Field(2, "Arg 0", words ? component.u16(4) : component.u8(4), false);
        dumper.PrintUInt16Field(2, "Arg 1", words ? component.u16(6) : component.u8(5), false);
        at += words ? 8 : 6;
        if (flags & kWeHaveAScale) {
            dumper.PrintUInt16Field(2, "Scale", glyph.u16(at), true);
            at += 2;
        } else {
            dumper.PrintLine("\t\tNo scale", true);
        }
    } while (glyph.u16(at) & kMoreComponents);
}

void PrintGlyphBlock(TTableDumper& dumper, const VellHandle& data, PointLines lines) {
    VellView glyph = VelmView(data);
    dumper.DumpFieldRows(1, kGlyphHeaderRows, glyph);
    int16_t contours = glyph.s16(0);
    if (contours == 0)
        dumper.PrintLine("\tNo glyph data", true);
    else if (contours > 0)
        PrintSimpleGlyph(dumper, data, lines);
    else
        PrintCompositeGlyph(dumper, glyph);
}

// ---- A glyph as a --json value ----
// What the comparison's listing shows of a glyph, as an object: its header, and
// for a simple glyph its end points, instructions and points ([x, y]), for a
// composite its components. It reads the glyph as the listing does, with the
// same caps on its counts.

void WriteSimpleGlyph(JsonWriter& writer, const VellHandle& data) {
    VellView glyph = VelmView(data);
    size_t contours = static_cast<size_t>(glyph.s16(0));
    writer.Key("endPtsOfContours");
    writer.StartArray();
    size_t listed = glyph.records_that_fit(kEndPtsOfContoursOffset, contours, 2);
    for (size_t i = 0; i < listed; ++i) writer.Uint(glyph.u16(kEndPtsOfContoursOffset + 2 * i));
    writer.EndArray();

    size_t instructionLengthAt = kEndPtsOfContoursOffset + 2 * contours;
    uint16_t instructionLength = glyph.u16(instructionLengthAt);
    VellView instructions = glyph.sub(instructionLengthAt + 2, instructionLength);
    ErrorRecord record;
    uint32_t count = VellCountInstructions(instructions, instructionLength, &record);
    ThrowIfVellError(record);
    writer.Key("instructions");
    writer.StartArray();
    std::array<uint8_t, kVellInstructionTextSize> text{};
    size_t at = 0;
    for (uint32_t k = 0; k < static_cast<uint16_t>(count); ++k) {
        at += VellDecodeInstructions(instructions.sub(at), static_cast<uint32_t>(instructionLength - at), text,
                                     &record);
        ThrowIfVellError(record);
        VellView line(text);
        WriteText(writer, line.chars(1, line.u8(0)));
    }
    writer.EndArray();

    VellHandle coordinates = VellExtractGLYFCoords(data, &record);
    ThrowIfVellError(record);
    VellView points = VelmView(coordinates);
    size_t pointCount = points.records_that_fit(kPointRecordOffset, points.u32(0), kPointRecordBytes);
    writer.Key("points");
    writer.StartArray();
    for (size_t p = 0; p < pointCount; ++p)
        WritePoint(writer, points.s32(kPointRecordOffset + kPointRecordBytes * p),
                   points.s32(kPointRecordOffset + kPointRecordBytes * p + 4));
    writer.EndArray();
    DisposeBlock(coordinates);
}

void WriteCompositeGlyph(JsonWriter& writer, VellView glyph) {
    writer.Key("components");
    writer.StartArray();
    size_t at = kComponentsOffset;
    do {
        VellView component = glyph.sub(at);
        uint16_t flags = component.u16(0);
        writer.StartObject();
        for (const FieldRow& row : kComponentRows) {
            writer.Key(row.key);
            WriteFieldValue(writer, row.kind, TTableDumper::FieldBits(row, component));
        }
        bool words = flags & kArg1And2AreWords;
        // The arguments as the font means them: signed offsets or point numbers.
        writer.Key("arguments");
        writer.StartArray();
        if (words) {
            writer.Int(component.s16(4));
            writer.Int(component.s16(6));
        } else {
            writer.Int(component.s8(4));
            writer.Int(component.s8(5));
        }
        writer.EndArray();
        at += words ? 8 : 6;
        if (flags & kWeHaveAScale) {
            writer.Key("scale");
            WriteF2Dot14(writer, glyph.s16(at));
            at += 2;
        }
        writer.EndObject();
    } while (glyph.u16(at) & kMoreComponents);
    writer.EndArray();
}

void WriteGlyph(JsonWriter& writer, const VellHandle& data) {
    VellView glyph = VelmView(data);
    writer.StartObject();
    // The bounds in the glyph's own order, xMin, yMin, xMax, yMax.
    for (size_t index : {0, 1, 3, 2, 4}) {
        const FieldRow& row = kGlyphHeaderRows[index];
        writer.Key(row.key);
        WriteFieldValue(writer, row.kind, TTableDumper::FieldBits(row, glyph));
    }
    int16_t contours = glyph.s16(0);
    if (contours > 0)
        WriteSimpleGlyph(writer, data);
    else if (contours < 0)
        WriteCompositeGlyph(writer, glyph);
    writer.EndObject();
}

VellGlyphLocations FindGlyphs(VellFontRef font) {
    ErrorRecord record;
    VellGlyphLocations locations = VellFindGlyphLocations(font, &record);
    ThrowIfVellError(record);
    return locations;
}

VellHandle GlyphData(const VellGlyphLocations& locations, uint32_t glyph) {
    ErrorRecord record;
    VellHandle data = VellGetTTGlyphData(locations, glyph, &record);
    ThrowIfVellError(record);
    return data;
}

VellView GlyphBytes(const VellGlyphLocations& locations, uint32_t glyph) {
    ErrorRecord record;
    VellView bytes = VellGetTTGlyphBytes(locations, glyph, &record);
    ThrowIfVellError(record);
    return bytes;
}

}  // namespace

bool GLYFGlyphDataDiffer(VellView modified, VellView original) {
    size_t longer = std::max(modified.size(), original.size()), shorter = std::min(modified.size(), original.size());
    if (longer - shorter > 4) return true;
    if (longer != shorter && longer % 4 != 0) return true;
    return !(modified.sub(0, shorter) == original.sub(0, shorter));
}

// ---- Dumper ----

int32_t TGLYFTableDumper::DumpTableContents() {
    if (!GetTableHandle() || GetOutputFile() == nullptr) return 1;
    VellGlyphLocations locations = FindGlyphs(GetFont());
    for (uint32_t glyph = 0; glyph < locations.glyphCount; ++glyph) {
        PrintInt32Field(0, "Glyph ID", static_cast<int32_t>(glyph), false, true);
        VellHandle data = GlyphData(locations, glyph);
        if (!data) {
            PrintLine("\tNo glyph data", true);
            continue;
        }
        PrintGlyphBlock(*this, data, PointLines::Detailed);
        DisposeBlock(data);
    }
    return 0;
}

// ---- Comparator ----

// The glyphs past the smaller font's count, each an entry added or deleted with
// its outline; the text names only their range. A glyph without data is left out.
void TGLYFTableComparator::ReportGlyphsOfOneFont(const VellGlyphLocations& font, DifferenceKind kind,
                                                 uint32_t first) {
    if (!WritesRecords() && !IsCountingPass()) return;
    for (uint32_t glyph = first; glyph < font.glyphCount && !OutputExhausted(); ++glyph) {
        VellHandle data = GlyphData(font, glyph);
        if (!data) continue;
        ShowsDifference(kind, glyph, [&](JsonWriter& writer) {
            writer.Key("value");
            WriteGlyph(writer, data);
        });
        DisposeBlock(data);
    }
}

void TGLYFTableComparator::PrintGlyph(const VellHandle& glyphData) {
    PrintGlyphBlock(*this, glyphData, PointLines::Numbered);
}

int32_t TGLYFTableComparator::DumpTableDeltas() {
    if (!HasBothTables()) return 1;
    // Both fonts' outline tables are found once; each glyph is then fetched
    // straight from them.
    VellGlyphLocations original = FindGlyphs(GetOriginalFont());
    VellGlyphLocations modified = FindGlyphs(GetModifiedFont());
    auto asInt = [](uint32_t count) { return static_cast<int>(count); };
    if (original.glyphCount > modified.glyphCount)
        PrintLine(VellFormat("\nGlyphs %d to %d deleted\n", asInt(modified.glyphCount), asInt(original.glyphCount) - 1),
                  false);
    else if (original.glyphCount < modified.glyphCount)
        PrintLine(VellFormat("\nGlyphs %d to %d added\n", asInt(original.glyphCount), asInt(modified.glyphCount) - 1),
                  false);

    // A glyph with an outline in only one font is not reported.
    uint32_t sharedGlyphs = std::min(original.glyphCount, modified.glyphCount);
    ReportGlyphsOfOneFont(original.glyphCount < modified.glyphCount ? modified : original,
                          original.glyphCount < modified.glyphCount ? DifferenceKind::Added : DifferenceKind::Deleted,
                          sharedGlyphs);
    // Glyphs are compared in place; only those reported are copied out.
    for (uint32_t glyph = 0; glyph < sharedGlyphs; ++glyph) {
        VellView originalBytes = GlyphBytes(original, glyph), modifiedBytes = GlyphBytes(modified, glyph);
        if (originalBytes.empty() || modifiedBytes.empty() || !GLYFGlyphDataDiffer(modifiedBytes, originalBytes)) continue;
        VellHandle originalData = GlyphData(original, glyph), modifiedData = GlyphData(modified, glyph);
        if (!ShowsDifference(DifferenceKind::Changed, glyph, [&](JsonWriter& writer) {
                writer.Key("original");
                WriteGlyph(writer, originalData);
                writer.Key("modified");
                WriteGlyph(writer, modifiedData);
            })) {
            DisposeBlock(originalData);
            DisposeBlock(modifiedData);
            if (OutputExhausted()) break;
            continue;
        }
        PrintGlyphField(0, "Glyph ID", glyph, true, true);
        PrintLine("\n\t### Original glyph data\n", true);
        PrintGlyph(originalData);
        PrintLine("\n\t### Modified glyph data\n", true);
        PrintGlyph(modifiedData);
        DisposeBlock(originalData);
        DisposeBlock(modifiedData);
    }
    return 0;
}
