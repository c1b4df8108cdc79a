// Paths and glyphs as files that other programs show.

#pragma once

#include "holv-core/ggo/ggo-geometry.h"
#include "reader/tree/element.h"

#include <string>

namespace orvlog::tool
{

// A GPA_PathPointer as the data of an SVG path, in the path's own space.
std::string path_data(const orvlog::reader::Element& path);

// A GSH_ShapePointer with a path as an SVG file in the space that `to_pixels` leads to; empty for other shapes.
// `stroke` are stroking parameters of the call, or null.
std::string shape_svg(const orvlog::reader::Element& shape, const orvlog::reader::Element* stroke,
                      const GGO_Matrix& to_pixels);

// What a glyph is written as.
struct GlyphFile
{
    std::string ending;  // ".svg", ".pgm", ".bin"; empty: there is nothing to be written
    std::string content;
};

// The description in a GFI_GlyphDescPointer. Outlines are turned to pixels by the linear part of `to_pixels`; bitmaps
// are black on white, pixel by pixel; other descriptions are bytes.
GlyphFile glyph_file(const orvlog::reader::Element& pointer, const GGO_Matrix& to_pixels);

}  // namespace orvlog::tool
