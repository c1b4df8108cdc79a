// A page of a log, as it is behind one of its steps and at its end.

#pragma once

#include "inspect/pixels/page-steps.h"

#include <cstdint>
#include <string>

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

// `number` and `cause` are those of the calls to name.
PageLook look_at_page(const PixelSide& side, NumberFile& numbers, double dpi, uint32_t page, uint32_t place,
                      uint64_t number, uint64_t cause);

// Where two pictures differ.
struct PixelArea
{
    uint64_t pixels = 0;
    cairo_renderer::PixelBox box;
};

PixelArea area_between(const PixelCopy& a, const PixelCopy& b);

// A page as a picture that begins at (0, 0).
PixelCopy picture_of(const cairo_renderer::PagePixels& page);

}  // namespace orvlog::inspect
