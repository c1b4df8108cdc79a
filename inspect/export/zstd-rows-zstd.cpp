#include "inspect/export/zstd-rows.h"

#include <zstd.h>

#include <memory>
#include <new>
#include <stdexcept>
#include <string>
#include <string_view>
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

}  // namespace

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

}  // namespace orvlog::inspect
