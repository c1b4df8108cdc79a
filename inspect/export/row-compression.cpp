#include "inspect/export/row-compression.h"

#include <zlib.h>
#include <zstd.h>

#include <array>
#include <memory>
#include <stdexcept>
#include <vector>

namespace orvlog::inspect
{

namespace
{

struct FreeContext
{
    void operator()(ZSTD_CCtx* context) const
    {
        ZSTD_freeCCtx(context);
    }
};

Spill to_zstd(Spill& rows)
{
    Spill compressed;
    const std::unique_ptr<ZSTD_CCtx, FreeContext> context(ZSTD_createCCtx());
    if (context == nullptr)
        throw std::bad_alloc();
    ZSTD_CCtx_setParameter(context.get(), ZSTD_c_compressionLevel, 3);
    ZSTD_CCtx_setParameter(context.get(), ZSTD_c_checksumFlag, 1);
    std::vector<char> room(ZSTD_CStreamOutSize());
    const auto feed = [&](std::string_view piece, ZSTD_EndDirective how)
    {
        ZSTD_inBuffer in = {piece.data(), piece.size(), 0};
        for (size_t left = 1; left > 0;)
        {
            ZSTD_outBuffer out = {room.data(), room.size(), 0};
            left = ZSTD_compressStream2(context.get(), &out, &in, how);
            if (ZSTD_isError(left) != 0)
                throw std::runtime_error(std::string("zstd: ") + ZSTD_getErrorName(left));
            compressed.add({room.data(), out.pos});
            left = how == ZSTD_e_end ? left : in.size - in.pos;
        }
    };
    rows.read([&feed](std::string_view piece) { feed(piece, ZSTD_e_continue); });
    feed({}, ZSTD_e_end);
    return compressed;
}

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
