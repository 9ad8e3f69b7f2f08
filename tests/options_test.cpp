// The long options, on a real pair: each changes only what it names, and a run
// without them prints what it always has.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <pty.h>
#include <unistd.h>

#include <cstdlib>
#include <regex>

#include "support/FontBuilder.h"

using ::testing::HasSubstr;

namespace {

// The report without one table's account, from its header line to its footer.
std::string WithoutAccount(std::string report, const std::string& tag) {
    size_t start = report.find("##### Table '" + tag + "'");
    const std::string footer = "\n#####\n End table\n\n\n";
    return report.erase(start, report.find(footer, start) + footer.size() - start);
}

// A pair whose 'head' and 'cvt ' differ, 'cvt ' in size too.
class LongOptions : public ::testing::Test {
protected:
    static Bytes Font(uint32_t fontRevision, Bytes cvt) {
        FontTables font = SampleFont();
        SetU32(font["head"], 4, fontRevision);
        font["cvt "] = cvt;
        return BuildSfnt(font);
    }
    TempDir dir;
    std::string o = dir.Write("o.ttf", Font(0x00010000, {0, 1, 0, 2}));
    std::string m = dir.Write("m.ttf", Font(0x00010042, {0, 1, 0, 3, 0, 4}));
    std::string plain = RunVellcmp({o, m}).out;
};

TEST_F(LongOptions, EachChangesOnlyWhatItNames) {
    const std::pair<std::vector<std::string>, std::string> cases[] = {
        {{"--summary", "--"}, plain.substr(0, plain.find("##### Tables changed\n")) +
                                  "##### Tables changed\n\t'head' 54 bytes (54 bytes in the original font)\n"
                                  "\t'cvt ' 6 bytes (4 bytes in the original font)\n#####End tables changed\n\n"},
        // The lists still name every changed table; only the accounts are chosen.
        {{"--tables=cvt"}, WithoutAccount(plain, "head")},
        {{"--tables=head,cvt "}, plain},
        {{"--exclude-tables=cvt"}, WithoutAccount(plain, "cvt ")},
        {{"--color=auto"}, plain},  // standard output is a file here
        {{"--version"}, "vellcmp, version 1.1d1e11, Vell 1.0 (portable)\n" + plain},
    };
    for (auto [arguments, out] : cases) {
        arguments.insert(arguments.end(), {o, m});
        EXPECT_EQ(RunVellcmp(arguments).out, out) << arguments[0];
    }
}

TEST_F(LongOptions, ExitCodeSaysIdenticalDifferentOrFailedAsDiffDoes) {
    std::string twoFonts = dir.Write("two.ttc", BuildCollection({SampleFont(), SampleFont("Other")}));
    std::string bare = dir.Write("bare.ttf", BuildSfnt(SampleFont()));  // the original without its 'cvt '
    const std::pair<std::vector<std::string>, int> cases[] = {
        {{"--exit-code", o, o}, 0}, {{"--exit-code", o, m}, 1}, {{o, m}, 0},
        {{"--exit-code", bare, o}, 1}, {{"--exit-code", o, bare}, 1},  // a table added, a table deleted
        {{"--exit-code", o, twoFonts}, 1},  // a font without a partner is a difference
        {{"--exit-code", o, dir.Path("missing.ttf")}, 2}, {{"--exit-code", o}, 2}, {{"--exit-code", "-x"}, 2},
    };
    for (const auto& [arguments, status] : cases)
        EXPECT_EQ(RunVellcmp(arguments).status, status) << ::testing::PrintToString(arguments);
}

TEST_F(LongOptions, ColorWrapsChangedValuesAndDifferingRowsOnly) {
    std::string colored = RunVellcmp({"--color=always", o, m}).out;
    EXPECT_THAT(colored, HasSubstr("\n\x1b[32m\tFont revision (mod ):\t1.66\x1b[0m\n"
                                   "\x1b[31m\tFont revision (orig):\t1.0\x1b[0m\n"));
    EXPECT_THAT(colored, HasSubstr("\n\x1b[33m==> 0x00000000\t00 01 00 03 "));
    EXPECT_EQ(std::regex_replace(colored, std::regex("\x1b\\[[0-9]*m"), ""), plain);
}

// Auto colours the stream -o names when it is a terminal, unless NO_COLOR is set;
// without --color a terminal gets no colour either.
TEST_F(LongOptions, AutoColorsATerminalUnlessNoColorIsSet) {
    const std::tuple<const char*, const char*, bool> cases[] = {
        {"--color=auto", "", true}, {"--color=auto", "1", false}, {"--tables=head", "", false}};
    for (const auto& [option, noColor, colored] : cases) {
        int master = -1, slave = -1;  // the test holds the terminal open to read what it shows
        ASSERT_EQ(openpty(&master, &slave, nullptr, nullptr, nullptr), 0);
        setenv("NO_COLOR", noColor, 1);
        RunVellcmp({option, "--tables=head", "-o", ttyname(slave), o, m});
        unsetenv("NO_COLOR");
        // The terminal hands the report on asynchronously: read until its last line.
        std::string shown;
        char buffer[4096];
        pollfd ready{master, POLLIN, 0};
        while (shown.find("#####End tables changed") == std::string::npos && poll(&ready, 1, 5000) > 0) {
            ssize_t n = read(master, buffer, sizeof buffer);
            if (n <= 0) break;
            shown.append(buffer, static_cast<size_t>(n));
        }
        EXPECT_EQ(shown.find("\x1b[") != std::string::npos, colored) << option << " NO_COLOR=" << noColor;
        close(slave);
        close(master);
    }
}

TEST_F(LongOptions, HelpAndRefusedOptions) {
    std::string help = RunVellcmp({"--help"}).out, usage = RunVellcmp({"-h"}).out;
    EXPECT_EQ(help.substr(0, usage.size()), usage);
    EXPECT_THAT(help.substr(usage.size()), HasSubstr("Long options:\n\t--summary Print the header and the lists of "
                                                     "added, deleted and changed tables, without the tables' "
                                                     "accounts\n"));
    EXPECT_THAT(RunVelldump({"--help"}).out, HasSubstr("\t--color[=WHEN]"));
    EXPECT_EQ(RunVelldump({"--summary"}).status, 1);  // a vellcmp option velldump does not take
    RunResult run = RunVellcmp({"--tables=head,glyph"});
    EXPECT_EQ(run.err, "#### ERROR:  Invalid table tag \"glyph\"\n");
    EXPECT_EQ(run.status, 1);
}

}  // namespace
