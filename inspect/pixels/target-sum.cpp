#include "inspect/pixels/target-sum.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstring>

namespace orvlog::inspect
{

namespace
{

// What a pixel adds to the sum.
uint64_t part(uint32_t pixel, int x, int y)
{
    if (pixel == 0)
        return 0;
    uint64_t word = pixel | uint64_t{static_cast<uint16_t>(x)} << 32 | uint64_t{static_cast<uint16_t>(y)} << 48;
    word = (word ^ (word >> 30)) * 0xBF58476D1CE4E5B9U;
    word = (word ^ (word >> 27)) * 0x94D049BB133111EBU;
    return word ^ (word >> 31);
}

// The rows of an image surface.
struct Rows
{
    explicit Rows(cairo_surface_t* surface)
    {
        if (surface == nullptr || cairo_surface_get_type(surface) != CAIRO_SURFACE_TYPE_IMAGE)
            return;
        const cairo_format_t format = cairo_image_surface_get_format(surface);
        if (format != CAIRO_FORMAT_RGB24 && format != CAIRO_FORMAT_ARGB32)
            return;
        cairo_surface_flush(surface);
        data = cairo_image_surface_get_data(surface);
        stride = cairo_image_surface_get_stride(surface);
        opaque = format == CAIRO_FORMAT_RGB24 ? 0xFF000000U : 0;
        width = data != nullptr ? cairo_image_surface_get_width(surface) : 0;
        height = data != nullptr ? cairo_image_surface_get_height(surface) : 0;
        double dx = 0;
        double dy = 0;
        cairo_surface_get_device_offset(surface, &dx, &dy);
        x = -static_cast<int>(std::lround(dx));
        y = -static_cast<int>(std::lround(dy));
    }

    uint32_t at(int column, int row) const
    {
        uint32_t pixel = 0;
        std::memcpy(&pixel, data + static_cast<ptrdiff_t>(row) * stride + static_cast<ptrdiff_t>(column) * 4, 4);
        return pixel | opaque;
    }

    const unsigned char* data = nullptr;
    int stride = 0;
    int width = 0;
    int height = 0;
    int x = 0;
    int y = 0;
    uint32_t opaque = 0;
};

}  // namespace

PixelCopy copy_pixels(cairo_surface_t* surface)
{
    const Rows rows(surface);
    PixelCopy copy{rows.x, rows.y, rows.width, rows.height, {}};
    copy.pixels.reserve(static_cast<size_t>(rows.width) * static_cast<size_t>(rows.height));
    for (int row = 0; row < rows.height; ++row)
        for (int column = 0; column < rows.width; ++column)
            copy.pixels.push_back(rows.at(column, row));
    return copy;
}

TargetSum::TargetSum(cairo_surface_t* surface) : copy_(copy_pixels(surface))
{
    size_t next = 0;
    for (int row = 0; row < copy_.height; ++row)
        for (int column = 0; column < copy_.width; ++column)
            sum_ += part(copy_.pixels[next++], copy_.x + column, copy_.y + row);
}

void TargetSum::update(cairo_surface_t* surface, const cairo_renderer::PixelBox& area)
{
    const Rows rows(surface);
    if (rows.width != copy_.width || rows.height != copy_.height)
        return;
    const int x0 = std::max(area.x0 - rows.x, 0);
    const int x1 = std::min(area.x1 - rows.x, rows.width);
    const int y1 = std::min(area.y1 - rows.y, rows.height);
    for (int row = std::max(area.y0 - rows.y, 0); row < y1; ++row)
    {
        uint32_t* known = &copy_.pixels[static_cast<size_t>(row) * static_cast<size_t>(rows.width)];
        for (int column = x0; column < x1; ++column)
        {
            const uint32_t pixel = rows.at(column, row);
            if (pixel == known[column])
                continue;
            sum_ += part(pixel, rows.x + column, rows.y + row) - part(known[column], rows.x + column, rows.y + row);
            known[column] = pixel;
        }
    }
}

}  // namespace orvlog::inspect
