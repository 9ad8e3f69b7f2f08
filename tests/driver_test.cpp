// The font diff driver: the three table sections, the zero-padding allowance
// when lengths differ by up to three bytes, and the registry's choices; the
// error codes, their messages and their reporting.
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>

#include "VellCmpFonts.h"
#include "comparators/TTableComparator.h"
#include "support/Harness.h"

namespace {

FontTables WithTable(const Bytes& bytes) {
    FontTables font = SampleFont();
    font["zzzz"] = bytes;
    return font;
}

// Bytes 1, 2, 3, ... with the given positions zero.
Bytes Pattern(size_t length, std::initializer_list<size_t> zeros = {}) {
    Bytes bytes(length);
    for (size_t i = 0; i < length; ++i) bytes[i] = static_cast<uint8_t>(i + 1);
    for (size_t i : zeros) bytes[i] = 0;
    return bytes;
}

TEST(Driver, ListsAddedDeletedAndChangedTablesInDirectoryOrder) {
    FontTables original = SampleFont(), modified = SampleFont();
    modified["DSIG"] = Bytes(8, 0);
    modified["cvt "] = Bytes(6, 1);
    original["hsty"] = Bytes(22, 0);
    // A changed 'loca' gets only its tag line: the 'glyf' comparison says what its offsets would.
    original["loca"] = Bytes{0, 0, 0, 4};
    modified["loca"] = Bytes{0, 0, 0, 8};
    // An empty table counts as missing, and as changed.
    original["zzzz"] = Bytes{'a', 'b', 'c', 'd'};
    modified["zzzz"] = Bytes{};
    EXPECT_EQ(DiffReport(modified, original),
              "##### Tables added (in modified font and not original font)\n"
              "\t'DSIG' 8 bytes\n\t'cvt ' 6 bytes\n"
              "##### End tables added\n\n"
              "##### Tables deleted (in original font but not in modified font)\n"
              "\t'hsty' 22 bytes\n\t'zzzz' 4 bytes\n"
              "#####End tables deleted\n\n"
              "##### Tables changed\n\n\t'loca'\n\n\t'zzzz'\n"
              "##### Table 'zzzz' (0 bytes in the modified font)\n                   (4 bytes in the original font)\n"
              "==> 0x00000000\t" + std::string(24, ' ') + "\t|\t" + std::string(8, ' ') + "\t||\t61 62 63 64 " +
                  std::string(12, ' ') + "\t|\tabcd    \n\n#####\n End table comparison\n\n\n\n#####\n End table\n\n\n"
              "#####End tables changed\n\n");
}

// Up to three trailing zero bytes that round a table up to four bytes are padding:
// the original's beyond the modified length, or the modified table's whole last word.
TEST(Driver, ZeroPaddingToAFourByteBoundaryIsNoChange) {
    const struct { Bytes modified, original; bool changed; } cases[] = {
        {Pattern(98), Pattern(100, {98, 99}), false},
        {Pattern(98), Pattern(100, {98}), true},
        {Pattern(98, {3}), Pattern(100, {98, 99}), true},  // the first bytes are still compared
        {Pattern(100, {98, 99}), Pattern(98), true},       // bytes 96 and 97 are not zero
        {Pattern(100, {96, 97, 98, 99}), Pattern(98, {96, 97}), false},
        {Pattern(7), Pattern(9, {7, 8}), true},  // the longer table does not end on a boundary
        {Pattern(9, {5, 6, 7, 8}), Pattern(7, {5, 6}), true},
        {Bytes(16, 0), Bytes(12, 0), true},  // four bytes are more than padding
    };
    for (const auto& [modified, original, changed] : cases) {
        std::string report = DiffReport(WithTable(modified), WithTable(original));
        EXPECT_EQ(report.find("\n\t'zzzz'\n") != std::string::npos, changed) << modified.size() << original.size();
    }
}

TEST(Registry, BuildsTheGenericComparatorForTagsWithoutAHandler) {
    LoadedFont m(WithTable(Pattern(8, {0}))), o(WithTable(Pattern(8)));
    TFontContext modified(m.font()), original(o.font());
    auto comparator = MakeTableComparator(modified, original, VellMakeTag("zzzz"), nullptr);
    ASSERT_TRUE(comparator);
    EXPECT_EQ(comparator->GetHandlerKind(), 11);
    EXPECT_EQ(comparator->GetTableTag(), VellMakeTag("zzzz"));
    EXPECT_EQ(comparator->GetModifiedFont(), m.font());
    EXPECT_EQ(comparator->GetOriginalFont(), o.font());
    EXPECT_FALSE(MakeTableComparator(modified, original, VellMakeTag("none"), nullptr));
}

TEST(Errors, FrameworkCodesMapToTheToolsCodes) {
    for (auto [framework, tool] : {std::pair{-1, -1}, {-2, -2}, {-3, -4}, {-7, -5}, {5, -6}, {-4, -6}, {-100, -6}}) {
        ErrorRecord record;
        record.code = framework;
        MapFrameworkError(&record);
        EXPECT_EQ(record.code, tool) << framework;
    }
    EXPECT_STREQ(VellCmpErrorMessage(-4), "Some file input/output operation failed.");
    EXPECT_STREQ(VellCmpErrorMessage(-8), "The requested named font was not found within one of the font files.");
}

// A record is reported once, in the user's language when a message table in
// "<language>.lproj" next to the executable has its text.
TEST(Errors, ARecordIsReportedOnceInTheUsersLanguage) {
    std::string directory = std::filesystem::read_symlink("/proc/self/exe").parent_path() / "xx.lproj";
    std::filesystem::create_directories(directory);
    std::ofstream(directory + "/VellCmpErrors.strings")
        << "/* xx */\n\"The Vellkit reported a problem.\" = \"Vellkit: ein Problem.\";\n";
    setenv("LC_ALL", "xx_YY.UTF-8", 1);
    ErrorRecord record, internal;
    record.code = -6;
    record.name = "Font";
    internal.code = -1;
    testing::internal::CaptureStderr();
    ReportError(&record);
    ReportError(&record);
    ReportError(&internal);
    internal.code = -8;  // a -f name not found is left to the "Aborting" line
    ReportError(&internal);
    std::string err = testing::internal::GetCapturedStderr();
    unsetenv("LC_ALL");  // no other message table exists
    std::filesystem::remove_all(directory);
    EXPECT_EQ(err, "##### ERROR: Vellkit: ein Problem.\n\tFont\n##### ERROR: An internal error occurred.\n");
}

}  // namespace
