#include "inspect/report/blocks.h"

#include <zlib.h>

#include <algorithm>
#include <array>
#include <limits>
#include <new>

namespace orvlog::inspect
{

struct Deflated::Stream
{
    z_stream z{};
    std::array<char, size_t{1} << 15> room{};
};

Deflated::Deflated() : stream_(std::make_unique<Stream>())
{
    if (deflateInit(&stream_->z, Z_DEFAULT_COMPRESSION) != Z_OK)
        throw std::bad_alloc();
}

Deflated::~Deflated()
{
    deflateEnd(&stream_->z);
}

void Deflated::run(int flush)
{
    z_stream& z = stream_->z;
    do
    {
        z.next_out = reinterpret_cast<Bytef*>(stream_->room.data());
        z.avail_out = static_cast<uInt>(stream_->room.size());
        deflate(&z, flush);
        bytes_.append(stream_->room.data(), stream_->room.size() - z.avail_out);
    } while (z.avail_out == 0);
}

void Deflated::add(const void* data, size_t size)
{
    const auto* at = static_cast<const Bytef*>(data);
    size_ += size;
    while (size > 0)
    {
        const auto count = static_cast<uInt>(std::min<size_t>(size, std::numeric_limits<uInt>::max()));
        stream_->z.next_in = const_cast<Bytef*>(at);
        stream_->z.avail_in = count;
        run(Z_NO_FLUSH);
        at += count;
        size -= count;
    }
}

const std::string& Deflated::finish()
{
    if (!finished_)
        run(Z_FINISH);
    finished_ = true;
    return bytes_;
}

std::string base64(std::string_view bytes)
{
    constexpr char kDigits[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string text;
    text.reserve((bytes.size() + 2) / 3 * 4);
    for (size_t at = 0; at < bytes.size(); at += 3)
    {
        const size_t count = std::min<size_t>(3, bytes.size() - at);
        uint32_t group = 0;
        for (size_t i = 0; i < 3; ++i)
            group = group << 8U | (i < count ? static_cast<uint8_t>(bytes[at + i]) : 0U);
        for (size_t i = 0; i < 4; ++i)
            text += i <= count ? kDigits[group >> (18U - 6U * i) & 63U] : '=';
    }
    return text;
}

void Blocks::write(std::string_view text)
{
    good_ = good_ && write_(text);
    written_ += good_ ? text.size() : 0;
}

void Blocks::put_base64(std::string_view bytes)
{
    constexpr size_t kPiece = size_t{48} << 10;  // of whole groups
    for (; !bytes.empty(); bytes.remove_prefix(std::min(kPiece, bytes.size())))
        write(base64(bytes.substr(0, kPiece)));
}

std::string Blocks::put(std::string_view bytes, const char* coding)
{
    const std::string name = std::string("b").append(std::to_string(count_++));
    write("<script type=\"application/octet-stream;base64\" id=\"" + name + "\" data-coding=\"" + coding + "\">");
    put_base64(bytes);
    write("</script>\n");
    return name;
}

std::string Blocks::add(Deflated& block)
{
    return put(block.finish(), "deflate");
}

std::string Blocks::add_deflated(std::string_view bytes)
{
    Deflated block;
    block.add(bytes);
    return add(block);
}

std::string Blocks::add_plain(std::string_view bytes)
{
    return put(bytes, "none");
}

}  // namespace orvlog::inspect
