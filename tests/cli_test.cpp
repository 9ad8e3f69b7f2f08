// The command line as a user meets it: options, operands, the report header,
// error lines and exit statuses, checked on the real executable.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <unistd.h>

#include "support/FontBuilder.h"

namespace {

const std::string kVersionLine = "vellcmp, version 1.1d1e11, Vell 1.0 (portable)\n";
const std::string kUsage =
    "Usage:  vellcmp [-hpuvV] [-f font name] [-o output file] originalfontfile modifiedfontfile \n"
    "Options:\n\t-f The name of the font within the font files to compare; use single quotes if the font name has "
    "spaces in it\n\t-o An optional output file for the results of a diff; stdout is used if this parameter is not "
    "specified\n\t-h Output this message\n\t-p Show the PostScript names of glyphs\n"
    "\t-u Show the Unicode names of characters\n\t-v Verbose operation, additional data is output to stderr\n"
    "\t-V Output the tool's version to stdout\n";
const std::string kEmptySections =
    "##### Tables added (in modified font and not original font)\n##### End tables added\n\n"
    "##### Tables deleted (in original font but not in modified font)\n#####End tables deleted\n\n"
    "##### Tables changed\n#####End tables changed\n\n";

std::string Header(const std::string& original, const std::string& modified, std::string name = "Sample Regular",
                   std::string modifiedVersion = "Version 1.000", std::string originalName = "") {
    const std::string rule(64, '='), version = ", version: ";
    if (originalName.empty()) originalName = name;
    return rule + "\nOriginal font: \n  file name: " + original + ", full name: " + originalName + version +
           "Version 1.000\nModified font:\n  file name: " + modified + ", full name: " + name + version +
           modifiedVersion + "\n\n" + rule + "\n\n";
}

std::string Aborting(const std::string& modified, const std::string& original) {
    return "##### ERROR:  Aborting after failure to diff " + modified + " and " + original + ".\n";
}

class Cli : public ::testing::Test {
protected:
    TempDir dir;
    std::string a = dir.Write("a.ttf", BuildSfnt(SampleFont())), b = dir.Write("b.ttf", BuildSfnt(SampleFont()));
};

TEST_F(Cli, OptionsOperandsPairingAndStatuses) {
    // The font both collections hold has a name that is no format.
    std::string m = dir.Write("m.ttc", BuildCollection({SampleFont("One"), SampleFont("5%s %d%%"), SampleFont("Six")}));
    std::string o = dir.Write("o.ttc", BuildCollection({SampleFont("Four"), SampleFont("5%s %d%%")}));
    std::string missing = dir.Path("missing.ttf"), unwritable = dir.Path("no/such/dir/report");
    const std::string report = Header(a, b) + kEmptySections, usage = kVersionLine + kUsage;
    // getopt names the option; the tool's own line shows '?'.
    const std::string unknown = VELLCMP_BINARY ": invalid option -- 'x'\n#### ERROR:  Unknown option: ?\n";
    const std::string count =
        "##### ERROR:  There must be exactly two font files as arguments, when there appears to be ";
    const struct { std::vector<std::string> arguments; std::string out, err; int status; } cases[] = {
        {{a, b}, report, "", 0},
        {{}, usage, "", 0},
        {{"-V"}, usage + kVersionLine, "", 0},
        {{"-h", a, b}, usage + report, "", 0},
        {{"-V", a, b}, kVersionLine + report, "", 0},
        {{"-x", a, b}, report, unknown, 0},  // an unknown option still compares two operands
        {{"-x"}, usage, unknown, 1},
        {{"-o", unwritable}, usage, "#### ERROR:  Cannot open output file \"" + unwritable + "\"\n", 1},
        {{a}, "", count + "1!\n", 1},
        {{a, "-v", b}, "", count + "3!\n", 1},  // options stop at the first operand
        {{missing, b}, "", "##### ERROR:  File " + missing + " not found\n" + Aborting(b, missing), 1},
        // A directory is reported, then the font-list call on it fails.
        {{a, dir.path()}, "", "##### ERROR:  " + dir.path() + " is a directory, not a file\n##### ERROR: The Vellkit "
             "reported a problem.\n\tSource file vellcmp/Source/main, line 212\n" + Aborting(dir.path(), a), 1},
        // Fonts pair by full name; a modified font without a partner only warns.
        {{o, m}, Header(o, m, "5%s %d%%") + kEmptySections,
         "##### WARNING! Could not find match for font One!\n##### WARNING! Could not find match for font Six!\n", 0},
        // -f: no header; the full or the PostScript name, exactly, in both files.
        {{"-f", "Sample Regular", a, b}, kEmptySections, "", 0},
        {{"-f", "SampleRegular", a, b}, kEmptySections, "", 0},
        {{"-f", "sample regular", a, b}, "", Aborting(b, a), 1},
        {{"-f", "One", b, m}, "", Aborting(m, b), 1},
        {{"-f", "", a, b}, report, "", 0},  // an empty name is no name
    };
    for (const auto& c : cases) {
        RunResult run = RunVellcmp(c.arguments);
        EXPECT_EQ(std::tie(run.out, run.err, run.status), std::tie(c.out, c.err, c.status))
            << ::testing::PrintToString(c.arguments);
    }
}

// -o naming a font file by any path leaves both files as they were; any other
// report file is emptied first, as it always was.
TEST_F(Cli, AnOutputFileThatIsAFontFileIsRefusedAndLeftUntouched) {
    const std::string font = ReadFile(a), link = dir.Path("link.ttf"), hard = dir.Path("hard.ttf");
    ASSERT_EQ(symlink(a.c_str(), link.c_str()), 0);
    ASSERT_EQ(::link(b.c_str(), hard.c_str()), 0);
    const struct { bool dump; std::vector<std::string> arguments; std::string output, named; int status; } cases[] = {
        {false, {"-o", a, a, b}, a, a, 1},
        {false, {"--exit-code", "-o", b, a, b}, b, b, 2},
        {false, {"-o", dir.path() + "/./a.ttf", a, b}, dir.path() + "/./a.ttf", a, 1},
        {false, {"-o", link, a, b}, link, a, 1},
        {false, {"-o", hard, a, b}, hard, b, 1},
        {false, {"-o", dir.Path("report"), "-o", a, b, a}, a, a, 1},  // an earlier -o counts too
        {true, {"-o", a, a}, a, a, 1},
        {true, {"-o", link, a, "head"}, link, a, 1},
    };
    for (const auto& c : cases) {
        RunResult run = c.dump ? RunVelldump(c.arguments) : RunVellcmp(c.arguments);
        const std::string err =
            "##### ERROR:  The output file \"" + c.output + "\" is the font file \"" + c.named + "\"; it is left untouched\n";
        EXPECT_EQ(std::tie(run.out, run.err, run.status), std::tie("", err, c.status)) << ::testing::PrintToString(c.arguments);
        EXPECT_TRUE(ReadFile(a) == font && ReadFile(b) == font) << ::testing::PrintToString(c.arguments);
    }
    std::string report = dir.Write("report", Bytes(4096, 'x'));
    EXPECT_EQ(RunVellcmp({"-o", report, a, b}).status, 0);
    EXPECT_EQ(ReadFile(report), Header(a, b) + kEmptySections);
}

// --pair=index pairs a renamed family font by font; the fonts left over on either
// side are warned of and make a difference.
TEST_F(Cli, PairByIndexComparesFontsWhateverTheirNames) {
    const std::vector<FontTables> renamed = {SampleFont("New A"), SampleFont("New B"), SampleFont("Extra")},
                                  old = {SampleFont("Old A"), SampleFont("Old Family B")};
    std::string n = dir.Write("new.ttc", BuildCollection(renamed)), o = dir.Write("old.ttc", BuildCollection(old));
    // Only 'name' differs between the fonts of one index.
    auto summary = [&](const std::string& original, const std::string& modified, const FontTables& originalFont,
                       const FontTables& modifiedFont, const std::string& originalName, const std::string& modifiedName) {
        return Header(original, modified, modifiedName, "Version 1.000", originalName) +
               kEmptySections.substr(0, kEmptySections.find("#####End tables changed")) + "\t'name' " +
               std::to_string(FontTables(modifiedFont)["name"].size()) + " bytes (" +
               std::to_string(FontTables(originalFont)["name"].size()) + " bytes in the original font)\n" +
               "#####End tables changed\n\n";
    };
    const std::string extra = "##### WARNING! Could not find match for font Extra!\n";
    const struct { std::vector<std::string> arguments; std::string out, err; int status; } cases[] = {
        {{"--pair=index", o, n},
         summary(o, n, old[0], renamed[0], "Old A", "New A") + summary(o, n, old[1], renamed[1], "Old Family B", "New B"),
         extra, 0},
        {{"--exit-code", "--pair=index", n, o},
         summary(n, o, renamed[0], old[0], "New A", "Old A") + summary(n, o, renamed[1], old[1], "New B", "Old Family B"),
         extra, 1},
        {{"--pair=name", o, n}, "",
         "##### WARNING! Could not find match for font New A!\n##### WARNING! Could not find match for font New B!\n" +
             extra, 0},
        {{"--pair=index", "-f", "Extra", n, n}, kEmptySections, "", 0},  // -f chooses the pair
    };
    for (auto [arguments, out, err, status] : cases) {
        arguments.insert(arguments.end() - 2, "--summary");
        RunResult run = RunVellcmp(arguments);
        EXPECT_EQ(std::tie(run.out, run.err, run.status), std::tie(out, err, status)) << ::testing::PrintToString(arguments);
    }
}

// 65,535 'name' records, all but the first 5,462 Macintosh names whose string is
// the first 64 KB of records (bytes of 'A', no NUL): printed whole, every copy
// would make gigabytes. Each account stops at 64 times its tables' size, and the
// report goes on with 'post', which differs too.
TEST_F(Cli, AHostileNameTableIsCutAtItsBudgetAndTheReportGoesOn) {
    constexpr uint32_t kRecords = 65535, kFillerRecords = 5462;
    TableWriter name;
    name.U16(0).U16(kRecords).U16(6).Text(std::string(12 * kFillerRecords, 'A'));
    for (uint32_t i = kFillerRecords; i < kRecords; ++i) name.U16(1).U16(0).U16(0).U16(i % 20).U16(0xFFFF).U16(0);
    FontTables hostile = SampleFont();
    hostile["name"] = name;
    hostile.Remove("post");
    hostile["post"] = MakePost({".notdef", "space", "A", "C"});
    std::string h = dir.Write("hostile.ttf", BuildSfnt(hostile));
    const size_t nameBytes = name.bytes().size(), sampleNameBytes = SampleFont()["name"].size();
    const std::string why = " bytes: an account prints at most 64 times the size of the tables it shows, or 16 MB "
                            "when that is more (a damaged table?)\n\n#####\n End table";
    const std::string compared = " comparison\n\n\n\n#####\n End table\n\n\n";
    const struct { RunResult run; size_t budget; std::string footer; } runs[] = {
        {RunVelldump({h}), 64 * nameBytes, "\n\n\n##### Table 'post'"},
        {RunVellcmp({"--pair=index", a, h}), 64 * (nameBytes + sampleNameBytes), compared + "\n\t'post'\n##### Table"},
        // The modified font's directory orders the accounts: here 'name' is the last.
        {RunVellcmp({"--pair=index", h, a}), 64 * (nameBytes + sampleNameBytes), compared + "#####End tables changed"},
    };
    for (const auto& [run, budget, footer] : runs) {
        EXPECT_EQ(run.err, "");
        EXPECT_EQ(run.status, 0);
        size_t account = run.out.find("##### Table 'name'"), cut = run.out.find("##### The account of 'name'");
        ASSERT_NE(cut, std::string::npos);
        const std::string ending = "##### The account of 'name' was cut at " + std::to_string(cut - account) + why + footer;
        EXPECT_EQ(run.out.substr(cut, ending.size()), ending);
        size_t accountBytes = run.out.find("\n End table\n\n\n", cut) + 14 - account;
        EXPECT_LE(accountBytes, budget);
        EXPECT_GT(accountBytes, budget - 65536);  // cut at the budget, not before
    }
}

TEST_F(Cli, VerboseNotesGoToTheReportFileAndStandardError) {
    std::string m = dir.Write("m.ttf", BuildSfnt(SampleFont("Sample Regular", "Version 2.000")));
    std::string report = dir.Path("report.txt");
    RunResult run = RunVellcmp({"-v", "-o", report, a, m});
    EXPECT_EQ(run.out, "");
    EXPECT_THAT(ReadFile(report), ::testing::StartsWith("Diffing \"" + m + "\" and \"" + a +
                                                        "\"\n\tFSPathMakeRef() == 0\n\tFSPathMakeRef() == 0\n" +
                                                        Header(a, m, "Sample Regular", "Version 2.000")));
    EXPECT_THAT(run.err, ::testing::StartsWith("Looking for match for font name 'Sample Regular'\n\tFound 'Sample "
                                               "Regular'\nFound a delta in the 'name' tables\n\tAbout to create "
                                               "the comparator\n\tThe comparator == 0x"));
}

TEST_F(Cli, EachDamagedFileFailsWithALineSayingWhy) {
    Bytes sfnt = BuildSfnt(SampleFont()), collection = BuildCollection({SampleFont("One"), SampleFont("Two")});
    Bytes wrongOffset = collection, headOutside = sfnt;
    SetU32(wrongOffset, 16, 0x00FFFFF0);      // the second font's offset
    SetU32(headOutside, 12 + 8, 0x00FFFFF0);  // the first directory entry's offset ('head')
    // Cut inside 'name', the last table: the directory survives, the lookups that pair the fonts fail.
    Bytes cutName(sfnt.begin(), sfnt.end() - 60);
    const std::string past = " runs past the end of the file (a truncated font?)";
    // Where the failing call was made: listing the modified file's fonts, unless given.
    const struct { Bytes file; std::string why, source = "main, line 212"; bool asOriginal = false; } cases[] = {
        {{'h', 'i'}, "not a font file: it begins with no font, collection, web font or resource fork header"},
        {{}, "the file is empty"},
        {Bytes(sfnt.begin(), sfnt.begin() + 40), "the font's table directory" + past},
        {Bytes(collection.begin(), collection.begin() + 14),
         "the collection's list of fonts is empty or runs past the end of the file"},
        {wrongOffset, "a font of the collection lies past the end of the file"},
        {cutName, "the 'name' table" + past, "main, line 241"},
        {cutName, "the 'name' table" + past, "main, line 359", true},
        {headOutside, "the 'head' table" + past, "VellCmpFonts, line 75"},
    };
    for (const auto& [file, why, source, asOriginal] : cases) {
        std::string bad = dir.Write("bad.ttf", file);
        RunResult run = asOriginal ? RunVellcmp({bad, a}) : RunVellcmp({a, bad});
        EXPECT_EQ(run.err, "##### ERROR: The Vellkit reported a problem.\n\t" + bad + ": " + why +
                               "\n\tSource file vellcmp/Source/" + source + "\n" +
                               (asOriginal ? Aborting(a, bad) : Aborting(bad, a)));
        EXPECT_EQ(run.status, 1) << why;
    }
}

// Without 'hhea' the 'hmtx' comparator cannot read metrics: the comparison stops at that table.
TEST_F(Cli, AComparatorFailureEndsTheComparisonWithAnInternalError) {
    FontTables font = SampleFont();
    font.Remove("hhea");
    std::string o = dir.Write("o.ttf", BuildSfnt(font));
    SetU16(font["hmtx"], 0, 999);
    std::string m = dir.Write("m.ttf", BuildSfnt(font));
    RunResult run = RunVellcmp({o, m});
    EXPECT_EQ(run.err, "##### ERROR: An internal error occurred.\n"
                       "\tSource file vellcmp/Source/VellCmpFonts, line 194\n" + Aborting(m, o));
    EXPECT_THAT(run.out, ::testing::EndsWith("\n\t'hmtx'\n##### Table 'hmtx' (14 bytes in the modified font)\n"
                                             "                   (14 bytes in the original font)\n"));
}

}  // namespace
