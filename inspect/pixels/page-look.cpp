#include "inspect/pixels/page-look.h"

#include "inspect/pixels/pictures.h"
#include "reader/look/call-address.h"

#include <algorithm>
#include <map>
#include <utility>

namespace orvlog::inspect
{

namespace
{

struct CallName
{
    std::string address;
    std::string kind;
};

// One pass over a log, in which the pages that are wanted are drawn.
class PageLooks
{
public:
    PageLooks(const std::vector<WantedLook>& wanted, const std::function<bool(PageLook&&)>& on_look)
        : wanted_(wanted), on_look_(on_look)
    {
        for (const WantedLook& look : wanted)
        {
            names_[look.number];
            names_[look.cause];
            last_page_ = std::max(last_page_, look.page);
        }
    }

    void draw(const PixelSide& side, NumberFile& numbers, double dpi)
    {
        PageDrawing drawing(side, numbers, dpi);
        drawing.on_call = [this](const reader::Element& call, uint64_t number) { name(call, number); };
        drawing.on_step = [this](const PageDrawing::Told& told)
        {
            if (is_looked_at(told.step))
                look_.behind = copy_pixels(told.target);
        };
        drawing.on_page = [this](const cairo_renderer::Page& drawn, const PageStep& end) { take_page(drawn, end); };
        if (last_page_ > 0)
            drawing.draw(last_page_, [this](uint32_t page) { return begin_page(page); });
        while (next_ < wanted_.size())
            tell();
    }

private:
    void name(const reader::Element& call, uint64_t number)
    {
        const auto known = names_.find(number);
        if (known != names_.end())
            known->second = {reader::call_address_text(call), std::string(call.name)};
    }

    // Whether the page is wanted. Looks at pages before it are told of.
    bool begin_page(uint32_t page)
    {
        while (next_ < wanted_.size() && wanted_[next_].page < page)
            tell();
        return next_ < wanted_.size() && wanted_[next_].page == page;
    }

    bool is_looked_at(const PageStep& step) const
    {
        return next_ < wanted_.size() && step.page == wanted_[next_].page && step.place == wanted_[next_].place;
    }

    void take_page(const cairo_renderer::Page& drawn, const PageStep& end)
    {
        if (next_ == wanted_.size() || end.page != wanted_[next_].page)
            return;
        look_.width = drawn.width;
        look_.height = drawn.height;
        if (is_looked_at(end))
            look_.behind = copy_pixels(drawn.surface);
        cairo_renderer::collect_pixels(drawn, bands_);
    }

    void tell()
    {
        const WantedLook& wanted = wanted_[next_++];
        if (wanted.page != 0)
        {
            const CallName& call = names_[wanted.number];
            const CallName& cause = names_[wanted.cause];
            look_.address = call.address;
            look_.kind = call.kind;
            look_.cause = cause.address;
            look_.cause_kind = cause.kind;
            if (!bands_.empty())
                look_.end = std::move(bands_.back());
        }
        bands_.clear();
        if (!on_look_(std::move(look_)))
            next_ = wanted_.size();
        look_ = {};
    }

    const std::vector<WantedLook>& wanted_;
    const std::function<bool(PageLook&&)>& on_look_;
    std::map<uint64_t, CallName> names_;  // of the calls that are to be named, by their numbers
    uint32_t last_page_ = 0;
    size_t next_ = 0;  // the look that is drawn
    PageLook look_;
    std::vector<cairo_renderer::PagePixels> bands_;
};

}  // namespace

void look_at_pages(const PixelSide& side, NumberFile& numbers, double dpi, const std::vector<WantedLook>& wanted,
                   const std::function<bool(PageLook&&)>& on_look)
{
    PageLooks(wanted, on_look).draw(side, numbers, dpi);
}

PixelArea area_between(const PixelCopy& a, const PixelCopy& b, uint32_t tolerance)
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
            if (!differ(a.at(x, y), b.at(x, y), tolerance))
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
