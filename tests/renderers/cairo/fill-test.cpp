// Filled paths: edges, winding rules, transforms, the other shapes.

#include "tests/renderers/cairo/page-fixture.h"

#include <limits>
#include <numbers>

using namespace orvlog::records;

namespace
{

using FillTest = PageTest;

TEST_F(FillTest, PaperIsWhite)
{
    EXPECT_EQ(at(0, 0), 0xFFFFFFU);
    EXPECT_EQ(at(39, 39), 0xFFFFFFU);
    ASSERT_EQ(pages().size(), 1U);
    EXPECT_EQ(pages()[0].width, 40U);
    EXPECT_EQ(pages()[0].height, 40U);
    EXPECT_EQ(renderer().pages_finished(), 1U);
    EXPECT_TRUE(renderer().complaints().empty());
}

TEST_F(FillTest, InchesBecomePixels)
{
    paint(Shape::box(1, 1, 2, 3), Operand::rgb(1, 0, 0));
    EXPECT_EQ(at(9, 15), 0xFFFFFFU);
    EXPECT_EQ(at(10, 10), 0xFF0000U);
    EXPECT_EQ(at(19, 29), 0xFF0000U);
    EXPECT_EQ(at(20, 15), 0xFFFFFFU);
    EXPECT_EQ(at(15, 30), 0xFFFFFFU);
    EXPECT_DOUBLE_EQ(ink(), 200.0);
}

TEST_F(FillTest, ShapeTransformActsFirst)
{
    // A quarter turn, twice as large, then a shift: (x, y) goes to (3 - 2y, 2x).
    paint(Shape::fill(Path().box(0, 0, 1, 0.5), {{0, 2, -2, 0, 3, 0}}), Operand::rgb(0, 0, 1));
    EXPECT_EQ(at(20, 0), 0x0000FFU);
    EXPECT_EQ(at(29, 19), 0x0000FFU);
    EXPECT_EQ(at(19, 10), 0xFFFFFFU);
    EXPECT_EQ(at(25, 20), 0xFFFFFFU);
}

TEST_F(FillTest, WindingRulesDifferWhereBoxesNest)
{
    paint(Shape::fill(Path().box(0, 0, 1.5, 3).box(0.5, 1, 1, 2), kUnit, GPA_WINDING_ODD_EVEN), Operand::gray(0));
    paint(Shape::fill(Path().box(2, 0, 3.5, 3).box(2.5, 1, 3, 2), kUnit, GPA_WINDING_NON_ZERO), Operand::gray(0));
    EXPECT_EQ(at(7, 15), 0xFFFFFFU);
    EXPECT_EQ(at(2, 15), 0x000000U);
    EXPECT_EQ(at(27, 15), 0x000000U);
    EXPECT_EQ(at(22, 15), 0x000000U);
}

// All three vectors of a Bezier segment are measured from its start.
TEST_F(FillTest, BezierVectorsAreDisplacementsFromTheStart)
{
    paint(Shape::fill(Path().bezier({1, 2}, {{0, -2}, {2, -2}, {2, 0}})), Operand::gray(0));
    // The curve tops out at y = 2 - 0.75 * 2 = 0.5 in the middle of the span.
    EXPECT_EQ(at(20, 6), 0x000000U);
    EXPECT_EQ(at(20, 4), 0xFFFFFFU);
    EXPECT_EQ(at(20, 20), 0xFFFFFFU);
    EXPECT_EQ(at(10, 5), 0xFFFFFFU);
}

TEST_F(FillTest, SegmentsGoOnFromWhereTheLastOneEnded)
{
    paint(Shape::fill(Path().bezier({0, 1}, {{0, 0}, {2, 0}, {2, 0}, {0, 0}, {0, 2}, {0, 2}})), Operand::gray(0));
    // Two straight sides of a triangle: (0, 1) to (2, 1) to (2, 3).
    EXPECT_EQ(at(18, 11), 0x000000U);
    EXPECT_EQ(at(19, 25), 0x000000U);
    EXPECT_EQ(at(5, 25), 0xFFFFFFU);
}

TEST_F(FillTest, QuadraticCurve)
{
    paint(Shape::fill(Path().quad({1, 2}, {{1, -2}, {2, 0}})), Operand::gray(0));
    // Half way between the chord and the control point.
    EXPECT_EQ(at(20, 11), 0x000000U);
    EXPECT_EQ(at(20, 8), 0xFFFFFFU);
}

TEST_F(FillTest, StaircaseGoesAlongXThenAlongY)
{
    pixels_per_inch_ = 1.0;
    paint(Shape::fill(Path().staircase({10, 10}, true, {{10, 5}, {10, 5}, {0, -10}})), Operand::gray(0));
    EXPECT_EQ(at(14, 11), 0x000000U);
    EXPECT_EQ(at(14, 19), 0x000000U);
    EXPECT_EQ(at(19, 21), 0x000000U);
    EXPECT_EQ(at(11, 29), 0x000000U);
    EXPECT_EQ(at(19, 19), 0xFFFFFFU);
}

TEST_F(FillTest, StaircaseUpwards)
{
    pixels_per_inch_ = 1.0;
    paint(Shape::fill(Path().staircase({10, 20}, false, {{10, 10}, {0, -10}})), Operand::gray(0));
    EXPECT_EQ(at(18, 17), 0x000000U);
    EXPECT_EQ(at(18, 12), 0x000000U);
    EXPECT_EQ(at(15, 25), 0xFFFFFFU);
}

TEST_F(FillTest, HalfEllipseRunsTheWayOfItsRadii)
{
    // From (1, 2) to (3, 2): forward from the left end is over the top where y grows downwards.
    paint(Shape::fill(Path().ellipse({1, 2}, {{1, 1.5, 0, {2, 0}}})), Operand::gray(0));
    EXPECT_EQ(at(20, 7), 0x000000U);
    EXPECT_EQ(at(20, 4), 0xFFFFFFU);
    EXPECT_EQ(at(20, 22), 0xFFFFFFU);
    EXPECT_NEAR(ink(), std::numbers::pi * 10 * 15 / 2, 2.0);
}

TEST_F(FillTest, HalfEllipseTheOtherWay)
{
    paint(Shape::fill(Path().ellipse({1, 2}, {{1, -1.5, 0, {2, 0}}})), Operand::gray(0));
    EXPECT_EQ(at(20, 32), 0x000000U);
    EXPECT_EQ(at(20, 17), 0xFFFFFFU);
}

TEST_F(FillTest, EllipseOfFourTurnedArcs)
{
    // A circle of radius 1.5 in quarters; a turned frame changes nothing about a circle.
    const double r = 1.5;
    paint(Shape::fill(Path().ellipse(
              {2 + r, 2}, {{r, r, 0.7, {-r, r}}, {r, r, 0.7, {-r, -r}}, {r, r, 0, {r, -r}}, {r, r, 0, {r, r}}})),
          Operand::gray(0));
    EXPECT_NEAR(ink(), std::numbers::pi * 225, 6.0);
    EXPECT_EQ(at(20, 20), 0x000000U);
}

TEST_F(FillTest, TurnedEllipse)
{
    // A long ellipse whose axis points down: from its left side to its right side over the bottom.
    paint(Shape::fill(Path().ellipse({1.5, 1}, {{2, -0.5, std::numbers::pi / 2, {1, 0}}})), Operand::gray(0));
    EXPECT_EQ(at(20, 28), 0x000000U);
    EXPECT_EQ(at(20, 31), 0xFFFFFFU);
    EXPECT_EQ(at(20, 8), 0xFFFFFFU);
}

TEST_F(FillTest, RadiiTooSmallAreEnlarged)
{
    paint(Shape::fill(Path().ellipse({1, 2}, {{0.1, 0.1, 0, {2, 0}}})), Operand::gray(0));
    EXPECT_NEAR(ink(), std::numbers::pi * 100 / 2, 2.0);
}

TEST_F(FillTest, EdgesGoOnIntoTheNext)
{
    paint(Shape::fill(Path()
                          .straight({1, 1}, {{1, 0}}, GPA_SUBPATH_CONTINUE)
                          .straight({2, 1}, {{0, 1}}, GPA_SUBPATH_CONTINUE)
                          .straight({2, 2}, {{-1, 0}})),
          Operand::gray(0));
    EXPECT_DOUBLE_EQ(ink(), 100.0);
}

TEST_F(FillTest, OpenSubpathsAreClosedWhenFilled)
{
    paint(Shape::fill(Path().straight({1, 1}, {{1, 0}, {0, 1}, {-1, 0}}, GPA_SUBPATH_END_OPEN)), Operand::gray(0));
    EXPECT_DOUBLE_EQ(ink(), 100.0);
}

TEST_F(FillTest, SuppressedEdgesCountWhenFilled)
{
    paint(Shape::fill(Path().straight({1, 1}, {{1, 0}, {0, 1}, {-1, 0}},
                                      unsigned{GPA_SUPPRESS_STROKING_FLAG} | GPA_SUBPATH_END_CLOSED)),
          Operand::gray(0));
    EXPECT_DOUBLE_EQ(ink(), 100.0);
}

TEST_F(FillTest, HalfCoveredPixelsAreGray)
{
    paint(Shape::box(1, 1, 1.05, 2), Operand::gray(0));
    EXPECT_TRUE(near(10, 15, 0x808080, 3));
}

TEST_F(FillTest, NoShapePaintsEverything)
{
    paint_record(nullptr, Operand::rgb(0, 1, 0).record(), {});
    EXPECT_EQ(at(0, 0), 0x00FF00U);
    EXPECT_EQ(at(39, 39), 0x00FF00U);
}

TEST_F(FillTest, ImageRectangle)
{
    paint(Shape::image_rect(4, 2, {{0.5, 0, 0, 0.5, 1, 1}}), Operand::gray(0));
    EXPECT_EQ(at(10, 10), 0x000000U);
    EXPECT_EQ(at(29, 19), 0x000000U);
    EXPECT_DOUBLE_EQ(ink(), 200.0);
}

TEST_F(FillTest, RectanglesInPixels)
{
    const GGO_Matrix from_pixels{{0.1, 0, 0, 0.1, 0, 0}};
    paint(Shape::multi_rect({{1, 1, 3, 4}, {10, 10, 12, 11}, {5, 5, 5, 9}}, from_pixels), Operand::gray(0));
    EXPECT_EQ(at(1, 1), 0x000000U);
    EXPECT_EQ(at(2, 3), 0x000000U);
    EXPECT_EQ(at(3, 3), 0xFFFFFFU);
    EXPECT_EQ(at(11, 10), 0x000000U);
    EXPECT_DOUBLE_EQ(ink(), 8.0);
}

TEST_F(FillTest, ScanlinesInPixels)
{
    const GGO_Matrix from_pixels{{0.1, 0, 0, 0.1, 0, 0}};
    paint(Shape::scanline(5, {{2, 4}, {3, 3}, {1, 6}}, from_pixels), Operand::gray(0));
    EXPECT_EQ(at(2, 5), 0x000000U);
    EXPECT_EQ(at(4, 5), 0xFFFFFFU);
    EXPECT_EQ(at(3, 6), 0xFFFFFFU);
    EXPECT_EQ(at(5, 7), 0x000000U);
    EXPECT_DOUBLE_EQ(ink(), 7.0);
}

TEST_F(FillTest, WhatIsNotKnownIsSaidOnce)
{
    paint(Shape::of_kind(7), Operand::gray(0));
    paint(Shape::of_kind(8), Operand::gray(0));
    paint(Shape::fill(Path().unknown_edge({1, 1}).box(1, 1, 2, 2)), Operand::gray(0));
    EXPECT_DOUBLE_EQ(ink(), 100.0);
    const std::vector<std::string> expected{"cairo renderer: shapes of unknown kind are left out",
                                            "cairo renderer: edges of an unknown type are left out of their path"};
    EXPECT_EQ(said_, expected);
}

TEST_F(FillTest, CoordinatesThatAreNoNumbersAreGuarded)
{
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const double infinity = std::numeric_limits<double>::infinity();
    paint(Shape::box(1, 1, nan, 2), Operand::gray(0));
    paint(Shape::fill(Path().box(1, 1, 2, 2), {{nan, 0, 0, 1, 0, 0}}), Operand::gray(0));
    paint(Shape::box(1, 1, infinity, 2), Operand::gray(0));
    paint(Shape::fill(Path().box(1, 1, 2, 2), {{0, 0, 0, 0, 0, 0}}), Operand::gray(0));
    EXPECT_DOUBLE_EQ(ink(), 0.0);
    EXPECT_EQ(said_.size(), 1U);
}

TEST_F(FillTest, FarAwayCoordinatesAreHeld)
{
    paint(Shape::box(-1e12, 1, 1e12, 2), Operand::gray(0));
    EXPECT_EQ(at(0, 15), 0x000000U);
    EXPECT_EQ(at(39, 15), 0x000000U);
    EXPECT_DOUBLE_EQ(ink(), 400.0);
}

}  // namespace
