#include "holv-core/ggo/ggo-fixed-matrix.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <initializer_list>
#include <limits>
#include <random>

namespace
{

__extension__ typedef __int128 Wide;

constexpr int32_t kOne = 0x10000;
constexpr int32_t kMin = std::numeric_limits<int32_t>::min();
constexpr int32_t kMax = std::numeric_limits<int32_t>::max();

int32_t x_of(uint64_t point)
{
    return static_cast<int32_t>(static_cast<uint32_t>(point));
}

int32_t y_of(uint64_t point)
{
    return static_cast<int32_t>(static_cast<uint32_t>(point >> 32));
}

void expect_matrix(const GGO_MatrixFixed& matrix, const int32_t (&expected)[6])
{
    for (int i = 0; i < 6; ++i)
        EXPECT_EQ(matrix.m[i], expected[i]) << i;
}

TEST(FixedMatrix, ConvertsAndClassifies)
{
    const GGO_MatrixFixed fixed = {{kOne, -kOne / 2, 1, kMin, 0x180, -1}};
    const GGO_Matrix wide = ggo_matrix_from_fixed(&fixed);
    const double expected[6] = {1, -0.5, 0x1p-16, -32768, 1.5, -0.00390625};
    for (int i = 0; i < 6; ++i)
        EXPECT_EQ(wide.m[i], expected[i]) << i;
    const auto classify = [](const GGO_MatrixFixed& matrix) { return ggo_classify_matrix_fixed(&matrix); };
    EXPECT_EQ(classify({{kOne, 0, 0, kOne, 0, 0}}), 1U);
    EXPECT_EQ(classify({{kOne, 0, 0, kOne, 2, 0}}), 1U);
    EXPECT_EQ(classify({{kOne, 0, 0, kOne, 3, 0}}), 2U);
    EXPECT_EQ(classify({{0, -kOne, kOne, 0, 0, 0}}), 0x60U);
    EXPECT_EQ(classify({{kOne, 65, 0, kOne, 0, 0}}), 1U);
    EXPECT_EQ(classify({{kOne, 66, 0, kOne, 0, 0}}), 0x100U);
}

TEST(FixedMatrix, QuarterTurns)
{
    const int32_t expected[4][6] = {
        {1, 2, 3, 4, 5, 6}, {-2, 1, -4, 3, -6, 5}, {-1, -2, -3, -4, -5, -6}, {2, -1, 4, -3, 6, -5}};
    for (int32_t count = -6; count <= 6; ++count)
    {
        GGO_MatrixFixed matrix = {{1, 2, 3, 4, 5, 6}};
        ggo_quarter_turns_fixed(&matrix, count);
        expect_matrix(matrix, expected[((count % 4) + 4) % 4]);
    }
    GGO_MatrixFixed most_negative = {{kMin, 1, 0, 0, 0, 0}};
    ggo_quarter_turns_fixed(&most_negative, 2);
    expect_matrix(most_negative, {kMin, -1, 0, 0, 0, 0});
}

TEST(FixedMatrix, TransformsPoints)
{
    const GGO_MatrixFixed matrix = {{2 * kOne, kOne / 2, -kOne, 3 * kOne, 256, -256}};
    uint32_t flags = 99;
    const uint64_t point = ggo_transform_point_fixed(&matrix, ggo_pack_point_fixed(10 * 256, 4 * 256), &flags);
    EXPECT_EQ(flags, 0U);
    EXPECT_EQ(x_of(point), (20 - 4 + 1) * 256);
    EXPECT_EQ(y_of(point), (5 + 12 - 1) * 256);
    EXPECT_EQ(ggo_pack_point_fixed(-1, 1), 0x00000001FFFFFFFFU);
    EXPECT_EQ(ggo_transform_point_fixed(&matrix, 0, nullptr), ggo_pack_point_fixed(256, -256));
}

TEST(FixedMatrix, PointsReportOverflowAndUnderflow)
{
    const GGO_MatrixFixed twice = {{2 * kOne, 0, 0, kOne, 0, 0}};
    uint32_t flags = 99;
    uint64_t point = ggo_transform_point_fixed(&twice, ggo_pack_point_fixed(0x40000000, 0), &flags);
    EXPECT_EQ(flags, 1U);
    EXPECT_EQ(x_of(point), kMin);
    const GGO_MatrixFixed half = {{kOne / 2, 0, 0, kOne, 0, 0}};
    point = ggo_transform_point_fixed(&half, ggo_pack_point_fixed(-1, 7), &flags);
    EXPECT_EQ(flags, 2U);
    EXPECT_EQ(x_of(point), 0);
    EXPECT_EQ(y_of(point), 7);
    point = ggo_transform_point_fixed(&half, ggo_pack_point_fixed(-3, 0), &flags);
    EXPECT_EQ(flags, 0U);
    EXPECT_EQ(x_of(point), -1);
    // Four times 2^22 wraps to nothing: both flags.
    const GGO_MatrixFixed four = {{0x400 * kOne, 0, 0, kOne, 0, 0}};
    point = ggo_transform_point_fixed(&four, ggo_pack_point_fixed(0x40000000, 0), &flags);
    EXPECT_EQ(flags, 3U);
    EXPECT_EQ(x_of(point), 0);
}

TEST(FixedMatrix, ProductLetsTheFirstActFirst)
{
    const GGO_MatrixFixed first = {{2 * kOne, 3 * kOne, 5 * kOne, 7 * kOne, 11 * 256, 13 * 256}};
    const GGO_MatrixFixed then = {{17 * kOne, 19 * kOne, 23 * kOne, 29 * kOne, 31 * 256, 37 * 256}};
    GGO_MatrixFixed product;
    EXPECT_EQ(ggo_multiply_fixed(&first, &then, &product), 0U);
    expect_matrix(product, {(2 * 17 + 3 * 23) * kOne, (2 * 19 + 3 * 29) * kOne, (5 * 17 + 7 * 23) * kOne,
                            (5 * 19 + 7 * 29) * kOne, (11 * 17 + 13 * 23 + 31) * 256, (11 * 19 + 13 * 29 + 37) * 256});
    GGO_MatrixFixed same = first;
    EXPECT_EQ(ggo_multiply_fixed(&same, &then, &same), 0U);
    expect_matrix(same, {product.m[0], product.m[1], product.m[2], product.m[3], product.m[4], product.m[5]});
}

TEST(FixedMatrix, ProductSumsBeforeItNarrows)
{
    // Two halves of the smallest step make a whole one; one alone is lost, toward zero.
    const GGO_MatrixFixed halves = {{kOne / 2, kOne / 2, 0, 0, 0, 0}};
    const GGO_MatrixFixed step = {{1, 0, 1, 0, 0, 0}};
    GGO_MatrixFixed product;
    EXPECT_EQ(ggo_multiply_fixed(&halves, &step, &product), 0U);
    EXPECT_EQ(product.m[0], 1);
    const GGO_MatrixFixed half = {{-kOne / 2, 0, 0, 0, 0, 0}};
    EXPECT_EQ(ggo_multiply_fixed(&half, &step, &product), 2U);
    EXPECT_EQ(product.m[0], 0);
    const GGO_MatrixFixed large = {{0x200 * kOne, 0, 0, 0, 0, 0}};
    EXPECT_EQ(ggo_multiply_fixed(&large, &large, &product), 3U);
    EXPECT_EQ(product.m[0], 0);
}

TEST(FixedMatrix, Scales)
{
    GGO_MatrixFixed matrix = {{kOne, kOne, -3 * kOne, 5 * kOne, 256, -512}};
    EXPECT_EQ(ggo_scale_fixed(&matrix, kOne / 2, -2 * kOne), 0U);
    expect_matrix(matrix, {kOne / 2, -2 * kOne, -3 * kOne / 2, -10 * kOne, 128, 1024});
    // Linear values go to the lower one, the shift toward zero.
    GGO_MatrixFixed small = {{-1, 0, 0, 0, -1, 0}};
    EXPECT_EQ(ggo_scale_fixed(&small, kOne / 2, kOne), 2U);
    expect_matrix(small, {-1, 0, 0, 0, 0, 0});
    GGO_MatrixFixed lost = {{1, 0, 0, 0, 0, 0}};
    EXPECT_EQ(ggo_scale_fixed(&lost, kOne / 2, kOne), 2U);
    GGO_MatrixFixed large = {{kMin, 0, 0, 0x4000 * kOne, 0, 0}};
    EXPECT_EQ(ggo_scale_fixed(&large, kOne, 2 * kOne), 1U);
    expect_matrix(large, {kMin, 0, 0, kMin, 0, 0});
    GGO_MatrixFixed gone = {{0x1000000, 0, 0, 0, 0, 0}};
    EXPECT_EQ(ggo_scale_fixed(&gone, 0x1000000, kOne), 3U);
    expect_matrix(gone, {0, 0, 0, 0, 0, 0});
}

uint32_t divide(int32_t numerator, int64_t determinant, uint32_t guarded, uint32_t expected_flags)
{
    uint32_t flags = 99;
    const uint32_t word = ggo_packed_divide(numerator, determinant, guarded, &flags);
    EXPECT_EQ(flags, expected_flags) << numerator << " / " << determinant;
    return word;
}

TEST(PackedDivision, Literals)
{
    const int64_t one = INT64_C(1) << 32;
    EXPECT_EQ(divide(kOne, one, 0, 0), 0x80001U);
    EXPECT_EQ(divide(kOne, 2 * one, 0, 0), 0x80000U);
    EXPECT_EQ(divide(kOne, 4 * one, 0, 0), 0x8000FU);
    EXPECT_EQ(divide(-kOne, one, 0, 0), 0x100000U);
    EXPECT_EQ(divide(kOne, 3 * one, 0, 0), 0xAAABFU);
    EXPECT_EQ(divide(-kOne, 3 * one, 0, 0), 0x15555FU);
    EXPECT_EQ(divide(kOne, -3 * one, 0, 0), 0x15555FU);
}

// With this divisor the numerator is the quotient.
constexpr int64_t kPlain = INT64_C(1) << 46;

TEST(PackedDivision, RoundsAwayUnlessTheMantissaIsFull)
{
    EXPECT_EQ(divide(0x7FFF8000, kPlain, 0, 0), 0xFFFF1U);
    EXPECT_EQ(divide(0x7FFFFFFF, kPlain, 0, 0), 0xFFFF1U);
    EXPECT_EQ(divide(0x3FFFFFFF, kPlain, 0, 0), 0x80001U);
    EXPECT_EQ(divide(0x3FFF8001, kPlain, 0, 0), 0xFFFF0U);
    EXPECT_EQ(divide(0x0001FFFF, kPlain, 0, 0), 0x80004U);
    EXPECT_EQ(divide(-0x10001, kPlain, 0, 0), 0x17FFF3U);
}

TEST(PackedDivision, SmallQuotientsStandAsTheyAre)
{
    EXPECT_EQ(divide(0, kPlain, 0, 0), 0x2U);
    EXPECT_EQ(divide(5, kPlain, 0, 0), 0x52U);
    EXPECT_EQ(divide(-1, kPlain, 0, 0), 0x1FFFF2U);
    EXPECT_EQ(divide(0xFFFF, kPlain, 0, 0), 0xFFFF2U);
    EXPECT_EQ(divide(-0x10000, kPlain, 0, 0), 0x100002U);
    EXPECT_EQ(divide(0x10000, kPlain, 0, 0), 0x80003U);
}

TEST(PackedDivision, Bounds)
{
    const int64_t one = INT64_C(1) << 32;
    EXPECT_EQ(divide(2 * kOne, one, 0, 1), 0xFFFF1U);
    EXPECT_EQ(divide(-2 * kOne, one, 0, 0), 0x100001U);
    EXPECT_EQ(divide(-2 * kOne - 1, one, 0, 1), 0x100001U);
    EXPECT_EQ(divide(0x7FFD7FFF, kPlain, 1, 0), 0xFFFB1U);
    EXPECT_EQ(divide(0x7FFD8000, kPlain, 1, 1), 0xFFFF1U);
    EXPECT_EQ(divide(0x7FFD8000, kPlain, 0, 0), 0xFFFB1U);
    EXPECT_EQ(divide(-0x7FFD8000, kPlain, 1, 0), 0x100051U);
    EXPECT_EQ(divide(-0x7FFD8001, kPlain, 1, 1), 0x100001U);
}

TEST(PackedDivision, DeterminantLosesItsLowBitsTowardZero)
{
    EXPECT_EQ(divide(1, 0xFFFF, 0, 0), 0x80001U);
    EXPECT_EQ(divide(1, -0xFFFF, 0, 0), 0x80001U);
    EXPECT_EQ(divide(2, 0xFFFF, 0, 1), 0xFFFF1U);
    EXPECT_EQ(divide(-2, 0, 0, 0), 0x100001U);
    EXPECT_EQ(divide(-3, 0, 0, 1), 0x100001U);
    EXPECT_EQ(divide(0, 0, 1, 0), 0x2U);
    EXPECT_EQ(divide(1, -0x1FFFF, 0, 0), 0x100000U);
    EXPECT_EQ(ggo_packed_divide(1, 0x10000, 0, nullptr), 0x80001U);
}

TEST(PackedDivision, AMillionRandomOperandsAgainstWideIntegers)
{
    std::mt19937_64 random(11);
    for (int i = 0; i < 1000000; ++i)
    {
        const auto numerator = static_cast<int32_t>(static_cast<uint32_t>(random() >> (32 + random() % 32)));
        const auto determinant = static_cast<int64_t>(random()) >> (random() % 48);
        const Wide size = determinant < 0 ? -static_cast<Wide>(determinant) : determinant;
        const Wide divisor = determinant < 0 ? -(size >> 16) : size >> 16;
        const Wide dividend = static_cast<Wide>(numerator) << 30;
        const Wide quotient = divisor == 0 ? dividend : dividend / divisor;
        uint32_t flags = 99;
        const uint32_t word = ggo_packed_divide(numerator, determinant, 0, &flags);
        ASSERT_EQ(word & ~0x1FFFFFU, 0U);
        ASSERT_EQ(flags, quotient > kMax || quotient < kMin ? 1U : 0U) << numerator << " / " << determinant;
        if (flags != 0)
            continue;
        // The word, read back, lies within one unit of its last place, above for positive, below for negative.
        const int s = (word & 15) <= 1 ? static_cast<int>(word & 15) : static_cast<int>(word & 15) - 16;
        const int32_t mantissa = static_cast<int32_t>(word << 11) >> 15;
        const Wide unit = static_cast<Wide>(1) << (s + 14);
        const Wide error = mantissa * unit - quotient;
        ASSERT_TRUE(quotient > 0 ? (error >= 0 || word == 0xFFFF1) && error < unit : error <= 0 && error > -unit)
            << numerator << " / " << determinant;
    }
}

// The division by its bounds, its scan and its rounding, in plain integers of 128 bits.
uint32_t want_packed(int32_t numerator, int64_t determinant, bool guarded, uint32_t* flags)
{
    const Wide size = (determinant < 0 ? -static_cast<Wide>(determinant) : determinant) / 65536;
    const Wide dividend = static_cast<Wide>(numerator) * 1073741824;
    const Wide quotient = size == 0 ? dividend : dividend / (determinant < 0 ? -size : size);
    *flags = 0;
    if (quotient > (guarded ? 2147319807 : 2147483647) || quotient < (guarded ? -2147319808LL : -2147483648LL))
    {
        *flags = 1;
        return quotient > 0 ? 1048561 : 1048577;
    }
    // A mantissa of 16 bits with its first bit set, if positive; the same one's complement, if negative.
    int s = 1;
    while (s > -14 && (quotient < 0 ? -quotient - 1 : quotient) < static_cast<Wide>(1) << (s + 29))
        --s;
    const Wide unit = static_cast<Wide>(1) << (s + 14);
    Wide mantissa = quotient / unit;
    const bool exact = mantissa * unit == quotient;
    if (quotient < 0 && !exact)
        --mantissa;
    if (quotient > 0 && !exact && (mantissa < 65535 || s < 1))
        ++mantissa;
    if (mantissa == 65536)
    {
        mantissa = 32768;
        ++s;
    }
    return static_cast<uint32_t>(mantissa * 16 + (s & 15)) & 2097151;
}

TEST(PackedDivision, AMillionRandomOperandsToTheBit)
{
    std::mt19937_64 random(17);
    for (int i = 0; i < 1000000; ++i)
    {
        const auto numerator = static_cast<int32_t>(static_cast<uint32_t>(random())) >> (random() % 32);
        const bool guarded = (random() & 1) != 0;
        const int64_t determinant = i % 3 == 0 ? INT64_C(1) << 46 : static_cast<int64_t>(random()) >> (random() % 64);
        uint32_t flags = 99, want_flags = 99;
        const uint32_t want = want_packed(numerator, determinant, guarded, &want_flags);
        ASSERT_EQ(ggo_packed_divide(numerator, determinant, guarded ? 1 : 0, &flags), want)
            << numerator << " / " << determinant;
        ASSERT_EQ(flags, want_flags) << numerator << " / " << determinant;
    }
}

TEST(FixedMatrix, InvertsTheLinearPart)
{
    const GGO_MatrixFixed matrix = {{2 * kOne, kOne, 0, 4 * kOne, 99, 99}};
    uint32_t words[4] = {9, 9, 9, 9};
    uint32_t invertible = 99;
    EXPECT_EQ(ggo_invert_fixed(&matrix, 0, words, &invertible), 0U);
    EXPECT_EQ(invertible, 1U);
    EXPECT_EQ(words[0], 0x80000U);   // 1/2
    EXPECT_EQ(words[1], 0x10000DU);  // -1/8
    EXPECT_EQ(words[2], 0x2U);       // 0
    EXPECT_EQ(words[3], 0x8000FU);   // 1/4
}

TEST(FixedMatrix, InverseReportsAndLeavesWordsWithoutOne)
{
    const GGO_MatrixFixed singular = {{2 * kOne, kOne, 4 * kOne, 2 * kOne, 0, 0}};
    uint32_t words[4] = {9, 9, 9, 9};
    uint32_t invertible = 99;
    EXPECT_EQ(ggo_invert_fixed(&singular, 0, words, &invertible), 0U);
    EXPECT_EQ(invertible, 0U);
    EXPECT_EQ(words[0], 9U);
    const GGO_MatrixFixed quarter = {{kOne / 4, 0, 0, kOne, 0, 0}};
    EXPECT_EQ(ggo_invert_fixed(&quarter, 0, words, &invertible), 1U);
    EXPECT_EQ(words[0], 0xFFFF1U);
    EXPECT_EQ(words[3], 0x80001U);
    // 1.99997: within the plain bounds, outside the guarded ones.
    const GGO_MatrixFixed nearly_half = {{kOne / 2 + 1, 0, 0, kOne, 0, 0}};
    EXPECT_EQ(ggo_invert_fixed(&nearly_half, 0, words, nullptr), 0U);
    EXPECT_EQ(words[0], 0xFFFF1U);
    EXPECT_EQ(ggo_invert_fixed(&nearly_half, 1, words, nullptr), 1U);
    const GGO_MatrixFixed most = {{kMin, kMin, kMax, kMin, 0, 0}};
    EXPECT_EQ(ggo_invert_fixed(&most, 0, words, &invertible), 0U);
    EXPECT_EQ(invertible, 1U);
    const GGO_MatrixFixed over = {{kMin, kMax, kMin, kMin, 0, 0}};
    EXPECT_EQ(ggo_invert_fixed(&over, 0, words, &invertible) & 1U, 0U);
}

GGO_PartsFixed decompose(const GGO_MatrixFixed& matrix, uint32_t expected_result, uint32_t expected_flags)
{
    GGO_PartsFixed parts;
    uint32_t flags = 99;
    EXPECT_EQ(ggo_decompose_fixed(&matrix, &parts, &flags), expected_result);
    EXPECT_EQ(flags, expected_flags);
    return parts;
}

TEST(FixedMatrix, Decomposes)
{
    const GGO_PartsFixed p = decompose({{3 * kOne, 4 * kOne, -8 * kOne, 6 * kOne, 256, -512}}, 1, 0);
    EXPECT_EQ(p.scale_x, 5 * kOne);
    EXPECT_EQ(p.scale_y, 10 * kOne);
    EXPECT_EQ(p.shear, 0);
    EXPECT_EQ(p.cosine, 39321);
    EXPECT_EQ(p.sine, 52428);
    EXPECT_EQ(p.shift_x, 256);
    EXPECT_EQ(p.shift_y, -512);
    EXPECT_EQ(p.ratio, -87381);
    const GGO_PartsFixed sheared = decompose({{2 * kOne, 0, 6 * kOne, 4 * kOne, 0, 0}}, 1, 0);
    EXPECT_EQ(sheared.scale_x, 2 * kOne);
    EXPECT_EQ(sheared.scale_y, 4 * kOne);
    EXPECT_EQ(sheared.shear, 3 * kOne);
    EXPECT_EQ(sheared.ratio, 3 * kOne / 2);
}

TEST(FixedMatrix, DecomposesWhatHasNoScale)
{
    const GGO_PartsFixed no_x = decompose({{0, 0, -3 * kOne, 4 * kOne, 0, 0}}, 0, 0);
    EXPECT_EQ(no_x.scale_x, 0);
    EXPECT_EQ(no_x.scale_y, 5 * kOne);
    EXPECT_EQ(no_x.shear, 0);
    EXPECT_EQ(no_x.sine, 39321);
    EXPECT_EQ(no_x.cosine, 52428);
    const GGO_PartsFixed nothing = decompose({{0, 0, 0, 0, 0, 0}}, 0, 0);
    EXPECT_EQ(nothing.scale_y, 0);
    EXPECT_EQ(nothing.cosine, kOne);
    EXPECT_EQ(nothing.sine, 0);
    EXPECT_EQ(nothing.ratio, kMax);
    const GGO_PartsFixed no_y = decompose({{kOne, 0, kOne, 0, 0, 0}}, 0, 0);
    EXPECT_EQ(no_y.scale_x, kOne);
    EXPECT_EQ(no_y.shear, kOne);
    EXPECT_EQ(no_y.ratio, kMax);
    EXPECT_EQ(decompose({{kMin, kMin, 0, kOne, 0, 0}}, 0, 1).scale_x, 0);
}

TEST(FixedMatrix, WithoutAMatrixNothingIsWritten)
{
    GGO_MatrixFixed unit = {{65536, 0, 0, 65536, 0, 0}};
    GGO_PartsFixed parts = {};
    parts.ratio = 7;
    uint32_t flags = 9, invertible = 9, inverse[4] = {7, 7, 7, 7};
    EXPECT_EQ(ggo_matrix_from_fixed(nullptr).m[0], 0);
    EXPECT_EQ(ggo_classify_matrix_fixed(nullptr), 0U);
    ggo_quarter_turns_fixed(nullptr, 1);
    EXPECT_EQ(ggo_transform_point_fixed(nullptr, 0x500000003, &flags), 0x500000003U);
    EXPECT_EQ(flags, 0U);
    EXPECT_EQ(ggo_multiply_fixed(nullptr, &unit, &unit), 0U);
    EXPECT_EQ(ggo_multiply_fixed(&unit, nullptr, &unit), 0U);
    EXPECT_EQ(ggo_multiply_fixed(&unit, &unit, nullptr), 0U);
    EXPECT_EQ(unit.m[0], 65536);
    EXPECT_EQ(ggo_scale_fixed(nullptr, 65536, 65536), 0U);
    EXPECT_EQ(ggo_invert_fixed(nullptr, 0, inverse, &invertible), 0U);
    EXPECT_EQ(invertible, 0U);
    EXPECT_EQ(inverse[0], 7U);
    flags = 9;
    EXPECT_EQ(ggo_decompose_fixed(nullptr, &parts, &flags), 0U);
    EXPECT_EQ(flags, 0U);
    EXPECT_EQ(parts.ratio, 7);
    EXPECT_EQ(ggo_decompose_fixed(&unit, nullptr, &flags), 0U);
    flags = 9;
    EXPECT_EQ(ggo_transform_box_fixed(nullptr, {1, 2, 3, 4}, nullptr, &flags).gbx_MaxX, 3);
    EXPECT_EQ(flags, 0U);
}

TEST(FixedMatrix, InverseWithoutRoomForItsWords)
{
    const GGO_MatrixFixed unit = {{65536, 0, 0, 65536, 0, 0}};
    uint32_t invertible = 9;
    EXPECT_EQ(ggo_invert_fixed(&unit, 0, nullptr, &invertible), 0U);
    EXPECT_EQ(invertible, 1U);
}

TEST(FixedMatrix, TransformsBoxes)
{
    const GGO_MatrixFixed matrix = {{2 * kOne, -3 * kOne, -5 * kOne, 7 * kOne, 100 * 256, 200 * 256}};
    uint64_t corners[4] = {0, 0, 0, 0};
    uint32_t flags = 99;
    const GGO_BoxFixed box = ggo_transform_box_fixed(&matrix, {256, 2 * 256, 3 * 256, 4 * 256}, corners, &flags);
    EXPECT_EQ(flags, 0U);
    EXPECT_EQ(box.gbx_MinX, 82 * 256);
    EXPECT_EQ(box.gbx_MinY, 205 * 256);
    EXPECT_EQ(box.gbx_MaxX, 96 * 256);
    EXPECT_EQ(box.gbx_MaxY, 225 * 256);
    EXPECT_EQ(corners[0], ggo_pack_point_fixed(92 * 256, 211 * 256));
    EXPECT_EQ(corners[1], ggo_pack_point_fixed(96 * 256, 205 * 256));
    EXPECT_EQ(corners[2], ggo_pack_point_fixed(86 * 256, 219 * 256));
    EXPECT_EQ(corners[3], ggo_pack_point_fixed(82 * 256, 225 * 256));
}

TEST(FixedMatrix, BoxesReportAndEmptyOnesStay)
{
    const GGO_MatrixFixed twice = {{2 * kOne, 0, 0, 2 * kOne, 0, 0}};
    uint64_t corners[4] = {0, 0, 0, 0};
    uint32_t flags = 99;
    const GGO_BoxFixed empty = ggo_transform_box_fixed(&twice, {1, 1, -1, kMax}, corners, &flags);
    EXPECT_EQ(flags, 0U);
    EXPECT_EQ(empty.gbx_MaxX, -1);
    EXPECT_EQ(empty.gbx_MaxY, kMax);
    EXPECT_EQ(corners[2], ggo_pack_point_fixed(-1, kMax));
    ggo_transform_box_fixed(&twice, {0, 0, 0, kMax}, nullptr, &flags);
    EXPECT_EQ(flags, 1U);
    EXPECT_EQ(ggo_transform_box_fixed(&twice, {1, 2, 3, 4}, nullptr, nullptr).gbx_MaxY, 8);
}

// The steps in 128 bits, with what each has to report.
struct Told
{
    uint32_t flags = 0;

