// Gradients and how far they extend.

#include "tests/renderers/cairo/page-fixture.h"

using namespace orvlog::records;

namespace
{

class GradientTest : public PageTest
{
protected:
    void fill_with(const Operand& operand)
    {
        paint_record(nullptr, operand.record(), {});
    }
};

const Colour black({0});
const Colour white({1});
const Colour middle({0.5F});

TEST_F(GradientTest, TwoPointsRunFromOneToTheOther)
{
    fill_with(Operand::two_point(GCM_CSF_GRAY, {1, 0}, {3, 0}, black, white, 3));
    EXPECT_TRUE(near(20, 20, 0x808080, 6));
    EXPECT_TRUE(near(12, 20, 0x202020, 6));
    EXPECT_EQ(at(5, 20), 0x000000U);
    EXPECT_EQ(at(35, 20), 0xFFFFFFU);
}

TEST_F(GradientTest, ExtendsAtNoEnd)
{
    fill_with(Operand::two_point(GCM_CSF_GRAY, {1, 0}, {3, 0}, black, middle, 0));
    EXPECT_EQ(at(5, 20), 0xFFFFFFU);
    EXPECT_TRUE(near(11, 20, 0x0A0A0A, 6));
    EXPECT_EQ(at(35, 20), 0xFFFFFFU);
}

TEST_F(GradientTest, ExtendsAtTheStart)
{
    fill_with(Operand::two_point(GCM_CSF_GRAY, {1, 0}, {3, 0}, black, middle, 1));
    EXPECT_EQ(at(5, 20), 0x000000U);
    EXPECT_TRUE(near(28, 20, 0x767676, 6));
    EXPECT_EQ(at(35, 20), 0xFFFFFFU);
}

TEST_F(GradientTest, ExtendsAtTheEnd)
{
    fill_with(Operand::two_point(GCM_CSF_GRAY, {1, 0}, {3, 0}, black, middle, 2));
    EXPECT_EQ(at(5, 20), 0xFFFFFFU);
    EXPECT_TRUE(near(12, 20, 0x101010, 6));
    EXPECT_TRUE(near(35, 20, 0x808080));
}

TEST_F(GradientTest, CmykBlendsInItsOwnSpace)
{
    fill_with(Operand::two_point(GCM_CSF_CMYK, {0, 0}, {4, 0}, Colour({1, 0, 0, 0}), Colour({0, 1, 0, 0}), 3));
    // Half cyan and half magenta: a quarter each of white, cyan, magenta and blue.
    EXPECT_TRUE(near(20, 20, 0x8677C3, 8));
}

TEST_F(GradientTest, AlphaBlendsToo)
{
    fill_with(Operand::two_point(GCM_CSF_GRAY, {0, 0}, {4, 0}, Colour({0, 0}, true), Colour({1, 0}, true), 3));
    EXPECT_TRUE(near(20, 20, 0x7D7D7D, 6));
    EXPECT_TRUE(near(1, 20, 0xF8F8F8, 8));
}

TEST_F(GradientTest, StopsMakeASteppedGradient)
{
    fill_with(Operand::multistop(
        GCM_CSF_RGB, {0, 0}, {4, 0},
        {{0.0, Colour({1, 0, 0})}, {0.5, Colour({1, 0, 0})}, {0.5, Colour({0, 0, 1})}, {1.0, Colour({0, 1, 1})}}, 3));
    EXPECT_EQ(at(18, 20), 0xFF0000U);
    EXPECT_TRUE(near(21, 20, 0x0013FF, 16));
    EXPECT_TRUE(near(30, 20, 0x0086FF, 8));
}

TEST_F(GradientTest, RadialBetweenTwoCircles)
{
    fill_with(Operand::radial(GCM_CSF_GRAY, {2, 2}, 0, {2, 2}, 1.5, {{0, black}, {1, white}}, 0));
    EXPECT_TRUE(near(20, 20, 0x080808, 8));
    EXPECT_TRUE(near(27, 20, 0x808080, 8));
    EXPECT_EQ(at(37, 20), 0xFFFFFFU);
}

TEST_F(GradientTest, RadialExtendsInwards)
{
    fill_with(Operand::radial(GCM_CSF_GRAY, {2, 2}, 1, {2, 2}, 1.5, {{0, black}, {1, middle}}, 1));
    EXPECT_EQ(at(20, 20), 0x000000U);
    EXPECT_EQ(at(37, 20), 0xFFFFFFU);
}

TEST_F(GradientTest, RadialExtendsOutwards)
{
    fill_with(Operand::radial(GCM_CSF_GRAY, {2, 2}, 1, {2, 2}, 1.5, {{0, black}, {1, middle}}, 2));
    EXPECT_EQ(at(20, 20), 0xFFFFFFU);
    EXPECT_TRUE(near(37, 20, 0x808080));
}

TEST_F(GradientTest, TriangleWithThreeColours)
{
    fill_with(Operand::three_point(GCM_CSF_RGB, {{0, 0}, {4, 0}, {0, 4}},
                                   {Colour({1, 0, 0}), Colour({0, 1, 0}), Colour({0, 0, 1})}));
    EXPECT_TRUE(near(1, 1, 0xEC0A0A, 16));
    EXPECT_TRUE(near(36, 1, 0x0EE80A, 24));
    EXPECT_TRUE(near(1, 36, 0x0E0AE8, 24));
    EXPECT_TRUE(near(13, 13, 0x555555, 12));
    EXPECT_EQ(at(35, 35), 0xFFFFFFU);
}

TEST_F(GradientTest, GradientLiesInContentSpaceWhateverTheShape)
{
    paint(Shape::fill(Path().box(0, 0, 1, 1), {{4, 0, 0, 4, 0, 0}}),
          Operand::two_point(GCM_CSF_GRAY, {0, 0}, {4, 0}, black, white, 3));
    EXPECT_TRUE(near(20, 20, 0x828282, 6));
    EXPECT_TRUE(near(30, 20, 0xC2C2C2, 6));
}

TEST_F(GradientTest, NullColoursAndStopsAreGuarded)
{
    Operand two = Operand::two_point(GCM_CSF_GRAY, {1, 0}, {3, 0}, black, middle, 2);
    reinterpret_cast<GOP_OperandGrad2PtPointer*>(two.record())->g2p_Color2 = nullptr;
    fill_with(two);
    Operand many = Operand::multistop(GCM_CSF_GRAY, {0, 0}, {4, 0}, {{0, black}, {1, black}}, 3);
    reinterpret_cast<GOP_OperandGradMultistopPointer*>(many.record())->gmp_GradStop[0] = nullptr;
    paint(Shape::box(0, 0, 1, 1), many);
    Operand none = Operand::multistop(GCM_CSF_GRAY, {0, 0}, {4, 0}, {}, 3);
    fill_with(none);
    EXPECT_DOUBLE_EQ(ink(), 100.0);
}

}  // namespace
