#include "orvlog/image/orvlog-image-read.h"

#include "holv-core/gmm/gmm-typed.h"
#include "orvlog/image/gop-image-geometry.h"

#include <climits>
#include <cstring>

namespace
{

constexpr uint32_t kCompressedPiece = 1024;
// Images without a size end here; others at twice their size and a bit.
constexpr uint64_t kMaxCompressed = uint64_t{1} << 32;
constexpr uint64_t kSlack = 1 << 16;
constexpr uint64_t kMostCleared = 16 << 20;

struct Buffers
{
    uint8_t* image;
    uint32_t image_size;
    uint8_t* attr;  // null when no attribute data is wanted
    uint32_t attr_size;
};

uint32_t needs_attr(const ORVLOG_ImageContext* context, const GOP_OperandImagePointer* record)
{
    return context->params->image_dump_flag != 0 && (record->imp_Image->im_Flags & GOP_OP_FLAGS_HAS_ATTRIBUTE_DATA) != 0
               ? 1
               : 0;
}

// Cleared, since a client may claim bytes that it has not written; but not where that would fill memory for an image
// that only says that it is huge.
uint8_t* allocate(const ORVLOG_ImageContext* context, uint64_t size)
{
    auto* block = gmm_alloc_array<uint8_t>(context->allocator, size);
    if (block != nullptr)
        std::memset(block, 0, size < kMostCleared ? size : kMostCleared);
    return block;
}

bool make_buffers(const ORVLOG_ImageContext* context, const GOP_OperandImagePointer* record, uint32_t row_bytes,
                  Buffers* buffers)
{
    *buffers = {};
    buffers->image_size = row_bytes != 0 ? row_bytes : kCompressedPiece;
    buffers->image = allocate(context, buffers->image_size);
    if (buffers->image == nullptr)
        return false;
    if (needs_attr(context, record) == 0)
        return true;
    buffers->attr_size = record->imp_Image->im_ImageWidthPixels;
    if (buffers->attr_size > INT_MAX)
        return false;
    buffers->attr = allocate(context, buffers->attr_size);
    return buffers->attr != nullptr;
}

uint64_t limit_of(const ORVLOG_ImageSize* size)
{
    if (size->row_bytes == 0)
        return kMaxCompressed;
    return 2 * (uint64_t{size->rows} * size->row_bytes) + kSlack;
}

uint32_t read_all(ORVLOG_ImageContext* context, GOP_ImageReadFn read, void* callback_context,
                  GOP_OperandImagePointer* record, const Buffers* buffers, const ORVLOG_ImageSize* size)
{
    const uint64_t limit = limit_of(size);
    const auto attr_step = static_cast<int32_t>(buffers->attr_size);
    for (uint64_t bytes = 0; bytes <= limit;)
    {
        int32_t img_returned = 0;
        int32_t attr_returned = 0;
        const uint32_t result = read(record, callback_context, 0, buffers->image, buffers->image_size,
                                     static_cast<int32_t>(size->row_bytes), &img_returned, buffers->attr,
                                     buffers->attr_size, attr_step, &attr_returned);
        if (result == 0 || img_returned == 0)
            return result;
        if (img_returned < 0)
            return 0;
        const auto count = static_cast<uint32_t>(img_returned);
        bytes += size->row_bytes == 0 && count < kCompressedPiece ? kCompressedPiece : count;
    }
    context->endless = 1;
    return 0;
}

}  // namespace

uint32_t ORVLOG_ReadThroughImage(ORVLOG_ImageContext* context, GOP_ImagePrepareFn prepare, void* callback_context,
                                 GOP_ImageReadFn read, GOP_ImageFinishFn finish, GOP_OperandImagePointer* record,
                                 uint32_t req_bit_depth, uint32_t)
{
    record->imp_GrayscaleDetectStatus = GOP_GDS_OFF;
    if (prepare(&record, context->object_type, 0, 0, 0.0F, 0.0F, 0.0F, 0.0F, 0, req_bit_depth,
                needs_attr(context, record)) == 0)
        return 0;
    ORVLOG_ImageSize size;
    Buffers buffers = {};
    uint32_t result = 0;
    if (ORVLOG_ImageGeometry(record, context->render_description, &size) != 0 &&
        make_buffers(context, record, size.row_bytes, &buffers))
        result = read_all(context, read, callback_context, record, &buffers, &size);
    finish(record, callback_context);
    if (buffers.image != nullptr)
        context->allocator->gmm_Free(context->allocator, buffers.image);
    if (buffers.attr != nullptr)
        context->allocator->gmm_Free(context->allocator, buffers.attr);
    return result;
}

uint32_t orvlog_capture_image(GOP_OperandImagePointer* record)
{
    const ORVLOG_ImageWrapper* wrapper = orvlog_image_wrapper_of(record);
    // The client's own record stands where it could not be wrapped: nothing would log what it delivers.
    if (wrapper == nullptr)
        return 1;
    ORVLOG_ImageContext* context = wrapper->context;
    ORVLOG_ImageSize size;
    if (ORVLOG_ImageGeometry(record, context->render_description, &size) == 0)
        return 0;
    if (size.direct_image != nullptr && needs_attr(context, record) == 0)
        return 1;
    return ORVLOG_ReadThroughImage(context, size.prepare, size.context, size.read, size.finish, record, size.depth,
                                   size.row_bytes) != 0
               ? 1
               : 0;
}
