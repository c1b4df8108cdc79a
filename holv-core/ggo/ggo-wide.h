// The steps in 64 bits, 32 of them fraction, on which scalars and fixed-point matrices stand alike.

#pragma once

#include "holv-core/ggo/ggo-fixed.h"

struct GGO_Wide
{
    GGO_Fix32 value;
    bool overflow;
    bool underflow;
};

inline constexpr int64_t kGgoMostNegative = INT64_MIN;

inline uint64_t ggo_wide_magnitude(int64_t value)
{
    return value < 0 ? 0 - static_cast<uint64_t>(value) : static_cast<uint64_t>(value);
}

inline int64_t ggo_wide_signed(uint64_t magnitude, bool negative)
{
    return static_cast<int64_t>(negative ? 0 - magnitude : magnitude);
}

inline GGO_Fix32 ggo_wide_of_fix16(GGO_Fix16 value)
{
    return static_cast<GGO_Fix32>(value) * 0x10000;
}

inline GGO_Fix32 ggo_wide_of_fix8(GGO_Fix8 value)
{
    return static_cast<GGO_Fix32>(value) * 0x1000000;
}

// By four partial products of 32 bits; overflow looks at the product of the high halves alone.
inline GGO_Wide ggo_wide_mul(GGO_Fix32 a, GGO_Fix32 b)
{
    const uint64_t p = ggo_wide_magnitude(a), q = ggo_wide_magnitude(b);
    const uint64_t p_high = p >> 32, p_low = p & 0xFFFFFFFF, q_high = q >> 32, q_low = q & 0xFFFFFFFF;
    const uint64_t high = p_high * q_high;
    const uint64_t magnitude = (high << 32) + p_high * q_low + p_low * q_high + ((p_low * q_low) >> 32);
    const int64_t value = ggo_wide_signed(magnitude, (a < 0) != (b < 0));
    return {value, (high >> 31) != 0 || value == kGgoMostNegative, value == 0 && a != 0 && b != 0};
}

inline GGO_Wide ggo_wide_add(GGO_Fix32 a, GGO_Fix32 b)
{
    const auto sum = static_cast<int64_t>(static_cast<uint64_t>(a) + static_cast<uint64_t>(b));
    return {sum, sum == kGgoMostNegative || ((a < 0) == (b < 0) && (sum < 0) != (a < 0)), false};
}

inline GGO_Wide ggo_wide_sub(GGO_Fix32 a, GGO_Fix32 b)
{
    const auto difference = static_cast<int64_t>(static_cast<uint64_t>(a) - static_cast<uint64_t>(b));
    const bool wrong_sign = (a < 0) != (b < 0) && (difference < 0) == (b < 0);
    return {difference, difference == kGgoMostNegative || wrong_sign, false};
}

// Cuts `shift` bits (16 or 24) of the magnitude; the 32 bits kept stand in `value`.
inline GGO_Wide ggo_wide_narrow(GGO_Fix32 wide, int shift)
{
    const uint64_t magnitude = ggo_wide_magnitude(wide);
    const uint64_t kept = magnitude >> shift;
    const auto value = static_cast<int32_t>(static_cast<uint32_t>(ggo_wide_signed(kept, wide < 0)));
    return {value, magnitude > (UINT64_C(1) << (31 + shift)) - 1, value == 0 && wide != 0};
}
