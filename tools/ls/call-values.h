// What a list tells of a call, as values.

#pragma once

#include "tools/ls/columns.h"

#include <nlohmann/json.hpp>

namespace orvlog::tool
{

// An object with the numbers, names and boxes of a call as the log has them; null for what it doesn't have.
nlohmann::ordered_json call_values(const CallRow& row, const orvlog::reader::Element& element);

}  // namespace orvlog::tool
