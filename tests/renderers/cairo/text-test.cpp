// Texts, pulled through a font engine.

#include "tests/renderers/cairo/font-records.h"
#include "tests/renderers/cairo/page-fixture.h"

using namespace orvlog::records;

namespace
{

class TextTest : public PageTest
{
protected:
    TextTest()
    {
        engine_ = font_.table();
    }
    // A text whose glyphs are 8 pixels wide and high and 10 apart, from (1, 1).
    Shape text(GGO_Matrix transform = {{1, 0, 0, 1, 1, 1}})
    {
        return Shape::text(font_.font(), font_.string(), transform);
    }

    SquareFont font_;
};

using Diary = std::vector<std::string>;

TEST_F(TextTest, GlyphsStandAtThePen)
{
    paint(text(), Operand::gray(0));
    EXPECT_EQ(at(10, 10), 0x000000U);
    EXPECT_EQ(at(17, 17), 0x000000U);
    EXPECT_EQ(at(18, 12), 0xFFFFFFU);
    EXPECT_EQ(at(20, 10), 0x000000U);
    EXPECT_EQ(at(27, 17), 0x000000U);
    EXPECT_EQ(at(30, 12), 0xFFFFFFU);
    EXPECT_DOUBLE_EQ(ink(), 128.0);
    EXPECT_EQ(font_.diary, (Diary{"string", "get PATH", "get PATH"}));
}

TEST_F(TextTest, EngineGetsTheWholeTransform)
{
    const GGO_Matrix retransform{{1, 0, 0, 1, 0, 1}};
    GroupExtra extra;
    extra.retransform = &retransform;
    start_group(extra);
    paint(text({{0.5, 0, 0, 0.5, 1, 1}}), Operand::gray(0));
    finish_group();
    const std::vector<double> seen(font_.seen_matrix.m, font_.seen_matrix.m + 6);
    EXPECT_EQ(seen, (std::vector<double>{5, 0, 0, 5, 10, 20}));
    EXPECT_EQ(at(10, 20), 0x000000U);
    EXPECT_EQ(at(15, 20), 0x000000U);
    EXPECT_DOUBLE_EQ(ink(), 32.0);
}

TEST_F(TextTest, OffsetMovesTheGlyphAndNotThePen)
{
    font_.offset = {0, 10};
    paint(text(), Operand::gray(0));
    EXPECT_EQ(at(12, 12), 0xFFFFFFU);
    EXPECT_EQ(at(12, 22), 0x000000U);
    EXPECT_EQ(at(22, 22), 0x000000U);
}

TEST_F(TextTest, ChangedMatrixHoldsForGlyphsAndNotForAdvances)
{
    font_.glyphs = 3;
    font_.change_matrix = true;
    paint(text({{0.5, 0, 0, 0.5, 1, 1}}), Operand::gray(0));
    // Pens at 10, 15 and 20; a square of 4 pixels, then squares of 8, which overlap.
    EXPECT_EQ(at(13, 13), 0x000000U);
    EXPECT_EQ(at(13, 14), 0xFFFFFFU);
    EXPECT_EQ(at(22, 17), 0x000000U);
    EXPECT_EQ(at(27, 17), 0x000000U);
    EXPECT_EQ(at(28, 17), 0xFFFFFFU);
}

TEST_F(TextTest, OddEvenGlyphsThatOverlapAreUnited)
{
    font_.winding_rule = GPA_WINDING_ODD_EVEN;
    font_.change_matrix = true;
    font_.glyphs = 3;
    paint(text({{0.5, 0, 0, 0.5, 1, 1}}), Operand::gray(0));
    EXPECT_EQ(at(22, 17), 0x000000U);
}

TEST_F(TextTest, BitmapsWhenThereAreNoPaths)
{
    font_.has_paths = false;
    font_.has_bitmaps = true;
    paint(text(), Operand::gray(0));
    EXPECT_EQ(at(10, 10), 0x000000U);
    EXPECT_EQ(at(11, 11), 0x000000U);
    EXPECT_EQ(at(12, 10), 0xFFFFFFU);
    EXPECT_EQ(at(20, 10), 0x000000U);
    EXPECT_DOUBLE_EQ(ink(), 8.0);
    EXPECT_EQ(font_.diary, (Diary{"string", "get PATH", "get BITMAP", "get PATH", "get BITMAP"}));
}

TEST_F(TextTest, BitmapsWhoseZerosPaint)
{
    font_.has_paths = false;
    font_.has_bitmaps = true;
    font_.black_is_one = false;
    paint(text(), Operand::gray(0));
    EXPECT_DOUBLE_EQ(ink(), 8.0);
}

TEST_F(TextTest, BitmapsFirst)
{
    options_.glyph_form = orvlog::cairo_renderer::GlyphForm::bitmap;
    font_.has_bitmaps = true;
    paint(text(), Operand::gray(0));
    EXPECT_DOUBLE_EQ(ink(), 8.0);
    EXPECT_EQ(font_.diary, (Diary{"string", "get BITMAP", "get BITMAP"}));
}

TEST_F(TextTest, FormsInTurn)
{
    options_.glyph_form = orvlog::cairo_renderer::GlyphForm::in_turn;
    font_.glyphs = 5;
    paint(text({{0.5, 0, 0, 0.5, 1, 1}}), Operand::gray(0));
    EXPECT_DOUBLE_EQ(ink(), 5 * 16.0);
    EXPECT_EQ(font_.diary, (Diary{"string", "fixed BITMAP", "get PATH", "fixed TRUETYPE", "get PATH", "fixed RLE",
                                  "get PATH", "fixed FBE", "get PATH", "fixed BITMAP", "get PATH"}));
}

TEST_F(TextTest, TextAsAClip)
{
    Clips clips;
    clips.inside(text());
    Extra extra;
    extra.clip = clips.record();
    paint(Shape::box(0, 0, 2.4, 4), Operand::gray(0), extra);
    EXPECT_DOUBLE_EQ(ink(), 64.0 + 32.0);
}

TEST_F(TextTest, StrokedText)
{
    font_.glyphs = 1;
    paint(Shape::stroked_text(font_.font(), font_.string(), stroke_params(0.2F), kUnit, {{1, 0, 0, 1, 1, 1}}),
          Operand::gray(0));
    EXPECT_DOUBLE_EQ(ink(), 100.0 - 36.0);
}

TEST_F(TextTest, PenOfAStrokedTextHasASpaceOfItsOwn)
{
    font_.glyphs = 1;
    // Four pixels wide, two high: vertical strokes are twice as thick.
    paint(Shape::stroked_text(font_.font(), font_.string(), stroke_params(0.2F), {{2, 0, 0, 1, 0, 0}},
                              {{1, 0, 0, 1, 1, 1}}),
          Operand::gray(0));
    EXPECT_DOUBLE_EQ(ink(), 12 * 10.0 - 4 * 6.0);
}

TEST_F(TextTest, FilledAndStrokedWithItsEndPoint)
{
    ORV_DrawingInterface& table = page();
    const Shape shape = text({{0.5, 0, 0, 0.5, 1, 1}});
    const GPA_PathStrokingParams params = stroke_params(0.2F);
    const GGO_Matrix pen = kUnit;
    GGO_Point end{99, 99};
    EXPECT_EQ(table.object_paint_and_stroke.fn(&table, GCM_OBJ_TEXT, GCM_OBJ_TEXT, 0, nullptr, nullptr, shape.record(),
                                               &params, &pen, 0, nullptr, ORV_PAINTFLAGS_FILL | ORV_PAINTFLAGS_STROKE,
                                               &end, Operand::rgb(1, 0, 0).record(), nullptr, nullptr,
                                               Operand::rgb(0, 0, 1).record(), nullptr, nullptr),
              1U);
    // Two advances of 10 units, a tenth of an inch each in the shape's space.
    EXPECT_NEAR(end.gpf_X, 2.0, 1e-12);
    EXPECT_NEAR(end.gpf_Y, 0.0, 1e-12);
    EXPECT_EQ(at(12, 12), 0xFF0000U);
    EXPECT_EQ(at(10, 12), 0x0000FFU);
    EXPECT_EQ(at(9, 12), 0x0000FFU);
    EXPECT_EQ(font_.diary, (Diary{"string", "get PATH", "get PATH"}));
}

TEST_F(TextTest, InnermostEngineIsInForce)
{
    SquareFont inner;
    inner.glyphs = 1;
    GroupExtra extra;
    extra.engine = inner.table();
    start_group(extra);
    start_group({});
    paint(text(), Operand::gray(0));
    finish_group();
    finish_group();
    EXPECT_TRUE(font_.diary.empty());
    EXPECT_DOUBLE_EQ(ink(), 64.0);
}

TEST_F(TextTest, TextInARepeatedResource)
{
    ORV_ResourceProperties properties{};
    properties.rp_MaxRescale = 20;
    properties.rp_Enclosing_box = {0, 0, 2, 2};
    const uint32_t id = start_resource(properties);
    font_.glyphs = 1;
    paint(text({{1, 0, 0, 1, 0, 0}}), Operand::gray(0));
    end_resource();
    const std::vector<double> seen(font_.seen_matrix.m, font_.seen_matrix.m + 6);
    EXPECT_EQ(seen, (std::vector<double>{20, 0, 0, 20, 0, 0}));
    GroupExtra extra;
    extra.tiling = unsigned{ORV_GROUP_TILE_X} | ORV_GROUP_TILE_Y;
    extra.x_interval = 2;
    extra.y_interval = 2;
    EXPECT_EQ(paint_resource(id, extra), 1U);
    EXPECT_EQ(at(25, 25), 0x000000U);
    EXPECT_EQ(at(29, 25), 0xFFFFFFU);
    EXPECT_DOUBLE_EQ(ink(), 4 * 64.0);
}

// Engines that misbehave.

TEST_F(TextTest, StringThatNeverEndsIsCutShort)
{
    font_.never_ends = true;
    font_.null_glyphs = true;
    paint(text(), Operand::gray(0));
    EXPECT_DOUBLE_EQ(ink(), 0.0);
    EXPECT_EQ(said_, (Diary{"cairo renderer: glyphs that come neither as a path nor as a bitmap are left out"}));
    EXPECT_EQ(lost_, (Diary{"cairo renderer: texts of more than a million glyphs are cut short"}));
}

TEST_F(TextTest, RefusedString)
{
    font_.refuse_string = true;
    paint(text(), Operand::gray(0));
    EXPECT_DOUBLE_EQ(ink(), 0.0);
    EXPECT_EQ(said_, (Diary{"cairo renderer: texts that the font engine refuses are left out"}));
}

TEST_F(TextTest, FailedStepEndsTheString)
{
    font_.fail_index_get = 2;
    paint(text(), Operand::gray(0));
    EXPECT_DOUBLE_EQ(ink(), 64.0);
    EXPECT_EQ(said_, (Diary{"cairo renderer: texts whose glyphs cannot be counted are cut short"}));
}

TEST_F(TextTest, NoEngineNoFontNoString)
{
    engine_ = nullptr;
    paint(text(), Operand::gray(0));
    paint(Shape::text(nullptr, nullptr), Operand::gray(0));
    EXPECT_DOUBLE_EQ(ink(), 0.0);
    EXPECT_EQ(said_, (Diary{"cairo renderer: texts without a font engine, a font or a string are left out"}));
}

}  // namespace
