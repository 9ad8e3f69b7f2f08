// velldump: one font file's tables printed in full through the dumpers.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/FontBuilder.h"

using ::testing::HasSubstr;

namespace {

const std::string kMaxpDump =
    "##### Table 'maxp' (32 bytes in the modified font)\n"
    "\tVersion:\t1.0\n\tNumber glyphs:\t4\n\tMaximum points:\t40\n\tMaximum contours:\t4\n"
    "\tMaximum componenet points:\t0\n\tMaximum componenet contours:\t0\n\tMaximum zones:\t2\n"
    "\tMaximum twilight points:\t0\n\tMaximum storage:\t16\n\tMaximum function definitions:\t8\n"
    "\tMaximum instruction definitions:\t0\n\tMaximum stack elements:\t64\n"
    "\tMaximum size of instructions:\t100\n\tMaximum component elements:\t0\n"
    "\tMaximum componenet depth:\t0\n"
    "\n#####\n End table\n\n\n";

TEST(Velldump, PrintsTheNamedTablesInTheirDumpers) {
    TempDir dir;
    FontTables font = SampleFont();
    font["cvt "] = Bytes{0, 1, 0xFF, 0xFE};
    std::string path = dir.Write("a.ttf", BuildSfnt(font));
    RunResult run = RunVelldump({path, "maxp", "cvt"});
    EXPECT_EQ(run.out, kMaxpDump +
                           "##### Table 'cvt ' (4 bytes in the modified font)\n"
                           "\tNumber of control values:\t2\n\t\t0:\t1\n\t\t1:\t-2\n\n#####\n End table\n\n\n");
    EXPECT_EQ(run.status, 0);
}

TEST(Velldump, WithoutTagsPrintsEveryTableInDirectoryOrder) {
    TempDir dir;
    std::string path = dir.Write("a.ttf", BuildSfnt(SampleFont()));
    RunResult run = RunVelldump({path});
    size_t head = run.out.find("##### Table 'head'"), name = run.out.find("##### Table 'name'");
    EXPECT_NE(head, std::string::npos);
    EXPECT_NE(name, std::string::npos);
    EXPECT_LT(head, name);
    EXPECT_EQ(run.status, 0);
}

TEST(Velldump, EveryFontOfACollectionOrTheOneNamedWithF) {
    TempDir dir;
    std::string path = dir.Write("a.ttc", BuildCollection({SampleFont("One"), SampleFont("Two")}));
    RunResult run = RunVelldump({path, "maxp"});
    EXPECT_EQ(run.out, "##### Font 1: One\n" + kMaxpDump + "##### Font 2: Two\n" + kMaxpDump);
    run = RunVelldump({"-f", "Two", path, "maxp"});
    EXPECT_EQ(run.out, kMaxpDump);
    run = RunVelldump({"-f", "Three", path, "maxp"});
    EXPECT_EQ(run.out, "");
    EXPECT_EQ(run.err, "##### ERROR:  Aborting after failure to dump " + path + ".\n");
    EXPECT_EQ(run.status, 1);
}

TEST(Velldump, MissingTablesWarnAndBadFilesFail) {
    TempDir dir;
    std::string path = dir.Write("a.ttf", BuildSfnt(SampleFont()));
    RunResult run = RunVelldump({path, "glyf"});
    EXPECT_EQ(run.err, "##### WARNING! The font has no 'glyf' table!\n");
    EXPECT_EQ(run.status, 0);
    std::string text = dir.Write("a.txt", Bytes{'n', 'o'});
    run = RunVelldump({text});
    EXPECT_THAT(run.err, HasSubstr("##### ERROR: The Vellkit reported a problem.\n"));
    EXPECT_THAT(run.err, HasSubstr("##### ERROR:  Aborting after failure to dump " + text + ".\n"));
    EXPECT_EQ(run.status, 1);
}

}  // namespace

namespace {

TEST(Velldump, ATableOutsideTheFileIsReportedNotDumped) {
    TempDir dir;
    Bytes file = BuildSfnt(SampleFont());
    SetU32(file, 12 + 8, 0x00FFFFF0);  // the first directory entry's offset ('head')
    std::string path = dir.Write("a.ttf", file);
    RunResult run = RunVelldump({path, "maxp", "head", "hhea"});
    EXPECT_EQ(run.out, kMaxpDump);
    EXPECT_EQ(run.err, "##### ERROR: The Vellkit reported a problem.\n\t" + path +
                           ": the 'head' table runs past the end of the file (a truncated font?)\n"
                           "##### ERROR:  Aborting after failure to dump " + path + ".\n");
    EXPECT_EQ(run.status, 1);
}

}  // namespace
