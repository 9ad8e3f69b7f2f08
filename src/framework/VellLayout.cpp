#include "framework/VellLayout.h"

#include <algorithm>
#include <array>
#include <map>
#include <span>
#include <set>
#include <unordered_map>
#include <unordered_set>
#include <utility>

#include "framework/VellGlyphs.h"
#include "framework/VellItemVariationStore.h"
#include "framework/VellTables.h"

namespace {

constexpr uint32_t kNoFilter = 0xFFFFFFFF;
// 'GSUB' lookup type 7 and 'GPOS' lookup type 9 hold the real lookup further on.
constexpr uint16_t kSubstitutionExtension = 7;
constexpr uint16_t kPositioningExtension = 9;
// lookupFlag bit useMarkFilteringSet: a markFilteringSet follows the subtables.
constexpr uint16_t kUseMarkFilteringSet = 0x0010;
// Inner loops that produce no rule (zero pair values, glyphs already covered)
// may run this many times the rule cap before the account is cut.
constexpr size_t kWorkPerRule = 16;

std::string Decimal(int64_t value) { return std::to_string(value); }

std::string TagText(uint32_t tag) {
    std::string text = "'";
    for (int shift = 24; shift >= 0; shift -= 8) {
        char c = static_cast<char>(tag >> shift & 0xFF);
        text.push_back(c >= 32 && c < 127 ? c : '?');
    }
    text.push_back('\'');
    return text;
}

std::string Hex16(uint16_t value) {
    static constexpr char kDigits[] = "0123456789ABCDEF";
    std::string text = "0x";
    for (int shift = 12; shift >= 0; shift -= 4) text.push_back(kDigits[value >> shift & 0xF]);
    return text;
}

// An F2Dot14 as a decimal with up to four places.
std::string F2Dot14Text(int16_t value) {
    char buffer[32];
    std::snprintf(buffer, sizeof buffer, "%.4g", value / 16384.0);
    return buffer;
}

// The text of one rule's key or value, with its glyphs beside it.
struct RuleText {
    std::string text;
    std::vector<uint16_t> glyphs;

    RuleText& Glyph(uint16_t glyph) {
        text.push_back(kVellLayoutGlyph);
        glyphs.push_back(glyph);
        return *this;
    }
    RuleText& Text(std::string_view more) {
        text.append(more);
        return *this;
    }
    RuleText& Append(const RuleText& more) {
        text.append(more.text);
        glyphs.insert(glyphs.end(), more.glyphs.begin(), more.glyphs.end());
        return *this;
    }
};

VellLayoutRule MakeRule(const char* label, RuleText key, RuleText value) {
    VellLayoutRule rule{label, std::move(key.text), std::move(value.text), std::move(key.glyphs), 0};
    rule.keyGlyphs = rule.glyphs.size();
    rule.glyphs.insert(rule.glyphs.end(), value.glyphs.begin(), value.glyphs.end());
    return rule;
}

// The bounds of one table's flattening: the rules it may still list, and the
// steps it may still take without listing one.
class Budget {
public:
    explicit Budget(size_t tableBytes)
        : fRules(VellLayoutRuleCap(tableBytes)), fWork(VellLayoutRuleCap(tableBytes) * kWorkPerRule) {}
    bool Rule() {
        if (fRules == 0) return Cut();
        --fRules;
        return Work(1);
    }
    bool Work(size_t steps) {
        if (fWork < steps) return Cut();
        fWork -= steps;
        return true;
    }
    bool cut() const { return fCut; }

private:
    bool Cut() {
        fCut = true;
        fRules = fWork = 0;
        return false;
    }
    size_t fRules, fWork;
    bool fCut = false;
};

// A Coverage table's glyphs; at most one entry per 16-bit glyph index, so that
// overlapping ranges cannot make it longer than the glyph space.
std::vector<uint16_t> ReadCoverage(VellView table, size_t offset, Budget* budget) {
    std::vector<uint16_t> glyphs;
    if (offset == 0) return glyphs;  // a null offset: no Coverage
    VellView coverage = table.sub(offset);
    uint16_t format = coverage.u16(0);
    size_t count = coverage.u16(2);
    if (format == 1) {
        count = coverage.records_that_fit(4, count, 2);
        if (budget && !budget->Work(count)) return glyphs;
        glyphs.reserve(count);
        for (size_t i = 0; i < count; ++i) glyphs.push_back(coverage.u16(4 + 2 * i));
    } else if (format == 2) {
        count = coverage.records_that_fit(4, count, 6);
        for (size_t i = 0; i < count && glyphs.size() <= 0xFFFF; ++i) {
            uint32_t start = coverage.u16(4 + 6 * i), end = coverage.u16(6 + 6 * i);
            if (end < start) continue;
            size_t span = std::min<size_t>(end - start + 1, 0x10000 - glyphs.size());
            if (budget && !budget->Work(span)) break;
            for (size_t g = 0; g < span; ++g) glyphs.push_back(static_cast<uint16_t>(start + g));
        }
    }
    return glyphs;
}

std::vector<std::pair<uint16_t, uint16_t>> ReadClassDef(VellView table, size_t offset, Budget* budget) {
    std::map<uint16_t, uint16_t> classes;
    if (offset == 0) return {};  // a null offset: every glyph is class 0
    VellView classDef = table.sub(offset);
    uint16_t format = classDef.u16(0);
    if (format == 1) {
        uint32_t start = classDef.u16(2);
        size_t count = classDef.records_that_fit(6, classDef.u16(4), 2);
        count = std::min<size_t>(count, 0x10000 - start);
        if (budget && !budget->Work(count)) return {};
        for (size_t i = 0; i < count; ++i) {
            uint16_t value = classDef.u16(6 + 2 * i);
            if (value != 0) classes.emplace(static_cast<uint16_t>(start + i), value);
        }
    } else if (format == 2) {
        size_t count = classDef.records_that_fit(4, classDef.u16(2), 6);
        for (size_t i = 0; i < count; ++i) {
            uint32_t start = classDef.u16(4 + 6 * i), end = classDef.u16(6 + 6 * i);
            uint16_t value = classDef.u16(8 + 6 * i);
            if (end < start || value == 0) continue;
            if (budget && !budget->Work(end - start + 1)) break;
            // Where ranges overlap, the first one that names a glyph gives its class.
            for (uint32_t g = start; g <= end; ++g) classes.emplace(static_cast<uint16_t>(g), value);
        }
    }
    return {classes.begin(), classes.end()};
}

// ---- Device and VariationIndex tables, ValueRecords and Anchors ----

// A Device table's corrections ("ppem 11: -1, 12: 1"), or a VariationIndex
// table's delta set.
std::string DeviceText(VellView table, size_t offset, const VellDeltaSetText& deltaSets) {
    VellView device = table.sub(offset);
    uint16_t startSize = device.u16(0), endSize = device.u16(2), deltaFormat = device.u16(4);
    if (deltaFormat == 0x8000) {
        if (deltaSets) return deltaSets(startSize, endSize);
        return "variation " + Decimal(startSize) + "/" + Decimal(endSize);
    }
    if (deltaFormat < 1 || deltaFormat > 3 || endSize < startSize) return "device format " + Decimal(deltaFormat);
    unsigned bits = 1u << deltaFormat;  // 2, 4 or 8 bits a correction
    unsigned perWord = 16 / bits;
    size_t sizes = endSize - startSize + 1;
    sizes = std::min(sizes, device.records_that_begin(6, (sizes + perWord - 1) / perWord, 2) * perWord);
    std::string text = "device";
    bool any = false;
    for (size_t i = 0; i < sizes; ++i) {
        uint16_t word = device.u16(6 + 2 * (i / perWord));
        unsigned shift = 16 - bits * (i % perWord + 1);
        int value = static_cast<int>(word >> shift & ((1u << bits) - 1));
        if (value >= static_cast<int>(1u << (bits - 1))) value -= static_cast<int>(1u << bits);
        if (value == 0) continue;
        text += any ? ", " : " ppem ";
        text += Decimal(startSize + i) + ": " + Decimal(value);
        any = true;
    }
    if (!any) text += " without corrections";
    return text;
}

// A ValueRecord's numbers and its device tables' text, summed as shaping adds them.
struct Adjustment {
    std::array<int32_t, 4> values{};  // X placement, Y placement, X advance, Y advance
    std::string devices;

