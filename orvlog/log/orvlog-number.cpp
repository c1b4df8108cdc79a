#include "orvlog/log/orvlog-number.h"

#include <bit>
#include <charconv>
#include <cmath>
#include <cstring>

namespace
{

template <typename Value> uint32_t format_plain(char* to, Value value)
{
    return static_cast<uint32_t>(std::to_chars(to, to + ORVLOG_NUMBER_SIZE, value).ptr - to);
}

__extension__ using Wide = unsigned __int128;

constexpr uint32_t kMantissaBits = 52;
constexpr uint64_t kHiddenBit = uint64_t{1} << kMantissaBits;
constexpr int kExponentBias = 1023 + static_cast<int>(kMantissaBits);
constexpr int kMaxDigits = 17;
// The general form turns to an exponent below this one.
constexpr int kLeastFixedExponent = -4;

struct PowersOf
{
    uint64_t of10[kMaxDigits + 1];
    uint64_t of5[kMaxDigits - 1 - kLeastFixedExponent + 1];
};

constexpr PowersOf make_powers()
{
    PowersOf powers = {};
    uint64_t power = 1;
    for (uint64_t& entry : powers.of10)
    {
        entry = power;
        power *= 10;
    }
    power = 1;
    for (uint64_t& entry : powers.of5)
    {
        entry = power;
        power *= 5;
    }
    return powers;
}

constexpr PowersOf kPowers = make_powers();

struct DigitPairs
{
    char text[200];
};

constexpr DigitPairs make_pairs()
{
    DigitPairs pairs = {};
    for (uint32_t i = 0; i < 100; ++i)
    {
        pairs.text[2 * i] = static_cast<char>('0' + i / 10);
        pairs.text[2 * i + 1] = static_cast<char>('0' + i % 10);
    }
    return pairs;
}

constexpr DigitPairs kPairs = make_pairs();

// Writes exactly `count` digits.
void put_digits(char* to, uint64_t number, int count)
{
    for (; count >= 2; count -= 2, number /= 100)
        std::memcpy(to + count - 2, kPairs.text + 2 * (number % 100), 2);
    if (count == 1)
        to[0] = static_cast<char>('0' + number);
}

// mantissa * 2^exponent * 10^scale to the nearest whole number, ties to even. The product of the mantissa and the
// power of five has at most 53 and 47 bits, so nothing is lost ahead of the rounding.
uint64_t scaled(uint64_t mantissa, int exponent, int scale)
{
    const Wide product = Wide{mantissa} * kPowers.of5[scale];
    const int shift = -(exponent + scale);
    if (shift <= 0)
        return static_cast<uint64_t>(product << -shift);
    const auto whole = static_cast<uint64_t>(product >> shift);
    const Wide rest = product & ((Wide{1} << shift) - 1);
    const Wide half = Wide{1} << (shift - 1);
    return whole + (rest > half || (rest == half && whole % 2 != 0) ? 1 : 0);
}

// Digits of which the first has the weight 10^exponent, without the zeros at the end.
uint32_t put_fixed(char* to, const char* digits, int count, int exponent)
{
    while (count > 1 && digits[count - 1] == '0')
        --count;
    char* at = to;
    if (exponent < 0)
    {
        *at++ = '0';
        *at++ = '.';
        for (int i = exponent + 1; i < 0; ++i)
            *at++ = '0';
        std::memcpy(at, digits, static_cast<size_t>(count));
        return static_cast<uint32_t>(at + count - to);
    }
    const int whole = exponent + 1;
    for (int i = 0; i < whole; ++i)
        *at++ = i < count ? digits[i] : '0';
    if (count > whole)
    {
        *at++ = '.';
        std::memcpy(at, digits + whole, static_cast<size_t>(count - whole));
        at += count - whole;
    }
    return static_cast<uint32_t>(at - to);
}

// The general form for numbers that it writes without an exponent; 0 for others.
uint32_t format_fixed(char* to, double value, int digits)
{
    const auto bits = std::bit_cast<uint64_t>(value);
    const int biased = static_cast<int>((bits >> kMantissaBits) & 0x7FF);
    const uint64_t mantissa = (bits & (kHiddenBit - 1)) | kHiddenBit;
    const int exponent = biased - kExponentBias;
    const int binary_exponent = biased - 1023;
    if (binary_exponent < -13 || binary_exponent > 55)
        return 0;
    // A little below the logarithm, so that the first try has a digit too many at worst.
    int decimal_exponent = (binary_exponent * 1233) >> 12;
    if (decimal_exponent < kLeastFixedExponent || decimal_exponent >= digits)
        return 0;
    uint64_t number = scaled(mantissa, exponent, digits - 1 - decimal_exponent);
    if (number >= kPowers.of10[digits])
    {
        if (++decimal_exponent >= digits)
            return 0;
        number = scaled(mantissa, exponent, digits - 1 - decimal_exponent);
    }
    if (number < kPowers.of10[digits - 1] || number >= kPowers.of10[digits])
        return 0;
    char text[kMaxDigits];
    put_digits(text, number, digits);
    *to = '-';
    const uint32_t sign = std::signbit(value) ? 1 : 0;
    return sign + put_fixed(to + sign, text, digits, decimal_exponent);
}

// `value` prints by the general form with so many digits; whole numbers below `whole` need no rounding and are
// most of what a log holds.
uint32_t format_real(char* to, double value, int digits, double whole)
{
    if (std::fabs(value) < whole)
    {
        const auto number = static_cast<int64_t>(value);
        if (static_cast<double>(number) == value && (number != 0 || !std::signbit(value)))
            return format_plain(to, number);
    }
    const uint32_t length = format_fixed(to, value, digits);
    if (length != 0)
        return length;
    const auto result = std::to_chars(to, to + ORVLOG_NUMBER_SIZE, value, std::chars_format::general, digits);
    return static_cast<uint32_t>(result.ptr - to);
}

}  // namespace

uint32_t orvlog_format_double(char* to, double value)
{
    return format_real(to, value, 17, 9e15);
}

uint32_t orvlog_format_float(char* to, float value)
{
    return format_real(to, static_cast<double>(value), 9, 1e9);
}

uint32_t orvlog_format_uint(char* to, uint32_t value)
{
    return format_plain(to, value);
}

uint32_t orvlog_format_int(char* to, int32_t value)
{
    return format_plain(to, value);
}

uint32_t orvlog_format_hex(char* to, uint32_t value)
{
    if (value == 0)
        return format_plain(to, value);
    to[0] = '0';
    to[1] = 'x';
    return static_cast<uint32_t>(std::to_chars(to + 2, to + ORVLOG_NUMBER_SIZE, value, 16).ptr - to);
}
