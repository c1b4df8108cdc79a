#include "reader/text/log-frames.h"

#include <zstd.h>

#include <new>
#include <vector>

namespace orvlog::reader
{

namespace
{

struct FreeDecoder
{
    void operator()(ZSTD_DCtx* decoder) const
    {
        ZSTD_freeDCtx(decoder);
    }
};

uint32_t first_word(std::string_view head)
{
    uint32_t word = 0;
    for (size_t i = 0; i < 4; ++i)
        word |= static_cast<uint32_t>(static_cast<unsigned char>(head[i])) << 8 * i;
    return word;
}

}  // namespace

struct Frames::Decoder
{
    std::unique_ptr<ZSTD_DCtx, FreeDecoder> context{ZSTD_createDCtx()};
    std::vector<char> block = std::vector<char>(ZSTD_DStreamInSize());
    ZSTD_inBuffer input{block.data(), 0, 0};
    bool between_frames = true;
    bool at_end = false;
};

Frames::Frames(Source source) : source_(std::move(source)), decoder_(std::make_unique<Decoder>())
{
    if (decoder_->context == nullptr)
        throw std::bad_alloc();
}

Frames::~Frames() = default;

bool Frames::begin_with(std::string_view head)
{
    if (head.size() < 4)
        return false;
    const uint32_t word = first_word(head);
    return word == ZSTD_MAGICNUMBER || (word & ZSTD_MAGIC_SKIPPABLE_MASK) == ZSTD_MAGIC_SKIPPABLE_START;
}

size_t Frames::read(char* bytes, size_t size)
{
    Decoder& own = *decoder_;
    ZSTD_outBuffer output{bytes, size, 0};
    while (output.pos < output.size && !own.at_end)
    {
        if (own.input.pos == own.input.size)
        {
            own.input.size = source_(own.block.data(), own.block.size());
            own.input.pos = 0;
        }
        const bool no_input = own.input.pos == own.input.size;
        // Unused room of a file.
        const bool unused = !no_input && own.between_frames && own.block[own.input.pos] == '\0';
        if (unused || (no_input && own.between_frames))
        {
            own.at_end = true;
            break;
        }
        const size_t input_before = own.input.pos;
        const size_t output_before = output.pos;
        const size_t left = ZSTD_decompressStream(own.context.get(), &output, &own.input);
        used_ += own.input.pos - input_before;
        damaged_ = ZSTD_isError(left) != 0;
        own.between_frames = left == 0;
        const bool stands_still = no_input && output.pos == output_before;
        own.at_end = damaged_ || stands_still;
    }
    return output.pos;
}

}  // namespace orvlog::reader
