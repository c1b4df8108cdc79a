// How far elements of a knockout group reach: stencils as far as they paint, soft masks over all that they lie on, and
// alpha that is said to be shape as far as it is there.

#include "tests/renderers/cairo/image-records.h"
#include "tests/renderers/cairo/page-fixture.h"

using namespace orvlog::records;

namespace
{

// A blue page, on it a knockout group with a red element under all others.
class KnockoutShapeTest : public PageTest
{
protected:
    KnockoutShapeTest()
    {
        group.knockout = true;
    }

    void begin(uint32_t type = ORV_GROUP_SIMPLE)
    {
        group.type = type;
        paint_record(nullptr, Operand::rgb(0, 0, 1).record(), {});
        start_group(group);
        paint(whole(), Operand::rgb(1, 0, 0));
    }

    // Paints all in this colour through a mask of two columns.
    void paint_through(ImageSource& mask, const Operand& colour, const GOP_Operator& op)
    {
        mask.place(0, 0, 2);
        Extra extra;
        extra.op = &op;
        extra.operand2 = mask.record();
        paint(whole(), colour, extra);
    }

    static Shape whole()
    {
        return Shape::box(0, 0, 4, 4);
    }

    static GOP_Operator with_shape(GOP_Operator op)
    {
        op.op_TransparencyFlags = GOP_TRANS_FLAG_ALPHA_IS_SHAPE;
        return op;
    }

    GroupExtra group;
    GOP_Operator over_in = operation(GOP_ROP_PORTER_DUFF, 3, GOP_MASK_IN);
    GOP_Operator over = operation(GOP_ROP_PORTER_DUFF, 3);
    // The left half paints.
    ImageSource bits{GCM_CSF_GRAY, 2, 2, {0x80, 0x80}};
    ImageSource bytes{GCM_CSF_GRAY, 2, 2, {0xFF, 0x00, 0xFF, 0x00}};
};

TEST_F(KnockoutShapeTest, StencilLeavesWhatItDoesNotPaint)
{
    begin();
    paint_through(bits.depth(GNC_BMP_DEPTH_1), Operand::rgb(0, 1, 0), over_in);
    finish_group();
    EXPECT_EQ(at(8, 20), 0x00FF00U);
    EXPECT_EQ(at(32, 20), 0xFF0000U);
}

TEST_F(KnockoutShapeTest, StencilInAGroupOnABackdropToo)
{
    begin(ORV_GROUP_NON_ISOLATED);
    paint_through(bits.depth(GNC_BMP_DEPTH_1), Operand::rgba(0, 1, 0, 0.5F), over_in);
    finish_group();
    // Half green on the blue backdrop, not on the red element.
    EXPECT_TRUE(near(8, 20, 0x008080));
    EXPECT_EQ(at(32, 20), 0xFF0000U);
}

TEST_F(KnockoutShapeTest, SoftMaskIsOpacity)
{
    begin();
    paint_through(bytes, Operand::rgb(0, 1, 0), over_in);
    finish_group();
    EXPECT_EQ(at(8, 20), 0x00FF00U);
    EXPECT_EQ(at(32, 20), 0x0000FFU);
}

TEST_F(KnockoutShapeTest, SoftMaskThatIsShapeCuts)
{
    begin();
    paint_through(bytes, Operand::rgb(0, 1, 0), with_shape(over_in));
    finish_group();
    EXPECT_EQ(at(8, 20), 0x00FF00U);
    EXPECT_EQ(at(32, 20), 0xFF0000U);
    EXPECT_TRUE(said_.empty());
}

TEST_F(KnockoutShapeTest, ConstantAlphaThatIsShapeShowsEarlierElements)
{
    const GOP_Operator shape = with_shape(over);
    Extra extra;
    extra.op = &shape;
    begin();
    paint(Shape::box(0, 0, 2, 4), Operand::rgba(0, 1, 0, 0.5F), extra);
    paint(Shape::box(2, 0, 4, 4), Operand::rgba(0, 1, 0, 0.5F));
    finish_group();
    EXPECT_TRUE(near(8, 20, 0x808000));
    EXPECT_TRUE(near(32, 20, 0x008080));
}

// The inner group is the element: its shape is what the stencil in it paints.
TEST_F(KnockoutShapeTest, StencilGivesItsGroupItsShape)
{
    begin();
    start_group({});
    paint_through(bits.depth(GNC_BMP_DEPTH_1), Operand::rgb(0, 1, 0), over_in);
    finish_group();
    finish_group();
    EXPECT_EQ(at(8, 20), 0x00FF00U);
    EXPECT_EQ(at(32, 20), 0xFF0000U);
}

TEST_F(KnockoutShapeTest, StencilCutsAGroupThatItMasks)
{
    GroupExtra inner;
    inner.op = &over_in;
    bits.depth(GNC_BMP_DEPTH_1).place(0, 0, 2);
    inner.operand2 = bits.record();
    begin();
    start_group(inner);
    paint(whole(), Operand::rgb(0, 1, 0));
    finish_group();
    finish_group();
    EXPECT_EQ(at(8, 20), 0x00FF00U);
    EXPECT_EQ(at(32, 20), 0xFF0000U);
}

TEST_F(KnockoutShapeTest, InvertedStencilCutsTheOtherWay)
{
    begin();
    paint_through(bits.depth(GNC_BMP_DEPTH_1), Operand::rgb(0, 1, 0), operation(GOP_ROP_PORTER_DUFF, 3, GOP_MASK_OUT));
    finish_group();
    EXPECT_EQ(at(8, 20), 0xFF0000U);
    EXPECT_EQ(at(32, 20), 0x00FF00U);
}

}  // namespace
