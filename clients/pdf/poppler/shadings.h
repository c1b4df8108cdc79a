// SPDX-License-Identifier: GPL-2.0-or-later
//
// Shadings: those along a line or between circles and those of triangles are gradients, those of a function of the
// place are cells of a few pixels.

#pragma once

#include "clients/pdf/poppler/canvas.h"

namespace pdf_client
{

void paint_axial(Canvas& canvas, GfxState* state, GfxAxialShading& shading);
void paint_radial(Canvas& canvas, GfxState* state, GfxRadialShading& shading);
void paint_function(Canvas& canvas, GfxState* state, GfxFunctionShading& shading);
void paint_mesh(Canvas& canvas, GfxState* state, GfxGouraudTriangleShading& shading);

// False for a mesh that is left to poppler: of too many triangles, or coloured by a function.
bool can_paint_mesh(GfxGouraudTriangleShading& shading);

}  // namespace pdf_client
