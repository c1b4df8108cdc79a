// Whether the index of a repacked log tells what the log's text says.

#pragma once

#include "reader/text/log-index.h"

#include <istream>
#include <string>
#include <vector>

namespace orvlog::inspect
{

// `log` is the whole log, from its beginning. Gives what is wrong in the index, ten things at most. Memory goes with
// the largest call, and with the index.
std::vector<std::string> check_index(std::istream& log, const reader::LogIndex& index);

}  // namespace orvlog::inspect
