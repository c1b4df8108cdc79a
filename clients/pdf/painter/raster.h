// SPDX-License-Identifier: GPL-2.0-or-later

#pragma once

#include "clients/pdf/content/graphics.h"

#include <cstdint>
#include <vector>

namespace orvlog::pdf_client
{

// Pixels of one bit, packed, each row from a whole byte, the first pixel in the highest bit; 1 paints.
struct Bitmap
{
    int32_t left = 0;  // of the first pixel, in the path's units
    int32_t top = 0;
    uint32_t width = 0;
    uint32_t height = 0;
    std::vector<uint8_t> rows;

    uint32_t row_bytes() const
    {
        return (width + 7) / 8;
    }
    bool at(uint32_t x, uint32_t y) const;
};

// The pixels whose centres lie within the path, one unit a pixel. Empty if the path is, or if it would take more
// than `greatest_side` pixels in a direction.
Bitmap rasterise(const Path& path, Winding winding, uint32_t greatest_side);

// Runs of pixels, row by row: bytes that say alternately how many pixels don't paint and how many do, up to the
// row's width. A run above 255 goes on after a run of 0 of the other kind.
std::vector<uint8_t> run_lengths(const Bitmap& bitmap);

// Edges, row by row: 16 bits with the number of columns at which painting begins or ends, then those columns, 16
// bits each, the low byte first.
std::vector<uint8_t> row_edges(const Bitmap& bitmap);

}  // namespace orvlog::pdf_client
