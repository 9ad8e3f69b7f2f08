#include "tables/LayoutAccount.h"

#include <unordered_map>

#include "VellCmpErrors.h"
#include "framework/VellGlyphs.h"

namespace {

// A glyph as the report writes it: its number, and with -p its name, "36 (A)".
class GlyphWriter {
public:
    explicit GlyphWriter(VellFontRef font) : fFont(font) {}
    std::string operator()(uint16_t glyph) {
        std::string text = std::to_string(glyph);
        if (!gShowPostScriptNames) return text;
        auto [found, inserted] = fNames.try_emplace(glyph);
        if (inserted) {
            int32_t status = VellGetGlyphName(fFont, glyph, &found->second);
            if (status != 0) found->second = VellFormat("### BAD GLYPH NAME (error %d) ###", status);
        }
        return text + " (" + found->second + ")";
    }

private:
    VellFontRef fFont;
    std::unordered_map<uint16_t, std::string> fNames;
};

VellGlyphText TextOf(GlyphWriter& writer) {
    return [&writer](uint16_t glyph) { return writer(glyph); };
}

const VellLayoutRuleList* FindList(const VellLayoutAccount& account, const std::string& what) {
    for (const VellLayoutRuleList& list : account.lists)
        if (list.what == what) return &list;
    return nullptr;
}

void PrintCut(TTableDumper& dumper, const char* font) {
    dumper.PrintLine(VellFormat("### The %s account was cut: the table holds more rules than its size allows listing.",
                                font),
                     true);
}

}  // namespace

void DumpLayoutAccount(TTableDumper& dumper, const VellLayoutAccount& account) {
    GlyphWriter writer(dumper.GetFont());
    VellGlyphText text = TextOf(writer);
    for (const VellLayoutRuleList& list : account.lists) {
        dumper.PrintLine("### " + list.what + ":", true);
        for (const VellLayoutRule& rule : list.rules) dumper.PrintStringField(1, rule.label, VellLayoutRuleText(rule, text));
    }
    if (account.cut) PrintCut(dumper, "table's");
}

void CompareLayoutAccounts(TTableComparator& comparator, const VellLayoutAccount& modified,
                           const VellLayoutAccount& original) {
    VellGlyphIdentity modifiedGlyphs = VellLayoutGlyphIdentity(comparator.GetModifiedFont());
    VellGlyphIdentity originalGlyphs = VellLayoutGlyphIdentity(comparator.GetOriginalFont());
    GlyphWriter modifiedWriter(comparator.GetModifiedFont()), originalWriter(comparator.GetOriginalFont());
    VellGlyphText modifiedText = TextOf(modifiedWriter), originalText = TextOf(originalWriter);

    std::vector<std::string> names;
    for (const VellLayoutRuleList& list : modified.lists) names.push_back(list.what);
    for (const VellLayoutRuleList& list : original.lists)
        if (!FindList(modified, list.what)) names.push_back(list.what);

    for (const std::string& what : names) {
        VellLayoutDelta delta =
            VellCompareLayoutRules(FindList(modified, what), FindList(original, what), modifiedGlyphs, originalGlyphs);
        if (!delta.added.empty()) {
            comparator.PrintLine("### Added " + what + " (in modified font and not original font):", true);
            for (const VellLayoutRule* rule : delta.added)
                comparator.PrintStringField(1, rule->label, VellLayoutRuleText(*rule, modifiedText));
        }
        if (!delta.deleted.empty()) {
            comparator.PrintLine("### Deleted " + what + " (in original font but not in modified font):", true);
            for (const VellLayoutRule* rule : delta.deleted)
                comparator.PrintStringField(1, rule->label, VellLayoutRuleText(*rule, originalText));
        }
        if (!delta.changed.empty()) {
            comparator.PrintLine("### Changed " + what + ":", true);
            for (const auto& [mine, theirs] : delta.changed) {
                comparator.PrintStringField(1, ModLabel(mine->label), VellLayoutRuleText(*mine, modifiedText));
                comparator.PrintStringField(1, OrigLabel(theirs->label), VellLayoutRuleText(*theirs, originalText));
            }
        }
    }
    if (modified.cut) PrintCut(comparator, "modified font's");
    if (original.cut) PrintCut(comparator, "original font's");
}
