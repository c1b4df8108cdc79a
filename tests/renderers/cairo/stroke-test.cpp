// Strokes: widths, caps, joins, dashes.

#include "tests/renderers/cairo/page-fixture.h"

#include <cmath>
#include <numbers>

using namespace orvlog::records;

namespace
{

using StrokeTest = PageTest;

Path line(Pair from, Pair to)
{
    return Path().straight(from, {{to.x - from.x, to.y - from.y}}, GPA_SUBPATH_END_OPEN);
}

// Up, then down again: a sharp corner at (2, 1).
Path corner()
{
    return Path().straight({1.5, 3}, {{0.5, -2}, {0.5, 2}}, GPA_SUBPATH_END_OPEN);
}

TEST_F(StrokeTest, WidthIsInTheShapesSpace)
{
    // Twice as wide as high: a horizontal line is 2 pixels thick, a vertical one 4.
    const GGO_Matrix stretched{{2, 0, 0, 1, 0, 0}};
    paint(Shape::stroke(line({0, 1}, {1, 1}), stroke_params(0.2F), stretched), Operand::gray(0));
    paint(Shape::stroke(line({1.5, 2}, {1.5, 4}), stroke_params(0.2F), stretched), Operand::gray(0));
    EXPECT_EQ(at(10, 8), 0xFFFFFFU);
    EXPECT_EQ(at(10, 9), 0x000000U);
    EXPECT_EQ(at(10, 10), 0x000000U);
    EXPECT_EQ(at(10, 11), 0xFFFFFFU);
    EXPECT_EQ(at(27, 30), 0xFFFFFFU);
    EXPECT_EQ(at(28, 30), 0x000000U);
    EXPECT_EQ(at(31, 30), 0x000000U);
    EXPECT_EQ(at(32, 30), 0xFFFFFFU);
}

TEST_F(StrokeTest, ButtCapEndsAtTheEnd)
{
    paint(Shape::stroke(line({1, 2}, {3, 2}), stroke_params(1, GPA_CAP_BUTT)), Operand::gray(0));
    EXPECT_DOUBLE_EQ(ink(), 200.0);
}

TEST_F(StrokeTest, ProjectingCapGoesHalfAWidthFurther)
{
    paint(Shape::stroke(line({1, 2}, {3, 2}), stroke_params(1, GPA_CAP_PROJECT)), Operand::gray(0));
    EXPECT_DOUBLE_EQ(ink(), 300.0);
}

TEST_F(StrokeTest, RoundCapAddsHalfDiscs)
{
    paint(Shape::stroke(line({1, 2}, {3, 2}), stroke_params(1, GPA_CAP_ROUND)), Operand::gray(0));
    EXPECT_NEAR(ink(), 200.0 + std::numbers::pi * 25, 2.0);
}

TEST_F(StrokeTest, TriangleCapEndsInAPoint)
{
    paint(Shape::stroke(line({1, 2}, {3, 2}), stroke_params(1, GPA_CAP_TRIANGLE)), Operand::gray(0));
    EXPECT_NEAR(ink(), 200.0 + 50.0, 1.0);
    EXPECT_EQ(at(33, 20), 0x000000U);
    EXPECT_EQ(at(33, 16), 0xFFFFFFU);
    EXPECT_EQ(at(30, 20), 0x000000U);
}

TEST_F(StrokeTest, CapsOfTheTwoEndsDiffer)
{
    GPA_PathStrokingParams params = stroke_params(1);
    params.psp_Flags = GPA_CAP_PROJECT | GPA_CAP_BUTT << 4 | GPA_JOIN_MITER << 8;
    paint(Shape::stroke(line({1, 2}, {3, 2}), params), Operand::gray(0));
    EXPECT_NEAR(ink(), 250.0, 0.01);
    EXPECT_EQ(at(6, 20), 0x000000U);
    EXPECT_EQ(at(30, 20), 0xFFFFFFU);
}

TEST_F(StrokeTest, RoundAndTriangleCapOfOneLine)
{
    GPA_PathStrokingParams params = stroke_params(1);
    params.psp_Flags = GPA_CAP_ROUND | GPA_CAP_TRIANGLE << 4 | GPA_JOIN_MITER << 8;
    paint(Shape::stroke(line({1, 2}, {3, 2}), params), Operand::gray(0));
    EXPECT_NEAR(ink(), 200.0 + std::numbers::pi * 12.5 + 25.0, 1.5);
}

TEST_F(StrokeTest, CapsThatDifferShowNoSeamWhenThin)
{
    GPA_PathStrokingParams params = stroke_params(1);
    params.psp_Flags = GPA_CAP_PROJECT | GPA_CAP_TRIANGLE << 4;
    paint(Shape::stroke(line({1.03, 2}, {2.97, 2}), params), Operand::rgba(0, 0, 0, 0.5F));
    EXPECT_TRUE(near(9, 20, 0x808080));
    EXPECT_TRUE(near(10, 20, 0x808080));
    EXPECT_TRUE(near(29, 20, 0x808080));
    EXPECT_TRUE(near(30, 20, 0x808080));
}

TEST_F(StrokeTest, MiterReachesItsTip)
{
    paint(Shape::stroke(corner(), stroke_params(0.4F, GPA_CAP_BUTT, GPA_JOIN_MITER)), Operand::gray(0));
    // The half angle has a sine of 0.2425: the tip is 0.2 / 0.2425 = 0.82 above the corner.
    EXPECT_EQ(at(20, 6), 0x000000U);
    EXPECT_NE(at(20, 3), 0xFFFFFFU);
    EXPECT_EQ(at(20, 0), 0xFFFFFFU);
}

TEST_F(StrokeTest, MiterBeyondTheLimitBecomesABevel)
{
    paint(Shape::stroke(corner(), stroke_params(0.4F, GPA_CAP_BUTT, GPA_JOIN_MITER, 2)), Operand::gray(0));
    EXPECT_EQ(at(20, 8), 0xFFFFFFU);
    EXPECT_EQ(at(20, 10), 0x000000U);
}

TEST_F(StrokeTest, ClippedMiterIsCutAtTheLimit)
{
    // Cut at 2 half widths, 0.4 inch, above the corner.
    paint(Shape::stroke(corner(), stroke_params(0.4F, GPA_CAP_BUTT, GPA_JOIN_MITER_CLIPPED, 2)), Operand::gray(0));
    EXPECT_EQ(at(20, 6), 0x000000U);
    EXPECT_EQ(at(20, 5), 0xFFFFFFU);
}

TEST_F(StrokeTest, ClippedMiterWithinTheLimitReachesItsTip)
{
    paint(Shape::stroke(corner(), stroke_params(0.4F, GPA_CAP_BUTT, GPA_JOIN_MITER_CLIPPED, 10)), Operand::gray(0));
    EXPECT_EQ(at(20, 6), 0x000000U);
    EXPECT_NE(at(20, 3), 0xFFFFFFU);
    EXPECT_EQ(at(20, 0), 0xFFFFFFU);
}

TEST_F(StrokeTest, TriangleJoinEndsHalfAWidthOffTheCorner)
{
    paint(Shape::stroke(corner(), stroke_params(0.8F, GPA_CAP_BUTT, GPA_JOIN_TRIANGLE)), Operand::gray(0));
    EXPECT_EQ(at(20, 8), 0x000000U);
    EXPECT_EQ(at(20, 5), 0xFFFFFFU);
}

TEST_F(StrokeTest, BevelAndNoJoin)
{
    const Path square = Path().straight({1, 1}, {{2, 0}, {0, 2}}, GPA_SUBPATH_END_OPEN);
    paint(Shape::stroke(square, stroke_params(1, GPA_CAP_BUTT, GPA_JOIN_NONE)), Operand::gray(0));
    // Two legs of 20 by 10, which overlap in a quarter of their end; no corner.
    EXPECT_EQ(at(32, 7), 0xFFFFFFU);
    EXPECT_EQ(at(28, 8), 0x000000U);
    EXPECT_NEAR(ink(), 375.0, 0.1);
}

TEST_F(StrokeTest, BevelCutsTheCorner)
{
    const Path square = Path().straight({1, 1}, {{2, 0}, {0, 2}}, GPA_SUBPATH_END_OPEN);
    paint(Shape::stroke(square, stroke_params(1, GPA_CAP_BUTT, GPA_JOIN_BEVEL)), Operand::gray(0));
    EXPECT_NEAR(ink(), 375.0 + 12.5, 0.5);
}

TEST_F(StrokeTest, RoundJoinAddsAQuarterDisc)
{
    const Path square = Path().straight({1, 1}, {{2, 0}, {0, 2}}, GPA_SUBPATH_END_OPEN);
    paint(Shape::stroke(square, stroke_params(1, GPA_CAP_BUTT, GPA_JOIN_ROUND)), Operand::gray(0));
    EXPECT_NEAR(ink(), 375.0 + std::numbers::pi * 25 / 4, 0.7);
}

TEST_F(StrokeTest, ClosedPathHasAJoinAtItsStart)
{
    paint(Shape::stroke(Path().box(1, 1, 3, 3), stroke_params(0.4F)), Operand::gray(0));
    EXPECT_EQ(at(8, 8), 0x000000U);
    EXPECT_DOUBLE_EQ(ink(), 24.0 * 24.0 - 16.0 * 16.0);
}

TEST_F(StrokeTest, SuppressedEdgesAreLeftOut)
{
    Path path;
    path.straight({1, 1}, {{2, 0}}, GPA_SUBPATH_CONTINUE)
        .straight({3, 1}, {{0, 2}}, unsigned{GPA_SUPPRESS_STROKING_FLAG} | GPA_SUBPATH_CONTINUE)
        .straight({3, 3}, {{-2, 0}}, GPA_SUBPATH_END_CLOSED);
    paint(Shape::stroke(path, stroke_params(0.2F)), Operand::gray(0));
    EXPECT_EQ(at(20, 10), 0x000000U);
    EXPECT_EQ(at(30, 20), 0xFFFFFFU);
    EXPECT_EQ(at(20, 30), 0x000000U);
    EXPECT_EQ(at(10, 20), 0x000000U);
}

TEST_F(StrokeTest, DashesAlternate)
{
    paint(Shape::stroke(line({0, 1}, {4, 1}), stroke_params(0.2F), kUnit, {1, 0.5F}), Operand::gray(0));
    EXPECT_EQ(at(9, 10), 0x000000U);
    EXPECT_EQ(at(10, 10), 0xFFFFFFU);
    EXPECT_EQ(at(14, 10), 0xFFFFFFU);
    EXPECT_EQ(at(15, 10), 0x000000U);
    EXPECT_DOUBLE_EQ(ink(), 2.0 * 30.0);
}

TEST_F(StrokeTest, DashStartGoesIntoThePattern)
{
    GPA_PathStrokingParams params = stroke_params(0.2F);
    params.psp_DashStart = 0.5F;
    paint(Shape::stroke(line({0, 1}, {4, 1}), params, kUnit, {1, 1}), Operand::gray(0));
    EXPECT_EQ(at(4, 10), 0x000000U);
    EXPECT_EQ(at(5, 10), 0xFFFFFFU);
    EXPECT_EQ(at(15, 10), 0x000000U);
}

TEST_F(StrokeTest, OddNumberOfDashes)
{
    paint(Shape::stroke(line({0, 1}, {4, 1}), stroke_params(0.2F), kUnit, {1}), Operand::gray(0));
    EXPECT_EQ(at(5, 10), 0x000000U);
    EXPECT_EQ(at(15, 10), 0xFFFFFFU);
    EXPECT_EQ(at(25, 10), 0x000000U);
}

TEST_F(StrokeTest, DashesThatSumUpToNothingMeanNone)
{
    paint(Shape::stroke(line({0, 1}, {4, 1}), stroke_params(0.2F), kUnit, {0, 0}), Operand::gray(0));
    EXPECT_DOUBLE_EQ(ink(), 80.0);
}

TEST_F(StrokeTest, DashCapsDifferFromTheCapsOfTheLine)
{
    GPA_PathStrokingParams params = stroke_params(0.4F, GPA_CAP_BUTT);
    params.psp_DashCaps = GPA_CAP_PROJECT;
    paint(Shape::stroke(line({1, 1}, {3, 1}), params, kUnit, {0.5F, 1}), Operand::gray(0));
    // Dashes from 1 to 1.5 and from 2.5 to 3; inner ends go 0.2 further, the line's own do not.
    EXPECT_EQ(at(9, 10), 0xFFFFFFU);
    EXPECT_EQ(at(16, 10), 0x000000U);
    EXPECT_EQ(at(17, 10), 0xFFFFFFU);
    EXPECT_EQ(at(23, 10), 0x000000U);
    EXPECT_EQ(at(22, 10), 0xFFFFFFU);
    EXPECT_EQ(at(30, 10), 0xFFFFFFU);
    EXPECT_NEAR(ink(), 2 * 4 * 7.0, 0.1);
}

TEST_F(StrokeTest, DashesOfAClosedPathMeetAtItsStart)
{
    GPA_PathStrokingParams params = stroke_params(0.4F, GPA_CAP_BUTT, GPA_JOIN_MITER_CLIPPED);
    params.psp_DashStart = 1;
    paint(Shape::stroke(Path().box(1, 1, 3, 3), params, kUnit, {2, 2}), Operand::gray(0));
    // On for one inch after the start, off for two, ...: the last inch is on again, and joined.
    EXPECT_EQ(at(8, 8), 0x000000U);
    EXPECT_EQ(at(10, 15), 0x000000U);
    EXPECT_EQ(at(15, 10), 0x000000U);
    EXPECT_EQ(at(25, 10), 0xFFFFFFU);
    EXPECT_EQ(at(30, 25), 0x000000U);
}

TEST_F(StrokeTest, WidthZeroIsOnePixel)
{
    paint(Shape::stroke(line({1, 1.05}, {3, 1.05}), stroke_params(0)), Operand::gray(0));
    EXPECT_EQ(at(15, 10), 0x000000U);
    EXPECT_DOUBLE_EQ(ink(), 20.0);
}

TEST_F(StrokeTest, ThinLinesAreOnePixel)
{
    paint(Shape::stroke(line({1, 1.08}, {3, 1.08}), stroke_params(0.025F)), Operand::gray(0));
    EXPECT_TRUE(near(15, 10, 0x4C4C4C, 2));
    EXPECT_TRUE(near(15, 11, 0xB2B2B2, 2));
    EXPECT_NEAR(ink(), 20.0, 0.2);
}

TEST_F(StrokeTest, AdjustedThinLinesFillOneRowOfPixels)
{
    GPA_PathStrokingParams params = stroke_params(0.025F);
    params.psp_Flags = static_cast<uint16_t>(params.psp_Flags | GPA_ADJUST_PS << 12);
    paint(Shape::stroke(line({1, 1.08}, {3, 1.08}), params), Operand::gray(0));
    EXPECT_EQ(at(15, 10), 0x000000U);
    EXPECT_EQ(at(15, 11), 0xFFFFFFU);
    EXPECT_NEAR(ink(), 20.0, 0.1);
}

TEST_F(StrokeTest, DotWithRoundCaps)
{
    GPA_PathStrokingParams params = stroke_params(1, GPA_CAP_ROUND);
    paint(Shape::stroke(line({2, 2}, {2, 2}), params), Operand::gray(0));
    EXPECT_NEAR(ink(), std::numbers::pi * 25, 1.5);
}

TEST_F(StrokeTest, CurvesAreStroked)
{
    const Path arc = Path().ellipse({1, 2}, {{1, 1, 0, {2, 0}}}, GPA_SUBPATH_END_OPEN);
    GPA_PathStrokingParams params = stroke_params(0.4F);
    params.psp_Flags = GPA_CAP_BUTT | GPA_CAP_TRIANGLE << 4;
    paint(Shape::stroke(arc, params), Operand::gray(0));
    EXPECT_EQ(at(20, 10), 0x000000U);
    EXPECT_EQ(at(20, 15), 0xFFFFFFU);
    EXPECT_NEAR(ink(), std::numbers::pi * 10 * 4 + 4.0, 1.5);
}

TEST_F(StrokeTest, UnknownCapsAndJoinsAreSaidOnce)
{
    GPA_PathStrokingParams params = stroke_params(1);
    params.psp_Flags = 9 | 9 << 4 | 9 << 8;
    paint(Shape::stroke(line({1, 2}, {3, 2}), params), Operand::gray(0));
    params.psp_Flags = GPA_JOIN_MITER_DUAL_CLIPPED << 8;
    paint(Shape::stroke(line({1, 2}, {3, 2}), params), Operand::gray(0));
    EXPECT_DOUBLE_EQ(ink(), 200.0);
    const std::vector<std::string> expected{"cairo renderer: unknown line caps are painted as butt caps",
                                            "cairo renderer: unknown line joins are painted as miters",
                                            "cairo renderer: dual clipped miters are painted as clipped miters"};
    EXPECT_EQ(said_, expected);
}

TEST_F(StrokeTest, WidthThatIsNoNumberIsThin)
{
    paint(Shape::stroke(line({1, 1.05}, {3, 1.05}), stroke_params(std::nanf(""))), Operand::gray(0));
    EXPECT_DOUBLE_EQ(ink(), 20.0);
}

TEST_F(StrokeTest, SingularTransformIsGuarded)
{
    paint(Shape::stroke(line({1, 1}, {3, 1}), stroke_params(1), {{1, 0, 0, 0, 0, 1}}), Operand::gray(0));
    paint(Shape::stroke(line({1, 1}, {3, 1}), stroke_params(1, GPA_CAP_TRIANGLE), {{0, 0, 0, 0, 0, 0}}),
          Operand::gray(0));
    finish();
    EXPECT_TRUE(renderer().all_pages_written());
}

// Fill and stroke in one call.

class PaintAndStrokeTest : public PageTest
{
protected:
    void both(const Shape& shape, const GPA_PathStrokingParams& params, uint32_t flags, const Operand& fill,
              const Operand& stroke)
    {
        ORV_DrawingInterface& table = page();
        EXPECT_EQ(table.object_paint_and_stroke.fn(&table, GCM_OBJ_GRAPHICS, GCM_OBJ_LINE, 0, nullptr, nullptr,
                                                   shape.record(), &params, nullptr, 0, nullptr, flags, nullptr,
                                                   fill.record(), nullptr, nullptr, stroke.record(), nullptr, nullptr),
                  1U);
    }
};

TEST_F(PaintAndStrokeTest, StrokeLiesOverTheFill)
{
    both(Shape::box(1, 1, 3, 3), stroke_params(0.4F), ORV_PAINTFLAGS_FILL | ORV_PAINTFLAGS_STROKE,
         Operand::rgb(1, 0, 0), Operand::rgb(0, 0, 1));
    EXPECT_EQ(at(8, 20), 0x0000FFU);
    EXPECT_EQ(at(11, 20), 0x0000FFU);
    EXPECT_EQ(at(12, 20), 0xFF0000U);
}

TEST_F(PaintAndStrokeTest, FillSecond)
{
    both(Shape::box(1, 1, 3, 3), stroke_params(0.4F),
         unsigned{ORV_PAINTFLAGS_FILL} | ORV_PAINTFLAGS_STROKE | ORV_PAINTFLAGS_FILL_SECOND, Operand::rgb(1, 0, 0),
         Operand::rgb(0, 0, 1));
    EXPECT_EQ(at(8, 20), 0x0000FFU);
    EXPECT_EQ(at(11, 20), 0xFF0000U);
}

TEST_F(PaintAndStrokeTest, OneSideOnly)
{
    both(Shape::box(1, 1, 2, 2), stroke_params(0.2F), ORV_PAINTFLAGS_FILL, Operand::rgb(1, 0, 0),
         Operand::rgb(0, 0, 1));
    both(Shape::box(3, 1, 3.5, 2), stroke_params(0.2F), ORV_PAINTFLAGS_STROKE, Operand::rgb(1, 0, 0),
         Operand::rgb(0, 0, 1));
    both(Shape::box(1, 3, 2, 3.5), stroke_params(0.2F), ORV_PAINTFLAGS_NONE, Operand::rgb(1, 0, 0),
         Operand::rgb(0, 0, 1));
    EXPECT_EQ(at(9, 15), 0xFFFFFFU);
    EXPECT_EQ(at(15, 15), 0xFF0000U);
    EXPECT_EQ(at(30, 15), 0x0000FFU);
    EXPECT_EQ(at(32, 15), 0xFFFFFFU);
    EXPECT_EQ(at(15, 32), 0xFFFFFFU);
}

TEST_F(PaintAndStrokeTest, FillShowsThroughAThinStroke)
{
    both(Shape::box(1, 1, 3, 3), stroke_params(0.4F), ORV_PAINTFLAGS_FILL | ORV_PAINTFLAGS_STROKE,
         Operand::rgb(1, 0, 0), Operand::rgba(0, 0, 1, 0.5F));
    EXPECT_TRUE(near(9, 20, 0x8080FF));
    EXPECT_TRUE(near(10, 20, 0x800080));
}

TEST_F(PaintAndStrokeTest, KnockoutHidesTheFillUnderTheStroke)
{
    both(Shape::box(1, 1, 3, 3), stroke_params(0.4F),
         unsigned{ORV_PAINTFLAGS_FILL} | ORV_PAINTFLAGS_STROKE | ORV_PAINTFLAGS_KNOCKOUT, Operand::rgb(1, 0, 0),
         Operand::rgba(0, 0, 1, 0.5F));
    EXPECT_TRUE(near(9, 20, 0x8080FF));
    EXPECT_TRUE(near(10, 20, 0x8080FF));
    EXPECT_TRUE(near(15, 20, 0xFF0000));
    EXPECT_TRUE(said_.empty());
}

}  // namespace