    bool zero() const { return values == std::array<int32_t, 4>{} && devices.empty(); }
    void Add(const Adjustment& more) {
        for (size_t i = 0; i < values.size(); ++i) values[i] += more.values[i];
        if (!more.devices.empty()) devices += (devices.empty() ? "" : ", ") + more.devices;
    }
    std::string Text() const {
        static constexpr const char* kNames[] = {"X placement", "Y placement", "X advance", "Y advance"};
        std::string text;
        for (size_t i = 0; i < values.size(); ++i) {
            if (values[i] == 0) continue;
            if (!text.empty()) text += ", ";
            text += kNames[i] + (" " + Decimal(values[i]));
        }
        if (!devices.empty()) text += (text.empty() ? "" : ", ") + devices;
        return text.empty() ? "0" : text;
    }
};

// A ValueRecord at `offset`; its device offsets count from `base`.
Adjustment ReadValueRecord(VellView base, size_t offset, uint16_t valueFormat, const VellDeltaSetText& deltaSets) {
    static constexpr const char* kDeviceNames[] = {"X placement", "Y placement", "X advance", "Y advance"};
    Adjustment adjustment;
    for (unsigned bit = 0; bit < 8; ++bit) {
        if (!(valueFormat & (1u << bit))) continue;
        if (bit < 4) {
            adjustment.values[bit] = base.s16(offset);
        } else if (uint16_t device = base.u16(offset); device != 0) {
            if (!adjustment.devices.empty()) adjustment.devices += ", ";
            adjustment.devices += kDeviceNames[bit - 4] + (" " + DeviceText(base, device, deltaSets));
        }
        offset += 2;
    }
    return adjustment;
}

// "(x, y)", with the contour point of format 2 and the device tables of format 3.
std::string AnchorText(VellView table, size_t offset, const VellDeltaSetText& deltaSets) {
    if (offset == 0) return "none";
    VellView anchor = table.sub(offset);
    uint16_t format = anchor.u16(0);
    std::string text = "(" + Decimal(anchor.s16(2)) + ", " + Decimal(anchor.s16(4)) + ")";
    if (format == 2) {
        text += " point " + Decimal(anchor.u16(6));
    } else if (format == 3) {
        if (uint16_t x = anchor.u16(6)) text += " X " + DeviceText(anchor, x, deltaSets);
        if (uint16_t y = anchor.u16(8)) text += " Y " + DeviceText(anchor, y, deltaSets);
    } else if (format != 1) {
        text = "anchor format " + Decimal(format);
    }
    return text;
}

// ---- ScriptList, FeatureList, LookupList ----

struct LangSys {
    uint32_t script, language;  // language 'dflt' for a script's default
    uint16_t requiredFeature;
    std::vector<uint16_t> features;
};

struct Feature {
    uint32_t tag;
    std::vector<uint16_t> lookups;
};

struct Lookup {
    uint16_t type = 0;  // the Extension's lookup type where the lookup is an Extension
    uint16_t flag = 0;
    uint32_t markFilteringSet = kNoFilter;
    std::vector<VellView> subtables;  // Extension subtables already followed
};

constexpr uint32_t kDefaultLanguage = 0x64666C74;  // 'dflt'

LangSys ReadLangSys(VellView langSys, uint32_t script, uint32_t language) {
    LangSys result{script, language, langSys.u16(2), {}};
    size_t count = langSys.records_that_fit(6, langSys.u16(4), 2);
    for (size_t i = 0; i < count; ++i) result.features.push_back(langSys.u16(6 + 2 * i));
    return result;
}

std::vector<LangSys> ReadScriptList(VellView scriptList) {
    std::vector<LangSys> result;
    size_t scripts = scriptList.records_that_fit(2, scriptList.u16(0), 6);
    for (size_t s = 0; s < scripts; ++s) {
        uint32_t scriptTag = scriptList.tag(2 + 6 * s);
        VellView script = scriptList.sub(scriptList.u16(6 + 6 * s));
        if (uint16_t defaultLangSys = script.u16(0)) {
            result.push_back(ReadLangSys(script.sub(defaultLangSys), scriptTag, kDefaultLanguage));
        }
        size_t languages = script.records_that_fit(4, script.u16(2), 6);
        for (size_t l = 0; l < languages; ++l) {
            result.push_back(ReadLangSys(script.sub(script.u16(8 + 6 * l)), scriptTag, script.tag(4 + 6 * l)));
        }
    }
    return result;
}

std::vector<uint16_t> ReadFeatureLookups(VellView feature) {
    std::vector<uint16_t> lookups;
    size_t count = feature.records_that_fit(4, feature.u16(2), 2);
    for (size_t i = 0; i < count; ++i) lookups.push_back(feature.u16(4 + 2 * i));
    return lookups;
}

std::vector<Feature> ReadFeatureList(VellView featureList) {
    std::vector<Feature> result;
    size_t count = featureList.records_that_fit(2, featureList.u16(0), 6);
    for (size_t i = 0; i < count; ++i) {
        result.push_back({featureList.tag(2 + 6 * i), ReadFeatureLookups(featureList.sub(featureList.u16(6 + 6 * i)))});
    }
    return result;
}

std::vector<Lookup> ReadLookupList(VellView lookupList, uint16_t extensionType) {
    std::vector<Lookup> result;
    size_t count = lookupList.records_that_fit(2, lookupList.u16(0), 2);
    for (size_t i = 0; i < count; ++i) {
        VellView table = lookupList.sub(lookupList.u16(2 + 2 * i));
        Lookup lookup;
        lookup.type = table.u16(0);
        lookup.flag = table.u16(2);
        size_t subtables = table.records_that_fit(6, table.u16(4), 2);
        if (lookup.flag & kUseMarkFilteringSet) lookup.markFilteringSet = table.u16(6 + 2 * subtables);
        bool extension = lookup.type == extensionType;
        for (size_t s = 0; s < subtables; ++s) {
            VellView subtable = table.sub(table.u16(6 + 2 * s));
            if (extension) {
                uint16_t type = subtable.u16(2);
                // An Extension of an Extension is not followed: it could lead on forever.
                if (subtable.u16(0) != 1 || type == extensionType) continue;
                if (lookup.subtables.empty()) lookup.type = type;
                if (type != lookup.type) continue;
                subtable = subtable.sub(subtable.u32(4));
            }
            lookup.subtables.push_back(subtable);
        }
        result.push_back(std::move(lookup));
    }
    return result;
}

// The common header of 'GSUB' and 'GPOS'.
struct LayoutHeader {
    std::vector<LangSys> langSystems;
    std::vector<Feature> features;
    std::vector<Lookup> lookups;
    VellView featureVariations;
};

LayoutHeader ReadLayoutHeader(VellView table, uint16_t extensionType) {
    LayoutHeader header;
    if (table.u16(0) != 1) return header;
    header.langSystems = ReadScriptList(table.sub(table.u16(4)));
    header.features = ReadFeatureList(table.sub(table.u16(6)));
    header.lookups = ReadLookupList(table.sub(table.u16(8)), extensionType);
    if (table.u16(2) >= 1 && table.u32(10) != 0) header.featureVariations = table.sub(table.u32(10));
    return header;
}

// ---- Structure: scripts, language systems, features, FeatureVariations ----

std::string LookupListText(const std::vector<uint16_t>& indices, const std::vector<Lookup>& lookups) {
    std::string text;
    for (uint16_t index : indices) {
        if (!text.empty()) text += ", ";
        text += Decimal(index);
        if (index >= lookups.size()) {
            text += " (missing)";
            continue;
        }
        const Lookup& lookup = lookups[index];
        text += " (type " + Decimal(lookup.type) + ", flags " + Hex16(lookup.flag);
        if (lookup.markFilteringSet != kNoFilter) text += ", mark filtering set " + Decimal(lookup.markFilteringSet);
        text += ")";
    }
    return text.empty() ? "no lookups" : text;
}

// A feature named by its tag, and by its place among the features of that tag
// when there are several, so that inserting a feature of another tag does not
// rename it.
std::vector<std::string> FeatureNames(const std::vector<Feature>& features) {
    std::vector<std::string> names;
    std::map<uint32_t, int> seen;
    for (const Feature& feature : features) {
        int n = ++seen[feature.tag];
        names.push_back(TagText(feature.tag) + (n > 1 ? " #" + Decimal(n) : ""));
    }
    return names;
}

std::string FeatureIndexText(uint16_t index, const std::vector<std::string>& names) {
    return index < names.size() ? names[index] : "missing feature " + Decimal(index);
}

std::string LangSysName(const LangSys& langSys) {
    return "script " + TagText(langSys.script) + " language " + TagText(langSys.language);
}

void AddStructure(VellLayoutAccount& account, const LayoutHeader& header, Budget& budget) {
    std::vector<std::string> names = FeatureNames(header.features);
    VellLayoutRuleList langSystems{"language systems", {}, {}, {}};
    for (const LangSys& langSys : header.langSystems) {
        if (!budget.Rule()) break;
        std::string value;
        if (langSys.requiredFeature != 0xFFFF) value = "required " + FeatureIndexText(langSys.requiredFeature, names) + "; ";
        value += "features";
        for (uint16_t index : langSys.features) value += " " + FeatureIndexText(index, names);
        langSystems.rules.push_back(MakeRule("Language system", RuleText().Text(LangSysName(langSys)), RuleText().Text(value)));
    }
    VellLayoutRuleList features{"features", {}, {}, {}};
    for (size_t i = 0; i < header.features.size() && budget.Rule(); ++i) {
        features.rules.push_back(MakeRule("Feature", RuleText().Text(names[i]),
                                          RuleText().Text("lookups " + LookupListText(header.features[i].lookups, header.lookups))));
    }
    account.lists.push_back(std::move(langSystems));
    account.lists.push_back(std::move(features));

    VellView variations = header.featureVariations;
    if (variations.empty()) return;
    VellLayoutRuleList conditions{"feature variations", {}, {}, {}};
    size_t records = variations.records_that_fit(8, variations.u32(4), 8);
    for (size_t r = 0; r < records && budget.Rule(); ++r) {
        std::string value = "conditions";
        VellView conditionSet = variations.sub(variations.u32(8 + 8 * r));
        size_t count = conditionSet.records_that_fit(2, conditionSet.u16(0), 4);
        if (!budget.Work(count)) break;
        for (size_t c = 0; c < count; ++c) {
            VellView condition = conditionSet.sub(conditionSet.u32(2 + 4 * c));
            if (condition.u16(0) != 1) {
                value += " (format " + Decimal(condition.u16(0)) + ")";
                continue;
            }
            value += " axis " + Decimal(condition.u16(2)) + " [" + F2Dot14Text(condition.s16(4)) + ", " +
                     F2Dot14Text(condition.s16(6)) + "]";
        }
        value += "; substitutions";
        VellView substitution = variations.sub(variations.u32(12 + 8 * r));
        size_t substitutions = substitution.records_that_fit(6, substitution.u16(4), 6);
        if (!budget.Work(substitutions)) break;
        for (size_t s = 0; s < substitutions; ++s) {
            uint16_t index = substitution.u16(6 + 6 * s);
            VellView alternate = substitution.sub(substitution.u32(8 + 6 * s));
            value += " " + FeatureIndexText(index, names) + " -> lookups " +
                     LookupListText(ReadFeatureLookups(alternate), header.lookups) + ";";
        }
        conditions.rules.push_back(MakeRule("Variation", RuleText().Text("record " + Decimal(r)), RuleText().Text(value)));
    }
    account.lists.push_back(std::move(conditions));
}

// ---- Rule sections: which lookups each feature tag uses ----

// A feature tag's lookups, once for the whole table or once per language system
// where the language systems give the tag different lookups.
struct RuleSection {
    std::string what;
    std::vector<uint16_t> lookups;
    std::string tag;
    std::vector<std::string> langSystems;
};

std::vector<RuleSection> RuleSections(const LayoutHeader& header) {
    std::map<uint32_t, std::set<std::vector<uint16_t>>> lookupsOfTag;
    for (const Feature& feature : header.features) lookupsOfTag[feature.tag].insert(feature.lookups);
    std::vector<RuleSection> sections;
    for (const auto& [tag, lists] : lookupsOfTag) {
        if (lists.size() == 1) {
            sections.push_back({TagText(tag) + " rules", *lists.begin(), TagText(tag), {}});
            continue;
        }
        // Language systems that give the tag the same lookups share one section,
        // named by their scripts and languages in ScriptList order.
        for (const std::vector<uint16_t>& lookups : lists) {
            std::string where;
            std::vector<std::string> langSystems;
            uint32_t lastScript = 0;
            for (const LangSys& langSys : header.langSystems) {
                std::vector<uint16_t> indices = langSys.features;
                if (langSys.requiredFeature != 0xFFFF) indices.push_back(langSys.requiredFeature);
                // A structured binding is captured by copy: clang 14 captures none by reference.
                bool uses = std::any_of(indices.begin(), indices.end(), [&, tag = tag](uint16_t index) {
                    return index < header.features.size() && header.features[index].tag == tag &&
                           header.features[index].lookups == lookups;
                });
                if (!uses) continue;
                if (where.empty() || langSys.script != lastScript) {
                    where += (where.empty() ? " in script " : "; script ") + TagText(langSys.script) + " language";
                }
                where.append(" ").append(TagText(langSys.language));
                langSystems.push_back(TagText(langSys.script) + " " + TagText(langSys.language));
                lastScript = langSys.script;
            }
            sections.push_back({TagText(tag) + " rules" + (where.empty() ? " of no language system" : where), lookups,
                                TagText(tag), std::move(langSystems)});
        }
    }
    return sections;
}

// ---- Contextual lookups, shared by 'GSUB' and 'GPOS' ----

// One position of a context: a glyph, a class or a set of glyphs.
void AppendGlyphs(RuleText& text, const std::vector<uint16_t>& glyphs, bool set) {
    if (set) text.Text("[");
    for (size_t i = 0; i < glyphs.size(); ++i) {
        if (i) text.Text(" ");
        text.Glyph(glyphs[i]);
    }
    if (set) text.Text("]");
}

RuleText SequenceLookups(VellView records, size_t count) {
    RuleText value;
    value.Text("=>");
    for (size_t i = 0; i < count; ++i) {
        value.Text(" at " + Decimal(records.u16(4 * i)) + " lookup " + Decimal(records.u16(2 + 4 * i)));
    }
    if (count == 0) value.Text(" nothing");
    return value;
}

class Flattener {
public:
    Flattener(VellView table, Budget& budget, std::vector<VellLayoutRule>& rules)
        : fTable(table), fBudget(budget), fRules(rules) {}

