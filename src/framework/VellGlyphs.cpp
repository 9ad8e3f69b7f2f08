#include "framework/VellGlyphs.h"

#include <unicode/uchar.h>

#include <vector>

#include "framework/VellTables.h"

namespace {

constexpr uint32_t kPostFormat1 = 0x00010000;
constexpr uint32_t kPostFormat2 = 0x00020000;
constexpr uint32_t kPostFormat25 = 0x00025000;
constexpr size_t kPostHeaderSize = 32;
constexpr size_t kStandardNameCount = 258;

// Where each glyph's name lives in one 'post' table, built once per table so
// that naming every glyph of a large font stays linear.
struct PostNameIndex {
    uint32_t format = 0;
    size_t glyphCount = 0;                      // glyphs the table names (format 2 and 2.5)
    std::vector<std::string_view> customNames;  // format 2's Pascal strings, in order
};

PostNameIndex BuildIndex(VellView post) {
    PostNameIndex index;
    index.format = post.u32(0);
    if (index.format == kPostFormat2) {
        index.glyphCount = post.records_that_fit(kPostHeaderSize + 2, post.u16(kPostHeaderSize), 2);
        size_t at = kPostHeaderSize + 2 + 2 * index.glyphCount;
        while (at < post.size()) {
            size_t length = post.u8(at);
            if (!post.has(at + 1, length)) break;
            index.customNames.push_back(post.chars(at + 1, length));
            at += 1 + length;
        }
    } else if (index.format == kPostFormat25) {
        index.glyphCount = post.records_that_fit(kPostHeaderSize + 2, post.u16(kPostHeaderSize), 1);
    }
    return index;
}

std::string NameFromIndex(VellView post, const PostNameIndex& index, uint32_t glyph) {
    switch (index.format) {
        case kPostFormat1:
            return glyph < kStandardNameCount ? kVellStandardGlyphNames[glyph] : "";
        case kPostFormat2: {
            if (glyph >= index.glyphCount) return "";
            uint16_t nameIndex = post.u16(kPostHeaderSize + 2 + 2 * size_t{glyph});
            if (nameIndex < kStandardNameCount) return kVellStandardGlyphNames[nameIndex];
            size_t custom = nameIndex - kStandardNameCount;
            return custom < index.customNames.size() ? std::string(index.customNames[custom]) : "";
        }
        case kPostFormat25: {
            if (glyph >= index.glyphCount) return "";
            int64_t standard = int64_t{glyph} + post.s8(kPostHeaderSize + 2 + size_t{glyph});
            return standard >= 0 && standard < int64_t{kStandardNameCount} ? kVellStandardGlyphNames[standard]
                                                                           : "";
        }
        default:
            return "";
    }
}

const PostNameIndex& IndexFor(std::any& slot, VellView post) {
    if (!slot.has_value()) slot = BuildIndex(post);
    return std::any_cast<const PostNameIndex&>(slot);
}

}  // namespace

int32_t VellFindPSGlyphNameFromTable(const VellHandle& post, uint32_t glyph, std::string* name) {
    name->clear();
    if (!post) return kVellNoErr;
    VellView bytes = VelmView(post);
    *name = NameFromIndex(bytes, IndexFor(post->derived, bytes), glyph);
    return kVellNoErr;
}

int32_t VellGetGlyphName(VellFontRef font, uint32_t glyph, std::string* name) {
    name->clear();
    ErrorRecord record;
    if (font == nullptr) return kVellParamErr;
    uint32_t glyphCount = VellCountFontGlyphs(font, &record);
    if (record.code != 0) return record.code;
    if (glyph >= glyphCount) return kVellParamErr;
    VellView post = VellFontTableView(font, VellMakeTag("post"), &record);
    if (record.code != 0) return record.code;
    *name = NameFromIndex(post, IndexFor(font->derived, post), glyph);
    return kVellNoErr;
}

namespace {

// Where a font's horizontal metrics lie, found once per font, so that asking for
// every glyph's metrics of a large font never searches its directory again. A
// table past the end of the file is remembered as the error it is.
struct HorizontalMetrics {
    VellView hhea, hmtx;
    uint32_t glyphCount = 0;
    ErrorRecord error;
};

const HorizontalMetrics& MetricsOf(VellFontRef font) {
    if (!font->metrics.has_value()) {
        HorizontalMetrics metrics;
        metrics.hhea = VellFontTableView(font, VellMakeTag("hhea"), &metrics.error);
        metrics.hmtx = VellFontTableView(font, VellMakeTag("hmtx"), &metrics.error);
        metrics.glyphCount = VellCountFontGlyphs(font, &metrics.error);
        font->metrics = std::move(metrics);
    }
    return std::any_cast<const HorizontalMetrics&>(font->metrics);
}

}  // namespace

void VellGetHMTXMetrics(VellFontRef font, uint32_t glyph, uint16_t* advance, int16_t* sideBearing,
                        ErrorRecord* record) {
    *advance = 0;
    *sideBearing = 0;
    if (font == nullptr) {
        record->code = kVellParamErr;
        return;
    }
    const HorizontalMetrics& metrics = MetricsOf(font);
    if (metrics.error.code != 0) {
        *record = metrics.error;
        return;
    }
    VellView hhea = metrics.hhea, hmtx = metrics.hmtx;
    if (hhea.empty() || hmtx.empty() || glyph >= metrics.glyphCount) {
        record->code = kVellParamErr;
        return;
    }
    uint32_t longMetrics = hhea.u16(kLongMetricCountOffset);
    if (glyph < longMetrics) {
        *advance = hmtx.u16(4 * size_t{glyph});
        *sideBearing = hmtx.s16(4 * size_t{glyph} + 2);
    } else {
        *advance = longMetrics > 0 ? hmtx.u16(4 * (size_t{longMetrics} - 1)) : 0;
        *sideBearing = hmtx.s16(4 * size_t{longMetrics} + 2 * (size_t{glyph} - longMetrics));
    }
}

std::string VellGetUnicodeScalarName(uint32_t codePoint, ErrorRecord* record) {
    char buffer[256];
    UErrorCode status = U_ZERO_ERROR;
    int32_t length = u_charName(static_cast<UChar32>(codePoint), U_EXTENDED_CHAR_NAME, buffer,
                                sizeof buffer, &status);
    if (U_FAILURE(status)) {
        if (record) record->code = kVellInternalErr;
        return "";
    }
    return std::string(buffer, static_cast<size_t>(length < 0 ? 0 : length));
}
