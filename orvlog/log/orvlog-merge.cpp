#include "orvlog/log/orvlog-merge.h"

#include "holv-core/gio/gio-file.h"
#include "holv-core/gio/gio-format.h"
#include "holv-core/gmm/gmm-typed.h"
#include "orvlog/log/orvlog-compressed-stream.h"

#include <cstddef>
#include <cstring>
#include <initializer_list>
#include <string_view>

namespace
{

constexpr std::string_view kKeepEnd = "</GOP_ImageKeepFn>";
constexpr std::string_view kNameAttribute = "async_img_log_file_name";
// The attribute's name, its equals sign and the opening quote.
constexpr uint64_t kToFileName = 25;
// What is held back of a block: more than any element of a kept image.
constexpr uint64_t kHeldBack = 200;

static_assert(kKeepEnd.size() == 18);
static_assert(kToFileName == kNameAttribute.size() + 2);

// A merge under way. The text not yet written is [next, end) in `scan`.
struct Merge
{
    GMM_Allocator* allocator;
    GIO_Stream* source;
    GIO_Stream* output;
    char* scan;
    char* copy;
    char* next;
    char* end;
    bool at_end;
};

// The attribute with the name of an image's log, within one element.
struct KeptImage
{
    char* attribute;
    char* file_name;  // terminated
    char* rest;       // behind the closing quote
};

void close_stream(GIO_Stream* stream)
{
    stream->ops->gio_Close(stream->instance);
}

bool can_write(const GIO_Stream* stream)
{
    return stream != nullptr && stream->ops != nullptr && stream->ops->gio_Write != nullptr;
}

bool is_at_end(GIO_Stream* stream)
{
    return stream->ops->gio_Eof(stream->instance) > 0;
}

bool write_all(GIO_Stream* stream, const char* bytes, uint64_t count)
{
    return count == 0 || stream->ops->gio_Write(bytes, 1, count, stream->instance) == count;
}

bool copy_all(GIO_Stream* source, GIO_Stream* target, char* block)
{
    for (;;)
    {
        const uint64_t count = source->ops->gio_Read(block, 1, ORVLOG_MERGE_BLOCK, source->instance);
        if (count == 0)
            return is_at_end(source);
        if (!write_all(target, block, count))
            return false;
    }
}

char* find_text(char* from, const char* end, std::string_view wanted)
{
    const size_t at = std::string_view(from, static_cast<size_t>(end - from)).find(wanted);
    return at != std::string_view::npos ? from + at : nullptr;
}

// Writes what lies before `to`.
bool write_up_to(Merge* merge, char* to)
{
    const bool written = write_all(merge->output, merge->next, static_cast<uint64_t>(to - merge->next));
    merge->next = to;
    return written;
}

// Fills the block behind what was held back.
bool read_block(Merge* merge)
{
    const auto carry = static_cast<uint64_t>(merge->end - merge->next);
    std::memmove(merge->scan, merge->next, carry);
    merge->next = merge->scan;
    const uint64_t wanted = ORVLOG_MERGE_BLOCK - 1 - carry;
    const uint64_t count = merge->source->ops->gio_Read(merge->scan + carry, 1, wanted, merge->source->instance);
    merge->end = merge->scan + carry + count;
    *merge->end = '\0';
    if (count < wanted)
        merge->at_end = is_at_end(merge->source);
    return count > 0 || merge->at_end;
}

// At most two, of either kind, and none beyond the block: a line end that is read with the next block stands
// behind the image's log. Readers of merged logs rely on it.
char* skip_line_end(char* at)
{
    for (int i = 0; i < 2 && (*at == '\r' || *at == '\n'); ++i)
        ++at;
    return at;
}

// False where the element up to `element_end` does not name a log. No element of ours lacks it.
bool find_image_log(char* from, char* element_end, KeptImage* image)
{
    image->attribute = find_text(from, element_end, kNameAttribute);
    if (image->attribute == nullptr || element_end - image->attribute < static_cast<ptrdiff_t>(kToFileName))
        return false;
    image->file_name = image->attribute + kToFileName;
    char* quote = find_text(image->file_name, element_end, "\"");
    if (quote == nullptr)
        return false;
    *quote = '\0';
    image->rest = quote + 1;
    return true;
}

// Writes what leads up to the end of a kept image's element, without the name of its log, and then that log.
bool merge_image(Merge* merge, char* closing_tag)
{
    char* after = skip_line_end(closing_tag + kKeepEnd.size());
    KeptImage image = {};
    if (!find_image_log(merge->next, closing_tag, &image))
        return write_up_to(merge, after);
    if (!write_up_to(merge, image.attribute))
        return false;
    merge->next = image.rest;
    if (!write_up_to(merge, after))
        return false;
    if (ORVLOG_AppendFile(merge->allocator, image.file_name, merge->output, merge->copy) == 0)
        return false;
    GIO_FileDelete(image.file_name);
    return true;
}

bool merge_block(Merge* merge)
{
    while (char* closing_tag = find_text(merge->next, merge->end, kKeepEnd))
        if (!merge_image(merge, closing_tag))
            return false;
    if (merge->at_end)
        return write_up_to(merge, merge->end);
    const auto left = static_cast<uint64_t>(merge->end - merge->next);
    return left <= kHeldBack || write_up_to(merge, merge->end - kHeldBack);
}

bool merge_with_images(Merge* merge, const char* path)
{
    if (gio_OpenFile(path, GIO_OPEN_READ, 0, merge->allocator, &merge->source) != GIO_OK)
        return false;
    bool going_well = true;
    while (going_well && !merge->at_end)
        going_well = read_block(merge) && merge_block(merge);
    close_stream(merge->source);
    return going_well;
}

// With both blocks there: writes all to `target` or through a compressed stream upon it.
bool merge_to(Merge* merge, const char* path, GIO_Stream* target, uint32_t compress, uint32_t has_async_images)
{
    merge->next = merge->end = merge->scan;
    merge->output = compress == 1 ? ORVLOG_OpenCompressedStream(merge->allocator, target) : target;
    if (merge->output == nullptr)
        return false;
    const bool merged = has_async_images == 0
                            ? ORVLOG_AppendFile(merge->allocator, path, merge->output, merge->scan) != 0
                            : merge_with_images(merge, path);
    if (compress == 1)
        ORVLOG_CloseCompressedStream(merge->output);
    return merged;
}

// `session_id` read as little-endian words.
uint32_t word_of(const uint8_t* session_id, int number)
{
    uint32_t word = 0;
    for (int byte = 3; byte >= 0; --byte)
        word = word << 8 | session_id[4 * number + byte];
    return word;
}

}  // namespace