    Wide mul(Wide a, Wide b)
    {
        const Wide p = a < 0 ? -a : a, q = b < 0 ? -b : b;
        const Wide kept = (p * q) >> 32;
        const auto value = static_cast<int64_t>(static_cast<uint64_t>((a < 0) != (b < 0) ? -kept : kept));
        if ((p >> 32) * (q >> 32) >= 2147483648 || value == std::numeric_limits<int64_t>::min())
            flags |= 1;
        if (value == 0 && a != 0 && b != 0)
            flags |= 2;
        return value;
    }
    Wide add(Wide a, Wide b)
    {
        constexpr Wide kMost = std::numeric_limits<int64_t>::max();
        if (a + b > kMost || a + b < -kMost)
            flags |= 1;
        return static_cast<int64_t>(static_cast<uint64_t>(a + b));
    }
    int32_t narrow(Wide wide, int bits)
    {
        const Wide kept = wide / (static_cast<Wide>(1) << bits);
        const auto value = static_cast<int32_t>(static_cast<uint32_t>(kept));
        if (kept > kMax || kept < -static_cast<Wide>(kMax))
            flags |= 1;
        if (value == 0 && wide != 0)
            flags |= 2;
        return value;
    }
    int32_t axis(const GGO_MatrixFixed& m, int axis, int32_t x, int32_t y)
    {
        const Wide of_x = mul(static_cast<Wide>(x) << 24, static_cast<Wide>(m.m[axis]) << 16);
        const Wide of_y = mul(static_cast<Wide>(y) << 24, static_cast<Wide>(m.m[axis + 2]) << 16);
        return narrow(add(add(of_x, of_y), static_cast<Wide>(m.m[axis + 4]) << 24), 24);
    }
};

TEST(FixedMatrix, RandomPointsAndProductsStepByStep)
{
    std::mt19937_64 random(29);
    const auto operand = [&random] { return static_cast<int32_t>(static_cast<uint32_t>(random())) >> (random() % 32); };
    for (int i = 0; i < 200000; ++i)
    {
        GGO_MatrixFixed one, other, product;
        for (int32_t& value : one.m)
            value = operand();
        for (int32_t& value : other.m)
            value = operand();
        const int32_t x = operand(), y = operand();
        Told point;
        const int32_t to_x = point.axis(one, 0, x, y), to_y = point.axis(one, 1, x, y);
        uint32_t flags = 99;
        ASSERT_EQ(ggo_transform_point_fixed(&one, ggo_pack_point_fixed(x, y), &flags),
                  ggo_pack_point_fixed(to_x, to_y));
        ASSERT_EQ(flags, point.flags);
        Told told;
        const uint32_t product_flags = ggo_multiply_fixed(&one, &other, &product);
        for (int entry = 0; entry < 4; ++entry)
        {
            const int row = entry & 2, column = entry & 1;
            const Wide first = told.mul(static_cast<Wide>(one.m[row]) << 16, static_cast<Wide>(other.m[column]) << 16);
            const Wide second =
                told.mul(static_cast<Wide>(one.m[row + 1]) << 16, static_cast<Wide>(other.m[column + 2]) << 16);
            ASSERT_EQ(product.m[entry], told.narrow(told.add(first, second), 16)) << entry;
        }
        ASSERT_EQ(product.m[4], told.axis(other, 0, one.m[4], one.m[5]));
        ASSERT_EQ(product.m[5], told.axis(other, 1, one.m[4], one.m[5]));
        ASSERT_EQ(product_flags, told.flags);
    }
}

TEST(FixedMatrix, RandomPointsAgainstWideIntegers)
{
    std::mt19937_64 random(23);
    for (int i = 0; i < 300000; ++i)
    {
        GGO_MatrixFixed matrix;
        for (int32_t& value : matrix.m)
            value = static_cast<int32_t>(static_cast<uint32_t>(random())) >> (random() % 32);
        const int32_t x = static_cast<int32_t>(static_cast<uint32_t>(random())) >> (random() % 32);
        const int32_t y = static_cast<int32_t>(static_cast<uint32_t>(random())) >> (random() % 32);
        uint32_t flags = 99;
        const uint64_t mapped = ggo_transform_point_fixed(&matrix, ggo_pack_point_fixed(x, y), &flags);
        // In units of 2^-24, exactly.
        for (int axis = 0; axis < 2; ++axis)
        {
            const Wide exact = static_cast<Wide>(x) * matrix.m[axis] + static_cast<Wide>(y) * matrix.m[axis + 2] +
                               (static_cast<Wide>(matrix.m[axis + 4]) << 16);
            const Wide kept = exact / 65536;
            const bool outside = kept > kMax || kept < -kMax;
            ASSERT_TRUE(!outside || (flags & 1) != 0);
            ASSERT_TRUE(exact == 0 || kept != 0 || (flags & 2) != 0);
            ASSERT_TRUE((flags & 1) != 0 || static_cast<Wide>(axis == 0 ? x_of(mapped) : y_of(mapped)) == kept);
        }
    }
}

}  // namespace
