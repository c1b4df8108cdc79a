// SPDX-License-Identifier: GPL-2.0-or-later

#include "clients/pdf/content/geometry.h"

#include <algorithm>
#include <cmath>
#include <iterator>

namespace orvlog::pdf_client
{

GGO_Matrix scaling(double x, double y)
{
    return {{x, 0, 0, y, 0, 0}};
}

GGO_Matrix translation(double x, double y)
{
    return {{1, 0, 0, 1, x, y}};
}

GGO_Matrix inverse(const GGO_Matrix& matrix)
{
    uint32_t invertible = 0;
    const GGO_Matrix result = ggo_inverse(&matrix, &invertible);
    return invertible != 0 && std::isfinite(determinant(matrix)) ? result : identity();
}

bool finite(const GGO_Matrix& matrix)
{
    return std::all_of(std::begin(matrix.m), std::end(matrix.m), [](double v) { return std::isfinite(v); });
}

bool keeps_circles(const GGO_Matrix& matrix)
{
    const double* m = matrix.m;
    const double size = std::abs(m[0]) + std::abs(m[1]) + std::abs(m[2]) + std::abs(m[3]);
    const double tolerance = 1e-9 * size;
    const bool turned = std::abs(m[0] - m[3]) <= tolerance && std::abs(m[1] + m[2]) <= tolerance;
    const bool mirrored = std::abs(m[0] + m[3]) <= tolerance && std::abs(m[1] - m[2]) <= tolerance;
    return turned || mirrored;
}

double mean_scale(const GGO_Matrix& matrix)
{
    return std::sqrt(std::abs(determinant(matrix)));
}

}  // namespace orvlog::pdf_client
