// The command line as a user meets it: options, operands, the report header,
// error lines and exit statuses, checked on the real executable.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/FontBuilder.h"

using ::testing::HasSubstr;
using ::testing::StartsWith;

namespace {

const std::string kRule = "================================================================\n";
const std::string kVersionLine = "vellcmp, version 1.1d1e11, Vell 1.0 (portable)\n";
const std::string kUsage =
    "Usage:  vellcmp [-hpuvV] [-f font name] [-o output file] originalfontfile modifiedfontfile \n"
    "Options:\n"
    "\t-f The name of the font within the font files to compare; use single quotes if the font name has spaces "
    "in it\n"
    "\t-o An optional output file for the results of a diff; stdout is used if this parameter is not specified\n"
    "\t-h Output this message\n"
    "\t-p Show the PostScript names of glyphs\n"
    "\t-u Show the Unicode names of characters\n"
    "\t-v Verbose operation, additional data is output to stderr\n"
    "\t-V Output the tool's version to stdout\n";
const std::string kEmptySections =
    "##### Tables added (in modified font and not original font)\n"
    "##### End tables added\n\n"
    "##### Tables deleted (in original font but not in modified font)\n"
    "#####End tables deleted\n\n"
    "##### Tables changed\n"
    "#####End tables changed\n\n";

std::string Header(const std::string& original, const std::string& modified, const std::string& name = "Sample Regular",
                   const std::string& version = "Version 1.000") {
    return kRule + "Original font: \n  file name: " + original + ", full name: " + name + ", version: " + version +
           "\nModified font:\n  file name: " + modified + ", full name: " + name + ", version: " + version + "\n\n" +
           kRule + "\n";
}

class Cli : public ::testing::Test {
protected:
    TempDir dir;
    std::string a = dir.Write("a.ttf", BuildSfnt(SampleFont()));
    std::string b = dir.Write("b.ttf", BuildSfnt(SampleFont()));
};

TEST_F(Cli, IdenticalFontsPrintTheHeaderAndThreeEmptySections) {
    RunResult run = RunVellcmp({a, b});
    EXPECT_EQ(run.out, Header(a, b) + kEmptySections);
    EXPECT_EQ(run.err, "");
    EXPECT_EQ(run.status, 0);
}

TEST_F(Cli, NoOperandsPrintUsageAndVersionTwiceWithV) {
    RunResult run = RunVellcmp({});
    EXPECT_EQ(run.out, kVersionLine + kUsage);
    EXPECT_EQ(run.status, 0);
    run = RunVellcmp({"-V"});
    EXPECT_EQ(run.out, kVersionLine + kUsage + kVersionLine);
    EXPECT_EQ(run.status, 0);
}

TEST_F(Cli, HelpAndVersionWithTwoOperandsStillCompare) {
    RunResult run = RunVellcmp({"-h", a, b});
    EXPECT_EQ(run.out, kVersionLine + kUsage + Header(a, b) + kEmptySections);
    run = RunVellcmp({"-V", a, b});
    EXPECT_EQ(run.out, kVersionLine + Header(a, b) + kEmptySections);
    EXPECT_EQ(run.status, 0);
}

TEST_F(Cli, AnUnknownOptionStillComparesTwoOperandsButFailsWithoutThem) {
    RunResult run = RunVellcmp({"-x", a, b});
    EXPECT_THAT(run.err, HasSubstr("#### ERROR:  Unknown option: ?\n"));
    EXPECT_THAT(run.err, ::testing::Not(HasSubstr("#####")));
    EXPECT_EQ(run.out, Header(a, b) + kEmptySections);
    EXPECT_EQ(run.status, 0);
    run = RunVellcmp({"-x"});
    EXPECT_EQ(run.out, kVersionLine + kUsage);
    EXPECT_EQ(run.status, 1);
}

TEST_F(Cli, WrongOperandCountsAndOptionsAfterAnOperand) {
    RunResult run = RunVellcmp({a});
    EXPECT_EQ(run.err,
              "##### ERROR:  There must be exactly two font files as arguments, when there appears to be 1!\n");
    EXPECT_EQ(run.status, 1);
    // Options stop at the first operand: "-v" here is a third operand.
    run = RunVellcmp({a, "-v", b});
    EXPECT_EQ(run.err,
              "##### ERROR:  There must be exactly two font files as arguments, when there appears to be 3!\n");
    EXPECT_EQ(run.out, "");
    EXPECT_EQ(run.status, 1);
}

TEST_F(Cli, OutputFileTakesTheReportAndTheVerboseDiffingLine) {
    std::string report = dir.Path("report.txt");
    RunResult run = RunVellcmp({"-v", "-o", report, a, b});
    EXPECT_EQ(run.out, "");
    EXPECT_EQ(ReadFile(report), "Diffing \"" + b + "\" and \"" + a + "\"\n\tFSPathMakeRef() == 0\n" +
                                    "\tFSPathMakeRef() == 0\n" + Header(a, b) + kEmptySections);
    EXPECT_THAT(run.err, HasSubstr("Looking for match for font name 'Sample Regular'\n\tFound 'Sample Regular'\n"));
    EXPECT_EQ(run.status, 0);
}

TEST_F(Cli, AnOutputFileThatCannotBeOpenedIsAnError) {
    RunResult run = RunVellcmp({"-o", dir.Path("no/such/dir/report")});
    EXPECT_EQ(run.err, "#### ERROR:  Cannot open output file \"" + dir.Path("no/such/dir/report") + "\"\n");
    EXPECT_EQ(run.out, kVersionLine + kUsage);
    EXPECT_EQ(run.status, 1);
}

TEST_F(Cli, VerboseNotesFrameEachComparatorOnStandardError) {
    FontTables modified = SampleFont();
    SetU16(modified["head"], 18, 1000);
    std::string m = dir.Write("m.ttf", BuildSfnt(modified));
    RunResult run = RunVellcmp({"-v", a, m});
    EXPECT_THAT(run.err, HasSubstr("Found a delta in the 'head' tables\n\tAbout to create the comparator\n"
                                   "\tThe comparator == 0x"));
    EXPECT_EQ(run.status, 0);
}

TEST_F(Cli, MissingFilesAndDirectories) {
    std::string missing = dir.Path("missing.ttf");
    RunResult run = RunVellcmp({missing, b});
    EXPECT_EQ(run.err, "##### ERROR:  File " + missing + " not found\n##### ERROR:  Aborting after failure to diff " +
                           b + " and " + missing + ".\n");
    EXPECT_EQ(run.status, 1);

    // A directory is reported, then the font-list call on it fails.
    run = RunVellcmp({a, dir.path()});
    EXPECT_EQ(run.err, "##### ERROR:  " + dir.path() + " is a directory, not a file\n" +
                           "##### ERROR: The Vellkit reported a problem.\n"
                           "\tSource file vellcmp/Source/main, line 212\n"
                           "##### ERROR:  Aborting after failure to diff " + dir.path() + " and " + a + ".\n");
    EXPECT_EQ(run.out, "");
    EXPECT_EQ(run.status, 1);
}

TEST_F(Cli, EachDamagedFileFailsWithALineSayingWhy) {
    Bytes sfnt = BuildSfnt(SampleFont()), collection = BuildCollection({SampleFont("One"), SampleFont("Two")});
    Bytes wrongOffset = collection, headOutside = sfnt;
    SetU32(wrongOffset, 16, 0x00FFFFF0);  // the second font's offset
    SetU32(headOutside, 12 + 8, 0x00FFFFF0);  // the first directory entry's offset ('head')
    // Cut inside 'name', the last table: the directory survives, but 'name' runs
    // past the end of the file, so the lookups that pair the fonts fail.
    Bytes cutName(sfnt.begin(), sfnt.end() - 60);
    const std::string truncated = " table runs past the end of the file (a truncated font?)";
    const struct {
        Bytes file;
        bool asOriginal;
        std::string why, source;
    } cases[] = {
        {{'h', 'e', 'l', 'l', 'o', '\n'}, false,
         "not a font file: it begins with no font, collection, web font or resource fork header", "main, line 212"},
        {{}, false, "the file is empty", "main, line 212"},
        {Bytes(sfnt.begin(), sfnt.begin() + 40), false,
         "the font's table directory runs past the end of the file (a truncated font?)", "main, line 212"},
        {Bytes(collection.begin(), collection.begin() + 14), false,
         "the collection's list of fonts is empty or runs past the end of the file", "main, line 212"},
        {wrongOffset, false, "a font of the collection lies past the end of the file", "main, line 212"},
        {cutName, false, "the 'name'" + truncated, "main, line 241"},
        {cutName, true, "the 'name'" + truncated, "main, line 359"},
        {headOutside, false, "the 'head'" + truncated, "VellCmpFonts, line 75"},
    };
    for (const auto& [file, asOriginal, why, source] : cases) {
        std::string bad = dir.Write("bad.ttf", file);
        RunResult run = asOriginal ? RunVellcmp({bad, a}) : RunVellcmp({a, bad});
        EXPECT_EQ(run.err, "##### ERROR: The Vellkit reported a problem.\n\t" + bad + ": " + why +
                               "\n\tSource file vellcmp/Source/" + source + "\n##### ERROR:  Aborting after failure to diff " +
                               (asOriginal ? a + " and " + bad : bad + " and " + a) + ".\n")
            << why;
        EXPECT_EQ(run.status, 1);
    }
    std::string cut = dir.Write("cut.ttf", cutName);
    RunResult run = RunVelldump({cut, "name"});
    EXPECT_EQ(run.err, "##### ERROR: The Vellkit reported a problem.\n\t" + cut + ": the 'name'" + truncated +
                           "\n##### ERROR:  Aborting after failure to dump " + cut + ".\n");
    EXPECT_EQ(run.status, 1);
}

TEST_F(Cli, FontsArePairedByFullNameAcrossCollections) {
    std::string modified = dir.Write("m.ttc", BuildCollection({SampleFont("One"), SampleFont("Two"), SampleFont("Three")}));
    std::string original = dir.Write("o.ttc", BuildCollection({SampleFont("Four"), SampleFont("Two")}));
    RunResult run = RunVellcmp({original, modified});
    EXPECT_EQ(run.err, "##### WARNING! Could not find match for font One!\n"
                       "##### WARNING! Could not find match for font Three!\n");
    EXPECT_EQ(run.out, Header(original, modified, "Two") + kEmptySections);
    EXPECT_EQ(run.status, 0);
}

TEST_F(Cli, AFontNamedWithFPrintsNoHeaderAndMatchesExactly) {
    std::string modified = dir.Write("m.ttc", BuildCollection({SampleFont("One"), SampleFont("Two")}));
    RunResult run = RunVellcmp({"-f", "Sample Regular", a, b});
    EXPECT_EQ(run.out, kEmptySections);
    EXPECT_EQ(run.status, 0);
    // The PostScript name (name ID 6) matches as well as the full name.
    run = RunVellcmp({"-f", "Two", b, modified});
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.err, "##### ERROR:  Aborting after failure to diff " + modified + " and " + b + ".\n");
    run = RunVellcmp({"-f", "SampleRegular", a, b});
    EXPECT_EQ(run.out, kEmptySections);
    // Case matters; a missing name is reported by the "Aborting" line alone.
    run = RunVellcmp({"-f", "sample regular", a, b});
    EXPECT_EQ(run.out, "");
    EXPECT_EQ(run.err, "##### ERROR:  Aborting after failure to diff " + b + " and " + a + ".\n");
    EXPECT_EQ(run.status, 1);
    // An empty name is no name at all.
    run = RunVellcmp({"-f", "", a, b});
    EXPECT_EQ(run.out, Header(a, b) + kEmptySections);
}