    void Add(const char* label, RuleText key, RuleText value) {
        if (fBudget.Rule()) fRules.push_back(MakeRule(label, std::move(key), std::move(value)));
    }
    Budget& budget() { return fBudget; }
    std::vector<uint16_t> Coverage(VellView base, size_t offset) { return ReadCoverage(base, offset, &fBudget); }

    // Contextual (formats 1 to 3) and chained contextual (formats 1 to 3) lookups
    // of either table: one rule per rule of the lookup.
    void Context(VellView subtable, bool chained, uint16_t lookupIndex, size_t subtableIndex);

private:
    void ClassContext(VellView subtable, bool chained, uint16_t lookupIndex, size_t subtableIndex);
    // Glyph sequences of format 1: count glyphs from offset, as one part of the key.
    RuleText GlyphRun(VellView rule, size_t offset, size_t count, bool reversed) {
        RuleText text;
        for (size_t i = 0; i < count; ++i) {
            if (i) text.Text(" ");
            text.Glyph(rule.u16(offset + 2 * (reversed ? count - 1 - i : i)));
        }
        return text;
    }
    RuleText ClassRun(VellView rule, size_t offset, size_t count, bool reversed) {
        RuleText text;
        for (size_t i = 0; i < count; ++i) {
            if (i) text.Text(" ");
            text.Text("class " + Decimal(rule.u16(offset + 2 * (reversed ? count - 1 - i : i))));
        }
        return text;
    }
    RuleText CoverageRun(VellView subtable, size_t offset, size_t count, bool reversed) {
        RuleText text;
        for (size_t i = 0; i < count; ++i) {
            if (i) text.Text(" ");
            AppendGlyphs(text, Coverage(subtable, subtable.u16(offset + 2 * (reversed ? count - 1 - i : i))), true);
        }
        return text;
    }

