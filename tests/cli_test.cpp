// The command line as a user meets it: options, operands, the report header,
// error lines and exit statuses, checked on the real executable.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

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
                   std::string modifiedVersion = "Version 1.000") {
    const std::string rule(64, '='), names = ", full name: " + name + ", version: ";
    return rule + "\nOriginal font: \n  file name: " + original + names + "Version 1.000\nModified font:\n" +
           "  file name: " + modified + names + modifiedVersion + "\n\n" + rule + "\n\n";
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
