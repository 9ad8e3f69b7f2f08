#include "framework/VellGlyphData.h"

#include <algorithm>
#include <vector>

#include "framework/VellTables.h"

namespace {

constexpr size_t kIndexToLocFormatOffset = 50;
constexpr size_t kEndPtsOfContoursOffset = 10;

// Simple-glyph flag bits.
constexpr uint8_t kXShortVector = 0x02;
constexpr uint8_t kYShortVector = 0x04;
constexpr uint8_t kRepeatFlag = 0x08;
constexpr uint8_t kXSameOrPositive = 0x10;
constexpr uint8_t kYSameOrPositive = 0x20;

void Fail(ErrorRecord* record, int32_t code) {
    if (record != nullptr) record->code = code;
}

// 'loca', its format and the glyph count, without 'glyf'.
VellGlyphLocations FindLoca(VellFontRef font, ErrorRecord* record) {
    VellGlyphLocations locations;
    if (font == nullptr) {
        Fail(record, kVellParamErr);
        return locations;
    }
    ErrorRecord local;
    locations.loca = VellFontTableView(font, VellMakeTag("loca"), &local);
    VellView head = VellFontTableView(font, VellMakeTag("head"), &local);
    locations.glyphCount = VellCountFontGlyphs(font, &local);
    locations.longOffsets = head.s16(kIndexToLocFormatOffset) != 0;
    if (local.code != 0) {
        Fail(record, local.code);
        return {};
    }
    return locations;
}

void AppendU32(std::vector<uint8_t>& bytes, uint32_t value) {
    for (int shift = 24; shift >= 0; shift -= 8) bytes.push_back(static_cast<uint8_t>(value >> shift));
}

// The flag of every point the glyph's flag bytes describe, up to `points`; a
// repeat count cut off by the end of the data repeats nothing.
std::vector<uint8_t> ExpandFlags(VellView glyph, size_t& at, size_t points) {
    std::vector<uint8_t> flags;
    flags.reserve(points);
    while (flags.size() < points && at < glyph.size()) {
        uint8_t flag = glyph.u8(at++);
        size_t repeats = (flag & kRepeatFlag) && at < glyph.size() ? glyph.u8(at++) : 0;
        flags.insert(flags.end(), std::min(1 + repeats, points - flags.size()), flag);
    }
    return flags;
}

// One axis's coordinates, accumulated from their deltas, for as many points as
// the data hold. Coordinates wrap as the 16-bit values they are stored as.
std::vector<uint16_t> DecodeAxis(VellView glyph, size_t& at, const std::vector<uint8_t>& flags, uint8_t shortBit,
                                 uint8_t sameOrPositiveBit) {
    std::vector<uint16_t> coordinates;
    coordinates.reserve(flags.size());
    uint16_t value = 0;
    for (uint8_t flag : flags) {
        if (flag & shortBit) {
            if (!glyph.has(at, 1)) break;
            uint8_t delta = glyph.u8(at++);
            value = static_cast<uint16_t>((flag & sameOrPositiveBit) ? value + delta : value - delta);
        } else if (!(flag & sameOrPositiveBit)) {
            if (!glyph.has(at, 2)) break;
            value = static_cast<uint16_t>(value + glyph.u16(at));
            at += 2;
        }
        coordinates.push_back(value);
    }
    return coordinates;
}

int32_t ToFixed(uint16_t coordinate) { return static_cast<int32_t>(static_cast<uint32_t>(coordinate) << 16); }

}  // namespace

VellGlyphLocations VellFindGlyphLocations(VellFontRef font, ErrorRecord* record) {
    ErrorRecord local;
    VellGlyphLocations locations = FindLoca(font, &local);
    if (local.code == 0) locations.glyf = VellFontTableView(font, VellMakeTag("glyf"), &local);
    if (local.code != 0) {
        Fail(record, local.code);
        return {};
    }
    return locations;
}

