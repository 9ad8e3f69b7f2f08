#include "framework/VellOutlines.h"

#include <ft2build.h>
#include FT_FREETYPE_H
#include FT_MULTIPLE_MASTERS_H
#include FT_OUTLINE_H

#include <algorithm>

struct VellOutlineFaceData {
    FT_Library library = nullptr;
    FT_Face face = nullptr;
    std::vector<uint8_t> sfnt;  // the bytes of a face built here
    std::vector<uint16_t> cids;
    std::vector<VellNamedInstance> instances;
    bool charstringWidths = false;
};

namespace {

// How FreeType walks an outline into points: each callback adds the points of
// one segment. A closing line back to the contour's first point is what closing
// the contour draws anyway, and a line of no length draws nothing, so neither
// is kept: outlines that differ only there are the same shape.
struct Decomposer {
    VellOutline* outline;

    void Close() {
        auto& points = outline->points;
        uint32_t start = outline->contourEnds.empty() ? 0 : outline->contourEnds.back();
        if (points.size() == start) return;
        if (points.size() - start > 1 && points.back().kind == VellPointKind::Line &&
            points.back().x == points[start].x && points.back().y == points[start].y)
            points.pop_back();
        if (points.size() - start == 1)
            points.pop_back();  // a lone moveto draws nothing
        else
            outline->contourEnds.push_back(static_cast<uint32_t>(points.size()));
    }
    void Add(const FT_Vector* to, VellPointKind kind) {
        outline->points.push_back({static_cast<int32_t>(to->x), static_cast<int32_t>(to->y), kind});
    }

    static Decomposer& From(void* user) { return *static_cast<Decomposer*>(user); }
    static int MoveTo(const FT_Vector* to, void* user) {
        From(user).Close();
        From(user).Add(to, VellPointKind::Move);
        return 0;
    }
    static int LineTo(const FT_Vector* to, void* user) {
        const auto& points = From(user).outline->points;
        if (points.empty() || points.back().x != to->x || points.back().y != to->y)
            From(user).Add(to, VellPointKind::Line);
        return 0;
    }
    static int ConicTo(const FT_Vector* control, const FT_Vector* to, void* user) {
        From(user).Add(control, VellPointKind::QuadControl);
        From(user).Add(to, VellPointKind::CurveEnd);
        return 0;
    }
    static int CubicTo(const FT_Vector* control1, const FT_Vector* control2, const FT_Vector* to, void* user) {
        From(user).Add(control1, VellPointKind::CubicControl);
        From(user).Add(control2, VellPointKind::CubicControl);
        From(user).Add(to, VellPointKind::CurveEnd);
        return 0;
    }
};

constexpr FT_Outline_Funcs kDecomposeFuncs = {Decomposer::MoveTo, Decomposer::LineTo, Decomposer::ConicTo,
                                              Decomposer::CubicTo, 0, 0};

std::unique_ptr<VellOutlineFaceData> OpenFace(const uint8_t* bytes, size_t size, std::string* why) {
    auto data = std::make_unique<VellOutlineFaceData>();
    if (FT_Init_FreeType(&data->library) != 0) {
        *why = "FreeType could not be started";
        return nullptr;
    }
    FT_Error error = FT_New_Memory_Face(data->library, bytes, static_cast<FT_Long>(size), 0, &data->face);
    if (error != 0 || data->face == nullptr || !FT_IS_SCALABLE(data->face)) {
        *why = "FreeType cannot open the outlines (error " + std::to_string(error) + ")";
        if (data->face != nullptr) FT_Done_Face(data->face);
        data->face = nullptr;
        FT_Done_FreeType(data->library);
        data->library = nullptr;
        return nullptr;
    }
    FT_MM_Var* variations = nullptr;
    if (FT_HAS_MULTIPLE_MASTERS(data->face) && FT_Get_MM_Var(data->face, &variations) == 0) {
        for (FT_UInt i = 0; i < variations->num_namedstyles; ++i) {
            VellNamedInstance instance;
            instance.subfamilyNameID = static_cast<uint16_t>(variations->namedstyle[i].strid);
            for (FT_UInt axis = 0; axis < variations->num_axis; ++axis)
                instance.coordinates.push_back(static_cast<int32_t>(variations->namedstyle[i].coords[axis]));
            data->instances.push_back(std::move(instance));
        }
        FT_Done_MM_Var(data->library, variations);
        // A 'CFF2' blend is read only once coordinates are set, the default's too.
        FT_Set_Var_Design_Coordinates(data->face, 0, nullptr);
    }
    return data;
}

void PutU16(std::vector<uint8_t>& bytes, size_t at, uint32_t value) {
    bytes[at] = static_cast<uint8_t>(value >> 8);
    bytes[at + 1] = static_cast<uint8_t>(value);
}

void PutU32(std::vector<uint8_t>& bytes, size_t at, uint32_t value) {
    PutU16(bytes, at, value >> 16);
    PutU16(bytes, at + 2, value & 0xFFFF);
}

}  // namespace

