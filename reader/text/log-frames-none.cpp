// Where there is no Zstandard, frames can't be read.

#include "reader/text/log-frames.h"

namespace orvlog::reader
{

struct Frames::Decoder
{
};

Frames::Frames(Source source, Repeats repeats) : source_(std::move(source)), repeats_(std::move(repeats)) {}

Frames::~Frames() = default;

bool Frames::can_be_read()
{
    return false;
}

size_t Frames::read(char*, size_t)
{
    damaged_ = true;
    return 0;
}

std::optional<std::string> frame_text(std::string_view, size_t, std::string_view)
{
    return std::nullopt;
}

std::string compressed_frame(std::string_view, int, std::string_view)
{
    return {};
}

}  // namespace orvlog::reader
