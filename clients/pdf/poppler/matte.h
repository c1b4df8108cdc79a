// SPDX-License-Identifier: GPL-2.0-or-later
//
// Images that were blended with a matte colour before they were stored: their own colours, worked out again.

#pragma once

#include "clients/pdf/content/graphics.h"

#include <optional>

#include <GfxState.h>

class Stream;

namespace orvlog::pdf_client
{

// Takes the matte out of the image's rows: of each sample c, with the mask's alpha a, what is m + (c - m) / a, within 0
// and 1. Where the mask has another size than the image, a is the mean of its samples that lie on the image's one. The
// mask is held in memory for that. False, and the image as it was, if the image's samples aren't plain ones of 8 bits,
// or the mask isn't gray or is above 256 MB.
bool take_out_matte(Image& image, const Image& mask, const GfxColor& matte, const GfxColorSpace& space);

struct Matte
{
    bool is_asked_for = false;
    std::optional<GfxColor> colour;  // none: it isn't one of the image's space
};

// What the soft mask's dictionary says of a matte in the colours of `space`, the image's.
Matte matte_of(Stream& mask, const GfxColorSpace& space);

}  // namespace orvlog::pdf_client
