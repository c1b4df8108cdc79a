// The words by which a compression is chosen on a command line.

#pragma once

#include "inspect/export/row-compression.h"

#include <optional>
#include <string>

namespace orvlog::tool
{

// "none", "gzip", "zstd"; nothing for "".
std::optional<orvlog::inspect::Compression> read_compression(const std::string& word);

}  // namespace orvlog::tool
