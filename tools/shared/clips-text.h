// Lists of clips as objects.

#pragma once

#include "inspect/history/clip-entries.h"

#include <nlohmann/json.hpp>

#include <vector>

namespace orvlog::tool
{

// An array of the entries of a list of clips.
nlohmann::ordered_json clips_json(const std::vector<orvlog::inspect::ClipEntry>& clips);

}  // namespace orvlog::tool
