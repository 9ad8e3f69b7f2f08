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

struct OpenTypeForTest {
    OpenTypeForTest() { gOpenType = 1; }
    ~OpenTypeForTest() { gOpenType = 0; }
};

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
