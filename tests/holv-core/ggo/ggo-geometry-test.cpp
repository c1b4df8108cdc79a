#include "holv-core/ggo/ggo-geometry.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace
{

uint32_t classify(double a, double b, double c, double d, double e = 0, double f = 0)
{
    const GGO_Matrix matrix = {{a, b, c, d, e, f}};
    return ggo_classify_matrix(&matrix);
}

TEST(Geometry, MapsPointsAndVectors)
{
    const GGO_Matrix m = {{2, 3, 5, 7, 11, 13}};
    const GGO_Point p = ggo_transform_point(&m, {1, 10});
    EXPECT_EQ(p.gpf_X, 2 + 50 + 11);
    EXPECT_EQ(p.gpf_Y, 3 + 70 + 13);
    const GGO_Vector v = ggo_transform_vector(&m, {1, 10});
    EXPECT_EQ(v.gvf_X, 52);
    EXPECT_EQ(v.gvf_Y, 73);
    EXPECT_EQ(ggo_determinant(&m), 14 - 15);
}

TEST(Geometry, ProductLetsTheFirstActFirst)
{
    const GGO_Matrix first = {{2, 3, 5, 7, 11, 13}};
    const GGO_Matrix then = {{17, 19, 23, 29, 31, 37}};
    const GGO_Matrix product = ggo_multiply(&first, &then);
    const double expected[6] = {2 * 17 + 3 * 23, 2 * 19 + 3 * 29,        5 * 17 + 7 * 23,
                                5 * 19 + 7 * 29, 11 * 17 + 13 * 23 + 31, 11 * 19 + 13 * 29 + 37};
    for (int i = 0; i < 6; ++i)
        EXPECT_EQ(product.m[i], expected[i]) << i;
}

TEST(Geometry, InverseDividesEachValueByTheDeterminant)
{
    const GGO_Matrix m = {{2, 0, 0, 4, 6, 8}};
    uint32_t invertible = 7;
    const GGO_Matrix inverse = ggo_inverse(&m, &invertible);
    EXPECT_EQ(invertible, 1U);
    const double expected[6] = {0.5, 0, 0, 0.25, -3, -2};
    for (int i = 0; i < 6; ++i)
        EXPECT_EQ(inverse.m[i], expected[i]) << i;
}

TEST(Geometry, InverseOfASkewedMatrix)
{
    const GGO_Matrix m = {{1, 2, 3, 4, 5, 6}};
    uint32_t invertible = 7;
    const GGO_Matrix inverse = ggo_inverse(&m, &invertible);
    EXPECT_EQ(invertible, 1U);
    const double expected[6] = {-2, 1, 1.5, -0.5, 1, -2};
    for (int i = 0; i < 6; ++i)
        EXPECT_EQ(inverse.m[i], expected[i]) << i;
}

// 49 times the rounded reciprocal of 49 is a little less than 1.
TEST(Geometry, InverseFormsNoReciprocal)
{
    const GGO_Matrix m = {{49, 0, 0, 1, 0, 0}};
    uint32_t invertible = 7;
    const GGO_Matrix inverse = ggo_inverse(&m, &invertible);
    EXPECT_EQ(invertible, 1U);
    EXPECT_EQ(inverse.m[3], 1.0);
}

TEST(Geometry, SingularMatrixIsCopied)
{
    const GGO_Matrix m = {{1, 2, 2, 4, 6, 8}};
    uint32_t invertible = 7;
    const GGO_Matrix inverse = ggo_inverse(&m, &invertible);
    EXPECT_EQ(invertible, 0U);
    for (int i = 0; i < 6; ++i)
        EXPECT_EQ(inverse.m[i], m.m[i]) << i;
    const GGO_Matrix negative_zero = {{-0.0, 0, 0, 4, 6, 8}};
    ggo_inverse(&negative_zero, &invertible);
    EXPECT_EQ(invertible, 0U);
}

TEST(Geometry, NearlySingularMatrixIsInverted)
{
    const double tiny = std::numeric_limits<double>::denorm_min();
    const GGO_Matrix m = {{tiny, 0, 0, 1, 0, 0}};
    uint32_t invertible = 7;
    ggo_inverse(&m, &invertible);
    EXPECT_EQ(invertible, 1U);
}

TEST(Geometry, WithoutAMatrixAllStaysAsItIs)
{
    const GGO_Matrix unit = {{1, 0, 0, 1, 0, 0}};
    uint32_t invertible = 9;
    EXPECT_EQ(ggo_determinant(nullptr), 0);
    EXPECT_EQ(ggo_inverse(nullptr, &invertible).m[3], 0);
    EXPECT_EQ(invertible, 0U);
    EXPECT_EQ(ggo_inverse(&unit, nullptr).m[3], 1);
    EXPECT_EQ(ggo_transform_point(nullptr, {3, 4}).gpf_Y, 4);
    EXPECT_EQ(ggo_transform_vector(nullptr, {3, 4}).gvf_X, 3);
    ggo_make_empty_box(nullptr);
    EXPECT_EQ(ggo_multiply(nullptr, &unit).m[0], 0);
    EXPECT_EQ(ggo_multiply(&unit, nullptr).m[0], 0);
    EXPECT_EQ(ggo_classify_matrix(nullptr), 0U);
}

TEST(Geometry, EmptyBox)
{
    GGO_BoxFloat box;
    ggo_make_empty_box(&box);
    EXPECT_EQ(box.gbf_MinX, 1);
    EXPECT_EQ(box.gbf_MinY, 1);
    EXPECT_EQ(box.gbf_MaxX, -1);
    EXPECT_EQ(box.gbf_MaxY, -1);
}

TEST(Classification, Identity)
{
    EXPECT_EQ(classify(1, 0, 0, 1), 1U);
    EXPECT_EQ(classify(1, 0, 0, 1, 0.005), 1U);
    EXPECT_EQ(classify(1, 0, 0, 1, 0.02), 2U);
    EXPECT_EQ(classify(1, 0, 0, 1, 0, -0.02), 2U);
}

TEST(Classification, EachRowOfTheTable)
{
    EXPECT_EQ(classify(0, -1, 1, 0), 0x60U);
    EXPECT_EQ(classify(0, -1, 1, 0, 5), 0x62U);
    EXPECT_EQ(classify(0, 1, -1, 0), 0xE0U);
    EXPECT_EQ(classify(0, 1, -1, 0, 5), 0xE2U);
    EXPECT_EQ(classify(-1, 0, 0, -1), 0xA0U);
    EXPECT_EQ(classify(-1, 0, 0, -1, 5), 0xA2U);
    EXPECT_EQ(classify(1, 0, 0, -1), 0x08U);
    EXPECT_EQ(classify(1, 0, 0, -1, 5), 0x0AU);
    EXPECT_EQ(classify(-1, 0, 0, 1), 0xA8U);
    EXPECT_EQ(classify(2, 0, 0, 3), 0x04U);
    EXPECT_EQ(classify(2, 0, 0, 3, 5), 0x06U);
    EXPECT_EQ(classify(0, 1, 1, 0), 0x68U);
    EXPECT_EQ(classify(0, -1, -1, 0), 0xE8U);
    EXPECT_EQ(classify(0, -2, 3, 0), 0x64U);
    EXPECT_EQ(classify(0, 2, -3, 0), 0xE4U);
    EXPECT_EQ(classify(-2, 0, 0, -3), 0xA4U);
    EXPECT_EQ(classify(2, 0, 0, -3), 0x0CU);
    EXPECT_EQ(classify(-2, 0, 0, 3), 0xACU);
    EXPECT_EQ(classify(1, 1, 0, 1), 0x100U);
    EXPECT_EQ(classify(0, 2, 3, 0), 0x6CU);
    EXPECT_EQ(classify(0, -2, -3, 0), 0xECU);
    EXPECT_EQ(classify(0, 1, 1, 1), 0x100U);
    EXPECT_EQ(classify(0, 0, 0, 0), 0U);
    EXPECT_EQ(classify(0, 0, 0, 0, 1), 0x100U);
}

TEST(Classification, EachRowWithAShift)
{
    EXPECT_EQ(classify(1, 0, 0, 1, 0, 5), 0x02U);
    EXPECT_EQ(classify(0, -1, 1, 0, 0, 5), 0x62U);
    EXPECT_EQ(classify(0, 1, -1, 0, 0, -5), 0xE2U);
    EXPECT_EQ(classify(-1, 0, 0, -1, -5), 0xA2U);
    EXPECT_EQ(classify(1, 0, 0, -1, 0, 5), 0x0AU);
    EXPECT_EQ(classify(-1, 0, 0, 1, 5), 0xAAU);
    EXPECT_EQ(classify(2, 0, 0, 3, 0, 5), 0x06U);
    EXPECT_EQ(classify(0, 1, 1, 0, 5), 0x6AU);
    EXPECT_EQ(classify(0, -1, -1, 0, 5), 0xEAU);
    EXPECT_EQ(classify(0, -2, 3, 0, 5), 0x66U);
    EXPECT_EQ(classify(0, 2, -3, 0, 5), 0xE6U);
    EXPECT_EQ(classify(-2, 0, 0, -3, 5), 0xA6U);
    EXPECT_EQ(classify(2, 0, 0, -3, 5), 0x0EU);
    EXPECT_EQ(classify(-2, 0, 0, 3, 5), 0xAEU);
    EXPECT_EQ(classify(1, 1, 0, 1, 5), 0x100U);
    EXPECT_EQ(classify(0, 2, 3, 0, 5), 0x6EU);
    EXPECT_EQ(classify(0, -2, -3, 0, 5), 0xEEU);
    EXPECT_EQ(classify(0, 0, 0, 0, 0, 1), 0x100U);
}

// Each of the guards that a row stands behind, failed by one value alone.
TEST(Classification, OneValueOffItsPlaceIsGeneral)
{
    EXPECT_EQ(classify(1, 0.5, 0, 1), 0x100U);
    EXPECT_EQ(classify(1, 0, -0.5, 1), 0x100U);
    EXPECT_EQ(classify(0.5, 1, -1, 0), 0x100U);
    EXPECT_EQ(classify(0, 1, -1, 0.5), 0x100U);
    EXPECT_EQ(classify(0, 1, 0, 0), 0x100U);
    EXPECT_EQ(classify(0, 0, -1, 0), 0x100U);
    EXPECT_EQ(classify(0, 0, 0, 1), 0x100U);
    EXPECT_EQ(classify(0, 0, 0, -1), 0x100U);
    EXPECT_EQ(classify(1, 0, 0, 0), 0x100U);
}

TEST(Classification, Tolerance)
{
    EXPECT_EQ(classify(0.0005, 0, 0, 0, 1), 0x100U);
    EXPECT_EQ(classify(0.0005, 0, 0, 0), 0U);
    const double e = 0.001F;
    EXPECT_EQ(classify(1, e, 0, 1), 0x100U);
    EXPECT_EQ(classify(1, std::nextafter(e, 0.0), 0, 1), 1U);
    EXPECT_EQ(classify(1 + e, 0, 0, 1), 0x04U);
    EXPECT_EQ(classify(std::nextafter(1 + e, 0.0), 0, 0, 1), 1U);
    EXPECT_EQ(classify(1 - e, 0, 0, 1), 0x04U);
    EXPECT_EQ(classify(std::nextafter(1 - e, 1.0), 0, 0, 1), 1U);
    EXPECT_EQ(classify(-1 - e, 0, 0, -1), 0xA4U);
    EXPECT_EQ(classify(std::nextafter(-1 - e, 0.0), 0, 0, -1), 0xA0U);
    EXPECT_EQ(classify(-1 + e, 0, 0, -1), 0xA4U);
    EXPECT_EQ(classify(std::nextafter(-1 + e, -1.0), 0, 0, -1), 0xA0U);
    EXPECT_EQ(classify(0, e, e, 0), 0x100U);
    EXPECT_EQ(classify(0, std::nextafter(e, 1.0), std::nextafter(e, 1.0), 0), 0x6CU);
    const double t = 0.01F;
    EXPECT_EQ(classify(1, 0, 0, 1, -t), 2U);
    EXPECT_EQ(classify(1, 0, 0, 1, 0, t), 2U);
    EXPECT_EQ(classify(1, 0, 0, 1, 0, std::nextafter(-t, 0.0)), 1U);
    EXPECT_EQ(classify(1, 0, 0, 1, t), 2U);
    EXPECT_EQ(classify(1, 0, 0, 1, std::nextafter(t, 0.0)), 1U);
    const double nan = std::numeric_limits<double>::quiet_NaN();
    EXPECT_EQ(classify(nan, nan, nan, nan), 0x100U);
}

}  // namespace
