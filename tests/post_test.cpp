#include <gtest/gtest.h>

#include "VellCmpErrors.h"
#include "support/Harness.h"
#include "tables/post.h"

namespace {

// SampleFont with these glyphs: 'maxp' counts them and 'post' names them.
FontTables FontWithGlyphs(const std::vector<std::string>& names) {
    FontTables font = SampleFont();
    font["maxp"] = MakeMaxp(static_cast<uint16_t>(names.size())), font["post"] = MakePost(names);
    return font;
}

TEST(Post, HeaderFieldsThenRenamedGlyphsThenAddedGlyphsNamedFromTheModifiedTable) {
    FontTables original = SampleFont(), modified = FontWithGlyphs({".notdef", "space", "A", "B.alt", "C", "uni0416"});
    // The italic angle -12.5 prints as two unsigned halves; isFixedPitch compares all 32 bits.
    SetU32(modified["post"], 4, 0xFFF38000);
    SetU32(modified["post"], 12, 1);
    SetU32(original["post"], 12, 2);
    EXPECT_EQ(CompareDeltas(modified, original, "post"),
              "\tItalic angle (mod ):\t65523.32768\n\tItalic angle (orig):\t0.0\n"
              "\tIs monospaced (mod ):\tTRUE\n\tIs monospaced (orig):\tTRUE\n"
              "\tGlyph:\t3\n\t\tname (mod ):\tB.alt\n\t\tname (orig):\tB\n"
              "\t### Added glyphs:\n\tGlyph:\t4\tC\n\tGlyph:\t5\tuni0416\n");
}

TEST(Post, GlyphCountsComeFromTheFontsAndDeletedGlyphsAreNamedFromTheOriginalTable) {
    // A format 3 table names no glyph.
    FontTables modified = FontWithGlyphs({".notdef", "space"});
    modified["post"].resize(32);
    SetU32(modified["post"], 0, 0x00030000);
    EXPECT_EQ(CompareDeltas(modified, SampleFont(), "post"),
              "\tFormat (mod ):\t3.0\n\tFormat (orig):\t2.0\n"
              "\tGlyph:\t0\n\t\tname (mod ):\t\n\t\tname (orig):\t.notdef\n\tGlyph:\t1\n\t\tname (mod ):\t\n"
              "\t\tname (orig):\tspace\n\t### Deleted glyphs:\n\tGlyph:\t2\tA\n\tGlyph:\t3\tB\n");
}

TEST(Post, AGlyphCountFailureThrowsBeforeAnyLine) {
    CapturedStream out;
    // Tables without fonts: the glyph count cannot be read.
    TPOSTTableComparator comparator(VelmNewHandle(MakePost({".notdef"})),
                                    VelmNewHandle(Bytes(TableWriter().U32(0x00030000).Zeros(28))), out.file());
    EXPECT_THROW(comparator.DumpTableDeltas(), TVellCmpVellException);
    EXPECT_EQ(out.Text(), "");
}

}  // namespace