    VellView fTable;
    Budget& fBudget;
    std::vector<VellLayoutRule>& fRules;
};

RuleText ContextKey(const RuleText& backtrack, const RuleText& input, const RuleText& lookahead) {
    RuleText key;
    key.Append(backtrack).Text(" | ").Append(input).Text(" | ").Append(lookahead);
    return key;
}

void Flattener::Context(VellView subtable, bool chained, uint16_t lookupIndex, size_t subtableIndex) {
    uint16_t format = subtable.u16(0);
    if (format == 2) return ClassContext(subtable, chained, lookupIndex, subtableIndex);
    if (format == 3) {
        size_t at = 2;
        RuleText backtrack, input, lookahead;
        if (chained) {
            size_t count = subtable.records_that_fit(at + 2, subtable.u16(at), 2);
            backtrack = CoverageRun(subtable, at + 2, count, true);
            at += 2 + 2 * count;
            count = subtable.records_that_fit(at + 2, subtable.u16(at), 2);
            input = CoverageRun(subtable, at + 2, count, false);
            at += 2 + 2 * count;
            count = subtable.records_that_fit(at + 2, subtable.u16(at), 2);
            lookahead = CoverageRun(subtable, at + 2, count, false);
            at += 2 + 2 * count;
            size_t lookups = subtable.records_that_fit(at + 2, subtable.u16(at), 4);
            return Add("Context", ContextKey(backtrack, input, lookahead), SequenceLookups(subtable.sub(at + 2), lookups));
        }
        size_t count = subtable.records_that_fit(6, subtable.u16(2), 2);
        input = CoverageRun(subtable, 6, count, false);
        size_t lookups = subtable.records_that_fit(6 + 2 * count, subtable.u16(4), 4);
        return Add("Context", ContextKey(backtrack, input, lookahead), SequenceLookups(subtable.sub(6 + 2 * count), lookups));
    }
    if (format != 1) return;
    std::vector<uint16_t> coverage = Coverage(subtable, subtable.u16(2));
    size_t sets = std::min(coverage.size(), subtable.records_that_fit(6, subtable.u16(4), 2));
    for (size_t s = 0; s < sets; ++s) {
        VellView ruleSet = subtable.sub(subtable.u16(6 + 2 * s));
        if (subtable.u16(6 + 2 * s) == 0) continue;
        size_t rules = ruleSet.records_that_fit(2, ruleSet.u16(0), 2);
        for (size_t r = 0; r < rules && !fBudget.cut(); ++r) {
            VellView rule = ruleSet.sub(ruleSet.u16(2 + 2 * r));
            RuleText backtrack, input, lookahead;
            size_t at = 0;
            if (chained) {
                size_t count = rule.records_that_fit(2, rule.u16(0), 2);
                backtrack = GlyphRun(rule, 2, count, true);
                at = 2 + 2 * count;
            }
            size_t inputCount = rule.u16(at);
            size_t rest = inputCount ? rule.records_that_fit(at + 2 + (chained ? 0 : 2), inputCount - 1, 2) : 0;
            input.Glyph(coverage[s]);
            if (rest) input.Text(" ").Append(GlyphRun(rule, at + 2 + (chained ? 0 : 2), rest, false));
            size_t lookups;
            if (chained) {
                at += 2 + 2 * rest;
                size_t count = rule.records_that_fit(at + 2, rule.u16(at), 2);
                lookahead = GlyphRun(rule, at + 2, count, false);
                at += 2 + 2 * count;
                lookups = rule.records_that_fit(at + 2, rule.u16(at), 4);
                at += 2;
            } else {
                lookups = rule.records_that_fit(4 + 2 * rest, rule.u16(2), 4);
                at = 4 + 2 * rest;
            }
            Add("Context", ContextKey(backtrack, input, lookahead), SequenceLookups(rule.sub(at), lookups));
        }
    }
}

// Format 2: rules over classes. The classes are the subtable's own, so its rules
// are named by lookup and subtable, and each class's glyphs are listed too.
void Flattener::ClassContext(VellView subtable, bool chained, uint16_t lookupIndex, size_t subtableIndex) {
    std::string where = "lookup " + Decimal(lookupIndex) + " subtable " + Decimal(subtableIndex);
    static constexpr const char* kParts[] = {"backtrack", "input", "lookahead"};
    size_t classDefs = chained ? 3 : 1;
    for (size_t c = 0; c < classDefs; ++c) {
        const char* part = chained ? kParts[c] : "input";
        for (const auto& [glyph, glyphClass] : ReadClassDef(subtable, subtable.u16(4 + 2 * c), &fBudget)) {
            Add("Context class", RuleText().Text(where + " " + part + " ").Glyph(glyph),
                RuleText().Text("class " + Decimal(glyphClass)));
        }
    }
    std::vector<uint16_t> coverage = Coverage(subtable, subtable.u16(2));
    std::set<uint16_t> firstClasses;
    auto inputClasses = ReadClassDef(subtable, subtable.u16(chained ? 6 : 4), &fBudget);
    std::map<uint16_t, uint16_t> classOf(inputClasses.begin(), inputClasses.end());
    for (uint16_t glyph : coverage) firstClasses.insert(classOf.count(glyph) ? classOf[glyph] : 0);
    size_t setsAt = chained ? 10 : 6;
    size_t sets = subtable.records_that_fit(setsAt + 2, subtable.u16(setsAt), 2);
    for (size_t s = 0; s < sets; ++s) {
        uint16_t setOffset = subtable.u16(setsAt + 2 + 2 * s);
        // Only classes that begin a covered glyph can ever match.
        if (setOffset == 0 || !firstClasses.count(static_cast<uint16_t>(s))) continue;
        VellView ruleSet = subtable.sub(setOffset);
        size_t rules = ruleSet.records_that_fit(2, ruleSet.u16(0), 2);
        for (size_t r = 0; r < rules && !fBudget.cut(); ++r) {
            VellView rule = ruleSet.sub(ruleSet.u16(2 + 2 * r));
            RuleText backtrack, input, lookahead;
            size_t at = 0;
            if (chained) {
                size_t count = rule.records_that_fit(2, rule.u16(0), 2);
                backtrack = ClassRun(rule, 2, count, true);
                at = 2 + 2 * count;
            }
            size_t inputCount = rule.u16(at);
            size_t restAt = at + 2 + (chained ? 0 : 2);
            size_t rest = inputCount ? rule.records_that_fit(restAt, inputCount - 1, 2) : 0;
            input.Text("class " + Decimal(s));
            if (rest) input.Text(" ").Append(ClassRun(rule, restAt, rest, false));
            size_t lookups;
            if (chained) {
                at = restAt + 2 * rest;
                size_t count = rule.records_that_fit(at + 2, rule.u16(at), 2);
                lookahead = ClassRun(rule, at + 2, count, false);
                at += 2 + 2 * count;
                lookups = rule.records_that_fit(at + 2, rule.u16(at), 4);
                at += 2;
            } else {
                lookups = rule.records_that_fit(restAt + 2 * rest, rule.u16(2), 4);
                at = restAt + 2 * rest;
            }
            RuleText key;
            key.Text(where + ": ").Append(ContextKey(backtrack, input, lookahead));
            Add("Context", std::move(key), SequenceLookups(rule.sub(at), lookups));
        }
    }
}

// ---- 'GSUB' ----

// Within one lookup, the first subtable that covers a glyph substitutes it; a
// later single, multiple or alternate subtable covering it again never applies.
void FlattenSubstitution(Flattener& out, const Lookup& lookup, uint16_t lookupIndex) {
    std::vector<bool> covered(0x10000, false);
    auto first = [&covered](uint16_t glyph) {
        bool seen = covered[glyph];
        covered[glyph] = true;
        return !seen;
    };
    for (size_t s = 0; s < lookup.subtables.size() && !out.budget().cut(); ++s) {
        VellView subtable = lookup.subtables[s];
        uint16_t format = subtable.u16(0);
        switch (lookup.type) {
            case 1: {
                std::vector<uint16_t> coverage = out.Coverage(subtable, subtable.u16(2));
                if (format == 1) {
                    uint16_t delta = subtable.u16(4);
                    for (uint16_t glyph : coverage) {
                        if (first(glyph)) out.Add("Substitution", RuleText().Glyph(glyph),
                                RuleText().Text("-> ").Glyph(static_cast<uint16_t>(glyph + delta)));
                    }
                } else if (format == 2) {
                    size_t count = std::min(coverage.size(), subtable.records_that_fit(6, subtable.u16(4), 2));
                    for (size_t i = 0; i < count; ++i) {
                        if (!first(coverage[i])) continue;
                        out.Add("Substitution", RuleText().Glyph(coverage[i]), RuleText().Text("-> ").Glyph(subtable.u16(6 + 2 * i)));
                    }
                }
                break;
            }
            case 2:
            case 3: {
                if (format != 1) break;
                std::vector<uint16_t> coverage = out.Coverage(subtable, subtable.u16(2));
                size_t count = std::min(coverage.size(), subtable.records_that_fit(6, subtable.u16(4), 2));
                for (size_t i = 0; i < count && !out.budget().cut(); ++i) {
                    if (!first(coverage[i])) continue;
                    VellView sequence = subtable.sub(subtable.u16(6 + 2 * i));
                    size_t glyphs = sequence.records_that_fit(2, sequence.u16(0), 2);
                    if (!out.budget().Work(glyphs)) break;
                    std::vector<uint16_t> output;
                    for (size_t g = 0; g < glyphs; ++g) output.push_back(sequence.u16(2 + 2 * g));
                    RuleText value;
                    value.Text("-> ");
                    AppendGlyphs(value, output, lookup.type == 3);
                    out.Add(lookup.type == 3 ? "Alternates" : "Substitution", RuleText().Glyph(coverage[i]), std::move(value));
                }
                break;
            }
            case 4: {
                if (format != 1) break;
                std::vector<uint16_t> coverage = out.Coverage(subtable, subtable.u16(2));
                size_t count = std::min(coverage.size(), subtable.records_that_fit(6, subtable.u16(4), 2));
                for (size_t i = 0; i < count && !out.budget().cut(); ++i) {
                    VellView ligatureSet = subtable.sub(subtable.u16(6 + 2 * i));
                    size_t ligatures = ligatureSet.records_that_fit(2, ligatureSet.u16(0), 2);
                    for (size_t l = 0; l < ligatures && !out.budget().cut(); ++l) {
                        VellView ligature = ligatureSet.sub(ligatureSet.u16(2 + 2 * l));
                        uint16_t components = ligature.u16(2);
                        size_t rest = components ? ligature.records_that_fit(4, components - 1u, 2) : 0;
                        RuleText key;
                        key.Glyph(coverage[i]);
                        for (size_t c = 0; c < rest; ++c) key.Text(" ").Glyph(ligature.u16(4 + 2 * c));
                        out.Add("Ligature", std::move(key), RuleText().Text("-> ").Glyph(ligature.u16(0)));
                    }
                }
                break;
            }
            case 5:
            case 6:
                out.Context(subtable, lookup.type == 6, lookupIndex, s);
                break;
            case 8: {
                if (format != 1) break;
                std::vector<uint16_t> coverage = out.Coverage(subtable, subtable.u16(2));
                size_t backtrackCount = subtable.records_that_fit(6, subtable.u16(4), 2);
                RuleText backtrack, lookahead;
                for (size_t i = 0; i < backtrackCount; ++i) {
                    if (i) backtrack.Text(" ");
                    AppendGlyphs(backtrack, out.Coverage(subtable, subtable.u16(6 + 2 * (backtrackCount - 1 - i))), true);
                }
                size_t at = 6 + 2 * backtrackCount;
                size_t lookaheadCount = subtable.records_that_fit(at + 2, subtable.u16(at), 2);
                for (size_t i = 0; i < lookaheadCount; ++i) {
                    if (i) lookahead.Text(" ");
                    AppendGlyphs(lookahead, out.Coverage(subtable, subtable.u16(at + 2 + 2 * i)), true);
                }
                at += 2 + 2 * lookaheadCount;
                size_t count = std::min(coverage.size(), subtable.records_that_fit(at + 2, subtable.u16(at), 2));
                for (size_t i = 0; i < count && !out.budget().cut(); ++i) {
                    out.Add("Reverse", ContextKey(backtrack, RuleText().Glyph(coverage[i]), lookahead),
                            RuleText().Text("-> ").Glyph(subtable.u16(at + 2 + 2 * i)));
                }
                break;
            }
            default:
                break;
        }
    }
}

// ---- 'GPOS' ----

// The pair adjustments one lookup makes: the first subtable that covers a pair
// gives its values, even zero ones, and a ClassDef-based subtable covers every
// second glyph of each first glyph it covers.
using PairValues = std::unordered_map<uint32_t, std::pair<Adjustment, Adjustment>>;

void FlattenPairs(Flattener& out, const Lookup& lookup, uint32_t glyphCount, const VellDeltaSetText& deltaSets,
                  PairValues& sums) {
    Budget& budget = out.budget();
    std::unordered_set<uint32_t> covered;
    std::vector<bool> firstCovered(0x10000, false);
    // Each pair is added once per lookup, so the lookup's values go straight into
    // the feature's sums.
    auto add = [&sums](uint32_t pair, const Adjustment& a, const Adjustment& b) {
        auto& sum = sums[pair];
        sum.first.Add(a);
        sum.second.Add(b);
    };
    auto record = [&](uint16_t first, uint16_t second, const Adjustment& a, const Adjustment& b) {
        uint32_t pair = static_cast<uint32_t>(first) << 16 | second;
        if (!covered.insert(pair).second) return true;
        if (a.zero() && b.zero()) return true;
        if (!budget.Rule()) return false;
        add(pair, a, b);
        return true;
    };
    for (VellView subtable : lookup.subtables) {
        if (budget.cut()) break;
        uint16_t format = subtable.u16(0), format1 = subtable.u16(4), format2 = subtable.u16(6);
        size_t size1 = VellValueRecordSize(format1), size2 = VellValueRecordSize(format2);
        std::vector<uint16_t> coverage = out.Coverage(subtable, subtable.u16(2));
        if (format == 1) {
            size_t sets = std::min(coverage.size(), subtable.records_that_fit(10, subtable.u16(8), 2));
            for (size_t i = 0; i < sets && !budget.cut(); ++i) {
                if (firstCovered[coverage[i]]) continue;
                // Device offsets of a PairValueRecord count from its PairSet.
                VellView pairSet = subtable.sub(subtable.u16(10 + 2 * i));
                size_t recordSize = 2 + size1 + size2;
                size_t count = pairSet.records_that_fit(2, pairSet.u16(0), recordSize);
                if (!budget.Work(count)) break;
                for (size_t r = 0; r < count; ++r) {
                    size_t at = 2 + r * recordSize;
                    if (!record(coverage[i], pairSet.u16(at), ReadValueRecord(pairSet, at + 2, format1, deltaSets),
                                ReadValueRecord(pairSet, at + 2 + size1, format2, deltaSets))) {
                        break;
                    }
                }
            }
        } else if (format == 2) {
            auto classes1 = ReadClassDef(subtable, subtable.u16(8), &budget);
            auto classes2 = ReadClassDef(subtable, subtable.u16(10), &budget);
            size_t class1Count = subtable.u16(12), class2Count = subtable.u16(14);
            size_t recordSize = size1 + size2;
            class1Count = recordSize && class2Count ? subtable.records_that_fit(16, class1Count, class2Count * recordSize) : 0;
            // Which second glyphs each class holds; class 0 is every glyph no class names.
            std::vector<std::vector<uint16_t>> glyphsOfClass(class2Count);
            std::vector<bool> named(0x10000, false);
            for (const auto& [glyph, glyphClass] : classes2) {
                named[glyph] = true;
                if (glyphClass < class2Count) glyphsOfClass[glyphClass].push_back(glyph);
            }
            if (class2Count) {
                for (uint32_t glyph = 0; glyph < std::min<uint32_t>(glyphCount, 0x10000); ++glyph) {
                    if (!named[glyph]) glyphsOfClass[0].push_back(static_cast<uint16_t>(glyph));
                }
            }
            std::map<uint16_t, uint16_t> classOf(classes1.begin(), classes1.end());
            // The non-zero values of each class pair, read once.
            std::vector<std::vector<std::pair<size_t, std::pair<Adjustment, Adjustment>>>> rows(class1Count);
            if (!budget.Work(class1Count * class2Count)) break;
            for (size_t c1 = 0; c1 < class1Count; ++c1) {
                for (size_t c2 = 0; c2 < class2Count; ++c2) {
                    size_t at = 16 + (c1 * class2Count + c2) * recordSize;
                    Adjustment a = ReadValueRecord(subtable, at, format1, deltaSets);
                    Adjustment b = ReadValueRecord(subtable, at + size1, format2, deltaSets);
                    if (!a.zero() || !b.zero()) rows[c1].push_back({c2, {std::move(a), std::move(b)}});
                }
            }
            for (uint16_t first : coverage) {
                if (budget.cut()) break;
                if (firstCovered[first]) continue;
                firstCovered[first] = true;
                auto found = classOf.find(first);
                size_t c1 = found == classOf.end() ? 0 : found->second;
                if (c1 >= class1Count) continue;
                for (const auto& [c2, adjustments] : rows[c1]) {
                    if (!budget.Work(glyphsOfClass[c2].size())) break;
                    for (uint16_t second : glyphsOfClass[c2]) {
                        uint32_t pair = static_cast<uint32_t>(first) << 16 | second;
                        if (covered.count(pair)) continue;
                        if (!budget.Rule()) break;
                        add(pair, adjustments.first, adjustments.second);
                    }
                }
            }
        }
    }
}

// Each mark's class and anchor, and each base's (ligature component's, mark's)
// anchor per class, for lookup types 4, 5 and 6.
void FlattenMarkAttachment(Flattener& out, const Lookup& lookup, uint16_t lookupIndex,
                           const VellDeltaSetText& deltaSets) {
    static constexpr const char* kBaseLabels[] = {"Base", "Ligature", "Mark2"};
    const char* baseLabel = kBaseLabels[lookup.type - 4];
    std::string where = " lookup " + Decimal(lookupIndex);
    for (VellView subtable : lookup.subtables) {
        if (out.budget().cut() || subtable.u16(0) != 1) continue;
        std::vector<uint16_t> marks = out.Coverage(subtable, subtable.u16(2));
        std::vector<uint16_t> bases = out.Coverage(subtable, subtable.u16(4));
        size_t classCount = subtable.u16(6);
        VellView markArray = subtable.sub(subtable.u16(8));
        size_t markCount = std::min(marks.size(), markArray.records_that_fit(2, markArray.u16(0), 4));
        for (size_t m = 0; m < markCount; ++m) {
            out.Add("Mark", RuleText().Glyph(marks[m]).Text(where),
                    RuleText().Text("class " + Decimal(markArray.u16(2 + 4 * m)) + " " +
                                    AnchorText(markArray, markArray.u16(4 + 4 * m), deltaSets)));
        }
        VellView baseArray = subtable.sub(subtable.u16(10));
        auto anchors = [&](VellView records, size_t at) {
            std::string text;
            for (size_t c = 0; c < classCount; ++c) {
                if (c) text += ", ";
                text += "class " + Decimal(c) + " " + AnchorText(records, records.u16(at + 2 * c), deltaSets);
            }
            return text;
        };
        size_t baseRecord = lookup.type == 5 ? 2 : 2 * classCount;  // a LigatureAttach offset, or the anchors
        size_t baseCount = std::min(bases.size(), baseArray.records_that_fit(2, baseArray.u16(0), baseRecord));
        if (classCount == 0) continue;
        for (size_t b = 0; b < baseCount && out.budget().Work(classCount); ++b) {
            if (lookup.type != 5) {
                out.Add(baseLabel, RuleText().Glyph(bases[b]).Text(where),
                        RuleText().Text(anchors(baseArray, 2 + 2 * classCount * b)));
                continue;
            }
            VellView attach = baseArray.sub(baseArray.u16(2 + 2 * b));
            size_t components = attach.records_that_fit(2, attach.u16(0), 2 * classCount);
            if (!out.budget().Work(components * classCount)) break;
            std::string text;
            for (size_t c = 0; c < components; ++c) {
                text += (c ? "; component " : "component ") + Decimal(c) + ": " + anchors(attach, 2 + 2 * classCount * c);
            }
            out.Add(baseLabel, RuleText().Glyph(bases[b]).Text(where), RuleText().Text(text));
        }
    }
}

void FlattenPositioning(Flattener& out, const Lookup& lookup, uint16_t lookupIndex, const VellDeltaSetText& deltaSets,
                        std::map<uint16_t, Adjustment>& singles) {
    switch (lookup.type) {
        case 1: {
            std::set<uint16_t> covered;
            for (VellView subtable : lookup.subtables) {
                uint16_t format = subtable.u16(0), valueFormat = subtable.u16(4);
                std::vector<uint16_t> coverage = out.Coverage(subtable, subtable.u16(2));
                size_t size = VellValueRecordSize(valueFormat);
                size_t count = coverage.size();
                if (format == 2) count = std::min(count, subtable.records_that_fit(8, subtable.u16(6), size));
                if (format != 1 && format != 2) continue;
                for (size_t i = 0; i < count && out.budget().Work(1); ++i) {
                    if (!covered.insert(coverage[i]).second) continue;
                    singles[coverage[i]].Add(ReadValueRecord(subtable, format == 1 ? 6 : 8 + size * i, valueFormat, deltaSets));
                }
            }
            break;
        }
        case 3:
            for (VellView subtable : lookup.subtables) {
                if (subtable.u16(0) != 1) continue;
                std::vector<uint16_t> coverage = out.Coverage(subtable, subtable.u16(2));
                size_t count = std::min(coverage.size(), subtable.records_that_fit(6, subtable.u16(4), 4));
                for (size_t i = 0; i < count; ++i) {
                    out.Add("Cursive", RuleText().Glyph(coverage[i]).Text(" lookup " + Decimal(lookupIndex)),
                            RuleText().Text("entry " + AnchorText(subtable, subtable.u16(6 + 4 * i), deltaSets) + ", exit " +
                                            AnchorText(subtable, subtable.u16(8 + 4 * i), deltaSets)));
                }
            }
            break;
        case 4:
        case 5:
        case 6:
            FlattenMarkAttachment(out, lookup, lookupIndex, deltaSets);
            break;
        case 7:
        case 8:
            for (size_t s = 0; s < lookup.subtables.size(); ++s) out.Context(lookup.subtables[s], lookup.type == 8, lookupIndex, s);
            break;
        default:
            break;
    }
}

// Rules sort by the glyphs of their keys; rules with equal keys (a glyph
// substituted by two lookups of one feature, say) become one rule whose value
// lists each in lookup order.
void SortRules(std::vector<VellLayoutRule>& rules) {
    auto keyOf = [](const VellLayoutRule& rule) {
        return std::span<const uint16_t>(rule.glyphs.data(), std::min(rule.keyGlyphs, rule.glyphs.size()));
    };
    auto before = [&keyOf](const VellLayoutRule& a, const VellLayoutRule& b) {
        std::span<const uint16_t> ka = keyOf(a), kb = keyOf(b);
        if (!std::equal(ka.begin(), ka.end(), kb.begin(), kb.end()))
            return std::lexicographical_compare(ka.begin(), ka.end(), kb.begin(), kb.end());
        if (a.key != b.key) return a.key < b.key;
        return std::string_view(a.label) < b.label;
    };
    std::stable_sort(rules.begin(), rules.end(), before);
    size_t kept = 0;
    for (size_t i = 0; i < rules.size(); ++i) {
        if (kept > 0 && !before(rules[kept - 1], rules[i]) && !before(rules[i], rules[kept - 1])) {
            VellLayoutRule& first = rules[kept - 1];
            first.value += "; " + rules[i].value;
            first.glyphs.insert(first.glyphs.end(), rules[i].glyphs.begin() + static_cast<std::ptrdiff_t>(rules[i].keyGlyphs),
                                rules[i].glyphs.end());
            continue;
        }
        if (kept != i) rules[kept] = std::move(rules[i]);
        ++kept;
    }
    rules.resize(kept);
}

VellLayoutAccount ReadLayout(VellView table, bool positioning, uint32_t glyphCount, const VellDeltaSetText& deltaSets) {
    VellLayoutAccount account;
    Budget budget(table.size());
    LayoutHeader header = ReadLayoutHeader(table, positioning ? kPositioningExtension : kSubstitutionExtension);
    AddStructure(account, header, budget);
    // Substitution and mark lookups flatten the same way whichever feature uses them.
    std::map<uint16_t, std::vector<VellLayoutRule>> lookupRules;
    std::map<uint16_t, std::map<uint16_t, Adjustment>> lookupSingles;
    for (const RuleSection& section : RuleSections(header)) {
        if (budget.cut()) break;
        VellLayoutRuleList list{section.what, {}, section.tag, section.langSystems};
        PairValues pairs;
        std::map<uint16_t, Adjustment> singles;
        for (uint16_t index : section.lookups) {
            if (index >= header.lookups.size() || budget.cut()) continue;
            const Lookup& lookup = header.lookups[index];
            if (positioning && lookup.type == 2) {
                // Pairs are not kept per lookup: a large class-based lookup would
                // hold its glyph pairs twice.
                std::vector<VellLayoutRule> unused;
                Flattener out(table, budget, unused);
                FlattenPairs(out, lookup, glyphCount, deltaSets, pairs);
                continue;
            }
            if (positioning && lookup.type == 1) {
                if (!lookupSingles.count(index)) {
                    std::vector<VellLayoutRule> unused;
                    Flattener out(table, budget, unused);
                    FlattenPositioning(out, lookup, index, deltaSets, lookupSingles[index]);
                }
                for (const auto& [glyph, adjustment] : lookupSingles[index]) singles[glyph].Add(adjustment);
                continue;
            }
            if (!lookupRules.count(index)) {
                Flattener out(table, budget, lookupRules[index]);
                std::map<uint16_t, Adjustment> unused;
                if (positioning) {
                    FlattenPositioning(out, lookup, index, deltaSets, unused);
                } else {
                    FlattenSubstitution(out, lookup, index);
                }
            }
            const std::vector<VellLayoutRule>& rules = lookupRules[index];
            if (!budget.Work(rules.size())) break;
            list.rules.insert(list.rules.end(), rules.begin(), rules.end());
        }
        for (const auto& [glyph, adjustment] : singles) {
            if (!budget.Rule()) break;
            list.rules.push_back(MakeRule("Single", RuleText().Glyph(glyph), RuleText().Text(adjustment.Text())));
        }
        std::vector<uint32_t> order;
        order.reserve(pairs.size());
        for (const auto& [pair, adjustments] : pairs) {
            if (!adjustments.first.zero() || !adjustments.second.zero()) order.push_back(pair);
        }
        std::sort(order.begin(), order.end());
        for (uint32_t pair : order) {
            if (!budget.Rule()) break;
            // Each pair's sums are released once its rule holds them.
            auto node = pairs.extract(pair);
            const auto& [first, second] = node.mapped();
            std::string value = first.Text();
            if (!second.zero()) value += "; second " + second.Text();
            list.rules.push_back(MakeRule("Pair", RuleText().Glyph(static_cast<uint16_t>(pair >> 16)).Text(" ").Glyph(static_cast<uint16_t>(pair)),
                                          RuleText().Text(value)));
        }
        SortRules(list.rules);
        account.lists.push_back(std::move(list));
    }
    account.cut = budget.cut();
    return account;
}

// ---- 'GDEF' ----

void AddGlyphClasses(VellLayoutAccount& account, VellView table, size_t offset, const char* what, const char* label,
                     bool glyphClassNames, Budget& budget) {
    if (offset == 0) return;
    static constexpr const char* kClassNames[] = {"0", "Base", "Ligature", "Mark", "Component"};
    VellLayoutRuleList list{what, {}, {}, {}};
    for (const auto& [glyph, glyphClass] : ReadClassDef(table, offset, &budget)) {
        if (!budget.Rule()) break;
        std::string value = glyphClassNames && glyphClass < 5 ? kClassNames[glyphClass] : "class " + Decimal(glyphClass);
        list.rules.push_back(MakeRule(label, RuleText().Glyph(glyph), RuleText().Text(value)));
    }
    account.lists.push_back(std::move(list));
}

// The item variation store of a version 1.3 'GDEF', or an empty one.
VellItemVariationStore GDEFVariationStore(VellView gdef) {
    if (gdef.u16(0) != 1 || gdef.u16(2) < 3 || gdef.u32(14) == 0) return {};
    return VellItemVariationStore(gdef.sub(gdef.u32(14)));
}

// "region 0: -5, region 3: 2", each delta beside the region it applies in.
std::string DeltasText(const VellDeltaSet& set) {
    std::string text;
    for (size_t i = 0; i < set.deltas.size() && i < set.regionIndexes.size(); ++i) {
        text += (i ? ", region " : "region ") + Decimal(set.regionIndexes[i]) + ": " + Decimal(set.deltas[i]);
    }
    return text.empty() ? "no deltas" : text;
}

}  // namespace