TEST_F(Cli, AComparatorFailureEndsTheComparisonWithAnInternalError) {
    // Without 'hhea' the 'hmtx' comparator cannot read metrics.
    FontTables original = SampleFont(), modified = SampleFont();
    original.Remove("hhea");
    modified.Remove("hhea");
    SetU16(modified["hmtx"], 0, 999);
    std::string o = dir.Write("o.ttf", BuildSfnt(original)), m = dir.Write("m.ttf", BuildSfnt(modified));
    RunResult run = RunVellcmp({o, m});
    EXPECT_EQ(run.err, "##### ERROR: An internal error occurred.\n"
                       "\tSource file vellcmp/Source/VellCmpFonts, line 194\n"
                       "##### ERROR:  Aborting after failure to diff " + m + " and " + o + ".\n");
    EXPECT_THAT(run.out, HasSubstr("\n\t'hmtx'\n##### Table 'hmtx' (14 bytes in the modified font)\n"));
    EXPECT_THAT(run.out, ::testing::Not(HasSubstr("#####End tables changed")));
    EXPECT_EQ(run.status, 1);
}

TEST_F(Cli, PercentSignsInFontNamesPrintAsTheyStand) {
    std::string m = dir.Write("m.ttf", BuildSfnt(SampleFont("100%s %d%%")));
    std::string o = dir.Write("o.ttf", BuildSfnt(SampleFont("100%s %d%%")));
    RunResult run = RunVellcmp({o, m});
    EXPECT_THAT(run.out, HasSubstr("full name: 100%s %d%%, version"));
    EXPECT_EQ(run.status, 0);
}

}  // namespace
