// Vell tuple variations: the glyph variation data of 'gvar' (and the same
// serialized form 'cvar' uses): tuple variation headers, packed point numbers and
// packed deltas. Every count is bounded by the bytes that hold it and by a work
// allowance, so hostile data yields fewer tuples or deltas, never a long loop.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "framework/VellView.h"

// Packed point numbers: all of the glyph's points, or the listed ones.
struct VellPackedPoints {
    bool all = false;
    std::vector<uint16_t> points;
    bool operator==(const VellPackedPoints&) const = default;
};
// Reads packed point numbers at *offset and moves it past them; a run cut short
// by the end of the data yields the points it holds.
VellPackedPoints VellReadPackedPoints(VellView data, size_t* offset);
// Reads up to count packed deltas at *offset (zero, byte, word or long runs) and
// moves it past them; fewer when the data ends first.
std::vector<int32_t> VellReadPackedDeltas(VellView data, size_t* offset, size_t count);

// One tuple variation of a glyph: its region (peak, and the intermediate start
// and end where the header gives them), its points and their deltas.
struct VellTupleVariation {
    std::vector<int16_t> peak;
    bool intermediate = false;
    std::vector<int16_t> start, end;
    bool privatePoints = false;
    VellPackedPoints points;
    // One per listed point, or per point of the glyph with all points.
    std::vector<int32_t> x, y;
};

// How many points a glyph's deltas cover when its tuples name all points: its
// outline points (a composite glyph: one per component) and the four phantom
// points, from the glyph's bytes in 'glyf' (empty: the phantom points alone).
size_t VellGlyphVariationPointCount(VellView glyph);

// The tuple variations of one glyph's GlyphVariationData. sharedTuples holds
// the table's shared peak tuples (axisCount F2Dot14 each). Tuples over all points
// read pointCount x and pointCount y deltas; with a pointCount of 0 (no 'glyf' to
// count them in) the deltas the data holds are split evenly. Each decoded delta
// spends one unit of *allowance; decoding stops when it is spent.
std::vector<VellTupleVariation> VellReadGlyphVariations(VellView glyphData, VellView sharedTuples,
                                                        uint16_t axisCount, size_t pointCount, size_t* allowance);