size_t VellLayoutRuleCap(size_t tableBytes) {
    return std::max(tableBytes * kVellLayoutRulesPerByte, kVellLayoutRuleFloor);
}

std::vector<uint16_t> VellReadCoverage(VellView table, size_t offset) { return ReadCoverage(table, offset, nullptr); }

std::vector<std::pair<uint16_t, uint16_t>> VellReadClassDef(VellView table, size_t offset) {
    return ReadClassDef(table, offset, nullptr);
}

size_t VellValueRecordSize(uint16_t valueFormat) {
    return 2 * static_cast<size_t>(__builtin_popcount(valueFormat & 0xFF));
}

VellLayoutAccount VellReadGSUB(VellView table) { return ReadLayout(table, false, 0, {}); }

VellLayoutAccount VellReadGPOS(VellView table, uint32_t glyphCount, const VellDeltaSetText& deltaSets) {
    return ReadLayout(table, true, glyphCount, deltaSets);
}

VellLayoutAccount VellReadGDEF(VellView table) {
    VellLayoutAccount account;
    Budget budget(table.size());
    uint32_t version = table.u32(0);
    if (table.u16(0) != 1) return account;
    AddGlyphClasses(account, table, table.u16(4), "glyph classes", "Glyph class", true, budget);

    if (uint16_t attachList = table.u16(6)) {
        VellView list = table.sub(attachList);
        std::vector<uint16_t> coverage = ReadCoverage(list, list.u16(0), &budget);
        size_t count = std::min(coverage.size(), list.records_that_fit(4, list.u16(2), 2));
        VellLayoutRuleList rules{"attachment points", {}, {}, {}};
        for (size_t i = 0; i < count && budget.Rule(); ++i) {
            VellView points = list.sub(list.u16(4 + 2 * i));
            size_t pointCount = points.records_that_fit(2, points.u16(0), 2);
            if (!budget.Work(pointCount)) break;
            std::string value = "points";
            for (size_t p = 0; p < pointCount; ++p) value += " " + Decimal(points.u16(2 + 2 * p));
            rules.rules.push_back(MakeRule("Attachment", RuleText().Glyph(coverage[i]), RuleText().Text(value)));
        }
        account.lists.push_back(std::move(rules));
    }

    if (uint16_t ligCaretList = table.u16(8)) {
        VellView list = table.sub(ligCaretList);
        std::vector<uint16_t> coverage = ReadCoverage(list, list.u16(0), &budget);
        size_t count = std::min(coverage.size(), list.records_that_fit(4, list.u16(2), 2));
        VellLayoutRuleList rules{"ligature carets", {}, {}, {}};
        VellDeltaSetText deltaSets = VellGDEFDeltaSets(table);
        for (size_t i = 0; i < count && budget.Rule(); ++i) {
            VellView ligGlyph = list.sub(list.u16(4 + 2 * i));
            size_t carets = ligGlyph.records_that_fit(2, ligGlyph.u16(0), 2);
            if (!budget.Work(carets)) break;
            std::string value;
            for (size_t c = 0; c < carets; ++c) {
                VellView caret = ligGlyph.sub(ligGlyph.u16(2 + 2 * c));
                if (c) value += ", ";
                switch (caret.u16(0)) {
                    case 1: value += "coordinate " + Decimal(caret.s16(2)); break;
                    case 2: value += "point " + Decimal(caret.u16(2)); break;
                    case 3:
                        value += "coordinate " + Decimal(caret.s16(2)) + " " + DeviceText(caret, caret.u16(4), deltaSets);
                        break;
                    default: value += "caret format " + Decimal(caret.u16(0)); break;
                }
            }
            rules.rules.push_back(MakeRule("Carets", RuleText().Glyph(coverage[i]), RuleText().Text(value.empty() ? "none" : value)));
        }
        account.lists.push_back(std::move(rules));
    }

    AddGlyphClasses(account, table, table.u16(10), "mark attachment classes", "Mark class", false, budget);

    if (version >= 0x00010002 && table.u16(12) != 0) {
        VellView sets = table.sub(table.u16(12));
        size_t count = sets.u16(0) == 1 ? sets.records_that_fit(4, sets.u16(2), 4) : 0;
        VellLayoutRuleList rules{"mark glyph sets", {}, {}, {}};
        for (size_t s = 0; s < count && !budget.cut(); ++s) {
            for (uint16_t glyph : ReadCoverage(sets, sets.u32(4 + 4 * s), &budget)) {
                if (!budget.Rule()) break;
                rules.rules.push_back(MakeRule("Set member", RuleText().Text("set " + Decimal(s) + " glyph ").Glyph(glyph), RuleText()));
            }
        }
        account.lists.push_back(std::move(rules));
    }
    for (VellLayoutRuleList& list : account.lists) SortRules(list.rules);

    VellItemVariationStore store = GDEFVariationStore(table);
    if (!store.empty()) {
        const VellVariationRegionList& regions = store.Regions();
        VellLayoutRuleList regionRules{"variation regions", {}, {}, {}};
        for (size_t r = 0; r < regions.RegionCount() && budget.Rule() && budget.Work(regions.AxisCount()); ++r) {
            std::string value;
            for (size_t a = 0; a < regions.AxisCount(); ++a) {
                VellRegionAxis axis = regions.Axis(r, a);
                value += (a ? ", axis " : "axis ") + Decimal(a) + " (" + F2Dot14Text(axis.start) + ", " +
                         F2Dot14Text(axis.peak) + ", " + F2Dot14Text(axis.end) + ")";
            }
            regionRules.rules.push_back(MakeRule("Region", RuleText().Text("region " + Decimal(r)), RuleText().Text(value)));
        }
        account.lists.push_back(std::move(regionRules));
        VellLayoutRuleList deltaRules{"delta sets", {}, {}, {}};
        for (size_t outer = 0; outer < std::min<size_t>(store.DataCount(), 0x10000) && !budget.cut(); ++outer) {
            VellItemVariationData data = store.Data(outer);
            for (size_t inner = 0; inner < std::min<size_t>(data.ItemCount(), 0x10000); ++inner) {
                if (!budget.Rule() || !budget.Work(data.RegionIndexes().size())) break;
                deltaRules.rules.push_back(MakeRule("Delta set", RuleText().Text(Decimal(outer) + "/" + Decimal(inner)),
                                                    RuleText().Text(DeltasText(store.DeltaSet(static_cast<uint16_t>(outer),
                                                                                              static_cast<uint16_t>(inner))))));
            }
        }
        account.lists.push_back(std::move(deltaRules));
    }
    account.cut = budget.cut();
    return account;
}

