// Pictures of what differs.

#pragma once

#include "inspect/pixels/page-look.h"

#include <cairo.h>

#include <string>

namespace orvlog::inspect
{

// The bytes of a PNG file; empty if there is no memory for it. Of a picture transparent pixels are as on white paper.
std::string surface_png(cairo_surface_t* surface);
std::string picture_png(const PixelCopy& picture);

// What both have in pale grey, what differs in red, and a frame around it. `tolerance`: channels may differ by as much.
PixelCopy marked_picture(const PixelCopy& a, const PixelCopy& b, uint32_t tolerance);

// Whether pixels differ by more in a channel.
bool differ(uint32_t a, uint32_t b, uint32_t tolerance);

}  // namespace orvlog::inspect
