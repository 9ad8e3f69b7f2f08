// velldump: one font file's tables printed in full through the dumpers.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/FontBuilder.h"

using ::testing::HasSubstr;

namespace {

// A font whose 'cvt ' holds the one value v, and what velldump prints of that table.
FontTables WithCvt(const std::string& name, uint8_t v) {
    FontTables font = SampleFont(name);
    font["cvt "] = Bytes{0, v};
    font["vhea"] = MakeHhea(3);  // a table only velldump's own factory dumps by its fields
    return font;
}
std::string CvtDump(uint8_t v) {
    return "##### Table 'cvt ' (2 bytes in the modified font)\n\tNumber of control values:\t1\n\t\t0:\t" +
           std::to_string(v) + "\n\n#####\n End table\n\n\n";
}

TEST(Velldump, PrintsTheNamedTablesInTheirOrderOrEveryTableInDirectoryOrder) {
    TempDir dir;
    std::string path = dir.Write("a.ttf", BuildSfnt(WithCvt("A", 7))), all = RunVelldump({path}).out, tags;
    EXPECT_THAT(RunVelldump({path, "cvt", "maxp"}).out, ::testing::StartsWith(CvtDump(7) + "##### Table 'maxp'"));
    for (size_t at = all.find("##### Table '"); at != std::string::npos; at = all.find("##### Table '", at + 1))
        tags += all.substr(at + 13, 4) + " ";
    EXPECT_EQ(tags, "head hhea maxp OS/2 hmtx post name cvt  vhea ");
    EXPECT_THAT(all, HasSubstr("##### Table 'vhea' (36 bytes in the modified font)\n\tVersion:\t1.0\n"));
    EXPECT_THAT(RunVelldump({"-p", path, "hmtx"}).out, HasSubstr("\tGlyph:\t2 (A)\n"));
}

TEST(Velldump, WithOpenTypeTheTablesTheComparisonDecodesListTheirFieldsAndWithoutItStayHex) {
    TempDir dir;
    FontTables font = SampleFont();
    // One format 6 Microsoft Unicode subtable mapping 'A' and 'B'.
    font["cmap"] = TableWriter().U16(0).U16(1).U16(3).U16(1).U32(12).U16(6).U16(14).U16(0).U16(0x41).U16(2).U16(2).U16(3);
    std::string path = dir.Write("a.ttf", BuildSfnt(font));
    const std::pair<const char*, std::string> cases[] = {
        {"head", "\tVersion:\t1.0\n\tFont revision:\t1.0\n\tChecksum adjustment:\t0x12345678\n"},
        {"OS/2", "\tVersion:\t"},
        {"post", "\tFormat:\t2.0\n\tItalic angle:\t0.0\n\tUnderline position:\t-100\n"},
        {"post", "\tGlyph:\t3\n\t\tName:\tB\n\n#####\n End table"},
        {"cmap", "Encoding:\t1\n\tPlatform:\tMicrosoft\n\tScript:\tUnicode BMP\n\tLanguage:\tLanguage-independent\n"
                 "\tFormat:\t6\n\t\tU+0041 ==> 2 (A)\n\t\tU+0042 ==> 3 (B)\n"},
    };
    for (const auto& [tag, lines] : cases) {
        EXPECT_THAT(RunVelldump({"--opentype", "-p", path, tag}).out, HasSubstr(lines)) << tag;
        EXPECT_THAT(RunVelldump({"-p", path, tag}).out, HasSubstr("\n0x00000000\t")) << tag;  // a hex dump
    }
}

TEST(Velldump, EveryFontOfACollectionOrTheOneNamedWithF) {
    TempDir dir;
    std::string path = dir.Write("a.ttc", BuildCollection({WithCvt("One", 1), WithCvt("Two", 2)}));
    EXPECT_EQ(RunVelldump({path, "cvt"}).out, "##### Font 1: One\n" + CvtDump(1) + "##### Font 2: Two\n" + CvtDump(2));
    EXPECT_EQ(RunVelldump({"-f", "Two", path, "cvt"}).out, CvtDump(2));
    RunResult run = RunVelldump({"-f", "Three", path, "cvt"});
    EXPECT_EQ(run.out, "");
    EXPECT_EQ(run.err, "##### ERROR:  Aborting after failure to dump " + path + ".\n");
    EXPECT_EQ(run.status, 1);
}

TEST(Velldump, MissingTablesWarnAndUnreadableOnesFail) {
    TempDir dir;
    Bytes file = BuildSfnt(SampleFont());
    std::string path = dir.Write("a.ttf", file);
    RunResult run = RunVelldump({path, "glyf"});
    EXPECT_EQ(run.err, "##### WARNING! The font has no 'glyf' table!\n");
    EXPECT_EQ(run.status, 0);
    std::string text = dir.Write("a.txt", Bytes{'n', 'o'});
    EXPECT_THAT(RunVelldump({text}).err, HasSubstr("##### ERROR: The Vellkit reported a problem.\n\t" + text + ": not a"));
    SetU32(file, 12 + 8, 0x00FFFFF0);  // the first directory entry's offset ('head')
    path = dir.Write("b.ttf", file);
    run = RunVelldump({path, "hhea", "head", "maxp"});
    EXPECT_EQ(run.out, RunVelldump({path, "hhea"}).out);
    EXPECT_EQ(run.err, "##### ERROR: The Vellkit reported a problem.\n\t" + path +
                           ": the 'head' table runs past the end of the file (a truncated font?)\n"
                           "##### ERROR:  Aborting after failure to dump " + path + ".\n");
    EXPECT_EQ(run.status, 1);
}

}  // namespace
