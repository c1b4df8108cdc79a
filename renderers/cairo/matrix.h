// The interface's matrices as Cairo's. Both map row vectors.

#pragma once

#include "holv-core/ggo/ggo-geometry.h"

#include <cairo.h>

namespace orvlog::cairo_renderer
{

inline cairo_matrix_t matrix_of(const GGO_Matrix& matrix)
{
    const double* m = matrix.m;
    return {m[0], m[1], m[2], m[3], m[4], m[5]};
}

}  // namespace orvlog::cairo_renderer
