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
    return rule + "\nOriginal font: \n  file name: " + original + ", full name: " +
           (originalName.empty() ? name : originalName) + version + "Version 1.000\nModified font:\n" +
           "  file name: " + modified + ", full name: " + name + version + modifiedVersion + "\n\n" + rule + "\n\n";
}

// The --summary lists of a pair whose 'name' alone differs.
std::string NameChanged(const std::string& modifiedName, const std::string& originalName) {
    std::string lists = kEmptySections;
    return lists.insert(lists.find("#####End tables changed"),
                        "\t'name' " + std::to_string(SampleFont(modifiedName)["name"].size()) + " bytes (" +
                            std::to_string(SampleFont(originalName)["name"].size()) + " bytes in the original font)\n");
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
    std::string link = dir.Path("link.ttf"), hard = dir.Path("hard.ttf"), other = dir.Path("other.txt");
    ASSERT_EQ(symlink(a.c_str(), link.c_str()) | ::link(b.c_str(), hard.c_str()), 0);
    const std::string report = Header(a, b) + kEmptySections, usage = kVersionLine + kUsage, font = ReadFile(a);
    auto isFont = [](const std::string& output, const std::string& fontFile) {
        return "##### ERROR:  The output file \"" + output + "\" is the font file \"" + fontFile + "\"; it is left untouched\n";
    };
    const std::string six = "##### WARNING! Could not find match for font Six!\n", v = "Version 1.000";
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
        // --pair=index: position for position whatever the names; a font left over on
        // either side is warned of and is a difference. -f still chooses the pair.
        {{"--pair=index", "--summary", o, m},
         Header(o, m, "One", v, "Four") + NameChanged("One", "Four") + Header(o, m, "5%s %d%%") + kEmptySections, six, 0},
        {{"--exit-code", "--pair=index", "--summary", m, o},
         Header(m, o, "Four", v, "One") + NameChanged("Four", "One") + Header(m, o, "5%s %d%%") + kEmptySections, six, 1},
        {{"--pair=index", "-f", "Six", m, m}, kEmptySections, "", 0},
        // With --exit-code a mistake fails the run, though the fonts are compared.
        {{"--exit-code", "-x", a, b}, report, unknown, 2},
        {{"--exit-code", "--tables=head,glyph", a, b}, report, "#### ERROR:  Invalid table tag \"glyph\"\n", 2},
        {{"--exit-code", "--color=no", a, b}, report, "#### ERROR:  Invalid colour \"no\": use never, always or auto\n", 2},
        {{"--exit-code", "--pair=size", a, b}, report, "#### ERROR:  Invalid pairing \"size\": use name or index\n", 2},
        {{"--exit-code", "-o", unwritable, a, b}, report, "#### ERROR:  Cannot open output file \"" + unwritable + "\"\n", 2},
        {{"--tables=GSUB,head,GSUB", a, b}, report, "##### WARNING! --tables names 'GSUB', which neither font has!\n", 0},
        // -o naming a font file by any path or link: refused, and no byte of either changes.
        {{"-o", a, a, b}, "", isFont(a, a), 1},
        {{"--exit-code", "-o", dir.path() + "/./b.ttf", a, b}, "", isFont(dir.path() + "/./b.ttf", b), 2},
        {{"-o", link, a, b}, "", isFont(link, a), 1},
        {{"-o", other, "-o", hard, a, b}, "", isFont(hard, b), 1},
    };
    for (const auto& c : cases) {
        RunResult run = RunVellcmp(c.arguments);
        EXPECT_EQ(std::tie(run.out, run.err, run.status), std::tie(c.out, c.err, c.status))
            << ::testing::PrintToString(c.arguments);
    }
    RunResult dump = RunVelldump({"-o", link, a, "head"});
    EXPECT_EQ(std::tie(dump.out, dump.err, dump.status), std::make_tuple("", isFont(link, a), 1));
    EXPECT_TRUE(ReadFile(a) == font && ReadFile(b) == font);
    // Any other report file is emptied first, as always.
    dir.Write("other.txt", Bytes(4096, 'x'));
    RunVellcmp({"-o", other, a, b});
    EXPECT_EQ(ReadFile(other), report);
}

// 65,535 'name' records, all but the first 5,462 Macintosh names whose string is
// the 64 KB those first records fill with 'A': printed whole, the copies would make
// gigabytes. The account is cut at 64 times its tables' size, and the report goes
// on with 'post', which differs too.
TEST_F(Cli, AHostileNameTableIsCutAtItsBudgetAndTheReportGoesOn) {
    TableWriter name;
    name.U16(0).U16(65535).U16(6).Text(std::string(12 * 5462, 'A'));
    for (uint32_t i = 5462; i < 65535; ++i) name.U16(1).U16(0).U16(0).U16(i % 20).U16(0xFFFF).U16(0);
    FontTables hostile = SampleFont();
    hostile["name"] = name;
    hostile.Remove("post");
    hostile["post"] = MakePost({".notdef", "space", "A", "C"});
    std::string h = dir.Write("hostile.ttf", BuildSfnt(hostile));
    const size_t nameBytes = name.bytes().size();
    for (const auto& [run, budget, next] :
         {std::tuple(RunVelldump({h}), 64 * nameBytes, "\n\n\n##### Table 'post'"),
          std::tuple(RunVellcmp({"--pair=index", a, h}), 64 * (nameBytes + SampleFont()["name"].size()),
                     " comparison\n\n\n\n#####\n End table\n\n\n\n\t'post'\n##### Table 'post'")}) {
        size_t account = run.out.find("##### Table 'name'"), cut = run.out.find("##### The account of 'name'");
        const std::string ending = "##### The account of 'name' was cut at " + std::to_string(cut - account) +
                                   " bytes: an account prints at most 64 times the size of the tables it shows, or "
                                   "16 MB when that is more (a damaged table?)\n\n#####\n End table" + next;
        EXPECT_EQ(run.out.substr(cut, ending.size()), ending);
        EXPECT_GT(cut - account, budget - 65536);  // cut at the budget, not before it
        EXPECT_LT(run.out.size(), budget + 4 * 65536);  // the rest: the header names the font by the 64 KB string
        EXPECT_EQ(std::tie(run.err, run.status), std::make_tuple("", 0));
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
