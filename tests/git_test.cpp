// vellcmp inside git, as the README and the manual page describe it: a font
// committed twice, compared by `git difftool -x vellcmp` and shown by `git diff`
// and `git log -p` through a diff driver whose textconv is velldump.
#include <gtest/gtest.h>

#include <cstdio>

#include "support/FontBuilder.h"

namespace {

class GitUse : public ::testing::Test {
protected:
    void SetUp() override {
        if (std::system("git --version >/dev/null 2>&1") != 0) GTEST_SKIP() << "git is not installed";
        Git("init -q");
        FontTables font = SampleFont();
        repo.Write("Family.ttf", BuildSfnt(font));
        Git("add Family.ttf");
        Git("commit -q -m first");
        SetU16(font["hhea"], 4, 2000);  // ascender, 1900 before
        repo.Write("Family.ttf", BuildSfnt(font));
        Git("commit -q -a -m second");
    }

    // A git command run in the repository, without the user's or the system's
    // configuration; its standard output and error.
    std::string Git(const std::string& arguments) {
        std::string command = "cd '" + repo.path() +
                              "' && GIT_CONFIG_NOSYSTEM=1 GIT_CONFIG_GLOBAL=/dev/null HOME='" + repo.path() +
                              "' git -c user.name=Test -c user.email=test@example.org " + arguments + " 2>&1";
        std::string output;
        FILE* pipe = popen(command.c_str(), "r");
        if (pipe == nullptr) return output;
        char buffer[4096];
        for (size_t read; (read = std::fread(buffer, 1, sizeof buffer, pipe)) > 0;) output.append(buffer, read);
        pclose(pipe);
        return output;
    }

    TempDir repo;
};

TEST_F(GitUse, DifftoolGivesTheOlderCommitAsTheOriginalFont) {
    std::string report = Git("difftool -y -x '" VELLCMP_BINARY "' HEAD~1 HEAD -- Family.ttf");
    EXPECT_NE(report.find("\t'hhea'\n"), std::string::npos) << report;
    EXPECT_NE(report.find("\tAscent (mod ):\t2000\n\tAscent (orig):\t1900\n"), std::string::npos) << report;

    std::string records = Git("difftool -y -x '" VELLCMP_BINARY " --json' HEAD~1 HEAD -- Family.ttf");
    EXPECT_NE(records.find(R"({"type":"field","table":"hhea","path":["ascender"],"original":1900,"modified":2000})"),
              std::string::npos)
        << records;
}

TEST_F(GitUse, TextconvDriverShowsTheDumpsDifferenceInDiffAndLog) {
    repo.Write(".gitattributes", Bytes{'*', '.', 't', 't', 'f', ' ', 'd', 'i', 'f', 'f', '=', 'f', 'o', 'n', 't', '\n'});
    Git("config diff.font.textconv '" VELLDUMP_BINARY "'");
    for (const char* command : {"diff HEAD~1 HEAD -- Family.ttf", "log -p -1 -- Family.ttf"}) {
        std::string diff = Git(command);
        EXPECT_EQ(diff.find("Binary files"), std::string::npos) << command << "\n" << diff;
        EXPECT_NE(diff.find("\n-\tAscent:\t1900\n+\tAscent:\t2000\n"), std::string::npos) << command << "\n" << diff;
    }
}

}  // namespace
