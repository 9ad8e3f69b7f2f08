// 'GSUB', 'GPOS', 'GDEF' and 'kern' under --opentype: small layout tables built
// here, their flattened rules, and the accounts of two fonts' tables.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "VellCmpErrors.h"
#include "dumpers/TFontContext.h"
#include "framework/VellLayout.h"
#include "support/Harness.h"
#include "tables/GDEF.h"
#include "tables/GPOS.h"
#include "tables/GSUB.h"
#include "tables/kern.h"

namespace {

using ::testing::HasSubstr;
using ::testing::Not;

std::string Rules(const VellLayoutAccount& account) {
    std::string text;
    for (const VellLayoutRuleList& list : account.lists) {
        text += "### " + list.what + ":\n";
        for (const VellLayoutRule& rule : list.rules)
            text += std::string(rule.label) + ": " + VellLayoutRuleText(rule, [](uint16_t g) { return std::to_string(g); }) + "\n";
    }
    return text + (account.cut ? "cut\n" : "");
}

// The rule lines of one list ("### <what>:" up to the next heading).
std::string ListOf(const std::string& rules, const std::string& what) {
    size_t at = rules.find("### " + what + ":\n");
    if (at == std::string::npos) return "(none)";
    at = rules.find('\n', at) + 1;
    return rules.substr(at, rules.find("###", at) - at);
}

TEST(Layout, PairAdjustmentsFlattenAsShapingAppliesThem) {
    struct Case {
        const char* fault;
        std::vector<TestLookup> lookups;
        std::string pairs;
    };
    Bytes classesOfFirst = ClassDef(2, {1}), classesOfSecond = ClassDef(3, {1});
    const std::vector<Case> cases = {
        {"format 1 lists every non-zero pair, zero values none",
         {{2, {PairPos1({{2, {{3, -50}, {2, 0}}}, {3, {{2, 7}}}})}}},
         "Pair: 2 3: X advance -50\nPair: 3 2: X advance 7\n"},
        {"format 2 class 0 holds every glyph no class names, up to the glyph count",
         {{2, {PairPos2({2}, classesOfFirst, classesOfSecond, {{0, 0}, {-5, -20}})}}},
         "Pair: 2 0: X advance -5\nPair: 2 1: X advance -5\nPair: 2 2: X advance -5\nPair: 2 3: X advance -20\n"},
        {"within a lookup the first subtable that covers a pair wins, even with a zero value",
         {{2, {PairPos1({{2, {{3, 0}, {1, 9}}}}), PairPos2({2}, classesOfFirst, classesOfSecond, {{0, 0}, {-5, -20}})}}},
         "Pair: 2 0: X advance -5\nPair: 2 1: X advance 9\nPair: 2 2: X advance -5\n"},
        {"a format 2 subtable covers every second glyph of its first glyphs",
         {{2, {PairPos2({2}, classesOfFirst, classesOfSecond, {{0, 0}, {0, -20}}), PairPos1({{2, {{1, 9}}}})}}},
         "Pair: 2 3: X advance -20\n"},
        {"across the lookups of a feature values add up; a sum of zero is no pair",
         {{2, {PairPos1({{2, {{3, -50}, {1, 4}}}})}}, {2, {PairPos1({{2, {{3, 10}, {1, -4}}}})}}},
         "Pair: 2 3: X advance -40\n"},
    };
    for (const Case& c : cases) {
        std::vector<uint16_t> indices;
        for (size_t i = 0; i < c.lookups.size(); ++i) indices.push_back(static_cast<uint16_t>(i));
        std::string rules = Rules(VellReadGPOS(VellView(LayoutTable({{"kern", indices}}, c.lookups)), 4));
        EXPECT_EQ(ListOf(rules, "'kern' rules"), c.pairs) << c.fault;
    }
}

TEST(Layout, SubstitutionsAndStructureReadAsRules) {
    Bytes multiple = Joined(TableWriter().U16(1).U16(0).U16(1).U16(8).U16(2).U16(3).U16(1), Coverage({2}));
    SetU16(multiple, 2, 14);
    Bytes alternate = multiple;
    Bytes gsub = LayoutTable({{"ccmp", {1, 2}}, {"liga", {0}}, {"salt", {3}}},
                             {{4, {LigatureSubst({2, 3, 2}, 1)}},
                              {1, {SingleSubst({3, 2}, {1, 0}), SingleSubst({3}, {2})}},
                              {2, {multiple}, 0x0008},
                              {3, {alternate}}});
    std::string rules = Rules(VellReadGSUB(VellView(gsub)));
    EXPECT_EQ(ListOf(rules, "language systems"), "Language system: script 'latn' language 'dflt': features 'ccmp' 'liga' 'salt'\n");
    EXPECT_EQ(ListOf(rules, "features"),
              "Feature: 'ccmp': lookups 1 (type 1, flags 0x0000), 2 (type 2, flags 0x0008)\n"
              "Feature: 'liga': lookups 0 (type 4, flags 0x0000)\nFeature: 'salt': lookups 3 (type 3, flags 0x0000)\n");
    // The second single subtable never applies to glyph 3; glyph 2 is substituted by
    // two lookups of 'ccmp', listed in lookup order on one rule.
    EXPECT_EQ(ListOf(rules, "'ccmp' rules"), "Substitution: 2 -> 0; -> 3 1\nSubstitution: 3 -> 1\n");
    EXPECT_EQ(ListOf(rules, "'liga' rules"), "Ligature: 2 3 2 -> 1\n");
    EXPECT_EQ(ListOf(rules, "'salt' rules"), "Alternates: 2 -> [3 1]\n");
}

// SampleFont's four glyphs (.notdef, space, A, B) with one 'GPOS' kerning A B.
FontTables KernedFont(int16_t value, bool insertGlyph = false) {
    FontTables font = SampleFont();
    uint16_t a = insertGlyph ? 3 : 2, b = a + 1;
    if (insertGlyph) {
        font["maxp"] = MakeMaxp(5);
        font["post"] = MakePost({".notdef", "space", "Aacute", "A", "B"});
        font["hmtx"] = MakeHmtx({{500, 0}, {250, 0}, {600, 0}, {600, 0}, {600, 0}});
        font["hhea"] = MakeHhea(5);
    }
    font["GPOS"] = LayoutTable({{"kern", {0}}}, {{2, {PairPos1({{a, {{b, value}, {a, -1}}}})}}});
    return font;
}

TEST(Layout, ComparisonPrintsOnlyChangedRulesInTheReportsVocabulary) {
    OpenTypeForTest openType;
    EXPECT_EQ(CompareDeltas(KernedFont(-80), KernedFont(-70), "GPOS"),
              "### Changed 'kern' rules:\n\tPair (mod ):\t2 3: X advance -80\n\tPair (orig):\t2 3: X advance -70\n");
    {
        SwitchesForTest names(true, false);
        FontTables original = KernedFont(-70);
        original["GPOS"] = LayoutTable({{"kern", {0}}}, {{2, {PairPos1({{2, {{2, -1}}}})}}});
        EXPECT_EQ(CompareDeltas(KernedFont(-80), original, "GPOS"),
                  "### Added 'kern' rules (in modified font and not original font):\n\tPair:\t2 (A) 3 (B): X advance -80\n");
        EXPECT_EQ(CompareDeltas(original, KernedFont(-80), "GPOS"),
                  "### Deleted 'kern' rules (in original font but not in modified font):\n\tPair:\t2 (A) 3 (B): X advance -80\n");
    }
    // Both fonts name every glyph: an inserted glyph renumbers A and B but changes no rule.
    EXPECT_EQ(CompareDeltas(KernedFont(-80, true), KernedFont(-80), "GPOS"), "");
    // The same glyph numbers under other names are other glyphs.
    FontTables renamed = KernedFont(-80);
    renamed["post"] = MakePost({".notdef", "space", "A", "C"});
    EXPECT_THAT(CompareDeltas(renamed, KernedFont(-80), "GPOS"), HasSubstr("### Added 'kern' rules"));
    // Without names, glyph numbers decide, and the moved pairs read as added and deleted.
    FontTables modified = KernedFont(-80, true), original = KernedFont(-80);
    SetU32(modified["post"], 0, 0x00030000);
    EXPECT_THAT(CompareDeltas(modified, original, "GPOS"), HasSubstr("### Added 'kern' rules"));
}

// 'latn' and 'cyrl' give 'kern' different lookups, so its rules are listed per
// language system; the modified font adds 'grek' beside 'latn'.
Bytes KernPerScript(bool withGreek, int16_t value) {
    Bytes gpos = LayoutTable({{"kern", {0}}, {"kern", {1}}},
                             {{2, {PairPos1({{2, {{3, value}}}})}}, {2, {PairPos1({{3, {{2, 5}}}})}}});
    // Rebuild the ScriptList by hand: 'cyrl' uses feature 1, 'latn' (and 'grek') feature 0.
    TableWriter scripts;
    std::vector<std::pair<const char*, uint16_t>> records = {{"cyrl", 1}, {"latn", 0}};
    if (withGreek) records.insert(records.begin() + 1, {"grek", 0});
    scripts.U16(static_cast<uint32_t>(records.size()));
    for (size_t i = 0; i < records.size(); ++i) scripts.Tag(records[i].first).U16(static_cast<uint32_t>(2 + 6 * records.size() + 12 * i));
    for (const auto& record : records) scripts.U16(4).U16(0).U16(0).U16(0xFFFF).U16(1).U16(record.second);
    Bytes list = scripts;
    uint16_t featureAt = static_cast<uint16_t>(gpos[6] << 8 | gpos[7]);
    uint16_t lookupAt = static_cast<uint16_t>(gpos[8] << 8 | gpos[9]);
    Bytes rest(gpos.begin() + featureAt, gpos.end());
    Bytes table = Joined(Joined(TableWriter().U32(0x00010000).U16(10).U16(0).U16(0), list), rest);
    SetU16(table, 6, static_cast<uint16_t>(10 + list.size()));
    SetU16(table, 8, static_cast<uint16_t>(10 + list.size() + lookupAt - featureAt));
    return table;
}

TEST(Layout, ListsPerLanguageSystemPairWithTheListSharingMostLanguageSystems) {
    OpenTypeForTest openType;
    FontTables modified = SampleFont(), original = SampleFont();
    modified["GPOS"] = KernPerScript(true, -80);
    original["GPOS"] = KernPerScript(false, -70);
    EXPECT_EQ(CompareDeltas(modified, original, "GPOS"),
              "### Added language systems (in modified font and not original font):\n"
              "\tLanguage system:\tscript 'grek' language 'dflt': features 'kern'\n"
              "### Changed 'kern' rules in script 'grek' language 'dflt'; script 'latn' language 'dflt':\n"
              "\tPair (mod ):\t2 3: X advance -80\n\tPair (orig):\t2 3: X advance -70\n");
}

TEST(Layout, WithoutTheOptionLayoutTablesKeepTheirHexDifference) {
    std::string classic = CompareDeltas(KernedFont(-80), KernedFont(-70), "GPOS");
    EXPECT_THAT(classic, Not(HasSubstr("###")));
    EXPECT_FALSE(classic.empty());
}

TEST(Layout, DumpersListEveryRuleUnderItsList) {
    OpenTypeForTest openType;
    FontTables font = KernedFont(-80);
    LoadedFont loaded(BuildSfnt(font), false);
    TFontContext context(loaded.font());
    CapturedStream out;
    TGPOSTableDumper(context, VellMakeTag("GPOS"), out.file()).DumpTableContents();
    EXPECT_EQ(out.Text(),
              "### language systems:\n\tLanguage system:\tscript 'latn' language 'dflt': features 'kern'\n"
              "### features:\n\tFeature:\t'kern': lookups 0 (type 2, flags 0x0000)\n"
              "### 'kern' rules:\n\tPair:\t2 2: X advance -1\n\tPair:\t2 3: X advance -80\n");
}

TEST(Layout, MarkAttachmentAnchorsAndDevicesPrintPerClass) {
    // MarkBasePos: mark 3 of class 0 at (10, 20); base 2 with a format 3 anchor whose
    // X device corrects ppem 11 by -1 and ppem 12 by 1.
    Bytes markBase = TableWriter()
                         .U16(1).U16(12).U16(18).U16(1).U16(24).U16(36)  // 0: header
                         .U16(1).U16(1).U16(3)                           // 12: mark coverage
                         .U16(1).U16(1).U16(2)                           // 18: base coverage
                         .U16(1).U16(0).U16(6)                           // 24: MarkArray, anchor at +6
                         .U16(1).U16(10).U16(20)                         // 30: anchor format 1
                         .U16(1).U16(4)                                  // 36: BaseArray, anchor at +4
                         .U16(3).U16(5).U16(6).U16(10).U16(0)            // 40: anchor format 3
                         .U16(11).U16(12).U16(2).U16(0xF100);            // 50: device, 4-bit deltas -1, 1
    std::string rules = Rules(VellReadGPOS(VellView(LayoutTable({{"mark", {0}}}, {{4, {markBase}}})), 4));
    EXPECT_EQ(ListOf(rules, "'mark' rules"),
              "Base: 2 lookup 0: class 0 (5, 6) X device ppem 11: -1, 12: 1\nMark: 3 lookup 0: class 0 (10, 20)\n");
}

// MarkBasePos: mark 3 of class 0 at (10, 20), base 2 at (x, 500).
Bytes MarkBase(int16_t x) {
    return TableWriter()
        .U16(1).U16(12).U16(18).U16(1).U16(24).U16(36)  // 0: header
        .U16(1).U16(1).U16(3)                           // 12: mark coverage
        .U16(1).U16(1).U16(2)                           // 18: base coverage
        .U16(1).U16(0).U16(6)                           // 24: MarkArray, anchor at +6
        .U16(1).U16(10).U16(20)                         // 30: anchor format 1
        .U16(1).U16(4)                                  // 36: BaseArray, anchor at +4
        .U16(1).U16(static_cast<uint16_t>(x)).U16(500);  // 40: anchor format 1
}

TEST(Layout, RulesOfARenumberedLookupPairWithTheirNamesakes) {
    OpenTypeForTest openType;
    // The modified font inserts a kerning lookup before its two mark lookups.
    TestLookup kerning{2, {PairPos1({{2, {{3, -5}}}})}};
    auto font = [](std::vector<TestLookup> lookups, std::vector<uint16_t> mark) {
        FontTables tables = SampleFont();
        tables["GPOS"] = LayoutTable({{"mark", mark}}, lookups);
        return tables;
    };
    FontTables original = font({{4, {MarkBase(300)}}, {4, {MarkBase(320)}}}, {0, 1});
    std::string structure = "### Changed features:\n"
                            "\tFeature (mod ):\t'mark': lookups 1 (type 4, flags 0x0000), 2 (type 4, flags 0x0000)\n"
                            "\tFeature (orig):\t'mark': lookups 0 (type 4, flags 0x0000), 1 (type 4, flags 0x0000)\n";
    EXPECT_EQ(CompareDeltas(font({kerning, {4, {MarkBase(300)}}, {4, {MarkBase(320)}}}, {1, 2}), original, "GPOS"),
              structure);
    // The second lookup's base moved: it pairs with the original's second lookup.
    EXPECT_EQ(CompareDeltas(font({kerning, {4, {MarkBase(300)}}, {4, {MarkBase(330)}}}, {1, 2}), original, "GPOS"),
              structure + "### Changed 'mark' rules:\n"
                          "\tBase (mod ):\t2 lookup 2: class 0 (330, 500)\n\tBase (orig):\t2 lookup 1: class 0 (320, 500)\n");
    // One mark lookup fewer: the second lookup's rules are the ones deleted.
    EXPECT_THAT(CompareDeltas(font({{4, {MarkBase(300)}}}, {0}), original, "GPOS"),
                HasSubstr("### Deleted 'mark' rules (in original font but not in modified font):\n"
                          "\tBase:\t2 lookup 1: class 0 (320, 500)\n\tMark:\t3 lookup 1: class 0 (10, 20)\n"));
}

TEST(Layout, ClassesCaretsSetsAndKerningFlatten) {
    std::string rules = Rules(VellReadGDEF(VellView(MakeGdef())));
    EXPECT_EQ(ListOf(rules, "glyph classes"), "Glyph class: 2: Base\nGlyph class: 3: Mark\n");
    EXPECT_EQ(ListOf(rules, "ligature carets"), "Carets: 2: coordinate 300\n");
    EXPECT_EQ(ListOf(rules, "mark glyph sets"), "Set member: set 0 glyph 2\nSet member: set 0 glyph 3\n");

    struct Case {
        const char* fault;
        Bytes kern;
        std::string list, pairs;
    };
    Bytes format0 = TableWriter().U16(0).U16(1).U16(0).U16(26).U16(0x0001).U16(2).U16(12).U16(1).U16(0)
                        .U16(2).U16(3).U16(0xFFB0).U16(3).U16(2).U16(0);
    Bytes apple = TableWriter().U32(0x00010000).U32(1).U32(28).U16(0).U16(0).U16(2).U16(12).U16(1).U16(0)
                      .U16(2).U16(3).U16(0xFFB0).U16(3).U16(2).U16(5);
    // Format 2: left classes of glyphs 2 and 3 are row offsets, right classes column offsets.
    Bytes format2 = TableWriter().U16(0).U16(1).U16(0).U16(36).U16(0x0201)
                        .U16(4).U16(14).U16(22).U16(28)          // rowWidth, left, right, array
                        .U16(2).U16(2).U16(28).U16(32)           // 14: left class table
                        .U16(2).U16(1).U16(0)                    // 22: right class table (glyph 2 -> column 0)
                        .U16(0xFFF6).U16(0).U16(7).U16(0);       // 28: rows
    const std::vector<Case> cases = {
        {"16-bit version, format 0; zero values are no pair", format0, "horizontal pairs", "Pair: 2 3: X advance -80\n"},
        {"32-bit version layout, format 0", apple, "horizontal pairs", "Pair: 2 3: X advance -80\nPair: 3 2: X advance 5\n"},
        {"format 2 class offsets add up to the value's place", format2, "horizontal pairs",
         "Pair: 2 2: X advance -10\nPair: 3 2: X advance 7\n"},
    };
    for (const Case& c : cases) EXPECT_EQ(ListOf(Rules(VellReadKern(VellView(c.kern))), c.list), c.pairs) << c.fault;
}

// A 'CFF ' table that names glyphs only through its charset: string IDs (CIDs
// when cidKeyed) for glyphs 1 on, in charset format 0, 1 (ranges of one glyph
// each) or 2, each glyph's charstring a lone endchar. Custom strings take string
// IDs from 391 on.
Bytes CharsetCff(const std::vector<uint16_t>& sids, uint8_t format, bool cidKeyed,
                 const std::vector<std::string>& strings = {}) {
    auto index = [](const std::vector<std::string>& objects) {
        TableWriter out;
        out.U16(static_cast<uint32_t>(objects.size()));
        if (objects.empty()) return Bytes(out);
        out.U8(2).U16(1);
        uint32_t at = 1;
        for (const std::string& object : objects) out.U16(at += static_cast<uint32_t>(object.size()));
        for (const std::string& object : objects)
            for (char c : object) out.U8(static_cast<uint8_t>(c));
        return Bytes(out);
    };
    // Top DICT: charset and CharStrings as 5-byte integers, patched below; ROS first.
    std::string dict = cidKeyed ? std::string("\x8c\x8c\x8b\x0c\x1e", 5) : std::string();
    size_t charsetAt = dict.size() + 1;
    dict += std::string("\x1d\0\0\0\0\x0f\x1d\0\0\0\0\x11", 12);
    Bytes head = Joined(Joined(TableWriter().U8(1).U8(0).U8(4).U8(1), index({"T"})), index({dict}));
    size_t dictAt = head.size() - dict.size();
    head = Joined(head, index(strings));
    TableWriter charset;
    charset.U8(format);
    for (uint16_t sid : sids) {
        if (format == 0) charset.U16(sid);
        else if (format == 1) charset.U16(sid).U8(0);
        else charset.U16(sid).U16(0);
    }
    size_t charStringsAt = head.size() + Bytes(charset).size();
    Bytes cff = Joined(Joined(head, charset), index(std::vector<std::string>(sids.size() + 1, "\x0e")));
    SetU32(cff, dictAt + charsetAt, static_cast<uint32_t>(head.size()));
    SetU32(cff, dictAt + charsetAt + 6, static_cast<uint32_t>(charStringsAt));
    return cff;
}

TEST(Layout, AFontWhosePostNamesNoGlyphMatchesByItsCharset) {
    OpenTypeForTest openType;
    struct Case {
        const char* fault;
        Bytes modifiedCff, originalCff;
        bool renumbered;  // the pairs read as added and deleted: glyph numbers decided
    };
    // .notdef, space (SID 1), A (34), B (35); the modified font inserts Aacute
    // (a custom string) before A.
    const std::vector<std::string> custom = {"Aacute"};
    const std::vector<Case> cases = {
        {"charset format 0", CharsetCff({1, 391, 34, 35}, 0, false, custom), CharsetCff({1, 34, 35}, 0, false), false},
        {"charset formats 1 and 2", CharsetCff({1, 391, 34, 35}, 1, false, custom), CharsetCff({1, 34, 35}, 2, false), false},
        {"a CID-keyed font matches by CID", CharsetCff({1, 9, 34, 35}, 2, true), CharsetCff({1, 34, 35}, 0, true), false},
        {"a charset that names two glyphs alike names none", CharsetCff({1, 34, 34, 35}, 0, false),
         CharsetCff({1, 34, 35}, 0, false), true},
        {"a charset of fewer glyphs than 'maxp' counts names none", CharsetCff({1, 391, 34}, 0, false, custom),
         CharsetCff({1, 34, 35}, 0, false), true},
        {"a name far longer than a glyph name's is a damaged String INDEX",
         CharsetCff({1, 391, 34, 35}, 0, false, {std::string(300, 'x')}), CharsetCff({1, 34, 35}, 0, false), true},
    };
    for (const Case& c : cases) {
        FontTables modified = KernedFont(-80, true), original = KernedFont(-80);
        SetU32(modified["post"], 0, 0x00030000);
        SetU32(original["post"], 0, 0x00030000);
        modified["CFF "] = c.modifiedCff;
        original["CFF "] = c.originalCff;
        std::string report = CompareDeltas(modified, original, "GPOS");
        if (c.renumbered) EXPECT_THAT(report, HasSubstr("### Added 'kern' rules")) << c.fault;
        else EXPECT_EQ(report, "") << c.fault;
        // Cut short anywhere, the table never reads outside itself (the sanitizer
        // build's concern); cut inside its charset it names no glyph.
        for (size_t cut = 0; cut < c.modifiedCff.size(); ++cut) {
            modified["CFF "] = Bytes(c.modifiedCff.begin(), c.modifiedCff.begin() + static_cast<ptrdiff_t>(cut));
            std::string cutReport = CompareDeltas(modified, original, "GPOS");
            if (cut < 40) {
                EXPECT_THAT(cutReport, HasSubstr("### Added 'kern' rules")) << c.fault << cut;
            }
        }
    }
}

// A 'GDEF' 1.3 whose item variation store has one axis, three regions and one
// ItemVariationData of 16-bit deltas over regionIndexes, one row per delta set.
Bytes VariationGdef(const std::vector<uint16_t>& regionIndexes, const std::vector<std::vector<int16_t>>& rows) {
    TableWriter store;
    store.U16(1).U32(12).U16(1).U32(12 + 4 + 3 * 6);
    store.U16(1).U16(3)
        .U16(0xC000).U16(0xC000).U16(0)   // region 0: (-1, -1, 0)
        .U16(0).U16(0x4000).U16(0x4000)   // region 1: (0, 1, 1)
        .U16(0).U16(0x2000).U16(0x4000);  // region 2: (0, 0.5, 1)
    store.U16(static_cast<uint32_t>(rows.size())).U16(static_cast<uint32_t>(regionIndexes.size()))
        .U16(static_cast<uint32_t>(regionIndexes.size()));
    for (uint16_t region : regionIndexes) store.U16(region);
    for (const auto& row : rows)
        for (int16_t delta : row) store.U16(static_cast<uint16_t>(delta));
    return Joined(TableWriter().U32(0x00010003).U16(0).U16(0).U16(0).U16(0).U16(0).U32(18), store);
}

// One pair, 2 3, of X advance -40 whose X advance device is a VariationIndex.
Bytes VariedPair(uint16_t outer, uint16_t inner) {
    Bytes pairPos = Joined(TableWriter().U16(1).U16(26).U16(0x0044).U16(0).U16(1).U16(12)
                               .U16(1).U16(3).U16(0xFFD8).U16(8)    // 12: PairSet; its device at +8
                               .U16(outer).U16(inner).U16(0x8000),  // 20: VariationIndex
                           Coverage({2}));
    return LayoutTable({{"kern", {0}}}, {{2, {pairPos}}});
}

TEST(Layout, VariationIndexesCompareByTheDeltasTheyReach) {
    OpenTypeForTest openType;
    FontTables modified = SampleFont(), original = SampleFont();
    modified["GPOS"] = VariedPair(0, 0);
    modified["GDEF"] = VariationGdef({0, 1}, {{-5, 3}});
    struct Case {
        const char* fault;
        Bytes gpos, gdef;
        std::string report;
    };
    const std::vector<Case> cases = {
        {"the same deltas in another row and another region order", VariedPair(0, 1),
         VariationGdef({1, 0}, {{9, 9}, {3, -5}}), ""},
        {"a zero delta for one region more moves nothing", VariedPair(0, 0), VariationGdef({0, 2, 1}, {{-5, 0, 3}}), ""},
        {"a changed delta prints both delta sets where they are stored", VariedPair(0, 1),
         VariationGdef({0, 1}, {{0, 0}, {-5, 4}}),
         "### Changed 'kern' rules:\n"
         "\tPair (mod ):\t2 3: X advance -40, X advance delta set 0/0 (region 0: -5, region 1: 3)\n"
         "\tPair (orig):\t2 3: X advance -40, X advance delta set 0/1 (region 0: -5, region 1: 4)\n"},
    };
    for (const Case& c : cases) {
        original["GPOS"] = c.gpos;
        original["GDEF"] = c.gdef;
        EXPECT_EQ(CompareDeltas(modified, original, "GPOS"), c.report) << c.fault;
    }
    // A region lists only the axes whose peak narrows it; one that none narrows
    // applies at every location.
    Bytes gdef = VariationGdef({0}, {{1}});
    SetU16(gdef, 18 + 12, 2);  // two axes: the regions' six values are now one region and a half
    SetU16(gdef, 18 + 14, 1);
    SetU16(gdef, 18 + 18, 0);  // axis 0 of region 0: peak 0
    EXPECT_EQ(ListOf(Rules(VellReadGDEF(VellView(gdef))), "variation regions"), "Region: region 0: axis 1 (0, 1, 1)\n");
    SetU16(gdef, 18 + 24, 0);
    EXPECT_EQ(ListOf(Rules(VellReadGDEF(VellView(gdef))), "variation regions"), "Region: region 0: every location\n");
}

TEST(Layout, HostileTablesStayBoundedAndSayTheyWereCut) {
    // One class pair of value -1 over a ClassDef-less class 0 of 65,535 glyphs,
    // for each of 65,535 first glyphs: far beyond what a 60-byte table may list.
    Bytes coverageAll = TableWriter().U16(2).U16(1).U16(0).U16(0xFFFE).U16(0);
    Bytes huge = Joined(TableWriter().U16(2).U16(18).U16(4).U16(0).U16(0).U16(0).U16(1).U16(1).U16(0xFFFF), coverageAll);
    VellLayoutAccount account = VellReadGPOS(VellView(LayoutTable({{"kern", {0}}}, {{2, {huge}}})), 0xFFFF);
    EXPECT_TRUE(account.cut);
    size_t rules = 0;
    for (const VellLayoutRuleList& list : account.lists) rules += list.rules.size();
    EXPECT_LE(rules, 2 * kVellLayoutRuleFloor);

    // An Extension lookup (type 9) whose subtable is another Extension is not followed,
    // and lookups past the end of the table read as nothing.
    Bytes extension = TableWriter().U16(1).U16(9).U32(0);
    Bytes gpos = LayoutTable({{"kern", {0, 7}}}, {{9, {extension}}});
    std::string text = Rules(VellReadGPOS(VellView(gpos), 4));
    EXPECT_THAT(text, HasSubstr("lookups 0 (type 9, flags 0x0000), 7 (missing)"));
    for (size_t cut = 0; cut < gpos.size(); ++cut) VellReadGPOS(VellView(gpos.data(), cut), 4);

    OpenTypeForTest openType;
    FontTables modified = KernedFont(-80), original = KernedFont(-70);
    modified["GPOS"] = LayoutTable({{"kern", {0}}}, {{2, {huge}}});
    std::string report = CompareDeltas(modified, original, "GPOS");
    EXPECT_THAT(report, HasSubstr("### The modified font's account was cut"));
}

}  // namespace
