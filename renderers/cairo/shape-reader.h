// Reads shapes and clip lists.

#pragma once

#include "orvlog/interface/gsh-shape.h"
#include "renderers/cairo/cairo-renderer.h"
#include "renderers/cairo/complaints.h"
#include "renderers/cairo/scene.h"

namespace orvlog::cairo_renderer
{

struct ShapeContext
{
    const GFI_FontEngineTable* engine;  // the one in force, or null
    cairo_matrix_t content_to_pixels;
    GlyphForm glyph_form;
    Complaints& complaints;
};

// What paints inside the shape. A null shape is everything. For a text, `pen` (may be null) receives the
// pen behind it, in the shape's space.
Shape read_shape(const GSH_ShapePointer* shape, const ShapeContext& context, Point* pen);

// The stroke around `filled`, which is what read_shape made of `shape`. `transform` maps the space in which
// the width is measured to the content space, for texts only; null: sh_Transform does.
Shape read_outline(const GSH_ShapePointer& shape, const Shape& filled, const GPA_PathStrokingParams& params,
                   const GGO_Matrix* transform, const ShapeContext& context);

// True if reading the clips asks for glyphs.
bool has_text(const GSH_ShapeList* list);

ClipList read_clips(const GSH_ShapeList* list, const ShapeContext& context);

}  // namespace orvlog::cairo_renderer
