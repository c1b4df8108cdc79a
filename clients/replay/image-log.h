// The log that a kept image has of its own.

#pragma once

#include "reader/text/log-files.h"
#include "reader/tree/element.h"

#include <cstdint>
#include <functional>
#include <string>

namespace orvlog::replay
{

// Gives the callbacks of the image that `keep` kept, in their order, to `on_callback`, and counts in `damage` the
// places where its log is not as a log should be. Nothing, or a line that says why the log can't be had.
std::string read_image_log(const reader::Element& keep, const reader::LogFiles& files, uint64_t* damage,
                           const std::function<void(const reader::Element&)>& on_callback);

}  // namespace orvlog::replay
