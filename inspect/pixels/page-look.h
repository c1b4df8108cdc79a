// A page of a log, as it is behind one of its steps and at its end.

#pragma once

#include "inspect/pixels/page-steps.h"

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace orvlog::inspect
{

struct PageLook
{
    PixelCopy behind;                // the surface that was drawn to
    cairo_renderer::PagePixels end;  // empty if the page was not finished
    std::string address;             // of the call that was looked for; empty if it is not in this log
    std::string kind;                // its name
    std::string cause;               // the kSame of the cause
    std::string cause_kind;
    uint32_t width = 0;
    uint32_t height = 0;
};

struct WantedLook
{
    uint32_t page = 0;    // from 1; 0: none
    uint32_t place = 0;   // of the step among those of the page
    uint64_t number = 0;  // of the call to name
    uint64_t cause = 0;   // and of its cause
};

// Draws the log once, and tells of each look in the order of `wanted`, in which pages rise. A page that isn't there
// has an empty look. False from `on_look` ends it.
void look_at_pages(const PixelSide& side, NumberFile& numbers, double dpi, const std::vector<WantedLook>& wanted,
                   const std::function<bool(PageLook&&)>& on_look);

// Where two pictures differ. `tolerance`: channels may differ by as much.
struct PixelArea
{
    uint64_t pixels = 0;
    cairo_renderer::PixelBox box;
};

PixelArea area_between(const PixelCopy& a, const PixelCopy& b, uint32_t tolerance = 0);

// A page as a picture that begins at (0, 0).
PixelCopy picture_of(const cairo_renderer::PagePixels& page);

}  // namespace orvlog::inspect
