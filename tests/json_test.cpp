// --json and --ignore: values typed as the font holds them, rules named by JSON
// paths, and reports read back with RapidJSON's own parser.
#include <gtest/gtest.h>
#include <rapidjson/document.h>
#include <rapidjson/stringbuffer.h>

#include <algorithm>
#include <functional>
#include <sstream>

#include "VellCmpFonts.h"
#include "dumpers/IgnoreRules.h"
#include "dumpers/TJsonReport.h"
#include "support/FontBuilder.h"
#include "support/Harness.h"

namespace {

std::string Written(const std::function<void(JsonWriter&)>& write) {
    rapidjson::StringBuffer buffer;
    JsonWriter writer(buffer);
    write(writer);
    return buffer.GetString();
}

TEST(JsonValues, TypedAsTheFontHoldsThem) {
    struct Case {
        std::function<void(JsonWriter&)> write;
        const char* json;
    } cases[] = {
        // 16.16 and 2.14 values as the shortest decimal that reads back as them.
        {[](JsonWriter& w) { WriteFixed(w, 0x000111EC); }, "1.07"},
        {[](JsonWriter& w) { WriteFixed(w, -0x000C8000); }, "-12.5"},
        {[](JsonWriter& w) { WriteFixed(w, 0x00010000); }, "1.0"},
        {[](JsonWriter& w) { WriteFixed(w, 1); }, "0.00002"},
        {[](JsonWriter& w) { WriteF2Dot14(w, 11469); }, "0.7"},
        {[](JsonWriter& w) { WriteF2Dot14(w, -16384); }, "-1.0"},
        // Versions whose minor digit is the high nibble of the low word.
        {[](JsonWriter& w) { WriteVersion(w, 0x00005000); }, "0.5"},
        {[](JsonWriter& w) { WriteVersion(w, 0x00011000); }, "1.1"},
        {[](JsonWriter& w) { WriteVersion(w, 0x00010000); }, "1.0"},
        {[](JsonWriter& w) { WriteVersion(w, 0x000111EC); }, "1.07"},
        // Dates from all 64 bits, before and after 1970.
        {[](JsonWriter& w) { WriteDate(w, 0); }, "\"1904-01-01T00:00:00Z\""},
        {[](JsonWriter& w) { WriteDate(w, 3140000000); }, "\"2003-07-02T14:13:20Z\""},
        {[](JsonWriter& w) { WriteDate(w, int64_t{1} << 32); }, "\"2040-02-06T06:28:16Z\""},
        {[](JsonWriter& w) { WritePoint(w, 100 << 16, -5 * 65536); }, "[100,-5]"},
        {[](JsonWriter& w) { WritePoint(w, 0x8000, 0); }, "[0.5,0]"},
        {[](JsonWriter& w) { WriteTag(w, 0x4F532F32); }, "\"OS/2\""},
        // A byte that starts no UTF-8 sequence is U+FFFD; quotes are escaped.
        {[](JsonWriter& w) { WriteText(w, "A\xFF\"B"); }, "\"A\xEF\xBF\xBD\\\"B\""},
        // Counts that print signed are unsigned; 32-bit fields are unsigned.
        {[](JsonWriter& w) { WriteFieldValue(w, FieldKind::UInt16AsSigned, 40000); }, "40000"},
        {[](JsonWriter& w) { WriteFieldValue(w, FieldKind::Int16, 0xFFFB); }, "-5"},
        {[](JsonWriter& w) { WriteFieldValue(w, FieldKind::Int32Hex, 0xE7006EFF); }, "3875565311"},
        {[](JsonWriter& w) { WriteFieldValue(w, FieldKind::FixedAsVersion, 0x000111EC); }, "1.07"},
        {[](JsonWriter& w) { WriteFieldValue(w, FieldKind::DateHighWord, 3140000000); }, "\"2003-07-02T14:13:20Z\""},
        {[](JsonWriter& w) {
             const uint8_t bytes[] = {0x00, 0xAB, 0x7F};
             WriteHex(w, bytes, 3);
         },
         "\"00AB7F\""},
    };
    for (const Case& c : cases) EXPECT_EQ(Written(c.write), c.json);
}

TEST(IgnoreRules, ParsedIntoTagsAndStepsAndMatchedByPathPrefix) {
    std::vector<IgnoreRule> rules;
    ASSERT_TRUE(AddIgnoreRules("OS/2.achVendID,name.5,hmtx.*.advanceWidth,DSIG,cvt", rules));
    ASSERT_EQ(rules.size(), 5u);
    EXPECT_EQ(rules[0].tag, 0x4F532F32u);
    EXPECT_EQ(rules[4].tag, 0x63767420u);  // 'cvt ' padded
    EXPECT_TRUE(rules[3].steps.empty());

    std::vector<IgnoreRule> build;
    ASSERT_TRUE(AddIgnoreRules("build", build));
    EXPECT_EQ(build.size(), 4u);
    for (const char* bad : {"", "head..modified", "toolong.x", "head.", ","}) {
        std::vector<IgnoreRule> none;
        testing::internal::CaptureStderr();
        EXPECT_FALSE(AddIgnoreRules(bad, none)) << bad;
        EXPECT_NE(testing::internal::GetCapturedStderr().find("Invalid --ignore rule"), std::string::npos);
    }

    std::vector<IgnoreRule> saved = std::exchange(gIgnoreRules, rules);
    const VellTag hmtx = 0x686D7478, name = 0x6E616D65, dsig = 0x44534947;
    struct Case {
        VellTag tag;
        std::vector<PathStep> path;
        bool ignored;
    } cases[] = {
        {name, {PathStep(uint16_t{5}), uint16_t{3}, uint16_t{1}, uint16_t{1033}}, true},
        {name, {PathStep(uint16_t{50}), uint16_t{3}, uint16_t{1}, uint16_t{1033}}, false},
        {hmtx, {PathStep(uint32_t{12}), "advanceWidth"}, true},
        {hmtx, {PathStep(uint32_t{12}), "lsb"}, false},
        {hmtx, {PathStep(uint32_t{12})}, false},  // a rule longer than the path names nothing
        {dsig, {PathStep(size_t{0})}, true},
        {0x4F532F32, {"achVendID"}, true},
        {0x4F532F32, {"achVendIDs"}, false},
    };
    for (const Case& c : cases) EXPECT_EQ(DifferenceIgnored(c.tag, c.path), c.ignored) << c.path[0].Text();
    EXPECT_TRUE(TableIgnored(dsig));
    EXPECT_FALSE(TableHasIgnoredFields(dsig));
    EXPECT_TRUE(TableHasIgnoredFields(hmtx));
    EXPECT_FALSE(TableIgnored(hmtx));
    gIgnoreRules = saved;
}

// Every line of a --json run, parsed.
std::vector<rapidjson::Document> Records(const std::string& output) {
    std::vector<rapidjson::Document> records;
    std::istringstream lines(output);
    for (std::string line; std::getline(lines, line);) {
        records.emplace_back();
        records.back().Parse(line.c_str());
        EXPECT_FALSE(records.back().HasParseError()) << line;
        EXPECT_TRUE(records.back().IsObject()) << line;
    }
    return records;
}

// The records of one type and table ("" for any table).
std::vector<const rapidjson::Document*> Select(const std::vector<rapidjson::Document>& records, const char* type,
                                               const char* table = "") {
    std::vector<const rapidjson::Document*> chosen;
    for (const rapidjson::Document& record : records)
        if (std::string(record["type"].GetString()) == type &&
            (*table == '\0' || (record.HasMember("table") && std::string(record["table"].GetString()) == table)))
            chosen.push_back(&record);
    return chosen;
}

// The records DiffFonts writes for one pair under --json, as lines.
std::vector<std::string> RecordLines(const FontTables& modified, const FontTables& original) {
    LoadedFont modifiedFont(modified), originalFont(original);
    CapturedStream out;
    FILE* saved = std::exchange(gReportFile, out.file());
    {
        TJsonReport json(out.file());
        gJsonReport = &json;
        ErrorRecord record;
        testing::internal::CaptureStderr();
        DiffFonts(modifiedFont.font(), originalFont.font(), &record);
        testing::internal::GetCapturedStderr();
        gJsonReport = nullptr;
    }
    gReportFile = saved;
    std::vector<std::string> lines;
    std::istringstream text(out.Text());
    for (std::string line; std::getline(text, line);) lines.push_back(line);
    return lines;
}

TEST(JsonRecords, EachHandlerNamesItsDifferencesByPath) {
    struct Case {
        const char* what;
        void (*change)(FontTables& modified, FontTables& original);
        std::vector<std::string> records;  // after the table record, in order
    } cases[] = {
        {"'hmtx': a changed side bearing, and a glyph the modified font adds with its metrics",
         [](FontTables& m, FontTables&) {
             m["hmtx"] = MakeHmtx({{1000, 0}, {500, 7}, {1200, 20}, {1200, 30}, {700, 30}});
             SetU16(m["maxp"], 4, 5);
             SetU16(m["hhea"], 34, 5);
         },
         {R"({"type":"field","table":"hmtx","path":[1,"lsb"],"original":0,"modified":7})",
          R"({"type":"entry","table":"hmtx","change":"added","path":[4],"value":{"advanceWidth":700,"lsb":30}})"}},
        {"'hdmx': a width under its pixel size, and a device record only the original has",
         [](FontTables& m, FontTables& o) {
             o["hdmx"] = MakeHdmx({{12, 9, 5, 3, 9, 9}, {14, 10, 6, 4, 10, 10}});
             m["hdmx"] = MakeHdmx({{12, 9, 5, 4, 9, 9}});
         },
         {R"({"type":"entry","table":"hdmx","change":"deleted","path":[14],"value":{"maxWidth":10}})",
          R"({"type":"field","table":"hdmx","path":[12,"widths",1],"original":3,"modified":4})"}},
        {"'feat': a setting renamed, the feature whole on both sides",
         [](FontTables& m, FontTables& o) {
             o["feat"] = MakeFeat({{1, 0x8000, 256, {{0, 257}}}});
             m["feat"] = MakeFeat({{1, 0x8000, 256, {{0, 258}}}});
         },
         {R"({"type":"field","table":"feat","path":[1],"original":{"feature":1,"featureFlags":32768,"nameIndex":256,)"
          R"("nSettings":1,"settings":[{"setting":0,"nameIndex":257}]},"modified":{"feature":1,"featureFlags":32768,)"
          R"("nameIndex":256,"nSettings":1,"settings":[{"setting":0,"nameIndex":258}]}})"}},
        {"'post': a renamed glyph under glyphNames, and the italic angle as the decimal it is",
         [](FontTables& m, FontTables&) {
             m["post"] = MakePost({".notdef", "space", "A", "Bee"});
             SetU32(m["post"], 4, static_cast<uint32_t>(-0xC8000));
         },
         {R"({"type":"field","table":"post","path":["italicAngle"],"original":0.0,"modified":-12.5})",
          R"({"type":"field","table":"post","path":["glyphNames",3],"original":"B","modified":"Bee"})"}},
        {"'OS/2' of two sizes: the sizes, then the fields only the longer table holds",
         [](FontTables& m, FontTables& o) {
             o["OS/2"] = MakeOS2(86);
             m["OS/2"] = MakeOS2(96);
             SetU16(m["OS/2"], 0, 1);
         },
         {R"({"type":"field","table":"OS/2","path":["tableSize"],"original":86,"modified":96})",
          R"({"type":"entry","table":"OS/2","change":"added","path":["sxHeight"],"value":1000})",
          R"({"type":"entry","table":"OS/2","change":"added","path":["sCapHeight"],"value":1400})",
          R"({"type":"entry","table":"OS/2","change":"added","path":["usDefaultChar"],"value":0})",
          R"({"type":"entry","table":"OS/2","change":"added","path":["usBreakChar"],"value":32})",
          R"({"type":"entry","table":"OS/2","change":"added","path":["usMaxContext"],"value":2})"}},
    };
    for (const Case& c : cases) {
        FontTables modified = SampleFont(), original = SampleFont();
        c.change(modified, original);
        std::vector<std::string> lines = RecordLines(modified, original), records;
        std::string table = c.records.empty() ? "" : c.records[0].substr(c.records[0].find("\"table\""), 15);
        for (const std::string& line : lines)
            if (line.find(table) != std::string::npos && !line.starts_with(R"({"type":"table")")) records.push_back(line);
        EXPECT_EQ(records, c.records) << c.what;
    }
}

// Under --opentype, the variable tables' records: keyed like their lists and
// fields, values typed from what the text prints (decimals, hex flags, points).
TEST(JsonRecords, VariableTableRecordsUnderOpenType) {
    OpenTypeForTest openType;
    FontTables original = VariableFont(), modified = VariableFont();
    modified["fvar"] = MakeFvar({{"wdth", 75, 100, 100, 257}, {"wght", 100, 450, 900, 256}},
                                {{260, {100, 400}, 261}, {258, {75, 720}, 259}, {262, {75, 400}, 263}});
    std::vector<std::string> records;
    for (const std::string& line : RecordLines(modified, original))
        if (line.find(R"("table":"fvar")") != std::string::npos && !line.starts_with(R"({"type":"table")"))
            records.push_back(line);
    EXPECT_EQ(records, (std::vector<std::string>{
                           R"({"type":"field","table":"fvar","path":["axisCount"],"original":1,"modified":2})",
                           R"({"type":"field","table":"fvar","path":["instanceCount"],"original":2,"modified":3})",
                           R"({"type":"field","table":"fvar","path":["instanceSize"],"original":10,"modified":14})",
                           R"({"type":"entry","table":"fvar","change":"added","path":["axes","'wdth'"],"value":)"
                           R"({"Minimum":75.0,"Default":100.0,"Maximum":100.0,"Flags":0,"Name":"257 \"Width\""}})",
                           R"({"type":"field","table":"fvar","path":["axes","'wght'","Default"],"original":400.0,)"
                           R"("modified":450.0})",
                           R"({"type":"entry","table":"fvar","change":"added","path":["instances","Condensed"],)"
                           R"("value":{"Subfamily name":"262 \"Condensed\"","Flags":0,"'wdth'":75.0,"'wght'":400.0,)"
                           R"("PostScript name":"263 \"Sample-Condensed\""}})",
                           R"({"type":"field","table":"fvar","path":["instances","Bold","'wdth'"],"original":null,)"
                           R"("modified":75.0})",
                           R"({"type":"field","table":"fvar","path":["instances","Bold","'wght'"],"original":700.0,)"
                           R"("modified":720.0})",
                       }));
}

