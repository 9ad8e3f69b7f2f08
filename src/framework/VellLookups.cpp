#include "framework/VellLookups.h"

#include <algorithm>
#include <new>
#include <numeric>

namespace {

enum LookupFormat : uint16_t {
    kSimpleArray = 0,
    kSegmentSingle = 2,
    kSegmentArray = 4,
    kSingleTable = 6,
    kTrimmedArray = 8,
};

// Every lookup starts with its format; the binary-search formats follow it with
// unitSize, nUnits, searchRange, entrySelector and rangeShift, then the units.
constexpr size_t kSimpleArrayValuesOffset = 2;
constexpr size_t kUnitSizeOffset = 2;
constexpr size_t kUnitCountOffset = 4;
constexpr size_t kUnitsOffset = 12;
constexpr size_t kSegmentBytes = 6;  // lastGlyph, firstGlyph, value (or offset to values)
constexpr size_t kSingleBytes = 4;   // glyph, value
constexpr size_t kTrimmedFirstGlyphOffset = 2;
constexpr size_t kTrimmedCountOffset = 4;
constexpr size_t kTrimmedValuesOffset = 6;

// Glyph indices are 16-bit: no font addresses more glyphs than this.
constexpr uint32_t kGlyphSpace = 0x10000;

constexpr size_t kPropFormatOffset = 4;
constexpr size_t kDefaultPropertyOffset = 6;
constexpr size_t kPropLookupOffset = 8;

// The units of a binary-search lookup that can be read.
struct BinarySearchUnits {
    size_t stride = 0;
    size_t count = 0;

    BinarySearchUnits(VellView table, size_t unitBytes) : stride(table.u16(kUnitSizeOffset)) {
        if (stride >= unitBytes) count = table.records_that_fit(kUnitsOffset, table.u16(kUnitCountOffset), stride);
    }
    size_t At(size_t unit) const { return kUnitsOffset + unit * stride; }
};

// The values being filled in, one per glyph. A glyph takes the value of the
// first entry that covers it; the glyphs still open are found by skipping over
// runs already set, so that entries spanning every glyph many times over cost no
// more than the glyphs they set.
class GlyphValues {
public:
    GlyphValues(uint32_t glyphCount, uint16_t defaultValue)
        : fValues(glyphCount, defaultValue), fNextOpen(size_t{glyphCount} + 1) {
        std::iota(fNextOpen.begin(), fNextOpen.end(), 0u);
    }

    // Sets each open glyph from first up to (not including) end to value(glyph).
    template <typename Value>
    void SetRange(uint32_t first, uint32_t end, Value value) {
        end = std::min(end, static_cast<uint32_t>(fValues.size()));
        if (first >= end) return;
        for (uint32_t glyph = NextOpen(first); glyph < end; glyph = NextOpen(glyph + 1)) {
            fValues[glyph] = value(glyph);
            fNextOpen[glyph] = glyph + 1;
        }
    }
    void Set(uint32_t glyph, uint16_t value) {
        SetRange(glyph, glyph + 1, [value](uint32_t) { return value; });
    }
    std::vector<uint16_t> Take() { return std::move(fValues); }

private:
    uint32_t NextOpen(uint32_t glyph) {
        while (fNextOpen[glyph] != glyph) {
            fNextOpen[glyph] = fNextOpen[fNextOpen[glyph]];
            glyph = fNextOpen[glyph];
        }
        return glyph;
    }

    std::vector<uint16_t> fValues;
    std::vector<uint32_t> fNextOpen;
};

// A 16-bit value of the lookup, or the default where the lookup ends first.
uint16_t ValueOr(VellView lookup, size_t at, uint16_t defaultValue) {
    return lookup.has(at, 2) ? lookup.u16(at) : defaultValue;
}

}  // namespace

std::vector<uint16_t> VellLookupValues(VellView lookup, uint32_t glyphCount, uint16_t defaultValue) {
    glyphCount = std::min(glyphCount, kGlyphSpace);
    GlyphValues values(glyphCount, defaultValue);
    switch (lookup.u16(0)) {
        case kSimpleArray:
            values.SetRange(0, glyphCount, [&](uint32_t glyph) {
                return ValueOr(lookup, kSimpleArrayValuesOffset + 2 * size_t{glyph}, defaultValue);
            });
            break;
        case kSegmentSingle:
        case kSegmentArray: {
            bool single = lookup.u16(0) == kSegmentSingle;
            BinarySearchUnits segments(lookup, kSegmentBytes);
            for (size_t unit = 0; unit < segments.count; ++unit) {
                size_t at = segments.At(unit);
                uint16_t lastGlyph = lookup.u16(at), firstGlyph = lookup.u16(at + 2), value = lookup.u16(at + 4);
                // A segment array's value is the offset, from the start of the
                // lookup, of one value per glyph of the segment.
                values.SetRange(firstGlyph, lastGlyph + 1u, [&](uint32_t glyph) {
                    return single ? value : ValueOr(lookup, value + 2 * size_t{glyph - firstGlyph}, defaultValue);
                });
            }
            break;
        }
        case kSingleTable: {
            BinarySearchUnits singles(lookup, kSingleBytes);
            for (size_t unit = 0; unit < singles.count; ++unit)
                values.Set(lookup.u16(singles.At(unit)), lookup.u16(singles.At(unit) + 2));
            break;
        }
        case kTrimmedArray: {
            uint32_t firstGlyph = lookup.u16(kTrimmedFirstGlyphOffset), count = lookup.u16(kTrimmedCountOffset);
            values.SetRange(firstGlyph, firstGlyph + count, [&](uint32_t glyph) {
                return ValueOr(lookup, kTrimmedValuesOffset + 2 * size_t{glyph - firstGlyph}, defaultValue);
            });
            break;
        }
        default:
            break;
    }
    return values.Take();
}

VellHandle VellMakeArrayFromPropTable(VellView prop, uint32_t glyphCount, ErrorRecord* record) {
    if (glyphCount > kGlyphSpace) {
        record->code = kVellParamErr;
        return nullptr;
    }
    try {
        uint16_t defaultProperty = prop.u16(kDefaultPropertyOffset);
        std::vector<uint16_t> properties = prop.u16(kPropFormatOffset) == 0
                                               ? std::vector<uint16_t>(glyphCount, defaultProperty)
                                               : VellLookupValues(prop.sub(kPropLookupOffset), glyphCount,
                                                                  defaultProperty);
        auto block = std::make_unique<VellBlock>();
        block->bytes.reserve(2 * properties.size());
        for (uint16_t property : properties) {
            block->bytes.push_back(static_cast<uint8_t>(property >> 8));
            block->bytes.push_back(static_cast<uint8_t>(property));
        }
        return block;
    } catch (const std::bad_alloc&) {
        record->code = kVellMemoryErr;
        return nullptr;
    }
}

int32_t VellConvertErrorToOSStatus(int32_t frameworkStatus) {
    constexpr int32_t kIOErr = -36, kMemFullErr = -108, kResNotFound = -192;
    switch (frameworkStatus) {
        case kVellMemoryErr: return kMemFullErr;
        case kVellIOErr: return kIOErr;
        case kVellResourceErr: return kResNotFound;
        default: return frameworkStatus;
    }
}
