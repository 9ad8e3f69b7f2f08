#include "tables/prop.h"

#include <algorithm>
#include <bit>
#include <optional>

#include "VellCmpErrors.h"
#include "framework/VellGlyphs.h"
#include "framework/VellLookups.h"
#include "framework/VellTables.h"

namespace {

constexpr FieldRow kPropHeaderRows[] = {
    {0, FieldKind::Version, "Version"},
    {4, FieldKind::UInt16, "Format"},
};
constexpr size_t kDefaultPropertyOffset = 6;
// The default property belongs to no glyph; its bracketing glyph counts from 65535.
constexpr uint32_t kNoGlyph = 0xFFFF;

enum class PropertyPart : uint8_t { Flag, BracketingOffset, DirectionClass };

struct PropertyField {
    const char* label;
    uint16_t mask;
    PropertyPart part;
};

// The fields of a property value, from its high bit down; bits 6-4 are reserved
// and never shown.
constexpr PropertyField kPropertyFields[] = {
    {"isFloater", 0x8000, PropertyPart::Flag},
    {"isLeftTopHanger", 0x4000, PropertyPart::Flag},
    {"isRightBottomHanger", 0x2000, PropertyPart::Flag},
    {"useRLBracketingGlyph", 0x1000, PropertyPart::Flag},
    {"RLBracketingGlyphOffset", 0x0F00, PropertyPart::BracketingOffset},
    {"glyphConnectsOnRight", 0x0080, PropertyPart::Flag},
    {"directionClass", 0x000F, PropertyPart::DirectionClass},
};

// The bracketing offset is a signed 4-bit number: 8 to 15 stand for -8 to -1.
int16_t BracketingOffset(uint16_t property) {
    int16_t offset = static_cast<int16_t>((property >> 8) & 0xF);
    return offset >= 8 ? static_cast<int16_t>(offset - 16) : offset;
}

using LabelOf = std::string (*)(std::string_view);
std::string PlainLabel(std::string_view label) { return std::string(label); }

void PrintPropertyField(TTableDumper& dumper, int indent, const PropertyField& field, LabelOf labelOf,
                        uint16_t property, uint32_t glyph) {
    switch (field.part) {
        case PropertyPart::Flag:
            dumper.PrintFlagField(indent, labelOf(field.label), property & field.mask);
            break;
        case PropertyPart::BracketingOffset: {
            int16_t offset = BracketingOffset(property);
            dumper.PrintInt16Field(indent, labelOf(field.label), offset, false);
            // The bracketing glyph wraps within the 16-bit glyph space: glyph 0 with
            // an offset of -1 is bracketed by glyph 65535.
            if (offset != 0)
                dumper.PrintGlyphField(indent, labelOf("RLBracketingGlyph").c_str(),
                                       (glyph + static_cast<uint32_t>(offset)) & 0xFFFF, true, true);
            break;
        }
        case PropertyPart::DirectionClass:
            dumper.PrintInt8Field(indent, labelOf(field.label), static_cast<int8_t>(property & field.mask), false);
            break;
    }
}

void PrintPropertyLabel(TTableDumper& dumper, int indent, const char* label) {
    dumper.PrintLine(std::string(static_cast<size_t>(std::max(indent, 0)), '\t') + label + ":\t", true);
}

void PrintPropertyFields(TTableDumper& dumper, int indent, const char* label, uint16_t property, uint32_t glyph) {
    PrintPropertyLabel(dumper, indent, label);
    for (const PropertyField& field : kPropertyFields)
        PrintPropertyField(dumper, indent + 1, field, PlainLabel, property, glyph);
}

// A failing property expansion is reported as a system status.
void ThrowIfFailed(int32_t status) {
    if (status != 0) throw TVellCmpOSException(VellConvertErrorToOSStatus(status));
}

VellHandle PropertyArray(VellView table, uint32_t glyphCount) {
    ErrorRecord record;
    VellHandle properties = VellMakeArrayFromPropTable(table, glyphCount, &record);
    ThrowIfFailed(record.code);
    return properties;
}

uint16_t PropertyOf(VellView properties, uint32_t glyph) { return properties.u16(2 * size_t{glyph}); }

}  // namespace

// ---- Dumper ----

void TPROPTableDumper::PrintProperty(int indent, const char* label, uint16_t property, uint32_t glyph) {
    PrintPropertyFields(*this, indent, label, property, glyph);
}

