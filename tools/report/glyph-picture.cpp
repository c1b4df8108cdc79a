#include "tools/report/glyph-picture.h"

#include "inspect/pixels/pictures.h"
#include "inspect/report/outline.h"
#include "reader/look/call-box.h"
#include "reader/tree/values.h"

#include <cairo.h>

#include <cstddef>
#include <memory>

namespace orvlog::tool
{

namespace
{

using orvlog::reader::Element;
using orvlog::reader::read_uint;

constexpr uint32_t kLongestSide = 2048;

void show_bitmap(const Element& bitmap, GlyphPicture& picture)
{
    const Element* buffer = bitmap.child("BufferUInt8");
    const uint32_t width = read_uint(bitmap, "gdb_Width");
    const uint32_t height = read_uint(bitmap, "gdb_Height");
    const size_t step = read_uint(bitmap, "gdb_Rowstep") & 0xFFFFU;
    if (buffer == nullptr || width == 0 || height == 0 || width > kLongestSide || height > kLongestSide)
        return;
    const bool ones = read_uint(bitmap, "gdb_BlackIsOne") != 0;
    const std::shared_ptr<cairo_surface_t> surface(
        cairo_image_surface_create(CAIRO_FORMAT_RGB24, static_cast<int>(width), static_cast<int>(height)),
        cairo_surface_destroy);
    unsigned char* data = cairo_image_surface_get_data(surface.get());
    if (data == nullptr)
        return;
    for (uint32_t y = 0; y < height; ++y)
    {
        auto* row = reinterpret_cast<uint32_t*>(data + ptrdiff_t{y} * cairo_image_surface_get_stride(surface.get()));
        for (uint32_t x = 0; x < width; ++x)
        {
            const size_t at = y * step + x / 8;
            const bool there = x / 8 < step && at < buffer->bytes.size();
            const bool one = there && (buffer->bytes[at] >> (7U - x % 8U) & 1U) != 0;
            row[x] = there && one == ones ? 0U : 0xFFFFFFU;
        }
    }
    cairo_surface_mark_dirty(surface.get());
    picture.width = width;
    picture.height = height;
    picture.png = orvlog::inspect::surface_png(surface.get());
}

}  // namespace

GlyphPicture glyph_picture(const Element& pointer, const GGO_Matrix& to_pixels)
{
    GlyphPicture picture;
    const Element* holder = pointer.member("gdp_GlyphDesc");
    const Element* record = holder != nullptr ? holder->first : nullptr;
    if (record != nullptr && record->name == "GFI_GlyphDescBitmap")
        show_bitmap(*record, picture);
    const Element* path = holder != nullptr ? holder->child("GPA_PathPointer") : nullptr;
    if (path == nullptr)
        return picture;
    const double* m = to_pixels.m;
    const GGO_Matrix matrix = {{m[0], m[1], m[2], m[3], 0, 0}};
    orvlog::reader::BoxAround around;
    orvlog::reader::add_path(*path, matrix, around);
    const auto box = around.box();
    bool cut = false;
    if (box)
    {
        picture.data = orvlog::inspect::path_data(*path, matrix, cut);
        picture.box = *box;
    }
    return picture;
}

}  // namespace orvlog::tool