// The paths doc/vellcmp-json.md lists are the keys the records use: every field
// of the fixed layouts, each made to differ, names a key the document holds.
TEST(JsonRecords, EveryKeyOfTheFixedLayoutsIsInTheSchema) {
    std::string schema = ReadFile(VELLCMP_SOURCE_DIR "/doc/vellcmp-json.md");
    FontTables original = EveryTableFont();
    for (const char* tag : {"head", "hhea", "maxp", "OS/2", "post", "hsty"}) {
        FontTables modified = original;
        for (uint8_t& byte : modified[tag]) byte ^= 0xFF;
        size_t keys = 0;
        for (const std::string& line : RecordLines(modified, original)) {
            rapidjson::Document record;
            record.Parse(line.c_str());
            if (!record.HasMember("path") || std::string(record["table"].GetString()) != tag) continue;
            for (const rapidjson::Value& step : record["path"].GetArray()) {
                if (!step.IsString()) continue;
                ++keys;
                std::string key = step.GetString();
                // A numbered run of keys may be listed by its first and last.
                std::string listed = "`" + key + "`", run = "`" + key.substr(0, key.size() - 1) + "1`";
                EXPECT_TRUE(schema.find(listed) != std::string::npos || schema.find(run) != std::string::npos)
                    << tag << "." << key << " is not in doc/vellcmp-json.md";
            }
        }
        EXPECT_GT(keys, 4u) << tag;
    }
}

