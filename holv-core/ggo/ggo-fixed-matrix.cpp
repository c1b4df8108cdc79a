#include "holv-core/ggo/ggo-fixed-matrix.h"

#include "holv-core/ggo/ggo-transform.h"
#include "holv-core/ggo/ggo-wide.h"

namespace
{

constexpr uint32_t kPackedMask = 0x1FFFFF;

// Joins what each step reports.
struct Steps
{
    uint32_t flags = 0;

    GGO_Fix32 take(const GGO_Wide& wide)
    {
        flags |= (wide.overflow ? GGO_FIX_OVERFLOW : GGO_FIX_OK) | (wide.underflow ? GGO_FIX_UNDERFLOW : GGO_FIX_OK);
        return wide.value;
    }
    GGO_Fix32 mul(GGO_Fix32 a, GGO_Fix32 b)
    {
        return take(ggo_wide_mul(a, b));
    }
    GGO_Fix32 add(GGO_Fix32 a, GGO_Fix32 b)
    {
        return take(ggo_wide_add(a, b));
    }
    GGO_Fix32 sub(GGO_Fix32 a, GGO_Fix32 b)
    {
        return take(ggo_wide_sub(a, b));
    }
    GGO_Fix32 div(GGO_Fix32 a, GGO_Fix32 b)
    {
        uint32_t status = 0;
        const GGO_Fix32 quotient = ggo_fix32_div(&status, a, b);
        flags |= status & (GGO_FIX_OVERFLOW | GGO_FIX_UNDERFLOW);
        return quotient;
    }
    GGO_Fix16 to_fix16(GGO_Fix32 wide)
    {
        return static_cast<GGO_Fix16>(take(ggo_wide_narrow(wide, 16)));
    }
    GGO_Fix8 to_fix8(GGO_Fix32 wide)
    {
        return static_cast<GGO_Fix8>(take(ggo_wide_narrow(wide, 24)));
    }
};

void report(uint32_t* flags, uint32_t value)
{
    if (flags != nullptr)
        *flags = value;
}

int32_t low_half(uint64_t word)
{
    return static_cast<int32_t>(static_cast<uint32_t>(word));
}

GGO_Fix32 wide_linear(const GGO_MatrixFixed* matrix, int index)
{
    return ggo_wide_of_fix16(matrix->m[index]);
}

// x * m[axis] + y * m[axis + 2] of wide values.
GGO_Fix32 linear_sum(Steps* steps, const GGO_MatrixFixed* matrix, int axis, GGO_Fix32 x, GGO_Fix32 y)
{
    const GGO_Fix32 of_x = steps->mul(x, wide_linear(matrix, axis));
    return steps->add(of_x, steps->mul(y, wide_linear(matrix, axis + 2)));
}

GGO_Fix8 transform_axis(Steps* steps, const GGO_MatrixFixed* matrix, int axis, GGO_Fix8 x, GGO_Fix8 y)
{
    const GGO_Fix32 linear = linear_sum(steps, matrix, axis, ggo_wide_of_fix8(x), ggo_wide_of_fix8(y));
    return steps->to_fix8(steps->add(linear, ggo_wide_of_fix8(matrix->m[axis + 4])));
}

uint64_t transform_point(Steps* steps, const GGO_MatrixFixed* matrix, GGO_Fix8 x, GGO_Fix8 y)
{
    const GGO_Fix8 to_x = transform_axis(steps, matrix, 0, x, y);
    return ggo_pack_point_fixed(to_x, transform_axis(steps, matrix, 1, x, y));
}

int32_t scale_linear(Steps* steps, int32_t value, GGO_Fix16 factor)
{
    const int64_t scaled = (static_cast<int64_t>(value) * factor) >> 16;
    const int32_t kept = low_half(static_cast<uint64_t>(scaled));
    return static_cast<int32_t>(steps->take({kept, scaled != kept, kept == 0 && value != 0 && factor != 0}));
}

GGO_Fix8 scale_shift(Steps* steps, GGO_Fix8 value, GGO_Fix16 factor)
{
    return steps->to_fix8(steps->mul(ggo_wide_of_fix8(value), ggo_wide_of_fix16(factor)));
}

GGO_Fix32 wide_determinant(Steps* steps, const GGO_MatrixFixed* matrix)
{
    const GGO_Fix32 first = steps->mul(wide_linear(matrix, 0), wide_linear(matrix, 3));
    return steps->sub(first, steps->mul(wide_linear(matrix, 1), wide_linear(matrix, 2)));
}

uint32_t packed(int32_t mantissa, int exponent)
{
    return ((static_cast<uint32_t>(exponent) & 15) | static_cast<uint32_t>(mantissa) << 4) & kPackedMask;
}

// The mantissa rounds up unless that would run into its sign.
uint32_t pack_positive(int32_t quotient, int s)
{
    const int32_t mantissa = quotient >> (s + 14);
    if (mantissa * (1 << (s + 14)) == quotient)
        return packed(mantissa, s);
    if (mantissa + 1 < 0x10000)
        return packed(mantissa + 1, s);
    return s >= 1 ? packed(mantissa, s) : packed((mantissa + 1) >> 1, s + 1);
}

uint32_t pack_quotient(int32_t quotient)
{
    for (int s = 1; s >= -13; --s)
    {
        const uint32_t top = (static_cast<uint32_t>(quotient) >> (s + 29)) & 3;
        if (top == 1)
            return pack_positive(quotient, s);
        if (top == 2)
            return packed(quotient >> (s + 14), s);
    }
    return packed(quotient, -14);
}

GGO_Fix32 hypotenuse(Steps* steps, GGO_Fix32 x, GGO_Fix32 y)
{
    uint32_t status = 0;
    return ggo_fix32_sqrt(&status, steps->add(steps->mul(x, x), steps->mul(y, y)));
}

void decompose_by_x(Steps* steps, const GGO_MatrixFixed* matrix, GGO_Fix32 scale_x, GGO_Fix32 scale_y,
                    GGO_PartsFixed* parts)
{
    const GGO_Fix32 first = steps->mul(wide_linear(matrix, 3), wide_linear(matrix, 1));
    const GGO_Fix32 sum = steps->add(first, steps->mul(wide_linear(matrix, 2), wide_linear(matrix, 0)));
    parts->scale_y = steps->to_fix16(scale_y);
    parts->cosine = steps->to_fix16(steps->div(wide_linear(matrix, 0), scale_x));
    parts->sine = steps->to_fix16(steps->div(wide_linear(matrix, 1), scale_x));
    parts->shear = steps->to_fix16(steps->div(steps->div(sum, scale_x), scale_x));
}

void decompose_by_y(Steps* steps, const GGO_MatrixFixed* matrix, GGO_PartsFixed* parts)
{
    const GGO_Fix32 scale_y = hypotenuse(steps, wide_linear(matrix, 2), wide_linear(matrix, 3));
    parts->scale_y = steps->to_fix16(scale_y);
    parts->cosine = 0x10000;
    if (scale_y == 0)
        return;
    parts->sine = steps->to_fix16(steps->div(-wide_linear(matrix, 2), scale_y));
    parts->cosine = steps->to_fix16(steps->div(wide_linear(matrix, 3), scale_y));
}

}  // namespace

