#include "reader/text/log-frames.h"

namespace orvlog::reader
{

namespace
{

constexpr uint32_t kFrame = 0xFD2FB528;
constexpr uint32_t kFrameToSkip = 0x184D2A50;  // but for its last four bits
constexpr uint32_t kToSkipMask = 0xFFFFFFF0;

}  // namespace

bool Frames::begin_with(std::string_view head)
{
    if (head.size() < 4)
        return false;
    uint32_t word = 0;
    for (size_t i = 0; i < 4; ++i)
        word |= static_cast<uint32_t>(static_cast<unsigned char>(head[i])) << 8 * i;
    return word == kFrame || (word & kToSkipMask) == kFrameToSkip;
}

}  // namespace orvlog::reader
