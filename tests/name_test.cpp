#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <sstream>

#include "framework/VellIdentifiers.h"
#include "support/Harness.h"
#include "tables/name.h"

namespace {

using ::testing::EndsWith;
using ::testing::HasSubstr;

NameEntry Win(uint16_t nameID, const std::string& text) { return {3, 1, 0x409, nameID, Utf16BE(text)}; }
NameEntry Mac(uint16_t nameID, const std::string& text) { return {1, 0, 0, nameID, Bytes(text.begin(), text.end())}; }

std::string NameDeltas(const Bytes& modified, const Bytes& original) {
    CapturedStream out;
    TNAMETableComparator(VelmNewHandle(modified), VelmNewHandle(original), out.file()).DumpTableDeltas();
    return out.Text();
}

// The report's headings, index lines, sides and texts, without the field blocks.
std::string Listing(const std::string& report) {
    std::istringstream lines(report);
    std::string listing;
    for (std::string line; std::getline(lines, line);)
        if (!line.starts_with("\t\t") || line.starts_with("\t\t#") || line.starts_with("\t\t\""))
            listing += line + "\n";
    return listing;
}

TEST(Name, AddedKeyOnFourIdentifiersDeletedOnFiveAndChangedOnLengthOrLastByte) {
    Bytes original = MakeNameRecords({Win(1, "Sample"), Win(2, "Regular"), Win(4, "Sample A"), Win(5, "Xersion 1"),
                                      Win(6, "PSName"), Win(8, "")});
    // Name 2 changes length; one name 4 keeps its text and the next changes its last
    // byte; name 5 changes its first byte only; name 6 goes, name 7 comes.
    Bytes modified = MakeNameRecords({Win(1, "Sample"), Win(2, "Bold"), Win(4, "Sample A"), Win(4, "Sample B"),
                                      Win(5, "Version 1"), Win(7, "Mark"), Win(8, "")});
    // Each heading keeps its blank before the line end; there are no closing lines.
    EXPECT_EQ(Listing(NameDeltas(modified, original)),
              "\t### Added names ### \n\tAdded name, name index:\t5\n\t\t# name (mod )\n\t\t\"Mark\"\n"
              "\t### Deleted names ### \n\tDeleted name, name index:\t1\n\t\t# name (orig)\n\t\t\"Regular\"\n"
              "\tDeleted name, name index:\t4\n\t\t# name (orig)\n\t\t\"PSName\"\n\t### Changed names ### \n"
              "\tChanged name, name index:\t1\n\t\t# name (orig)\n\t\t\"Regular\"\n\t\t# name (mod )\n\t\t\"Bold\"\n"
              "\tChanged name, name index:\t2\n\t\t# name (orig)\n\t\t\"Sample A\"\n\t\t# name (mod )\n"
              "\t\t\"Sample B\"\n");
}

TEST(Name, FieldBlockRepeatsTheEncodingTextAsTheLanguageWhileTheDumpShowsTheLanguageAndNoNameID) {
    Bytes original = MakeNameRecords({Mac(6, "PS")});
    EXPECT_EQ(NameDeltas(MakeNameRecords({}), original),
              "\t### Added names ### \n\t### Deleted names ### \n\tDeleted name, name index:\t0\n\t\t# name (orig)\n"
              "\t\tPlatform ID:\t1\n\t\t-aka-:\tMacintosh\n\t\tPlatform-specific ID:\t0\n\t\t-aka-:\tRoman\n"
              "\t\tLanguage ID:\t0\n\t\t-aka-:\tRoman\n\t\tName ID:\t6\n\t\t-aka-:\tPostScript name\n"
              "\t\tLength:\t2\n\t\tOffset:\t0\n\t\t\"PS\"\n\t### Changed names ### \n");
    EXPECT_EQ(DumpContents<TNAMETableDumper>(original),
              "\tName:\t0\n\t\tPlatform ID:\t1\n\t\t\t-aka-:\tMacintosh\n\t\tPlatform-specific ID:\t0\n"
              "\t\t\t-aka-:\tRoman\n\t\tLanguage ID:\t0\n\t\t\t-aka-:\tEnglish\n\t\tLength:\t2\n\t\tOffset:\t0\n"
              "\t\t\"PS\"\n");
}

TEST(Name, MacintoshTextsAreBytesAndOthersWholeCharactersWithin256BytesOfUtf8) {
    // 64 surrogate pairs make 256 bytes of UTF-8; after an "A" the last no longer fits, and is not split.
    Bytes pairs, afterA = {0, 'A'};
    std::string smiles;
    for (int i = 0; i < 64; ++i) pairs.insert(pairs.end(), {0xD8, 0x3D, 0xDE, 0x00}), smiles += "\U0001F600";
    afterA.insert(afterA.end(), pairs.begin(), pairs.end());
    const std::pair<NameEntry, std::string> cases[] = {
        {{1, 0, 0, 1, Bytes{'M', 0xA5, 0x80}}, "M\xA5\x80"},     // not from Mac Roman
        {Mac(1, std::string(300, 'm')), std::string(300, 'm')},  // not cut
        {{0, 3, 0, 1, Bytes{0, 'A', 0, 'B', 0}}, "AB"},          // odd last byte dropped
        {{3, 10, 0x409, 1, pairs}, smiles},                      // 256 bytes fit
        {{3, 10, 0x409, 1, afterA}, "A" + smiles.substr(0, 252)},
        {{3, 1, 0x409, 1, Bytes{0, 'A', 0xD8, 0, 0, 'B'}}, ""},  // unpaired surrogate
    };
    for (const auto& [entry, text] : cases)
        EXPECT_THAT(DumpContents<TNAMETableDumper>(MakeNameRecords({entry})), EndsWith("\t\t\"" + text + "\"\n"));
}

TEST(Name, RecordsAndStringsOutsideTheTableReadAsNothingAndHugeTablesStayFast) {
    Bytes hostile = MakeNameRecords({Mac(1, "Sample"), Mac(2, "Bold")});
    SetU16(hostile, 2, 0xFFFF);            // count
    SetU16(hostile, 6 + 12 + 10, 0xFFF0);  // second string's offset
    hostile.resize(hostile.size() - 6);    // first string cut to "Samp"
    std::string dump = DumpContents<TNAMETableDumper>(hostile);
    EXPECT_EQ(std::count(dump.begin(), dump.end(), '\n'), 2 * 10);
    EXPECT_THAT(dump, HasSubstr("\t\tOffset:\t0\n\t\t\"Samp\"\n"));
    EXPECT_THAT(dump, EndsWith("\t\tOffset:\t65520\n\t\t\"\"\n"));
    // A string past the table's end compares as a last byte of 0.
    Bytes original = MakeNameRecords({Mac(1, "Sample")}), modified = original;
    SetU16(modified, 4, 0xFFFF);  // string storage
    EXPECT_THAT(NameDeltas(modified, original),
                EndsWith("\t\t# name (orig)\n\t\t\"Sample\"\n\t\t# name (mod )\n\t\t\"\"\n"));
    // Thousands of empty names of one key: a walk per name would compare every pair.
    Bytes many = MakeNameRecords(std::vector<NameEntry>(65535, Win(1, "")));
    EXPECT_EQ(NameDeltas(many, many), "\t### Added names ### \n\t### Deleted names ### \n\t### Changed names ### \n");
}

TEST(Identifiers, KnownAndUnknownNumbersOnEachPlatform) {
    ErrorRecord record;
    // The framework's numbers, one above the sfnt IDs; unknown texts name the sfnt ID.
    const std::pair<std::string, std::string> cases[] = {
        {VellPlatformToString(10, &record), "Unknown platform 9"}, {VellScriptToString(1, 4, &record), "Unicode BMP"},
        {VellScriptToString(3, 3, &record), "ISO 8859-1"}, {VellScriptToString(2, 33, &record), "Uninterpreted"},
        {VellScriptToString(2, 34, &record), "Unknown script 33"},
        {VellScriptToString(4, 11, &record), "Unicode full repertoire"},
        {VellLanguageToString(1, 4, 1, &record), "Language-independent"},
        {VellLanguageToString(2, 1, 151, &record), "Azerbaijani (Roman script)"},
        {VellLanguageToString(2, 1, 100, &record), "Unknown language 99"},
        {VellLanguageToString(4, 2, 0x409 + 1, &record), "English (United States)"},
        {VellLanguageToString(4, 2, 0x400 + 1, &record), "Unknown language 1024"},
        {VellLanguageToString(4, 2, 0 + 1, &record), "Language-independent"},  // a Microsoft 'cmap' subtable's
        {VellLanguageToString(4, 2, 0x8001 + 1, &record), "Language tag record 1"},
        {VellNameTypeToString(27, &record), "Reserved name 26"},
        {VellNameTypeToString(257, &record), "Font-specific name"},
    };
    for (const auto& [text, expected] : cases) EXPECT_EQ(text, expected);
    EXPECT_EQ(record.code, 0);
}

}  // namespace
