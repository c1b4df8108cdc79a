#include "inspect/report/surface-copy.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <new>

namespace orvlog::inspect
{

SurfaceCopy::SurfaceCopy(cairo_surface_t* surface, const PixelBox& within, uint32_t begins) : surface_(surface)
{
    if (surface == nullptr || cairo_surface_get_type(surface) != CAIRO_SURFACE_TYPE_IMAGE ||
        cairo_surface_status(surface) != CAIRO_STATUS_SUCCESS)
        return;
    const cairo_format_t format = cairo_image_surface_get_format(surface);
    if (format != CAIRO_FORMAT_ARGB32 && format != CAIRO_FORMAT_RGB24)
        return;
    opaque_ = format == CAIRO_FORMAT_RGB24 ? 0xFF000000U : 0;
    double x = 0.0;
    double y = 0.0;
    cairo_surface_get_device_offset(surface, &x, &y);
    left_ = -static_cast<int>(std::lround(x));
    top_ = -static_cast<int>(std::lround(y));
    const PixelBox box = meet(within, {left_, top_, left_ + cairo_image_surface_get_width(surface),
                                       top_ + cairo_image_surface_get_height(surface)});
    if (box.empty())
        return;
    box_ = box;
    pixels_.reset(static_cast<uint32_t*>(std::calloc(size(), sizeof(uint32_t))));
    if (pixels_ == nullptr)
        throw std::bad_alloc();
    if (begins != 0)
        std::fill_n(pixels_.get(), size(), begins);
}

// Most rows of a large area are the same; the first loop has no way out, so that the compiler takes many pixels at a
// time.
void SurfaceCopy::compare_row(int y, int x0, int x1, std::vector<PixelRun>& changed)
{
    const unsigned char* data = cairo_image_surface_get_data(surface_);
    const auto* row = reinterpret_cast<const uint32_t*>(data + static_cast<ptrdiff_t>(y - top_) *
                                                                   cairo_image_surface_get_stride(surface_));
    const uint32_t* now = row + (x0 - left_);
    uint32_t* known = pixels_.get() + (at(x0, y) - pixels_.get());
    const auto count = static_cast<size_t>(x1 - x0);
    uint32_t differs = 0;
    for (size_t i = 0; i < count; ++i)
        differs |= (now[i] | opaque_) ^ known[i];
    if (differs == 0)
        return;
    bool in_run = false;
    for (size_t i = 0; i < count; ++i)
    {
        const uint32_t pixel = now[i] | opaque_;
        const bool other = pixel != known[i];
        const int x = x0 + static_cast<int>(i);
        if (other && !in_run)
            changed.push_back({y, x, x});
        if (other)
            changed.back().x1 = x + 1;
        in_run = other;
        known[i] = pixel;
    }
}

void SurfaceCopy::compare(const PixelBox& area, std::vector<PixelRun>& changed)
{
    const PixelBox box = meet(area, box_);
    if (box.empty())
        return;
    cairo_surface_flush(surface_);
    for (int y = box.y0; y < box.y1; ++y)
        compare_row(y, box.x0, box.x1, changed);
}

}  // namespace orvlog::inspect
