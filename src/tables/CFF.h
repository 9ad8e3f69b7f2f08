// 'CFF ' and 'CFF2' under --opentype: the Top DICT, each font DICT with its
// Private DICT, the charset, and the glyphs as outlines. The comparator lists
// the fields that differ, the glyph names or CIDs added and deleted, and the
// glyphs whose outline or width differs, however their charstrings are encoded
// or subroutinized; 'CFF2' outlines are compared at the default location and at
// each named instance of 'fvar'. The dumper lists the DICTs and every glyph's
// outline. Charstrings are run by FreeType; a table it cannot open is compared
// in hex, after a note that says so.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "comparators/TOutlineDeltas.h"
#include "framework/VellOutlines.h"

class TCFFTableDumper : public TTableDumper {
public:
    using TTableDumper::TTableDumper;
    int32_t DumpTableContents() override;
    int32_t GetGlyphName(uint32_t glyph, std::string& name) override;

private:
    std::vector<std::string> fNames;
};

class TCFFTableComparator : public TOutlineTableComparator {
public:
    using TOutlineTableComparator::TOutlineTableComparator;
    int32_t DumpTableDeltas() override;
};

// The glyphs of two 'CFF ' or 'CFF2' tables as the comparator pairs them, and
// those whose outline or hints differ at the default location or, for 'CFF2',
// at a named instance the account compares, with both fonts' outline engines to
// draw them. The --html page draws them.
struct CFFGlyphChange {
    uint32_t modified = 0, original = 0;
    int location = -1;  // the first where the glyphs differ: -1 the default, else a named instance
};
struct CFFGlyphChanges {
    std::unique_ptr<VellOutlineFace> modifiedFace, originalFace;
    std::vector<CFFGlyphChange> changed;
    std::vector<uint32_t> added, deleted;
};
// False when either table cannot be read or opened.
bool FindCFFGlyphChanges(TFontContext& modified, TFontContext& original, VellTag tag, CFFGlyphChanges* changes);
