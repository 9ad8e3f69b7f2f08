#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/Harness.h"
#include "tables/cvt.h"
#include "tables/gvar.h"

namespace {

TEST(Cvt, EveryWholeValueSignedAndATrailingOddByteIgnored) {
    EXPECT_EQ(DumpContents<TCVTTableDumper>({0, 1, 0xFF, 0xF4, 7}),
              "\tNumber of control values:\t2\n\t\t0:\t1\n\t\t1:\t-12\n");
}

TEST(Gvar, OffsetsAreListedFromByte24AndOnlyTheFirstGlyphsTuplesShown) {
    // Bytes 20-23 (the real first offsets) are skipped; the header at 30: shared points, two tuples. The
    // second tuple's intermediate region (0x4000) and private point numbers (0x2000) flags, together and alone.
    const std::tuple<uint16_t, std::string, std::string> kFlags[] = {
        {0x6003, "TRUE", "TRUE"}, {0x4003, "TRUE", "FALSE"}, {0x2003, "FALSE", "TRUE"}};
    for (const auto& [index, intermediate, privatePoints] : kFlags) {
        Bytes gvar = MakeGvar(0, {0xAAAA, 0xBBBB, 1, 2, 3, 0x8002, 0x0C, 8, 0x8001, 0, 0, 6, index});
        EXPECT_EQ(DumpContents<TGVARTableDumper>(gvar),
                  "###gvar header\nFormat:\t1.0\nAxis count:\t1\nGlobal coordinate count:\t0\nOffset to coordinates:\t"
                  "0x00000030\nGlyph count:\t2\nOffsets are long:\tFALSE\nOffset to data:\t0x00000040\n\n"
                  "###Glyph offsets\n\t0:\t0x0001\n\t1:\t0x0002\n\t2:\t0x0003\n###End glyph offsets\n\n"
                  "###Glyph variation array\nTuples share point numbers:\tTRUE\nTuple count:\t2\n"
                  "Offset to data:\t0x000C\n\n###Tuple variations\n\tTuple variation index:\t0\n"
                  "\tTuple size:\t0x0008\n\tEmbedded tuple coordinate:\tTRUE\n\tIntermediate tuple:\tFALSE\n"
                  "\tPrivate point numbers:\tFALSE\n\tTuple index:\t0x0001\n\tTuple variation index:\t1\n"
                  "\tTuple size:\t0x0006\n\tEmbedded tuple coordinate:\tFALSE\n\tIntermediate tuple:\t" +
                      intermediate + "\n\tPrivate point numbers:\t" + privatePoints +
                      "\n\tTuple index:\t0x0003\n###End tuple variations\n")
            << index;
    }
}

TEST(Gvar, LongOffsetsAZeroTupleSizeAndAHostileGlyphCountStayInsideTheTable) {
    // A tuple of size 0 (of 4095 claimed) is shown once; of 65,536 offsets a bare header claims, one.
    std::string dump = DumpContents<TGVARTableDumper>(MakeGvar(1, {0, 0, 0, 1, 0, 2, 0, 3, 4095, 0, 0, 0x4000}));
    EXPECT_THAT(dump, testing::HasSubstr("\t0:\t0x00000001\n\t1:\t0x00000002\n\t2:\t0x00000003\n###End glyph"));
    EXPECT_EQ(dump.find("Tuple variation index:\t1\n"), std::string::npos);
    EXPECT_THAT(DumpContents<TGVARTableDumper>(MakeGvar(1, {}, 0xFFFF)),
                testing::HasSubstr("s\n\t0:\t0x00000000\n###End"));
    EXPECT_THAT(DumpContents<TGVARTableDumper>({}), testing::HasSubstr("###Tuple variations\n###End tuple variations"));
}

}  // namespace