VellDeltaSetText VellGDEFDeltaSets(VellView gdef) {
    VellItemVariationStore store = GDEFVariationStore(gdef);
    if (store.empty()) return {};
    return [store](uint16_t outer, uint16_t inner) {
        return "delta set " + Decimal(outer) + "/" + Decimal(inner) + " (" + DeltasText(store.DeltaSet(outer, inner)) + ")";
    };
}

// ---- 'kern' ----

VellLayoutAccount VellReadKern(VellView table) {
    VellLayoutAccount account;
    Budget budget(table.size());
    VellLayoutRuleList subtables{"subtables", {}, {}, {}};
    // Pairs are summed over the subtables of one kind, as a shaper adds them up.
    std::map<std::string, std::map<uint32_t, int32_t>> pairsOfKind;
    bool apple = table.u32(0) == 0x00010000;
    size_t count = apple ? table.u32(4) : table.u16(2);
    size_t at = apple ? 8 : 4;
    size_t headerBytes = apple ? 8 : 6;
    for (size_t s = 0; s < count && at < table.size() && !budget.cut(); ++s) {
        VellView subtable = table.sub(at);
        size_t length = apple ? subtable.u32(0) : subtable.u16(2);
        uint16_t coverage = apple ? subtable.u16(4) : subtable.u16(4);
        unsigned format = apple ? coverage & 0xFF : coverage >> 8;
        std::string kind;
        if (apple) {
            kind = coverage & 0x8000 ? "vertical" : "horizontal";
            if (coverage & 0x4000) kind += " cross-stream";
            if (coverage & 0x2000) kind += " variation";
        } else {
            kind = coverage & 1 ? "horizontal" : "vertical";
            if (coverage & 2) kind += " minimum";
            if (coverage & 4) kind += " cross-stream";
            if (coverage & 8) kind += " override";
        }
        if (budget.Rule()) {
            subtables.rules.push_back(MakeRule("Subtable", RuleText().Text("subtable " + Decimal(s)),
                                               RuleText().Text("format " + Decimal(format) + ", " + kind + ", " +
                                                               Decimal(length) + " bytes")));
        }
        // The 16-bit-version length field overflows in large format 0 subtables;
        // such a subtable runs to the end of the table.
        VellView body = subtable.sub(headerBytes, !apple && count == 1 ? SIZE_MAX : (length > headerBytes ? length - headerBytes : 0));
        std::map<uint32_t, int32_t>& pairs = pairsOfKind[kind];
        std::map<uint32_t, int32_t> mine;
        if (format == 0) {
            size_t pairCount = body.records_that_fit(8, body.u16(0), 6);
            for (size_t p = 0; p < pairCount && budget.Work(1); ++p) {
                uint32_t pair = static_cast<uint32_t>(body.u16(8 + 6 * p)) << 16 | body.u16(10 + 6 * p);
                mine.emplace(pair, body.s16(12 + 6 * p));
            }
        } else if (format == 2 && !apple) {
            // Class values are byte offsets from the subtable's start: the left one
            // already includes the array's offset, the right one the column.
            VellView whole = subtable.sub(0, length);
            VellView left = whole.sub(body.u16(2)), right = whole.sub(body.u16(4));
            size_t leftCount = left.records_that_fit(4, left.u16(2), 2), rightCount = right.records_that_fit(4, right.u16(2), 2);
            for (size_t l = 0; l < leftCount && !budget.cut(); ++l) {
                if (!budget.Work(rightCount)) break;
                for (size_t r = 0; r < rightCount; ++r) {
                    int16_t value = whole.s16(static_cast<size_t>(left.u16(4 + 2 * l)) + right.u16(4 + 2 * r));
                    if (value == 0) continue;
                    uint32_t pair = static_cast<uint32_t>((left.u16(0) + l) & 0xFFFF) << 16 | ((right.u16(0) + r) & 0xFFFF);
                    mine.emplace(pair, value);
                }
            }
        }
        for (const auto& [pair, value] : mine) pairs[pair] += value;
        at += length ? length : table.size();
    }
    account.lists.push_back(std::move(subtables));
    for (const auto& [kind, pairs] : pairsOfKind) {
        VellLayoutRuleList list{kind + " pairs", {}, {}, {}};
        for (const auto& [pair, value] : pairs) {
            if (value == 0) continue;
            if (!budget.Rule()) break;
            list.rules.push_back(MakeRule("Pair", RuleText().Glyph(static_cast<uint16_t>(pair >> 16)).Text(" ").Glyph(static_cast<uint16_t>(pair)),
                                          RuleText().Text("X advance " + Decimal(value))));
        }
        account.lists.push_back(std::move(list));
    }
    account.cut = budget.cut();
    return account;
}

