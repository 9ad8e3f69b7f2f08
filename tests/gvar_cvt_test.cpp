#include <gtest/gtest.h>

#include "support/Harness.h"
#include "tables/cvt.h"
#include "tables/gvar.h"

namespace {

template <typename Dumper>
std::string Dump(const Bytes& table) {
    CapturedStream out;
    Dumper dumper(VelmNewHandle(table), out.file());
    dumper.DumpTableContents();
    return out.Text();
}

TEST(Cvt, EveryWholeValueSignedAndATrailingOddByteIgnored) {
    Bytes cvt = TableWriter().U16(1).U16(0xFFF4).U16(300).U8(7);
    EXPECT_EQ(Dump<TCVTTableDumper>(cvt), "\tNumber of control values:\t3\n\t\t0:\t1\n\t\t1:\t-12\n\t\t2:\t300\n");
    EXPECT_EQ(Dump<TCVTTableDumper>(Bytes{9}), "\tNumber of control values:\t0\n");
}

// A 'gvar' header for two glyphs with the given flags, then the words after it.
Bytes Gvar(uint16_t flags, const std::vector<uint16_t>& words) {
    TableWriter gvar;
    gvar.U32(0x00010000).U16(1).U16(0).U32(0x30).U16(2).U16(flags).U32(0x40);
    for (uint16_t word : words) gvar.U16(word);
    return gvar;
}

TEST(Gvar, OffsetsAreListedFromByte24AndOnlyTheFirstGlyphsTuplesShown) {
    // Bytes 20-23 (the real first offsets) are skipped; 24, 26 and 28 are listed,
    // then the variation header at 30: shared points, two tuples.
    Bytes gvar = Gvar(0, {0xAAAA, 0xBBBB, 1, 2, 3, 0x8002, 0x0C, 8, 0x8001, 0, 0, 6, 0x2003});
    EXPECT_EQ(Dump<TGVARTableDumper>(gvar),
              "###gvar header\nFormat:\t1.0\nAxis count:\t1\nGlobal coordinate count:\t0\n"
              "Offset to coordinates:\t0x00000030\nGlyph count:\t2\nOffsets are long:\tFALSE\n"
              "Offset to data:\t0x00000040\n"
              "\n###Glyph offsets\n\t0:\t0x0001\n\t1:\t0x0002\n\t2:\t0x0003\n###End glyph offsets\n"
              "\n###Glyph variation array\nTuples share point numbers:\tTRUE\nTuple count:\t2\nOffset to data:\t0x000C\n"
              "\n###Tuple variations\n"
              "\tTuple variation index:\t0\n\tTuple size:\t0x0008\n\tEmbedded tuple coordinate:\tTRUE\n"
              "\tIntermediate tuple:\tFALSE\n\tPrivate point numbers:\tFALSE\n\tTuple index:\t0x0001\n"
              "\tTuple variation index:\t1\n\tTuple size:\t0x0006\n\tEmbedded tuple coordinate:\tFALSE\n"
              "\tIntermediate tuple:\tFALSE\n\tPrivate point numbers:\tTRUE\n\tTuple index:\t0x0003\n"
              "###End tuple variations\n");
}

TEST(Gvar, LongOffsetsAndAZeroTupleSizeShownOnce) {
    Bytes gvar = Gvar(1, {0, 0, 0, 1, 0, 2, 0, 3, 4095, 0, 0, 0x4000});
    std::string dump = Dump<TGVARTableDumper>(gvar);
    EXPECT_NE(dump.find("\t0:\t0x00000001\n\t1:\t0x00000002\n\t2:\t0x00000003\n"), std::string::npos);
    EXPECT_NE(dump.find("Tuple count:\t4095\n"), std::string::npos);
    EXPECT_NE(dump.find("\tTuple index:\t0x0000\n###End tuple variations\n"), std::string::npos);
    EXPECT_EQ(dump.find("Tuple variation index:\t1\n"), std::string::npos);
}

TEST(Gvar, AHostileGlyphCountListsNoMoreOffsetsThanTheTableHolds) {
    Bytes gvar = Gvar(1, {});
    SetU16(gvar, 12, 0xFFFF);
    std::string dump = Dump<TGVARTableDumper>(gvar);
    EXPECT_NE(dump.find("\n###Glyph offsets\n\t0:\t0x00000000\n###End glyph offsets\n"), std::string::npos);
    EXPECT_NE(Dump<TGVARTableDumper>(Bytes{}).find("###Tuple variations\n###End tuple variations\n"),
              std::string::npos);
}

}  // namespace