std::unique_ptr<VellOutlineFace> VellOutlineFace::OpenCFF(VellView cff, std::vector<uint16_t> cids,
                                                          std::string* why) {
    auto data = OpenFace(cff.data(), cff.size(), why);
    if (!data) return nullptr;
    data->cids = std::move(cids);
    data->charstringWidths = true;
    std::unique_ptr<VellOutlineFace> face(new VellOutlineFace());
    face->fData = std::move(data);
    return face;
}

std::unique_ptr<VellOutlineFace> VellOutlineFace::OpenSfnt(std::vector<uint8_t> sfnt, std::string* why) {
    // The bytes move into the face before FreeType sees them, so that they stay put.
    auto held = std::make_unique<std::vector<uint8_t>>(std::move(sfnt));
    auto data = OpenFace(held->data(), held->size(), why);
    if (!data) return nullptr;
    data->sfnt = std::move(*held);
    std::unique_ptr<VellOutlineFace> face(new VellOutlineFace());
    face->fData = std::move(data);
    return face;
}

VellOutlineFace::~VellOutlineFace() {
    if (fData && fData->face != nullptr) FT_Done_Face(fData->face);
    if (fData && fData->library != nullptr) FT_Done_FreeType(fData->library);
}

uint32_t VellOutlineFace::GlyphCount() const { return static_cast<uint32_t>(fData->face->num_glyphs); }

const std::vector<VellNamedInstance>& VellOutlineFace::Instances() const { return fData->instances; }

bool VellOutlineFace::SetInstance(int instance) {
    if (instance < 0) return FT_Set_Var_Design_Coordinates(fData->face, 0, nullptr) == 0;
    if (static_cast<size_t>(instance) >= fData->instances.size()) return false;
    std::vector<FT_Fixed> coordinates(fData->instances[instance].coordinates.begin(),
                                      fData->instances[instance].coordinates.end());
    return FT_Set_Var_Design_Coordinates(fData->face, static_cast<FT_UInt>(coordinates.size()),
                                         coordinates.data()) == 0;
}

bool VellOutlineFace::Load(uint32_t glyph, VellOutline* outline) {
    *outline = VellOutline{};
    // A CID-keyed CFF read bare is indexed by CID; glyph 0 is CID 0 whatever the charset says.
    uint32_t index = glyph;
    if (!fData->cids.empty()) {
        if (glyph >= fData->cids.size()) return false;
        index = glyph == 0 ? 0 : fData->cids[glyph];
    }
    FT_Face face = fData->face;
    if (FT_Load_Glyph(face, index, FT_LOAD_NO_SCALE | FT_LOAD_NO_HINTING | FT_LOAD_NO_BITMAP) != 0) return false;
    if (face->glyph->format != FT_GLYPH_FORMAT_OUTLINE) return false;
    Decomposer decomposer{outline};
    if (FT_Outline_Decompose(&face->glyph->outline, &kDecomposeFuncs, &decomposer) != 0) {
        *outline = VellOutline{};
        return false;
    }
    decomposer.Close();
    if (fData->charstringWidths) outline->advance = static_cast<int32_t>(face->glyph->metrics.horiAdvance);
    return true;
}

