#include "dumpers/TFontContext.h"

#include <string_view>
#include <unordered_set>

#include "VellCmpErrors.h"
#include "dumpers/TTableDumper.h"
#include "framework/VellCFF.h"
#include "framework/VellTables.h"

VellView TFontContext::Table(VellTag tag) {
    auto found = fTables.find(tag);
    if (found != fTables.end()) return found->second;
    ErrorRecord record;
    VellView view = VellFontTableView(fFont, tag, &record);
    ThrowIfVellError(record);
    fTables.emplace(tag, view);
    return view;
}

VellHandle TFontContext::CopyTable(VellTag tag) {
    ErrorRecord record;
    VellHandle table = VellGetFontTableHandle(fFont, tag, nullptr, &record);
    ThrowIfVellError(record);
    return table;
}

uint32_t TFontContext::GlyphCount() {
    if (!fGlyphCount) {
        ErrorRecord record;
        uint32_t count = VellCountFontGlyphs(fFont, &record);
        ThrowIfVellError(record);
        fGlyphCount = count;
    }
    return *fGlyphCount;
}

const VellHandle& TFontContext::Post() {
    if (!fPost) fPost = CopyTable(VellMakeTag("post"));
    return *fPost;
}

std::string TFontContext::GlyphName(uint32_t glyph) {
    std::string name = PostScriptGlyphName(Post(), GlyphCount(), glyph);
    if (name.empty() && gOpenType) {
        const std::vector<std::string>& charset = CharsetGlyphNames();
        if (glyph < charset.size()) name = charset[glyph];
    }
    return name;
}

const std::vector<std::string>& TFontContext::CharsetGlyphNames() {
    if (fCharsetNames) return *fCharsetNames;
    fCharsetNames.emplace();
    // Read without throwing: a font whose 'post', 'maxp' or 'CFF ' the framework
    // cannot read names nothing here, and the table's own account says why.
    ErrorRecord record;
    uint32_t postVersion = VellFontTableView(fFont, VellMakeTag("post"), &record).u32(0);
    uint32_t glyphCount = VellCountFontGlyphs(fFont, &record);
    VellView cff = VellFontTableView(fFont, VellMakeTag("CFF "), &record);
    // 'post' formats 1 and 2 name glyphs; 2.5 is deprecated and 3 names none.
    if (record.code != 0 || postVersion == 0x00010000 || postVersion == 0x00020000) return *fCharsetNames;
    std::vector<std::string> names;
    if (!VellCFFGlyphNames(cff, &names) || names.size() != glyphCount) return *fCharsetNames;
    std::unordered_set<std::string_view> seen;
    for (const std::string& name : names)
        if (name.empty() || !seen.insert(name).second) return *fCharsetNames;
    *fCharsetNames = std::move(names);
    return *fCharsetNames;
}

bool TFontContext::HasTable(VellTag tag) const {
    for (const VellTableEntry& entry : fFont->tables)
        if (entry.tag == tag) return true;
    return false;
}

uint16_t TFontContext::LongMetricCount(VellTag metricsTag) {
    VellTag header = metricsTag == VellMakeTag("vmtx") ? VellMakeTag("vhea") : VellMakeTag("hhea");
    // A header that cannot be read counts no long metrics: a comparison has
    // already failed on it (CheckSideTables), and a dump lists no long metrics.
    return VellFontTableView(fFont, header).u16(kLongMetricCountOffset);
}

void TFontContext::CheckSideTables() {
    GlyphCount();
    Post();
    Table(VellMakeTag("hhea"));
    Table(VellMakeTag("vhea"));
}
