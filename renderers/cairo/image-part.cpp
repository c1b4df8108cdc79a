#include "renderers/cairo/image-part.h"

#include "renderers/cairo/bounds.h"

#include <algorithm>
#include <cmath>
#include <numeric>

namespace orvlog::cairo_renderer
{
namespace
{

constexpr uint64_t kMaxSurfacePixels = uint64_t{1} << 26;
constexpr uint32_t kMaxSurfaceSide = 30000;
constexpr uint64_t kSmallImage = uint64_t{1} << 20;  // pixels
constexpr double kMuchLess = 0.75;                   // of the pixels
constexpr double kFilterReach = 4.0;                 // pixels of the page, and of the surface

uint32_t bits_of_pixel(const Layout& layout)
{
    return layout.bits * (layout.indexed ? 1U : layout.channels);
}

// From `low` to `high`, moved out to multiples of `step` within the image.
void place(double low, double high, uint32_t step, uint32_t size, uint32_t& from, uint32_t& length)
{
    const double most = size;
    from = static_cast<uint32_t>(std::clamp(std::floor(low), 0.0, most - 1.0));
    from -= from % step;
    const auto end = static_cast<uint64_t>(std::clamp(std::ceil(high), from + 1.0, most));
    length = static_cast<uint32_t>(std::min<uint64_t>((end + step - 1) / step * step, size)) - from;
}

}  // namespace

bool is_large_image(const GOP_OperandPointer* operand)
{
    if (operand == nullptr || operand->op_Operand == nullptr || operand->op_Operand->go_OpType != GOP_OPERAND_IMAGE)
        return false;
    const void* head = operand->op_Operand;
    const auto& image = *static_cast<const GOP_OperandImage*>(head);
    return uint64_t{image.im_ImageWidthPixels} * image.im_ImageHeightPixels >= kSmallImage;
}

uint32_t coarseness(const Layout& layout)
{
    uint32_t coarse = 1;
    const auto side = [&](uint32_t length) { return (length + coarse - 1) / coarse; };
    while (side(layout.width) > kMaxSurfaceSide || side(layout.height) > kMaxSurfaceSide ||
           static_cast<uint64_t>(side(layout.width)) * side(layout.height) > kMaxSurfacePixels)
        ++coarse;
    return coarse;
}

Part part_seen(const Layout& layout, const Image& image, uint32_t coarse, const Window* window)
{
    const Part whole{0, 0, layout.width, layout.height};
    const uint64_t pixels = uint64_t{layout.width} * layout.height;
    cairo_matrix_t to_image;
    if (window == nullptr || image.tiled || layout.planar || pixels < kSmallImage ||
        !invert(multiply(image.pixels_to_content, window->to_pixels), to_image))
        return whole;
    const Box box = transformed(window->box, to_image);
    const double around = kFilterReach * (scale_of(to_image) + coarse);
    if (!std::isfinite(box.x1 - box.x0) || !std::isfinite(box.y1 - box.y0) || !std::isfinite(around))
        return whole;
    Part part;
    const uint32_t byte = std::lcm(coarse, 8U / std::gcd(8U, bits_of_pixel(layout)));
    place(box.x0 - around, box.x1 + around, byte, layout.width, part.left, part.width);
    place(box.y0 - around, box.y1 + around, coarse, layout.height, part.top, part.height);
    return static_cast<double>(part.width) * part.height > kMuchLess * static_cast<double>(pixels) ? whole : part;
}

Layout layout_of(const Part& part, const Layout& layout, uint64_t& offset)
{
    offset = uint64_t{part.left} * bits_of_pixel(layout) / 8;
    Layout result = layout;
    result.width = part.width;
    result.height = part.height;
    if (!layout.planar)
    {
        result.row_bytes =
            part.width == layout.width ? layout.row_bytes : (uint64_t{part.width} * bits_of_pixel(layout) + 7) / 8;
        result.rows = part.height;
    }
    return result;
}

}  // namespace orvlog::cairo_renderer
