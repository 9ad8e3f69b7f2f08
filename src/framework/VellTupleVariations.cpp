#include "framework/VellTupleVariations.h"

#include <algorithm>

namespace {

// Packed point numbers: a count (one byte, or two with the high bit 0x80 set;
// 0 means all points), then runs whose control byte gives a length of 1 to 128
// and, with POINTS_ARE_WORDS (0x80), 16-bit numbers; each number is the
// difference from the previous point.
constexpr uint8_t kPointsAreWords = 0x80;
constexpr uint8_t kPointRunCountMask = 0x7F;

// Packed deltas: runs of 1 to 64 deltas, zero (0x80), 16-bit (0x40), 32-bit
// (both bits) or 8-bit (neither).
constexpr uint8_t kDeltasAreZero = 0x80;
constexpr uint8_t kDeltasAreWords = 0x40;
constexpr uint8_t kDeltaRunCountMask = 0x3F;

// GlyphVariationData: tupleVariationCount (with SHARED_POINT_NUMBERS), dataOffset,
// then the tuple variation headers.
constexpr uint16_t kSharedPointNumbers = 0x8000;
constexpr uint16_t kTupleCountMask = 0x0FFF;
constexpr size_t kHeadersOffset = 4;
// TupleVariationHeader: variationDataSize, tupleIndex, then the tuples it embeds.
constexpr uint16_t kEmbeddedPeakTuple = 0x8000;
constexpr uint16_t kIntermediateRegion = 0x4000;
constexpr uint16_t kPrivatePointNumbers = 0x2000;
constexpr uint16_t kTupleIndexMask = 0x0FFF;

// A composite glyph's component records: flags, glyphIndex, two arguments of one
// or two bytes each, then none, one, two or four F2Dot14 scale values.
constexpr uint16_t kArgumentsAreWords = 0x0001;
constexpr uint16_t kHaveScale = 0x0008;
constexpr uint16_t kMoreComponents = 0x0020;
constexpr uint16_t kHaveXAndYScale = 0x0040;
constexpr uint16_t kHaveTwoByTwo = 0x0080;
constexpr size_t kPhantomPoints = 4;
constexpr size_t kGlyphHeaderBytes = 10;

std::vector<int16_t> ReadTuple(VellView data, size_t offset, uint16_t axisCount) {
    std::vector<int16_t> tuple(axisCount);
    for (size_t axis = 0; axis < axisCount; ++axis) tuple[axis] = data.s16(offset + 2 * axis);
    return tuple;
}

}  // namespace

size_t VellGlyphVariationPointCount(VellView glyph) {
    if (glyph.size() < kGlyphHeaderBytes) return kPhantomPoints;
    int16_t contours = glyph.s16(0);
    if (contours > 0) return size_t{glyph.u16(kGlyphHeaderBytes + 2 * (size_t(contours) - 1))} + 1 + kPhantomPoints;
    size_t components = 0;
    uint16_t flags = kMoreComponents;
    for (size_t at = kGlyphHeaderBytes; (flags & kMoreComponents) && at + 4 <= glyph.size(); ++components) {
        flags = glyph.u16(at);
        at += 4 + ((flags & kArgumentsAreWords) ? 4 : 2);
        at += (flags & kHaveTwoByTwo) ? 8 : (flags & kHaveXAndYScale) ? 4 : (flags & kHaveScale) ? 2 : 0;
    }
    return components + kPhantomPoints;
}

VellPackedPoints VellReadPackedPoints(VellView data, size_t* offset) {
    VellPackedPoints result;
    size_t at = *offset;
    size_t count = data.u8(at++);
    if (count & 0x80) count = (count & 0x7F) << 8 | data.u8(at++);
    if (count == 0) {
        result.all = true;
        *offset = at;
        return result;
    }
    uint16_t point = 0;
    while (result.points.size() < count && at < data.size()) {
        uint8_t control = data.u8(at++);
        size_t run = std::min<size_t>((control & kPointRunCountMask) + 1, count - result.points.size());
        bool words = control & kPointsAreWords;
        for (size_t i = 0; i < run && at < data.size(); ++i) {
            point = static_cast<uint16_t>(point + (words ? data.u16(at) : data.u8(at)));
            at += words ? 2 : 1;
            result.points.push_back(point);
        }
    }
    *offset = at;
    return result;
}

