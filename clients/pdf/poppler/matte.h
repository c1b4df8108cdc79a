// SPDX-License-Identifier: GPL-2.0-or-later
//
// Images that were blended with a matte colour before they were stored: their own colours, worked out again.

#pragma once

#include "clients/pdf/content/graphics.h"

class GfxColorSpace;
class Stream;
struct GfxColor;

namespace pdf_client
{

// Takes the matte out of the image's rows: of each sample c, with the mask's alpha a, what is m + (c - m) / a, within 0
// and 1. The mask is held in memory for that. False, and the image as it was, if image and mask aren't of one size, the
// image's samples aren't plain ones of 8 bits, or the mask is above 256 MB.
bool take_out_matte(Image& image, const Image& mask, const GfxColor& matte, const GfxColorSpace& space);

// True if the soft mask's dictionary has a matte, though it may not go with the image.
bool asks_for_matte(Stream& mask);

}  // namespace pdf_client
