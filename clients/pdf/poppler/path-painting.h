// SPDX-License-Identifier: GPL-2.0-or-later
//
// Fills, strokes and clips of poppler's current path. Within a Type 3 glyph a fill may become part of the glyph;
// all else gives the glyph up.

#pragma once

#include "clients/pdf/poppler/canvas.h"
#include "clients/pdf/poppler/type3-glyphs.h"

namespace orvlog::pdf_client
{

void fill_path(Type3Glyphs& type3, Canvas& canvas, GfxState* state, Winding winding);
void stroke_path(Type3Glyphs& type3, Canvas& canvas, GfxState* state);
// The outlines are in user space.
void stroke_outlines(Type3Glyphs& type3, Canvas& canvas, GfxState* state, const Path& outlines);

// Narrow down the canvas's clip, the second to what a stroke would paint.
void clip_to_path(Type3Glyphs& type3, Canvas& canvas, GfxState* state, Winding winding);
void clip_to_stroke(Type3Glyphs& type3, Canvas& canvas, GfxState* state);

}  // namespace orvlog::pdf_client