uint64_t ggo_pack_point_fixed(GGO_Fix8 x, GGO_Fix8 y)
{
    return static_cast<uint64_t>(static_cast<uint32_t>(y)) << 32 | static_cast<uint32_t>(x);
}

GGO_Matrix ggo_matrix_from_fixed(const GGO_MatrixFixed* matrix)
{
    if (matrix == nullptr)
        return {};
    const int32_t* m = matrix->m;
    return {{ggo_fix16_to_double(m[0]), ggo_fix16_to_double(m[1]), ggo_fix16_to_double(m[2]), ggo_fix16_to_double(m[3]),
             ggo_fix8_to_double(m[4]), ggo_fix8_to_double(m[5])}};
}

uint32_t ggo_classify_matrix_fixed(const GGO_MatrixFixed* matrix)
{
    const GGO_Matrix converted = ggo_matrix_from_fixed(matrix);
    return ggo_classify_matrix_double(&converted);
}

void ggo_quarter_turns_fixed(GGO_MatrixFixed* matrix, int32_t count)
{
    if (matrix == nullptr)
        return;
    for (uint32_t turn = 0; turn < (static_cast<uint32_t>(count) & 3); ++turn)
        for (int pair = 0; pair < 6; pair += 2)
        {
            const int32_t x = matrix->m[pair];
            matrix->m[pair] = ggo_fix16_negate(matrix->m[pair + 1]);
            matrix->m[pair + 1] = x;
        }
}

