#include "holv-core/ggo/ggo-fixed.h"

#include "holv-core/ggo/ggo-wide.h"

#include <bit>

namespace
{

void report(uint32_t* status, uint32_t value)
{
    if (status != nullptr)
        *status = value;
}

GGO_Fix32 report(uint32_t* status, const GGO_Wide& wide)
{
    report(status, wide.overflow ? GGO_FIX_OVERFLOW : wide.underflow ? GGO_FIX_UNDERFLOW : GGO_FIX_OK);
    return wide.value;
}

// Both flags of a step, for a status that joins several.
uint32_t joined(const GGO_Wide& wide)
{
    return (wide.overflow ? GGO_FIX_OVERFLOW : GGO_FIX_OK) | (wide.underflow ? GGO_FIX_UNDERFLOW : GGO_FIX_OK);
}

template <typename T> int32_t sign_of(T value)
{
    return (value > 0) - (value < 0);
}

GGO_Fix16 keep_fix16(uint32_t* status, int64_t value, bool was_nonzero)
{
    const auto kept = static_cast<int32_t>(static_cast<uint32_t>(value));
    return static_cast<GGO_Fix16>(
        report(status, GGO_Wide{kept, value < -0x7FFFFFFF || value > 0x7FFFFFFF, kept == 0 && was_nonzero}));
}

// (rest << 32) / divisor for a rest below the divisor, which is at most 2^63: 32 bits.
uint64_t fraction_quotient(uint64_t rest, uint64_t divisor)
{
    if ((divisor >> 32) == 0)
        return (rest << 32) / divisor;
    if ((divisor & 0xFFFFFFFF) == 0)
        return rest / (divisor >> 32);
    uint64_t quotient = 0;
    for (int round = 0; round < 32; ++round)
    {
        rest *= 2;
        quotient *= 2;
        if (rest >= divisor)
        {
            rest -= divisor;
            ++quotient;
        }
    }
    return quotient;
}

}  // namespace

GGO_Fix32 ggo_fix32_make(uint32_t integer, uint32_t fraction)
{
    return static_cast<GGO_Fix32>(static_cast<uint64_t>(integer) << 32 | fraction);
}

GGO_Fix32 ggo_fix32_join(uint32_t low, uint32_t high)
{
    return ggo_fix32_make(high, low);
}

GGO_Fix32 ggo_fix32_from_fix16(uint32_t* status, GGO_Fix16 value)
{
    report(status, GGO_FIX_OK);
    return ggo_wide_of_fix16(value);
}

GGO_Fix32 ggo_fix32_from_fix8(uint32_t* status, GGO_Fix8 value)
{
    report(status, GGO_FIX_OK);
    return ggo_wide_of_fix8(value);
}

GGO_Fix16 ggo_fix32_to_fix16(uint32_t* status, GGO_Fix32 value)
{
    return static_cast<GGO_Fix16>(report(status, ggo_wide_narrow(value, 16)));
}

GGO_Fix8 ggo_fix32_to_fix8(uint32_t* status, GGO_Fix32 value)
{
    return static_cast<GGO_Fix8>(report(status, ggo_wide_narrow(value, 24)));
}

GGO_Fix32 ggo_fix32_add(uint32_t* status, GGO_Fix32 a, GGO_Fix32 b)
{
    return report(status, ggo_wide_add(a, b));
}

GGO_Fix32 ggo_fix32_sub(uint32_t* status, GGO_Fix32 a, GGO_Fix32 b)
{
    return report(status, ggo_wide_sub(a, b));
}

GGO_Fix32 ggo_fix32_mul(uint32_t* status, GGO_Fix32 a, GGO_Fix32 b)
{
    return report(status, ggo_wide_mul(a, b));
}

GGO_Fix32 ggo_fix32_div(uint32_t* status, GGO_Fix32 a, GGO_Fix32 b)
{
    if (b == 0)
    {
        report(status, GGO_FIX_DIVIDE_BY_ZERO);
        return 0;
    }
    const uint64_t dividend = ggo_wide_magnitude(a), divisor = ggo_wide_magnitude(b);
    const uint64_t whole = dividend / divisor;
    const uint64_t quotient = whole << 32 | fraction_quotient(dividend % divisor, divisor);
    const bool overflow = (whole >> 31) != 0;
    return report(status, GGO_Wide{ggo_wide_signed(quotient, (a < 0) != (b < 0)), overflow, quotient == 0 && a != 0});
}