class JsonReport : public ::testing::Test {
protected:
    TempDir dir;
    FontTables original = SampleFont(), modified = SampleFont();
    RunResult Run(std::vector<std::string> options) {
        std::string a = dir.Write("a.ttf", BuildSfnt(original)), b = dir.Write("b.ttf", BuildSfnt(modified));
        options.push_back(a);
        options.push_back(b);
        return RunVellcmp(options);
    }
};

TEST_F(JsonReport, RecordsCarryTheDifferencesWithTrueValues) {
    SetU32(modified["head"], 4, 0x000111EC);         // fontRevision 1.07, which the text shows as 1.4587
    SetU32(modified["head"], 32, 3140000000u + 61);  // modified
    SetU16(modified["maxp"], 4, 40000);              // numGlyphs, which the text shows as -25536
    SetU32(modified["OS/2"], 58, 0x4E4F4E45);        // achVendID 'NONE'
    modified["DSIG"] = Bytes{0, 0, 0, 1, 0, 0, 0, 0};
    original["fpgm"] = Bytes(20, 0xB0);
    modified["fpgm"] = Bytes(20, 0xB0);
    modified["fpgm"][17] = 0x2C;
    RunResult run = Run({"--json", "--exit-code"});
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.err, "");
    std::vector<rapidjson::Document> records = Records(run.out);

    auto pair = Select(records, "pair");
    ASSERT_EQ(pair.size(), 1u);
    EXPECT_STREQ((*pair[0])["modified"]["fullName"].GetString(), "Sample Regular");
    EXPECT_STREQ((*pair[0])["original"]["version"].GetString(), "Version 1.000");

    auto added = Select(records, "table", "DSIG");
    ASSERT_EQ(added.size(), 1u);
    EXPECT_STREQ((*added[0])["change"].GetString(), "added");
    EXPECT_EQ((*added[0])["modifiedSize"].GetInt(), 8);
    EXPECT_FALSE(added[0]->HasMember("originalSize"));

    auto head = Select(records, "field", "head");
    ASSERT_EQ(head.size(), 2u);
    EXPECT_STREQ((*head[0])["path"][0].GetString(), "fontRevision");
    EXPECT_DOUBLE_EQ((*head[0])["modified"].GetDouble(), 1.07);
    EXPECT_DOUBLE_EQ((*head[0])["original"].GetDouble(), 1.0);
    EXPECT_STREQ((*head[1])["path"][0].GetString(), "modified");
    EXPECT_STREQ((*head[1])["modified"].GetString(), "2003-07-02T14:14:21Z");

    auto maxp = Select(records, "field", "maxp");
    ASSERT_EQ(maxp.size(), 1u);
    EXPECT_STREQ((*maxp[0])["path"][0].GetString(), "numGlyphs");
    EXPECT_EQ((*maxp[0])["modified"].GetInt(), 40000);

    auto os2 = Select(records, "field", "OS/2");
    ASSERT_EQ(os2.size(), 1u);
    EXPECT_STREQ((*os2[0])["modified"].GetString(), "NONE");

    // A table without a handler: the differing eight-byte row, both sides in hex.
    auto bytes = Select(records, "bytes", "fpgm");
    ASSERT_EQ(bytes.size(), 1u);
    EXPECT_EQ((*bytes[0])["offset"].GetInt(), 16);
    EXPECT_STREQ((*bytes[0])["original"].GetString(), "B0B0B0B0");
    EXPECT_STREQ((*bytes[0])["modified"].GetString(), "B02CB0B0");

    // The text report has none of it.
    EXPECT_EQ(run.out.find("#####"), std::string::npos);
}

