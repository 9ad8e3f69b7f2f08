#include "tables/LayoutAccount.h"

#include <algorithm>
#include <unordered_map>

#include "VellCmpErrors.h"
#include "dumpers/TFontContext.h"
#include "framework/VellGlyphs.h"

namespace {

// Glyph names where 'post' names none: the 'CFF ' charset's.
const std::vector<std::string>& CharsetNames(TFontContext* font) {
    static const std::vector<std::string> kNone;
    return font != nullptr ? font->CharsetGlyphNames() : kNone;
}

// A glyph as the report writes it: its number, and with -p its name, "36 (A)".
class GlyphWriter {
public:
    GlyphWriter(VellFontRef font, TFontContext* context) : fFont(font), fContext(context) {}
    std::string operator()(uint16_t glyph) {
        std::string text = std::to_string(glyph);
        if (!gShowPostScriptNames) return text;
        auto [found, inserted] = fNames.try_emplace(glyph);
        if (inserted) {
            int32_t status = VellGetGlyphName(fFont, glyph, &found->second);
            if (status != 0) found->second = VellFormat("### BAD GLYPH NAME (error %d) ###", status);
            if (status == 0 && found->second.empty()) {
                const std::vector<std::string>& charset = CharsetNames(fContext);
                if (glyph < charset.size()) found->second = charset[glyph];
            }
        }
        return text + " (" + found->second + ")";
    }

private:
    VellFontRef fFont;
    TFontContext* fContext;
    std::unordered_map<uint16_t, std::string> fNames;
};

// Rules are matched by glyph name when 'post' or the 'CFF ' charset names every glyph once.
VellGlyphIdentity GlyphIdentity(VellFontRef font, TFontContext* context) {
    VellGlyphIdentity identity = VellLayoutGlyphIdentity(font);
    if (identity.names.empty() && context != nullptr)
        identity = VellLayoutGlyphIdentity(CharsetNames(context), context->GlyphCount());
    return identity;
}

VellGlyphText TextOf(GlyphWriter& writer) {
    return [&writer](uint16_t glyph) { return writer(glyph); };
}

}  // namespace

std::vector<std::pair<const VellLayoutRuleList*, const VellLayoutRuleList*>> PairLayoutLists(
    const VellLayoutAccount& modified, const VellLayoutAccount& original) {
    std::vector<std::pair<const VellLayoutRuleList*, const VellLayoutRuleList*>> pairs;
    std::vector<bool> taken(original.lists.size(), false);
    for (const VellLayoutRuleList& list : modified.lists) {
        const VellLayoutRuleList* partner = nullptr;
        for (size_t i = 0; i < original.lists.size() && !partner; ++i) {
            if (!taken[i] && original.lists[i].what == list.what) {
                partner = &original.lists[i];
                taken[i] = true;
            }
        }
        pairs.push_back({&list, partner});
    }
    for (auto& [mine, theirs] : pairs) {
        if (theirs || mine->tag.empty()) continue;
        size_t best = 0, bestShared = 0;
        for (size_t i = 0; i < original.lists.size(); ++i) {
            const VellLayoutRuleList& candidate = original.lists[i];
            if (taken[i] || candidate.tag != mine->tag) continue;
            // A list of the whole tag (no language systems named) shares with any.
            size_t shared = mine->langSystems.empty() || candidate.langSystems.empty() ? 1 : 0;
            for (const std::string& langSys : mine->langSystems)
                shared += std::count(candidate.langSystems.begin(), candidate.langSystems.end(), langSys);
            if (shared > bestShared) best = i, bestShared = shared;
        }
        if (bestShared > 0) {
            theirs = &original.lists[best];
            taken[best] = true;
        }
    }
    for (size_t i = 0; i < original.lists.size(); ++i)
        if (!taken[i]) pairs.push_back({nullptr, &original.lists[i]});
    return pairs;
}

