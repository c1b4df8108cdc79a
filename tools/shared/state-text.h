// What holds at a call, as lines and as an object.

#pragma once

#include "inspect/history/call-state.h"

#include <nlohmann/json.hpp>

#include <string>

namespace orvlog::tool
{

std::string state_text(const orvlog::inspect::CallState& state);
nlohmann::ordered_json state_json(const orvlog::inspect::CallState& state);

}  // namespace orvlog::tool
