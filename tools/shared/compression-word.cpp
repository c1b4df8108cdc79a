#include "tools/shared/compression-word.h"

#include "reader/text/log-frames.h"

namespace orvlog::tool
{

using orvlog::inspect::Compression;

bool is_left_out(const std::string& word)
{
    return word == "zstd" && !orvlog::reader::Frames::can_be_read();
}

std::optional<Compression> read_compression(const std::string& word)
{
    if (word.empty())
        return std::nullopt;
    return word == "zstd" ? Compression::zstd : word == "gzip" ? Compression::gzip : Compression::none;
}

}  // namespace orvlog::tool
