// Vell layout: the structures that 'GSUB', 'GPOS' and 'GDEF' share (Coverage,
// ClassDef, ScriptList, FeatureList, LookupList with its Extension lookups,
// ValueRecord, Anchor, Device and VariationIndex tables, FeatureVariations), and
// the flattening of those tables and of 'kern' into rules: one entry per
// substituted input, positioned glyph or pair, class or caret list, each with a
// key that says what it applies to and a value that says what it does.
//
// A rule's text holds one kVellLayoutGlyph byte where a glyph goes; the glyphs
// themselves stay numbers, so that a report can print them in either font's
// terms and match rules of two fonts by glyph name instead of glyph number.
//
// Every read goes through VellView; counts are capped by what the bytes hold, an
// Extension lookup that points at another Extension is not followed, and a
// flattened table stops at a number of rules tied to the table's size, which the
// account then says it was cut at.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "framework/VellFontFile.h"
#include "framework/VellTypes.h"
#include "framework/VellView.h"

// Where a glyph goes in a rule's key or value text.
inline constexpr char kVellLayoutGlyph = '\x01';

struct VellLayoutRule {
    const char* label;   // what kind of rule: "Substitution", "Pair", "Mark", ...
    std::string key;     // what the rule applies to
    std::string value;   // what it does; may be empty (a glyph in a set)
    std::vector<uint16_t> glyphs;  // the key's glyphs, then the value's, in text order
    size_t keyGlyphs = 0;          // how many of them are the key's
};

// The rules of one part of a table: its scripts, its features, the rules of one
// feature tag, the glyph classes of 'GDEF'...
struct VellLayoutRuleList {
    std::string what;  // "scripts", "'kern' rules", ...; names the list in headings
    std::vector<VellLayoutRule> rules;
    // For the rules of a feature tag listed per language system: the tag and the
    // language systems ("'latn' 'dflt'"), so that two fonts' lists can be paired
    // when one font has a language system more.
    std::string tag;
    std::vector<std::string> langSystems;
};

// A table read as rule lists, in the order an account prints them.
struct VellLayoutAccount {
    std::vector<VellLayoutRuleList> lists;
    // The table held more rules than its size allows to list; the lists stop there.
    bool cut = false;
};

// The rules a table may list: 64 per byte of the table, and never fewer than
// kVellLayoutRuleFloor, so that a small class-based table may still list every pair.
inline constexpr size_t kVellLayoutRulesPerByte = 64;
inline constexpr size_t kVellLayoutRuleFloor = size_t{1} << 16;
size_t VellLayoutRuleCap(size_t tableBytes);

// ---- Shared structures ----
// The glyphs of a Coverage table (formats 1 and 2), in Coverage index order.
std::vector<uint16_t> VellReadCoverage(VellView table, size_t offset);
// The class of each glyph a ClassDef table (formats 1 and 2) names, as
// (glyph, class) pairs sorted by glyph; glyphs it does not name are class 0.
std::vector<std::pair<uint16_t, uint16_t>> VellReadClassDef(VellView table, size_t offset);
// ValueRecord fields present under a valueFormat, in bytes.
size_t VellValueRecordSize(uint16_t valueFormat);

// The delta sets that VariationIndex tables point at, as text, when the font's
// item variation store is known; without it an index prints as outer/inner.
using VellDeltaSetText = std::function<std::string(uint16_t outer, uint16_t inner)>;
// The delta sets of a 'GDEF' item variation store (version 1.3), as
// "delta set 1/4 (region 0: -5, region 3: 2)"; empty without a store. The view
// must outlive the function.
VellDeltaSetText VellGDEFDeltaSets(VellView gdef);

// ---- Tables ----
// glyphCount bounds class 0 of ClassDef-based pair adjustments ('maxp' numGlyphs).
// deltaSets, when given, writes the delta sets of VariationIndex tables.
VellLayoutAccount VellReadGSUB(VellView table);
VellLayoutAccount VellReadGPOS(VellView table, uint32_t glyphCount, const VellDeltaSetText& deltaSets = {});
VellLayoutAccount VellReadGDEF(VellView table);
VellLayoutAccount VellReadKern(VellView table);

// ---- Rules as text, and two fonts' rules compared ----
// A rule's text ("key value"), with each glyph written by glyphText.
using VellGlyphText = std::function<std::string(uint16_t glyph)>;
std::string VellLayoutRuleText(const VellLayoutRule& rule, const VellGlyphText& glyphText);

// What identifies a glyph across two fonts: every glyph's name when the font names
// each glyph once, or nothing, and then glyph numbers.
struct VellGlyphIdentity {
    std::vector<std::string> names;
};
// The one source of glyph names for matching: a format 2 'post' that names every
// glyph, each name once.
VellGlyphIdentity VellLayoutGlyphIdentity(VellFontRef font);

// Two lists' rules matched by key: glyph names when both identities have them,
// glyph numbers otherwise. Added and changed rules come in the modified list's
// order, deleted rules in the original's (both sorted by glyph).
struct VellLayoutDelta {
    std::vector<const VellLayoutRule*> added, deleted;
    std::vector<std::pair<const VellLayoutRule*, const VellLayoutRule*>> changed;  // (modified, original)
    bool empty() const { return added.empty() && deleted.empty() && changed.empty(); }
};
VellLayoutDelta VellCompareLayoutRules(const VellLayoutRuleList* modified, const VellLayoutRuleList* original,
                                       const VellGlyphIdentity& modifiedGlyphs,
                                       const VellGlyphIdentity& originalGlyphs);
