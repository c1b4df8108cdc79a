// SPDX-License-Identifier: GPL-2.0-or-later
//
// Texts of documents: those that clip, those that can't be seen, and glyphs that are content.

#include "tests/clients/pdf/small-document.h"

#include <gtest/gtest.h>

namespace
{

using namespace orvlog::small_document;
using Lines = std::vector<std::string>;

orvlog::cairo_renderer::PagePixels draw_text(const std::string& content, const std::string& resources = "")
{
    std::vector<std::string> objects = square_font(5);
    // A pattern of red, whole cells.
    objects.push_back(stream("/Type /Pattern /PatternType 1 /PaintType 1 /TilingType 1 /BBox [0 0 10 10] /XStep 10 "
                             "/YStep 10 /Resources << >>",
                             "1 0 0 rg 0 0 10 10 re f"));
    Lines messages;
    const auto drawn =
        draw(page(content, "/Font << /F 5 0 R >> /Pattern << /P 8 0 R >>" + resources, objects), &messages);
    EXPECT_EQ(messages, Lines());
    return drawn;
}

TEST(ClippingText, LetsThroughWhatItsGlyphsCover)
{
    const auto drawn = draw_text("BT /F 40 Tf 7 Tr 10 40 Td (A ) Tj ET 1 0 0 rg 0 0 100 100 re f");
    EXPECT_EQ(pixel(drawn, 30, 40), 0xFF0000U);
    EXPECT_EQ(pixel(drawn, 70, 40), 0xFFFFFFU);
    EXPECT_EQ(pixel(drawn, 30, 80), 0xFFFFFFU);
}

TEST(ClippingText, OfBlanksLetsNothingThrough)
{
    const auto drawn = draw_text("q BT /F 40 Tf 7 Tr 10 40 Td (   ) Tj ET 1 0 0 rg 0 0 100 100 re f Q "
                                 "0 1 0 rg 0 0 10 10 re f");
    EXPECT_EQ(pixel(drawn, 50, 50), 0xFFFFFFU);
    EXPECT_EQ(pixel(drawn, 20, 50), 0xFFFFFFU);
    EXPECT_EQ(pixel(drawn, 5, 95), 0x00FF00U) << "behind the restored state";
}

TEST(ClippingText, OfNoGlyphsAtAllClipsNothing)
{
    const auto drawn = draw_text("BT /F 40 Tf 7 Tr 10 40 Td () Tj ET 1 0 0 rg 0 0 100 100 re f");
    EXPECT_EQ(pixel(drawn, 50, 50), 0xFF0000U);
}

TEST(PatternText, OfBlanksPaintsNothing)
{
    const auto drawn = draw_text("/Pattern cs /P scn BT /F 40 Tf 10 40 Td (A ) Tj ET");
    EXPECT_EQ(pixel(drawn, 30, 40), 0xFF0000U);
    EXPECT_EQ(pixel(drawn, 70, 40), 0xFFFFFFU);
    EXPECT_EQ(pixel(draw_text("/Pattern cs /P scn BT /F 40 Tf 10 40 Td (  ) Tj ET"), 30, 40), 0xFFFFFFU);
}

// A font whose glyph "A" is this content.
orvlog::cairo_renderer::PagePixels draw_type3(const std::string& glyph, const std::string& content)
{
    const std::string font = "<< /Type /Font /Subtype /Type3 /FontBBox [0 0 100 100] /FontMatrix [0.01 0 0 0.01 0 0] "
                             "/CharProcs << /A 6 0 R >> /Encoding << /Differences [65 /A] >> /FirstChar 65 "
                             "/LastChar 65 /Widths [100] >>";
    Lines messages;
    const auto drawn = draw(page(content, "/Font << /F 5 0 R >>", {font, stream("", glyph)}), &messages);
    EXPECT_EQ(messages, Lines());
    return drawn;
}

TEST(Type3Text, IsLeftOutIfItIsInvisible)
{
    for (const char* glyph : {"100 0 0 0 100 100 d1 0 0 100 100 re f", "100 0 d0 1 0 0 rg 0 0 100 100 re f"})
    {
        const auto drawn = draw_type3(glyph, "BT /F 20 Tf 3 Tr 10 40 Td (AA) Tj 0 Tr (A) Tj 3 Tr (A) Tj ET");
        EXPECT_EQ(pixel(drawn, 20, 50), 0xFFFFFFU);
        EXPECT_EQ(pixel(drawn, 40, 50), 0xFFFFFFU);
        EXPECT_NE(pixel(drawn, 60, 50), 0xFFFFFFU);
        EXPECT_EQ(pixel(drawn, 80, 50), 0xFFFFFFU);
    }
}

TEST(Type3Text, StrokesUncolouredGlyphsInTheFillColour)
{
    // A bar as a stroke, once alone and once behind a fill; its own colours don't count.
    for (const char* glyph : {"100 0 0 0 100 100 d1 40 w 0 50 m 100 50 l S",
                              "100 0 0 0 100 100 d1 0 0 10 10 re f 0 1 1 RG 40 w 0 50 m 100 50 l S",
                              "100 0 0 0 100 100 d1 40 w 0 50 m 100 50 l S 0 1 1 rg 0 30 100 40 re f"})
    {
        const auto drawn = draw_type3(glyph, "1 0 0 rg 0 0 1 RG BT /F 40 Tf 10 40 Td (A) Tj 0 0 0 rg (A) Tj ET "
                                             "5 w 0 5 m 100 5 l S");
        EXPECT_EQ(pixel(drawn, 30, 40), 0xFF0000U) << glyph;
        EXPECT_EQ(pixel(drawn, 70, 40), 0x000000U) << glyph;
        EXPECT_EQ(pixel(drawn, 50, 94), 0x0000FFU) << glyph;
    }
}

TEST(Type3Text, StrokesColouredGlyphsInTheirStrokeColour)
{
    const auto drawn =
        draw_type3("100 0 d0 0 1 0 RG 40 w 0 50 m 100 50 l S", "1 0 0 rg 0 0 1 RG BT /F 40 Tf 10 40 Td (A) Tj ET");
    EXPECT_EQ(pixel(drawn, 30, 40), 0x00FF00U);
}

}  // namespace
