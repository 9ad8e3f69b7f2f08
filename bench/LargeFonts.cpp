#include "LargeFonts.h"

#include <string>

namespace {

constexpr uint16_t kGlyphs = 65535;
constexpr size_t kOutlineBytes = 20u << 20;

FontTables Build(bool modified) {
    FontTables font = SampleFont("Large Sans CJK");
    Bytes outlines(kOutlineBytes);
    for (size_t i = 0; i < outlines.size(); ++i) outlines[i] = static_cast<uint8_t>(i * 2654435761u >> 24);
    if (modified) outlines[outlines.size() / 2] ^= 0x5A;
    font["CFF "] = outlines;
    font["maxp"] = MakeMaxp(kGlyphs);
    font["hhea"] = MakeHhea(kGlyphs);
    std::vector<std::pair<uint16_t, int16_t>> metrics;
    std::vector<std::string> names;
    for (uint32_t glyph = 0; glyph < kGlyphs; ++glyph) {
        metrics.emplace_back(static_cast<uint16_t>(1000 + (modified ? 24 : 0)), static_cast<int16_t>(glyph % 50));
        names.push_back((modified ? "cid" : "uni") + std::to_string(glyph));
    }
    font["hmtx"] = MakeHmtx(metrics);
    font["post"] = MakePost(names);
    return font;
}

}  // namespace

FontTables LargeFont() { return Build(false); }
FontTables LargeFontModified() { return Build(true); }