GGO_Fix32 ggo_fix32_sqrt(uint32_t* status, GGO_Fix32 value)
{
    report(status, value < 0 ? GGO_FIX_NEGATIVE_ROOT : GGO_FIX_OK);
    if (value < 0)
        return 0;
    auto digits = static_cast<uint64_t>(value);
    uint64_t rest = 0;
    uint64_t root = 0;
    for (int round = 0; round < 48; ++round)
    {
        rest = rest << 2 | digits >> 62;
        digits <<= 2;
        root <<= 1;
        const uint64_t trial = root << 1 | 1;
        if (rest >= trial)
        {
            rest -= trial;
            root |= 1;
        }
    }
    return static_cast<GGO_Fix32>(root);
}

int32_t ggo_fix32_sign(GGO_Fix32 value)
{
    return sign_of(value);
}

int32_t ggo_fix32_floor(GGO_Fix32 value)
{
    return static_cast<int32_t>(value >> 32);
}

uint32_t ggo_fix32_fraction(GGO_Fix32 value)
{
    return static_cast<uint32_t>(static_cast<uint64_t>(value));
}

GGO_Fix8 ggo_fix8_from_int(uint32_t* status, int32_t integer)
{
    report(status, integer < -0x800000 || integer > 0x7FFFFF ? GGO_FIX_OVERFLOW : GGO_FIX_OK);
    return static_cast<GGO_Fix8>(static_cast<uint32_t>(integer) << 8);
}

GGO_Fix16 ggo_fix16_mul(uint32_t* status, GGO_Fix16 a, GGO_Fix16 b)
{
    return keep_fix16(status, (static_cast<int64_t>(a) * b) >> 16, a != 0 && b != 0);
}

GGO_Fix16 ggo_fix16_div(uint32_t* status, GGO_Fix16 a, GGO_Fix16 b)
{
    if (b == 0)
    {
        report(status, GGO_FIX_DIVIDE_BY_ZERO);
        return 0;
    }
    return keep_fix16(status, static_cast<int64_t>(a) * 0x10000 / b, a != 0);
}

GGO_Fix32 ggo_fix16_mul_wide(uint32_t* status, GGO_Fix16 a, GGO_Fix16 b)
{
    return ggo_fix32_mul(status, ggo_wide_of_fix16(a), ggo_wide_of_fix16(b));
}

int32_t ggo_fix16_compare(GGO_Fix16 a, GGO_Fix16 b)
{
    return (a > b) - (a < b);
}

GGO_Fix16 ggo_fix16_negate(GGO_Fix16 value)
{
    return static_cast<GGO_Fix16>(0 - static_cast<uint32_t>(value));
}

int32_t ggo_fix16_sign(GGO_Fix16 value)
{
    return sign_of(value);
}

int32_t ggo_fix16_floor(GGO_Fix16 value)
{
    return value >> 16;
}

uint32_t ggo_fix16_fraction(GGO_Fix16 value)
{
    return static_cast<uint32_t>(value) & 0xFFFF;
}

GGO_Fix16 ggo_fix16_max(void)
{
    return 0x7FFFFFFF;
}

double ggo_fix16_to_double(GGO_Fix16 value)
{
    return value * 1.52587890625e-05;
}

double ggo_fix8_to_double(GGO_Fix8 value)
{
    return value * 0.00390625;
}

double ggo_abs_double(double value)
{
    return std::bit_cast<double>(std::bit_cast<uint64_t>(value) & INT64_MAX);
}

float ggo_abs_float(float value)
{
    return std::bit_cast<float>(std::bit_cast<uint32_t>(value) & INT32_MAX);
}

double ggo_det_double(double a, double b, double c, double d)
{
    return d * a - c * b;
}

float ggo_det_float(float a, float b, float c, float d)
{
    return d * a - c * b;
}

GGO_Fix32 ggo_det_fix16(GGO_Fix16 a, GGO_Fix16 b, GGO_Fix16 c, GGO_Fix16 d, uint32_t* status)
{
    const GGO_Wide first = ggo_wide_mul(ggo_wide_of_fix16(d), ggo_wide_of_fix16(a));
    const GGO_Wide second = ggo_wide_mul(ggo_wide_of_fix16(c), ggo_wide_of_fix16(b));
    const GGO_Wide difference = ggo_wide_sub(first.value, second.value);
    report(status, joined(first) | joined(second) | joined(difference));
    return difference.value;
}

uint32_t ggo_regular_double(double a, double b, double c, double d, double x, double y)
{
    const double limit = (y / x) / 10;
    return ggo_abs_double(ggo_det_double(a, b, c, d)) > limit * limit ? 1 : 0;
}

uint32_t ggo_regular_float(float a, float b, float c, float d, float x, float y)
{
    const float limit = (y / x) / 10;
    return ggo_abs_float(ggo_det_float(a, b, c, d)) > limit * limit ? 1 : 0;
}
