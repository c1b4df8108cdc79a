// The pages of two logs, pixel by pixel.

#pragma once

#include "inspect/pixels/page-look.h"

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace orvlog::inspect
{

// A page on which the logs differ.
struct PageDifference
{
    uint32_t page_a = 0;  // from 1; 0 if A has no such page
    uint32_t page_b = 0;
    std::string call_a;  // the address of the first call behind which they differ; empty if A doesn't have it
    std::string call_b;
    std::string kind;  // the call's name
    // The call that makes the difference, as far as it can be told: that one, or the start of a group around it, or
    // the painting of the resource that it stands in.
    std::string cause_a;
    std::string cause_b;
    std::string cause_kind;
    bool in_layer = false;  // they differ in the layer of a group at first, and not yet on the page
    bool at_end = false;    // nothing but the page's end shows it
    PixelArea first;        // behind that call
    PixelArea end;          // at the end of the page
    PageLook a;
    PageLook b;
};

struct PixelDiffOutcome
{
    bool no_room = false;
    replay::Outcome a;
    replay::Outcome b;
};

// `numbers_a` and `numbers_b` are those of the aligned calls. Each log is drawn once as a whole, and once more as far
// as pages differ; both logs at the same time.
PixelDiffOutcome compare_pages(const PixelSide& a, NumberFile& numbers_a, const PixelSide& b, NumberFile& numbers_b,
                               double dpi, const std::function<void(const PageDifference&)>& on_page);

}  // namespace orvlog::inspect