// ---- Rules as text, and compared ----

namespace {

// A rule's key or value with each glyph written by glyphText; `next` is the
// rule's next unwritten glyph.
void AppendRuleText(std::string& out, std::string_view text, const std::vector<uint16_t>& glyphs, size_t& next,
                    const VellGlyphText& glyphText) {
    for (char c : text) {
        if (c != kVellLayoutGlyph) {
            out.push_back(c);
        } else if (next < glyphs.size()) {
            out += glyphText(glyphs[next++]);
        }
    }
}

}  // namespace

std::string VellLayoutRuleText(const VellLayoutRule& rule, const VellGlyphText& glyphText) {
    std::string text;
    size_t next = 0;
    AppendRuleText(text, rule.key, rule.glyphs, next, glyphText);
    if (!rule.value.empty()) {
        // A substitution reads "a -> b"; any other value follows its key after a colon.
        std::string_view value = rule.value;
        text.append(value.starts_with("->") || value.starts_with("=>") ? " " : ": ");
        AppendRuleText(text, rule.value, rule.glyphs, next, glyphText);
    }
    return text;
}

VellLayoutDelta VellCompareLayoutRules(const VellLayoutRuleList* modified, const VellLayoutRuleList* original,
                                       const VellGlyphIdentity& modifiedGlyphs,
                                       const VellGlyphIdentity& originalGlyphs) {
    VellLayoutDelta delta;
    bool byName = !modifiedGlyphs.names.empty() && !originalGlyphs.names.empty();
    // Key and value in terms both fonts share; the two parts are split by a tab,
    // which no rule text holds.
    auto identity = [byName](const VellGlyphIdentity& glyphs) -> VellGlyphText {
        return [byName, &glyphs](uint16_t glyph) {
            if (byName && glyph < glyphs.names.size()) return "/" + glyphs.names[glyph];
            return "#" + std::to_string(glyph);
        };
    };
    auto split = [](const VellLayoutRule& rule, const VellGlyphText& text) {
        std::pair<std::string, std::string> parts;
        size_t next = 0;
        parts.first = std::string(rule.label) + "\t";
        AppendRuleText(parts.first, rule.key, rule.glyphs, next, text);
        AppendRuleText(parts.second, rule.value, rule.glyphs, next, text);
        return parts;
    };
    std::unordered_map<std::string, std::pair<std::string, const VellLayoutRule*>> originals;
    if (original) {
        VellGlyphText text = identity(originalGlyphs);
        for (const VellLayoutRule& rule : original->rules) {
            auto [key, value] = split(rule, text);
            originals.emplace(std::move(key), std::make_pair(std::move(value), &rule));
        }
    }
    std::vector<bool> matched(original ? original->rules.size() : 0, false);
    if (modified) {
        VellGlyphText text = identity(modifiedGlyphs);
        for (const VellLayoutRule& rule : modified->rules) {
            auto [key, value] = split(rule, text);
            auto found = originals.find(key);
            if (found == originals.end()) {
                delta.added.push_back(&rule);
                continue;
            }
            if (found->second.first != value) delta.changed.push_back({&rule, found->second.second});
            matched[static_cast<size_t>(found->second.second - original->rules.data())] = true;
        }
    }
    if (original) {
        for (size_t i = 0; i < original->rules.size(); ++i) {
            if (!matched[i]) delta.deleted.push_back(&original->rules[i]);
        }
    }
    return delta;
}

VellGlyphIdentity VellLayoutGlyphIdentity(VellFontRef font) {
    VellGlyphIdentity identity;
    ErrorRecord record;
    uint32_t glyphCount = VellCountFontGlyphs(font, &record);
    VellView post = VellFontTableView(font, VellMakeTag("post"), &record);
    if (record.code != 0 || post.u32(0) != 0x00020000 || post.u16(32) != glyphCount) return identity;
    std::unordered_set<std::string> seen;
    for (uint32_t glyph = 0; glyph < glyphCount; ++glyph) {
        std::string name;
        if (VellGetGlyphName(font, glyph, &name) != 0 || name.empty() || !seen.insert(name).second) return {};
        identity.names.push_back(std::move(name));
    }
    return identity;
}
