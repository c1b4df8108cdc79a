#include "holv-core/ggo/ggo-transform.h"

#include <gtest/gtest.h>

#include <bit>
#include <cfenv>
#include <cmath>
#include <limits>
#include <random>

#if defined(__SSE2__)
#include <xmmintrin.h>
#endif

namespace
{

template <typename Number> struct Parts
{
    Number scale_x = 99, scale_y = 99, shear = 99, cosine = 99, sine = 99, shift_x = 99, shift_y = 99;
    uint32_t result = 99;
    uint32_t faulted = 99;
};

Parts<double> decompose(const GGO_Matrix& m)
{
    Parts<double> p;
    p.result = ggo_decompose_double(&m, &p.scale_x, &p.scale_y, &p.shear, &p.cosine, &p.sine, &p.shift_x, &p.shift_y);
    return p;
}

Parts<float> decompose(const GGO_MatrixSingle& m)
{
    Parts<float> p;
    p.result = ggo_decompose_single(&m, &p.scale_x, &p.scale_y, &p.shear, &p.cosine, &p.sine, &p.shift_x, &p.shift_y);
    return p;
}

Parts<double> within(const GGO_Matrix& m, double p, double q)
{
    Parts<double> o;
    o.result = ggo_decompose_within_double(&m, p, q, &o.scale_x, &o.scale_y, &o.shear, &o.cosine, &o.sine, &o.shift_x,
                                           &o.shift_y);
    return o;
}

Parts<float> within(const GGO_MatrixSingle& m, float p, float q)
{
    Parts<float> o;
    o.result = ggo_decompose_within_single(&m, p, q, &o.scale_x, &o.scale_y, &o.shear, &o.cosine, &o.sine, &o.shift_x,
                                           &o.shift_y);
    return o;
}

Parts<double> trapping(const GGO_Matrix& m)
{
    Parts<double> p;
    p.result = ggo_decompose_trapping_double(&m, &p.scale_x, &p.scale_y, &p.shear, &p.cosine, &p.sine, &p.shift_x,
                                             &p.shift_y, &p.faulted);
    return p;
}

Parts<float> trapping(const GGO_MatrixSingle& m)
{
    Parts<float> p;
    p.result = ggo_decompose_trapping_single(&m, &p.scale_x, &p.scale_y, &p.shear, &p.cosine, &p.sine, &p.shift_x,
                                             &p.shift_y, &p.faulted);
    return p;
}

template <typename Number>
void expect_parts(const Parts<Number>& p, uint32_t result, const Number (&values)[7], const char* what)
{
    EXPECT_EQ(p.result, result) << what;
    EXPECT_EQ(p.scale_x, values[0]) << what;
    EXPECT_EQ(p.scale_y, values[1]) << what;
    EXPECT_EQ(p.shear, values[2]) << what;
    EXPECT_EQ(p.cosine, values[3]) << what;
    EXPECT_EQ(p.sine, values[4]) << what;
    EXPECT_EQ(p.shift_x, values[5]) << what;
    EXPECT_EQ(p.shift_y, values[6]) << what;
}

void expect_both(const double (&m)[6], uint32_t result, const double (&values)[7], const char* what)
{
    GGO_Matrix wide;
    GGO_MatrixSingle single;
    float single_values[7];
    for (int i = 0; i < 6; ++i)
    {
        wide.m[i] = m[i];
        single.m[i] = static_cast<float>(m[i]);
    }
    for (int i = 0; i < 7; ++i)
        single_values[i] = static_cast<float>(values[i]);
    expect_parts(decompose(wide), result, values, what);
    expect_parts(decompose(single), result, single_values, what);
}

TEST(Transform, ClassifiesByLiteralsOfTheNumberForm)
{
    const auto wide = [](double a, double b, double c, double d, double e)
    {
        const GGO_Matrix m = {{a, b, c, d, e, 0}};
        return ggo_classify_matrix_double(&m);
    };
    EXPECT_EQ(wide(1, 0, 0, 1, 0), 1U);
    EXPECT_EQ(wide(0, -1, 1, 0, 5), 0x62U);
    EXPECT_EQ(wide(0, -2, -3, 0, 0), 0xECU);
    EXPECT_EQ(wide(1, 0.001, 0, 1, 0), 0x100U);
    EXPECT_EQ(wide(1, std::nextafter(0.001, 0.0), 0, 1, 0), 1U);
    EXPECT_EQ(wide(1.001, 0, 0, 1, 0), 4U);
    EXPECT_EQ(wide(std::nextafter(1.001, 0.0), 0, 0, 1, 0), 1U);
    EXPECT_EQ(wide(0.999, 0, 0, 1, 0), 4U);
    EXPECT_EQ(wide(-1.001, 0, 0, -1, 0), 0xA4U);
    EXPECT_EQ(wide(-0.999, 0, 0, -1, 0), 0xA4U);
    EXPECT_EQ(wide(1, 0, 0, 1, 0.01), 2U);
    EXPECT_EQ(wide(1, 0, 0, 1, std::nextafter(0.01, 0.0)), 1U);
    // 0.001 as a float lies above the literal: the two forms for doubles differ between them.
    const GGO_Matrix between = {{1, 0.00100000001, 0, 1, 0, 0}};
    EXPECT_EQ(ggo_classify_matrix_double(&between), 0x100U);
    EXPECT_EQ(ggo_classify_matrix(&between), 1U);
}

TEST(Transform, ClassifiesInSinglePrecision)
{
    const auto single = [](float a, float b, float c, float d, float e)
    {
        const GGO_MatrixSingle m = {{a, b, c, d, e, 0}};
        return ggo_classify_matrix_single(&m);
    };
    EXPECT_EQ(single(1, 0, 0, 1, 0), 1U);
    EXPECT_EQ(single(0, 1, -1, 0, 5), 0xE2U);
    EXPECT_EQ(single(0, 0, 0, 0, 0), 0U);
    EXPECT_EQ(single(1, 0.001F, 0, 1, 0), 0x100U);
    EXPECT_EQ(single(1, std::nextafter(0.001F, 0.0F), 0, 1, 0), 1U);
    EXPECT_EQ(single(1.001F, 0, 0, 1, 0), 4U);
    EXPECT_EQ(single(std::nextafter(1.001F, 0.0F), 0, 0, 1, 0), 1U);
    EXPECT_EQ(single(0.999F, 0, 0, 1, 0), 4U);
    EXPECT_EQ(single(1, 0, 0, -0.999F, 0), 0x0CU);
    EXPECT_EQ(single(1, 0, 0, -1.001F, 0), 0x0CU);
    EXPECT_EQ(single(1, 0, 0, 1, 0.01F), 2U);
}

TEST(Transform, QuarterTurnsTakeTheShiftAlong)
{
    const double expected[4][6] = {
        {1, 2, 3, 4, 5, 6}, {-2, 1, -4, 3, -6, 5}, {-1, -2, -3, -4, -5, -6}, {2, -1, 4, -3, 6, -5}};
    for (int32_t count = -9; count <= 9; ++count)
    {
        GGO_Matrix wide = {{1, 2, 3, 4, 5, 6}};
        GGO_MatrixSingle single = {{1, 2, 3, 4, 5, 6}};
        ggo_quarter_turns_double(&wide, count);
        ggo_quarter_turns_single(&single, count);
        const int turns = ((count % 4) + 4) % 4;
        for (int i = 0; i < 6; ++i)
        {
            EXPECT_EQ(wide.m[i], expected[turns][i]) << count << " " << i;
            EXPECT_EQ(single.m[i], static_cast<float>(expected[turns][i])) << count << " " << i;
        }
    }
}

TEST(Transform, Decomposes)
{
    expect_both({1, 0, 0, 1, 5, 6}, 1, {1, 1, 0, 1, 0, 5, 6}, "identity");
    expect_both({3, 4, -8, 6, 0, 0}, 1, {5, 10, 0, 0.6, 0.8, 0, 0}, "turned and scaled");
    expect_both({2, 0, 6, 4, 0, 0}, 1, {2, 4, 3, 1, 0, 0, 0}, "sheared");
    expect_both({0, 2, 4, 0, 0, 0}, 1, {2, -4, 0, 0, 1, 0, 0}, "mirrored");
    expect_both({3, 4, 6, 8, 1, 2}, 0, {5, 0, 2, 0.6, 0.8, 1, 2}, "no scale Y");
    expect_both({0, 0, -3, 4, 1, 2}, 0, {0, 5, 0, 0.8, 0.6, 1, 2}, "no scale X");
    expect_both({0, 0, 0, 0, 1, 2}, 0, {0, 0, 0, 1, 0, 1, 2}, "nothing");
}

TEST(Transform, HypotenuseHasNoFaultsOfItsOwn)
{
    const double huge = 0x1p+1000, tiny = 0x1p-1000;
    EXPECT_EQ(decompose(GGO_Matrix{{3 * huge, 4 * huge, 0, 0, 0, 0}}).scale_x, 5 * huge);
    EXPECT_EQ(decompose(GGO_Matrix{{3 * tiny, -4 * tiny, 0, 0, 0, 0}}).scale_x, 5 * tiny);
    EXPECT_EQ(decompose(GGO_Matrix{{-huge, tiny, 0, 0, 0, 0}}).scale_x, huge);
    EXPECT_EQ(decompose(GGO_Matrix{{0x3p-1074, 0x4p-1074, 0, 0, 0, 0}}).scale_x, 0x5p-1074);
    const double infinite = std::numeric_limits<double>::infinity(), nan = std::numeric_limits<double>::quiet_NaN();
    EXPECT_EQ(decompose(GGO_Matrix{{nan, -infinite, 0, 0, 0, 0}}).scale_x, infinite);
    EXPECT_TRUE(std::isnan(decompose(GGO_Matrix{{nan, 1, 0, 0, 0, 0}}).scale_x));
    const float float_huge = 0x1p+120F;
    EXPECT_EQ(decompose(GGO_MatrixSingle{{3 * float_huge, 4 * float_huge, 0, 0, 0, 0}}).scale_x, 5 * float_huge);
    EXPECT_EQ(decompose(GGO_MatrixSingle{{0x3p-149F, 0x4p-149F, 0, 0, 0, 0}}).scale_x, 0x5p-149F);
    std::mt19937_64 random(3);
    for (int i = 0; i < 20000; ++i)
    {
        const double x = std::ldexp(static_cast<double>(random() >> 11), static_cast<int>(random() % 80) - 90);
        const double y = std::ldexp(static_cast<double>(random() >> 11), static_cast<int>(random() % 80) - 90);
        const long double exact = std::hypot(static_cast<long double>(x), static_cast<long double>(y));
        const double got = decompose(GGO_Matrix{{x, y, 0, 0, 0, 0}}).scale_x;
        const long double unit = std::nextafter(got, std::numeric_limits<double>::infinity()) - got;
        ASSERT_LE(std::fabs(got - exact), 0.501L * unit) << x << " " << y;
    }
}

TEST(Transform, HypotenuseIsRoundedOnce)
{
    const auto scale = [](double x, double y) { return decompose(GGO_Matrix{{x, y, 0, 0, 0, 0}}).scale_x; };
    EXPECT_EQ(scale(1, 1), 0x1.6a09e667f3bcdp+0);
    EXPECT_EQ(scale(1, 2), 0x1.1e3779b97f4a8p+1);
    EXPECT_EQ(scale(-0.1, 0.2), 0x1.c9f25c5bfeddap-3);
    EXPECT_EQ(scale(1, 0x1p-26), 1);
    EXPECT_EQ(scale(1, 0x1.8p-26), 0x1.0000000000001p+0);
}

TEST(Transform, DecomposesWithinATolerance)
{
    // t = (10 / 1) / 10 = 1.
    expect_parts<double>(within(GGO_Matrix{{2, 0, 0, 4, 5, 6}}, 1, 10), 1, {2, 4, 0, 1, 0, 5, 6}, "neither");
    expect_parts<double>(within(GGO_Matrix{{8, 0, 0, -0.5, 5, 6}}, 1, 10), 1, {8, -0.5, 0, 1, 0, 5, 6}, "Y, regular");
    expect_parts<double>(within(GGO_Matrix{{2, 0, 0, 0.5, 5, 6}}, 1, 10), 0, {2, 0.5, 0, 1, 0, 5, 6}, "Y, at limit");
    expect_parts<double>(within(GGO_Matrix{{0.5, 0, 0, 4, 5, 6}}, 1, 10), 1, {0.5, 4, 0, 1, 0, 5, 6}, "X, regular");
    expect_parts<double>(within(GGO_Matrix{{0.5, 0, 0, 2, 5, 6}}, 1, 10), 0, {0.5, 2, 0, 1, 0, 5, 6}, "X, at limit");
    expect_parts<double>(within(GGO_Matrix{{0.5, 0, 0.25, 0, 5, 6}}, 1, 10), 0, {0.5, 0.25, 0, 1, 0, 5, 6}, "both");
    expect_parts<double>(within(GGO_Matrix{{1, 0, 0, 1, 5, 6}}, 1, 10), 1, {1, 1, 0, 1, 0, 5, 6}, "equal to t");
    expect_parts<float>(within(GGO_MatrixSingle{{2, 0, 0, 4, 5, 6}}, 1, 10), 1, {2, 4, 0, 1, 0, 5, 6}, "neither");
    expect_parts<float>(within(GGO_MatrixSingle{{0.5F, 0, -3, 4, 5, 6}}, 1, 10), 1, {0.5F, 5, 0, 0.8F, 0.6F, 5, 6},
                        "X, regular");
    expect_parts<float>(within(GGO_MatrixSingle{{0, 0, 0, 0, 5, 6}}, 1, 10), 0, {0, 0, 0, 1, 0, 5, 6}, "both");
}

TEST(Transform, ToleranceOfZeroLetsNothingCountAsZero)
{
    const Parts<double> p = within(GGO_Matrix{{0, 0, 3, 4, 0, 0}}, 1, 0);
    EXPECT_EQ(p.result, 1U);
    EXPECT_EQ(p.scale_x, 0);
    EXPECT_TRUE(std::isnan(p.scale_y));
}

TEST(Transform, NullOutputsArePassedOver)
{
    const GGO_Matrix wide = {{1, 0, 0, 1, 0, 0}};
    const GGO_MatrixSingle single = {{1, 0, 0, 1, 0, 0}};
    double* const none = nullptr;
    float* const no = nullptr;
    EXPECT_EQ(ggo_decompose_double(&wide, none, none, none, none, none, none, none), 1U);
    EXPECT_EQ(ggo_decompose_within_single(&single, 1, 1, no, no, no, no, no, no, no), 1U);
    EXPECT_EQ(ggo_decompose_trapping_double(&wide, none, none, none, none, none, none, none, nullptr), 1U);
}

TEST(Transform, WithoutAMatrixNothingIsWritten)
{
    double d[7] = {7, 7, 7, 7, 7, 7, 7};
    float f[7] = {7, 7, 7, 7, 7, 7, 7};
    uint32_t faulted = 9;
    EXPECT_EQ(ggo_classify_matrix_double(nullptr), 0U);
    EXPECT_EQ(ggo_classify_matrix_single(nullptr), 0U);
    ggo_quarter_turns_double(nullptr, 1);
    ggo_quarter_turns_single(nullptr, 1);
    EXPECT_EQ(ggo_decompose_double(nullptr, d, d + 1, d + 2, d + 3, d + 4, d + 5, d + 6), 0U);
    EXPECT_EQ(ggo_decompose_single(nullptr, f, f + 1, f + 2, f + 3, f + 4, f + 5, f + 6), 0U);
    EXPECT_EQ(ggo_decompose_within_double(nullptr, 1, 1, d, d + 1, d + 2, d + 3, d + 4, d + 5, d + 6), 0U);
    EXPECT_EQ(ggo_decompose_within_single(nullptr, 1, 1, f, f + 1, f + 2, f + 3, f + 4, f + 5, f + 6), 0U);
    EXPECT_EQ(ggo_decompose_trapping_double(nullptr, d, d + 1, d + 2, d + 3, d + 4, d + 5, d + 6, &faulted), 0U);
    EXPECT_EQ(faulted, 0U);
    faulted = 9;
    EXPECT_EQ(ggo_decompose_trapping_single(nullptr, f, f + 1, f + 2, f + 3, f + 4, f + 5, f + 6, &faulted), 0U);
    EXPECT_EQ(faulted, 0U);
    for (int i = 0; i < 7; ++i)
    {
        EXPECT_EQ(d[i], 7);
        EXPECT_EQ(f[i], 7.0F);
    }
    EXPECT_EQ(ggo_transform_box_within_double(nullptr, {1, 2, 3, 4}, 10).gbf_MaxY, 4);
    EXPECT_EQ(ggo_transform_box_within_single(nullptr, {1, 2, 3, 4}, 10).gbs_MinX, 1.0F);
    EXPECT_EQ(ggo_transform_box_stepped_double(nullptr, {1, 2, 3, 4}).gbf_MaxX, 3);
    EXPECT_EQ(ggo_transform_box_stepped_single(nullptr, {1, 2, 3, 4}).gbs_MinY, 2.0F);
}

TEST(Trapping, SoundMatricesComeThrough)
{
    const Parts<double> p = trapping(GGO_Matrix{{3, 4, -8, 6, 1, 2}});
    EXPECT_EQ(p.faulted, 0U);
    expect_parts<double>(p, 1, {5, 10, 0, 0.6, 0.8, 1, 2}, "double");
    const Parts<float> s = trapping(GGO_MatrixSingle{{0, 0, -3, 4, 1, 2}});
    EXPECT_EQ(s.faulted, 0U);
    expect_parts<float>(s, 0, {0, 5, 0, 0.8F, 0.6F, 1, 2}, "single");
    // An inexact result is no fault; nor is a denormal shift, which is only copied; nor a quiet NaN.
    EXPECT_EQ(trapping(GGO_Matrix{{1, 1, -1, 1, 0x1p-1074, 0}}).faulted, 0U);
    EXPECT_EQ(trapping(GGO_Matrix{{std::numeric_limits<double>::quiet_NaN(), 0, 0, 1, 0, 0}}).faulted, 0U);
}

void expect_fault(const GGO_Matrix& m, const char* what)
{
    const Parts<double> p = trapping(m);
    EXPECT_EQ(p.faulted, 1U) << what;
    expect_parts<double>(p, 0, {99, 99, 99, 99, 99, 99, 99}, what);
}

void expect_fault(const GGO_MatrixSingle& m, const char* what)
{
    const Parts<float> p = trapping(m);
    EXPECT_EQ(p.faulted, 1U) << what;
    expect_parts<float>(p, 0, {99, 99, 99, 99, 99, 99, 99}, what);
}

TEST(Trapping, FaultsAreCaughtAndNothingIsWritten)
{
    const double infinite = std::numeric_limits<double>::infinity();
    expect_fault(GGO_Matrix{{0x1p+1000, 0, 0, 0x1p+1000, 0, 0}}, "overflow");
    expect_fault(GGO_Matrix{{0x1p-600, 0, 0, 0x1.000001p-600, 0, 0}}, "underflow");
    expect_fault(GGO_Matrix{{0x1p-600, 0, 0, 1, 0, 0}}, "square of scale X is gone");
    expect_fault(GGO_Matrix{{infinite, 0, 0, 1, 0, 0}}, "invalid");
    expect_fault(GGO_Matrix{{1, 0, 0, 0x1p-1074, 0, 0}}, "denormal operand");
    expect_fault(GGO_Matrix{{0, 0, 0, 0x1p-1074, 0, 0}}, "denormal operand on the other way");
    expect_fault(GGO_Matrix{{0x1p+600, 0, 0, 0x1p-460, 0, 0}}, "square of scale X is too large");
    const float single_infinite = std::numeric_limits<float>::infinity();
    expect_fault(GGO_MatrixSingle{{0x1p+100F, 0, 0, 0x1p+100F, 0, 0}}, "overflow");
    expect_fault(GGO_MatrixSingle{{0x1p-70F, 0, 0, 0x1.0002p-70F, 0, 0}}, "underflow");
    expect_fault(GGO_MatrixSingle{{single_infinite, 0, 0, 1, 0, 0}}, "invalid");
    expect_fault(GGO_MatrixSingle{{1, 0, 0, 0x1p-149F, 0, 0}}, "denormal operand");
}

TEST(Trapping, AnExactDenormalResultIsAFault)
{
    // The sine is 2^-1060 exactly, which raises no flag while faults are masked.
    expect_fault(GGO_Matrix{{0x1p+100, 0x1p-960, 1, 1, 0, 0}}, "double");
    expect_fault(GGO_MatrixSingle{{0x1p+40F, 0x1p-100F, 1, 1, 0, 0}}, "single");
    // One more bit makes it normal.
    EXPECT_EQ(trapping(GGO_Matrix{{0x1p+100, 0x1p-922, 1, 1, 0, 0}}).faulted, 0U);
    EXPECT_EQ(trapping(GGO_MatrixSingle{{0x1p+40F, 0x1p-86F, 1, 1, 0, 0}}).faulted, 0U);
}

#if defined(__SSE2__)
TEST(Trapping, RestoresTheControlWordAndClearsWhatIsPending)
{
    const unsigned usual = _mm_getcsr();
    // Rounding toward zero, inexact results pending; then with overflow and zero-divide not masked, too.
    for (const unsigned control : {0x1F80U, 0x7F80U, 0x1980U})
    {
        for (const GGO_Matrix& m : {GGO_Matrix{{3, 4, -8, 6, 1, 2}}, GGO_Matrix{{0x1p+1000, 0, 0, 0x1p+1000, 0, 0}}})
        {
            _mm_setcsr(control | ((control & 0x1000) >> 7));
            Parts<double> p;
            ggo_decompose_trapping_double(&m, &p.scale_x, &p.scale_y, &p.shear, &p.cosine, &p.sine, &p.shift_x,
                                          &p.shift_y, &p.faulted);
            const unsigned behind = _mm_getcsr();
            _mm_setcsr(usual);
            EXPECT_EQ(behind, control);
        }
    }
}
#endif

TEST(Step, TwelveUnitsInTheLastPlace)
{
    const auto up = [](uint64_t bits)
    { return std::bit_cast<uint64_t>(ggo_step_up_double(std::bit_cast<double>(bits))); };
    const auto down = [](uint64_t bits)
    { return std::bit_cast<uint64_t>(ggo_step_down_double(std::bit_cast<double>(bits))); };
    EXPECT_EQ(up(0x3FF0000000000000), 0x3FF000000000000CU);
    EXPECT_EQ(down(0x3FF0000000000000), 0x3FEFFFFFFFFFFFF4U);
    EXPECT_EQ(up(0xBFF0000000000000), 0xBFEFFFFFFFFFFFF4U);
    EXPECT_EQ(down(0xBFF0000000000000), 0xBFF000000000000CU);
    EXPECT_EQ(up(0), 12U);
    EXPECT_EQ(down(0), 0x800000000000000CU);
    EXPECT_EQ(up(0x8000000000000000), 12U);
    EXPECT_EQ(down(5), 0x8000000000000007U);
    EXPECT_EQ(up(0x8000000000000005), 7U);
    EXPECT_EQ(down(12), 0U);
    EXPECT_EQ(up(0x800000000000000C), 0x8000000000000000U);
    EXPECT_EQ(up(0x7FEFFFFFFFFFFFFF), 0x7FF0000000000000U);
    EXPECT_EQ(up(0x7FF0000000000000), 0x7FF0000000000000U);
    EXPECT_EQ(down(0x7FF0000000000000), 0x7FEFFFFFFFFFFFF4U);
    EXPECT_EQ(down(0xFFF0000000000000), 0xFFF0000000000000U);
    EXPECT_EQ(up(0x7FF8000000000001), 0x7FF8000000000001U);
}

TEST(Step, TwelveUnitsInTheLastPlaceOfASingle)
{
    const auto up = [](uint32_t bits)
    { return std::bit_cast<uint32_t>(ggo_step_up_single(std::bit_cast<float>(bits))); };
    const auto down = [](uint32_t bits)
    { return std::bit_cast<uint32_t>(ggo_step_down_single(std::bit_cast<float>(bits))); };
    EXPECT_EQ(up(0x3F800000), 0x3F80000CU);
    EXPECT_EQ(down(0x3F800000), 0x3F7FFFF4U);
    EXPECT_EQ(down(5), 0x80000007U);
    EXPECT_EQ(up(0x80000000), 12U);
    EXPECT_EQ(up(0x7F7FFFFF), 0x7F800000U);
    EXPECT_EQ(down(0xFFC00001), 0xFFC00001U);
}

void expect_box(const GGO_BoxFloat& box, double min_x, double min_y, double max_x, double max_y)
{
    EXPECT_EQ(box.gbf_MinX, min_x);
    EXPECT_EQ(box.gbf_MinY, min_y);
    EXPECT_EQ(box.gbf_MaxX, max_x);
    EXPECT_EQ(box.gbf_MaxY, max_y);
}

TEST(BoxTransform, TakesTheCornerThatTheSignsChoose)
{
    const GGO_Matrix m = {{2, -3, -5, 7, 100, 200}};
    expect_box(ggo_transform_box_within_double(&m, {1, 2, 3, 4}, 0), 82, 205, 96, 225);
    expect_box(ggo_transform_box_within_double(&m, {1, 2, 3, 4}, 5), 81.5, 204.5, 96.5, 225.5);
    const GGO_MatrixSingle s = {{2, -3, -5, 7, 100, 200}};
    const GGO_BoxSingle box = ggo_transform_box_within_single(&s, {1, 2, 3, 4}, 5);
    EXPECT_EQ(box.gbs_MinX, 81.5F);
    EXPECT_EQ(box.gbs_MinY, 204.5F);
    EXPECT_EQ(box.gbs_MaxX, 96.5F);
    EXPECT_EQ(box.gbs_MaxY, 225.5F);
}

TEST(BoxTransform, WidensByTwelveUnits)
{
    const GGO_Matrix m = {{1, 0, 0, -1, 0, 0}};
    const GGO_BoxFloat box = ggo_transform_box_stepped_double(&m, {0, 1, 2, 4});
    expect_box(box, std::bit_cast<double>(0x800000000000000C), std::bit_cast<double>(0xC01000000000000C),
               std::bit_cast<double>(0x400000000000000C), std::bit_cast<double>(0xBFEFFFFFFFFFFFF4));
    const GGO_MatrixSingle s = {{1, 0, 0, 1, 0, 0}};
    const GGO_BoxSingle single = ggo_transform_box_stepped_single(&s, {1, 1, 2, 2});
    EXPECT_EQ(single.gbs_MinX, std::bit_cast<float>(0x3F7FFFF4));
    EXPECT_EQ(single.gbs_MaxY, std::bit_cast<float>(0x4000000C));
}

TEST(BoxTransform, EmptyBoxStays)
{
    const GGO_Matrix m = {{2, 0, 0, 2, 5, 5}};
    expect_box(ggo_transform_box_within_double(&m, {1, 1, -1, 5}, 7), 1, 1, -1, 5);
    expect_box(ggo_transform_box_stepped_double(&m, {1, 1, 5, 0}), 1, 1, 5, 0);
    expect_box(ggo_transform_box_within_double(&m, {1, 1, 1, 1}, 0), 7, 7, 7, 7);
    const GGO_MatrixSingle s = {{2, 0, 0, 2, 5, 5}};
    EXPECT_EQ(ggo_transform_box_stepped_single(&s, {1, 1, -1, -1}).gbs_MinX, 1.0F);
    EXPECT_EQ(ggo_transform_box_within_single(&s, {1, 1, -1, -1}, 7).gbs_MinX, 1.0F);
}

}  // namespace
