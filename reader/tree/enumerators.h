// The enumerators of the drawing interface by their names, all of which differ.

#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace orvlog::reader
{

std::optional<uint32_t> find_enumerator(std::string_view name);

}  // namespace orvlog::reader
