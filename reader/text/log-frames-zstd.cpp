#include "reader/text/log-frames.h"

#include "reader/text/log-repeats.h"

#include <zstd.h>

#include <algorithm>
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

struct FreeCoder
{
    void operator()(ZSTD_CCtx* coder) const
    {
        ZSTD_freeCCtx(coder);
    }
};

constexpr size_t kRepeatMark = 16;  // so many bytes tell that a frame is a repeat

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
    std::string repeat;  // the text of one, of which `given` bytes have been given
    size_t given = 0;

    size_t left() const
    {
        return input.size - input.pos;
    }
};

Frames::Frames(Source source, Repeats repeats)
    : source_(std::move(source)), repeats_(std::move(repeats)), decoder_(std::make_unique<Decoder>())
{
    if (decoder_->context == nullptr)
        throw std::bad_alloc();
}

Frames::~Frames() = default;

bool Frames::can_be_read()
{
    return true;
}

// Brings as much input together as tells that.
bool Frames::is_at_repeat()
{
    Decoder& own = *decoder_;
    if (!own.between_frames || repeats_ == nullptr)
        return false;
    if (own.left() < kRepeatMark && own.input.pos > 0)
    {
        std::copy(own.block.begin() + static_cast<ptrdiff_t>(own.input.pos),
                  own.block.begin() + static_cast<ptrdiff_t>(own.input.size), own.block.begin());
        own.input.size = own.left();
        own.input.pos = 0;
        own.input.size += source_(own.block.data() + own.input.size, own.block.size() - own.input.size);
    }
    return is_repeat({own.block.data() + own.input.pos, own.left()});
}

bool Frames::take_repeat()
{
    Decoder& own = *decoder_;
    const uint64_t place = used_;
    constexpr size_t kHead = 8;
    const uint32_t size = first_word({own.block.data() + own.input.pos + 4, 4});
    std::string frame(own.block.data() + own.input.pos + kHead, std::min<size_t>(size, own.left() - kHead));
    own.input.pos += kHead + frame.size();
    while (frame.size() < size)
    {
        const size_t count = source_(own.block.data(), std::min<size_t>(own.block.size(), size - frame.size()));
        own.input.size = own.input.pos = 0;
        frame.append(own.block.data(), count);
        if (count == 0)
            break;
    }
    used_ += kHead + frame.size();
    own.given = 0;
    own.repeat = frame.size() == size ? repeats_(place, frame).value_or("") : "";
    return !own.repeat.empty();
}

size_t Frames::read(char* bytes, size_t size)
{
    Decoder& own = *decoder_;
    ZSTD_outBuffer output{bytes, size, 0};
    while (output.pos < output.size && !own.at_end)
    {
        if (own.given < own.repeat.size())
        {
            const size_t count = std::min(own.repeat.size() - own.given, output.size - output.pos);
            std::copy_n(own.repeat.data() + own.given, count, bytes + output.pos);
            own.given += count;
            output.pos += count;
            continue;
        }
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
        if (!no_input && is_at_repeat())
        {
            damaged_ = !take_repeat();
            own.at_end = damaged_;
            continue;
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

std::optional<std::string> frame_text(std::string_view frame, size_t size, std::string_view prefix)
{
    const std::unique_ptr<ZSTD_DCtx, FreeDecoder> context(ZSTD_createDCtx());
    if (context == nullptr)
        throw std::bad_alloc();
    if (ZSTD_getFrameContentSize(frame.data(), frame.size()) != size)
        return std::nullopt;
    if (!prefix.empty())
        ZSTD_DCtx_refPrefix(context.get(), prefix.data(), prefix.size());
    std::string text(size, '\0');
    const size_t made = ZSTD_decompressDCtx(context.get(), text.data(), text.size(), frame.data(), frame.size());
    return made == size ? std::optional(std::move(text)) : std::nullopt;
}

std::string compressed_frame(std::string_view text, int level, std::string_view prefix)
{
    const std::unique_ptr<ZSTD_CCtx, FreeCoder> context(ZSTD_createCCtx());
    if (context == nullptr)
        throw std::bad_alloc();
    ZSTD_CCtx_setParameter(context.get(), ZSTD_c_compressionLevel, level);
    ZSTD_CCtx_setParameter(context.get(), ZSTD_c_checksumFlag, 1);
    if (!prefix.empty())
    {
        int log = 20;
        while (log < 27 && (size_t{1} << log) < prefix.size() + text.size())
            ++log;
        ZSTD_CCtx_setParameter(context.get(), ZSTD_c_windowLog, log);
        ZSTD_CCtx_setParameter(context.get(), ZSTD_c_enableLongDistanceMatching, 1);
        ZSTD_CCtx_refPrefix(context.get(), prefix.data(), prefix.size());
    }
    std::string frame(ZSTD_compressBound(text.size()), '\0');
    const size_t size = ZSTD_compress2(context.get(), frame.data(), frame.size(), text.data(), text.size());
    if (ZSTD_isError(size) != 0)
        throw std::bad_alloc();
    frame.resize(size);
    return frame;
}

}  // namespace orvlog::reader
