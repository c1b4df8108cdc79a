#include "holv-core/ggo/ggo-transform.h"

#include "holv-core/ggo/ggo-classify.h"
#include "holv-core/ggo/ggo-faults.h"
#include "holv-core/ggo/ggo-fixed.h"

#include <bit>
#include <cmath>
#include <initializer_list>
#include <type_traits>

namespace
{

constexpr uint64_t kUnitsInTheLastPlace = 12;

template <typename Number> struct Parts
{
    Number scale_x, scale_y, shear, cosine, sine, shift_x, shift_y;
};

template <typename Number> using BitsOf = std::conditional_t<sizeof(Number) == 8, uint64_t, uint32_t>;

template <typename Number> constexpr BitsOf<Number> kInfinity = 0;
template <> constexpr uint64_t kInfinity<double> = 0x7FF0000000000000;
template <> constexpr uint32_t kInfinity<float> = 0x7F800000;
template <typename Number> constexpr BitsOf<Number> kSmallestNormal = 0;
template <> constexpr uint64_t kSmallestNormal<double> = 0x0010000000000000;
template <> constexpr uint32_t kSmallestNormal<float> = 0x00800000;

template <typename Number> BitsOf<Number> magnitude_bits(Number value)
{
    constexpr auto kAllButSign = static_cast<BitsOf<Number>>(~BitsOf<Number>{0} >> 1);
    return std::bit_cast<BitsOf<Number>>(value) & kAllButSign;
}

double absolute(double value)
{
    return ggo_abs_double(value);
}

float absolute(float value)
{
    return ggo_abs_float(value);
}

struct Square
{
    double high;
    double low;
};

// The square without any loss, by halves of 26 bits. The value is far from overflow and underflow.
Square square_of(double value)
{
    constexpr double kSplit = 0x1p+27 + 1;
    const double turned = value * kSplit;
    const double high = turned - (turned - value), low = value - high;
    const double square = value * value;
    return {square, ((high * high - square) + 2 * high * low) + low * low};
}

// The root of x*x + y*y for x >= y > 0, rounded once but for ties as good as never met.
double root_of_squares(double x, double y)
{
    const double root = std::sqrt(x * x + y * y);
    const Square xx = square_of(x), yy = square_of(y), rr = square_of(root);
    const double rest = ((xx.high - rr.high) + yy.high) + ((xx.low + yy.low) - rr.low);
    return root + rest / (2 * root);
}

// By bits and plain steps, so that it meets no fault that its operands and result don't call for.
double hypotenuse(double x, double y)
{
    uint64_t larger = magnitude_bits(x), smaller = magnitude_bits(y);
    if (larger < smaller)
    {
        const uint64_t swapped = larger;
        larger = smaller;
        smaller = swapped;
    }
    const auto a = std::bit_cast<double>(larger), b = std::bit_cast<double>(smaller);
    if (larger >= kInfinity<double>)
        return smaller == kInfinity<double> ? b : a;
    constexpr uint64_t kNegligible = UINT64_C(54) << 52;
    if (smaller == 0 || larger - smaller > kNegligible)
        return a + b;
    constexpr uint64_t kHuge = UINT64_C(1523) << 52, kTiny = UINT64_C(623) << 52;  // 2^500 and 2^-400
    const double down = larger > kHuge ? 0x1p-600 : larger < kTiny ? 0x1p+600 : 1;
    const double up = larger > kHuge ? 0x1p+600 : larger < kTiny ? 0x1p-600 : 1;
    return root_of_squares(a * down, b * down) * up;
}

// In double precision no square of a single number overflows or underflows.
float hypotenuse(float x, float y)
{
    const uint32_t a = magnitude_bits(x), b = magnitude_bits(y);
    if (a >= kInfinity<float> || b >= kInfinity<float>)
        return a == kInfinity<float> || b == kInfinity<float> ? std::bit_cast<float>(kInfinity<float>) : x + y;
    const double p = x, q = y;
    return static_cast<float>(std::sqrt(p * p + q * q));
}

template <typename Number> Number determinant(const Number* m)
{
    return m[0] * m[3] - m[2] * m[1];
}

template <typename Number> void divide_by_scale_x(const Number* m, Parts<Number>* parts)
{
    const Number scale = parts->scale_x;
    parts->scale_y = determinant(m) / scale;
    parts->cosine = m[0] / scale;
    parts->sine = m[1] / scale;
    parts->shear = (m[3] * m[1] + m[2] * m[0]) / (scale * scale);
}

template <typename Number> void divide_by_scale_y(const Number* m, bool zero, Parts<Number>* parts)
{
    parts->sine = zero ? 0 : -m[2] / parts->scale_y;
    parts->cosine = zero ? 1 : m[3] / parts->scale_y;
}

template <typename Number> void take_shift(const Number* m, Parts<Number>* parts)
{
    *parts = {};
    parts->shift_x = m[4];
    parts->shift_y = m[5];
}

template <typename Number> uint32_t decompose(const Number* m, Parts<Number>* parts)
{
    take_shift(m, parts);
    parts->scale_x = hypotenuse(m[0], m[1]);
    if (parts->scale_x != 0)
    {
        divide_by_scale_x(m, parts);
        return parts->scale_y != 0 ? 1 : 0;
    }
    parts->scale_y = hypotenuse(m[2], m[3]);
    divide_by_scale_y(m, parts->scale_y == 0, parts);
    return 0;
}

template <typename Number> uint32_t decompose_within(const Number* m, Number p, Number q, Parts<Number>* parts)
{
    const Number t = (q / p) / 10;
    take_shift(m, parts);
    parts->scale_x = hypotenuse(m[0], m[1]);
    const bool no_x = t > parts->scale_x;
    if (no_x)
        parts->scale_y = hypotenuse(m[2], m[3]);
    else
        divide_by_scale_x(m, parts);
    const bool no_y = t > absolute(parts->scale_y);
    if (no_x)
        divide_by_scale_y(m, no_y, parts);
    if (no_x && no_y)
        return 0;
    return !no_x && !no_y ? 1 : absolute(determinant(m)) > t * t ? 1 : 0;
}

template <typename Number> struct Watched
{
    const Number* m;
    Parts<Number> parts;
    uint32_t result;
};

// An exact denormal result is met by no flag. All but those of the end are operands of a later step.
template <typename Number> bool ends_in_denormal(const Parts<Number>& parts)
{
    for (const Number value : {parts.scale_x, parts.scale_y, parts.shear, parts.cosine, parts.sine})
    {
        const auto bits = magnitude_bits(value);
        if (bits != 0 && bits < kSmallestNormal<Number>)
            return true;
    }
    return false;
}

template <typename Number> uint32_t decompose_watched(const Number* m, Parts<Number>* parts, uint32_t* faulted)
{
    Watched<Number> watched = {m, {}, 0};
    const auto work = [](void* context)
    {
        auto* w = static_cast<Watched<Number>*>(context);
        w->result = decompose(w->m, &w->parts);
    };
    const bool fault = ggo_run_watched(work, &watched) || ends_in_denormal(watched.parts);
    if (faulted != nullptr)
        *faulted = fault ? 1 : 0;
    if (fault)
        return 0;
    *parts = watched.parts;
    return watched.result;
}

template <typename Number> void put(Number* out, Number value)
{
    if (out != nullptr)
        *out = value;
}

template <typename Number>
void put_parts(const Parts<Number>& parts, Number* scale_x, Number* scale_y, Number* shear, Number* cosine,
               Number* sine, Number* shift_x, Number* shift_y)
{
    put(scale_x, parts.scale_x);
    put(scale_y, parts.scale_y);
    put(shear, parts.shear);
    put(cosine, parts.cosine);
    put(sine, parts.sine);
    put(shift_x, parts.shift_x);
    put(shift_y, parts.shift_y);
}

template <typename Number> void quarter_turns(Number* m, int32_t count)
{
    const uint32_t turns = static_cast<uint32_t>(count) & 3;
    for (int pair = 0; pair < 6; pair += 2)
    {
        const Number x = m[pair], y = m[pair + 1];
        if (turns == 0)
            continue;
        m[pair] = turns == 1 ? -y : turns == 2 ? -x : y;
        m[pair + 1] = turns == 1 ? x : turns == 2 ? -y : -x;
    }
}

template <typename Number> Number step(Number value, bool up)
{
    using Bits = BitsOf<Number>;
    constexpr auto kStep = static_cast<Bits>(kUnitsInTheLastPlace);
    constexpr auto kSign = static_cast<Bits>(~(~Bits{0} >> 1));
    const Bits magnitude = magnitude_bits(value);
    const Bits sign = std::bit_cast<Bits>(value) & kSign;
    if (magnitude > kInfinity<Number>)
        return value;
    if ((sign == 0) == up)
    {
        const Bits stepped = magnitude + kStep;
        return std::bit_cast<Number>(sign | (stepped > kInfinity<Number> ? kInfinity<Number> : stepped));
    }
    if (magnitude >= kStep)
        return std::bit_cast<Number>(static_cast<Bits>(sign | (magnitude - kStep)));
    return std::bit_cast<Number>(static_cast<Bits>((sign ^ kSign) | (kStep - magnitude)));
}

// Bounds in the order of a box: minimum X and Y, maximum X and Y.
template <typename Number> void transform_bounds(const Number* m, const Number* from, Number* to)
{
    for (int axis = 0; axis < 2; ++axis)
    {
        const Number of_x = m[axis], of_y = m[axis + 2];
        to[axis] = of_y * (of_y > 0 ? from[1] : from[3]) + of_x * (of_x > 0 ? from[0] : from[2]) + m[axis + 4];
        to[axis + 2] = of_y * (of_y > 0 ? from[3] : from[1]) + of_x * (of_x > 0 ? from[2] : from[0]) + m[axis + 4];
    }
}

template <typename Number, typename Widen, typename Box>
Box transform_box(const Number* m, const Box& box, const Number (&from)[4], Widen widen)
{
    if (from[0] > from[2] || from[1] > from[3])
        return box;
    Number to[4];
    transform_bounds(m, from, to);
    return {widen(to[0], false), widen(to[1], false), widen(to[2], true), widen(to[3], true)};
}

}  // namespace

