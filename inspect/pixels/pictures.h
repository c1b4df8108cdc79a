// Pictures of what differs.

#pragma once

#include "inspect/pixels/page-look.h"

#include <string>

namespace orvlog::inspect
{

// Writes a picture as a PNG file, transparent pixels as on white paper. False if it could not be written.
bool write_picture(const PixelCopy& picture, const std::string& file);

// What both have in pale grey, what differs in red, and a frame around it. `tolerance`: channels may differ by as much.
PixelCopy marked_picture(const PixelCopy& a, const PixelCopy& b, uint32_t tolerance);

// Whether pixels differ by more in a channel.
bool differ(uint32_t a, uint32_t b, uint32_t tolerance);

}  // namespace orvlog::inspect
