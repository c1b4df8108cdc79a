// What calls did to pixels, as lines and as objects.

#pragma once

#include "inspect/history/call-descriptions.h"
#include "inspect/history/touch-list.h"

#include <nlohmann/json.hpp>

#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace orvlog::tool
{

using Descriptions = std::map<uint64_t, orvlog::inspect::CallDescription>;

// What the two forms need of the call.
struct TouchView
{
    const orvlog::inspect::Touch& touch;
    std::vector<uint64_t> around;  // the calls of the groups around it, the innermost first
    const Descriptions& calls;
    bool one_pixel;
};

// Why a pixel stayed as it was.
const char* reason_text(cairo_renderer::Unchanged reason);

// "#rrggbb", with two more digits where there is alpha; "-" for nothing. Colours without their alpha.
std::string colour_text(std::optional<uint32_t> colour, bool alpha);

std::string touch_line(const TouchView& view);
nlohmann::ordered_json touch_json(const TouchView& view);

}  // namespace orvlog::tool
