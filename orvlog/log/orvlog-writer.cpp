#include "orvlog/log/orvlog-writer.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <initializer_list>

namespace
{

constexpr uint32_t kMaxIndentDepth = 25;
constexpr uint32_t kFormatBlock = 200;
constexpr uint32_t kCoderOutput = 10;
constexpr uint32_t kWarningText = 500;

bool is_coded(const ORVLOG_Writer* writer)
{
    return writer->coder != nullptr && writer->compress == 1;
}

// Coded text needs another operation of the stream than plain text.
bool can_write(const ORVLOG_Writer* writer)
{
    const GIO_Stream* stream = writer->stream;
    if (stream == nullptr || stream->ops == nullptr)
        return false;
    return is_coded(writer) ? stream->ops->gio_Write != nullptr : stream->ops->gio_VPrintf != nullptr;
}

void flush(const GIO_Stream* stream)
{
    if (stream->ops->gio_Flush != nullptr)
        stream->ops->gio_Flush(stream->instance);
}

int32_t stream_print(GIO_Stream* stream, const char* format, ...)
{
    va_list args;
    va_start(args, format);
    const int32_t length = stream->ops->gio_VPrintf(stream->instance, format, args);
    va_end(args);
    return length;
}

void put_coded(ORVLOG_Writer* writer, const char* text, uint32_t length)
{
    GIO_Stream* stream = writer->stream;
    uint8_t output[kCoderOutput];
    AHC_SetInput(writer->coder, reinterpret_cast<const uint8_t*>(text), length);
    for (int32_t count; (count = AHC_Encode(writer->coder, output, kCoderOutput)) > 0;)
        stream->ops->gio_Write(output, 1, static_cast<uint64_t>(count), stream->instance);
}

int32_t vprint_coded(ORVLOG_Writer* writer, const char* format, va_list args)
{
    char block[kFormatBlock] = "";
    const int formatted = std::vsnprintf(block, kFormatBlock, format, args);
    uint32_t length = static_cast<uint32_t>(formatted);
    if (formatted < 0 || length >= ORVLOG_CODED_PRINT_LIMIT)
    {
        block[ORVLOG_CODED_PRINT_LIMIT] = '\0';
        length = static_cast<uint32_t>(std::strlen(block));
    }
    put_coded(writer, block, length);
    return static_cast<int32_t>(length);
}

// One print for the pieces of a tag, with the limit of one where it is coded.
void put_tag(ORVLOG_Writer* writer, std::initializer_list<const char*> pieces)
{
    char tag[512];
    size_t length = 0;
    size_t allowed = is_coded(writer) ? ORVLOG_CODED_PRINT_LIMIT : SIZE_MAX;
    for (const char* piece : pieces)
    {
        const size_t size = std::min(std::strlen(piece), allowed);
        allowed -= size;
        if (size >= sizeof tag - length)
        {
            tag[length] = '\0';
            orvlog_writer_put(writer, tag, length);
            orvlog_writer_put(writer, piece, size);
            length = 0;
            continue;
        }
        std::memcpy(tag + length, piece, size);
        length += size;
    }
    tag[length] = '\0';
    orvlog_writer_put(writer, tag, length);
    orvlog_writer_flush(writer);
}

void after_close(ORVLOG_Writer* writer)
{
    writer->element_open = 0;
    if (writer->warnings != nullptr)
        orvlog_writer_flush_warnings(writer);
}

}  // namespace

void orvlog_writer_init(ORVLOG_Writer* writer, GMM_Allocator* allocator, GIO_Stream* stream, uint64_t,
                        uint32_t compress)
{
    writer->stream = stream;
    writer->depth = 0;
    writer->warnings = nullptr;
    writer->element_open = 0;
    writer->allocator = allocator;
    writer->compress = compress;
    writer->coder = nullptr;
}

const char* orvlog_writer_indent(uint32_t depth)
{
    static const char blanks[] = "                                                  ";
    static_assert(sizeof blanks == 2 * kMaxIndentDepth + 1);
    return blanks + 2 * (depth < kMaxIndentDepth ? kMaxIndentDepth - depth : 0);
}

int32_t orvlog_writer_vprint(ORVLOG_Writer* writer, const char* format, va_list args)
{
    if (!can_write(writer))
        return -1;
    GIO_Stream* stream = writer->stream;
    const int32_t length = is_coded(writer) ? vprint_coded(writer, format, args)
                                            : stream->ops->gio_VPrintf(stream->instance, format, args);
    flush(stream);
    return length;
}

