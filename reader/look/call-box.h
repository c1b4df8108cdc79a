// Where on its page a call paints, from the elements of its records.

#pragma once

#include "holv-core/ggo/ggo-geometry.h"
#include "reader/tree/element.h"

#include <optional>

namespace orvlog::reader
{

// The least box around points. Points that are not finite are left out.
class BoxAround
{
public:
    void add(double x, double y);
    void add(const GGO_Matrix& matrix, double x, double y);
    void add_rectangle(const GGO_Matrix& matrix, const GGO_BoxFloat& box);
    // Nothing without points; `margin_x` and `margin_y` on each side.
    std::optional<GGO_BoxFloat> box(double margin_x = 0, double margin_y = 0) const;

private:
    GGO_BoxFloat box_{};
    bool any_ = false;
};

// Boxes in the space that `to_pixels` leads to, tight for curves; strokes have half their width around them, without
// the points of mitered corners. Nothing for shapes without extent: no path, text.
//
// `shape` is a GSH_ShapePointer, `path` a GPA_PathPointer.
std::optional<GGO_BoxFloat> shape_box(const Element& shape, const GGO_Matrix& to_pixels);
void add_path(const Element& path, const GGO_Matrix& to_pixels, BoxAround& around);

// The rectangle of an image, a GOP_OperandImagePointer.
std::optional<GGO_BoxFloat> image_box(const Element& image, const GGO_Matrix& to_pixels);

// Half the stroke's width, in pixels to each side.
GGO_Vector stroke_margin(const Element& stroking_params, const GGO_Matrix& to_pixels);

// The glyphs that the callbacks in `call` delivered for the text of `shape`, in pixels, as far as they tell.
std::optional<GGO_BoxFloat> text_box(const Element& call, const Element& shape);

bool is_text(const Element& shape);

}  // namespace orvlog::reader
