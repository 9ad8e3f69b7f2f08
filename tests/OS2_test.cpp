#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/Harness.h"
#include "tables/OS2.h"

namespace {

// The comparator's deltas; without an original, its one-table dump as a size mismatch prints it.
std::string OS2(const Bytes& modified, const Bytes& original = {}) {
    CapturedStream out;
    TOS2TableComparator comparator(VelmNewHandle(modified), VelmNewHandle(original), out.file());
    original.empty() ? comparator.DumpOneTable(comparator.GetTableHandle()) : void(comparator.DumpTableDeltas());
    return out.Text();
}

// The fields versions 1 and 2 share, with the one-table dump's labels, as MakeOS2 fills them.
const std::string kCommonDumpFields =
    "\txAvgCharWidth:\t1100\n\tusWeightClass:\t400\n\tusWidthClass:\t5\n\tfsType:\t0\n\tySubscriptXSize:\t100\n"
    "\tySubscriptYSize:\t101\n\tySubscriptXOffset:\t102\n\tySubscriptYOffset:\t103\n\tySuperscriptXSize:\t104\n"
    "\tySuperscriptYSize:\t105\n\tySuperscriptXOffset:\t106\n\tySuperscriptYOffset:\t107\n\tyStrikeoutSize:\t108\n"
    "\tyStrikeoutPosition:\t109\n\tsFamilyClass:\t110\n\tPANOSE bFamilyType:\t2\n\tulUnicodeRange1:\t0x00000001\n"
    "\tulUnicodeRange2:\t0x00000000\n\tulUnicodeRange3:\t0x00000000\n\tulUnicodeRange4:\t0x00000000\n"
    "\tachVendID:\t'VELL'\n\tfsSelection:\t64\n\tusFirstCharIndex:\t0x0020\n\tusLastCharIndex:\t0x0042\n"
    "\tsTypoAscender:\t1500\n\tsTypoDescender:\t-500\n\tsTypoLineGap:\t0\n\tusWinAscent:\t1900\n\tusWinDescent:\t500\n"
    "\tulCodePageRange1:\t0x00000001\n\tulCodePageRange2:\t0x00000000\n";

TEST(OS2, TheSizeAloneChoosesTheComparedLayout) {
    Bytes v0 = MakeOS2(78), v1 = MakeOS2(86), v2 = MakeOS2(96);
    SetU16(v0, 68, 1600);  // sTypoAscender: 78 bytes compare in the older layout, which stops before it
    SetU16(v1, 64, 0x41);     // usFirstCharIndex and ulCodePageRange1 compare in decimal,
    SetU32(v1, 78, 0x20001);  // where the one-table dump prints them in hexadecimal
    SetU16(v2, 86, static_cast<uint16_t>(-3));  // sxHeight
    EXPECT_EQ(OS2(v0, MakeOS2(78)), "");
    EXPECT_EQ(OS2(v1, MakeOS2(86)), "\tusFirstCharIndex (mod ):\t65\n\tusFirstCharIndex (orig):\t32\n"
                                    "\tulCodePageRange1 (mod ):\t131073\n\tulCodePageRange1 (orig):\t1\n");
    EXPECT_EQ(OS2(v2, MakeOS2(96)), "\tsxHeight (mod ):\t-3\n\tsxHeight (orig):\t1000\n");
}

TEST(OS2, SizeMismatchDumpsTheOriginalThenTheModifiedTableEachInItsSizesLayout) {
    EXPECT_EQ(OS2(MakeOS2(96), MakeOS2(86)),
              "\n##### Sizes don't match\n##### Original data\n"
              "\tTable size:\t86\n\t\t== size of Version 1 OS/2 table\n\tVersion:\t1\n" + kCommonDumpFields +
                  "##### Modified data\n\tTable size:\t96\n\t\t== size of Version 2 OS/2 table\n\tVersion:\t2\n" +
                  kCommonDumpFields + "\tsxHeight:\t1000\n\tsCapHeight:\t1400\n\tusDefaultChar:\t0\n" +
                  "\tusBreakChar:\t32\n\tusMaxContext:\t2\n");
    // Version 0 names the Unicode ranges as character ranges, and ends with usWinDescent.
    std::string fields = kCommonDumpFields.substr(0, kCommonDumpFields.find("\tulCodePageRange1"));
    for (size_t at; (at = fields.find("UnicodeRange")) != std::string::npos;) fields.replace(at, 12, "CharRange");
    EXPECT_EQ(OS2(MakeOS2(78)), "\tTable size:\t78\n\t\t== size of Version 0 OS/2 table\n\tVersion:\t0\n" + fields);
}

TEST(OS2, OlderLayoutKeepsItsFillerLabelsAndComparesNothingPastOffset67) {
    Bytes original = MakeOS2(100), modified = MakeOS2(100);
    SetU16(modified, 2, 1);      // filler1
    SetU16(modified, 30, 9);     // filler2[i]
    SetU32(modified, 46, 5);     // filler3[i]
    modified[58] = 'X';          // filler4
    SetU16(modified, 66, 0x7E);  // filler5[1]
    SetU16(modified, 90, 1);
    EXPECT_EQ(OS2(modified, original),
              "\tfiller1 (mod ):\t1\n\tfiller1 (orig):\t1100\n\tfiller2[i] (mod ):\t9\n\tfiller2[i] (orig):\t110\n"
              "\tfiller3[i] (mod ):\t5\n\tfiller3[i] (orig):\t0\n\tfiller4 (mod ):\t'XELL'\n\tfiller4 (orig):\t'VELL'\n"
              "\tfiller5[1] (mod ):\t126\n\tfiller5[1] (orig):\t66\n");
}

TEST(OS2, OlderLayoutDumpRepeatsTheVendorAsEveryRangeFillerAndReadsZerosPastTheEnd) {
    // 'VELL' read as a number is 0x56454C4C; 62 bytes end right after it.
    EXPECT_EQ(OS2(MakeOS2(62)),
              "\tTable size:\t62\n\t\t!= size of Version 0, 1 or 2 OS/2 table\n\tVersion:\t0\n\tfiller:\t1100\n"
              "\tusWeightClass:\t400\n\tusWidthClass:\t5\n\tfiller:\t0\n\tfiller:\t100\n\tfiller:\t101\n"
              "\tfiller:\t102\n\tfiller:\t103\n\tfiller:\t104\n\tfiller:\t105\n\tfiller:\t106\n\tfiller:\t107\n"
              "\tfiller:\t108\n\tfiller:\t109\n\tfiller:\t110\n\tPANOSE bFamilyType:\t2\n\tfiller:\t1447382092\n"
              "\tfiller:\t1447382092\n\tfiller:\t1447382092\n\tfiller:\t1447382092\n\tfiller:\t'VELL'\n"
              "\tfsSelection:\t0\n\tfiller:\t0\n\tfiller:\t0\n");
}

}  // namespace
