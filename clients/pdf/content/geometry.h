// SPDX-License-Identifier: GPL-2.0-or-later
//
// Matrices, points and vectors of the content: the base library's, taken and given by value, and what the content asks
// for beside them.

#pragma once

#include "holv-core/ggo/ggo-geometry.h"

namespace orvlog::pdf_client
{

inline GGO_Matrix identity()
{
    return ggo_identity();
}

// `first` acts first.
inline GGO_Matrix multiply(const GGO_Matrix& first, const GGO_Matrix& then)
{
    return ggo_multiply(&first, &then);
}

inline double determinant(const GGO_Matrix& matrix)
{
    return ggo_determinant(&matrix);
}

inline GGO_Point transform(const GGO_Matrix& matrix, GGO_Point point)
{
    return ggo_transform_point(&matrix, point);
}

// By the linear part alone.
inline GGO_Vector transform(const GGO_Matrix& matrix, GGO_Vector vector)
{
    return ggo_transform_vector(&matrix, vector);
}

GGO_Matrix scaling(double x, double y);
GGO_Matrix translation(double x, double y);
// The identity for a matrix that has no inverse.
GGO_Matrix inverse(const GGO_Matrix& matrix);
bool finite(const GGO_Matrix& matrix);
// True if circles stay circles.
bool keeps_circles(const GGO_Matrix& matrix);
// The square root of the area of a unit square's image.
double mean_scale(const GGO_Matrix& matrix);

}  // namespace orvlog::pdf_client
