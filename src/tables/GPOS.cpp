#include "tables/GPOS.h"

#include "tables/LayoutAccount.h"

namespace {

// ClassDef-based pairs give class 0 to every glyph the font has that no class names;
// VariationIndex tables point into the item variation store of the font's 'GDEF'.
VellLayoutAccount ReadAccount(VellView table, TFontContext& font) {
    return VellReadGPOS(table, font.GlyphCount(), VellGDEFDeltaSets(font.Table(VellMakeTag("GDEF"))));
}

}  // namespace

int32_t TGPOSTableDumper::DumpTableContents() {
    DumpLayoutAccount(*this, ReadAccount(GetTableView(), *GetContext()));
    return 0;
}

int32_t TGPOSTableComparator::DumpTableDeltas() {
    if (!HasBothTables()) return 1;
    CompareLayoutAccounts(*this, ReadAccount(GetTableView(), *GetModifiedContext()),
                          ReadAccount(GetOriginalTableView(), *GetOriginalContext()));
    return 0;
}
