#include "tools/shared/png-writer.h"

#include <zlib.h>

#include <algorithm>
#include <cstdlib>
#include <new>
#include <string>
#include <utility>

namespace orvlog::tool
{

namespace
{

constexpr size_t kBlock = 1 << 16;

void put_32(std::string& to, uint32_t number)
{
    for (int shift = 24; shift >= 0; shift -= 8)
        to += static_cast<char>(number >> shift & 0xFF);
}

const Bytef* bytes_of(std::string_view text)
{
    return reinterpret_cast<const Bytef*>(text.data());
}

// Of the neighbours on the left, above, and between both, the one that is nearest to left + above - between.
int nearest_neighbour(int left, int above, int between)
{
    const int by_left = std::abs(above - between);
    const int by_above = std::abs(left - between);
    const int by_between = std::abs(left + above - 2 * between);
    if (by_left <= by_above && by_left <= by_between)
        return left;
    return by_above <= by_between ? above : between;
}

// What each filter takes for the byte, in the order of their numbers.
std::array<int, 5> guesses(int left, int above, int between)
{
    return {0, left, above, (left + above) / 2, nearest_neighbour(left, above, between)};
}

}  // namespace

struct PngWriter::Deflater
{
    Deflater()
    {
        constexpr int kWindow = 15;
        constexpr int kMemory = 8;
        if (deflateInit2(&stream, Z_DEFAULT_COMPRESSION, Z_DEFLATED, kWindow, kMemory, Z_FILTERED) != Z_OK)
            throw std::bad_alloc();
    }
    Deflater(const Deflater&) = delete;
    Deflater& operator=(const Deflater&) = delete;
    ~Deflater()
    {
        deflateEnd(&stream);
    }

    z_stream stream = {};
    std::vector<Bytef> room = std::vector<Bytef>(kBlock);
};

PngWriter::PngWriter(const PngForm& form, Sink sink)
    : sink_(std::move(sink)), deflater_(std::make_unique<Deflater>()),
      pixel_bytes_(((form.gray ? 1U : 3U) + (form.alpha ? 1U : 0U)) * form.depth / 8), rows_left_(form.height),
      last_(form.width * pixel_bytes_)
{
    for (size_t i = 0; i < filters_.size(); ++i)
        filters_[i].resize(last_.size() + 1, static_cast<uint8_t>(i));
    deflater_->stream.next_out = deflater_->room.data();
    deflater_->stream.avail_out = static_cast<uInt>(deflater_->room.size());
    put_head(form);
}

PngWriter::~PngWriter() = default;

void PngWriter::put_chunk(std::string_view type, std::string_view data)
{
    std::string head;
    put_32(head, static_cast<uint32_t>(data.size()));
    head += type;
    uLong sum = crc32(0, bytes_of(type), static_cast<uInt>(type.size()));
    if (!data.empty())
        sum = crc32(sum, bytes_of(data), static_cast<uInt>(data.size()));
    std::string end;
    put_32(end, static_cast<uint32_t>(sum));
    good_ = good_ && sink_(head) && (data.empty() || sink_(data)) && sink_(end);
}

void PngWriter::put_head(const PngForm& form)
{
    constexpr char kColour = 2;
    constexpr char kAlpha = 4;
    using namespace std::string_view_literals;
    good_ = form.width > 0 && form.height > 0 && form.width <= INT32_MAX && form.height <= INT32_MAX &&
            sink_("\x89PNG\r\n\x1A\n"sv);
    std::string head;
    put_32(head, form.width);
    put_32(head, form.height);
    head += static_cast<char>(form.depth);
    head += static_cast<char>((form.gray ? 0 : kColour) | (form.alpha ? kAlpha : 0));
    head.append(3, '\0');  // deflated, with the usual filters, not interlaced
    put_chunk("IHDR", head);
}

void PngWriter::deflate_bytes(const uint8_t* bytes, size_t size, bool last)
{
    z_stream& stream = deflater_->stream;
    stream.next_in = const_cast<Bytef*>(bytes);
    stream.avail_in = static_cast<uInt>(size);
    for (bool more = true; more;)
    {
        const bool ended = deflate(&stream, last ? Z_FINISH : Z_NO_FLUSH) == Z_STREAM_END;
        const bool full = stream.avail_out == 0;
        if (full || ended)
        {
            put_chunk("IDAT", {reinterpret_cast<const char*>(deflater_->room.data()),
                               deflater_->room.size() - stream.avail_out});
            stream.next_out = deflater_->room.data();
            stream.avail_out = static_cast<uInt>(deflater_->room.size());
        }
        more = last ? !ended : full || stream.avail_in > 0;
    }
}

// The row by the filter that leaves the least, each byte taken for a number with a sign.
const std::vector<uint8_t>& PngWriter::filtered(const uint8_t* row)
{
    std::array<uint64_t, 5> sums{};
    for (size_t i = 0; i < last_.size(); ++i)
    {
        const int left = i >= pixel_bytes_ ? row[i - pixel_bytes_] : 0;
        const int between = i >= pixel_bytes_ ? last_[i - pixel_bytes_] : 0;
        const std::array<int, 5> guess = guesses(left, last_[i], between);
        for (size_t filter = 0; filter < guess.size(); ++filter)
        {
            const auto rest = static_cast<uint8_t>(row[i] - guess[filter]);
            filters_[filter][i + 1] = rest;
            sums[filter] += rest < 128 ? rest : 256U - rest;
        }
    }
    return filters_[static_cast<size_t>(std::ranges::min_element(sums) - sums.begin())];
}

bool PngWriter::add_row(const uint8_t* row)
{
    good_ = good_ && rows_left_ > 0;
    if (!good_)
        return false;
    --rows_left_;
    const std::vector<uint8_t>& rest = filtered(row);
    for (size_t at = 0; at < rest.size(); at += kBlock)
        deflate_bytes(rest.data() + at, std::min(kBlock, rest.size() - at), false);
    std::copy_n(row, last_.size(), last_.data());
    return good_;
}

bool PngWriter::finish()
{
    good_ = good_ && rows_left_ == 0;
    if (good_)
    {
        deflate_bytes(nullptr, 0, true);
        put_chunk("IEND", {});
    }
    return good_;
}

}  // namespace orvlog::tool
