#include "orvlog/image/orvlog-image-wrapper.h"

#include "holv-core/gmm/gmm-chunk.h"
#include "orvlog/image/gop-operand-pointer.h"
#include "orvlog/image/orvlog-image-callbacks.h"
#include "orvlog/session/orvlog-frames.h"

#include <cstring>

namespace
{

constexpr uint64_t kChunkSize = 16384;
constexpr uint64_t kAlignment = 8;
constexpr uint32_t kCounterStep = 10;

void fill_callbacks(GOP_OperandImagePointer* record, const GOP_OperandImagePointer* client)
{
    const bool asynchronous = (record->imp_Image->im_Flags & GOP_OP_FLAGS_ASYNCH_ACCESS) != 0;
    record->imp_ImagePrepareFn = orvlog_image_prepare;
    record->imp_ImageReadFn = orvlog_image_read;
    record->imp_ImageFinishFn = orvlog_image_finish;
    record->imp_ImageResetFn = client->imp_ImageResetFn != nullptr ? orvlog_image_reset : nullptr;
    record->imp_ImageKeepFn = asynchronous ? orvlog_image_keep : nullptr;
    record->imp_ImageReleaseFn = asynchronous ? orvlog_image_release : nullptr;
}

void append(GOP_OperandImagePointer* chain, GOP_OperandImagePointer* record)
{
    ORVLOG_ImageWrapper* last = orvlog_image_wrapper_of(chain);
    if (last == nullptr)
        return;
    while (last->next != nullptr)
        last = orvlog_image_wrapper_of(last->next);
    last->next = record;
}

ORVLOG_ImageContext* make_context(ORVLOG_Session* session, GMM_Allocator* pool, uint32_t* kept_flag)
{
    auto* context = static_cast<ORVLOG_ImageContext*>(orvlog_image_alloc(pool, sizeof(ORVLOG_ImageContext)));
    if (context == nullptr)
        return nullptr;
    std::memset(context, 0, sizeof *context);
    session->image_sequence[0] += kCounterStep;
    session->image_sequence[1] += kCounterStep;
    std::memcpy(context->own_counters, session->image_sequence, sizeof context->own_counters);
    context->own_params = session->image;
    context->kept_flag = kept_flag;
    context->async_flag = &session->merge_mode;
    context->params = &context->own_params;
    context->counters = context->own_counters;
    context->allocator = pool;
    context->object_type = session->object_type;
    // Without a frame in force the description stays zero.
    if (session->colour_frames != nullptr)
        std::memcpy(context->render_description, session->colour_frames->ticket_space,
                    sizeof context->render_description);
    std::memcpy(context->session_id, session->session_id, sizeof context->session_id);
    context->stream_allocator = session->side_allocator;
    context->in_call = 1;
    return context;
}

void enter_live(ORVLOG_Session* session, ORVLOG_ImageContext* context)
{
    context->next_live = session->live_images;
    if (context->next_live != nullptr)
        context->next_live->live_link = &context->next_live;
    context->live_link = &session->live_images;
    session->live_images = context;
}

void leave_live(ORVLOG_ImageContext* context)
{
    if (context->live_link == nullptr)
        return;
    *context->live_link = context->next_live;
    if (context->next_live != nullptr)
        context->next_live->live_link = context->live_link;
    context->next_live = nullptr;
    context->live_link = nullptr;
}

void detach(const ORVLOG_ImageContext* context, const GIO_Stream* stream)
{
    for (const GOP_OperandImagePointer* record = context->first_record; record != nullptr;)
    {
        ORVLOG_ImageWrapper* wrapper = orvlog_image_wrapper_of(record);
        if (wrapper == nullptr)
            return;
        wrapper->writer.coder = nullptr;
        if (wrapper->writer.stream == stream)
            wrapper->writer.stream = nullptr;
        record = wrapper->next;
    }
}

void close_files(ORVLOG_ImageContext* context)
{
    for (GOP_OperandImagePointer* record = context->first_record; record != nullptr;)
    {
        ORVLOG_ImageWrapper* wrapper = orvlog_image_wrapper_of(record);
        orvlog_close_stream(&wrapper->image_file);
        orvlog_close_stream(&wrapper->attr_file);
        record = wrapper->next;
    }
    orvlog_close_stream(&context->async_stream);
}

}  // namespace

