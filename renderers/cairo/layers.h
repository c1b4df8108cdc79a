// Group layers as pixels: what Cairo's operators cannot say about a group and what lies below it.
// All surfaces are image surfaces whose device offset is whole; those that are not, or that are in an error, are
// left alone.

#pragma once

#include "renderers/cairo/scene.h"

namespace orvlog::cairo_renderer
{

// An empty surface that covers the same pixels as `layer`; null if `layer` is no image surface.
SurfacePtr make_plane(cairo_surface_t* layer, cairo_format_t format);

// A surface that covers the same pixels as `layer` and holds what `pattern` (may be null: nothing) paints there.
SurfacePtr copy_of(cairo_pattern_t* pattern, cairo_surface_t* layer);

// Takes from `layer`, which began as a copy of `backdrop`, what the backdrop shows in it. `alpha`, a surface of
// alpha that covers the same pixels, is what the group itself painted, and becomes the layer's alpha.
void remove_backdrop(cairo_surface_t* layer, cairo_surface_t* alpha, cairo_surface_t* backdrop);

// Replaces what `target` has by `result`, an element on `backdrop` alone, as far as `shape` covers. The last three
// cover the same pixels.
void replace_by(cairo_surface_t* target, cairo_surface_t* result, cairo_surface_t* shape, cairo_surface_t* backdrop);

}  // namespace orvlog::cairo_renderer
