#include "orvlog/log/orvlog-compressed-stream.h"

#include "holv-core/gmm/gmm-typed.h"

#include <algorithm>
#include <cstddef>
#include <cstring>

static_assert(ORVLOG_CODED_PREFIX_SIZE == 35);
static_assert(offsetof(ORVLOG_CompressedStream, allocator) == 0);
static_assert(offsetof(ORVLOG_CompressedStream, target) == 8);
static_assert(offsetof(ORVLOG_CompressedStream, coder) == 16);

namespace
{

constexpr uint32_t kCoderOutput = 100;

bool can_write(const GIO_Stream* stream)
{
    return stream != nullptr && stream->ops != nullptr && stream->ops->gio_Write != nullptr;
}

uint64_t write_bytes(GIO_Stream* stream, const void* bytes, uint64_t count)
{
    return stream->ops->gio_Write(bytes, 1, count, stream->instance);
}

void code_piece(ORVLOG_CompressedStream* stream, const uint8_t* data, uint32_t count)
{
    uint8_t output[kCoderOutput];
    AHC_SetInput(stream->coder, data, count);
    for (int32_t coded; (coded = AHC_Encode(stream->coder, output, kCoderOutput)) > 0;)
        write_bytes(stream->target, output, static_cast<uint64_t>(coded));
}

void free_block(GMM_Allocator* allocator, void* block)
{
    if (block != nullptr)
        allocator->gmm_Free(allocator, block);
}

}  // namespace

GIO_Stream* ORVLOG_OpenCompressedStream(GMM_Allocator* allocator, GIO_Stream* target)
{
    if (allocator == nullptr || !can_write(target))
        return nullptr;
    auto* handle = gmm_alloc_record<GIO_Stream>(allocator);
    auto* ops = gmm_alloc_record<GIO_StreamOps>(allocator);
    auto* stream = gmm_alloc_record<ORVLOG_CompressedStream>(allocator);
    AdaptiveHuffmanCoder* coder = AHC_EncoderCreate(allocator);
    if (handle != nullptr && ops != nullptr && stream != nullptr && coder != nullptr)
    {
        *stream = {allocator, target, coder};
        std::memset(ops, 0, sizeof *ops);
        ops->gio_Write = ORVLOG_CompressedWrite;
        *handle = {stream, 0, ops};
        if (write_bytes(target, ORVLOG_CODED_PREFIX, ORVLOG_CODED_PREFIX_SIZE) == ORVLOG_CODED_PREFIX_SIZE)
            return handle;
    }
    AHC_EncoderFinish(coder);
    free_block(allocator, stream);
    free_block(allocator, ops);
    free_block(allocator, handle);
    return nullptr;
}

uint64_t ORVLOG_CompressedWrite(const void* data, uint64_t item_size, uint64_t item_count, void* instance)
{
    if (data == nullptr || instance == nullptr || item_size == 0 || item_count == 0 ||
        item_count > UINT64_MAX / item_size)
        return 0;
    auto* stream = static_cast<ORVLOG_CompressedStream*>(instance);
    const auto* next = static_cast<const uint8_t*>(data);
    const uint64_t total = item_size * item_count;
    for (uint64_t left = total; left > 0;)
    {
        const auto piece = static_cast<uint32_t>(std::min<uint64_t>(left, UINT32_MAX));
        code_piece(stream, next, piece);
        next += piece;
        left -= piece;
    }
    return total;
}

void ORVLOG_CloseCompressedStream(GIO_Stream* handle)
{
    if (handle == nullptr || handle->instance == nullptr)
        return;
    auto* stream = static_cast<ORVLOG_CompressedStream*>(handle->instance);
    GMM_Allocator* allocator = stream->allocator;
    const uint8_t last = AHC_EncoderFinish(stream->coder);
    write_bytes(stream->target, &last, 1);
    auto* ops = const_cast<GIO_StreamOps*>(handle->ops);
    free_block(allocator, stream);
    free_block(allocator, ops);
    free_block(allocator, handle);
}
