#include "holv-core/ggo/ggo-fixed.h"

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstring>
#include <initializer_list>
#include <limits>
#include <random>

namespace
{

__extension__ typedef __int128 Wide;

constexpr int64_t kMin64 = std::numeric_limits<int64_t>::min();
constexpr int64_t kMax64 = std::numeric_limits<int64_t>::max();
constexpr int32_t kMin32 = std::numeric_limits<int32_t>::min();
constexpr int32_t kMax32 = std::numeric_limits<int32_t>::max();
constexpr GGO_Fix32 kOne = INT64_C(1) << 32;

struct Answer
{
    int64_t value;
    uint32_t status;
    bool operator==(const Answer&) const = default;
};

std::ostream& operator<<(std::ostream& out, const Answer& answer)
{
    return out << "value " << answer.value << " status " << answer.status;
}

template <typename Result, typename Operand>
Answer ask(Result (*operation)(uint32_t*, Operand, Operand), int64_t a, int64_t b)
{
    uint32_t status = 0xAAAA;
    const int64_t value = operation(&status, static_cast<Operand>(a), static_cast<Operand>(b));
    return {value, status};
}

template <typename Result, typename Operand> Answer ask(Result (*operation)(uint32_t*, Operand), int64_t a)
{
    uint32_t status = 0xAAAA;
    const int64_t value = operation(&status, static_cast<Operand>(a));
    return {value, status};
}

Wide magnitude(Wide v)
{
    return v < 0 ? -v : v;
}

int64_t low64(Wide v)
{
    return static_cast<int64_t>(static_cast<uint64_t>(v));
}

int32_t low32(Wide v)
{
    return static_cast<int32_t>(static_cast<uint32_t>(v));
}

// What each operation has to give, by arithmetic in 128 bits.
Answer want_add(int64_t a, int64_t b)
{
    const Wide sum = static_cast<Wide>(a) + b;
    return {low64(sum), sum <= kMin64 || sum > kMax64 ? 1U : 0U};
}

Answer want_sub(int64_t a, int64_t b)
{
    const Wide difference = static_cast<Wide>(a) - b;
    return {low64(difference), difference <= kMin64 || difference > kMax64 ? 1U : 0U};
}

Answer want_mul(int64_t a, int64_t b)
{
    const Wide p = magnitude(a), q = magnitude(b);
    const Wide kept = (p * q) >> 32;
    const int64_t value = low64((a < 0) != (b < 0) ? -kept : kept);
    if ((p >> 32) * (q >> 32) > 0x7FFFFFFF || value == kMin64)
        return {value, 1};
    return {value, value == 0 && a != 0 && b != 0 ? 2U : 0U};
}

Answer want_div(int64_t a, int64_t b)
{
    if (b == 0)
        return {0, 4};
    const Wide quotient = (magnitude(a) << 32) / magnitude(b);
    const int64_t value = low64((a < 0) != (b < 0) ? -quotient : quotient);
    if (quotient > kMax64)
        return {value, 1};
    return {value, quotient == 0 && a != 0 ? 2U : 0U};
}

Answer want_fix16(Wide result, bool was_nonzero)
{
    const int32_t kept = low32(result);
    if (result < -kMax32 || result > kMax32)
        return {kept, 1};
    return {kept, kept == 0 && was_nonzero ? 2U : 0U};
}

Answer want_mul16(int32_t a, int32_t b)
{
    return want_fix16((static_cast<Wide>(a) * b) >> 16, a != 0 && b != 0);
}

Answer want_div16(int32_t a, int32_t b)
{
    return b == 0 ? Answer{0, 4} : want_fix16(static_cast<Wide>(a) * 65536 / b, a != 0);
}

Answer want_narrow(int64_t a, int shift)
{
    const Wide kept = magnitude(a) >> shift;
    const int32_t value = low32(a < 0 ? -kept : kept);
    if (magnitude(a) > (static_cast<Wide>(1) << (31 + shift)) - 1)
        return {value, 1};
    return {value, value == 0 && a != 0 ? 2U : 0U};
}

void check_pair64(int64_t a, int64_t b)
{
    ASSERT_EQ(ask(ggo_fix32_add, a, b), want_add(a, b)) << a << " + " << b;
    ASSERT_EQ(ask(ggo_fix32_sub, a, b), want_sub(a, b)) << a << " - " << b;
    ASSERT_EQ(ask(ggo_fix32_mul, a, b), want_mul(a, b)) << a << " * " << b;
    ASSERT_EQ(ask(ggo_fix32_div, a, b), want_div(a, b)) << a << " / " << b;
    ASSERT_EQ(ask(ggo_fix32_to_fix16, a), want_narrow(a, 16)) << a;
    ASSERT_EQ(ask(ggo_fix32_to_fix8, a), want_narrow(a, 24)) << a;
}

void check_pair32(int32_t a, int32_t b)
{
    ASSERT_EQ(ask(ggo_fix16_mul, a, b), want_mul16(a, b)) << a << " * " << b;
    ASSERT_EQ(ask(ggo_fix16_div, a, b), want_div16(a, b)) << a << " / " << b;
    ASSERT_EQ(ask(ggo_fix16_mul_wide, a, b), (Answer{static_cast<int64_t>(a) * b, 0})) << a << " * " << b;
    ASSERT_EQ(ggo_fix16_compare(a, b), a < b ? -1 : a == b ? 0 : 1);
}

void check_root(int64_t a)
{
    const Answer root = ask(ggo_fix32_sqrt, a);
    ASSERT_EQ(root.status, 0U) << a;
    const Wide scaled = static_cast<Wide>(a) << 32;
    ASSERT_LE(static_cast<Wide>(root.value) * root.value, scaled) << a;
    ASSERT_GT(static_cast<Wide>(root.value + 1) * (root.value + 1), scaled) << a;
}

// An operand of a random number of significant bits, so that small and large ones meet.
int64_t random_operand(std::mt19937_64& random)
{
    const auto bits = static_cast<int>(random() % 65);
    const uint64_t value = bits == 0 ? 0 : random() >> (64 - bits);
    return static_cast<int64_t>((random() & 1) != 0 ? 0 - value : value);
}

TEST(Fixed, JoinsWords)
{
    EXPECT_EQ(ggo_fix32_make(1, 0x80000000), 0x180000000);
    EXPECT_EQ(ggo_fix32_join(1, 0x70000000), 0x7000000000000001);
    EXPECT_EQ(ggo_fix32_make(0xFFFFFFFF, 0), -kOne);
    EXPECT_EQ(ggo_fix32_join(0, 0x80000000), kMin64);
}

TEST(Fixed, Widens)
{
    EXPECT_EQ(ask(ggo_fix32_from_fix16, 65536), (Answer{kOne, 0}));
    EXPECT_EQ(ask(ggo_fix32_from_fix16, -1), (Answer{-65536, 0}));
    EXPECT_EQ(ask(ggo_fix32_from_fix16, kMin32), (Answer{-0x800000000000, 0}));
    EXPECT_EQ(ask(ggo_fix32_from_fix8, 256), (Answer{kOne, 0}));
    EXPECT_EQ(ask(ggo_fix32_from_fix8, -1), (Answer{-0x1000000, 0}));
    EXPECT_EQ(ask(ggo_fix32_from_fix8, kMax32), (Answer{0x7FFFFFFF000000, 0}));
}

TEST(Fixed, NarrowsTowardZero)
{
    EXPECT_EQ(ask(ggo_fix32_to_fix16, 0), (Answer{0, 0}));
    EXPECT_EQ(ask(ggo_fix32_to_fix16, 1), (Answer{0, 2}));
    EXPECT_EQ(ask(ggo_fix32_to_fix16, -1), (Answer{0, 2}));
    EXPECT_EQ(ask(ggo_fix32_to_fix16, -0x1FFFF), (Answer{-1, 0}));
    EXPECT_EQ(ask(ggo_fix32_to_fix16, 0x7FFFFFFFFFFF), (Answer{kMax32, 0}));
    EXPECT_EQ(ask(ggo_fix32_to_fix16, -0x7FFFFFFFFFFF), (Answer{-kMax32, 0}));
    EXPECT_EQ(ask(ggo_fix32_to_fix16, 0x800000000000), (Answer{kMin32, 1}));
    EXPECT_EQ(ask(ggo_fix32_to_fix16, -0x800000000000), (Answer{kMin32, 1}));
    EXPECT_EQ(ask(ggo_fix32_to_fix16, kMin64), (Answer{0, 1}));
    EXPECT_EQ(ask(ggo_fix32_to_fix8, 0xFFFFFF), (Answer{0, 2}));
    EXPECT_EQ(ask(ggo_fix32_to_fix8, -0x1000000), (Answer{-1, 0}));
    EXPECT_EQ(ask(ggo_fix32_to_fix8, 0x7FFFFFFFFFFFFF), (Answer{kMax32, 0}));
    EXPECT_EQ(ask(ggo_fix32_to_fix8, 0x80000000000000), (Answer{kMin32, 1}));
    EXPECT_EQ(ask(ggo_fix32_to_fix8, INT64_C(0x100000000000000)), (Answer{0, 1}));
}

TEST(Fixed, SumsAndDifferencesWrap)
{
    EXPECT_EQ(ask(ggo_fix32_add, kMax64, 1), (Answer{kMin64, 1}));
    EXPECT_EQ(ask(ggo_fix32_add, kMin64, 0), (Answer{kMin64, 1}));
    EXPECT_EQ(ask(ggo_fix32_add, -kMax64, -1), (Answer{kMin64, 1}));
    EXPECT_EQ(ask(ggo_fix32_add, kMin64, kMin64), (Answer{0, 1}));
    EXPECT_EQ(ask(ggo_fix32_add, kMax64, kMin64), (Answer{-1, 0}));
    EXPECT_EQ(ask(ggo_fix32_add, kOne, -kOne), (Answer{0, 0}));
    EXPECT_EQ(ask(ggo_fix32_sub, kMin64, 1), (Answer{kMax64, 1}));
    EXPECT_EQ(ask(ggo_fix32_sub, 0, kMin64), (Answer{kMin64, 1}));
    EXPECT_EQ(ask(ggo_fix32_sub, -1, kMax64), (Answer{kMin64, 1}));
    EXPECT_EQ(ask(ggo_fix32_sub, kMin64, kMin64), (Answer{0, 0}));
    EXPECT_EQ(ask(ggo_fix32_sub, kMax64, -1), (Answer{kMin64, 1}));
    EXPECT_EQ(ask(ggo_fix32_sub, 5, 7), (Answer{-2, 0}));
}

TEST(Fixed, Multiplies)
{
    EXPECT_EQ(ask(ggo_fix32_mul, 3 * kOne / 2, -2 * kOne), (Answer{-3 * kOne, 0}));
    EXPECT_EQ(ask(ggo_fix32_mul, 1, 1), (Answer{0, 2}));
    EXPECT_EQ(ask(ggo_fix32_mul, -1, kOne - 1), (Answer{0, 2}));
    EXPECT_EQ(ask(ggo_fix32_mul, 0, -kOne), (Answer{0, 0}));
    EXPECT_EQ(ask(ggo_fix32_mul, 0x8000 * kOne, 0x10000 * kOne), (Answer{kMin64, 1}));
    EXPECT_EQ(ask(ggo_fix32_mul, 0x10000 * kOne, 0x10000 * kOne), (Answer{0, 1}));
    EXPECT_EQ(ask(ggo_fix32_mul, kMin64, kOne), (Answer{kMin64, 1}));
}

TEST(Fixed, CrossProductsMayTurnTheSignUnreported)
{
    // The integer words give 0x7FFFFFFF, and the cross product carries one more into bit 63.
    EXPECT_EQ(ask(ggo_fix32_mul, 0x7FFFFFFF00000000, 0x180000000), (Answer{-0x4000000180000000, 0}));
}

TEST(Fixed, Divides)
{
    EXPECT_EQ(ask(ggo_fix32_div, kOne, 0), (Answer{0, 4}));
    EXPECT_EQ(ask(ggo_fix32_div, 0, kOne), (Answer{0, 0}));
    EXPECT_EQ(ask(ggo_fix32_div, 7 * kOne, -2 * kOne), (Answer{-7 * kOne / 2, 0}));
    EXPECT_EQ(ask(ggo_fix32_div, -kOne, 3 * kOne), (Answer{-0x55555555, 0}));
    EXPECT_EQ(ask(ggo_fix32_div, 1, 3), (Answer{0x55555555, 0}));
    EXPECT_EQ(ask(ggo_fix32_div, 1, kMax64), (Answer{0, 2}));
    EXPECT_EQ(ask(ggo_fix32_div, kMax64, 1), (Answer{-kOne, 1}));
    EXPECT_EQ(ask(ggo_fix32_div, 0x80000000, 1), (Answer{kMin64, 1}));
    EXPECT_EQ(ask(ggo_fix32_div, kOne, 1), (Answer{0, 1}));
    EXPECT_EQ(ask(ggo_fix32_div, kMin64, kMin64), (Answer{kOne, 0}));
    EXPECT_EQ(ask(ggo_fix32_div, 0x100000001, 0x300000001), (Answer{0x55555555, 0}));
}

TEST(Fixed, TakesRoots)
{
    EXPECT_EQ(ask(ggo_fix32_sqrt, 0), (Answer{0, 0}));
    EXPECT_EQ(ask(ggo_fix32_sqrt, -1), (Answer{0, 8}));
    EXPECT_EQ(ask(ggo_fix32_sqrt, kMin64), (Answer{0, 8}));
    EXPECT_EQ(ask(ggo_fix32_sqrt, kOne), (Answer{kOne, 0}));
    EXPECT_EQ(ask(ggo_fix32_sqrt, 2 * kOne), (Answer{0x16A09E667, 0}));
    EXPECT_EQ(ask(ggo_fix32_sqrt, kOne / 4), (Answer{kOne / 2, 0}));
    EXPECT_EQ(ask(ggo_fix32_sqrt, 1), (Answer{0x10000, 0}));
    EXPECT_EQ(ask(ggo_fix32_sqrt, kMax64), (Answer{0xB504F333F9DE, 0}));
}

TEST(Fixed, PartsOfAWideValue)
{
    EXPECT_EQ(ggo_fix32_sign(kMin64), -1);
    EXPECT_EQ(ggo_fix32_sign(0), 0);
    EXPECT_EQ(ggo_fix32_sign(1), 1);
    EXPECT_EQ(ggo_fix32_floor(-1), -1);
    EXPECT_EQ(ggo_fix32_floor(-kOne), -1);
    EXPECT_EQ(ggo_fix32_floor(-kOne - 1), -2);
    EXPECT_EQ(ggo_fix32_floor(kOne - 1), 0);
    EXPECT_EQ(ggo_fix32_fraction(-1), 0xFFFFFFFFU);
    EXPECT_EQ(ggo_fix32_fraction(kOne + 5), 5U);
}

TEST(Fixed, TakesIntegers)
{
    EXPECT_EQ(ask(ggo_fix8_from_int, 1), (Answer{256, 0}));
    EXPECT_EQ(ask(ggo_fix8_from_int, -1), (Answer{-256, 0}));
    EXPECT_EQ(ask(ggo_fix8_from_int, 0x7FFFFF), (Answer{0x7FFFFF00, 0}));
    EXPECT_EQ(ask(ggo_fix8_from_int, 0x800000), (Answer{kMin32, 1}));
    EXPECT_EQ(ask(ggo_fix8_from_int, -0x800000), (Answer{kMin32, 0}));
    EXPECT_EQ(ask(ggo_fix8_from_int, -0x800001), (Answer{0x7FFFFF00, 1}));
    EXPECT_EQ(ask(ggo_fix8_from_int, 0x1000000), (Answer{0, 1}));
}

TEST(Fixed, Fix16Products)
{
    EXPECT_EQ(ask(ggo_fix16_mul, 0x18000, -0x20000), (Answer{-0x30000, 0}));
    EXPECT_EQ(ask(ggo_fix16_mul, 1, 1), (Answer{0, 2}));
    EXPECT_EQ(ask(ggo_fix16_mul, -1, 1), (Answer{-1, 0}));
    EXPECT_EQ(ask(ggo_fix16_mul, 0, 1), (Answer{0, 0}));
    EXPECT_EQ(ask(ggo_fix16_mul, kMin32, 0x10000), (Answer{kMin32, 1}));
    EXPECT_EQ(ask(ggo_fix16_mul, 0x1000000, 0x1000000), (Answer{0, 1}));
    EXPECT_EQ(ask(ggo_fix16_mul_wide, 1, -1), (Answer{-1, 0}));
    EXPECT_EQ(ask(ggo_fix16_mul_wide, kMin32, kMin32), (Answer{INT64_C(1) << 62, 0}));
    EXPECT_EQ(ask(ggo_fix16_mul_wide, 0, kMin32), (Answer{0, 0}));
}

TEST(Fixed, Fix16Quotients)
{
    EXPECT_EQ(ask(ggo_fix16_div, 1, 0), (Answer{0, 4}));
    EXPECT_EQ(ask(ggo_fix16_div, 0, 5), (Answer{0, 0}));
    EXPECT_EQ(ask(ggo_fix16_div, 1, 0x7FFFFFFF), (Answer{0, 2}));
    EXPECT_EQ(ask(ggo_fix16_div, -0x10000, 0x30000), (Answer{-0x5555, 0}));
    EXPECT_EQ(ask(ggo_fix16_div, 0x10000, 1), (Answer{0, 1}));
    EXPECT_EQ(ask(ggo_fix16_div, kMin32, 0x10000), (Answer{kMin32, 1}));
    EXPECT_EQ(ask(ggo_fix16_div, kMin32, -0x10000), (Answer{kMin32, 1}));
}

TEST(Fixed, PartsOfAFix16)
{
    EXPECT_EQ(ggo_fix16_compare(-1, 1), -1);
    EXPECT_EQ(ggo_fix16_compare(1, 1), 0);
    EXPECT_EQ(ggo_fix16_compare(kMax32, kMin32), 1);
    EXPECT_EQ(ggo_fix16_negate(5), -5);
    EXPECT_EQ(ggo_fix16_negate(kMin32), kMin32);
    EXPECT_EQ(ggo_fix16_sign(-5), -1);
    EXPECT_EQ(ggo_fix16_sign(0), 0);
    EXPECT_EQ(ggo_fix16_sign(5), 1);
    EXPECT_EQ(ggo_fix16_floor(-1), -1);
    EXPECT_EQ(ggo_fix16_floor(-65536), -1);
    EXPECT_EQ(ggo_fix16_floor(-65537), -2);
    EXPECT_EQ(ggo_fix16_floor(65535), 0);
    EXPECT_EQ(ggo_fix16_fraction(-1), 0xFFFFU);
    EXPECT_EQ(ggo_fix16_fraction(0x12345), 0x2345U);
    EXPECT_EQ(ggo_fix16_max(), 0x7FFFFFFF);
}

TEST(Fixed, ToDouble)
{
    EXPECT_EQ(ggo_fix16_to_double(0x18000), 1.5);
    EXPECT_EQ(ggo_fix16_to_double(-1), -0x1p-16);
    EXPECT_EQ(ggo_fix8_to_double(0x180), 1.5);
    EXPECT_EQ(ggo_fix8_to_double(kMin32), -8388608.0);
}

TEST(Fixed, AbsoluteValueClearsTheSignBitAlone)
{
    EXPECT_EQ(ggo_abs_double(-2.5), 2.5);
    EXPECT_EQ(std::bit_cast<uint64_t>(ggo_abs_double(-0.0)), 0U);
    EXPECT_EQ(std::bit_cast<uint64_t>(ggo_abs_double(std::bit_cast<double>(0xFFF8000000001234))), 0x7FF8000000001234U);
    EXPECT_EQ(ggo_abs_float(-2.5F), 2.5F);
    EXPECT_EQ(std::bit_cast<uint32_t>(ggo_abs_float(std::bit_cast<float>(0xFFC01234))), 0x7FC01234U);
}

TEST(Fixed, Determinants)
{
    EXPECT_EQ(ggo_det_double(2, 3, 5, 7), -1);
    EXPECT_EQ(ggo_det_float(2, 3, 5, 7), -1);
    EXPECT_EQ(ggo_det_float(16777217.0F, 1, 1, 1), 16777215.0F);
    uint32_t status = 0xAAAA;
    EXPECT_EQ(ggo_det_fix16(0x20000, 0x30000, 0x50000, 0x70000, &status), -kOne);
    EXPECT_EQ(status, 0U);
    EXPECT_EQ(ggo_det_fix16(kMin32, kMin32, kMax32, kMin32, &status), kMax64 - 0x7FFFFFFF);
    EXPECT_EQ(status, 0U);
    EXPECT_EQ(ggo_det_fix16(kMin32, kMin32, kMin32, kMin32, &status), 0);
    EXPECT_EQ(status, 0U);
    EXPECT_EQ(ggo_det_fix16(1, 0, 0, 1, nullptr), 1);
}

TEST(Fixed, RegularIsStrict)
{
    // The limit is ((20 / 1) / 10) squared: 4.
    EXPECT_EQ(ggo_regular_double(4, 0, 0, 1, 1, 20), 0U);
    EXPECT_EQ(ggo_regular_double(std::nextafter(4.0, 5.0), 0, 0, 1, 1, 20), 1U);
    EXPECT_EQ(ggo_regular_double(0, 5, 1, 0, 1, 20), 1U);
    EXPECT_EQ(ggo_regular_double(5, 0, 0, 1, 0, 20), 0U);
    EXPECT_EQ(ggo_regular_float(4, 0, 0, 1, 1, 20), 0U);
    EXPECT_EQ(ggo_regular_float(std::nextafter(4.0F, 5.0F), 0, 0, 1, 1, 20), 1U);
    // (1 / 3) / 10 squared, each step rounded to single, lies above the limit in double precision.
    EXPECT_EQ(ggo_regular_float(0.0011111112F, 0, 0, 1, 3, 1), 0U);
    EXPECT_EQ(ggo_regular_double(0.0011111112, 0, 0, 1, 3, 1), 1U);
}

TEST(Fixed, NullStatusIsPassedOver)
{
    EXPECT_EQ(ggo_fix32_add(nullptr, 1, 2), 3);
    EXPECT_EQ(ggo_fix32_div(nullptr, 1, 0), 0);
    EXPECT_EQ(ggo_fix32_sqrt(nullptr, -1), 0);
    EXPECT_EQ(ggo_fix16_div(nullptr, 1, 0), 0);
    EXPECT_EQ(ggo_fix8_from_int(nullptr, 1), 256);
}

TEST(Fixed, EveryPairOfSmallOperandsAtSeveralScales)
{
    for (const int shift_a : {0, 15, 32, 56})
        for (const int shift_b : {0, 17, 32, 56})
            for (int64_t a = -128; a < 128; ++a)
                for (int64_t b = -128; b < 128; ++b)
                    ASSERT_NO_FATAL_FAILURE(check_pair64(a * (INT64_C(1) << shift_a), b * (INT64_C(1) << shift_b)));
    for (const int shift_a : {0, 9, 16, 24})
        for (const int shift_b : {0, 7, 16, 24})
            for (int32_t a = -128; a < 128; ++a)
                for (int32_t b = -128; b < 128; ++b)
                    ASSERT_NO_FATAL_FAILURE(check_pair32(a * (1 << shift_a), b * (1 << shift_b)));
}

TEST(Fixed, AMillionRandomOperands)
{
    std::mt19937_64 random(20240607);
    for (int i = 0; i < 1000000; ++i)
    {
        const int64_t a = random_operand(random), b = random_operand(random);
        ASSERT_NO_FATAL_FAILURE(check_pair64(a, b));
        ASSERT_NO_FATAL_FAILURE(check_pair32(low32(a), low32(b)));
        ASSERT_NO_FATAL_FAILURE(check_root(a & kMax64));
    }
}

TEST(Fixed, RandomDeterminants)
{
    std::mt19937_64 random(5);
    for (int i = 0; i < 200000; ++i)
    {
        int32_t v[4];
        for (int32_t& value : v)
            value = low32(random_operand(random));
        const Wide exact = static_cast<Wide>(v[3]) * v[0] - static_cast<Wide>(v[2]) * v[1];
        uint32_t status = 0xAAAA;
        ASSERT_EQ(ggo_det_fix16(v[0], v[1], v[2], v[3], &status), low64(exact));
        ASSERT_EQ(status, exact <= kMin64 || exact > kMax64 ? 1U : 0U);
    }
}

}  // namespace