uint32_t ggo_classify_matrix_double(const GGO_Matrix* matrix)
{
    if (matrix == nullptr)
        return GGO_XFLAG_NONE;
    return ggo_classify_by<double>(matrix->m, {0.001, 0.01, 0.999, 1.001, -0.999, -1.001});
}

uint32_t ggo_classify_matrix_single(const GGO_MatrixSingle* matrix)
{
    if (matrix == nullptr)
        return GGO_XFLAG_NONE;
    return ggo_classify_by<float>(matrix->m, {0.001F, 0.01F, 0.999F, 1.001F, -0.999F, -1.001F});
}

void ggo_quarter_turns_double(GGO_Matrix* matrix, int32_t count)
{
    if (matrix != nullptr)
        quarter_turns(matrix->m, count);
}

void ggo_quarter_turns_single(GGO_MatrixSingle* matrix, int32_t count)
{
    if (matrix != nullptr)
        quarter_turns(matrix->m, count);
}

uint32_t ggo_decompose_double(const GGO_Matrix* matrix, double* scale_x, double* scale_y, double* shear, double* cosine,
                              double* sine, double* shift_x, double* shift_y)
{
    if (matrix == nullptr)
        return 0;
    Parts<double> parts;
    const uint32_t result = decompose(matrix->m, &parts);
    put_parts(parts, scale_x, scale_y, shear, cosine, sine, shift_x, shift_y);
    return result;
}

