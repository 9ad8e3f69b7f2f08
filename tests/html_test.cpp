// The --html page: outline path data, composites resolved from their
// components, the page's escaping of font text, its limits, and the text report
// left as it is beside it. scripts/check-html.py loads a page in a browser.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "dumpers/TFontContext.h"
#include "html/HtmlDrawings.h"
#include "support/Harness.h"

namespace {

using ::testing::HasSubstr;
using ::testing::Not;

// (0, 0) (0, 100) (100, 100): one contour on the curve, stored as word deltas.
const Bytes kTriangle = {0, 1, 0, 0, 0, 0, 0, 100, 0, 100, 0, 2, 0, 0, 1, 1, 1, 0, 0, 0, 0, 0, 100, 0, 0, 0, 100, 0, 0};

TableWriter Composite() { return TableWriter().U16(0xFFFF).U16(0).U16(0).U16(10).U16(10); }

TDrawnOutline Contours(std::vector<TDrawnPoint> points, std::vector<size_t> ends, bool cubic = false) {
    return {std::move(points), std::move(ends), cubic};
}

TEST(Html, OutlinePathData) {
    const TDrawnPoint on00{0, 0, true}, on0100{0, 100, true}, on100100{100, 100, true}, off50{50, 150, false},
        off100{100, 150, false}, off1000{100, 0, false}, off00{0, 0, false};
    const struct { TDrawnOutline outline; std::string d; } cases[] = {
        {Contours({on00, on0100, on100100}, {3}), "M0 0L0 100L100 100L0 0Z"},
        {Contours({on00, off50, on100100}, {3}), "M0 0Q50 150 100 100L0 0Z"},
        // Two quadratic controls in a row imply the on-curve point halfway between them.
        {Contours({on00, off50, off100, on100100}, {4}), "M0 0Q50 150 75 150Q100 150 100 100L0 0Z"},
        // A contour starting off the curve starts at its last point...
        {Contours({off50, on100100, on00}, {3}), "M0 0Q50 150 100 100L0 0Z"},
        // ...or, with no point on the curve at either end, between them.
        {Contours({off00, off50, off1000}, {3}), "M50 0Q0 0 25 75Q50 150 75 75Q100 0 50 0Z"},
        {Contours({on00, off50, off100, on100100}, {4}, true), "M0 0C50 150 100 150 100 100L0 0Z"},
        // Two contours; an end before its start or past the points draws nothing.
        {Contours({on00, on0100, on100100, on00}, {2, 2, 4, 9}), "M0 0L0 100L0 0ZM100 100L0 0L100 100Z"},
        // Composite offsets leave fractions, kept to a hundredth.
        {Contours({{0.125, 1.0 / 3, true}, {2.5, -7.999, true}}, {2}), "M0.13 0.33L2.5 -8L0.13 0.33Z"},
    };
    for (const auto& c : cases) EXPECT_EQ(OutlinePathData(c.outline), c.d) << c.d;
}

TEST(Html, TupleDeltasMoveUnlistedPointsWithTheirNeighbours) {
    // A square, then a contour with its middle point off the line between its ends.
    const TDrawnOutline outline = Contours({{0, 0}, {0, 100}, {100, 100}, {100, 0}, {0, 0}, {50, 20}, {100, 100}}, {4, 7});
    using Points = std::vector<std::pair<double, double>>;
    const Points kSecondUnmoved = {{0, 0}, {50, 20}, {100, 100}};
    auto with = [](Points square, const Points& second) {
        square.insert(square.end(), second.begin(), second.end());
        return square;
    };
    const struct { const char* what; std::vector<uint16_t> points; bool all; std::vector<int32_t> x, y; Points moved; } cases[] = {
        {"all points, phantom points ignored", {}, true, {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11},
         {0, 0, 0, 0, 1, 0, 0, 0, 0, 0, 0}, {{1, 0}, {2, 100}, {103, 100}, {104, 0}, {5, 1}, {56, 20}, {107, 100}}},
        {"one listed point moves its whole contour, and no other", {0}, false, {10}, {5},
         with({{10, 5}, {10, 105}, {110, 105}, {110, 5}}, kSecondUnmoved)},
        // Point 1 lies at the x of point 0, point 3 at the x of point 2.
        {"beyond the listed neighbours a point moves as the nearer one", {0, 2}, false, {10, 30}, {0, 0},
         with({{10, 0}, {10, 100}, {130, 100}, {130, 0}}, kSecondUnmoved)},
        {"between them, in proportion", {4, 6}, false, {0, 100}, {0, 0},
         with({{0, 0}, {0, 100}, {100, 100}, {100, 0}}, {{0, 0}, {100, 20}, {200, 100}})},
        {"point numbers past the outline are dropped", {7, 1}, false, {99, 0}, {99, 0},
         with({{0, 0}, {0, 100}, {100, 100}, {100, 0}}, kSecondUnmoved)},
    };
    for (const auto& c : cases) {
        TDrawnOutline moved = outline;
        ApplyTupleDeltas(moved, c.points, c.all, c.x, c.y);
        Points points;
        for (const TDrawnPoint& point : moved.points) points.emplace_back(point.x, point.y);
        EXPECT_EQ(points, c.moved) << c.what;
    }
}

// The points a source resolves for glyph 2 of a font of kTriangle and `glyph`.
std::vector<std::pair<double, double>> ResolvedPoints(const Bytes& glyph) {
    LoadedFont font(GlyphFont({{}, kTriangle, glyph}));
    TFontContext context(font.font());
    TGlyphSource source(context);
    std::vector<std::pair<double, double>> points;
    for (const TDrawnPoint& point : source.Outline(2).points) points.emplace_back(point.x, point.y);
    return points;
}

TEST(Html, CompositesDrawResolved) {
    using Points = std::vector<std::pair<double, double>>;
    const struct { const char* what; Bytes glyph; Points points; } cases[] = {
        {"byte offsets (ARGS_ARE_XY_VALUES), negative x", Composite().U16(0x0002).U16(1).U8(0xFD).U8(4),
         {{-3, 4}, {-3, 104}, {97, 104}}},
        {"word offsets and a half scale", Composite().U16(0x000B).U16(1).U16(10).U16(0xFFF6).U16(0x2000),
         {{10, -10}, {10, 40}, {60, 40}}},
        {"an x and y scale", Composite().U16(0x0042).U16(1).U8(0).U8(0).U16(0x8000).U16(0x4000),
         {{0, 0}, {0, 100}, {-200, 100}}},
        {"a two by two swapping the axes", Composite().U16(0x0082).U16(1).U8(0).U8(0).U16(0).U16(0x4000).U16(0x4000).U16(0),
         {{0, 0}, {100, 0}, {100, 100}}},
        // The second copy is placed by matching its point 0 to the first copy's point 2.
        {"two components, the second by anchor points",
         Composite().U16(0x0022).U16(1).U8(0).U8(0).U16(0x0000).U16(1).U8(2).U8(0),
         {{0, 0}, {0, 100}, {100, 100}, {100, 100}, {100, 200}, {200, 200}}},
        {"a component naming itself ends at the nesting limit", Composite().U16(0x0002).U16(2).U8(0).U8(0), {}},
        {"a record cut short", Composite().U16(0x0002), {}},
    };
    for (const auto& c : cases) EXPECT_EQ(ResolvedPoints(c.glyph), c.points) << c.what;
}

class HtmlRun : public ::testing::Test {
protected:
    // A pair whose glyphs 1 and 2 moved, whose glyph 3 lost its outline, and whose
    // modified font names itself with markup.
    HtmlRun() {
        Bytes moved = kTriangle;
        SetU16(moved, 21, 110);  // the third point's x delta
        FontTables original = GlyphFont({{}, kTriangle, kTriangle, kTriangle});
        FontTables modified = GlyphFont({{}, moved, moved, {}});
        modified["name"] = MakeName({{1, "Sample"}, {4, kHostile}, {5, "Version 1.000"}});
        originalPath = dir.Write("original.ttf", BuildSfnt(original));
        modifiedPath = dir.Write("modified.ttf", BuildSfnt(modified));
        plain = RunVellcmp({"--pair=index", originalPath, modifiedPath});
    }
    static constexpr const char* kHostile = "<script>alert('x')</script> & \"Co\"";
    TempDir dir;
    std::string originalPath, modifiedPath, page = dir.Path("page.html");
    RunResult plain;
};

TEST_F(HtmlRun, FontTextIsEscapedAndTheReportGoesOnlyToO) {
    std::string report = dir.Path("report.txt");
    RunResult run = RunVellcmp({"--pair=index", "--html=" + page, "-o", report, originalPath, modifiedPath});
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.out, "");
    EXPECT_EQ(ReadFile(report), plain.out);
    std::string html = ReadFile(page);
    EXPECT_THAT(html, Not(HasSubstr("<script")));
    EXPECT_THAT(html, HasSubstr("&lt;script&gt;alert(&#39;x&#39;)&lt;/script&gt; &amp; &quot;Co&quot;"));
    // Moved glyphs 1 and 2, and glyph 3 drawn alone; the account follows them.
    EXPECT_THAT(html, HasSubstr("data-glyph=\"1\""));
    EXPECT_THAT(html, HasSubstr("data-glyph=\"2\""));
    EXPECT_THAT(html, HasSubstr("data-glyph=\"3\""));
    EXPECT_THAT(html, HasSubstr("No outline in the modified font"));
    EXPECT_THAT(html, HasSubstr("##### Table &#39;glyf&#39;"));
    EXPECT_THAT(html, HasSubstr("</html>\n"));