uint64_t ggo_transform_point_fixed(const GGO_MatrixFixed* matrix, uint64_t point, uint32_t* flags)
{
    Steps steps;
    if (matrix == nullptr)
    {
        report(flags, GGO_FIX_OK);
        return point;
    }
    const uint64_t mapped = transform_point(&steps, matrix, low_half(point), low_half(point >> 32));
    report(flags, steps.flags);
    return mapped;
}

uint32_t ggo_multiply_fixed(const GGO_MatrixFixed* first, const GGO_MatrixFixed* then, GGO_MatrixFixed* product)
{
    if (first == nullptr || then == nullptr || product == nullptr)
        return GGO_FIX_OK;
    Steps steps;
    GGO_MatrixFixed made;
    for (int entry = 0; entry < 4; ++entry)
    {
        const int row = entry & 2;
        const GGO_Fix32 x = wide_linear(first, row), y = wide_linear(first, row + 1);
        made.m[entry] = steps.to_fix16(linear_sum(&steps, then, entry & 1, x, y));
    }
    for (int axis = 0; axis < 2; ++axis)
        made.m[axis + 4] = transform_axis(&steps, then, axis, first->m[4], first->m[5]);
    *product = made;
    return steps.flags;
}

uint32_t ggo_scale_fixed(GGO_MatrixFixed* matrix, GGO_Fix16 x, GGO_Fix16 y)
{
    if (matrix == nullptr)
        return GGO_FIX_OK;
    Steps steps;
    for (int entry = 0; entry < 4; ++entry)
        matrix->m[entry] = scale_linear(&steps, matrix->m[entry], (entry & 1) == 0 ? x : y);
    matrix->m[4] = scale_shift(&steps, matrix->m[4], x);
    matrix->m[5] = scale_shift(&steps, matrix->m[5], y);
    return steps.flags;
}

uint32_t ggo_packed_divide(int32_t numerator, GGO_Fix32 determinant, uint32_t guarded, uint32_t* flags)
{
    const int64_t dividend = static_cast<int64_t>(numerator) * (INT64_C(1) << 30);
    const int64_t divisor = ggo_wide_signed(ggo_wide_magnitude(determinant) >> 16, determinant < 0);
    const int64_t quotient = divisor == 0 ? dividend : dividend / divisor;
    const int64_t upper = guarded != 0 ? 0x7FFD7FFF : 0x7FFFFFFF;
    const int64_t lower = guarded != 0 ? -INT64_C(0x80000000) + 0x28000 : -INT64_C(0x80000000);
    const bool outside = quotient > upper || quotient < lower;
    report(flags, outside ? GGO_FIX_OVERFLOW : GGO_FIX_OK);
    if (outside)
        return quotient > upper ? 0xFFFF1 : 0x100001;
    return pack_quotient(static_cast<int32_t>(quotient));
}

