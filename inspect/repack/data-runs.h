// Stretches of a log's text that may stand in it more than once: the data of images, profiles and the like.

#pragma once

#include "reader/tree/element.h"

#include <cstdint>
#include <functional>
#include <string_view>
#include <vector>

namespace orvlog::inspect
{

struct DataRun
{
    uint64_t begin = 0;  // bytes of the log's text
    uint64_t end = 0;
    uint64_t hash = 0;  // of the rows in it, whatever the tags around them say
};

// Those of a call, in order. `text` gives what stands between two places in it.
std::vector<DataRun> data_runs(const reader::Element& call,
                               const std::function<std::string_view(uint64_t begin, uint64_t end)>& text);

}  // namespace orvlog::inspect
