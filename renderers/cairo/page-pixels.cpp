// Pages as pixels in memory, and how they differ.

#include "renderers/cairo/cairo-renderer.h"
#include "renderers/cairo/scene.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

namespace orvlog::cairo_renderer
{
namespace
{

PagePixels copy_pixels(cairo_surface_t* surface)
{
    PagePixels result;
    const unsigned char* data = cairo_image_surface_get_data(surface);
    if (data == nullptr)
        return result;
    result.width = static_cast<uint32_t>(cairo_image_surface_get_width(surface));
    result.height = static_cast<uint32_t>(cairo_image_surface_get_height(surface));
    const auto stride = static_cast<size_t>(cairo_image_surface_get_stride(surface));
    result.pixels.resize(static_cast<size_t>(result.width) * result.height);
    for (size_t row = 0; row < result.height; ++row)
        std::memcpy(&result.pixels[row * result.width], data + row * stride, size_t{result.width} * 4);
    for (uint32_t& pixel : result.pixels)
        pixel &= 0xFFFFFFU;
    return result;
}

uint32_t channel_difference(uint32_t one, uint32_t other, unsigned shift)
{
    const int a = static_cast<int>((one >> shift) & 0xFFU);
    const int b = static_cast<int>((other >> shift) & 0xFFU);
    return static_cast<uint32_t>(std::abs(a - b));
}

}  // namespace

PagePixels read_pixels(const Page& page)
{
    if (page.surface == nullptr || cairo_surface_get_type(page.surface) != CAIRO_SURFACE_TYPE_IMAGE)
        return {};
    const cairo_format_t format = cairo_image_surface_get_format(page.surface);
    if (format != CAIRO_FORMAT_RGB24 && format != CAIRO_FORMAT_ARGB32)
        return {};
    return copy_pixels(page.surface);
}

void collect_pixels(const Page& page, std::vector<PagePixels>& pages)
{
    PagePixels band = read_pixels(page);
    if (page.first_row == 0)
        return pages.push_back(std::move(band));
    pages.back().pixels.insert(pages.back().pixels.end(), band.pixels.begin(), band.pixels.end());
    pages.back().height += band.height;
}

PageSink PageCollector::sink()
{
    return [pages = pages_](const Page& page) { collect_pixels(page, *pages); };
}

const std::vector<PagePixels>& PageCollector::pages() const
{
    return *pages_;
}

PixelDifference compare_pixels(const PagePixels& one, const PagePixels& other)
{
    PixelDifference result;
    if (one.width != other.width || one.height != other.height || one.pixels.empty() ||
        one.pixels.size() != other.pixels.size())
        return {255.0, 255, std::max(one.pixels.size(), other.pixels.size())};
    uint64_t sum = 0;
    for (size_t i = 0; i < one.pixels.size(); ++i)
    {
        if (one.pixels[i] == other.pixels[i])
            continue;
        ++result.pixels_different;
        for (const unsigned shift : {0U, 8U, 16U})
        {
            const uint32_t difference = channel_difference(one.pixels[i], other.pixels[i], shift);
            sum += difference;
            result.largest = std::max(result.largest, difference);
        }
    }
    result.mean = static_cast<double>(sum) / (3.0 * static_cast<double>(one.pixels.size()));
    return result;
}

PagePixels read_png(const std::string& file_name)
{
    SurfacePtr file = own_surface(cairo_image_surface_create_from_png(file_name.c_str()));
    if (cairo_surface_status(file.get()) != CAIRO_STATUS_SUCCESS)
        return {};
    SurfacePtr paper = own_surface(cairo_image_surface_create(
        CAIRO_FORMAT_RGB24, cairo_image_surface_get_width(file.get()), cairo_image_surface_get_height(file.get())));
    cairo_t* cr = cairo_create(paper.get());
    cairo_set_source_rgb(cr, 1.0, 1.0, 1.0);
    cairo_paint(cr);
    cairo_set_source_surface(cr, file.get(), 0.0, 0.0);
    cairo_paint(cr);
    cairo_destroy(cr);
    cairo_surface_flush(paper.get());
    return copy_pixels(paper.get());
}

}  // namespace orvlog::cairo_renderer
