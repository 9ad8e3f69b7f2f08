// The report's vocabulary: every print operation's exact format, the hex dump of
// a dumper, and the comparison frame with its side-by-side hex difference.
#include <gtest/gtest.h>

#include <tuple>

#include "comparators/TTableComparator.h"
#include "support/Harness.h"

namespace {

// One print operation of a dumper without a font, exactly what it prints, and
// the call itself, which a failure names.
#define PRINTS(call, text) {[](TTableDumper& d) { d.call; }, text, #call}

const Bytes kPascal = {5, 'H', 'e', 'l', 'l', 'o', '!'};

const std::tuple<void (*)(TTableDumper&), const char*, const char*> kPrintCases[] = {
    PRINTS(PrintLine("100%% of %s and 5%", true), "100% of %s and 5%\n"),
    PRINTS(PrintPascalLine(VellView(kPascal), false), "Hello"),
    PRINTS(PrintPascalLine(VellView(kPascal.data(), 3), true), "He\n"),  // a length past the view
    PRINTS(PrintWithComment("12", -3), "12\t/* -3 */\n"),
    PRINTS(PrintStringField(2, "Name", "Vell"), "\t\tName:\tVell\n"),
    PRINTS(PrintPascalStringField(1, "PS", VellView(kPascal)), "\tPS:\tHello\n"),
    PRINTS(PrintVersionField(0, "Version", 0x00018000), "Version:\t1.32768\n"),
    // The shortest decimal that reads back as the same 16.16 value.
    PRINTS(PrintFixedField(0, "Revision", 0x000111EC), "Revision:\t1.07\n"),
    PRINTS(PrintFixedField(0, "Angle", -0xC8000), "Angle:\t-12.5\n"),
    PRINTS(PrintFixedField(0, "V", 0x00010000), "V:\t1.0\n"),
    PRINTS(PrintFixedField(0, "V", 1), "V:\t0.00002\n"),
    PRINTS(PrintFixedField(0, "V", -0x7FFFFFFF - 1), "V:\t-32768.0\n"),
    PRINTS(PrintTagField(1, "Vendor", VellMakeTag("OS/2")), "\tVendor:\t'OS/2'\n"),
    PRINTS(PrintInt32Field(1, "N", -2, true, false), "\tN:\t0xFFFFFFFE"),  // the line is left open
    PRINTS(PrintUInt32Field(1, "N", 0xE7006EFF, false), "\tN:\t-419401985\n"),  // unsigned, printed signed
    PRINTS(PrintUInt32Field(1, "N", 0xAB, true), "\tN:\t0x000000AB\n"),
    PRINTS(PrintUInt16Field(1, "N", 0xFFFF, false), "\tN:\t65535\n"),
    PRINTS(PrintUInt16Field(1, "N", 0xFFFF, true), "\tN:\t0xFFFF\n"),
    PRINTS(PrintInt16Field(1, "N", -5, false), "\tN:\t-5\n"),
    PRINTS(PrintInt16Field(1, "N", -1, true), "\tN:\t0xFFFFFFFF\n"),  // sign-extended to 32 bits
    PRINTS(PrintInt16Field(1, "N", 10, true), "\tN:\t0x000A\n"),
    PRINTS(PrintUInt8Field(3, "N", 200, false), "\t\t\tN:\t200\n"),
    PRINTS(PrintUInt8Field(1, "N", 10, true), "\tN:\t0x0A\n"),
    PRINTS(PrintInt8Field(1, "N", -16, false), "\tN:\t-16\n"),
    PRINTS(PrintInt8Field(1, "N", -16, true), "\tN:\t0xFFFFFFF0\n"),  // and so is an 8-bit one
    PRINTS(PrintBooleanField(2, "Bold", true), "\t\tBold:\tTRUE\n"),
    PRINTS(PrintFlagField(2, "Fixed", 0), "\t\tFixed:\tFALSE\n"),
    PRINTS(PrintDateField(1, "Created", 0), "\tCreated:\t01/01/1904\n"),
    PRINTS(PrintDateField(1, "D", 0xFFFFFFFF00000000ULL + 3142224000ULL), "\tD:\t07/28/2003\n"),  // no high word
    PRINTS(PrintDateField(1, "D", 86400ULL * (365 * 96 + 24 + 59)), "\tD:\t02/29/2000\n"),
    PRINTS(PrintPointField(1, "P", 0x00018000, -0x20000), "\tP:\t( 1.500000, -2.000000 )\n"),
    PRINTS(PrintIndexedPoint(1, 3, 0x10000, 0), "\t3:\t( 1.000000, 0.000000 )\n"),
    PRINTS(PrintIndexedUInt8(1, 7, 0x1F, true), "\t7:\t0x1F\n"),
    PRINTS(PrintIndexedUInt16(1, 7, 300, false), "\t7:\t300\n"),
    PRINTS(PrintIndexedUInt16(0, 7, 300, true), "7:\t0x012C\n"),
    PRINTS(PrintIndexedPascalString(1, 2, VellView(kPascal)), "\t2:\tHello\n"),
    PRINTS(PrintUnicodeValue(1, "Char", 0x41, true, true), "\tChar:\tU+0041"),  // without -u the line is left open
    PRINTS(PrintUnicodeValue(1, nullptr, 0x41, false, true), "\t0x41"),
    PRINTS(PrintGlyphField(1, "Glyph", 36, false, false), "\tGlyph:\t36\n"),  // without a font, a plain number
    PRINTS(PrintGlyphField(0, nullptr, 3, false, false), "(null):\t3\n"),  // as the C library prints a null string
    PRINTS(PrintGlyphValue(1, "Glyph", 36), "\tGlyph:\t36\n"),
    PRINTS(PrintFontNameField(1, "Name", 4), "\tName:\t4\n"),
};
#undef PRINTS

TEST(PrintOperations, PrintExactly) {
    for (const auto& [print, expected, call] : kPrintCases) {
        CapturedStream out;
        TTableDumper dumper(VelmNewHandle(Bytes{}), out.file(), nullptr);
        print(dumper);
        EXPECT_EQ(out.Text(), expected) << call;
    }
}

// F2Dot14 values (region peaks, 'avar' maps, tuple coordinates) as the shortest
// decimal that reads back as the same value: a 16.16 formatter would print 9830
// as 0.59998, six places as 0.599976.
TEST(PrintOperations, ShortF2Dot14) {
    const std::pair<int16_t, const char*> cases[] = {
        {9830, "0.6"}, {16384, "1.0"}, {-16384, "-1.0"}, {0, "0.0"}, {10240, "0.625"},
        {11796, "0.72"}, {1, "0.00006"}, {-1, "-0.00006"}, {-32768, "-2.0"}, {32767, "1.99994"},
    };
    for (const auto& [value, expected] : cases) {
        std::string text;
        AppendShortF2Dot14(text, value);
        EXPECT_EQ(text, expected) << value;
    }
}

TEST(PrintOperationsWithFont, GlyphAndNameFieldsUseTheFontsNames) {
    LoadedFont font(SampleFont());
    CapturedStream out;
    TTableDumper dumper(VelmNewHandle(Bytes{}), out.file(), font.font());
    dumper.PrintGlyphField(1, "Glyph", 2, false, true);  // without -p the line stays open
    dumper.PrintLine("|", true);
    {
        SwitchesForTest switches(true, true);
        dumper.PrintGlyphField(1, "Glyph", 2, true, true);
        dumper.PrintGlyphField(1, "Glyph", 9, false, true);
        dumper.PrintUnicodeValue(1, "Char", 0x41, true, true);
        dumper.PrintUnicodeValue(1, "Char", 0x09, true, true);
    }
    dumper.PrintFontNameField(1, "Name", 4);
    dumper.PrintFontNameField(1, "Name", 17);
    EXPECT_EQ(out.Text(),
              "\tGlyph:\t2|\n\tGlyph:\t2 (A U+FFFF)\n\tGlyph:\t9 (### BAD GLYPH NAME (error -50) ###)\n"
              "\tChar:\tU+0041 LATIN CAPITAL LETTER A\n\tChar:\tU+0009 <control-0009>\n"
              "\tName:\t4 \"Sample Regular\"\n\tName:\t17 \"\"\n");
}

std::string HexDump(const Bytes& table) {
    CapturedStream out;
    TTableDumper dumper(VelmNewHandle(table), out.file(), nullptr);
    dumper.SetTableTag(VellMakeTag("cvt "));
    dumper.DumpTable();
    return out.Text();
}

TEST(HexDump, FramesRowsOfSixteenAndMarksUnprintableBytes) {
    Bytes table = {'A', 'B', 'C', 'D', 'E', 'F', 'G', 'H', 'I', 'J', 'K', 'L', 'M', 'N', 'O', 'P',
                   0x00, 0x1F, 0x20, 0x7E, 0x7F, 0x80, 0xFF, '%', '%'};
    EXPECT_EQ(HexDump(table),
              "##### Table 'cvt ' (25 bytes in the modified font)\n"
              "0x00000000\t41 42 43 44 45 46 47 48 49 4A 4B 4C 4D 4E 4F 50 \t|\tABCDEFGHIJKLMNOP\n"
              "0x00000010\t00 1F 20 7E 7F 80 FF 25 25 " + std::string(21, ' ') +
                  "\t|\t\xC2\xC2 ~\xC2\xC2\xC2%%" + std::string(7, ' ') + "\n"
              "\n#####\n End table\n\n\n");
    EXPECT_EQ(HexDump(Bytes{}), "##### Table 'cvt ' (0 bytes in the modified font)\n\n#####\n End table\n\n\n");
}

std::string Compare(const Bytes& modified, const Bytes& original, bool frame = true) {
    CapturedStream out;
    TTableComparator comparator(VelmNewHandle(modified), VelmNewHandle(original), out.file());
    comparator.SetTableTag(VellMakeTag("kern"));
    frame ? comparator.DumpTable() : comparator.DumpTableDeltas();
    return out.Text();
}

TEST(HexDifference, EqualTablesSayNoChangesInsideBothFrames) {
    EXPECT_EQ(Compare(Bytes{1, 2, 3}, Bytes{1, 2, 3}),
              "##### Table 'kern' (3 bytes in the modified font)\n"
              "                   (3 bytes in the original font)\n"
              "                   No changes\n#####\n End table comparison\n\n\n"
              "\n#####\n End table\n\n\n");
}

TEST(HexDifference, RowsOfEightAreMarkedWhereTheyDifferAndShortOnesPadded) {
    const std::string text = "abcdefghijklmnop";
    EXPECT_EQ(Compare(Bytes(text.begin(), text.begin() + 10), Bytes(text.begin(), text.end()), false),
              "    0x00000000\t61 62 63 64 65 66 67 68 \t|\tabcdefgh\t||\t61 62 63 64 65 66 67 68 \t|\tabcdefgh\n"
              "==> 0x00000008\t69 6A " + std::string(18, ' ') + "\t|\tij      \t||\t"
              "69 6A 6B 6C 6D 6E 6F 70 \t|\tijklmnop\n");
    // The original's character column shows the modified byte wherever the
    // original byte is printable: 'A' against 'B' shows "A" in both columns; an
    // unprintable original byte shows the mark; a printable original byte opposite
    // an unprintable modified byte shows that modified byte as it is.
    EXPECT_EQ(Compare(Bytes{'A', 0x01, 'C'}, Bytes{'B', 0x02, 'D'}, false),
              "==> 0x00000000\t41 01 43 " + std::string(15, ' ') + "\t|\tA\xC2" "C     \t||\t"
              "42 02 44 " + std::string(15, ' ') + "\t|\tA\xC2" "C     \n");
    EXPECT_EQ(Compare(Bytes{0x01}, Bytes{'Z'}, false),
              "==> 0x00000000\t01 " + std::string(21, ' ') + "\t|\t\xC2       \t||\t"
              "5A " + std::string(21, ' ') + "\t|\t\x01       \n");
}

// Without a report stream nothing is printed, and the listings that would print say so.
TEST(HexDifference, WithoutAReportStreamNothingIsPrinted) {
    TTableComparator comparator(VelmNewHandle(Bytes{1}), VelmNewHandle(Bytes{2}), nullptr);
    comparator.PrintLine("x", true);
    EXPECT_EQ(comparator.DumpTable(), 0);
    EXPECT_EQ(comparator.DumpTableDeltas(), 1);
    EXPECT_EQ(TTableDumper(VelmNewHandle(Bytes{1}), nullptr, nullptr).DumpTableContents(), 1);
}

}  // namespace
