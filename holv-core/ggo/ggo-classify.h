// The table by which a matrix is classified, for the three sets of bounds that go with it.

#pragma once

#include "holv-core/ggo/ggo-geometry.h"

template <typename Number> struct GGO_ClassifyBounds
{
    Number near_zero;
    Number shift;
    Number below_one;
    Number above_one;
    Number above_minus_one;
    Number below_minus_one;
};

template <typename Number> uint32_t ggo_classify_by(const Number* m, const GGO_ClassifyBounds<Number>& by)
{
    const Number a = m[0], b = m[1], c = m[2], d = m[3], e = m[4], f = m[5];
    const Number near = by.near_zero;
    const auto zero = [near](Number v) { return -near < v && v < near; };
    const auto plus = [&by](Number v) { return by.below_one < v && v < by.above_one; };
    const auto minus = [&by](Number v) { return by.below_minus_one < v && v < by.above_minus_one; };
    const bool still = -by.shift < e && e < by.shift && -by.shift < f && f < by.shift;
    const auto shifted = [still](uint32_t code) { return still ? code : code + GGO_XFLAG_XLATE; };
    const bool upright = zero(b) && zero(c);
    const bool turned = zero(a) && zero(d);

    if (upright && plus(a) && plus(d))
        return still ? GGO_XFLAG_IDENTITY : GGO_XFLAG_XLATE;
    if (turned && plus(c) && minus(b))
        return shifted(0x60);
    if (turned && plus(b) && minus(c))
        return shifted(0xE0);
    if (upright && minus(d) && minus(a))
        return shifted(0xA0);
    if (upright && plus(a) && minus(d))
        return shifted(0x08);
    if (upright && minus(a) && plus(d))
        return shifted(0xA8);
    if (upright && a > near && d > near)
        return shifted(0x04);
    if (turned && plus(b) && plus(c))
        return shifted(0x68);
    if (turned && minus(b) && minus(c))
        return shifted(0xE8);
    if (turned && b < -near && c > near)
        return shifted(0x64);
    if (turned && b > near && c < -near)
        return shifted(0xE4);
    if (upright && a < -near && d < -near)
        return shifted(0xA4);
    if (upright && a > near && d < -near)
        return shifted(0x0C);
    if (upright && a < -near && d > near)
        return shifted(0xAC);
    if (!zero(a))
        return GGO_XFLAG_GENERAL;
    if (zero(d) && b > near && c > near)
        return shifted(0x6C);
    if (zero(d) && b < -near && c < -near)
        return shifted(0xEC);
    if (!zero(b) || !zero(c) || !zero(d) || !still)
        return GGO_XFLAG_GENERAL;
    return GGO_XFLAG_NONE;
}
