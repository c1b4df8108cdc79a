// How much of a large image its drawing shows: no more of it is turned into pixels.

#pragma once

#include "orvlog/interface/gop-image.h"
#include "orvlog/interface/gop-operand.h"
#include "renderers/cairo/image-layout.h"
#include "renderers/cairo/scene.h"

#include <cstdint>

namespace orvlog::cairo_renderer
{

// What of the page can be painted on at the time, in the units of the surface.
struct Window
{
    cairo_matrix_t to_pixels{};  // from the content space
    Box box;
};

// A part of an image, in its pixels. The first row and column are where blocks of `coarse` pixels begin, and the
// column where a byte does.
struct Part
{
    uint32_t left = 0;
    uint32_t top = 0;
    uint32_t width = 0;
    uint32_t height = 0;
};

// True for an image that part_seen() cuts.
bool is_large_image(const GOP_OperandPointer* operand);

// How many pixels of the image, each way, one of a surface stands for, so that surfaces aren't larger than they may be.
uint32_t coarseness(const Layout& layout);

// The part of the image that the window shows, with what a filter looks at around it; the whole image if `window` is
// null, if the image is tiled, planar or small, or if it wouldn't be much less. Not empty.
Part part_seen(const Layout& layout, const Image& image, uint32_t coarse, const Window* window);

// The layout of the part's rows, which begin in those of the image at byte `offset`.
Layout layout_of(const Part& part, const Layout& layout, uint64_t& offset);

}  // namespace orvlog::cairo_renderer
