// Where there is no Zstandard, a file of frames is no log.

#include "reader/text/log-frames.h"

namespace orvlog::reader
{

struct Frames::Decoder
{
};

Frames::Frames(Source source) : source_(std::move(source)) {}

Frames::~Frames() = default;

bool Frames::begin_with(std::string_view)
{
    return false;
}

size_t Frames::read(char*, size_t)
{
    return 0;
}

}  // namespace orvlog::reader
