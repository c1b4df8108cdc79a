// SPDX-License-Identifier: GPL-2.0-or-later
//
// What of a picture a box shows, in whole pixels.

#pragma once

#include "clients/pdf/content/geometry.h"

#include <cstdint>
#include <optional>

namespace orvlog::pdf_client
{

// The columns from `left` up to, without, `right`, and the rows likewise.
struct PixelBox
{
    uint32_t left = 0;
    uint32_t top = 0;
    uint32_t right = 0;
    uint32_t bottom = 0;

    bool empty() const
    {
        return left >= right || top >= bottom;
    }
};

// The pixels, of a picture of that size, that `box` in content space touches, and two more on each side, for those
// whose colours blend into its edges; empty if they lie beside the picture. Nothing if that can't be told: of a box
// whose size is no finite number, or where it lies at no finite place among the pixels.
std::optional<PixelBox> pixels_showing(const GGO_BoxFloat& box, const GGO_Matrix& content_to_pixels, uint32_t width,
                                       uint32_t height);

}  // namespace orvlog::pdf_client