uint32_t ggo_decompose_single(const GGO_MatrixSingle* matrix, float* scale_x, float* scale_y, float* shear,
                              float* cosine, float* sine, float* shift_x, float* shift_y)
{
    if (matrix == nullptr)
        return 0;
    Parts<float> parts;
    const uint32_t result = decompose(matrix->m, &parts);
    put_parts(parts, scale_x, scale_y, shear, cosine, sine, shift_x, shift_y);
    return result;
}

uint32_t ggo_decompose_within_double(const GGO_Matrix* matrix, double p, double q, double* scale_x, double* scale_y,
                                     double* shear, double* cosine, double* sine, double* shift_x, double* shift_y)
{
    if (matrix == nullptr)
        return 0;
    Parts<double> parts;
    const uint32_t result = decompose_within(matrix->m, p, q, &parts);
    put_parts(parts, scale_x, scale_y, shear, cosine, sine, shift_x, shift_y);
    return result;
}

uint32_t ggo_decompose_within_single(const GGO_MatrixSingle* matrix, float p, float q, float* scale_x, float* scale_y,
                                     float* shear, float* cosine, float* sine, float* shift_x, float* shift_y)
{
    if (matrix == nullptr)
        return 0;
    Parts<float> parts;
    const uint32_t result = decompose_within(matrix->m, p, q, &parts);
    put_parts(parts, scale_x, scale_y, shear, cosine, sine, shift_x, shift_y);
    return result;
}

