#include "holv-core/ggo/ggo-geometry.h"

#include "holv-core/ggo/ggo-classify.h"

namespace
{

// The bounds are 32-bit floats, widened before anything is compared with them.
constexpr double kNear = 0.001F;
constexpr double kShiftNear = 0.01F;

}  // namespace

double ggo_determinant(const GGO_Matrix* matrix)
{
    if (matrix == nullptr)
        return 0;
    const double* m = matrix->m;
    return m[0] * m[3] - m[2] * m[1];
}

GGO_Matrix ggo_inverse(const GGO_Matrix* matrix, uint32_t* invertible)
{
    const double d = ggo_determinant(matrix);
    if (invertible != nullptr)
        *invertible = d == 0.0 ? 0 : 1;
    if (matrix == nullptr)
        return {};
    if (d == 0.0)
        return *matrix;
    const double* m = matrix->m;
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
    if (matrix == nullptr)
        return point;
    const double* m = matrix->m;
    return {point.gpf_X * m[0] + point.gpf_Y * m[2] + m[4], point.gpf_X * m[1] + point.gpf_Y * m[3] + m[5]};
}

GGO_Vector ggo_transform_vector(const GGO_Matrix* matrix, GGO_Vector vector)
{
    if (matrix == nullptr)
        return vector;
    const double* m = matrix->m;
    return {vector.gvf_X * m[0] + vector.gvf_Y * m[2], vector.gvf_X * m[1] + vector.gvf_Y * m[3]};
}

void ggo_make_empty_box(GGO_BoxFloat* box)
{
    if (box != nullptr)
        *box = {1, 1, -1, -1};
}

GGO_Matrix ggo_identity(void)
{
    return {{1, 0, 0, 1, 0, 0}};
}

GGO_Matrix ggo_multiply(const GGO_Matrix* first, const GGO_Matrix* then)
{
    if (first == nullptr || then == nullptr)
        return {};
    const double* p = first->m;
    const double* r = then->m;
    return {{p[0] * r[0] + p[1] * r[2], p[0] * r[1] + p[1] * r[3],  //
             p[2] * r[0] + p[3] * r[2], p[2] * r[1] + p[3] * r[3],  //
             p[4] * r[0] + p[5] * r[2] + r[4], p[4] * r[1] + p[5] * r[3] + r[5]}};
}

uint32_t ggo_classify_matrix(const GGO_Matrix* matrix)
{
    if (matrix == nullptr)
        return GGO_XFLAG_NONE;
    return ggo_classify_by<double>(matrix->m, {kNear, kShiftNear, 1 - kNear, 1 + kNear, -1 + kNear, -1 - kNear});
}
