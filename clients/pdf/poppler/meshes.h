// SPDX-License-Identifier: GPL-2.0-or-later
//
// Meshes of triangles and of patches. All of them are painted as triangles with a colour at each corner, the
// patches and what a function colours in pieces of a few pixels.

#pragma once

#include "clients/pdf/poppler/canvas.h"

namespace orvlog::pdf_client
{

void paint_mesh(Canvas& canvas, GfxState* state, GfxGouraudTriangleShading& shading);
void paint_mesh(Canvas& canvas, GfxState* state, GfxPatchMeshShading& shading);

}  // namespace orvlog::pdf_client
