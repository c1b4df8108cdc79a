#include "orvlog/image/orvlog-image-callbacks.h"

#include "holv-core/gio/gio-file.h"
#include "orvlog/image/gop-image-dump.h"
#include "orvlog/image/orvlog-image-wrapper.h"
#include "orvlog/image/orvlog-side-file.h"
#include "orvlog/log/orvlog-attributes.h"
#include "orvlog/log/orvlog-scope.h"
#include "orvlog/names/orvlog-names.h"

#include <cstdio>

namespace
{

constexpr uint32_t kRow = 50;
constexpr size_t kAsyncName = 70;

// What a prepare was asked for.
struct PrepareRequest
{
    uint32_t object_type;
    uint32_t decompress;
    uint32_t rescale;
    float max_width_rescale;
    float min_width_rescale;
    float max_height_rescale;
    float min_height_rescale;
    uint32_t use_render_color_space;
    uint32_t req_bit_depth;
    uint32_t need_attr;
};

// One of the two buffers of a read.
struct ReadBuffer
{
    const uint8_t* bytes;
    uint32_t size;
    int32_t row_step;
    const int32_t* returned;
};

int32_t told(const ReadBuffer* buffer)
{
    return buffer->returned != nullptr ? *buffer->returned : 0;
}

// A client may say that it has returned more than the buffer holds, or less than nothing.
uint32_t held(const ReadBuffer* buffer)
{
    const int32_t count = told(buffer);
    if (count <= 0)
        return 0;
    return static_cast<uint32_t>(count) < buffer->size ? static_cast<uint32_t>(count) : buffer->size;
}

ORVLOG_ImageWrapper* known_wrapper(const GOP_OperandImagePointer* record, const void* context)
{
    ORVLOG_ImageWrapper* wrapper = orvlog_image_wrapper_of(record, context);
    ORVLOG_ImageSlots* slots = wrapper == nullptr ? orvlog_image_slots_behind(record, context) : nullptr;
    if (slots != nullptr)
        orvlog_image_warn_once(slots, &slots->warned, "Image callback for an image that is gone.");
    return wrapper;
}

// Null, too, for a record whose image cannot be kept: a renderer may have these callbacks from another one.
ORVLOG_ImageWrapper* kept_wrapper(const GOP_OperandImagePointer* record)
{
    ORVLOG_ImageWrapper* wrapper = known_wrapper(record, nullptr);
    return wrapper != nullptr && wrapper->asynchronous != 0 ? wrapper : nullptr;
}

// The client's functions may let the renderer release the image: it is there until the call is over.
ORVLOG_ImageContext* enter(const ORVLOG_ImageWrapper* wrapper)
{
    ++wrapper->context->in_call;
    return wrapper->context;
}

// Gives what orvlog_end_image gives, and null while the image is there.
GMM_Allocator* leave(ORVLOG_ImageContext* context)
{
    return --context->in_call == 0 && context->released != 0 ? orvlog_end_image(context) : nullptr;
}

void begin(ORVLOG_ImageWrapper* wrapper, const char* element, uint32_t id, uint32_t result)
{
    orvlog_writer_begin_element(&wrapper->writer, element);
    orvlog_attr_uint(&wrapper->writer, "Id", id);
    orvlog_attr_bool(&wrapper->writer, "return", result);
}

void dump_record_and_close(ORVLOG_Writer* writer, const char* element, const GOP_OperandImagePointer* record,
                           const ORVLOG_ImageWrapper* wrapper)
{
    const ORVLOG_Content content(writer, element);
    orvlog_dump_wrapped_image(writer, record, wrapper);
}

// The client may have changed its record in place: takes that over into the one that the renderer holds, but for what
// must stay the logger's.
void refresh(GOP_OperandImagePointer* record, ORVLOG_ImageWrapper* wrapper)
{
    const GOP_OperandImagePointer mine = *record;
    GOP_OperandImage* image = &wrapper->slot->image;
    *record = *wrapper->client_record;
    if (record->imp_Image != nullptr)
        *image = *record->imp_Image;
    record->imp_Image = image;
    record->imp_ImagePrepareFn = mine.imp_ImagePrepareFn;
    record->imp_ImageReadFn = mine.imp_ImageReadFn;
    record->imp_ImageFinishFn = mine.imp_ImageFinishFn;
    record->imp_ImageResetFn = mine.imp_ImageResetFn;
    record->imp_ImageKeepFn = mine.imp_ImageKeepFn;
    record->imp_ImageReleaseFn = mine.imp_ImageReleaseFn;
    record->imp_Context = wrapper->word;
}

// `held` is the wrapper of `record`, which the renderer holds now.
void dump_prepare(ORVLOG_ImageWrapper* wrapper, uint32_t id, uint32_t result, const PrepareRequest* request,
                  const ORVLOG_ImageWrapper* held, const GOP_OperandImagePointer* record)
{
    ORVLOG_Writer* writer = &wrapper->writer;
    begin(wrapper, "GOP_ImagePrepareFn", id, result);
    orvlog_attr_bool(writer, "operand_p_replaced", held != wrapper ? 1 : 0);
    orvlog_attr_flags(writer, "object_type", &ORVLOG_OBJECT_TYPE, request->object_type);
    orvlog_attr_bool(writer, "decompress", request->decompress);
    if (request->decompress == 0)
        orvlog_attr_bool(writer, "rescale", request->rescale);
    // The bounds follow a rescale even where decompress leaves out the word itself; readers of the log rely on it.
    if (request->rescale != 0)
    {
        orvlog_attr_float(writer, "max_width_rescale", request->max_width_rescale);
        orvlog_attr_float(writer, "min_width_rescale", request->min_width_rescale);
        orvlog_attr_float(writer, "max_height_rescale", request->max_height_rescale);
        orvlog_attr_float(writer, "min_height_rescale", request->min_height_rescale);
    }
    if (request->decompress == 0)
    {
        orvlog_attr_bool(writer, "use_render_color_space", request->use_render_color_space);
        orvlog_attr_bit_depth(writer, "req_bit_depth", request->req_bit_depth);
        orvlog_attr_bool(writer, "need_attr", request->need_attr);
    }
    dump_record_and_close(writer, "GOP_ImagePrepareFn", record, held);
}

void free_name(const ORVLOG_ImageWrapper* wrapper, char** name)
{
    GMM_Allocator* pool = wrapper->context->allocator;
    if (*name != nullptr)
        pool->gmm_Free(pool, *name);
    *name = nullptr;
}

uint32_t open_files(ORVLOG_ImageWrapper* wrapper, bool with_attr)
{
    ORVLOG_ImageContext* context = wrapper->context;
    if (ORVLOG_OpenSideFile(context, &wrapper->image_file, &wrapper->image_file_name, "img") == 0)
    {
        free_name(wrapper, &wrapper->image_file_name);
        return 0;
    }
    if (!with_attr || ORVLOG_OpenSideFile(context, &wrapper->attr_file, &wrapper->attr_file_name, "attr") != 0)
        return 1;
    free_name(wrapper, &wrapper->attr_file_name);
    orvlog_close_stream(&wrapper->image_file);
    free_name(wrapper, &wrapper->image_file_name);
    return 0;
}

// A file that is not open, since it never was or has been closed, gets nothing and is not named.
void write_file(ORVLOG_ImageWrapper* wrapper, const char* attribute, const char* name, GIO_Stream* file,
                const ReadBuffer* buffer)
{
    if (file == nullptr)
        return;
    orvlog_attr_string(&wrapper->writer, attribute, name);
    orvlog_side_file_write(file, buffer->bytes, held(buffer));
}

void dump_buffer(ORVLOG_Writer* writer, const char* name, const ReadBuffer* buffer)
{
    const ORVLOG_Element element(writer, name);
    orvlog_elem_bytes(writer, buffer->bytes, buffer->bytes != nullptr ? held(buffer) : 0, kRow);
}

void dump_buffers(ORVLOG_Writer* writer, const ReadBuffer* image, const ReadBuffer* attr)
{
    dump_buffer(writer, "img_buf", image);
    if (attr->bytes != nullptr)
        dump_buffer(writer, "attr_buf", attr);
}

// Gives the result of the read as the renderer gets it.
uint32_t dump_read(ORVLOG_ImageWrapper* wrapper, uint32_t result, uint32_t skip_pixels, const ReadBuffer* image,
                   const ReadBuffer* attr)
{
    ORVLOG_Writer* writer = &wrapper->writer;
    const bool with_attr = attr->bytes != nullptr;
    const bool with_files = wrapper->context->params->has_file_prefix != 0;
    begin(wrapper, "GOP_ImageReadFn", wrapper->id, result);
    orvlog_attr_uint(writer, "skip_pixels", skip_pixels);
    orvlog_attr_int(writer, "img_row_step", image->row_step);
    orvlog_attr_int(writer, "img_returned", told(image));
    if (with_attr)
    {
        orvlog_attr_int(writer, "attr_row_step", attr->row_step);
        orvlog_attr_int(writer, "attr_returned", told(attr));
    }
    if (with_files && wrapper->files_open == 0 && open_files(wrapper, with_attr) == 0)
        result = 0;
    if (with_files && result != 0)
    {
        write_file(wrapper, "ImageFileName", wrapper->image_file_name, wrapper->image_file, image);
        if (with_attr)
            write_file(wrapper, "AttrFileName", wrapper->attr_file_name, wrapper->attr_file, attr);
    }
    {
        const ORVLOG_Content content(writer, "GOP_ImageReadFn");
        if (!with_files)
            dump_buffers(writer, image, attr);
    }
    wrapper->files_open = 1;
    if (result != 0 && (told(image) < 0 || (with_attr && told(attr) < 0)))
        orvlog_image_warn_once(wrapper->context->slots, &wrapper->context->warned,
                               "Image read returned a negative count.");
    return result;
}

uint32_t word_of(const uint8_t* bytes)
{
    return uint32_t{bytes[0]} | uint32_t{bytes[1]} << 8 | uint32_t{bytes[2]} << 16 | uint32_t{bytes[3]} << 24;
}

GIO_Stream* open_async_log(const ORVLOG_ImageContext* context, char* name)
{
    const uint8_t* id = context->session_id;
    std::snprintf(name, kAsyncName, "orvlog-%08x-%08x-%08x-%08x-async-image-%010u.tmp", word_of(id + 12),
                  word_of(id + 8), word_of(id + 4), word_of(id), context->counters[1]);
    GIO_Stream* stream = nullptr;
    if (gio_OpenFile(name, GIO_OPEN_WRITE, 1, context->session_allocator, &stream) != GIO_OK)
        return nullptr;
    return stream;
}

void dump_keep(ORVLOG_ImageWrapper* wrapper, const char* name, uint32_t result)
{
    ORVLOG_Writer* writer = &wrapper->writer;
    orvlog_writer_begin_element(writer, "GOP_ImageKeepFn");
    orvlog_attr_uint(writer, "Id", wrapper->id);
    if (name != nullptr)
        orvlog_attr_string(writer, "async_img_log_file_name", name);
    orvlog_attr_bool(writer, "return", result);
    orvlog_writer_end_empty(writer, "GOP_ImageKeepFn");
}

void raise(uint32_t** flag)
{
    if (*flag != nullptr)
        **flag = 1;
    *flag = nullptr;
}

}  // namespace

