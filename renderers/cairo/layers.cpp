#include "renderers/cairo/layers.h"

#include <algorithm>
#include <cmath>

namespace orvlog::cairo_renderer
{
namespace
{

// The pixels of an image surface, from (left, top) on the page.
struct Pixels
{
    explicit Pixels(cairo_surface_t* surface);

    uint8_t* at(int x, int y) const
    {
        return data + static_cast<std::ptrdiff_t>(y - top) * stride + static_cast<std::ptrdiff_t>(x - left) * size;
    }

    uint8_t* data = nullptr;
    int left = 0;
    int top = 0;
    int width = 0;
    int height = 0;
    int stride = 0;
    int size = 4;  // bytes of a pixel
};

Pixels::Pixels(cairo_surface_t* surface)
{
    if (surface == nullptr || cairo_surface_get_type(surface) != CAIRO_SURFACE_TYPE_IMAGE ||
        cairo_surface_status(surface) != CAIRO_STATUS_SUCCESS)
        return;
    cairo_surface_flush(surface);
    double x = 0.0;
    double y = 0.0;
    cairo_surface_get_device_offset(surface, &x, &y);
    data = cairo_image_surface_get_data(surface);
    left = -static_cast<int>(std::lround(x));
    top = -static_cast<int>(std::lround(y));
    width = cairo_image_surface_get_width(surface);
    height = cairo_image_surface_get_height(surface);
    stride = cairo_image_surface_get_stride(surface);
    size = cairo_image_surface_get_format(surface) == CAIRO_FORMAT_A8 ? 1 : 4;
}

bool same_place(const Pixels& one, const Pixels& other)
{
    return one.data != nullptr && other.data != nullptr && one.left == other.left && one.top == other.top &&
           one.width == other.width && one.height == other.height;
}

// value * share / 255 for a value of either sign, rounded.
int scaled(int value, int share)
{
    const int product = value * share;
    return (product + (product < 0 ? -127 : 127)) / 255;
}

#if __BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__
constexpr int kAlphaByte = 3;
constexpr int kFirstColour = 0;
#else
constexpr int kAlphaByte = 0;
constexpr int kFirstColour = 1;
#endif

}  // namespace

SurfacePtr make_plane(cairo_surface_t* layer, cairo_format_t format)
{
    if (cairo_surface_get_type(layer) != CAIRO_SURFACE_TYPE_IMAGE)
        return nullptr;
    SurfacePtr plane = own_surface(cairo_image_surface_create(format, cairo_image_surface_get_width(layer),
                                                              cairo_image_surface_get_height(layer)));
    double x = 0.0;
    double y = 0.0;
    cairo_surface_get_device_offset(layer, &x, &y);
    cairo_surface_set_device_offset(plane.get(), x, y);
    return plane;
}

SurfacePtr copy_of(cairo_pattern_t* pattern, cairo_surface_t* layer)
{
    SurfacePtr copy = make_plane(layer, CAIRO_FORMAT_ARGB32);
    if (copy == nullptr || pattern == nullptr)
        return copy;
    cairo_t* cr = cairo_create(copy.get());
    cairo_set_operator(cr, CAIRO_OPERATOR_SOURCE);
    cairo_set_source(cr, pattern);
    cairo_paint(cr);
    cairo_destroy(cr);
    return copy;
}

// With the colours multiplied by their alpha, what the group adds is its result less the backdrop that shows
// through it.
void remove_backdrop(cairo_surface_t* layer, cairo_surface_t* alpha, cairo_surface_t* backdrop)
{
    const Pixels result(layer);
    const Pixels own(alpha);
    const Pixels below(backdrop);
    if (!same_place(result, own) || !same_place(result, below))
        return;
    for (int y = result.top; y < result.top + result.height; ++y)
        for (int x = result.left; x < result.left + result.width; ++x)
        {
            const int opacity = *own.at(x, y);
            uint8_t* pixel = result.at(x, y);
            const uint8_t* under = below.at(x, y);
            for (int i = kFirstColour; i < kFirstColour + 3; ++i)
                pixel[i] = static_cast<uint8_t>(std::clamp(pixel[i] - scaled(under[i], 255 - opacity), 0, opacity));
            pixel[kAlphaByte] = static_cast<uint8_t>(opacity);
        }
    cairo_surface_mark_dirty(layer);
}

// (1 - f) of what is there and f of the element on the backdrop; of the latter, `result` has all but the (1 - f) of
// the backdrop that the shape leaves alone.
void replace_by(cairo_surface_t* target, cairo_surface_t* result, cairo_surface_t* shape, cairo_surface_t* backdrop)
{
    const Pixels there(target);
    const Pixels element(result);
    const Pixels cover(shape);
    const Pixels below(backdrop);
    if (there.data == nullptr || !same_place(element, cover) || !same_place(element, below))
        return;
    const int right = std::min(there.left + there.width, element.left + element.width);
    const int bottom = std::min(there.top + there.height, element.top + element.height);
    for (int y = std::max(there.top, element.top); y < bottom; ++y)
        for (int x = std::max(there.left, element.left); x < right; ++x)
        {
            const int kept = 255 - cover.at(x, y)[cover.size == 1 ? 0 : kAlphaByte];
            if (kept == 255)
                continue;
            uint8_t* pixel = there.at(x, y);
            const uint8_t* now = element.at(x, y);
            const uint8_t* under = below.at(x, y);
            const auto mixed = [&](int i, int most)
            { return static_cast<uint8_t>(std::clamp(now[i] + scaled(pixel[i] - under[i], kept), 0, most)); };
            pixel[kAlphaByte] = mixed(kAlphaByte, 255);
            for (int i = kFirstColour; i < kFirstColour + 3; ++i)
                pixel[i] = mixed(i, pixel[kAlphaByte]);
        }
    cairo_surface_mark_dirty(target);
}

}  // namespace orvlog::cairo_renderer
