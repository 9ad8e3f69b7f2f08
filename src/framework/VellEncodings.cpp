#include "framework/VellEncodings.h"

#include <algorithm>
#include <any>
#include <iterator>
#include <map>
#include <tuple>

#include "framework/VellTables.h"

namespace {

constexpr size_t kEncodingRecordsOffset = 4;
constexpr size_t kEncodingRecordSize = 8;
constexpr uint16_t kVariationSequencesFormat = 14;
constexpr uint32_t kLastCodePoint = 0x10FFFF;
constexpr uint64_t kLastGlyph = 0xFFFF;

// Format 8 keeps its group count after the 8192-byte is32 bitmap; 12 and 13 after
// the 12-byte header.
constexpr size_t kFormat8GroupCountOffset = 12 + 8192;
constexpr size_t kFormat12GroupCountOffset = 12;
constexpr size_t kGroupSize = 12;

using Triple = std::tuple<int32_t, int32_t, int32_t>;

struct Encoding {
    Triple triple;    // platform, script, language, each one above its sfnt value
    uint32_t offset;  // of the subtable, from the start of the 'cmap'
};

// The encodings of a 'cmap' in stored order, and the same sorted by triple with ties
// in index order, so that finding one stays a binary search even in a damaged
// 'cmap' of thousands of records.
struct EncodingList {
    std::vector<Encoding> encodings;
    std::vector<std::pair<Triple, uint32_t>> byTriple;  // (triple, 1-based index)
};

uint32_t LanguageField(VellView subtable, uint16_t format) {
    switch (format) {
        case 0: case 2: case 4: case 6: return subtable.u16(4);
        case 8: case 10: case 12: case 13: return subtable.u32(8);
        default: return 0;
    }
}

EncodingList ListEncodings(VellView cmap) {
    EncodingList list;
    size_t records = cmap.records_that_fit(kEncodingRecordsOffset, cmap.u16(2), kEncodingRecordSize);
    for (size_t record = 0; record < records; ++record) {
        size_t at = kEncodingRecordsOffset + record * kEncodingRecordSize;
        uint32_t offset = cmap.u32(at + 4);
        VellView subtable = cmap.sub(offset);
        uint16_t format = subtable.u16(0);
        // Variation sequences refine other subtables' mappings and map no code themselves.
        if (format == kVariationSequencesFormat) continue;
        Triple triple{cmap.u16(at) + 1, cmap.u16(at + 2) + 1,
                      static_cast<int32_t>(LanguageField(subtable, format) + 1u)};
        list.encodings.push_back({triple, offset});
        list.byTriple.emplace_back(triple, static_cast<uint32_t>(list.encodings.size()));
    }
    std::sort(list.byTriple.begin(), list.byTriple.end());
    return list;
}

const EncodingList& EncodingsOf(std::any& slot, VellView cmap) {
    if (!slot.has_value()) slot = ListEncodings(cmap);
    return std::any_cast<const EncodingList&>(slot);
}

// The font's encoding list, or null with the record's code set.
const EncodingList* FontEncodings(VellFontRef font, ErrorRecord* record) {
    if (font == nullptr) {
        record->code = kVellParamErr;
        return nullptr;
    }
    VellView cmap = VellFontTableView(font, VellMakeTag("cmap"), record);
    if (record->code != 0) return nullptr;
    return &EncodingsOf(font->encodings, cmap);
}

// The mappings of one subtable as they are read, in table order. A code keeps the
// first mapping that reaches it (one to glyph 0 too, which is then not listed),
// and the codes already reached are kept as disjoint ranges, so that overlapping
// ranges in a damaged subtable cost no more than the codes they add: an array
// never holds more than one entry per code point.
class MappingCollector {
public:
    // Maps each code of first..last that no earlier range reached to glyphOf(code).
    template <typename GlyphOf>
    void AddRange(uint64_t first, uint64_t last, GlyphOf glyphOf) {
        last = std::min<uint64_t>(last, kLastCodePoint);
        if (first > last) return;
        auto next = fReached.upper_bound(static_cast<uint32_t>(first));
        if (next != fReached.begin() && std::prev(next)->second >= first) --next;
        // Well-formed subtables list their ranges in ascending order and land here.
        if (next == fReached.end()) {
            Emit(first, last, glyphOf);
            fReached.emplace_hint(next, static_cast<uint32_t>(first), static_cast<uint32_t>(last));
            return;
        }
        uint64_t from = first, mergedFirst = first, mergedLast = last;
        while (next != fReached.end() && next->first <= last) {
            if (next->first > from) Emit(from, next->first - 1u, glyphOf);
            from = std::max<uint64_t>(from, uint64_t{next->second} + 1);
            mergedFirst = std::min<uint64_t>(mergedFirst, next->first);
            mergedLast = std::max<uint64_t>(mergedLast, next->second);
            next = fReached.erase(next);
        }
        if (from <= last) Emit(from, last, glyphOf);
        fReached.emplace(static_cast<uint32_t>(mergedFirst), static_cast<uint32_t>(mergedLast));
    }

