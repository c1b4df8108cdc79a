// Takes apart strokes that Cairo cannot make by itself: with caps that differ, or with caps and joins that
// it doesn't know.

#pragma once

#include "renderers/cairo/scene.h"

namespace orvlog::cairo_renderer
{

// True if Cairo's own stroke is the stroke.
bool is_plain(const StrokeStyle& style);

// A stroke in parts, whose union it is. All are in the pen's space.
struct StrokeParts
{
    Path body;  // lines, to be stroked with butt caps, no dashes, and `body_join`
    Join body_join = Join::bevel;
    Path corners;  // caps and joins, to be filled by the nonzero rule
};

// `tolerance` is how far lines may be off curves, in the pen's space.
StrokeParts take_apart(const Path& path, const StrokeStyle& style, double tolerance);

}  // namespace orvlog::cairo_renderer