std::vector<uint8_t> VellBuildSfnt(const std::vector<std::pair<VellTag, VellView>>& tables) {
    auto sorted = tables;
    std::sort(sorted.begin(), sorted.end(), [](const auto& a, const auto& b) { return a.first < b.first; });
    size_t directoryBytes = 12 + 16 * sorted.size();
    size_t total = directoryBytes;
    for (const auto& table : sorted) total += (table.second.size() + 3) & ~size_t{3};
    std::vector<uint8_t> sfnt(total, 0);
    PutU32(sfnt, 0, 0x4F54544F);  // 'OTTO'
    uint16_t count = static_cast<uint16_t>(sorted.size());
    uint16_t power = 1, log2 = 0;
    while (power * 2 <= count) {
        power *= 2;
        ++log2;
    }
    PutU16(sfnt, 4, count);
    PutU16(sfnt, 6, power * 16u);
    PutU16(sfnt, 8, log2);
    PutU16(sfnt, 10, count * 16u - power * 16u);
    size_t at = directoryBytes;
    for (size_t i = 0; i < sorted.size(); ++i) {
        VellView bytes = sorted[i].second;
        PutU32(sfnt, 12 + 16 * i, sorted[i].first);
        PutU32(sfnt, 12 + 16 * i + 8, static_cast<uint32_t>(at));
        PutU32(sfnt, 12 + 16 * i + 12, static_cast<uint32_t>(bytes.size()));
        if (!bytes.empty()) std::copy(bytes.data(), bytes.data() + bytes.size(), sfnt.begin() + static_cast<long>(at));
        at += (bytes.size() + 3) & ~size_t{3};
    }
    return sfnt;
}

// ---- TrueType glyphs ----

