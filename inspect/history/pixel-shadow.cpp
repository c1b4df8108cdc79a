#include "inspect/history/pixel-shadow.h"

#include <algorithm>
#include <cmath>

namespace orvlog::inspect
{

PixelShadow::PixelShadow(cairo_surface_t* surface, const std::vector<PixelBox>& boxes) : surface_(surface)
{
    if (surface == nullptr || cairo_surface_status(surface) != CAIRO_STATUS_SUCCESS)
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
    const PixelBox all{left_, top_, left_ + cairo_image_surface_get_width(surface),
                       top_ + cairo_image_surface_get_height(surface)};
    cairo_surface_flush(surface);
    for (const PixelBox& box : boxes)
    {
        Piece piece{meet(box, all), {}};
        if (piece.box.empty())
            continue;
        for (int row = piece.box.y0; row < piece.box.y1; ++row)
        {
            const uint32_t* pixels = row_of(row);
            for (int column = piece.box.x0; column < piece.box.x1; ++column)
                piece.pixels.push_back(pixels[column - left_] | opaque_);
        }
        pieces_.push_back(std::move(piece));
    }
}

const uint32_t* PixelShadow::row_of(int y) const
{
    const unsigned char* data = cairo_image_surface_get_data(surface_);
    return reinterpret_cast<const uint32_t*>(data + static_cast<std::ptrdiff_t>(y - top_) *
                                                        cairo_image_surface_get_stride(surface_));
}

void PixelShadow::compare_row(Piece& piece, int y, int x0, int x1, std::vector<PixelRun>& changed) const
{
    const uint32_t* now = row_of(y);
    const auto width = static_cast<size_t>(piece.box.x1 - piece.box.x0);
    uint32_t* before = piece.pixels.data() + static_cast<size_t>(y - piece.box.y0) * width;
    bool in_run = false;
    for (int x = x0; x < x1; ++x)
    {
        const uint32_t pixel = now[x - left_] | opaque_;
        uint32_t& known = before[x - piece.box.x0];
        const bool differs = pixel != known;
        if (differs && !in_run)
            changed.push_back({y, x, x});
        if (differs)
            changed.back().x1 = x + 1;
        in_run = differs;
        known = pixel;
    }
}

void PixelShadow::compare(const PixelBox& area, std::vector<PixelRun>& changed)
{
    if (pieces_.empty())
        return;
    cairo_surface_flush(surface_);
    for (Piece& piece : pieces_)
    {
        const PixelBox box = meet(piece.box, area);
        for (int y = box.y0; y < box.y1; ++y)
            compare_row(piece, y, box.x0, box.x1, changed);
    }
}

std::optional<uint32_t> PixelShadow::at(int x, int y) const
{
    for (const Piece& piece : pieces_)
    {
        const PixelBox& box = piece.box;
        if (x < box.x0 || x >= box.x1 || y < box.y0 || y >= box.y1)
            continue;
        const auto width = static_cast<size_t>(box.x1 - box.x0);
        return piece.pixels[static_cast<size_t>(y - box.y0) * width + static_cast<size_t>(x - box.x0)];
    }
    return std::nullopt;
}

}  // namespace orvlog::inspect
