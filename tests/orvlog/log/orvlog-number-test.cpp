#include "orvlog/log/orvlog-number.h"

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstdio>
#include <limits>
#include <random>
#include <string>

namespace
{

std::string of(double value)
{
    char text[ORVLOG_NUMBER_SIZE];
    return {text, orvlog_format_double(text, value)};
}

std::string of(float value)
{
    char text[ORVLOG_NUMBER_SIZE];
    return {text, orvlog_format_float(text, value)};
}

TEST(Number, Doubles)
{
    EXPECT_EQ(of(0.0), "0");
    EXPECT_EQ(of(-0.0), "-0");
    EXPECT_EQ(of(1.0), "1");
    EXPECT_EQ(of(-17.0), "-17");
    EXPECT_EQ(of(0.1), "0.10000000000000001");
    EXPECT_EQ(of(1.5), "1.5");
    EXPECT_EQ(of(1.0 / 3), "0.33333333333333331");
    EXPECT_EQ(of(1e15), "1000000000000000");
    EXPECT_EQ(of(9007199254740993.0), "9007199254740992");
    EXPECT_EQ(of(1e16), "10000000000000000");
    EXPECT_EQ(of(1e17), "1e+17");
    EXPECT_EQ(of(123456789012345680.0), "1.2345678901234568e+17");
    EXPECT_EQ(of(1e20), "1e+20");
    EXPECT_EQ(of(1e100), "1e+100");
    EXPECT_EQ(of(1e-5), "1.0000000000000001e-05");
    EXPECT_EQ(of(0.0001), "0.0001");
    EXPECT_EQ(of(1.7976931348623157e308), "1.7976931348623157e+308");
    EXPECT_EQ(of(5e-324), "4.9406564584124654e-324");
}

TEST(Number, Floats)
{
    EXPECT_EQ(of(0.0F), "0");
    EXPECT_EQ(of(-0.0F), "-0");
    EXPECT_EQ(of(0.1F), "0.100000001");
    EXPECT_EQ(of(12.0F), "12");
    EXPECT_EQ(of(999999999.0F), "1e+09");
    EXPECT_EQ(of(99999992.0F), "99999992");
    EXPECT_EQ(of(3.40282347e38F), "3.40282347e+38");
    EXPECT_EQ(of(1e-7F), "1.00000001e-07");
}

TEST(Number, NotNumbersShowTheirSign)
{
    EXPECT_EQ(of(std::numeric_limits<double>::infinity()), "inf");
    EXPECT_EQ(of(-std::numeric_limits<double>::infinity()), "-inf");
    EXPECT_EQ(of(std::bit_cast<double>(uint64_t{0x7FF8000000000000})), "nan");
    EXPECT_EQ(of(std::bit_cast<double>(uint64_t{0xFFF8000000000000})), "-nan");
    EXPECT_EQ(of(std::numeric_limits<float>::infinity()), "inf");
    EXPECT_EQ(of(std::bit_cast<float>(uint32_t{0x7FC00000})), "nan");
    EXPECT_EQ(of(std::bit_cast<float>(uint32_t{0xFFC00000})), "-nan");
}

TEST(Number, Integers)
{
    char text[ORVLOG_NUMBER_SIZE];
    EXPECT_EQ(std::string(text, orvlog_format_uint(text, 4294967295U)), "4294967295");
    EXPECT_EQ(std::string(text, orvlog_format_int(text, -2147483647 - 1)), "-2147483648");
    EXPECT_EQ(std::string(text, orvlog_format_hex(text, 0)), "0");
    EXPECT_EQ(std::string(text, orvlog_format_hex(text, 0x1F)), "0x1f");
    EXPECT_EQ(std::string(text, orvlog_format_hex(text, 0xFFFFFFFFU)), "0xffffffff");
}

TEST(Number, TiesGoToTheEvenDigit)
{
    EXPECT_EQ(of(12345678 + 1.0 / 1024), "12345678.000976562");
    EXPECT_EQ(of(12345678 + 3.0 / 1024), "12345678.002929688");
    EXPECT_EQ(of(-12345678 - 3.0 / 1024), "-12345678.002929688");
    EXPECT_EQ(of(1000 + 1.0F / 64), "1000.01562");
    EXPECT_EQ(of(1000 + 3.0F / 64), "1000.04688");
}

TEST(Number, RoundsUpIntoAFurtherDigit)
{
    EXPECT_EQ(of(std::nextafter(1.0, 0)), "0.99999999999999989");
    EXPECT_EQ(of(std::nextafter(1000.0, 0)), "999.99999999999989");
    EXPECT_EQ(of(std::nextafter(0.001, 0)), "0.0009999999999999998");
    EXPECT_EQ(of(std::nextafter(0.0001, 0)), "9.9999999999999991e-05");
    EXPECT_EQ(of(std::nextafter(1e17, 0)), "99999999999999984");
    EXPECT_EQ(of(0.99999999F), "1");
    EXPECT_EQ(of(9999.99999F), "10000");
    EXPECT_EQ(of(999999999.5F), "1e+09");
}

// Numbers of the sizes that drawings have, and the neighbours of each power of ten.
TEST(Number, SameAsTheCLibraryOnCoordinates)
{
    std::mt19937_64 random(7);
    for (int i = 0; i < 200000; ++i)
    {
        double value = std::ldexp(static_cast<double>(random() >> 11), -static_cast<int>(random() % 70));
        if (i % 4 == 0)
            value = std::nextafter(std::pow(10, static_cast<double>(i / 4 % 24) - 6), i % 8 == 0 ? 0 : 1e300);
        char expected[64];
        std::snprintf(expected, sizeof expected, "%.17g", value);
        ASSERT_EQ(of(value), expected);
        std::snprintf(expected, sizeof expected, "%.9g", static_cast<double>(static_cast<float>(value)));
        ASSERT_EQ(of(static_cast<float>(value)), expected);
    }
}

// The C library is the measure, but for the sign of a NaN, which not every one shows.
TEST(Number, SameAsTheCLibraryOnRandomBits)
{
    std::mt19937_64 random(20260101);
    for (int i = 0; i < 300000; ++i)
    {
        const uint64_t bits = random();
        double value = std::bit_cast<double>(bits);
        if (i % 3 == 1)
            value = static_cast<double>(static_cast<int64_t>(bits) >> (bits % 60));
        if (i % 3 == 2)
            value = static_cast<double>(static_cast<int32_t>(bits)) / 1000;
        char expected[64];
        std::snprintf(expected, sizeof expected, "%.17g", value);
        ASSERT_TRUE(std::isnan(value) || of(value) == expected) << expected;
        const float narrow = i % 2 == 0 ? std::bit_cast<float>(static_cast<uint32_t>(bits)) : static_cast<float>(value);
        std::snprintf(expected, sizeof expected, "%.9g", static_cast<double>(narrow));
        ASSERT_TRUE(std::isnan(narrow) || of(narrow) == expected) << expected;
    }
}

}  // namespace
