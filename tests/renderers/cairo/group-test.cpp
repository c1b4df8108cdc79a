// Groups and resources: isolation, knockout, transforms, repetition.

#include "tests/renderers/cairo/page-fixture.h"

using namespace orvlog::records;

namespace
{

using GroupTest = PageTest;

const GOP_Operator multiply = operation(GOP_ROP_PDF_SEPARABLE, 1);

TEST_F(GroupTest, RetransformsNestInsideOut)
{
    const GGO_Matrix outer{{1, 0, 0, 1, 1, 0}};
    const GGO_Matrix inner{{2, 0, 0, 2, 0, 0}};
    GroupExtra extra;
    extra.retransform = &outer;
    start_group(extra);
    extra.retransform = &inner;
    start_group(extra);
    paint(Shape::box(0, 0, 0.5, 0.5), Operand::gray(0));
    finish_group();
    finish_group();
    // First twice as large, then one inch to the right.
    EXPECT_EQ(at(10, 0), 0x000000U);
    EXPECT_EQ(at(19, 9), 0x000000U);
    EXPECT_DOUBLE_EQ(ink(), 100.0);
}

TEST_F(GroupTest, ClipStandsInTheEnclosingSpace)
{
    const GGO_Matrix shift{{1, 0, 0, 1, 2, 0}};
    Clips clips;
    clips.inside(Shape::box(1, 0, 3, 1));
    GroupExtra extra;
    extra.retransform = &shift;
    extra.clip = clips.record();
    start_group(extra);
    paint(Shape::box(0, 0, 4, 4), Operand::gray(0));
    finish_group();
    EXPECT_EQ(at(25, 5), 0x000000U);
    EXPECT_DOUBLE_EQ(ink(), 100.0);
}

TEST_F(GroupTest, ConstantAlphaActsOnTheWhole)
{
    const GOP_Operator op = operation(GOP_ROP_PORTER_DUFF, 3, GOP_MASK_IN);
    const Operand alpha = Operand::gray(0.6F);
    GroupExtra extra;
    extra.op = &op;
    extra.operand2 = alpha.record();
    start_group(extra);
    paint(Shape::box(0, 0, 3, 3), Operand::rgb(0, 0, 1));
    paint(Shape::box(1, 1, 4, 4), Operand::rgb(1, 0, 0));
    finish_group();
    EXPECT_TRUE(near(5, 5, 0x6666FF));
    EXPECT_TRUE(near(20, 20, 0xFF6666));
}

TEST_F(GroupTest, IsolatedGroupDoesNotBlendWithWhatLiesBelow)
{
    Extra blend;
    blend.op = &multiply;
    paint_record(nullptr, Operand::rgb(0, 1, 0).record(), {});
    start_group({});
    paint(Shape::box(1, 1, 3, 3), Operand::rgb(1, 0, 0), blend);
    finish_group();
    EXPECT_EQ(at(20, 20), 0xFF0000U);
}

TEST_F(GroupTest, OtherGroupsDo)
{
    Extra blend;
    blend.op = &multiply;
    GroupExtra extra;
    extra.type = ORV_GROUP_NON_ISOLATED;
    paint_record(nullptr, Operand::rgb(1, 1, 0).record(), {});
    start_group(extra);
    paint(Shape::box(1, 1, 3, 3), Operand::rgb(1, 0, 1), blend);
    finish_group();
    EXPECT_EQ(at(20, 20), 0xFF0000U);
    EXPECT_EQ(at(5, 5), 0xFFFF00U);
}

TEST_F(GroupTest, NonIsolatedWithConstantAlpha)
{
    const GOP_Operator op = operation(GOP_ROP_PORTER_DUFF, 3, GOP_MASK_IN);
    const Operand alpha = Operand::gray(0.6F);
    Extra blend;
    blend.op = &multiply;
    GroupExtra extra;
    extra.type = ORV_GROUP_NON_ISOLATED;
    extra.op = &op;
    extra.operand2 = alpha.record();
    paint_record(nullptr, Operand::rgb(1, 1, 0).record(), {});
    start_group(extra);
    paint(Shape::box(1, 1, 3, 3), Operand::rgb(1, 0, 1), blend);
    finish_group();
    // Multiplied it is red; six tenths of that, and four of the yellow.
    EXPECT_TRUE(near(20, 20, 0xFF6600));
    EXPECT_EQ(at(5, 5), 0xFFFF00U);
    EXPECT_TRUE(said_.empty());
}

TEST_F(GroupTest, GroupIsBlendedAsAWhole)
{
    GroupExtra extra;
    extra.op = &multiply;
    paint_record(nullptr, Operand::rgb(1, 1, 0).record(), {});
    start_group(extra);
    paint(Shape::box(1, 1, 3, 3), Operand::rgb(1, 0, 1));
    finish_group();
    EXPECT_EQ(at(20, 20), 0xFF0000U);
    EXPECT_EQ(at(5, 5), 0xFFFF00U);
}

TEST_F(GroupTest, KnockoutReplacesEarlierObjects)
{
    GroupExtra extra;
    extra.knockout = true;
    start_group(extra);
    paint(Shape::box(0, 0, 3, 3), Operand::rgb(0, 0, 1));
    paint(Shape::box(1, 1, 4, 4), Operand::rgba(1, 0, 0, 0.6F));
    finish_group();
    EXPECT_EQ(at(5, 5), 0x0000FFU);
    EXPECT_TRUE(near(20, 20, 0xFF6666));
    EXPECT_TRUE(near(35, 35, 0xFF6666));
}

TEST_F(GroupTest, KnockoutOnABackdrop)
{
    GroupExtra extra;
    extra.knockout = true;
    extra.type = ORV_GROUP_NON_ISOLATED;
    Extra blend;
    blend.op = &multiply;
    paint_record(nullptr, Operand::rgb(1, 1, 0).record(), {});
    start_group(extra);
    paint(Shape::box(0, 0, 3, 3), Operand::rgb(0, 0, 1));
    paint(Shape::box(1, 1, 4, 4), Operand::rgb(1, 0, 1), blend);
    finish_group();
    // The second object blends with the page below the group, and not with the first object.
    EXPECT_EQ(at(5, 5), 0x0000FFU);
    EXPECT_EQ(at(20, 20), 0xFF0000U);
    EXPECT_EQ(at(35, 5), 0xFFFF00U);
    EXPECT_TRUE(said_.empty());
}

TEST_F(GroupTest, KnockoutShapeEdgesAreSoft)
{
    GroupExtra extra;
    extra.knockout = true;
    start_group(extra);
    paint(Shape::box(0, 0, 3, 3), Operand::gray(0));
    paint(Shape::box(1.05, 1, 4, 4), Operand::gray(1));
    finish_group();
    EXPECT_TRUE(near(10, 20, 0x808080, 3));
}

TEST_F(GroupTest, ReplayIsNeverAskedForAndLooseEndsAreGuarded)
{
    ORV_DrawingInterface& table = page();
    uint32_t replay = 7;
    EXPECT_EQ(table.group_finish.fn(&table, &replay), 0U);
    EXPECT_EQ(replay, 0U);
    start_group({});
    paint(Shape::box(1, 1, 2, 2), Operand::gray(0));
    // The page ends the group.
    EXPECT_DOUBLE_EQ(ink(), 100.0);
}

TEST_F(GroupTest, RepeatedAlongBothAxes)
{
    GroupExtra extra;
    extra.tiling = unsigned{ORV_GROUP_TILE_X} | ORV_GROUP_TILE_Y;
    extra.x_interval = 1;
    extra.y_interval = 2;
    start_group(extra);
    paint(Shape::box(0.2, 0.2, 0.4, 0.4), Operand::gray(0));
    finish_group();
    EXPECT_EQ(at(2, 2), 0x000000U);
    EXPECT_EQ(at(12, 2), 0x000000U);
    EXPECT_EQ(at(33, 23), 0x000000U);
    EXPECT_EQ(at(12, 12), 0xFFFFFFU);
    EXPECT_DOUBLE_EQ(ink(), 8 * 4.0);
}

TEST_F(GroupTest, RepeatedAlongOneAxisWithinAClip)
{
    Clips clips;
    clips.inside(Shape::box(1, 0, 3, 4));
    GroupExtra extra;
    extra.tiling = ORV_GROUP_TILE_X;
    extra.x_interval = 1;
    extra.y_interval = 1;
    extra.clip = clips.record();
    start_group(extra);
    paint(Shape::box(0.2, 0.2, 0.4, 0.4), Operand::gray(0));
    finish_group();
    EXPECT_EQ(at(2, 2), 0xFFFFFFU);
    EXPECT_EQ(at(12, 2), 0x000000U);
    EXPECT_EQ(at(12, 12), 0xFFFFFFU);
    EXPECT_DOUBLE_EQ(ink(), 2 * 4.0);
}

TEST_F(GroupTest, RepeatedAndMirrored)
{
    GroupExtra extra;
    extra.tiling = unsigned{ORV_GROUP_TILE_X} | ORV_GROUP_TILE_REFLECT_X;
    extra.x_interval = 1;
    start_group(extra);
    paint(Shape::box(0, 0, 0.2, 1), Operand::gray(0));
    finish_group();
    EXPECT_EQ(at(1, 5), 0x000000U);
    EXPECT_EQ(at(10, 5), 0xFFFFFFU);
    EXPECT_EQ(at(18, 5), 0x000000U);
    EXPECT_EQ(at(21, 5), 0x000000U);
    EXPECT_DOUBLE_EQ(ink(), 4 * 20.0);
}

TEST_F(GroupTest, RepeatedUnderATransform)
{
    const GGO_Matrix twice{{2, 0, 0, 2, 0.5, 0}};
    GroupExtra extra;
    extra.retransform = &twice;
    extra.tiling = unsigned{ORV_GROUP_TILE_X} | ORV_GROUP_TILE_Y;
    extra.x_interval = 1;
    extra.y_interval = 1;
    start_group(extra);
    paint(Shape::box(0, 0, 0.25, 0.25), Operand::gray(0));
    finish_group();
    EXPECT_EQ(at(5, 0), 0x000000U);
    EXPECT_EQ(at(25, 20), 0x000000U);
    EXPECT_EQ(at(4, 0), 0xFFFFFFU);
    EXPECT_DOUBLE_EQ(ink(), 4 * 25.0);
}

TEST_F(GroupTest, WholePixelSteps)
{
    GroupExtra extra;
    extra.tiling = unsigned{ORV_GROUP_TILE_X} | ORV_GROUP_TILE_PIXEL_SPACING;
    extra.x_interval = 0.94;
    start_group(extra);
    paint(Shape::box(0, 0, 0.1, 1), Operand::gray(0));
    finish_group();
    EXPECT_EQ(at(9, 5), 0x000000U);
    EXPECT_EQ(at(27, 5), 0x000000U);
}

TEST_F(GroupTest, ManyTouchingCellsShowNoSeams)
{
    GroupExtra extra;
    extra.tiling = unsigned{ORV_GROUP_TILE_X} | ORV_GROUP_TILE_Y;
    extra.x_interval = 0.33;
    extra.y_interval = 0.33;
    start_group(extra);
    paint(Shape::box(0, 0, 0.33, 0.33), Operand::gray(0));
    finish_group();
    EXPECT_DOUBLE_EQ(ink(), 1600.0);
}

TEST_F(GroupTest, DeepNestsAreBounded)
{
    for (int i = 0; i < 1000; ++i)
        start_group({});
    paint(Shape::box(1, 1, 2, 2), Operand::gray(0));
    for (int i = 0; i < 1000; ++i)
        finish_group();
    EXPECT_DOUBLE_EQ(ink(), 0.0);
    const std::vector<std::string> expected{"cairo renderer: groups nested more than 200 deep are left out"};
    EXPECT_EQ(lost_, expected);
    EXPECT_TRUE(said_.empty());
}

// Resources.

using ResourceTest = PageTest;

ORV_ResourceProperties no_box()
{
    ORV_ResourceProperties properties{};
    properties.rp_Enclosing_box = {1, 1, -1, -1};
    return properties;
}

TEST_F(ResourceTest, PaintedTwice)
{
    const uint32_t id = start_resource(no_box());
    paint(Shape::box(0, 0, 1, 1), Operand::gray(0));
    end_resource();
    const GGO_Matrix here{{1, 0, 0, 1, 1, 1}};
    const GGO_Matrix there{{1, 0, 0, 1, 3, 3}};
    GroupExtra extra;
    extra.retransform = &here;
    EXPECT_EQ(paint_resource(id, extra), 1U);
    extra.retransform = &there;
    EXPECT_EQ(paint_resource(id, extra), 1U);
    EXPECT_EQ(at(10, 10), 0x000000U);
    EXPECT_EQ(at(39, 39), 0x000000U);
    EXPECT_DOUBLE_EQ(ink(), 200.0);
}

TEST_F(ResourceTest, BoxCutsTheContent)
{
    ORV_ResourceProperties properties{};
    properties.rp_Enclosing_box = {0, 0, 2, 1};
    const uint32_t id = start_resource(properties);
    paint(Shape::box(-1, -1, 4, 4), Operand::gray(0));
    end_resource();
    EXPECT_EQ(paint_resource(id, {}), 1U);
    EXPECT_DOUBLE_EQ(ink(), 200.0);
}

TEST_F(ResourceTest, RepeatedBeyondItsBox)
{
    ORV_ResourceProperties properties{};
    properties.rp_Enclosing_box = {0, 0, 0.5, 0.5};
    const uint32_t id = start_resource(properties);
    paint(Shape::box(0, 0, 4, 4), Operand::gray(0));
    end_resource();
    GroupExtra extra;
    extra.tiling = unsigned{ORV_GROUP_TILE_X} | ORV_GROUP_TILE_Y;
    extra.x_interval = 1;
    extra.y_interval = 1;
    EXPECT_EQ(paint_resource(id, extra), 1U);
    EXPECT_EQ(at(34, 34), 0x000000U);
    EXPECT_EQ(at(36, 34), 0xFFFFFFU);
    EXPECT_DOUBLE_EQ(ink(), 16 * 25.0);
}

TEST_F(ResourceTest, ThousandsOfSmallCells)
{
    ORV_ResourceProperties properties{};
    properties.rp_Enclosing_box = {0, 0, 0.05, 0.1};
    const uint32_t id = start_resource(properties);
    paint(Shape::box(0, 0, 4, 4), Operand::gray(0));
    end_resource();
    GroupExtra extra;
    extra.tiling = unsigned{ORV_GROUP_TILE_X} | ORV_GROUP_TILE_Y;
    extra.x_interval = 0.1;
    extra.y_interval = 0.1;
    EXPECT_EQ(paint_resource(id, extra), 1U);
    EXPECT_TRUE(near(20, 20, 0x808080, 4));
    EXPECT_NEAR(ink(), 800.0, 16.0);
}

TEST_F(ResourceTest, UsesTheCallsOperatorAndMask)
{
    const GOP_Operator op = operation(GOP_ROP_PDF_SEPARABLE, 1, GOP_MASK_IN);
    const Operand alpha = Operand::gray(0.6F);
    const uint32_t id = start_resource(no_box());
    paint(Shape::box(1, 1, 3, 3), Operand::rgb(1, 0, 1));
    end_resource();
    paint_record(nullptr, Operand::rgb(1, 1, 0).record(), {});
    GroupExtra extra;
    extra.op = &op;
    extra.operand2 = alpha.record();
    EXPECT_EQ(paint_resource(id, extra), 1U);
    EXPECT_TRUE(near(20, 20, 0xFF6600));
}

TEST_F(ResourceTest, ResourceInAResource)
{
    const uint32_t inner = start_resource(no_box());
    paint(Shape::box(0, 0, 1, 1), Operand::gray(0));
    end_resource();
    const uint32_t outer = start_resource(no_box());
    const GGO_Matrix shift{{1, 0, 0, 1, 1, 0}};
    GroupExtra extra;
    extra.retransform = &shift;
    EXPECT_EQ(paint_resource(inner, {}), 1U);
    EXPECT_EQ(paint_resource(inner, extra), 1U);
    end_resource();
    const GGO_Matrix twice{{2, 0, 0, 1, 0, 0}};
    extra.retransform = &twice;
    EXPECT_EQ(paint_resource(outer, extra), 1U);
    EXPECT_DOUBLE_EQ(ink(), 400.0);
}

TEST_F(ResourceTest, UnknownOpenAndDestroyedResourcesAreRefused)
{
    EXPECT_EQ(paint_resource(99, {}), 0U);
    const uint32_t id = start_resource(no_box());
    EXPECT_EQ(paint_resource(id, {}), 0U);
    end_resource();
    EXPECT_EQ(paint_resource(id, {}), 1U);
    const ORV_Interface* table = renderer().interface();
    EXPECT_EQ(table->resource_destroy.fn(nullptr, table, document_, nullptr, id), 1U);
    EXPECT_EQ(table->resource_destroy.fn(nullptr, table, document_, nullptr, id), 0U);
    EXPECT_EQ(paint_resource(id, {}), 0U);
    const std::vector<std::string> expected{"cairo renderer: resources that are not there are left out"};
    EXPECT_EQ(said_, expected);
}

TEST_F(ResourceTest, KnockoutResource)
{
    ORV_ResourceProperties properties = no_box();
    properties.rp_IsKnockout = 1;
    const uint32_t id = start_resource(properties);
    paint(Shape::box(0, 0, 3, 3), Operand::rgb(0, 0, 1));
    paint(Shape::box(1, 1, 4, 4), Operand::rgba(1, 0, 0, 0.6F));
    end_resource();
    EXPECT_EQ(paint_resource(id, {}), 1U);
    EXPECT_TRUE(near(20, 20, 0xFF6666));
}

TEST_F(ResourceTest, EachInTheNextIsBounded)
{
    uint32_t last = start_resource(no_box());
    paint(Shape::box(0, 0, 1, 1), Operand::gray(0));
    end_resource();
    // Ten times the one before, thirty levels up: no machine paints that.
    for (int level = 0; level < 30; ++level)
    {
        const uint32_t next = start_resource(no_box());
        for (int i = 0; i < 10; ++i)
            EXPECT_EQ(paint_resource(last, {}), 1U);
        end_resource();
        last = next;
    }
    finish();
    const std::vector<std::string> expected{
        "cairo renderer: resources nested too deep, or painted too often, are left out"};
    EXPECT_EQ(lost_, expected);
}

}  // namespace
