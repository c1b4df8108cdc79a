// A copy of pixels of an image surface, to be held against the surface later.

#pragma once

#include "renderers/cairo/watch.h"

#include <cairo.h>

#include <cstdint>
#include <optional>
#include <vector>

namespace orvlog::inspect
{

using cairo_renderer::PixelBox;

// Pixels of one row, from x0 up to, but without, x1.
struct PixelRun
{
    int y = 0;
    int x0 = 0;
    int x1 = 0;

    bool operator==(const PixelRun&) const = default;
};

class PixelShadow
{
public:
    // The pixels of `surface` (null: none) in the boxes, in the coordinates of its page; parts of boxes that it doesn't
    // have are left out. The surface outlives the shadow.
    PixelShadow(cairo_surface_t* surface, const std::vector<PixelBox>& boxes);

    // Adds what has changed in `area` since the last call to `changed`, and takes it over.
    void compare(const PixelBox& area, std::vector<PixelRun>& changed);

    // 0xAARRGGBB, colours multiplied by alpha; opaque if the surface has no alpha. Nothing outside the boxes.
    std::optional<uint32_t> at(int x, int y) const;

    cairo_surface_t* surface() const
    {
        return surface_;
    }

private:
    struct Piece
    {
        PixelBox box;
        std::vector<uint32_t> pixels;
    };

    const uint32_t* row_of(int y) const;  // such that [x] is the pixel of the page
    void compare_row(Piece& piece, int y, int x0, int x1, std::vector<PixelRun>& changed) const;

    cairo_surface_t* surface_;
    uint32_t opaque_ = 0;
    int left_ = 0;
    int top_ = 0;
    std::vector<Piece> pieces_;
};

}  // namespace orvlog::inspect
