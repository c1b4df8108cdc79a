#include "inspect/export/row-compression.h"

#include "inspect/export/zstd-rows.h"

#include <zlib.h>

#include <array>
#include <memory>
#include <stdexcept>
#include <vector>

namespace orvlog::inspect
{

namespace
{

Spill to_gzip(Spill& rows)
{
    constexpr int kWindowOfGzip = 15 + 16;
    constexpr int kMemory = 8;
    Spill compressed;
    z_stream stream = {};
    if (deflateInit2(&stream, Z_DEFAULT_COMPRESSION, Z_DEFLATED, kWindowOfGzip, kMemory, Z_DEFAULT_STRATEGY) != Z_OK)
        throw std::bad_alloc();
    const std::unique_ptr<z_stream, int (*)(z_stream*)> ended(&stream, deflateEnd);
    std::vector<Bytef> room(1 << 16);
    const auto feed = [&](std::string_view piece, int how)
    {
        stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(piece.data()));
        stream.avail_in = static_cast<uInt>(piece.size());
        do
        {
            stream.next_out = room.data();
            stream.avail_out = static_cast<uInt>(room.size());
            deflate(&stream, how);
            compressed.add({reinterpret_cast<char*>(room.data()), room.size() - stream.avail_out});
        } while (stream.avail_out == 0);
    };
    rows.read([&feed](std::string_view piece) { feed(piece, Z_NO_FLUSH); });
    feed({}, Z_FINISH);
    return compressed;
}

}  // namespace

std::string_view ending_of(Compression compression)
{
    constexpr std::array<std::string_view, 3> kEndings = {".jsonl", ".jsonl.gz", ".jsonl.zst"};
    return kEndings[static_cast<size_t>(compression)];
}

void compress(Spill& rows, Compression compression)
{
    if (compression == Compression::zstd)
        rows = to_zstd(rows);
    else if (compression == Compression::gzip)
        rows = to_gzip(rows);
}

}  // namespace orvlog::inspect