namespace {

// A rule's key alone, glyphs as numbers: the last step of its path in a record.
std::string RuleKeyText(const VellLayoutRule& rule) {
    VellLayoutRule key{rule.label, rule.key, {}, rule.glyphs, rule.keyGlyphs};
    return VellLayoutRuleText(key, [](uint16_t glyph) { return std::to_string(glyph); });
}

std::string RuleNumberText(const VellLayoutRule& rule) {
    return VellLayoutRuleText(rule, [](uint16_t glyph) { return std::to_string(glyph); });
}

// A rule only one font has, or one that changed, under its list and its kind:
// path [list, kind, key], the rules' texts (glyphs as numbers) as values.
bool ShowsRuleDifference(TTableComparator& comparator, DifferenceKind kind, const VellLayoutRule& rule,
                         const VellLayoutRule* original = nullptr) {
    TTableDumper::PathScope label(comparator, rule.label);
    return comparator.ShowsDifference(kind, RuleKeyText(original ? *original : rule), [&](JsonWriter& writer) {
        if (original) {
            writer.Key("original");
            WriteText(writer, RuleNumberText(*original));
            writer.Key("modified");
        } else {
            writer.Key("value");
        }
        WriteText(writer, RuleNumberText(rule));
    });
}

// Only the rules a --json or --ignore run reports.
std::vector<const VellLayoutRule*> ShownRules(TTableComparator& comparator, DifferenceKind kind,
                                              const std::vector<const VellLayoutRule*>& rules) {
    std::vector<const VellLayoutRule*> shown;
    for (const VellLayoutRule* rule : rules)
        if (ShowsRuleDifference(comparator, kind, *rule)) shown.push_back(rule);
    return shown;
}

void PrintCut(TTableDumper& dumper, const char* font) {
    dumper.PrintLine(VellFormat("### The %s account was cut: the table holds more rules than its size allows listing.",
                                font),
                     true);
}

}  // namespace

void DumpLayoutAccount(TTableDumper& dumper, const VellLayoutAccount& account) {
    GlyphWriter writer(dumper.GetFont(), dumper.GetContext());
    VellGlyphText text = TextOf(writer);
    for (const VellLayoutRuleList& list : account.lists) {
        dumper.PrintLine("### " + list.what + ":", true);
        for (const VellLayoutRule& rule : list.rules) dumper.PrintStringField(1, rule.label, VellLayoutRuleText(rule, text));
    }
    if (account.cut) PrintCut(dumper, "table's");
}

void CompareLayoutAccounts(TTableComparator& comparator, const VellLayoutAccount& modified,
                           const VellLayoutAccount& original) {
    VellGlyphIdentity modifiedGlyphs = GlyphIdentity(comparator.GetModifiedFont(), comparator.GetModifiedContext());
    VellGlyphIdentity originalGlyphs = GlyphIdentity(comparator.GetOriginalFont(), comparator.GetOriginalContext());
    GlyphWriter modifiedWriter(comparator.GetModifiedFont(), comparator.GetModifiedContext());
    GlyphWriter originalWriter(comparator.GetOriginalFont(), comparator.GetOriginalContext());
    VellGlyphText modifiedText = TextOf(modifiedWriter), originalText = TextOf(originalWriter);

    for (const auto& [mine, theirs] : PairLayoutLists(modified, original)) {
        VellLayoutDelta delta = VellCompareLayoutRules(mine, theirs, modifiedGlyphs, originalGlyphs);
        // Added and changed rules are named as the modified font names their list.
        const std::string& what = mine ? mine->what : theirs->what;
        TTableDumper::PathScope list(comparator, what);
        if (gJsonReport != nullptr || !gIgnoreRules.empty() || comparator.IsCountingPass()) {
            delta.added = ShownRules(comparator, DifferenceKind::Added, delta.added);
            delta.deleted = ShownRules(comparator, DifferenceKind::Deleted, delta.deleted);
            std::erase_if(delta.changed, [&](const auto& pair) {
                return !ShowsRuleDifference(comparator, DifferenceKind::Changed, *pair.first, pair.second);
            });
        }
        if (!delta.added.empty()) {
            comparator.PrintLine("### Added " + what + " (in modified font and not original font):", true);
            for (const VellLayoutRule* rule : delta.added)
                comparator.PrintStringField(1, rule->label, VellLayoutRuleText(*rule, modifiedText));
        }
        if (!delta.deleted.empty()) {
            comparator.PrintLine("### Deleted " + (theirs ? theirs->what : what) + " (in original font but not in modified font):",
                                 true);
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
