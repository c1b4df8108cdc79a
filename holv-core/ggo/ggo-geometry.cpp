#include "holv-core/ggo/ggo-geometry.h"

namespace
{

constexpr double kNear = 0.001F;
constexpr double kShiftNear = 0.01F;

bool near_zero(double v)
{
    return -kNear < v && v < kNear;
}

bool near_plus_one(double v)
{
    return 1 - kNear < v && v < 1 + kNear;
}

bool near_minus_one(double v)
{
    return -1 - kNear < v && v < -1 + kNear;
}

}  // namespace

double ggo_determinant(const GGO_Matrix* matrix)
{
    const double* m = matrix->m;
    return m[0] * m[3] - m[2] * m[1];
}

GGO_Matrix ggo_inverse(const GGO_Matrix* matrix, uint32_t* invertible)
{
    const double* m = matrix->m;
    const double d = ggo_determinant(matrix);
    *invertible = d == 0.0 ? 0 : 1;
    if (d == 0.0)
        return *matrix;
    GGO_Matrix inverse;
    double* n = inverse.m;
    n[0] = m[3] / d;
    n[1] = -m[1] / d;
    n[2] = -m[2] / d;
    n[3] = m[0] / d;
    n[4] = -(m[5] * n[2] + m[4] * n[0]);
    n[5] = -(m[5] * n[3] + m[4] * n[1]);
    return inverse;
}

GGO_Point ggo_transform_point(const GGO_Matrix* matrix, GGO_Point point)
{
    const double* m = matrix->m;
    return {point.gpf_X * m[0] + point.gpf_Y * m[2] + m[4], point.gpf_X * m[1] + point.gpf_Y * m[3] + m[5]};
}

GGO_Vector ggo_transform_vector(const GGO_Matrix* matrix, GGO_Vector vector)
{
    const double* m = matrix->m;
    return {vector.gvf_X * m[0] + vector.gvf_Y * m[2], vector.gvf_X * m[1] + vector.gvf_Y * m[3]};
}

void ggo_make_empty_box(GGO_BoxFloat* box)
{
    *box = {1, 1, -1, -1};
}

GGO_Matrix ggo_identity(void)
{
    return {{1, 0, 0, 1, 0, 0}};
}

GGO_Matrix ggo_multiply(const GGO_Matrix* first, const GGO_Matrix* then)
{
    const double* p = first->m;
    const double* r = then->m;
    return {{p[0] * r[0] + p[1] * r[2], p[0] * r[1] + p[1] * r[3],                  //
             p[2] * r[0] + p[3] * r[2], p[2] * r[1] + p[3] * r[3],                  //
             p[4] * r[0] + p[5] * r[2] + r[4], p[4] * r[1] + p[5] * r[3] + r[5]}};
}

uint32_t ggo_classify_matrix(const GGO_Matrix* matrix)
{
    const double a = matrix->m[0], b = matrix->m[1], c = matrix->m[2], d = matrix->m[3];
    const double e = matrix->m[4], f = matrix->m[5];
    const bool still = -kShiftNear < e && e < kShiftNear && -kShiftNear < f && f < kShiftNear;
    const auto shifted = [still](uint32_t code) { return still ? code : code + GGO_XFLAG_XLATE; };
    const bool upright = near_zero(b) && near_zero(c);
    const bool turned = near_zero(a) && near_zero(d);

    if (upright && near_plus_one(a) && near_plus_one(d))
        return still ? GGO_XFLAG_IDENTITY : GGO_XFLAG_XLATE;
    if (turned && near_plus_one(c) && near_minus_one(b))
        return shifted(0x60);
    if (turned && near_plus_one(b) && near_minus_one(c))
        return shifted(0xE0);
    if (upright && near_minus_one(d) && near_minus_one(a))
        return shifted(0xA0);
    if (upright && near_plus_one(a) && near_minus_one(d))
        return shifted(0x08);
    if (upright && near_minus_one(a) && near_plus_one(d))
        return shifted(0xA8);
    if (upright && a > kNear && d > kNear)
        return shifted(0x04);
    if (turned && near_plus_one(b) && near_plus_one(c))
        return shifted(0x68);
    if (turned && near_minus_one(b) && near_minus_one(c))
        return shifted(0xE8);
    if (turned && b < -kNear && c > kNear)
        return shifted(0x64);
    if (turned && b > kNear && c < -kNear)
        return shifted(0xE4);
    if (upright && a < -kNear && d < -kNear)
        return shifted(0xA4);
    if (upright && a > kNear && d < -kNear)
        return shifted(0x0C);
    if (upright && a < -kNear && d > kNear)
        return shifted(0xAC);
    if (!near_zero(a))
        return GGO_XFLAG_GENERAL;
    if (near_zero(d) && b > kNear && c > kNear)
        return shifted(0x6C);
    if (near_zero(d) && b < -kNear && c < -kNear)
        return shifted(0xEC);
    if (!near_zero(b) || !near_zero(c) || !near_zero(d) || !still)
        return GGO_XFLAG_GENERAL;
    return GGO_XFLAG_NONE;
}
