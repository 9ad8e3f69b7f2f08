// The font diff driver: the three table sections, the zero-padding allowance
// when lengths differ by up to three bytes, and the registry's choices.
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>

#include "VellCmpFonts.h"
#include "comparators/TTableComparator.h"
#include "support/Harness.h"

namespace {

std::string Diff(const FontTables& modified, const FontTables& original) {
    int32_t code = 0;
    std::string report = DiffReport(modified, original, &code);
    EXPECT_EQ(code, 0);
    return report;
}

// Only the "Tables changed" section's tag lines.
std::string ChangedTags(const FontTables& modified, const FontTables& original) {
    std::string report = Diff(modified, original), tags;
    for (size_t at = report.find("\n\t'"); at != std::string::npos; at = report.find("\n\t'", at + 1))
        tags += report.substr(at + 3, 4) + " ";
    return tags;
}

FontTables WithTable(const Bytes& bytes) {
    FontTables font = SampleFont();
    font["zzzz"] = bytes;
    return font;
}

Bytes Pattern(size_t length) {
    Bytes bytes(length);
    for (size_t i = 0; i < length; ++i) bytes[i] = static_cast<uint8_t>(i + 1);
    return bytes;
}

TEST(Driver, ListsAddedAndDeletedTablesInDirectoryOrder) {
    FontTables original = SampleFont(), modified = SampleFont();
    modified["DSIG"] = Bytes(8, 0);
    modified["cvt "] = Bytes(6, 1);
    original["hsty"] = Bytes(22, 0);
    EXPECT_EQ(Diff(modified, original),
              "##### Tables added (in modified font and not original font)\n"
              "\t'DSIG' 8 bytes\n\t'cvt ' 6 bytes\n"
              "##### End tables added\n\n"
              "##### Tables deleted (in original font but not in modified font)\n"
              "\t'hsty' 22 bytes\n"
              "#####End tables deleted\n\n"
              "##### Tables changed\n"
              "#####End tables changed\n\n");
}

TEST(Driver, TrailingZerosOfTheLongerOriginalCountAsPadding) {
    Bytes original = Pattern(100);
    original[98] = original[99] = 0;
    EXPECT_EQ(ChangedTags(WithTable(Pattern(98)), WithTable(original)), "");
    original[99] = 1;
    EXPECT_EQ(ChangedTags(WithTable(Pattern(98)), WithTable(original)), "zzzz ");
    // With padding allowed, the first bytes are still compared.
    Bytes modified = Pattern(98);
    original[99] = 0;
    modified[3] = 0xEE;
    EXPECT_EQ(ChangedTags(WithTable(modified), WithTable(original)), "zzzz ");
}

TEST(Driver, ALongerModifiedTableNeedsItsWholeLastWordZero) {
    Bytes original = Pattern(98), modified = Pattern(98);
    modified.resize(100, 0);
    // The modified bytes 96 and 97 are not zero: changed, though only padding was added.
    EXPECT_EQ(ChangedTags(WithTable(modified), WithTable(original)), "zzzz ");
    original[96] = original[97] = modified[96] = modified[97] = 0;
    EXPECT_EQ(ChangedTags(WithTable(modified), WithTable(original)), "");
}

TEST(Driver, LengthsThatNoPaddingExplainsAreChanged) {
    EXPECT_EQ(ChangedTags(WithTable(Pattern(7)), WithTable(Pattern(9))), "zzzz ");
    EXPECT_EQ(ChangedTags(WithTable(Pattern(9)), WithTable(Pattern(7))), "zzzz ");
    Bytes zeros(12, 0);
    EXPECT_EQ(ChangedTags(WithTable(Bytes(16, 0)), WithTable(zeros)), "zzzz ");
}

TEST(Driver, AnEmptyModifiedTableIsDeletedAndChangedAtOnce) {
    FontTables original = WithTable(Pattern(4)), modified = WithTable(Bytes{});
    std::string report = Diff(modified, original);
    EXPECT_NE(report.find("\t'zzzz' 4 bytes\n#####End tables deleted"), std::string::npos) << report;
    EXPECT_NE(report.find("\n\t'zzzz'\n##### Table 'zzzz' (0 bytes in the modified font)\n"
                          "                   (4 bytes in the original font)\n"
                          "==> 0x00000000\t" + std::string(24, ' ')),
              std::string::npos)
        << report;
}

TEST(Driver, AChangedLocaGetsOnlyItsTagLine) {
    FontTables original = SampleFont(), modified = SampleFont();
    original["loca"] = Bytes{0, 0, 0, 4};
    modified["loca"] = Bytes{0, 0, 0, 8};
    EXPECT_EQ(Diff(modified, original),
              "##### Tables added (in modified font and not original font)\n##### End tables added\n\n"
              "##### Tables deleted (in original font but not in modified font)\n#####End tables deleted\n\n"
              "##### Tables changed\n\n\t'loca'\n#####End tables changed\n\n");
}

TEST(Registry, BuildsTheGenericComparatorForTagsWithoutAHandler) {
    FontTables original = WithTable(Pattern(8)), modified = WithTable(Pattern(8));
    modified["zzzz"][0] = 9;
    LoadedFont m(modified), o(original);
    auto comparator = MakeTableComparator(m.font(), o.font(), VellMakeTag("zzzz"), nullptr);
    ASSERT_TRUE(comparator);
    EXPECT_EQ(comparator->GetHandlerKind(), 11);
    EXPECT_EQ(comparator->GetTableTag(), VellMakeTag("zzzz"));
    EXPECT_EQ(comparator->GetModifiedFont(), m.font());
    EXPECT_EQ(comparator->GetOriginalFont(), o.font());
    EXPECT_FALSE(MakeTableComparator(m.font(), o.font(), VellMakeTag("loca"), nullptr));
    EXPECT_FALSE(MakeTableComparator(m.font(), o.font(), VellMakeTag("none"), nullptr));
}

TEST(Errors, FrameworkCodesMapToTheToolsCodes) {
    const std::pair<int32_t, int32_t> mapping[] = {{-1, -1}, {-2, -2}, {-3, -4}, {-7, -5}, {5, -6}, {-4, -6}, {-100, -6}};
    for (auto [framework, tool] : mapping) {
        ErrorRecord record;
        record.code = framework;
        MapFrameworkError(&record);
        EXPECT_EQ(record.code, tool) << framework;
    }
    EXPECT_STREQ(VellCmpErrorMessage(-4), "Some file input/output operation failed.");
    EXPECT_STREQ(VellCmpErrorMessage(-8), "The requested named font was not found within one of the font files.");
}

TEST(Errors, AReportedRecordIsMarkedAndNotReportedAgain) {
    ErrorRecord record;
    record.code = -6;
    record.name = "Font";
    testing::internal::CaptureStderr();
    ReportError(&record);
    ReportError(&record);
    record.code = -8;
    ReportError(&record);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "##### ERROR: The Vellkit reported a problem.\n\tFont\n");
    EXPECT_EQ(record.code, -8);
}

}  // namespace

namespace {

// A message table in "<language>.lproj" next to the executable replaces the
// English text for users of that language.
TEST(Errors, MessagesAreLocalizedFromTheStringsTableNextToTheExecutable) {
    std::string directory = std::filesystem::read_symlink("/proc/self/exe").parent_path() / "xx.lproj";
    std::filesystem::create_directories(directory);
    {
        std::ofstream table(directory + "/VellCmpErrors.strings");
        table << "/* xx */\n\"The Vellkit reported a problem.\" = \"Vellkit: ein Problem.\";\n";
    }
    const char* saved = std::getenv("LC_ALL");
    std::string savedValue = saved ? saved : "";
    setenv("LC_ALL", "xx_YY.UTF-8", 1);
    ErrorRecord record;
    testing::internal::CaptureStderr();
    record.code = -6;
    ReportError(&record);
    record.code = -1;
    ReportError(&record);
    std::string err = testing::internal::GetCapturedStderr();
    if (saved) setenv("LC_ALL", savedValue.c_str(), 1); else unsetenv("LC_ALL");
    std::filesystem::remove_all(directory);
    EXPECT_EQ(err, "##### ERROR: Vellkit: ein Problem.\n##### ERROR: An internal error occurred.\n");
}

}  // namespace