    // Without -o the page is the only output; standard error is as before.
    run = RunVellcmp({"--pair=index", "--html=" + page, originalPath, modifiedPath});
    EXPECT_EQ(run.out, "");
    EXPECT_EQ(run.err, plain.err);
    EXPECT_EQ(ReadFile(page), html);
}

TEST_F(HtmlRun, DrawingLimitAndOptionMistakes) {
    RunResult run = RunVellcmp({"--pair=index", "--html-max-drawings=1", "--html=" + page, originalPath, modifiedPath});
    std::string html = ReadFile(page);
    EXPECT_THAT(html, HasSubstr("data-glyph=\"1\""));
    EXPECT_THAT(html, Not(HasSubstr("data-glyph=\"2\"")));
    EXPECT_THAT(html, HasSubstr("2 more changed glyphs are not drawn (--html-max-drawings=1)."));

    std::string font = ReadFile(originalPath);
    const struct { std::vector<std::string> arguments; std::string err; } mistakes[] = {
        {{"--html-max-drawings=12x"}, "#### ERROR:  Invalid drawing count \"12x\": use a number from 0 to 1000000\n"},
        {{"--html-max-drawings=1000001"},
         "#### ERROR:  Invalid drawing count \"1000001\": use a number from 0 to 1000000\n"},
        {{"--html="}, "#### ERROR:  Cannot open output file \"\"\n"},
        // The page never overwrites a font it compares.
        {{"--html=" + originalPath, originalPath, modifiedPath},
         "##### ERROR:  The output file \"" + originalPath + "\" is the font file \"" + originalPath +
             "\"; it is left untouched\n"},
    };
    for (const auto& m : mistakes) {
        std::vector<std::string> arguments = m.arguments;
        if (arguments.size() == 1) arguments.insert(arguments.end(), {originalPath, modifiedPath});
        RunResult mistaken = RunVellcmp(arguments);
        EXPECT_EQ(mistaken.err.substr(0, m.err.size()), m.err) << m.arguments[0];
    }
    EXPECT_EQ(ReadFile(originalPath), font);
}