ORVLOG_ImageWrapper* orvlog_image_wrapper_of(const GOP_OperandImagePointer* record)
{
    if (record == nullptr || record->imp_ImagePrepareFn != orvlog_image_prepare)
        return nullptr;
    return static_cast<ORVLOG_ImageWrapper*>(record->imp_Context);
}

void* orvlog_image_alloc(GMM_Allocator* allocator, uint64_t size)
{
    void* block = allocator->gmm_Alloc(allocator, size + kAlignment - 1, 0);
    if (block == nullptr)
        return nullptr;
    const auto at = reinterpret_cast<uintptr_t>(block);
    return static_cast<uint8_t*>(block) + (kAlignment - at % kAlignment) % kAlignment;
}

uint32_t ORVLOG_WrapImage(const ORVLOG_Writer* writer, ORVLOG_ImageContext* context,
                          GOP_OperandImagePointer* client_record, GOP_OperandImagePointer** wrapped,
                          GOP_OperandImagePointer* chain)
{
    if (client_record == nullptr || client_record->imp_Image == nullptr)
        return 0;
    GMM_Allocator* pool = context->allocator;
    auto* record = static_cast<GOP_OperandImagePointer*>(orvlog_image_alloc(pool, sizeof(GOP_OperandImagePointer)));
    auto* image = static_cast<GOP_OperandImage*>(orvlog_image_alloc(pool, sizeof(GOP_OperandImage)));
    auto* wrapper = static_cast<ORVLOG_ImageWrapper*>(orvlog_image_alloc(pool, sizeof(ORVLOG_ImageWrapper)));
    // What was got lies in the pool and goes with it.
    if (record == nullptr || image == nullptr || wrapper == nullptr)
        return 0;
    std::memset(wrapper, 0, sizeof *wrapper);
    *image = *client_record->imp_Image;
    *record = *client_record;
    record->imp_Image = image;
    fill_callbacks(record, client_record);
    record->imp_Context = wrapper;
    wrapper->writer = *writer;
    wrapper->writer.warnings = nullptr;
    wrapper->writer.allocator = nullptr;
    wrapper->context = context;
    wrapper->client_record = client_record;
    wrapper->id = context->counters[1]++;
    if (chain != nullptr)
        append(chain, record);
    else
        context->first_record = record;
    *wrapped = record;
    return 1;
}

void ORVLOG_ReplaceImageOperand(ORVLOG_Session* session, GOP_OperandPointer** operand, uint32_t* kept_flag)
{
    *kept_flag = 0;
    if (!orvlog_operand_is_image(*operand))
        return;
    const GMM_ChunkParams params = {session->side_allocator, kChunkSize, 0};
    GMM_Allocator* pool = gmm_chunk_allocator_create(&params);
    if (pool == nullptr)
        return;
    ORVLOG_ImageContext* context = make_context(session, pool, kept_flag);
    GOP_OperandImagePointer* wrapped = nullptr;
    auto* client_record = reinterpret_cast<GOP_OperandImagePointer*>(*operand);
    if (context != nullptr && ORVLOG_WrapImage(&session->writer, context, client_record, &wrapped, nullptr) != 0)
    {
        enter_live(session, context);
        *operand = reinterpret_cast<GOP_OperandPointer*>(wrapped);
        return;
    }
    pool->gmm_Delete(pool);
    orvlog_writer_defer_warning(&session->writer, ORVLOG_WARNING_FORMAT,
                                "Image operand could not be replaced. Image callbacks will not be logged.");
}

void ORVLOG_EndImageCall(GOP_OperandImagePointer* record, uint32_t kept)
{
    const ORVLOG_ImageWrapper* wrapper = orvlog_image_wrapper_of(record);
    if (wrapper == nullptr)
        return;
    if (kept == 0 || wrapper->context->released != 0)
        ORVLOG_DeleteImagePool(record);
    else
        wrapper->context->in_call = 0;
}

GMM_Allocator* ORVLOG_DeleteImagePool(GOP_OperandImagePointer* record)
{
    const ORVLOG_ImageWrapper* wrapper = orvlog_image_wrapper_of(record);
    if (wrapper == nullptr)
        return nullptr;
    GMM_Allocator* pool = wrapper->context->allocator;
    close_files(wrapper->context);
    leave_live(wrapper->context);
    return pool->gmm_Delete(pool);
}

void orvlog_detach_images(ORVLOG_Session* session)
{
    while (session->live_images != nullptr)
    {
        detach(session->live_images, session->writer.stream);
        leave_live(session->live_images);
    }
}