uint32_t ggo_invert_fixed(const GGO_MatrixFixed* matrix, uint32_t guarded, uint32_t inverse[4], uint32_t* invertible)
{
    report(invertible, 0);
    if (matrix == nullptr)
        return GGO_FIX_OK;
    Steps steps;
    const GGO_Fix32 determinant = wide_determinant(&steps, matrix);
    report(invertible, determinant != 0 ? 1 : 0);
    if (determinant == 0)
        return steps.flags;
    const int32_t* m = matrix->m;
    const int32_t numerators[4] = {m[3], ggo_fix16_negate(m[1]), ggo_fix16_negate(m[2]), m[0]};
    for (int i = 0; i < 4; ++i)
    {
        uint32_t flags = 0;
        const uint32_t word = ggo_packed_divide(numerators[i], determinant, guarded, &flags);
        if (inverse != nullptr)
            inverse[i] = word;
        steps.flags |= flags;
    }
    return steps.flags;
}

uint32_t ggo_decompose_fixed(const GGO_MatrixFixed* matrix, GGO_PartsFixed* parts, uint32_t* flags)
{
    report(flags, GGO_FIX_OK);
    if (matrix == nullptr || parts == nullptr)
        return 0;
    Steps steps;
    uint32_t result = 0;
    *parts = {};
    parts->shift_x = matrix->m[4];
    parts->shift_y = matrix->m[5];
    const GGO_Fix32 scale_x = hypotenuse(&steps, wide_linear(matrix, 0), wide_linear(matrix, 1));
    parts->scale_x = steps.to_fix16(scale_x);
    if (scale_x != 0)
    {
        const GGO_Fix32 scale_y = steps.div(wide_determinant(&steps, matrix), scale_x);
        decompose_by_x(&steps, matrix, scale_x, scale_y, parts);
        result = scale_y != 0 ? 1 : 0;
    }
    else
    {
        decompose_by_y(&steps, matrix, parts);
    }
    parts->ratio = ggo_fix16_max();
    if (matrix->m[3] != 0)
        parts->ratio = steps.to_fix16(steps.div(wide_linear(matrix, 2), wide_linear(matrix, 3)));
    report(flags, steps.flags);
    return result;
}

GGO_BoxFixed ggo_transform_box_fixed(const GGO_MatrixFixed* matrix, GGO_BoxFixed box, uint64_t corners[4],
                                     uint32_t* flags)
{
    report(flags, GGO_FIX_OK);
    if (matrix == nullptr)
        return box;
    Steps steps;
    const GGO_Fix8 corner_x[4] = {box.gbx_MinX, box.gbx_MaxX, box.gbx_MaxX, box.gbx_MinX};
    const GGO_Fix8 corner_y[4] = {box.gbx_MinY, box.gbx_MinY, box.gbx_MaxY, box.gbx_MaxY};
    const bool empty = box.gbx_MinX > box.gbx_MaxX || box.gbx_MinY > box.gbx_MaxY;
    for (int i = 0; corners != nullptr && i < 4; ++i)
        corners[i] = empty ? ggo_pack_point_fixed(corner_x[i], corner_y[i])
                           : transform_point(&steps, matrix, corner_x[i], corner_y[i]);
    GGO_Fix8 low[2], high[2];
    for (int axis = 0; !empty && axis < 2; ++axis)
    {
        const bool x_up = matrix->m[axis] > 0, y_up = matrix->m[axis + 2] > 0;
        low[axis] = transform_axis(&steps, matrix, axis, x_up ? box.gbx_MinX : box.gbx_MaxX,
                                   y_up ? box.gbx_MinY : box.gbx_MaxY);
        high[axis] = transform_axis(&steps, matrix, axis, x_up ? box.gbx_MaxX : box.gbx_MinX,
                                    y_up ? box.gbx_MaxY : box.gbx_MinY);
    }
    report(flags, steps.flags);
    return empty ? box : GGO_BoxFixed{low[0], low[1], high[0], high[1]};
}
