#include <gtest/gtest.h>

#include "VellCmpErrors.h"
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

TEST(Post, RenamedGlyphsAndGlyphsOnlyOneFontHasAreListedByName) {
    EXPECT_EQ(CompareDeltas(FontWithGlyphs({".notdef", "space", "A", "B.alt"}), SampleFont(), "post"),
              "\tGlyph:\t3\n\t\tname (mod ):\tB.alt\n\t\tname (orig):\tB\n");
    // Added glyphs take their names from the modified table, deleted ones from the original.
    EXPECT_EQ(CompareDeltas(FontWithGlyphs({".notdef", "space", "A", "B", "C", "uni0416"}), SampleFont(), "post"),
              "\t### Added glyphs:\n\tGlyph:\t4\tC\n\tGlyph:\t5\tuni0416\n");
    EXPECT_EQ(CompareDeltas(FontWithGlyphs({".notdef", "space"}), SampleFont(), "post"),
              "\t### Deleted glyphs:\n\tGlyph:\t2\tA\n\tGlyph:\t3\tB\n");
}

TEST(Post, IsFixedPitchComparesAllThirtyTwoBitsAndTheItalicAnglePrintsAsTwoUnsignedHalves) {
    FontTables original = SampleFont(), modified = SampleFont();
    SetU32(modified["post"], 4, 0xFFF38000);  // -12.5
    SetU32(modified["post"], 12, 1);
    EXPECT_EQ(CompareDeltas(modified, original, "post"),
              "\tItalic angle (mod ):\t65523.32768\n\tItalic angle (orig):\t0.0\n"
              "\tIs monospaced (mod ):\tTRUE\n\tIs monospaced (orig):\tFALSE\n");
    original["post"] = modified["post"];
    SetU32(original["post"], 12, 2);
    EXPECT_EQ(CompareDeltas(modified, original, "post"),
              "\tIs monospaced (mod ):\tTRUE\n\tIs monospaced (orig):\tTRUE\n");
}

TEST(Post, GlyphCountsComeFromTheFontsNotFromAFormat3TableWithoutNames) {
    FontTables modified = FontWithGlyphs({".notdef", "space"});
    modified["post"].resize(32);
    SetU32(modified["post"], 0, 0x00030000);
    EXPECT_EQ(CompareDeltas(modified, FontWithGlyphs({".notdef"}), "post"),
              "\tFormat (mod ):\t3.0\n\tFormat (orig):\t2.0\n\tGlyph:\t0\n\t\tname (mod ):\t\n\t\tname (orig):\t.notdef\n"
              "\t### Added glyphs:\n\tGlyph:\t1\t\n");
}

TEST(Post, AGlyphCountFailureThrowsBeforeAnyLine) {
    CapturedStream out;
    TPOSTTableComparator comparator(nullptr, VelmNewHandle(MakePost({".notdef"})), nullptr,
                                    VelmNewHandle(MakePost({"A"})), out.file());
    EXPECT_THROW(comparator.DumpTableDeltas(), TVellCmpVellException);
    EXPECT_EQ(out.Text(), "");
}

}  // namespace