    VellCGArray Finish() {
        auto byCode = [](const VellCGPair& a, const VellCGPair& b) { return a.code < b.code; };
        if (!fAscending) std::sort(fPairs.begin(), fPairs.end(), byCode);
        return std::move(fPairs);
    }

private:
    template <typename GlyphOf>
    void Emit(uint64_t first, uint64_t last, GlyphOf glyphOf) {
        for (uint64_t code = first; code <= last; ++code) {
            // A glyph number past 16 bits names no glyph.
            uint64_t glyph = glyphOf(static_cast<uint32_t>(code));
            if (glyph == 0 || glyph > kLastGlyph) continue;
            if (!fPairs.empty() && fPairs.back().code > code) fAscending = false;
            fPairs.push_back({static_cast<uint32_t>(code), static_cast<uint16_t>(glyph)});
        }
    }

    std::map<uint32_t, uint32_t> fReached;  // first code -> last code
    VellCGArray fPairs;
    bool fAscending = true;
};

// A glyph from an array of glyph numbers, with the subtable's delta added to
// every glyph but 0 (formats 2 and 4).
uint64_t DeltaGlyph(uint16_t glyph, uint16_t delta) {
    return glyph == 0 ? 0 : (glyph + delta) & 0xFFFFu;
}

void ReadFormat0(VellView subtable, MappingCollector& mappings) {
    mappings.AddRange(0, 0xFF, [&](uint32_t code) { return uint64_t{subtable.u8(6 + code)}; });
}

// High bytes pick a subheader through subHeaderKeys; those that pick subheader 0
// are one-byte codes, the others lead two-byte codes.
void ReadFormat2(VellView subtable, MappingCollector& mappings) {
    constexpr size_t kSubHeaderKeys = 6, kSubHeaders = kSubHeaderKeys + 2 * 256, kSubHeaderSize = 8;
    for (uint32_t high = 0; high <= 0xFF; ++high) {
        size_t index = subtable.u16(kSubHeaderKeys + 2 * high) / kSubHeaderSize;
        size_t at = kSubHeaders + index * kSubHeaderSize;
        uint32_t firstCode = subtable.u16(at), entryCount = subtable.u16(at + 2);
        uint16_t idDelta = subtable.u16(at + 4);
        // idRangeOffset counts from its own field.
        size_t glyphs = at + 6 + subtable.u16(at + 6);
        if (entryCount == 0 || firstCode > 0xFF) continue;
        uint32_t firstLow = index == 0 ? high : firstCode;
        uint32_t lastLow = index == 0 ? high : std::min<uint32_t>(firstCode + entryCount - 1, 0xFF);
        if (firstLow < firstCode || lastLow >= firstCode + entryCount) continue;
        uint32_t lead = index == 0 ? 0 : high << 8;
        mappings.AddRange(lead | firstLow, lead | lastLow, [&](uint32_t code) {
            return DeltaGlyph(subtable.u16(glyphs + 2 * ((code & 0xFF) - firstCode)), idDelta);
        });
    }
}

// Four parallel arrays of segCount entries, after the header and a pad word.
void ReadFormat4(VellView subtable, MappingCollector& mappings) {
    constexpr size_t kEndCodes = 14, kArraysAfterEndCodes = 16, kSegmentSize = 8;
    size_t stated = subtable.u16(6) / 2;
    size_t segments = subtable.records_that_fit(kArraysAfterEndCodes, stated, kSegmentSize);
    size_t startCodes = kArraysAfterEndCodes + 2 * stated, idDeltas = startCodes + 2 * stated,
           idRangeOffsets = idDeltas + 2 * stated;
    for (size_t segment = 0; segment < segments; ++segment) {
        uint16_t start = subtable.u16(startCodes + 2 * segment), end = subtable.u16(kEndCodes + 2 * segment);
        uint16_t idDelta = subtable.u16(idDeltas + 2 * segment);
        uint16_t idRangeOffset = subtable.u16(idRangeOffsets + 2 * segment);
        // idRangeOffset counts from its own entry; 0 means the delta alone maps the segment.
        size_t glyphs = idRangeOffsets + 2 * segment + idRangeOffset;
        mappings.AddRange(start, end, [&](uint32_t code) -> uint64_t {
            if (idRangeOffset == 0) return (code + idDelta) & 0xFFFFu;
            return DeltaGlyph(subtable.u16(glyphs + 2 * (code - start)), idDelta);
        });
    }
}

// Formats 6 and 10: one run of consecutive codes with a glyph each.
void ReadTrimmedArray(VellView subtable, uint32_t firstCode, uint32_t statedCount, size_t glyphsOffset,
                      MappingCollector& mappings) {
    size_t count = subtable.records_that_fit(glyphsOffset, statedCount, 2);
    if (count == 0) return;
    mappings.AddRange(firstCode, uint64_t{firstCode} + count - 1, [&](uint32_t code) {
        return uint64_t{subtable.u16(glyphsOffset + 2 * size_t{code - firstCode})};
    });
}

// Formats 8, 12 and 13: groups of (startCharCode, endCharCode, glyph). In format 13
// every code of a group maps to the group's glyph; otherwise the glyphs run on
// from it.
void ReadGroups(VellView subtable, size_t groupCountOffset, bool manyToOne, MappingCollector& mappings) {
    size_t groupsOffset = groupCountOffset + 4;
    size_t groups = subtable.records_that_fit(groupsOffset, subtable.u32(groupCountOffset), kGroupSize);
    for (size_t group = 0; group < groups; ++group) {
        size_t at = groupsOffset + group * kGroupSize;
        uint32_t first = subtable.u32(at), last = subtable.u32(at + 4), glyph = subtable.u32(at + 8);
        mappings.AddRange(first, last, [&](uint32_t code) {
            return manyToOne ? uint64_t{glyph} : uint64_t{glyph} + (code - first);
        });
    }
}

}  // namespace