uint32_t ORVLOG_OpenTempLog(GMM_Allocator* allocator, const uint8_t* session_id, GIO_Stream** stream_out, char* name)
{
    if (session_id == nullptr || stream_out == nullptr || name == nullptr)
        return 0;
    *stream_out = nullptr;
    GIO_FormatBounded(name, ORVLOG_TEMP_LOG_NAME, "orvlog-%08x-%08x-%08x-%08x.tmp", word_of(session_id, 3),
                      word_of(session_id, 2), word_of(session_id, 1), word_of(session_id, 0));
    return gio_OpenFile(name, GIO_OPEN_WRITE, 1, allocator, stream_out) == GIO_OK ? 1 : 0;
}

uint32_t ORVLOG_AppendFile(GMM_Allocator* allocator, const char* path, GIO_Stream* target, char* block)
{
    GIO_Stream* source = nullptr;
    if (!can_write(target) || block == nullptr)
        return 0;
    if (gio_OpenFile(path, GIO_OPEN_READ, 0, allocator, &source) != GIO_OK)
        return 0;
    const bool copied = copy_all(source, target, block);
    close_stream(source);
    return copied ? 1 : 0;
}

uint32_t ORVLOG_MergeLogs(GMM_Allocator* allocator, const char* path, GIO_Stream* target, uint32_t compress,
                          uint32_t has_async_images)
{
    if (allocator == nullptr || path == nullptr || !can_write(target))
        return 0;
    Merge merge = {};
    merge.allocator = allocator;
    merge.scan = gmm_alloc_array<char>(allocator, ORVLOG_MERGE_BLOCK);
    merge.copy = gmm_alloc_array<char>(allocator, ORVLOG_MERGE_BLOCK);
    const bool merged =
        merge.scan != nullptr && merge.copy != nullptr && merge_to(&merge, path, target, compress, has_async_images);
    for (char* block : {merge.copy, merge.scan})
        if (block != nullptr)
            allocator->gmm_Free(allocator, block);
    if (merged)
        GIO_FileDelete(path);
    return merged ? 1 : 0;
}