uint32_t orvlog_image_prepare(GOP_OperandImagePointer** operand_p, uint32_t object_type, uint32_t decompress,
                              uint32_t rescale, float max_width_rescale, float min_width_rescale,
                              float max_height_rescale, float min_height_rescale, uint32_t use_render_color_space,
                              uint32_t req_bit_depth, uint32_t need_attr)
{
    ORVLOG_ImageWrapper* wrapper = operand_p != nullptr ? known_wrapper(*operand_p, nullptr) : nullptr;
    if (wrapper == nullptr)
        return 0;
    const PrepareRequest request = {object_type,
                                    decompress,
                                    rescale,
                                    max_width_rescale,
                                    min_width_rescale,
                                    max_height_rescale,
                                    min_height_rescale,
                                    use_render_color_space,
                                    req_bit_depth,
                                    need_attr};
    ORVLOG_ImageContext* context = enter(wrapper);
    GOP_OperandImagePointer* client_record = wrapper->client_record;
    uint32_t result = 0;
    if (client_record->imp_ImagePrepareFn != nullptr)
        result = client_record->imp_ImagePrepareFn(&client_record, object_type, decompress, rescale, max_width_rescale,
                                                   min_width_rescale, max_height_rescale, min_height_rescale,
                                                   use_render_color_space, req_bit_depth, need_attr);
    const uint32_t id = wrapper->id;
    const ORVLOG_ImageWrapper* held = wrapper;
    if (client_record != wrapper->client_record)
    {
        GOP_OperandImagePointer* wrapped = nullptr;
        if (ORVLOG_WrapImage(&wrapper->writer, context, client_record, &wrapped, &wrapper->slot->record) == 0)
        {
            leave(context);
            return 0;
        }
        *operand_p = wrapped;
        held = orvlog_image_slot_of(wrapped)->wrapper;
    }
    else
    {
        refresh(*operand_p, wrapper);
        wrapper->id = context->counters[1]++;
    }
    dump_prepare(wrapper, id, result, &request, held, *operand_p);
    leave(context);
    return result;
}

