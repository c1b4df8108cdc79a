#include "inspect/pixels/pixel-diff.h"

#include "inspect/pixels/first-differences.h"

#include <future>

namespace orvlog::inspect
{

namespace
{

PageDifference look_at(const FirstDifference& found, const PixelSide& a, NumberFile& numbers_a, const PixelSide& b,
                       NumberFile& numbers_b, double dpi)
{
    PageDifference page;
    std::future<PageLook> other =
        std::async(std::launch::async,
                   [&]
                   {
                       if (found.page_b == 0)
                           return PageLook{};
                       return look_at_page(b, numbers_b, dpi, found.page_b, found.place_b, found.call, found.cause);
                   });
    if (found.page_a != 0)
        page.a = look_at_page(a, numbers_a, dpi, found.page_a, found.place_a, found.call, found.cause);
    page.b = other.get();
    page.page_a = found.page_a;
    page.page_b = found.page_b;
    page.call_a = page.a.address;
    page.call_b = page.b.address;
    page.kind = page.a.address.empty() ? page.b.kind : page.a.kind;
    page.cause_a = page.a.cause;
    page.cause_b = page.b.cause;
    page.cause_kind = page.a.cause.empty() ? page.b.cause_kind : page.a.cause_kind;
    page.in_layer = found.in_layer;
    page.at_end = found.at_end;
    page.first = area_between(page.a.behind, page.b.behind);
    page.end = area_between(picture_of(page.a.end), picture_of(page.b.end));
    return page;
}

}  // namespace

PixelDiffOutcome compare_pages(const PixelSide& a, NumberFile& numbers_a, const PixelSide& b, NumberFile& numbers_b,
                               double dpi, const std::function<void(const PageDifference&)>& on_page)
{
    PixelDiffOutcome outcome;
    StepFile steps_a;
    StepFile steps_b;
    std::future<bool> other =
        std::async(std::launch::async, [&] { return record_steps(b, numbers_b, dpi, steps_b, outcome.b); });
    const bool room_a = record_steps(a, numbers_a, dpi, steps_a, outcome.a);
    const bool room_b = other.get();
    outcome.no_room = !room_a || !room_b || !numbers_a.good() || !numbers_b.good();
    if (outcome.no_room)
        return outcome;
    find_first_differences(steps_a, steps_b,
                           [&](const FirstDifference& found)
                           { on_page(look_at(found, a, numbers_a, b, numbers_b, dpi)); });
    return outcome;
}

}  // namespace orvlog::inspect
