// Clip lists.

#include "tests/renderers/cairo/page-fixture.h"

using namespace orvlog::records;

namespace
{

class ClipTest : public PageTest
{
protected:
    void paint_all(Clips clips)
    {
        Extra extra;
        extra.clip = clips.record();
        paint_record(nullptr, Operand::gray(0).record(), extra);
    }
};

TEST_F(ClipTest, Inside)
{
    paint_all(Clips().inside(Shape::box(1, 1, 2, 3)));
    EXPECT_DOUBLE_EQ(ink(), 200.0);
    EXPECT_EQ(at(10, 10), 0x000000U);
}

TEST_F(ClipTest, EachListNarrows)
{
    paint_all(Clips().inside(Shape::box(1, 1, 3, 3)).inside(Shape::box(2, 2, 4, 4)));
    EXPECT_DOUBLE_EQ(ink(), 100.0);
    EXPECT_EQ(at(25, 25), 0x000000U);
}

TEST_F(ClipTest, Outside)
{
    paint_all(Clips().inside(Shape::box(1, 1, 3, 3)).outside(Shape::box(2, 2, 4, 4)));
    EXPECT_DOUBLE_EQ(ink(), 300.0);
    EXPECT_EQ(at(25, 25), 0xFFFFFFU);
    EXPECT_EQ(at(15, 25), 0x000000U);
}

TEST_F(ClipTest, OutsideAlone)
{
    paint_all(Clips().outside(Shape::box(1, 1, 3, 3)));
    EXPECT_DOUBLE_EQ(ink(), 1600.0 - 400.0);
}

TEST_F(ClipTest, CollectionsAreUnited)
{
    paint_all(Clips()
                  .inside(Shape::box(0, 0, 2, 2))
                  .united_with(Shape::box(1, 1, 3, 3))
                  .united_with(Shape::box(3.5, 3.5, 4, 4)));
    EXPECT_DOUBLE_EQ(ink(), 700.0 + 25.0);
}

TEST_F(ClipTest, CollectionsOfOppositeTurnAreUnitedToo)
{
    Path reversed;
    reversed.straight({1, 1}, {{0, 2}, {2, 0}, {0, -2}});
    paint_all(Clips().inside(Shape::box(0, 0, 2, 2)).united_with(Shape::fill(reversed)));
    EXPECT_DOUBLE_EQ(ink(), 700.0);
}

TEST_F(ClipTest, OutsideOfACollection)
{
    paint_all(Clips().outside(Shape::box(0, 0, 2, 2)).united_with(Shape::box(1, 1, 3, 3)));
    EXPECT_DOUBLE_EQ(ink(), 1600.0 - 700.0);
}

TEST_F(ClipTest, CollectionThenNextList)
{
    paint_all(
        Clips().inside(Shape::box(0, 0, 2, 2)).united_with(Shape::box(1, 1, 3, 3)).inside(Shape::box(0, 0, 4, 1.5)));
    EXPECT_DOUBLE_EQ(ink(), 20 * 10 + 30 * 5.0);
}

TEST_F(ClipTest, RestOfTheListIsIgnored)
{
    paint_all(Clips().inside(Shape::box(0, 0, 2, 2)).end_here().inside(Shape::box(1, 1, 2, 2)));
    EXPECT_DOUBLE_EQ(ink(), 400.0);
}

TEST_F(ClipTest, EmptyPathLetsNothingThrough)
{
    paint_all(Clips().inside(Shape::fill(Path())));
    EXPECT_DOUBLE_EQ(ink(), 0.0);
}

TEST_F(ClipTest, OutsideOfAnEmptyPathIsEverything)
{
    paint_all(Clips().outside(Shape::fill(Path())));
    EXPECT_DOUBLE_EQ(ink(), 1600.0);
}

TEST_F(ClipTest, StrokeAsAClip)
{
    paint_all(Clips().inside(Shape::stroke(Path().box(1, 1, 3, 3), stroke_params(0.4F))));
    EXPECT_DOUBLE_EQ(ink(), 24.0 * 24.0 - 16.0 * 16.0);
}

TEST_F(ClipTest, WindingRuleOfAClip)
{
    paint_all(Clips().inside(Shape::fill(Path().box(0, 0, 3, 3).box(1, 1, 2, 2), kUnit, GPA_WINDING_ODD_EVEN)));
    EXPECT_DOUBLE_EQ(ink(), 800.0);
}

TEST_F(ClipTest, ShapeIsClipped)
{
    Extra extra;
    Clips clips;
    clips.inside(Shape::box(1, 1, 3, 3)).outside(Shape::box(0, 0, 2, 4));
    extra.clip = clips.record();
    paint(Shape::box(0, 0, 4, 2), Operand::gray(0), extra);
    EXPECT_DOUBLE_EQ(ink(), 100.0);
}

// The edge of a clip that has to be made as a mask is as soft as that of another.
TEST_F(ClipTest, SoftEdgesCountOnce)
{
    paint_all(Clips().inside(Shape::box(1, 1, 2.05, 2)).outside(Shape::box(3, 3, 4, 4)));
    EXPECT_TRUE(near(20, 15, 0x808080, 3));
}

TEST_F(ClipTest, ListThatLoopsBackEnds)
{
    GSH_ShapeList list{};
    const Shape box = Shape::box(1, 1, 2, 2);
    list.sl_ClipIn = 1;
    list.sl_Shape = *box.record();
    list.sl_Next = &list;
    Extra extra;
    extra.clip = &list;
    paint_record(nullptr, Operand::gray(0).record(), extra);
    EXPECT_DOUBLE_EQ(ink(), 100.0);
    EXPECT_EQ(lost_.size(), 1U);
}

TEST_F(ClipTest, CollectionThatLoopsBackEnds)
{
    GSH_ShapeList list{};
    const Shape box = Shape::box(1, 1, 2, 2);
    list.sl_ClipIn = 1;
    list.sl_Shape = *box.record();
    list.sl_Collection = &list;
    Extra extra;
    extra.clip = &list;
    paint_record(nullptr, Operand::gray(0).record(), extra);
    EXPECT_DOUBLE_EQ(ink(), 100.0);
    EXPECT_EQ(lost_.size(), 1U);
}

}  // namespace