TEST(Html, KerningValuesAsTheLayoutAccountWritesThem) {
    const struct { const char* value; int32_t firstPlacement, advance, secondPlacement; } cases[] = {
        {"X advance -50", 0, -50, 0},
        {"X placement -41, X advance -33", -41, -33, 0},
        // The second glyph's advance moves nothing after the pair; its placement does.
        {"X advance 7; second X placement 3, X advance 9", 0, 7, 3},
        {"Y advance 20", 0, 0, 0},
        {"X advance <device>", 0, 0, 0},
    };
    for (const auto& c : cases) {
        TKerningValue value = ReadKerningValue(c.value);
        EXPECT_EQ(value.firstPlacement, c.firstPlacement) << c.value;
        EXPECT_EQ(value.advance, c.advance) << c.value;
        EXPECT_EQ(value.secondPlacement, c.secondPlacement) << c.value;
    }
}

// Under --opentype each pair the 'GPOS' account finds added, deleted or changed
// is set in both fonts; without it, none is.
TEST(Html, KerningPairsDrawnUnderOpenType) {
    auto gpos = [](const std::vector<std::pair<uint16_t, std::vector<std::pair<uint16_t, int16_t>>>>& sets) {
        FontTables font = GlyphFont({{}, kTriangle, kTriangle, kTriangle});
        font["GPOS"] = LayoutTable({{"kern", {0}}}, {{2, {PairPos1(sets)}}});
        return font;
    };
    TempDir dir;
    std::string original = dir.Write("o.ttf", BuildSfnt(gpos({{2, {{3, -50}}}, {3, {{2, 7}}}})));
    std::string modified = dir.Write("m.ttf", BuildSfnt(gpos({{2, {{1, 9}, {3, -80}}}})));
    std::string page = dir.Path("page.html");
    RunVellcmp({"--opentype", "--html=" + page, original, modified});
    std::string html = ReadFile(page);
    size_t figures = 0;
    for (size_t at = html.find("<figure class=\"kern\">"); at != std::string::npos; at = html.find("<figure", at + 1))
        ++figures;
    EXPECT_EQ(figures, 3u);
    EXPECT_THAT(html, HasSubstr("glyph 2 <span class=\"name\">A</span> glyph 1 <span class=\"name\">space</span> kerned 9"));
    EXPECT_THAT(html, HasSubstr("glyph 2 <span class=\"name\">A</span> glyph 3 <span class=\"name\">B</span> kerned -80"));
    EXPECT_THAT(html, HasSubstr("glyph 2 <span class=\"name\">A</span> glyph 3 <span class=\"name\">B</span> kerned -50"));
    EXPECT_THAT(html, HasSubstr("glyph 3 <span class=\"name\">B</span> glyph 2 <span class=\"name\">A</span> not kerned"));

    RunVellcmp({"--html=" + page, original, modified});
    EXPECT_THAT(ReadFile(page), Not(HasSubstr("<figure class=\"kern\">")));
}