uint32_t VellCountFontEncodings(VellFontRef font, ErrorRecord* record) {
    const EncodingList* list = FontEncodings(font, record);
    return list ? static_cast<uint32_t>(list->encodings.size()) : 0;
}

int32_t VellGetFontEncoding(VellFontRef font, uint32_t index, int32_t* script, int32_t* language,
                            ErrorRecord* record) {
    *script = 0;
    *language = 0;
    const EncodingList* list = FontEncodings(font, record);
    if (list == nullptr) return 0;
    if (index < 1 || index > list->encodings.size()) {
        record->code = kVellParamErr;
        return 0;
    }
    auto [platform, encodingScript, encodingLanguage] = list->encodings[index - 1].triple;
    *script = encodingScript;
    *language = encodingLanguage;
    return platform;
}

uint32_t VellFindFontEncoding(VellFontRef font, int32_t platform, int32_t script, int32_t language,
                              ErrorRecord* record) {
    const EncodingList* list = FontEncodings(font, record);
    if (list == nullptr) return 0;
    Triple wanted{platform, script, language};
    auto found = std::lower_bound(list->byTriple.begin(), list->byTriple.end(), std::pair{wanted, uint32_t{0}});
    return found != list->byTriple.end() && found->first == wanted ? found->second : 0;
}

VellCGArray VellMakeCGArrayFromCMAPTable(const VellHandle& cmap, uint32_t index, uint16_t* format,
                                         ErrorRecord* record) {
    *format = 0;
    if (!cmap) {
        record->code = kVellParamErr;
        return {};
    }
    VellView table = VelmView(cmap);
    const EncodingList& list = EncodingsOf(cmap->derived, table);
    if (index < 1 || index > list.encodings.size()) {
        record->code = kVellParamErr;
        return {};
    }
    VellView subtable = table.sub(list.encodings[index - 1].offset);
    *format = subtable.u16(0);
    MappingCollector mappings;
    switch (*format) {
        case 0: ReadFormat0(subtable, mappings); break;
        case 2: ReadFormat2(subtable, mappings); break;
        case 4: ReadFormat4(subtable, mappings); break;
        case 6: ReadTrimmedArray(subtable, subtable.u16(6), subtable.u16(8), 10, mappings); break;
        case 8: ReadGroups(subtable, kFormat8GroupCountOffset, false, mappings); break;
        case 10: ReadTrimmedArray(subtable, subtable.u32(12), subtable.u32(16), 20, mappings); break;
        case 12: ReadGroups(subtable, kFormat12GroupCountOffset, false, mappings); break;
        case 13: ReadGroups(subtable, kFormat12GroupCountOffset, true, mappings); break;
        default: break;
    }
    return mappings.Finish();
}
