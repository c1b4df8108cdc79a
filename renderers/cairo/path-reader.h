// Reads path records into paths.

#pragma once

#include "orvlog/interface/gpa-path.h"
#include "renderers/cairo/complaints.h"
#include "renderers/cairo/scene.h"

namespace orvlog::cairo_renderer
{

enum class PathUse
{
    fill,
    stroke  // edges with GPA_SUPPRESS_STROKING_FLAG are left out
};

// An empty path for null records.
Path read_path(const GPA_PathPointer* path, PathUse use, Complaints& complaints);

StrokeStyle read_stroke_style(const GPA_PathStrokingParams& params, Complaints& complaints);

cairo_fill_rule_t read_winding_rule(uint32_t rule);

}  // namespace orvlog::cairo_renderer
