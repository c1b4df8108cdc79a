// The colour of a flat operand as a screen shows it, as near as its family tells.

#pragma once

#include "reader/tree/element.h"

#include <cstdint>
#include <string_view>

namespace orvlog::inspect
{

// 0xRRGGBB of a GBC_Color in a space of that name ("rgb", "gray", "cmyk" are part of it); -1 if it can't be told.
int64_t shown_colour(const reader::Element& color, std::string_view space);

// That of what paints: an operand of any kind, or null.
int64_t flat_colour(const reader::Element* operand);

}  // namespace orvlog::inspect