int32_t TPROPTableDumper::DumpTableContents() {
    if (!GetTableHandle() || GetContext() == nullptr) return 1;
    uint32_t glyphCount = GetContext()->GlyphCount();
    VellView table = GetTableView();
    DumpFieldRows(1, kPropHeaderRows, table);
    PrintProperty(1, "Default property", table.u16(kDefaultPropertyOffset), kNoGlyph);
    VellHandle properties = PropertyArray(table, glyphCount);
    for (uint32_t glyph = 0; glyph < glyphCount; ++glyph) {
        PrintGlyphField(1, "Glyph", glyph, true, true);
        PrintProperty(2, "Property", PropertyOf(VelmView(properties), glyph), glyph);
    }
    return 0;
}

// ---- Comparator ----

TPROPTableComparator::TPROPTableComparator(TFontContext& modified, TFontContext& original, VellTag tag, FILE* out)
    : TTableComparator(modified, original, tag, out) {
    fOriginalGlyphs = original.GlyphCount();
    fOriginalProperties = PropertyArray(GetOriginalTableView(), fOriginalGlyphs);
    fModifiedGlyphs = modified.GlyphCount();
    fModifiedProperties = PropertyArray(GetTableView(), fModifiedGlyphs);
}

void TPROPTableComparator::PrintProperty(int indent, const char* label, uint16_t property, uint32_t glyph) {
    PrintPropertyFields(*this, indent, label, property, glyph);
}

void TPROPTableComparator::PrintPropertyPair(int indent, const char* label, uint16_t modified, uint16_t original,
                                             uint32_t glyph) {
    PrintPropertyLabel(*this, indent, label);
    PathScope glyphStep(*this, glyph);
    for (const PropertyField& field : kPropertyFields) {
        if (((modified ^ original) & field.mask) == 0) continue;
        // The field's bits, shifted down: a flag is 0 or 1, the offset and class their numbers.
        auto bits = [&field](uint16_t property) {
            uint16_t value = property & field.mask;
            return field.part == PropertyPart::BracketingOffset ? static_cast<uint16_t>(BracketingOffset(property))
                                                                 : static_cast<uint16_t>(value >> std::countr_zero(field.mask));
        };
        if (!ShowsChange(field.label, field.part == PropertyPart::BracketingOffset ? FieldKind::Int16 : FieldKind::UInt16,
                         bits(modified), bits(original)))
            continue;
        PrintPropertyField(*this, indent + 1, field, ModLabel, modified, glyph);
        PrintPropertyField(*this, indent + 1, field, OrigLabel, original, glyph);
    }
}

void TPROPTableComparator::PrintGlyphNames(uint32_t glyph) {
    // A glyph is named from its font's own 'post'; a font without the glyph or a
    // 'post' to name it gives no line.
    auto name = [glyph](TFontContext& font) -> std::optional<std::string> {
        if (!font.Post() || glyph >= font.GlyphCount()) return std::nullopt;
        return font.GlyphName(glyph);
    };
    // "(orig )" carries a blank that the other reports' labels do not; kept as reports print it.
    PrintGlyphNameLines(name(*GetModifiedContext()), name(*GetOriginalContext()), "Name (mod )", "Name (orig )");
}

void TPROPTableComparator::PrintGlyphHeading(uint32_t glyph) {
    PrintInt32Field(1, "Glyph", static_cast<int32_t>(glyph), false, true);
    PrintGlyphNames(glyph);
}

int32_t TPROPTableComparator::DumpTableDeltas() {
    if (!HasBothTables()) return 1;
    VellView modified = VelmView(fModifiedProperties), original = VelmView(fOriginalProperties);
    uint32_t common = std::min(fModifiedGlyphs, fOriginalGlyphs);
    uint32_t top = std::max(fModifiedGlyphs, fOriginalGlyphs);
    for (uint32_t glyph = 0; glyph < common; ++glyph) {
        uint16_t modifiedProperty = PropertyOf(modified, glyph), originalProperty = PropertyOf(original, glyph);
        if (modifiedProperty == originalProperty) continue;
        PrintGlyphHeading(glyph);
        PrintPropertyPair(2, "Properties (mod vs. orig)", modifiedProperty, originalProperty, glyph);
    }
    VellView remaining = modified;
    if (fModifiedGlyphs > common) {
        PrintLine("\n\n\tValues for added glyphs:", true);
    } else if (fOriginalGlyphs > common) {
        PrintLine("\n\n\tValues for deleted glyphs:", true);
        remaining = original;
    }
    // The glyphs only one font has are listed under the label "Offset", as
    // reports always have.
    for (uint32_t glyph = common; glyph < top; ++glyph) {
        PrintGlyphHeading(glyph);
        PrintProperty(2, "Offset", PropertyOf(remaining, glyph), glyph);
    }
    return 0;
}
