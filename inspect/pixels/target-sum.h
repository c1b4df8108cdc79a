// A sum over the pixels of a surface that is drawn to, kept up to date by looking only where it may have changed.

#pragma once

#include "renderers/cairo/watch.h"

#include <cairo.h>

#include <cstdint>
#include <cstdlib>
#include <memory>
#include <vector>

namespace orvlog::inspect
{

// The surface's pixels on the page. Those outside of it count as transparent.
struct PixelCopy
{
    int x = 0;  // of the first pixel, on the page
    int y = 0;
    int width = 0;
    int height = 0;
    std::vector<uint32_t> pixels;  // 0xAARRGGBB, colours multiplied by alpha; of a page 0xFFRRGGBB

    uint32_t at(int page_x, int page_y) const
    {
        const bool inside = page_x >= x && page_y >= y && page_x < x + width && page_y < y + height;
        if (!inside)
            return 0;
        return pixels[static_cast<size_t>(page_y - y) * static_cast<size_t>(width) + static_cast<size_t>(page_x - x)];
    }
};

// Empty if it is no image surface of 32 bits a pixel.
PixelCopy copy_pixels(cairo_surface_t* surface);

// Surfaces with the same pixels have the same sum, whatever transparent pixels are around them.
class TargetSum
{
public:
    // `blank`: the surface is known to be transparent, and isn't looked at.
    explicit TargetSum(cairo_surface_t* surface, bool blank = false);

    uint64_t value() const
    {
        return sum_;
    }
    // `area` holds all pixels that may have changed.
    void update(cairo_surface_t* surface, const cairo_renderer::PixelBox& area);

private:
    struct Free
    {
        void operator()(uint32_t* pixels) const
        {
            std::free(pixels);
        }
    };

    int width_ = 0;
    int height_ = 0;
    std::unique_ptr<uint32_t, Free> pixels_;  // what is known of them; of a blank surface memory comes as it is used
    uint64_t sum_ = 0;
};

}  // namespace orvlog::inspect