uint32_t orvlog_image_read(GOP_OperandImagePointer* operand_p, void* context, uint32_t skip_pixels,
                           uint8_t* image_buffer, uint32_t image_size, int32_t img_row_step, int32_t* img_returned,
                           uint8_t* attr_buffer, uint32_t attr_size, int32_t attr_row_step, int32_t* attr_returned)
{
    ORVLOG_ImageWrapper* wrapper = known_wrapper(operand_p, context);
    if (wrapper == nullptr)
        return 0;
    ORVLOG_ImageContext* image_context = enter(wrapper);
    GOP_OperandImagePointer* client = wrapper->client_record;
    uint32_t result = 0;
    if (client->imp_ImageReadFn != nullptr)
        result =
            client->imp_ImageReadFn(client, client->imp_Context, skip_pixels, image_buffer, image_size, img_row_step,
                                    img_returned, attr_buffer, attr_size, attr_row_step, attr_returned);
    const ReadBuffer image = {image_buffer, image_size, img_row_step, img_returned};
    const ReadBuffer attr = {attr_buffer, attr_size, attr_row_step, attr_returned};
    result = dump_read(wrapper, result, skip_pixels, &image, &attr);
    leave(image_context);
    return result;
}

uint32_t orvlog_image_finish(GOP_OperandImagePointer* operand_p, void* context)
{
    ORVLOG_ImageWrapper* wrapper = known_wrapper(operand_p, context);
    if (wrapper == nullptr)
        return 0;
    ORVLOG_ImageContext* image_context = enter(wrapper);
    GOP_OperandImagePointer* client = wrapper->client_record;
    uint32_t result = 0;
    if (client->imp_ImageFinishFn != nullptr)
        result = client->imp_ImageFinishFn(client, client->imp_Context);
    begin(wrapper, "GOP_ImageFinishFn", wrapper->id, result);
    dump_record_and_close(&wrapper->writer, "GOP_ImageFinishFn",
                          operand_p != nullptr ? operand_p : &wrapper->slot->record, wrapper);
    free_name(wrapper, &wrapper->image_file_name);
    orvlog_close_stream(&wrapper->image_file);
    free_name(wrapper, &wrapper->attr_file_name);
    orvlog_close_stream(&wrapper->attr_file);
    leave(image_context);
    return 1;
}