std::vector<int32_t> VellReadPackedDeltas(VellView data, size_t* offset, size_t count) {
    std::vector<int32_t> deltas;
    size_t at = *offset;
    while (deltas.size() < count && at < data.size()) {
        uint8_t control = data.u8(at++);
        size_t run = std::min<size_t>((control & kDeltaRunCountMask) + 1, count - deltas.size());
        bool zero = control & kDeltasAreZero, words = control & kDeltasAreWords;
        if (zero && !words) {
            deltas.insert(deltas.end(), run, 0);
            continue;
        }
        size_t width = zero ? 4 : words ? 2 : 1;
        for (size_t i = 0; i < run && at < data.size(); ++i, at += width)
            deltas.push_back(width == 4 ? data.s32(at) : width == 2 ? data.s16(at) : data.s8(at));
    }
    *offset = at;
    return deltas;
}

std::vector<VellTupleVariation> VellReadGlyphVariations(VellView glyphData, VellView sharedTuples,
                                                        uint16_t axisCount, size_t pointCount, size_t* allowance) {
    std::vector<VellTupleVariation> tuples;
    uint16_t countField = glyphData.u16(0);
    size_t tupleCount = countField & kTupleCountMask;
    size_t dataAt = glyphData.u16(2);
    VellPackedPoints shared;
    if (countField & kSharedPointNumbers) shared = VellReadPackedPoints(glyphData, &dataAt);

    size_t header = kHeadersOffset;
    size_t sharedCount = sharedTuples.records_that_fit(0, SIZE_MAX, size_t{axisCount} * 2);
    for (size_t t = 0; t < tupleCount && header < glyphData.size() && *allowance > 0; ++t) {
        uint16_t dataSize = glyphData.u16(header), tupleIndex = glyphData.u16(header + 2);
        header += 4;
        // Reading a peak costs one unit per axis, so that tuples which all name one
        // shared tuple cannot repeat a huge axis count without end.
        *allowance -= std::min<size_t>(*allowance, axisCount);
        VellTupleVariation tuple;
        if (tupleIndex & kEmbeddedPeakTuple) {
            tuple.peak = ReadTuple(glyphData, header, axisCount);
            header += 2 * size_t{axisCount};
        } else {
            size_t index = tupleIndex & kTupleIndexMask;
            tuple.peak = index < sharedCount ? ReadTuple(sharedTuples, index * 2 * size_t{axisCount}, axisCount)
                                             : std::vector<int16_t>(axisCount);
        }
        if (tupleIndex & kIntermediateRegion) {
            tuple.intermediate = true;
            tuple.start = ReadTuple(glyphData, header, axisCount);
            tuple.end = ReadTuple(glyphData, header + 2 * size_t{axisCount}, axisCount);
            header += 4 * size_t{axisCount};
        }

        // The tuple's serialized data: its own points, then x and y deltas.
        VellView data = glyphData.sub(dataAt, dataSize);
        dataAt += dataSize;
        size_t at = 0;
        tuple.privatePoints = tupleIndex & kPrivatePointNumbers;
        tuple.points = tuple.privatePoints ? VellReadPackedPoints(data, &at) : shared;
        size_t count = tuple.points.all ? (pointCount != 0 ? pointCount : data.size() * 64)
                                        : tuple.points.points.size();
        count = std::min(count, *allowance);
        if (tuple.points.all && pointCount == 0) {
            std::vector<int32_t> both = VellReadPackedDeltas(data, &at, count);
            size_t half = both.size() / 2;
            tuple.x.assign(both.begin(), both.begin() + half);
            tuple.y.assign(both.begin() + half, both.begin() + 2 * half);
        } else {
            tuple.x = VellReadPackedDeltas(data, &at, count);
            tuple.y = VellReadPackedDeltas(data, &at, count);
        }
        *allowance -= std::min(*allowance, tuple.x.size() + tuple.y.size() + 1);
        tuples.push_back(std::move(tuple));
    }
    return tuples;
}
