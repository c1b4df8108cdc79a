// What groups come to on a backdrop, under blend modes and in knockout groups. The expected pixels were worked out
// by hand from the compositing formulas: initial backdrop, shape and alpha apart, backdrop removed at the end.

#include "tests/renderers/cairo/page-fixture.h"

using namespace orvlog::records;

namespace
{

using NestedGroupTest = PageTest;

const GOP_Operator multiply = operation(GOP_ROP_PDF_SEPARABLE, 1);
const GOP_Operator screen = operation(GOP_ROP_PDF_SEPARABLE, 2);
const GOP_Operator over_in = operation(GOP_ROP_PORTER_DUFF, 3, GOP_MASK_IN);

Shape whole()
{
    return Shape::box(0, 0, 4, 4);
}

// The screen of 0.5 over 0.4 is 0.7; freed of the backdrop the group is 0.7, and 0.7 times 0.4 is 0.28.
TEST_F(NestedGroupTest, GroupOnABackdropUnderABlendMode)
{
    Extra inside;
    inside.op = &screen;
    GroupExtra extra;
    extra.type = ORV_GROUP_NON_ISOLATED;
    extra.op = &multiply;
    paint_record(nullptr, Operand::gray(0.4F).record(), {});
    start_group(extra);
    paint(Shape::box(1, 1, 3, 3), Operand::gray(0.5F), inside);
    finish_group();
    EXPECT_TRUE(near(20, 20, 0x474747));
    EXPECT_EQ(at(5, 5), 0x666666U);
    EXPECT_TRUE(said_.empty());
}

// The group's colour is 0.7 again, with an alpha of 0.5: 0.5 * 0.4 + 0.5 * 0.28 = 0.34.
TEST_F(NestedGroupTest, HalfOpaqueContentUnderABlendMode)
{
    Extra inside;
    inside.op = &screen;
    GroupExtra extra;
    extra.type = ORV_GROUP_NON_ISOLATED;
    extra.op = &multiply;
    paint_record(nullptr, Operand::gray(0.4F).record(), {});
    start_group(extra);
    paint(Shape::box(1, 1, 3, 3), Operand::rgba(0.5F, 0.5F, 0.5F, 0.5F), inside);
    finish_group();
    EXPECT_TRUE(near(20, 20, 0x575757));
}

// The inner group has colour 0.7 and alpha 0.5 for the outer one, so the outer one has that too.
TEST_F(NestedGroupTest, GroupOnABackdropWithinAnother)
{
    const Operand half = Operand::gray(0.5F);
    Extra inside;
    inside.op = &screen;
    GroupExtra outer;
    outer.type = ORV_GROUP_NON_ISOLATED;
    outer.op = &multiply;
    GroupExtra inner;
    inner.type = ORV_GROUP_NON_ISOLATED;
    inner.op = &over_in;
    inner.operand2 = half.record();
    paint_record(nullptr, Operand::gray(0.4F).record(), {});
    start_group(outer);
    start_group(inner);
    paint(Shape::box(1, 1, 3, 3), Operand::gray(0.5F), inside);
    finish_group();
    finish_group();
    EXPECT_TRUE(near(20, 20, 0x575757));
    EXPECT_EQ(at(5, 5), 0x666666U);
}

// A group that only looks through has its alpha in the outer group as well.
TEST_F(NestedGroupTest, PlainGroupWithinABlendedOne)
{
    GroupExtra outer;
    outer.type = ORV_GROUP_NON_ISOLATED;
    outer.op = &multiply;
    Clips clips;
    clips.inside(Shape::box(1, 1, 3, 3));
    GroupExtra inner;
    inner.type = ORV_GROUP_NON_ISOLATED;
    inner.clip = clips.record();
    paint_record(nullptr, Operand::gray(0.4F).record(), {});
    start_group(outer);
    start_group(inner);
    paint(whole(), Operand::rgb(1, 0.5F, 0));
    finish_group();
    finish_group();
    EXPECT_TRUE(near(20, 20, 0x663300));
    EXPECT_EQ(at(5, 5), 0x666666U);
}

TEST_F(NestedGroupTest, AlphaOfAGroupInAKnockoutGroupShowsThePaper)
{
    const Operand half = Operand::gray(0.5F);
    GroupExtra outer;
    outer.knockout = true;
    GroupExtra inner;
    inner.op = &over_in;
    inner.operand2 = half.record();
    start_group(outer);
    paint(whole(), Operand::rgb(1, 0, 0));
    start_group(inner);
    paint(Shape::box(1, 1, 3, 3), Operand::rgb(0, 0, 1));
    finish_group();
    finish_group();
    EXPECT_TRUE(near(20, 20, 0x8080FF));
    EXPECT_EQ(at(5, 5), 0xFF0000U);
    EXPECT_TRUE(said_.empty());
}

TEST_F(NestedGroupTest, ShapeIsKeptApartFromAlpha)
{
    GroupExtra outer;
    outer.knockout = true;
    start_group(outer);
    paint(whole(), Operand::rgb(1, 0, 0));
    start_group({});
    start_group({});
    paint(Shape::box(1, 1, 3.05, 3), Operand::rgba(0, 0, 1, 0.6F));
    finish_group();
    finish_group();
    finish_group();
    EXPECT_TRUE(near(20, 20, 0x6666FF));
    // A pixel half covered by the shape: half red, and half of what the group is there.
    EXPECT_TRUE(near(30, 20, 0xB2337F, 3));
    EXPECT_EQ(at(35, 20), 0xFF0000U);
}

// The inner group multiplies with what lies below the outer one, yellow, and not with the blue before it.
TEST_F(NestedGroupTest, GroupOnABackdropInAKnockoutGroup)
{
    Extra inside;
    inside.op = &multiply;
    GroupExtra outer;
    outer.knockout = true;
    outer.type = ORV_GROUP_NON_ISOLATED;
    GroupExtra inner;
    inner.type = ORV_GROUP_NON_ISOLATED;
    paint_record(nullptr, Operand::rgb(1, 1, 0).record(), {});
    start_group(outer);
    paint(whole(), Operand::rgb(0, 0, 1));
    start_group(inner);
    paint(Shape::box(1, 1, 3, 3), Operand::rgb(1, 0, 1), inside);
    finish_group();
    finish_group();
    EXPECT_EQ(at(20, 20), 0xFF0000U);
    EXPECT_EQ(at(5, 5), 0x0000FFU);
    EXPECT_TRUE(said_.empty());
}

TEST_F(NestedGroupTest, BlendedGroupInAKnockoutGroupMeetsItsBackdrop)
{
    const Operand half = Operand::gray(0.5F);
    const GOP_Operator multiply_in = operation(GOP_ROP_PDF_SEPARABLE, 1, GOP_MASK_IN);
    GroupExtra outer;
    outer.knockout = true;
    outer.type = ORV_GROUP_NON_ISOLATED;
    GroupExtra inner;
    inner.op = &multiply_in;
    inner.operand2 = half.record();
    paint_record(nullptr, Operand::rgb(1, 1, 0).record(), {});
    start_group(outer);
    paint(whole(), Operand::rgb(0, 0, 1));
    start_group(inner);
    paint(Shape::box(1, 1, 3, 3), Operand::rgb(1, 0, 1));
    finish_group();
    finish_group();
    // Half yellow and half red.
    EXPECT_TRUE(near(20, 20, 0xFF8000));
    EXPECT_EQ(at(5, 5), 0x0000FFU);
}

// 0.5 * 0.7 + 0.5 * 0.4 = 0.55 in the group, alpha 0.5; the element before it is gone.
TEST_F(NestedGroupTest, KnockoutGroupUnderABlendMode)
{
    Extra inside;
    inside.op = &screen;
    GroupExtra extra;
    extra.type = ORV_GROUP_NON_ISOLATED;
    extra.knockout = true;
    extra.op = &multiply;
    paint_record(nullptr, Operand::gray(0.4F).record(), {});
    start_group(extra);
    paint(whole(), Operand::gray(0));
    paint(Shape::box(1, 1, 3, 3), Operand::rgba(0.5F, 0.5F, 0.5F, 0.5F), inside);
    finish_group();
    EXPECT_TRUE(near(20, 20, 0x575757));
    EXPECT_EQ(at(5, 5), 0x000000U);
}

TEST_F(NestedGroupTest, ClipsOfAGroupInAKnockoutGroupCutItsShape)
{
    Clips clips;
    clips.inside(Shape::box(1, 1, 3, 3)).outside(Shape::box(2, 2, 3, 3));
    GroupExtra outer;
    outer.knockout = true;
    GroupExtra inner;
    inner.clip = clips.record();
    start_group(outer);
    paint(whole(), Operand::rgb(1, 0, 0));
    start_group(inner);
    paint(whole(), Operand::rgba(0, 0, 1, 0.6F));
    finish_group();
    finish_group();
    EXPECT_TRUE(near(15, 15, 0x6666FF));
    EXPECT_EQ(at(25, 25), 0xFF0000U);
    EXPECT_EQ(at(5, 5), 0xFF0000U);
}

TEST_F(NestedGroupTest, RepeatedGroupInAKnockoutGroup)
{
    GroupExtra outer;
    outer.knockout = true;
    GroupExtra inner;
    inner.tiling = unsigned{ORV_GROUP_TILE_X} | ORV_GROUP_TILE_Y;
    inner.x_interval = 1;
    inner.y_interval = 1;
    start_group(outer);
    paint(whole(), Operand::rgb(1, 0, 0));
    start_group(inner);
    paint(Shape::box(0, 0, 0.5, 1), Operand::rgba(0, 0, 1, 0.6F));
    finish_group();
    finish_group();
    EXPECT_TRUE(near(12, 15, 0x6666FF));
    EXPECT_EQ(at(18, 15), 0xFF0000U);
}

TEST_F(NestedGroupTest, VectorSurfacesSayWhatTheyCannotDo)
{
    options_.surface_factory = [](const orvlog::cairo_renderer::Page&)
    { return cairo_recording_surface_create(CAIRO_CONTENT_COLOR_ALPHA, nullptr); };
    GroupExtra outer;
    outer.knockout = true;
    GroupExtra inner;
    inner.type = ORV_GROUP_NON_ISOLATED;
    start_group(outer);
    for (int i = 0; i < 2; ++i)
    {
        start_group(inner);
        paint(whole(), Operand::gray(0));
        finish_group();
    }
    finish_group();
    finish();
    const std::vector<std::string> expected = {
        "cairo renderer: groups that aren't isolated are painted as isolated on vector surfaces",
        "cairo renderer: groups inside knockout groups are painted over what lies there on vector surfaces"};
    EXPECT_EQ(said_, expected);
}

}  // namespace