int32_t orvlog_writer_print(ORVLOG_Writer* writer, const char* format, ...)
{
    va_list args;
    va_start(args, format);
    const int32_t length = orvlog_writer_vprint(writer, format, args);
    va_end(args);
    return length;
}

void orvlog_writer_put(ORVLOG_Writer* writer, const char* text, uint64_t length)
{
    if (!can_write(writer) || length == 0)
        return;
    if (is_coded(writer))
        put_coded(writer, text, static_cast<uint32_t>(length));
    else
        stream_print(writer->stream, "%s", text);
}

void orvlog_writer_flush(ORVLOG_Writer* writer)
{
    if (can_write(writer))
        flush(writer->stream);
}

void orvlog_writer_depth_up(ORVLOG_Writer* writer)
{
    ++writer->depth;
}

void orvlog_writer_depth_down(ORVLOG_Writer* writer)
{
    --writer->depth;
}

void orvlog_writer_open_element(ORVLOG_Writer* writer, const char* name)
{
    put_tag(writer, {orvlog_writer_indent(writer->depth), "<", name, ">\n"});
    writer->element_open = 1;
}

void orvlog_writer_open_member(ORVLOG_Writer* writer, const char* element, const char* member)
{
    put_tag(writer, {orvlog_writer_indent(writer->depth), "<", element, ".", member, ">\n"});
    writer->element_open = 1;
}

void orvlog_writer_begin_element(ORVLOG_Writer* writer, const char* name)
{
    put_tag(writer, {orvlog_writer_indent(writer->depth), "<", name});
    writer->element_open = 1;
}

void orvlog_writer_end_tag(ORVLOG_Writer* writer)
{
    put_tag(writer, {">\n"});
}

void orvlog_writer_close_element(ORVLOG_Writer* writer, const char* name)
{
    put_tag(writer, {orvlog_writer_indent(writer->depth), "</", name, ">\n"});
    after_close(writer);
}

void orvlog_writer_close_member(ORVLOG_Writer* writer, const char* element, const char* member)
{
    put_tag(writer, {orvlog_writer_indent(writer->depth), "</", element, ".", member, ">\n"});
    after_close(writer);
}

void orvlog_writer_self_close(ORVLOG_Writer* writer)
{
    put_tag(writer, {"/>\n"});
    after_close(writer);
}

void orvlog_writer_comment(ORVLOG_Writer* writer, const char* format, ...)
{
    va_list args;
    va_start(args, format);
    orvlog_writer_vcomment(writer, format, args);
    va_end(args);
}

int32_t orvlog_writer_vcomment(ORVLOG_Writer* writer, const char* format, va_list args)
{
    put_tag(writer, {"\n<!--\n"});
    const int32_t length = orvlog_writer_vprint(writer, format, args);
    put_tag(writer, {"-->\n"});
    return length;
}

void orvlog_writer_defer_warning(ORVLOG_Writer* writer, const char* format, ...)
{
    GMM_Allocator* allocator = writer->allocator;
    if (allocator == nullptr)
        return;
    auto* warning = static_cast<ORVLOG_Warning*>(allocator->gmm_Alloc(allocator, sizeof(ORVLOG_Warning), 0));
    if (warning == nullptr)
        return;
    warning->text = static_cast<char*>(allocator->gmm_Alloc(allocator, kWarningText + 1, 0));
    if (warning->text == nullptr)
    {
        allocator->gmm_Free(allocator, warning);
        return;
    }
    va_list args;
    va_start(args, format);
    const int length = std::vsnprintf(warning->text, kWarningText + 1, format, args);
    va_end(args);
    if (length <= 0)
    {
        allocator->gmm_Free(allocator, warning->text);
        allocator->gmm_Free(allocator, warning);
        return;
    }
    warning->next = writer->warnings;
    writer->warnings = warning;
    if (writer->element_open == 0)
        orvlog_writer_flush_warnings(writer);
}

void orvlog_writer_flush_warnings(ORVLOG_Writer* writer)
{
    GMM_Allocator* allocator = writer->allocator;
    while (writer->warnings != nullptr)
    {
        ORVLOG_Warning* warning = writer->warnings;
        writer->warnings = warning->next;
        orvlog_writer_comment(writer, "%s", warning->text);
        if (allocator == nullptr)
            continue;
        allocator->gmm_Free(allocator, warning->text);
        allocator->gmm_Free(allocator, warning);
    }
}
