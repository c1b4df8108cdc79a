// A copy of a surface that is drawn to, kept up to date by looking only where it may have changed.

#pragma once

#include "inspect/history/pixel-shadow.h"

#include <cairo.h>

#include <cstdint>
#include <cstdlib>
#include <memory>
#include <vector>

namespace orvlog::inspect
{

class SurfaceCopy
{
public:
    // Of the surface's pixels those in `within`, in the coordinates of its page. The copy begins with all pixels
    // `begins`, whatever the surface has; of a surface that is no image of 32 bits a pixel it is empty.
    SurfaceCopy(cairo_surface_t* surface, const PixelBox& within, uint32_t begins);

    // Adds what differs from the surface in `area` to `changed`, and takes it over.
    void compare(const PixelBox& area, std::vector<PixelRun>& changed);

    cairo_surface_t* surface() const
    {
        return surface_;
    }
    const PixelBox& box() const
    {
        return box_;
    }
    uint64_t size() const
    {
        return static_cast<uint64_t>(width()) * static_cast<uint64_t>(box_.y1 - box_.y0);
    }
    // The pixel (x, y), and those behind it in its row: 0xAARRGGBB, colours multiplied by alpha.
    const uint32_t* at(int x, int y) const
    {
        return pixels_.get() + static_cast<size_t>(y - box_.y0) * width() + static_cast<size_t>(x - box_.x0);
    }

private:
    struct Free
    {
        void operator()(uint32_t* pixels) const
        {
            std::free(pixels);
        }
    };

    size_t width() const
    {
        return static_cast<size_t>(box_.x1 - box_.x0);
    }
    void compare_row(int y, int x0, int x1, std::vector<PixelRun>& changed);

    cairo_surface_t* surface_;
    uint32_t opaque_ = 0;
    int left_ = 0;
    int top_ = 0;
    PixelBox box_;
    std::unique_ptr<uint32_t, Free> pixels_;  // of a blank surface memory comes as it is used
};

}  // namespace orvlog::inspect
