// SPDX-License-Identifier: GPL-2.0-or-later
//
// Shadings: those along a line or between circles are gradients, those of a function of the place are cells of a
// few pixels. Meshes have a room of their own.

#pragma once

#include "clients/pdf/poppler/canvas.h"

namespace orvlog::pdf_client
{

void paint_axial(Canvas& canvas, GfxState* state, GfxAxialShading& shading);
void paint_radial(Canvas& canvas, GfxState* state, GfxRadialShading& shading);
void paint_function(Canvas& canvas, GfxState* state, GfxFunctionShading& shading);

}  // namespace orvlog::pdf_client
