// Behind which step the pages of two logs differ first.

#pragma once

#include "inspect/pixels/page-steps.h"

#include <cstdint>
#include <functional>

namespace orvlog::inspect
{

struct FirstDifference
{
    uint32_t page_a = 0;   // from 1; 0: B has a page that A hasn't
    uint32_t page_b = 0;   // likewise
    uint32_t place_a = 0;  // how many steps of the page A has made then
    uint32_t place_b = 0;
    uint64_t call = 0;   // the number of the call
    uint64_t cause = 0;  // the kSame, or of what is open around it and isn't the kSame in both
    bool in_layer = false;
    bool at_end = false;  // seen at the page's end only
};

// Goes through both files, once. Tells of the first difference of each pair of pages.
void find_first_differences(StepFile& a, StepFile& b, const std::function<void(const FirstDifference&)>& on_page);

}  // namespace orvlog::inspect
