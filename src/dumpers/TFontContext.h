// TFontContext: one font's side of a comparison or a dump, and everything a
// handler asks of that font beyond its own table: other tables, the glyph count,
// glyph names and the metrics headers. Each is read from the font once, when a
// handler first asks for it, and kept for as long as the font is compared.
//
// Handlers are built in one form, modified side first:
//   comparator: (TFontContext& modified, TFontContext& original, VellTag tag, FILE* out)
//   dumper:     (TFontContext& font, VellTag tag, FILE* out)
// The contexts outlive the handlers made from them.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "framework/VellFontFile.h"
#include "framework/VellMemory.h"
#include "framework/VellTables.h"
#include "framework/VellView.h"

class TFontContext {
public:
    explicit TFontContext(VellFontRef font) : fFont(font) {}
    TFontContext(const TFontContext&) = delete;
    TFontContext& operator=(const TFontContext&) = delete;

    VellFontRef Font() const { return fFont; }

    // The font's table with this tag, read in place; empty when the font has none.
    // A table the framework cannot read (one running past the end of the file)
    // throws TVellCmpVellException, each time it is asked for.
    VellView Table(VellTag tag);
    // A copy of the table for a handler that owns its table; null when the font
    // has none. Throws as Table does.
    VellHandle CopyTable(VellTag tag);
    // Whether the font's directory lists the table (an empty one included).
    bool HasTable(VellTag tag) const;

    // numGlyphs of 'maxp'.
    uint32_t GlyphCount();
    // The 'post' table, the source of glyph names; null when the font has none.
    const VellHandle& Post();
    // A glyph's PostScript name from 'post': empty without 'post', or for a glyph at
    // or past the glyph count. Under --opentype, a glyph that 'post' leaves unnamed
    // takes its name from the 'CFF ' charset (CharsetGlyphNames); the classic report
    // never does.
    std::string GlyphName(uint32_t glyph);
    // Where 'post' names no glyph (no 'post', or format 3 as fonts with 'CFF '
    // outlines carry it), the glyph names of the 'CFF ' charset in glyph order: a
    // name-keyed table's names, "cid01234" for a CID-keyed one's glyphs, whose CIDs
    // are what names them. Empty unless the charset names every glyph of the font,
    // each once; read once.
    const std::vector<std::string>& CharsetGlyphNames();
    // numberOfHMetrics of 'hhea' for 'hmtx', numOfLongVerMetrics of 'vhea' for
    // 'vmtx': the metrics header of a metrics table, as 16-bit unsigned.
    uint16_t LongMetricCount(VellTag metricsTag);

    // Reads what every comparator of a changed table may ask for (the glyph count,
    // 'post', 'hhea' and 'vhea'), so that a font whose side tables cannot be read
    // fails every comparison alike, whichever handler the tag has.
    void CheckSideTables();

private:
    VellFontRef fFont;
    std::map<VellTag, VellView> fTables;
    std::optional<uint32_t> fGlyphCount;
    std::optional<VellHandle> fPost;
    std::optional<std::vector<std::string>> fCharsetNames;
};