// The 'CFF ' account's changed glyphs (a moved point, a width, an added contour)
// and its added glyph, drawn as cubic outlines under --opentype.
TEST(Html, CFFGlyphsDrawnUnderOpenType) {
    TempDir dir;
    std::string page = dir.Path("page.html");
    RunVellcmp({"--opentype", "--html=" + page, VELLCMP_SOURCE_DIR "/tests/fonts/cff-original.otf",
                VELLCMP_SOURCE_DIR "/tests/fonts/cff-modified.otf"});
    std::string html = ReadFile(page);
    size_t start = html.find("data-tag=\"CFF \""), end = html.find("</section>", start);
    ASSERT_NE(start, std::string::npos);
    std::string cff = html.substr(start, end - start);
    std::vector<std::string> glyphs;
    for (size_t at = cff.find("data-glyph=\""); at != std::string::npos; at = cff.find("data-glyph=\"", at + 1))
        glyphs.push_back(cff.substr(at + 12, cff.find('"', at + 12) - at - 12));
    EXPECT_EQ(glyphs, (std::vector<std::string>{"1", "2", "3", "4"}));
    EXPECT_THAT(cff, HasSubstr("Added glyph"));
    // The outlines are cubic, straight from the charstrings: the triangle's sides are lines.
    EXPECT_THAT(cff, HasSubstr("d=\"M"));
    EXPECT_THAT(cff, Not(HasSubstr("Q")));
}

// The section of the page drawn for one table, and its figures' captions.
std::string TableSection(const std::string& html, const char* tag) {
    size_t start = html.find(std::string("data-tag=\"") + tag + "\"");
    if (start == std::string::npos) return {};
    return html.substr(start, html.find("</section>", start) - start);
}

size_t FigureCount(const std::string& section) {
    size_t figures = 0;
    for (size_t at = section.find("<figure"); at != std::string::npos; at = section.find("<figure", at + 1)) ++figures;
    return figures;
}

// A 'CFF2' glyph whose blend differs only at the named instance "Bold" is drawn
// there, both fonts at its coordinates, and the caption says where.
TEST(Html, CFF2GlyphDrawnAtTheNamedInstanceWhereItDiffers) {
    TempDir dir;
    std::string page = dir.Path("page.html");
    RunVellcmp({"--opentype", "--html=" + page, VELLCMP_SOURCE_DIR "/tests/fonts/cff2-original.otf",
                VELLCMP_SOURCE_DIR "/tests/fonts/cff2-modified.otf"});
    std::string cff2 = TableSection(ReadFile(page), "CFF2");
    ASSERT_FALSE(cff2.empty());
    EXPECT_EQ(FigureCount(cff2), 1u);
    EXPECT_THAT(cff2, HasSubstr("At the named instance 257 &quot;Bold&quot;"));
    // At "Bold" the modified glyph's right side stands at 540, the original's at 520.
    EXPECT_THAT(cff2, HasSubstr("d=\"M100 0L540 0L540 400L100 400L100 0Z\""));
    EXPECT_THAT(cff2, HasSubstr("d=\"M100 0L520 0L520 400L100 400L100 0Z\""));
}

// A 'CFF ' caption gives the width the charstring carries, not the 'hmtx' advance.
TEST(Html, CFFCaptionsShowTheCharstringWidth) {
    std::string bytes = ReadFile(VELLCMP_SOURCE_DIR "/tests/fonts/cff-modified.otf");
    Bytes modified(bytes.begin(), bytes.end());
    auto u16 = [&](size_t at) { return static_cast<uint32_t>(modified[at] << 8 | modified[at + 1]); };
    auto u32 = [&](size_t at) { return u16(at) << 16 | u16(at + 2); };
    // The 'hmtx' advance of glyph 2 "B" (710 in its charstring) becomes 999.
    for (size_t record = 12; record < 12 + 16 * u16(4); record += 16)
        if (std::string(bytes, record, 4) == "hmtx") SetU16(modified, u32(record + 8) + 8, 999);
    TempDir dir;
    std::string page = dir.Path("page.html");
    RunVellcmp({"--opentype", "--html=" + page, VELLCMP_SOURCE_DIR "/tests/fonts/cff-original.otf",
                dir.Write("m.otf", modified)});
    std::string cff = TableSection(ReadFile(page), "CFF ");
    ASSERT_FALSE(cff.empty());
    EXPECT_THAT(cff, HasSubstr("U+0042, advance 710"));
    EXPECT_THAT(cff, Not(HasSubstr("advance 999")));
}

}  // namespace
