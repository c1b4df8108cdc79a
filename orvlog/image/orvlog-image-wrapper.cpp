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
    context->session_allocator = session->side_allocator;
    context->kept_images = &session->kept_images;
    context->in_call = 1;
    return context;
}

// Images that may be kept have handles of their own, so that the renderer's records stay readable when the image has
// gone; the others have them in the pool.
ORVLOG_ImageHandle* make_handle(const ORVLOG_ImageContext* context, const GOP_OperandImagePointer* client_record)
{
    const bool asynchronous = (client_record->imp_Image->im_Flags & GOP_OP_FLAGS_ASYNCH_ACCESS) != 0;
    GMM_Allocator* own = asynchronous ? context->session_allocator : nullptr;
    void* block = own != nullptr ? own->gmm_Alloc(own, sizeof(ORVLOG_ImageHandle), 0)
                                 : orvlog_image_alloc(context->allocator, sizeof(ORVLOG_ImageHandle));
    if (block == nullptr)
        return nullptr;
    auto* handle = static_cast<ORVLOG_ImageHandle*>(block);
    std::memset(handle, 0, sizeof *handle);
    handle->record = *client_record;
    handle->image = *client_record->imp_Image;
    handle->record.imp_Image = &handle->image;
    handle->allocator = own;
    return handle;
}

void free_handles(ORVLOG_ImageHandle* handle)
{
    while (handle != nullptr)
    {
        ORVLOG_ImageHandle* next = handle->next_record;
        handle->allocator->gmm_Free(handle->allocator, handle);
        handle = next;
    }
}

// Closes what is open and makes the records unknown; gives the handles that do not lie in the pool, as a chain.
ORVLOG_ImageHandle* close_records(ORVLOG_ImageContext* context)
{
    ORVLOG_ImageHandle* first = nullptr;
    ORVLOG_ImageHandle** link = &first;
    for (GOP_OperandImagePointer* record = context->first_record; record != nullptr;)
    {
        ORVLOG_ImageHandle* handle = orvlog_image_handle_find(record);
        ORVLOG_ImageWrapper* wrapper = handle->wrapper;
        orvlog_close_stream(&wrapper->image_file);
        orvlog_close_stream(&wrapper->attr_file);
        orvlog_image_handle_leave(handle);
        handle->wrapper = nullptr;
        handle->record.imp_Context = nullptr;
        if (handle->allocator != nullptr)
        {
            *link = handle;
            link = &handle->next_record;
        }
        record = wrapper->next;
    }
    orvlog_close_stream(&context->async_stream);
    return first;
}

// The first of the image's handles that outlives the pool; an image that was kept has one.
ORVLOG_ImageHandle* lasting_handle(const ORVLOG_ImageContext* context)
{
    ORVLOG_ImageHandle* handle = orvlog_image_handle_find(context->first_record);
    while (handle->allocator == nullptr)
        handle = orvlog_image_handle_find(handle->wrapper->next);
    return handle;
}

}  // namespace

ORVLOG_ImageWrapper* orvlog_image_wrapper_of(const GOP_OperandImagePointer* record)
{
    const ORVLOG_ImageHandle* handle = orvlog_image_handle_find(record);
    return handle != nullptr ? handle->wrapper : nullptr;
}

void* orvlog_image_alloc(GMM_Allocator* allocator, uint64_t size)
{
    void* block = allocator->gmm_Alloc(allocator, size + kAlignment - 1, 0);
    if (block == nullptr)
        return nullptr;
    const auto at = reinterpret_cast<uintptr_t>(block);
    return static_cast<uint8_t*>(block) + (kAlignment - at % kAlignment) % kAlignment;
}

ORVLOG_ImageWrapper* orvlog_kept_wrapper_of(const GOP_OperandImagePointer* record)
{
    const ORVLOG_ImageHandle* handle = orvlog_image_handle_find(record);
    return handle != nullptr && handle->allocator != nullptr ? handle->wrapper : nullptr;
}

uint32_t ORVLOG_WrapImage(const ORVLOG_Writer* writer, ORVLOG_ImageContext* context,
                          GOP_OperandImagePointer* client_record, GOP_OperandImagePointer** wrapped,
                          GOP_OperandImagePointer* chain)
{
    if (client_record == nullptr || client_record->imp_Image == nullptr)
        return 0;
    auto* wrapper =
        static_cast<ORVLOG_ImageWrapper*>(orvlog_image_alloc(context->allocator, sizeof(ORVLOG_ImageWrapper)));
    // What was got lies in the pool and goes with it.
    ORVLOG_ImageHandle* handle = wrapper != nullptr ? make_handle(context, client_record) : nullptr;
    if (handle == nullptr)
        return 0;
    GOP_OperandImagePointer* record = &handle->record;
    std::memset(wrapper, 0, sizeof *wrapper);
    fill_callbacks(record, client_record);
    record->imp_Context = wrapper;
    handle->wrapper = wrapper;
    wrapper->writer = *writer;
    wrapper->writer.warnings = nullptr;
    wrapper->writer.allocator = nullptr;
    wrapper->context = context;
    wrapper->client_record = client_record;
    wrapper->id = context->counters[1]++;
    orvlog_image_handle_enter(handle);
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
    ORVLOG_ImageContext* context = wrapper->context;
    context->in_call = 0;
    // A renderer that has asked to keep an image may come back with it, whatever it was told.
    if (context->async_stream != nullptr)
    {
        ORVLOG_ImageHandle* handle = lasting_handle(context);
        handle->next_image = *context->kept_images;
        *context->kept_images = handle;
        context->listed = 1;
    }
    if (kept == 0 || context->granted == 0 || context->released != 0)
        ORVLOG_DeleteImagePool(record);
}

GMM_Allocator* ORVLOG_DeleteImagePool(GOP_OperandImagePointer* record)
{
    const ORVLOG_ImageWrapper* wrapper = orvlog_image_wrapper_of(record);
    if (wrapper == nullptr)
        return nullptr;
    ORVLOG_ImageContext* context = wrapper->context;
    GMM_Allocator* pool = context->allocator;
    const bool listed = context->listed != 0;
    ORVLOG_ImageHandle* first = close_records(context);
    if (!listed)
        free_handles(first);
    return pool->gmm_Delete(pool);
}

void orvlog_close_images(ORVLOG_Session* session)
{
    while (session->kept_images != nullptr)
    {
        ORVLOG_ImageHandle* handle = session->kept_images;
        session->kept_images = handle->next_image;
        ORVLOG_DeleteImagePool(&handle->record);
        free_handles(handle);
    }
}