namespace {

constexpr uint8_t kOnCurve = 0x01;
constexpr uint8_t kXShort = 0x02;
constexpr uint8_t kYShort = 0x04;
constexpr uint8_t kRepeat = 0x08;
constexpr uint8_t kXSameOrPositive = 0x10;
constexpr uint8_t kYSameOrPositive = 0x20;

constexpr uint16_t kArgsAreWords = 0x0001;
constexpr uint16_t kArgsAreXYValues = 0x0002;
constexpr uint16_t kHaveScale = 0x0008;
constexpr uint16_t kMoreComponents = 0x0020;
constexpr uint16_t kHaveXYScale = 0x0040;
constexpr uint16_t kHaveTwoByTwo = 0x0080;
constexpr uint16_t kHaveInstructions = 0x0100;
// ARGS_ARE_XY_VALUES, ROUND_XY_TO_GRID, USE_MY_METRICS, OVERLAP_COMPOUND,
// SCALED_COMPONENT_OFFSET, UNSCALED_COMPONENT_OFFSET: the bits that change where
// or how a component is drawn, not how its record is laid out.
constexpr uint16_t kMeaningfulComponentFlags = 0x1E06;

void DecodeSimpleGlyph(VellView bytes, VellTrueTypeGlyph* glyph) {
    size_t contours = bytes.records_that_fit(10, static_cast<size_t>(glyph->contourCount), 2);
    std::vector<uint32_t> ends;
    uint32_t pointCount = 0;
    for (size_t c = 0; c < contours; ++c) {
        // End points that go backwards close an empty contour at the last end.
        pointCount = std::max<uint32_t>(pointCount, uint32_t{bytes.u16(10 + 2 * c)} + 1);
        ends.push_back(pointCount);
    }
    size_t at = 10 + 2 * contours;
    uint16_t instructionLength = bytes.u16(at);
    glyph->instructions = bytes.sub(at + 2, instructionLength);
    at += 2 + size_t{instructionLength};

    std::vector<uint8_t> flags;
    flags.reserve(pointCount);
    while (flags.size() < pointCount && at < bytes.size()) {
        uint8_t flag = bytes.u8(at++);
        size_t repeat = 1 + ((flag & kRepeat) ? bytes.u8(at++) : 0);
        for (size_t k = 0; k < repeat && flags.size() < pointCount; ++k) flags.push_back(flag);
    }
    auto& points = glyph->outline.points;
    points.resize(flags.size());
    int32_t value = 0;
    for (size_t p = 0; p < flags.size(); ++p) {
        if (flags[p] & kXShort) {
            uint8_t delta = bytes.u8(at++);
            value += (flags[p] & kXSameOrPositive) ? delta : -delta;
        } else if (!(flags[p] & kXSameOrPositive)) {
            value += bytes.s16(at);
            at += 2;
        }
        points[p].x = value;
    }
    value = 0;
    for (size_t p = 0; p < flags.size(); ++p) {
        if (flags[p] & kYShort) {
            uint8_t delta = bytes.u8(at++);
            value += (flags[p] & kYSameOrPositive) ? delta : -delta;
        } else if (!(flags[p] & kYSameOrPositive)) {
            value += bytes.s16(at);
            at += 2;
        }
        points[p].y = value;
    }
    uint32_t start = 0;
    for (uint32_t end : ends) {
        end = std::min<uint32_t>(end, static_cast<uint32_t>(points.size()));
        for (uint32_t p = start; p < end; ++p)
            points[p].kind = !(flags[p] & kOnCurve) ? VellPointKind::QuadControl
                             : p == start           ? VellPointKind::Move
                                                    : VellPointKind::Line;
        glyph->outline.contourEnds.push_back(end);
        start = end;
    }
}

void DecodeCompositeGlyph(VellView bytes, VellTrueTypeGlyph* glyph) {
    size_t at = 10;
    uint16_t flags = 0;
    // Each record takes at least six bytes, so the list ends with the glyph's bytes.
    do {
        if (!bytes.has(at, 6)) return;
        flags = bytes.u16(at);
        VellGlyphComponent component;
        component.glyph = bytes.u16(at + 2);
        component.flags = flags & kMeaningfulComponentFlags;
        bool xy = flags & kArgsAreXYValues;
        if (flags & kArgsAreWords) {
            component.argument1 = xy ? bytes.s16(at + 4) : bytes.u16(at + 4);
            component.argument2 = xy ? bytes.s16(at + 6) : bytes.u16(at + 6);
            at += 8;
        } else {
            component.argument1 = xy ? bytes.s8(at + 4) : bytes.u8(at + 4);
            component.argument2 = xy ? bytes.s8(at + 5) : bytes.u8(at + 5);
            at += 6;
        }
        if (flags & kHaveScale) {
            component.matrix[0] = component.matrix[3] = bytes.s16(at);
            at += 2;
        } else if (flags & kHaveXYScale) {
            component.matrix[0] = bytes.s16(at);
            component.matrix[3] = bytes.s16(at + 2);
            at += 4;
        } else if (flags & kHaveTwoByTwo) {
            for (int k = 0; k < 4; ++k) component.matrix[k] = bytes.s16(at + 2 * k);
            at += 8;
        }
        glyph->components.push_back(component);
    } while (flags & kMoreComponents);
    if (flags & kHaveInstructions) glyph->instructions = bytes.sub(at + 2, bytes.u16(at));
}

}  // namespace

void VellDecodeTrueTypeGlyph(VellView bytes, VellTrueTypeGlyph* glyph) {
    *glyph = VellTrueTypeGlyph{};
    if (bytes.empty()) return;
    glyph->contourCount = bytes.s16(0);
    for (int k = 0; k < 4; ++k) glyph->bounds[k] = bytes.s16(2 + 2 * k);
    if (glyph->contourCount > 0)
        DecodeSimpleGlyph(bytes, glyph);
    else if (glyph->contourCount < 0)
        DecodeCompositeGlyph(bytes, glyph);
}
