#include "orvlog/image/orvlog-image-wrapper.h"

#include "holv-core/gmm/gmm-chunk.h"
#include "orvlog/image/gop-operand-pointer.h"
#include "orvlog/image/orvlog-image-callbacks.h"
#include "orvlog/log/orvlog-coding.h"
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

ORVLOG_ImageWrapper* wrapper_at(GOP_OperandImagePointer* record)
{
    return orvlog_image_slot_of(record)->wrapper;
}

void append(GOP_OperandImagePointer* chain, GOP_OperandImagePointer* record)
{
    ORVLOG_ImageWrapper* last = wrapper_at(chain);
    while (last->next != nullptr)
        last = wrapper_at(last->next);
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
    context->slots = &session->image_slots;
    context->slots->session = session;
    context->slots->allocator = session->side_allocator;
    context->number = session->image_sequence[1];
    context->in_call = 1;
    return context;
}

// Fills in the record that the renderer gets.
void fill_slot(ORVLOG_ImageSlot* slot, const GOP_OperandImagePointer* client_record)
{
    void* word = slot->record.imp_Context;
    slot->record = *client_record;
    slot->image = *client_record->imp_Image;
    slot->record.imp_Image = &slot->image;
    slot->record.imp_Context = word;
    fill_callbacks(&slot->record, client_record);
}

// The image of a slot that holds the first record of a refused image behind its call; null for others.
ORVLOG_ImageContext* refused_image(const ORVLOG_ImageSlot* slot)
{
    ORVLOG_ImageContext* context = slot->wrapper->context;
    const bool refused = context->granted == 0 && context->in_call == 0;
    return refused && context->first_record == &slot->record ? context : nullptr;
}

void limit_refused_images(ORVLOG_ImageSlots* slots)
{
    ORVLOG_ImageContext* oldest = nullptr;
    uint32_t count = 0;
    for (ORVLOG_ImageSlot* slot = nullptr; (slot = orvlog_image_slots_next(slots, slot)) != nullptr;)
    {
        ORVLOG_ImageContext* context = refused_image(slot);
        if (context == nullptr)
            continue;
        ++count;
        if (oldest == nullptr || context->number < oldest->number)
            oldest = context;
    }
    if (count > ORVLOG_MAX_REFUSED_IMAGES)
        orvlog_end_image(oldest);
}

}  // namespace

ORVLOG_ImageWrapper* orvlog_image_wrapper_of(const GOP_OperandImagePointer* record, const void* context)
{
    const ORVLOG_ImageSlot* slot = orvlog_image_slot_find(record, context);
    return slot != nullptr ? slot->wrapper : nullptr;
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
    auto* wrapper =
        static_cast<ORVLOG_ImageWrapper*>(orvlog_image_alloc(context->allocator, sizeof(ORVLOG_ImageWrapper)));
    // What was got lies in the pool and goes with it.
    ORVLOG_ImageSlot* slot = wrapper != nullptr ? orvlog_image_slot_take(context->slots) : nullptr;
    if (slot == nullptr)
        return 0;
    fill_slot(slot, client_record);
    slot->wrapper = wrapper;
    GOP_OperandImagePointer* record = &slot->record;
    std::memset(wrapper, 0, sizeof *wrapper);
    wrapper->slot = slot;
    wrapper->word = slot->record.imp_Context;
    wrapper->asynchronous = (slot->image.im_Flags & GOP_OP_FLAGS_ASYNCH_ACCESS) != 0 ? 1 : 0;
    wrapper->writer = orvlog_writer_copy(writer);
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
        *operand = reinterpret_cast<GOP_OperandPointer*>(wrapped);
        return;
    }
    pool->gmm_Delete(pool);
    orvlog_writer_warn(&session->writer, "Image operand could not be replaced. Image callbacks will not be logged.");
}

GMM_Allocator* orvlog_end_image(ORVLOG_ImageContext* context)
{
    GMM_Allocator* pool = context->allocator;
    ORVLOG_ImageSlots* slots = context->slots;
    for (GOP_OperandImagePointer* record = context->first_record; record != nullptr;)
    {
        ORVLOG_ImageSlot* slot = orvlog_image_slot_of(record);
        ORVLOG_ImageWrapper* wrapper = slot->wrapper;
        orvlog_close_stream(&wrapper->image_file);
        orvlog_close_stream(&wrapper->attr_file);
        record = wrapper->next;
        orvlog_image_slot_give_back(slot);
    }
    orvlog_close_stream(&context->async_stream);
    GMM_Allocator* parent = pool->gmm_Delete(pool);
    orvlog_image_slots_settle(slots);
    return parent;
}

void orvlog_image_warn_once(const ORVLOG_ImageSlots* slots, uint32_t* warned, const char* message)
{
    if (slots->session != nullptr)
        orvlog_writer_warn_once(&slots->session->writer, warned, message);
}

void ORVLOG_EndImageCall(GOP_OperandImagePointer* record, uint32_t kept)
{
    const ORVLOG_ImageWrapper* wrapper = record != nullptr ? wrapper_at(record) : nullptr;
    if (wrapper == nullptr)
        return;
    ORVLOG_ImageContext* context = wrapper->context;
    context->in_call = 0;
    if (record->imp_Context != wrapper->word)
        orvlog_image_warn_once(context->slots, &context->slots->warned, "Image record has lost its context.");
    if (kept == 0 || context->released != 0)
        orvlog_end_image(context);
    else if (context->granted == 0)
        limit_refused_images(context->slots);
}

GMM_Allocator* ORVLOG_DeleteImagePool(GOP_OperandImagePointer* record)
{
    const ORVLOG_ImageWrapper* wrapper = orvlog_image_wrapper_of(record);
    return wrapper != nullptr ? orvlog_end_image(wrapper->context) : nullptr;
}

void orvlog_detach_images(ORVLOG_Session* session)
{
    ORVLOG_ImageSlots* slots = &session->image_slots;
    for (ORVLOG_ImageSlot* slot = nullptr; (slot = orvlog_image_slots_next(slots, slot)) != nullptr;)
    {
        // Log and coder go with the session: all records of the image speak in the image's own log from here on.
        orvlog_writer_detach(&slot->wrapper->writer, slot->wrapper->context->async_stream);
        ORVLOG_ImageContext* refused = refused_image(slot);
        if (refused != nullptr)
            orvlog_end_image(refused);
    }
    orvlog_image_slots_end(slots, session->side_allocator, nullptr);
}