TEST_F(JsonReport, ListEntriesAndGlyphsAreEntriesWithTheirValues) {
    modified["name"] = MakeName({{1, "Sample"}, {2, "Regular"}, {4, "Sample Regular"}, {5, "Version 1.000"},
                                 {6, "Sample-Regular"}, {13, "Licence"}});
    SetU16(modified["hmtx"], 0, 999);
    RunResult run = Run({"--json"});
    std::vector<rapidjson::Document> records = Records(run.out);
    // The name ID comes first in the path, then platform, encoding and language.
    auto names = Select(records, "entry", "name");
    auto licence = std::find_if(names.begin(), names.end(), [](const rapidjson::Document* record) {
        return (*record)["path"][0].GetInt() == 13;
    });
    ASSERT_NE(licence, names.end());
    EXPECT_STREQ((**licence)["change"].GetString(), "added");
    EXPECT_EQ((**licence)["path"].Size(), 4u);
    EXPECT_STREQ((**licence)["value"].GetString(), "Licence");

    auto metrics = Select(records, "field", "hmtx");
    ASSERT_EQ(metrics.size(), 1u);
    EXPECT_EQ((*metrics[0])["path"][0].GetInt(), 0);
    EXPECT_STREQ((*metrics[0])["path"][1].GetString(), "advanceWidth");
    EXPECT_EQ((*metrics[0])["modified"].GetInt(), 999);
}

