// Operators, masks and constant alpha.

#include "tests/renderers/cairo/page-fixture.h"

using namespace orvlog::records;

namespace
{

struct Case
{
    uint32_t type;
    uint16_t number;
    uint32_t expected;
};

// Half red over green, within an isolated group, on the white page: what each operator leaves.
class OperatorTest : public PageTest, public testing::WithParamInterface<Case>
{
};

TEST_P(OperatorTest, CombinesWithinTheShape)
{
    const GOP_Operator op = operation(GetParam().type, GetParam().number);
    Extra extra;
    extra.op = &op;
    start_group({});
    paint(Shape::box(0, 0, 4, 2), Operand::rgb(0, 1, 0));
    paint(Shape::box(1, 1, 3, 3), Operand::rgba(1, 0, 0, 0.6F), extra);
    finish_group();
    EXPECT_TRUE(near(20, 15, GetParam().expected));
    // Outside of the shape nothing changes.
    EXPECT_EQ(at(5, 15), 0x00FF00U);
    EXPECT_EQ(at(20, 35), 0xFFFFFFU);
}

INSTANTIATE_TEST_SUITE_P(PorterDuff, OperatorTest,
                         testing::Values(Case{GOP_ROP_PORTER_DUFF, 0, 0xFFFFFF}, Case{GOP_ROP_PORTER_DUFF, 1, 0xFF6666},
                                         Case{GOP_ROP_PORTER_DUFF, 2, 0x00FF00}, Case{GOP_ROP_PORTER_DUFF, 3, 0x996600},
                                         Case{GOP_ROP_PORTER_DUFF, 4, 0x00FF00}, Case{GOP_ROP_PORTER_DUFF, 5, 0xFF6666},
                                         Case{GOP_ROP_PORTER_DUFF, 6, 0x66FF66}, Case{GOP_ROP_PORTER_DUFF, 7, 0xFFFFFF},
                                         Case{GOP_ROP_PORTER_DUFF, 8, 0x99FF99}, Case{GOP_ROP_PORTER_DUFF, 9, 0x996600},
                                         Case{GOP_ROP_PORTER_DUFF, 10, 0x66FF66},
                                         Case{GOP_ROP_PORTER_DUFF, 11, 0x99FF99},
                                         Case{GOP_ROP_PORTER_DUFF, 12, 0x99FF00}));

INSTANTIATE_TEST_SUITE_P(RasterOperations, OperatorTest,
                         testing::Values(Case{GOP_ROP_ROP2_GDI, 13, 0x996600}, Case{GOP_ROP_ROP2_GDI, 11, 0x00FF00},
                                         Case{GOP_ROP_ROP3, 0xCC, 0x996600}, Case{GOP_ROP_ROP3, 0xF0, 0x996600},
                                         Case{GOP_ROP_ROP3, 0xAA, 0x00FF00}, Case{GOP_ROP_ROP4, 0xAACC, 0x996600}));

// An opaque colour over another, both in the middle of the range: the blend formulas.
class BlendTest : public PageTest, public testing::WithParamInterface<Case>
{
};

TEST_P(BlendTest, BlendsColours)
{
    const GOP_Operator op = operation(GetParam().type, GetParam().number);
    Extra extra;
    extra.op = &op;
    paint_record(nullptr, Operand::rgb(0.2F, 0.6F, 0.8F).record(), {});
    paint(Shape::box(1, 1, 3, 3), Operand::rgb(0.8F, 0.4F, 0.2F), extra);
    EXPECT_TRUE(near(20, 20, GetParam().expected));
    EXPECT_EQ(at(5, 5), 0x3399CCU);
}

// Backdrop 51, 153, 204; source 204, 102, 51.
INSTANTIATE_TEST_SUITE_P(
    Separable, BlendTest,
    testing::Values(Case{GOP_ROP_PDF_SEPARABLE, 0, 0xCC6633}, Case{GOP_ROP_PDF_SEPARABLE, 1, 0x293D29},
                    Case{GOP_ROP_PDF_SEPARABLE, 2, 0xD6C2D6}, Case{GOP_ROP_PDF_SEPARABLE, 3, 0x5285AD},
                    Case{GOP_ROP_PDF_SEPARABLE, 4, 0x336633}, Case{GOP_ROP_PDF_SEPARABLE, 5, 0xCC99CC},
                    Case{GOP_ROP_PDF_SEPARABLE, 6, 0xFFFFFF}, Case{GOP_ROP_PDF_SEPARABLE, 7, 0x000000},
                    Case{GOP_ROP_PDF_SEPARABLE, 8, 0xAD7A52}, Case{GOP_ROP_PDF_SEPARABLE, 9, 0x598DB4},
                    Case{GOP_ROP_PDF_SEPARABLE, 10, 0x993399}, Case{GOP_ROP_PDF_SEPARABLE, 11, 0xAD85AD}));

// Luminance 0.502 of the backdrop, 0.498 of the source.
INSTANTIATE_TEST_SUITE_P(Nonseparable, BlendTest,
                         testing::Values(Case{GOP_ROP_PDF_NONSEPARABLE, 0, 0xCD6734},
                                         Case{GOP_ROP_PDF_NONSEPARABLE, 1, 0x3399CC},
                                         Case{GOP_ROP_PDF_NONSEPARABLE, 2, 0xCD6734},
                                         Case{GOP_ROP_PDF_NONSEPARABLE, 3, 0x3298CB}));

TEST_F(BlendTest, WhatIsNotKnownIsPaintedOver)
{
    const GOP_Operator far = operation(GOP_ROP_PDF_SEPARABLE, 12);
    const GOP_Operator own = operation(GOP_ROP_USER_DEFINED, 0);
    const GOP_Operator sum = operation(GOP_ROP_ARITHMETIC, 3);
    const GOP_Operator filter = operation(GOP_ROP_IMAGE_PROCESSING, 3);
    const GOP_Operator invert = operation(GOP_ROP_ROP3, 0x55);
    for (const GOP_Operator* op : {&far, &own, &sum, &filter, &invert})
    {
        Extra extra;
        extra.op = op;
        paint(Shape::box(1, 1, 3, 3), Operand::rgb(0.8F, 0.4F, 0.2F), extra);
    }
    EXPECT_EQ(at(20, 20), 0xCC6633U);
    const std::vector<std::string> expected{
        "cairo renderer: operators of unknown number are painted as source over",
        "cairo renderer: operators of the client's own or of unknown kind are painted as source over",
        "cairo renderer: arithmetic operators are painted as source over",
        "cairo renderer: image processing operators are painted as source over",
        "cairo renderer: raster operations other than copies are painted as copies"};
    EXPECT_EQ(said_, expected);
}

// Masks.

class MaskTest : public PageTest
{
protected:
    void paint_masked(uint32_t mode, const Operand& mask, const Operand& colour)
    {
        const GOP_Operator op = operation(GOP_ROP_PORTER_DUFF, 3, mode);
        Extra extra;
        extra.op = &op;
        extra.operand2 = mask.record();
        paint(Shape::box(1, 1, 3, 3), colour, extra);
    }
};

TEST_F(MaskTest, FlatMaskIsConstantAlpha)
{
    paint_masked(GOP_MASK_IN, Operand::gray(0.6F), Operand::rgb(1, 0, 0));
    EXPECT_EQ(at(20, 20), 0xFF6666U);
    EXPECT_EQ(at(5, 5), 0xFFFFFFU);
}

TEST_F(MaskTest, FlatMaskOutIsTheOpposite)
{
    paint_masked(GOP_MASK_OUT, Operand::gray(0.6F), Operand::rgb(1, 0, 0));
    EXPECT_EQ(at(20, 20), 0xFF9999U);
}

TEST_F(MaskTest, FlatMaskIsChannelZeroInAnySpace)
{
    paint_masked(GOP_MASK_IN, Operand::rgb(0.6F, 0, 0), Operand::rgb(1, 0, 0));
    EXPECT_EQ(at(20, 20), 0xFF6666U);
}

TEST_F(MaskTest, FlatMaskOfAGradient)
{
    paint_masked(GOP_MASK_IN, Operand::gray(0.5F),
                 Operand::two_point(GCM_CSF_GRAY, {0, 0}, {4, 0}, Colour({0}), Colour({0}), 3));
    EXPECT_TRUE(near(20, 20, 0x808080));
}

TEST_F(MaskTest, GradientAsAMask)
{
    paint_masked(GOP_MASK_IN, Operand::two_point(GCM_CSF_GRAY, {1, 0}, {3, 0}, Colour({0}), Colour({1}), 0),
                 Operand::rgb(1, 0, 0));
    EXPECT_TRUE(near(10, 20, 0xFFF9F9, 8));
    EXPECT_TRUE(near(20, 20, 0xFF7B7B, 8));
    EXPECT_TRUE(near(29, 20, 0xFF0606, 8));
}

TEST_F(MaskTest, GradientMaskOut)
{
    paint_masked(GOP_MASK_OUT, Operand::two_point(GCM_CSF_GRAY, {1, 0}, {3, 0}, Colour({0}), Colour({1}), 0),
                 Operand::rgb(1, 0, 0));
    EXPECT_TRUE(near(10, 20, 0xFF0606, 8));
    EXPECT_TRUE(near(29, 20, 0xFFF9F9, 8));
}

TEST_F(MaskTest, OperandTwoDoesNotCountWithoutAMaskMode)
{
    paint_masked(GOP_MASK_NONE, Operand::gray(0), Operand::rgb(1, 0, 0));
    EXPECT_EQ(at(20, 20), 0xFF0000U);
}

TEST_F(MaskTest, AttributeMasksAreSaid)
{
    paint_masked(GOP_ATTRIBUTE_MASK, Operand::gray(0), Operand::rgb(1, 0, 0));
    EXPECT_EQ(at(20, 20), 0xFF0000U);
    const std::vector<std::string> expected{"cairo renderer: attribute masks are not applied"};
    EXPECT_EQ(said_, expected);
}

TEST_F(MaskTest, MissingMaskIsNone)
{
    const GOP_Operator op = operation(GOP_ROP_PORTER_DUFF, 3, GOP_MASK_IN);
    Extra extra;
    extra.op = &op;
    paint(Shape::box(1, 1, 3, 3), Operand::rgb(1, 0, 0), extra);
    EXPECT_EQ(at(20, 20), 0xFF0000U);
}

TEST_F(MaskTest, MaskAndClipTogether)
{
    const GOP_Operator op = operation(GOP_ROP_PORTER_DUFF, 3, GOP_MASK_IN);
    Clips clips;
    clips.outside(Shape::box(0, 0, 2, 4));
    const Operand half = Operand::gray(0.6F);
    Extra extra;
    extra.op = &op;
    extra.operand2 = half.record();
    extra.clip = clips.record();
    paint(Shape::box(1, 1, 3, 3), Operand::rgb(1, 0, 0), extra);
    EXPECT_EQ(at(15, 20), 0xFFFFFFU);
    EXPECT_EQ(at(25, 20), 0xFF6666U);
}

TEST_F(MaskTest, OperatorsThatReachBeyondKeepToTheMaskedShape)
{
    const GOP_Operator op = operation(GOP_ROP_PORTER_DUFF, 7);
    Extra extra;
    extra.op = &op;
    paint_record(nullptr, Operand::rgb(0, 1, 0).record(), {});
    paint(Shape::box(1, 1, 3, 3), Operand::rgb(1, 0, 0), extra);
    EXPECT_EQ(at(5, 5), 0x00FF00U);
    EXPECT_EQ(at(20, 20), 0x000000U);
}

TEST_F(MaskTest, WhatOperatorsLoseIsSaid)
{
    GOP_Operator op = operation(GOP_ROP_PORTER_DUFF, 3);
    op.op_TransparencyType = GOP_TRANS_SOURCE;
    op.op_TransparencyFlags = GOP_TRANS_FLAG_ALPHA_IS_SHAPE;
    op.op_ColorTransferFn = [] {};
    Extra extra;
    extra.op = &op;
    paint(Shape::box(1, 1, 3, 3), Operand::rgb(1, 0, 0), extra);
    EXPECT_EQ(at(20, 20), 0xFF0000U);
    const std::vector<std::string> expected{"cairo renderer: transparency types of operators are not looked at",
                                            "cairo renderer: transfer functions of operators are not called"};
    EXPECT_EQ(said_, expected);
}

TEST_F(MaskTest, AlphaThatIsShapeIsSaidUnderBlendModesOnly)
{
    GOP_Operator op = operation(GOP_ROP_PORTER_DUFF, 3);
    op.op_TransparencyFlags = GOP_TRANS_FLAG_ALPHA_IS_SHAPE;
    Extra extra;
    extra.op = &op;
    paint(Shape::box(1, 1, 3, 3), Operand::rgb(1, 0, 0), extra);
    EXPECT_TRUE(said_.empty());
    op = operation(GOP_ROP_PDF_SEPARABLE, 1);
    op.op_TransparencyFlags = GOP_TRANS_FLAG_ALPHA_IS_SHAPE;
    paint(Shape::box(1, 1, 3, 3), Operand::rgb(1, 0, 0), extra);
    const std::vector<std::string> expected{"cairo renderer: alpha that is shape is painted as opacity"};
    EXPECT_EQ(said_, expected);
}

}  // namespace
