#include <gtest/gtest.h>

#include "VellCmpFonts.h"
#include "support/Harness.h"
#include "tables/post.h"

namespace {

// A font with these glyphs: 'maxp' counts them and 'post' names them.
FontTables FontWithGlyphs(const std::vector<std::string>& names) {
    FontTables font = SampleFont();
    font["maxp"] = MakeMaxp(static_cast<uint16_t>(names.size()));
    font["post"] = MakePost(names);
    return font;
}

std::string PostHeaderDeltas(void (*change)(Bytes& post)) {
    FontTables original = SampleFont(), modified = SampleFont();
    change(modified["post"]);
    return CompareDeltas(modified, original, "post");
}

TEST(Post, OneRenamedGlyphPrintsOneGlyphLineAndBothNames) {
    EXPECT_EQ(CompareDeltas(FontWithGlyphs({".notdef", "space", "A", "B.alt"}), SampleFont(), "post"),
              "\tGlyph:\t3\n"
              "\t\tname (mod ):\tB.alt\n"
              "\t\tname (orig):\tB\n");
}

TEST(Post, AddedGlyphsAreNamedFromTheModifiedTable) {
    EXPECT_EQ(CompareDeltas(FontWithGlyphs({".notdef", "space", "A", "B", "C", "uni0416", "D"}), SampleFont(),
                            "post"),
              "\t### Added glyphs:\n"
              "\tGlyph:\t4\tC\n"
              "\tGlyph:\t5\tuni0416\n"
              "\tGlyph:\t6\tD\n");
}

TEST(Post, DeletedGlyphsAreNamedFromTheOriginalTable) {
    EXPECT_EQ(CompareDeltas(FontWithGlyphs({".notdef", "space"}), SampleFont(), "post"),
              "\t### Deleted glyphs:\n"
              "\tGlyph:\t2\tA\n"
              "\tGlyph:\t3\tB\n");
}

TEST(Post, IsFixedPitchComparesAllThirtyTwoBits) {
    EXPECT_EQ(PostHeaderDeltas([](Bytes& post) { SetU32(post, 12, 1); }),
              "\tIs monospaced (mod ):\tTRUE\n\tIs monospaced (orig):\tFALSE\n");
    FontTables original = SampleFont(), modified = SampleFont();
    SetU32(original["post"], 12, 1);
    SetU32(modified["post"], 12, 2);
    EXPECT_EQ(CompareDeltas(modified, original, "post"),
              "\tIs monospaced (mod ):\tTRUE\n\tIs monospaced (orig):\tTRUE\n");
}

TEST(Post, ItalicAnglePrintsAsTwoUnsignedHalves) {
    EXPECT_EQ(PostHeaderDeltas([](Bytes& post) { SetU32(post, 4, 0xFFF38000); }),  // -12.5
              "\tItalic angle (mod ):\t65523.32768\n\tItalic angle (orig):\t0.0\n");
}

TEST(Post, Format3TableNamesNoGlyphs) {
    FontTables original = SampleFont(), modified = FontWithGlyphs({".notdef", "space", "A", "B", "C"});
    Bytes& post = modified["post"];
    post.resize(32);
    SetU32(post, 0, 0x00030000);
    EXPECT_EQ(CompareDeltas(modified, original, "post"),
              "\tFormat (mod ):\t3.0\n\tFormat (orig):\t2.0\n"
              "\tGlyph:\t0\n\t\tname (mod ):\t\n\t\tname (orig):\t.notdef\n"
              "\tGlyph:\t1\n\t\tname (mod ):\t\n\t\tname (orig):\tspace\n"
              "\tGlyph:\t2\n\t\tname (mod ):\t\n\t\tname (orig):\tA\n"
              "\tGlyph:\t3\n\t\tname (mod ):\t\n\t\tname (orig):\tB\n"
              "\t### Added glyphs:\n"
              "\tGlyph:\t4\t\n");
}

TEST(Post, AGlyphCountFailureThrowsBeforeAnyLine) {
    CapturedStream out;
    Bytes post = MakePost({".notdef"});
    TPOSTTableComparator comparator(nullptr, VelmNewHandle(post), nullptr, VelmNewHandle(MakePost({"A"})),
                                    out.file());
    EXPECT_THROW(comparator.DumpTableDeltas(), TVellCmpVellException);
    EXPECT_EQ(out.Text(), "");
}

}  // namespace