TEST_F(JsonReport, IgnoredDifferencesLeaveTheirTableUnchangedInTextAndJson) {
    // A rebuild: the checksum adjustment and both dates, and a signature added.
    SetU32(modified["head"], 8, 0x0BADF00D);
    SetU32(modified["head"], 24, 3150000000u);
    SetU32(modified["head"], 32, 3150000000u);
    modified["DSIG"] = Bytes{0, 0, 0, 1, 0, 0, 0, 0};
    const std::string empty = "##### Tables added (in modified font and not original font)\n##### End tables added\n\n"
                              "##### Tables deleted (in original font but not in modified font)\n"
                              "#####End tables deleted\n\n##### Tables changed\n#####End tables changed\n\n";
    RunResult text = Run({"--ignore=build", "--exit-code"});
    EXPECT_EQ(text.status, 0);
    EXPECT_TRUE(text.out.ends_with(empty)) << text.out;
    RunResult json = Run({"--ignore=build", "--exit-code", "--json"});
    EXPECT_EQ(json.status, 0);
    EXPECT_EQ(Records(json.out).size(), 1u);  // the pair record alone

    // One field left over keeps 'head' changed, with that field alone.
    SetU16(modified["head"], 18, 1000);
    text = Run({"--ignore=head.checkSumAdjustment,head.created,head.modified,DSIG", "--exit-code"});
    EXPECT_EQ(text.status, 1);
    EXPECT_NE(text.out.find("\t'head'\n"), std::string::npos);
    EXPECT_NE(text.out.find("\tUnits per em (mod ):\t1000\n"), std::string::npos);
    EXPECT_EQ(text.out.find("Checksum adjustment"), std::string::npos);
    EXPECT_EQ(text.out.find("Date"), std::string::npos);
    EXPECT_EQ(text.out.find("DSIG"), std::string::npos);
    json = Run({"--ignore=build", "--json"});
    std::vector<rapidjson::Document> records = Records(json.out);
    auto head = Select(records, "field", "head");
    ASSERT_EQ(head.size(), 1u);
    EXPECT_STREQ((*head[0])["path"][0].GetString(), "unitsPerEm");
}

