#include "inspect/pixels/target-sum.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstring>
#include <new>

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

    // Whether a row's pixels from x0 to x1 are those that are known. Most rows of a large area are; the loop has no way
    // out, so that the compiler takes many pixels at a time.
    bool is_same(int row, int x0, int x1, const uint32_t* known) const
    {
        const auto* pixels = reinterpret_cast<const uint32_t*>(data + static_cast<ptrdiff_t>(row) * stride);
        uint32_t different = 0;
        for (int column = x0; column < x1; ++column)
            different |= (pixels[column] | opaque) ^ known[column];
        return different == 0;
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

TargetSum::TargetSum(cairo_surface_t* surface, bool blank)
{
    const Rows rows(surface);
    const size_t count = static_cast<size_t>(rows.width) * static_cast<size_t>(rows.height);
    pixels_.reset(static_cast<uint32_t*>(std::calloc(std::max<size_t>(count, 1), sizeof(uint32_t))));
    if (pixels_ == nullptr)
        throw std::bad_alloc();
    width_ = rows.width;
    height_ = rows.height;
    if (!blank)
        update(surface, {rows.x, rows.y, rows.x + rows.width, rows.y + rows.height});
}

void TargetSum::update(cairo_surface_t* surface, const cairo_renderer::PixelBox& area)
{
    const Rows rows(surface);
    if (rows.width != width_ || rows.height != height_)
        return;
    const int x0 = std::max(area.x0 - rows.x, 0);
    const int x1 = std::min(area.x1 - rows.x, rows.width);
    const int y1 = std::min(area.y1 - rows.y, rows.height);
    for (int row = std::max(area.y0 - rows.y, 0); row < y1; ++row)
    {
        uint32_t* known = pixels_.get() + static_cast<size_t>(row) * static_cast<size_t>(rows.width);
        if (x0 < x1 && rows.is_same(row, x0, x1, known))
            continue;
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
