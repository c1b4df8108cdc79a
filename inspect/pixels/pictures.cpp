#include "inspect/pixels/pictures.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <memory>

namespace orvlog::inspect
{

namespace
{

constexpr uint32_t kWhite = 0xFFFFFFFFU;
constexpr uint32_t kRed = 0xFFE00000U;
constexpr uint32_t kFrameColour = 0xFF0060FFU;
constexpr int kFrameGap = 3;

uint32_t on_paper(uint32_t pixel)
{
    const uint32_t paper = 255U - (pixel >> 24);
    return kWhite - 0xFFFFFFU + (std::min(255U, ((pixel >> 16) & 255U) + paper) << 16) +
           (std::min(255U, ((pixel >> 8) & 255U) + paper) << 8) + std::min(255U, (pixel & 255U) + paper);
}

uint32_t pale(uint32_t pixel)
{
    const uint32_t shown = on_paper(pixel);
    const uint32_t grey = (((shown >> 16) & 255U) * 3U + ((shown >> 8) & 255U) * 6U + (shown & 255U)) / 10U;
    const uint32_t light = 176U + grey * 79U / 255U;
    return 0xFF000000U | light << 16 | light << 8 | light;
}

void draw_frame(PixelCopy& picture, const cairo_renderer::PixelBox& box)
{
    const auto put = [&picture](int x, int y)
    {
        if (x >= 0 && y >= 0 && x < picture.width && y < picture.height)
            picture.pixels[static_cast<size_t>(y) * static_cast<size_t>(picture.width) + static_cast<size_t>(x)] =
                kFrameColour;
    };
    for (int x = box.x0 - kFrameGap - 1; x <= box.x1 + kFrameGap; ++x)
    {
        put(x - picture.x, box.y0 - kFrameGap - 1 - picture.y);
        put(x - picture.x, box.y1 + kFrameGap - picture.y);
    }
    for (int y = box.y0 - kFrameGap - 1; y <= box.y1 + kFrameGap; ++y)
    {
        put(box.x0 - kFrameGap - 1 - picture.x, y - picture.y);
        put(box.x1 + kFrameGap - picture.x, y - picture.y);
    }
}

cairo_status_t add_bytes(void* bytes, const unsigned char* data, unsigned int size)
{
    static_cast<std::string*>(bytes)->append(reinterpret_cast<const char*>(data), size);
    return CAIRO_STATUS_SUCCESS;
}

}  // namespace

bool differ(uint32_t a, uint32_t b, uint32_t tolerance)
{
    if (a == b || tolerance == 0)
        return a != b;
    for (const unsigned shift : {0U, 8U, 16U, 24U})
    {
        const int one = static_cast<int>((a >> shift) & 255U);
        const int other = static_cast<int>((b >> shift) & 255U);
        if (static_cast<uint32_t>(std::abs(one - other)) > tolerance)
            return true;
    }
    return false;
}

PixelCopy marked_picture(const PixelCopy& a, const PixelCopy& b, uint32_t tolerance)
{
    PixelCopy picture;
    picture.x = a.pixels.empty() ? b.x : b.pixels.empty() ? a.x : std::min(a.x, b.x);
    picture.y = a.pixels.empty() ? b.y : b.pixels.empty() ? a.y : std::min(a.y, b.y);
    picture.width = std::max(a.pixels.empty() ? 0 : a.x + a.width, b.pixels.empty() ? 0 : b.x + b.width) - picture.x;
    picture.height = std::max(a.pixels.empty() ? 0 : a.y + a.height, b.pixels.empty() ? 0 : b.y + b.height) - picture.y;
    cairo_renderer::PixelBox box{INT32_MAX, INT32_MAX, INT32_MIN, INT32_MIN};
    bool any = false;
    for (int y = picture.y; y < picture.y + picture.height; ++y)
    {
        for (int x = picture.x; x < picture.x + picture.width; ++x)
        {
            const bool marked = differ(a.at(x, y), b.at(x, y), tolerance);
            picture.pixels.push_back(marked ? kRed : pale(a.at(x, y)));
            if (!marked)
                continue;
            any = true;
            box = {std::min(box.x0, x), std::min(box.y0, y), std::max(box.x1, x + 1), std::max(box.y1, y + 1)};
        }
    }
    if (any)
        draw_frame(picture, box);
    return picture;
}

std::string surface_png(cairo_surface_t* surface)
{
    std::string png;
    if (cairo_surface_write_to_png_stream(surface, add_bytes, &png) != CAIRO_STATUS_SUCCESS)
        png.clear();
    return png;
}

std::string picture_png(const PixelCopy& picture)
{
    const std::shared_ptr<cairo_surface_t> surface(
        cairo_image_surface_create(CAIRO_FORMAT_RGB24, picture.width, picture.height), cairo_surface_destroy);
    unsigned char* data = cairo_image_surface_get_data(surface.get());
    if (data == nullptr)
        return {};
    const auto stride = static_cast<size_t>(cairo_image_surface_get_stride(surface.get()));
    const auto width = static_cast<size_t>(picture.width);
    for (size_t i = 0; i < picture.pixels.size(); ++i)
    {
        const uint32_t pixel = on_paper(picture.pixels[i]);
        std::memcpy(data + (i / width) * stride + (i % width) * 4, &pixel, 4);
    }
    cairo_surface_mark_dirty(surface.get());
    return surface_png(surface.get());
}

}  // namespace orvlog::inspect