uint32_t orvlog_image_reset(GOP_OperandImagePointer* operand_p, void* context)
{
    ORVLOG_ImageWrapper* wrapper = known_wrapper(operand_p, context);
    if (wrapper == nullptr)
        return 0;
    ORVLOG_ImageContext* image_context = enter(wrapper);
    GOP_OperandImagePointer* client = wrapper->client_record;
    uint32_t result = 0;
    if (client->imp_ImageResetFn != nullptr)
        result = client->imp_ImageResetFn(client, client->imp_Context);
    begin(wrapper, "GOP_ImageResetFn", wrapper->id, result);
    orvlog_writer_end_empty(&wrapper->writer, "GOP_ImageResetFn");
    leave(image_context);
    return result;
}

uint32_t orvlog_image_keep(GOP_OperandImagePointer* operand_p)
{
    ORVLOG_ImageWrapper* wrapper = kept_wrapper(operand_p);
    if (wrapper == nullptr)
        return 0;
    ORVLOG_ImageContext* context = wrapper->context;
    char name[kAsyncName] = "";
    // An image that has been kept has its log already.
    const bool first = context->async_stream == nullptr;
    if (first && (context->async_stream = open_async_log(context, name)) == nullptr)
        return 0;
    GOP_OperandImagePointer* client = wrapper->client_record;
    GIO_Stream* present = orvlog_writer_stream(&wrapper->writer);
    enter(wrapper);
    const uint32_t result = client->imp_ImageKeepFn != nullptr ? client->imp_ImageKeepFn(client) : 0;
    // The element with the name has its place in the log that this record spoke in, though the client may have let it
    // be kept once more from within; one without a name in the image's own, whichever record it came by.
    if (first && context->slots->session != nullptr)
        orvlog_writer_redirect(&wrapper->writer, present);
    else
        orvlog_writer_redirect(&wrapper->writer, context->async_stream);
    dump_keep(wrapper, first ? name : nullptr, result);
    orvlog_writer_redirect(&wrapper->writer, context->async_stream);
    context->granted |= result;
    context->released = 0;
    raise(&context->kept_flag);
    raise(&context->async_flag);
    leave(context);
    return result;
}

void* orvlog_image_release(GOP_OperandImagePointer* operand_p)
{
    ORVLOG_ImageWrapper* wrapper = kept_wrapper(operand_p);
    if (wrapper == nullptr)
        return nullptr;
    ORVLOG_ImageContext* context = wrapper->context;
    GOP_OperandImagePointer* client = wrapper->client_record;
    if (context->released != 0)
        return nullptr;
    // Ahead of the client's function, so that it hears of one release only.
    context->released = 1;
    enter(wrapper);
    if (client->imp_ImageReleaseFn != nullptr)
        client->imp_ImageReleaseFn(client);
    orvlog_writer_begin_element(&wrapper->writer, "GOP_ImageReleaseFn");
    orvlog_attr_uint(&wrapper->writer, "Id", wrapper->id);
    orvlog_writer_end_empty(&wrapper->writer, "GOP_ImageReleaseFn");
    context->released = 1;
    context->granted = 0;
    return leave(context);
}
