// A glyph as something that can be shown.

#pragma once

#include "holv-core/ggo/ggo-geometry.h"
#include "reader/tree/element.h"

#include <cstdint>
#include <string>

namespace orvlog::tool
{

struct GlyphPicture
{
    std::string data;    // SVG path data of an outline, in pixels; empty: it is none
    GGO_BoxFloat box{};  // around it
    std::string png;     // of a bitmap; empty likewise
    uint32_t width = 0;  // of the bitmap
    uint32_t height = 0;
};

// The description in a GFI_GlyphDescPointer; nothing of forms that can't be shown. Outlines are turned to pixels by the
// linear part of `to_pixels`.
GlyphPicture glyph_picture(const orvlog::reader::Element& pointer, const GGO_Matrix& to_pixels);

}  // namespace orvlog::tool
