// Vell outlines: a glyph as contours of absolute points with the kind of
// segment each point belongs to, plus its advance width where the outline
// carries one. PostScript outlines ('CFF ', 'CFF2') are decoded by FreeType,
// which runs the charstrings with their subroutines under its own limits on
// nesting, stack and operator count; TrueType outlines ('glyf') are read here,
// since their points, flags, instructions and components are stored as they are.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "framework/VellTypes.h"
#include "framework/VellView.h"

enum class VellPointKind : uint8_t {
    Move,          // a contour's first point
    Line,          // the end of a line
    QuadControl,   // an off-curve point of a quadratic curve
    CubicControl,  // an off-curve point of a cubic curve
    CurveEnd,      // the on-curve end of a curve
};

struct VellOutlinePoint {
    int32_t x = 0;
    int32_t y = 0;
    VellPointKind kind = VellPointKind::Line;
    bool operator==(const VellOutlinePoint&) const = default;
};

struct VellOutline {
    std::vector<VellOutlinePoint> points;
    std::vector<uint32_t> contourEnds;  // one past the last point of each contour
    int32_t advance = 0;
    bool operator==(const VellOutline&) const = default;

    size_t ContourCount() const { return contourEnds.size(); }
    uint32_t ContourStart(size_t contour) const { return contour == 0 ? 0 : contourEnds[contour - 1]; }
};

// A named instance of 'fvar': its subfamily name ID and design coordinates (16.16).
struct VellNamedInstance {
    uint16_t subfamilyNameID = 0;
    std::vector<int32_t> coordinates;
};

struct VellOutlineFaceData;

// A FreeType face over bytes that outlive it.
class VellOutlineFace {
public:
    // A bare 'CFF ' table. A CID-keyed one is loaded by CID, so `cids` gives each
    // glyph's CID (the charset); empty for a name-keyed table.
    static std::unique_ptr<VellOutlineFace> OpenCFF(VellView cff, std::vector<uint16_t> cids, std::string* why);
    // An sfnt held by the face ('CFF2' with the tables FreeType needs around it).
    static std::unique_ptr<VellOutlineFace> OpenSfnt(std::vector<uint8_t> sfnt, std::string* why);
    ~VellOutlineFace();
    VellOutlineFace(const VellOutlineFace&) = delete;
    VellOutlineFace& operator=(const VellOutlineFace&) = delete;

    uint32_t GlyphCount() const;
    // The glyph's outline in font units, unhinted; the advance is the charstring's
    // width ('CFF ') or 0 where the outline carries none. False when the engine
    // refuses the glyph (a damaged charstring), with the outline left empty.
    bool Load(uint32_t glyph, VellOutline* outline);
    // The named instances of 'fvar', in stored order; empty for a face without one.
    const std::vector<VellNamedInstance>& Instances() const;
    // Outlines from now on at the default location (-1) or at a named instance.
    bool SetInstance(int instance);

private:
    VellOutlineFace() = default;
    std::unique_ptr<VellOutlineFaceData> fData;
};

// An sfnt (version 'OTTO') holding the given tables, in the given order.
std::vector<uint8_t> VellBuildSfnt(const std::vector<std::pair<VellTag, VellView>>& tables);

// ---- TrueType glyphs ----

// A component record of a composite glyph, reduced to what it means: the bits
// that say how it is placed (ARGS_ARE_XY_VALUES, ROUND_XY_TO_GRID, USE_MY_METRICS,
// OVERLAP_COMPOUND, SCALED_COMPONENT_OFFSET, UNSCALED_COMPONENT_OFFSET), the
// arguments, and its transform as a two-by-two matrix of F2Dot14 values, however
// the record spells them.
struct VellGlyphComponent {
    uint16_t glyph = 0;
    uint16_t flags = 0;
    int32_t argument1 = 0;
    int32_t argument2 = 0;
    int32_t matrix[4] = {0x4000, 0, 0, 0x4000};
    bool operator==(const VellGlyphComponent&) const = default;
};

struct VellTrueTypeGlyph {
    int16_t contourCount = 0;  // negative for a composite
    int16_t bounds[4] = {};    // xMin, yMin, xMax, yMax
    VellOutline outline;       // a simple glyph's points: on-curve, or quadratic control
    std::vector<VellGlyphComponent> components;
    VellView instructions;
};

// Decodes a glyph's bytes from 'glyf'. Flags are expanded from their repeat
// counts and coordinates from their short and long forms, so two encodings of
// the same glyph decode alike. A glyph cut short keeps what it still holds.
void VellDecodeTrueTypeGlyph(VellView bytes, VellTrueTypeGlyph* glyph);