uint32_t ggo_decompose_trapping_double(const GGO_Matrix* matrix, double* scale_x, double* scale_y, double* shear,
                                       double* cosine, double* sine, double* shift_x, double* shift_y,
                                       uint32_t* faulted)
{
    uint32_t fault = 0;
    put(faulted, fault);
    if (matrix == nullptr)
        return 0;
    Parts<double> parts;
    const uint32_t result = decompose_watched(matrix->m, &parts, &fault);
    put(faulted, fault);
    if (fault == 0)
        put_parts(parts, scale_x, scale_y, shear, cosine, sine, shift_x, shift_y);
    return result;
}

uint32_t ggo_decompose_trapping_single(const GGO_MatrixSingle* matrix, float* scale_x, float* scale_y, float* shear,
                                       float* cosine, float* sine, float* shift_x, float* shift_y, uint32_t* faulted)
{
    uint32_t fault = 0;
    put(faulted, fault);
    if (matrix == nullptr)
        return 0;
    Parts<float> parts;
    const uint32_t result = decompose_watched(matrix->m, &parts, &fault);
    put(faulted, fault);
    if (fault == 0)
        put_parts(parts, scale_x, scale_y, shear, cosine, sine, shift_x, shift_y);
    return result;
}

double ggo_step_up_double(double value)
{
    return step(value, true);
}

double ggo_step_down_double(double value)
{
    return step(value, false);
}

float ggo_step_up_single(float value)
{
    return step(value, true);
}

float ggo_step_down_single(float value)
{
    return step(value, false);
}

GGO_BoxFloat ggo_transform_box_within_double(const GGO_Matrix* matrix, GGO_BoxFloat box, double tolerance)
{
    if (matrix == nullptr)
        return box;
    const double t = tolerance / 10;
    return transform_box(matrix->m, box, {box.gbf_MinX, box.gbf_MinY, box.gbf_MaxX, box.gbf_MaxY},
                         [t](double bound, bool up) { return up ? bound + t : bound - t; });
}

GGO_BoxSingle ggo_transform_box_within_single(const GGO_MatrixSingle* matrix, GGO_BoxSingle box, float tolerance)
{
    if (matrix == nullptr)
        return box;
    const float t = tolerance / 10;
    return transform_box(matrix->m, box, {box.gbs_MinX, box.gbs_MinY, box.gbs_MaxX, box.gbs_MaxY},
                         [t](float bound, bool up) { return up ? bound + t : bound - t; });
}

GGO_BoxFloat ggo_transform_box_stepped_double(const GGO_Matrix* matrix, GGO_BoxFloat box)
{
    if (matrix == nullptr)
        return box;
    return transform_box(matrix->m, box, {box.gbf_MinX, box.gbf_MinY, box.gbf_MaxX, box.gbf_MaxY}, step<double>);
}

GGO_BoxSingle ggo_transform_box_stepped_single(const GGO_MatrixSingle* matrix, GGO_BoxSingle box)
{
    if (matrix == nullptr)
        return box;
    return transform_box(matrix->m, box, {box.gbs_MinX, box.gbs_MinY, box.gbs_MaxX, box.gbs_MaxY}, step<float>);
}
