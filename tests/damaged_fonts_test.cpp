// Damaged and hostile fonts: every table of a real font, of a font with one
// table of every handled kind, and of a small built font, flipped, cut short and
// spliced with bytes from elsewhere, with a fixed seed. Every comparison (both
// ways) and every dump must finish quickly, stay inside its tables (the
// sanitizers watch), and print no table's account past its budget; the tools
// themselves must exit with 0 or 1.
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <map>
#include <cstdio>
#include <random>

#include <rapidjson/document.h>

#include <sstream>

#include "VellCmpFonts.h"
#include "VellDumpFonts.h"
#include "dumpers/IgnoreRules.h"
#include "dumpers/TJsonReport.h"
#include "dumpers/TTableDumper.h"
#include "dumpers/TableHandlers.h"
#include "html/HtmlPage.h"
#include "support/Harness.h"

namespace {

// Besides its accounts, a report holds the headers and the lists of tables.
constexpr size_t kReportFrameBytes = 64 * 1024;
constexpr auto kRunLimit = std::chrono::seconds(10);
constexpr int kVariantsPerTableAndDamage = 25;
// One variant in this many also runs through the tools as a process.
constexpr int kProcessEvery = 40;
// One variant in this many is also compared under --json, with --ignore rules
// that send tables through a counting pass.
constexpr int kJsonEvery = 3;
// One variant in this many is also compared with an --html page drawn, of at
// most 50 figures per table and each table's account cut at its page limit.
constexpr int kPageEvery = 5;
constexpr size_t kMostPageBytes = 64u << 20;

enum class Damage { kFlip, kCut, kSplice };

// One damage to one table: a few bytes flipped, the table cut short, or a run of
// its bytes replaced by a run from another table of the font.
Bytes Damaged(const FontTables& font, const Bytes& table, Damage damage, std::mt19937& random) {
    Bytes bytes = table;
    if (bytes.empty()) return bytes;
    switch (damage) {
        case Damage::kFlip:
            for (int flips = 1 + random() % 4; flips > 0; --flips) bytes[random() % bytes.size()] ^= 1u << random() % 8;
            break;
        case Damage::kCut:
            bytes.resize(random() % bytes.size());
            break;
        case Damage::kSplice: {
            const Bytes& donor = font.tables[random() % font.tables.size()].second;
            if (donor.empty()) break;
            size_t length = 1 + random() % std::min<size_t>(donor.size(), 64);
            size_t from = random() % (donor.size() - length + 1), to = random() % bytes.size();
            for (size_t i = 0; i < length && to + i < bytes.size(); ++i) bytes[to + i] = donor[from + i];
            break;
        }
    }
    return bytes;
}

// Every table's account, from its "##### Table" header to its footer (or to the
// report's end, where a failure stopped it), within the budget of the print
// layer: 64 times the size of the tables it shows, or 16 MB.
void ExpectAccountsWithinBudget(const std::string& report, const std::string& what) {
    const std::string header = "##### Table '", footer = "\n#####\n End table\n\n\n";
    size_t accounts = 0;
    for (size_t start = report.find(header); start != std::string::npos; start = report.find(header, start + 1)) {
        size_t end = std::min(report.find(footer, start), report.size() - footer.size()) + footer.size();
        unsigned long modified = 0, original = 0;
        std::sscanf(report.substr(start, 128).c_str(), "##### Table '%*4c' (%lu bytes in the modified font)\n "
                    "(%lu bytes in the original font)", &modified, &original);
        uint64_t budget = std::max(TTableDumper::kAccountFloorBytes,
                                   TTableDumper::kAccountBytesPerTableByte * (modified + original));
        EXPECT_LE(end - start, budget) << what << ": " << report.substr(start, 24);
        accounts += end - start;
    }
    EXPECT_LE(report.size() - accounts, kReportFrameBytes) << what;
}

// The report of one in-process run, and that it finished in time.
template <typename Run>
std::string Report(Run run) {
    CapturedStream out;
    FILE* saved = gReportFile;
    gReportFile = out.file();
    testing::internal::CaptureStderr();
    auto start = std::chrono::steady_clock::now();
    run();
    auto elapsed = std::chrono::steady_clock::now() - start;
    testing::internal::GetCapturedStderr();
    gReportFile = saved;
    EXPECT_LT(elapsed, kRunLimit);
    return out.Text();
}

// A --json report of a damaged pair: every line a whole record, and no table's
// records past its budget (a little more, for the record that crossed it).
void ExpectRecords(const std::string& report, const std::string& what) {
    std::istringstream lines(report);
    std::map<std::string, uint64_t> bytesOfTable;
    for (std::string line; std::getline(lines, line);) {
        rapidjson::Document record;
        record.Parse(line.c_str());
        ASSERT_FALSE(record.HasParseError()) << what << ": " << line.substr(0, 200);
        if (record.HasMember("table")) bytesOfTable[record["table"].GetString()] += line.size() + 1;
    }
    for (const auto& [tag, bytes] : bytesOfTable)
        EXPECT_LE(bytes, TTableDumper::kAccountFloorBytes + kReportFrameBytes) << what << ": '" << tag << "'";
}

void CompareAsRecords(VellFontRef modified, VellFontRef original) {
    std::vector<IgnoreRule> saved = gIgnoreRules;
    AddIgnoreRules("head.modified,name.5,hmtx.*.lsb,cmap.3.1.0,glyf.1,OS/2.achVendID", gIgnoreRules);
    {
        TJsonReport json(gReportFile);
        gJsonReport = &json;
        ErrorRecord record;
        DiffFonts(modified, original, &record);
        gJsonReport = nullptr;
    }
    gIgnoreRules = saved;
}

// Every table, or only those named in `only`.
void DamageEveryTable(const FontTables& original, uint32_t seed, const std::vector<std::string>& only = {}) {
    std::mt19937 random(seed);
    Bytes originalFile = BuildSfnt(original);
    // The undamaged font is a seed for the fuzzers; thousands of damaged copies are
    // none: they find their own.
    LoadedFont originalFont(originalFile);
    TempDir dir;
    std::string originalPath = dir.Write("original.ttf", originalFile);
    int variant = 0;
    for (const auto& [tag, table] : original.tables) {
        if (!only.empty() && std::find(only.begin(), only.end(), tag) == only.end()) continue;
        for (Damage damage : {Damage::kFlip, Damage::kCut, Damage::kSplice}) {
            for (int round = 0; round < kVariantsPerTableAndDamage; ++round, ++variant) {
                FontTables modified = original;
                modified[tag] = Damaged(original, table, damage, random);
                Bytes modifiedFile = BuildSfnt(modified);
                LoadedFont modifiedFont(modifiedFile, false);
                std::string what = "'" + tag + "', damage " + std::to_string(static_cast<int>(damage)) +
                                   ", round " + std::to_string(round);
                ErrorRecord record;
                std::string report = Report([&] { DiffFonts(modifiedFont.font(), originalFont.font(), &record); });
                ExpectAccountsWithinBudget(report, what);
                // Drawn on a page, the same comparison prints the same report and a bounded page.
                if (variant % kPageEvery == 0) {
                    CapturedStream page;
                    THtmlPage html(page.file(), 50);
                    gHtmlPage = &html;
                    html.BeginPair("modified.ttf", "original.ttf", modifiedFont.font(), originalFont.font());
                    ClearUSN(&record);
                    EXPECT_EQ(Report([&] { DiffFonts(modifiedFont.font(), originalFont.font(), &record); }), report)
                        << what;
                    html.EndPair();
                    gHtmlPage = nullptr;
                    EXPECT_TRUE(html.Finish());
                    EXPECT_LT(page.Text().size(), kMostPageBytes) << what;
                }
                ClearUSN(&record);
                ExpectAccountsWithinBudget(Report([&] { DiffFonts(originalFont.font(), modifiedFont.font(), &record); }),
                                           what);
                ExpectAccountsWithinBudget(Report([&] { DumpFont(modifiedFont.font(), {}); }), what);
                if (variant % kJsonEvery == 0)
                    ExpectRecords(Report([&] { CompareAsRecords(modifiedFont.font(), originalFont.font()); }), what);
                if (variant % kProcessEvery != 0) continue;
                std::string modifiedPath = dir.Write("modified.ttf", modifiedFile);
                std::vector<std::string> switches = {"-p", "-u"};
                if (gOpenType) switches.push_back("--opentype");
                auto with = [&switches](std::vector<std::string> paths) {
                    paths.insert(paths.begin(), switches.begin(), switches.end());
                    return paths;
                };
                for (const RunResult& run : {RunVellcmp(with({originalPath, modifiedPath})),
                                             RunVellcmp(with({"--html=" + dir.Path("page.html"), originalPath, modifiedPath})),
                                             RunVelldump(with({modifiedPath}))})
                    EXPECT_TRUE(run.status == 0 || run.status == 1) << what << ": exit " << run.status << run.err;
            }
        }
    }
}

TEST(DamagedFonts, EveryTableOfARealFont) { DamageEveryTable(TestFontTables("DejaVuSans-subset.ttf"), 20261123); }

TEST(DamagedFonts, EveryTableOfAFontWithEveryHandledKind) {
    const FontTables font = EveryTableFont();
    for (const TableHandler& row : TableHandlers()) {
        std::string tag = VellTagText(row.tag);
        EXPECT_TRUE(std::ranges::any_of(font.tables, [&](const auto& table) { return table.first == tag; })) << tag;
    }
    DamageEveryTable(font, 1123);
}

// The outline accounts of --opentype: 'CFF ' and 'CFF2' run through FreeType,
// 'glyf' decoded here.
TEST(DamagedFonts, OutlineTablesUnderOpenType) {
    OpenTypeForTest openType;
    DamageEveryTable(TestFontTables("cff-original.otf"), 2111, {"CFF ", "hmtx", "maxp"});
    DamageEveryTable(TestFontTables("cff2-original.otf"), 2112, {"CFF2", "fvar", "hmtx", "hhea"});
    DamageEveryTable(TestFontTables("DejaVuSans-subset.ttf"), 2113, {"glyf", "loca"});
}

// The layout accounts exist only under --opentype.
TEST(DamagedFonts, LayoutTablesUnderOpenType) {
    OpenTypeForTest openType;
    DamageEveryTable(TestFontTables("DejaVuSans-subset.ttf"), 20261124);
    DamageEveryTable(EveryTableFont(), 1124);
}

TEST(DamagedFonts, EveryTableOfASmallBuiltFont) { DamageEveryTable(SampleFont(), 2026); }

// The variable tables' accounts ('fvar', 'avar', 'STAT', 'HVAR', 'MVAR', the 'gvar'
// comparator) exist only under --opentype.
TEST(DamagedFonts, EveryTableOfAVariableFontUnderOpenType) {
    OpenTypeForTest openType;
    DamageEveryTable(TestFontTables("variable.ttf"), 2111);
}

}  // namespace
