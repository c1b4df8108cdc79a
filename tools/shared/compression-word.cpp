#include "tools/shared/compression-word.h"

namespace orvlog::tool
{

using orvlog::inspect::Compression;

std::optional<Compression> read_compression(const std::string& word)
{
    if (word.empty())
        return std::nullopt;
    return word == "zstd" ? Compression::zstd : word == "gzip" ? Compression::gzip : Compression::none;
}

}  // namespace orvlog::tool
