// Pictures as files that appear only when they are whole.

#pragma once

#include "inspect/pixels/page-look.h"

#include <string>

namespace orvlog::tool
{

// Writes a picture as a PNG file, transparent pixels as on white paper; none for an empty one. Nothing, or why it
// failed, with the file's name.
std::string write_picture(const orvlog::inspect::PixelCopy& picture, const std::string& file);

// PREFIX-a.png, PREFIX-b.png and PREFIX-marked.png: both, and what differs by more than `tolerance` in a channel.
std::string write_pictures(const orvlog::inspect::PixelCopy& a, const orvlog::inspect::PixelCopy& b, uint32_t tolerance,
                           const std::string& prefix);

}  // namespace orvlog::tool
