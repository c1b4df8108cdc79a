// The words by which a compression is chosen on a command line.

#pragma once

#include "inspect/export/row-compression.h"

#include <optional>
#include <string>

namespace orvlog::tool
{

// Whether this build can't compress so.
bool is_left_out(const std::string& word);

// "none", "gzip", "zstd"; nothing for "".
std::optional<orvlog::inspect::Compression> read_compression(const std::string& word);

}  // namespace orvlog::tool
