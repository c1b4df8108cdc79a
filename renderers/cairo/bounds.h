// Where a scene lies.

#pragma once

#include "renderers/cairo/scene.h"

namespace orvlog::cairo_renderer
{

// The box around a box under a matrix.
Box transformed(const Box& box, const cairo_matrix_t& matrix);

// A box that holds all that the nodes paint, in their content space. False if it has no bounds or nothing
// is painted.
bool bounds_of(const Nodes& nodes, Box& box);

// The same for a shape under a matrix. Lines are given a pixel more, as none is thinner than that.
bool bounds_of(const Shape& shape, const cairo_matrix_t& matrix, Box& box);

}  // namespace orvlog::cairo_renderer