TEST_F(JsonReport, AWildcardRuleLeavesOutOneFieldOfEveryGlyphAndTheirHeadings) {
    modified["hmtx"] = MakeHmtx({{1000, 0}, {510, 0}, {1200, 25}}, {30});
    RunResult run = Run({"--ignore=hmtx.*.advanceWidth", "--exit-code"});
    EXPECT_EQ(run.status, 1);
    // Glyph 1 changed only its advance: neither it nor its heading is left.
    EXPECT_NE(run.out.find("\tGlyph:\t2\n\t\tName:\tA\n\t\tLeft-side bearing (mod ):\t25\n"), std::string::npos)
        << run.out;
    EXPECT_EQ(run.out.find("\tGlyph:\t1\n"), std::string::npos);
    EXPECT_EQ(run.out.find("Advance width"), std::string::npos);
    // Without the side bearing's change, 'hmtx' is unchanged.
    modified["hmtx"] = MakeHmtx({{1000, 0}, {510, 0}, {1200, 20}}, {30});
    run = Run({"--ignore=hmtx.*.advanceWidth", "--exit-code"});
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.out.find("'hmtx'"), std::string::npos);
}

TEST_F(JsonReport, OptionsCombineAndMistakesAreRecordsToo) {
    SetU16(modified["head"], 18, 1000);
    // --summary: the table records alone; --color never colours records.
    RunResult run = Run({"--json", "--summary", "--color=always"});
    std::vector<rapidjson::Document> records = Records(run.out);
    ASSERT_EQ(records.size(), 2u);
    EXPECT_STREQ(records[1]["table"].GetString(), "head");
    EXPECT_EQ(run.out.find('\x1b'), std::string::npos);
    // --tables: the other tables keep their table record, without an account.
    run = Run({"--json", "--tables=name"});
    EXPECT_EQ(Records(run.out).size(), 2u);
    // A bad rule fails like any mistyped option.
    run = Run({"--json", "--exit-code", "--ignore=head..x"});
    EXPECT_EQ(run.status, 2);
    // A font without a partner is a warning record as well as a line.
    original = SampleFont("Other Name");
    run = Run({"--json"});
    records = Records(run.out);
    ASSERT_EQ(records.size(), 1u);
    EXPECT_STREQ(records[0]["type"].GetString(), "warning");
    EXPECT_STREQ(records[0]["message"].GetString(), "Could not find match for font Sample Regular!");
    EXPECT_EQ(run.err, "##### WARNING! Could not find match for font Sample Regular!\n");
    // A font that cannot be read: its error lines are records too.
    std::string a = dir.Write("a.ttf", BuildSfnt(SampleFont())), cut = dir.Write("cut.ttf", Bytes(20, 0));
    run = RunVellcmp({"--json", "--exit-code", a, cut});
    EXPECT_EQ(run.status, 2);
    records = Records(run.out);
    ASSERT_FALSE(records.empty());
    for (const rapidjson::Document& record : records) EXPECT_STREQ(record["type"].GetString(), "error");
    EXPECT_NE(std::string(records.back()["message"].GetString()).find("Aborting after failure to diff"),
              std::string::npos);
}

}  // namespace
