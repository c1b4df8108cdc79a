#include "inspect/pixels/page-look.h"

#include "reader/look/call-address.h"

#include <algorithm>

namespace orvlog::inspect
{

PageLook look_at_page(const PixelSide& side, NumberFile& numbers, double dpi, uint32_t page, uint32_t place,
                      uint64_t number, uint64_t cause)
{
    PageLook look;
    std::vector<cairo_renderer::PagePixels> pages;
    PageDrawing drawing(side, numbers, dpi);
    drawing.on_call = [&](const reader::Element& call, uint64_t its_number)
    {
        const auto note = [&call](std::string& address, std::string& kind)
        {
            address = reader::call_address_text(call);
            kind = call.name;
        };
        if (its_number == number)
            note(look.address, look.kind);
        if (its_number == cause)
            note(look.cause, look.cause_kind);
    };
    drawing.on_step = [&](const PageDrawing::Told& told)
    {
        if (told.step.page == page && told.step.place == place)
            look.behind = copy_pixels(told.target);
    };
    drawing.on_page = [&](const cairo_renderer::Page& drawn, const PageStep& end)
    {
        if (end.page != page)
            return;
        look.width = drawn.width;
        look.height = drawn.height;
        if (end.place == place)
            look.behind = copy_pixels(drawn.surface);
        cairo_renderer::collect_pixels(drawn, pages);
    };
    drawing.draw(page, page);
    if (!pages.empty())
        look.end = std::move(pages.back());
    return look;
}

PixelArea area_between(const PixelCopy& a, const PixelCopy& b)
{
    PixelArea area;
    area.box = {INT32_MAX, INT32_MAX, INT32_MIN, INT32_MIN};
    const bool only_a = b.pixels.empty();
    const bool only_b = a.pixels.empty();
    const int x0 = only_a ? a.x : only_b ? b.x : std::min(a.x, b.x);
    const int y0 = only_a ? a.y : only_b ? b.y : std::min(a.y, b.y);
    const int x1 = std::max(only_b ? x0 : a.x + a.width, only_a ? x0 : b.x + b.width);
    const int y1 = std::max(only_b ? y0 : a.y + a.height, only_a ? y0 : b.y + b.height);
    for (int y = y0; y < y1; ++y)
    {
        for (int x = x0; x < x1; ++x)
        {
            if (a.at(x, y) == b.at(x, y))
                continue;
            ++area.pixels;
            area.box = {std::min(area.box.x0, x), std::min(area.box.y0, y), std::max(area.box.x1, x + 1),
                        std::max(area.box.y1, y + 1)};
        }
    }
    if (area.pixels == 0)
        area.box = {};
    return area;
}

PixelCopy picture_of(const cairo_renderer::PagePixels& page)
{
    PixelCopy copy{0, 0, static_cast<int>(page.width), static_cast<int>(page.height), page.pixels};
    for (uint32_t& pixel : copy.pixels)
        pixel |= 0xFF000000U;
    return copy;
}

}  // namespace orvlog::inspect