uint32_t VellGlyphOffset(const VellGlyphLocations& locations, uint32_t index) {
    if (locations.longOffsets) return locations.loca.u32(4 * size_t{index});
    return 2 * uint32_t{locations.loca.u16(2 * size_t{index})};
}

VellView VellGetTTGlyphBytes(const VellGlyphLocations& locations, uint32_t glyph, ErrorRecord* record) {
    if (glyph >= locations.glyphCount) {
        Fail(record, kVellParamErr);
        return {};
    }
    uint32_t start = VellGlyphOffset(locations, glyph);
    uint32_t end = VellGlyphOffset(locations, glyph + 1);
    if (end < start || end > locations.glyf.size()) {
        Fail(record, kVellBadTableErr);
        return {};
    }
    return locations.glyf.sub(start, end - start);
}

VellHandle VellGetTTGlyphData(const VellGlyphLocations& locations, uint32_t glyph, ErrorRecord* record) {
    VellView data = VellGetTTGlyphBytes(locations, glyph, record);
    if (data.empty()) return nullptr;
    return VelmNewHandle({data.data(), data.size()});
}

VellHandle VellGetTTGlyphData(VellFontRef font, uint32_t glyph, ErrorRecord* record) {
    ErrorRecord local;
    VellGlyphLocations locations = VellFindGlyphLocations(font, &local);
    if (local.code != 0) {
        Fail(record, local.code);
        return nullptr;
    }
    return VellGetTTGlyphData(locations, glyph, record);
}

uint32_t VelmGetPtrSize(const VellHandle& pointer, ErrorRecord* record) {
    if (!pointer) {
        Fail(record, kVellParamErr);
        return 0;
    }
    return static_cast<uint32_t>(pointer->bytes.size());
}

VellHandle VellMakeLongLOCA(VellFontRef font, ErrorRecord* record) {
    ErrorRecord local;
    VellGlyphLocations locations = FindLoca(font, &local);
    if (local.code != 0) {
        Fail(record, local.code);
        return nullptr;
    }
    std::vector<uint8_t> offsets;
    offsets.reserve(4 * (size_t{locations.glyphCount} + 1));
    for (uint32_t index = 0; index <= locations.glyphCount; ++index)
        AppendU32(offsets, VellGlyphOffset(locations, index));
    return VelmNewHandle(offsets);
}

VellHandle VellExtractGLYFCoords(const VellHandle& glyphData, ErrorRecord*) {
    VellView glyph = VelmView(glyphData);
    std::vector<uint8_t> block;
    int16_t contours = glyph.s16(0);
    if (contours <= 0) {
        AppendU32(block, 0);
        return VelmNewHandle(block);
    }
    size_t lastEndPoint = glyph.u16(kEndPtsOfContoursOffset + 2 * (size_t(contours) - 1));
    size_t instructionLengthAt = kEndPtsOfContoursOffset + 2 * size_t(contours);
    size_t at = instructionLengthAt + 2 + glyph.u16(instructionLengthAt);
    std::vector<uint8_t> flags = ExpandFlags(glyph, at, lastEndPoint + 1);
    std::vector<uint16_t> xs = DecodeAxis(glyph, at, flags, kXShortVector, kXSameOrPositive);
    // The y deltas follow every x delta: with the x deltas cut short there are none.
    if (xs.size() < flags.size()) at = glyph.size();
    std::vector<uint16_t> ys = DecodeAxis(glyph, at, flags, kYShortVector, kYSameOrPositive);
    size_t points = std::min(xs.size(), ys.size());
    block.reserve(4 + 8 * points);
    AppendU32(block, static_cast<uint32_t>(points));
    for (size_t p = 0; p < points; ++p) {
        AppendU32(block, static_cast<uint32_t>(ToFixed(xs[p])));
        AppendU32(block, static_cast<uint32_t>(ToFixed(ys[p])));
    }
    return VelmNewHandle(block);
}
