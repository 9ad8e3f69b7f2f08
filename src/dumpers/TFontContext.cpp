#include "dumpers/TFontContext.h"

#include "VellCmpErrors.h"
#include "dumpers/TTableDumper.h"
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

std::string TFontContext::GlyphName(uint32_t glyph) { return PostScriptGlyphName(Post(), GlyphCount(), glyph); }

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
