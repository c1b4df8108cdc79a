#include "orvlog/log/orvlog-writer.h"

#include "holv-core/gmm/gmm-typed.h"
#include "orvlog/log/orvlog-coding.h"
#include "orvlog/log/orvlog-line.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <initializer_list>

namespace
{

constexpr uint32_t kMaxIndentDepth = 25;
constexpr size_t kLongestName = 256;
constexpr uint32_t kWarningText = 500;

// Coded text needs another operation of the stream than plain text.
bool can_write(const ORVLOG_Writer* writer)
{
    const GIO_Stream* stream = writer->stream;
    if (stream == nullptr || stream->ops == nullptr)
        return false;
    return orvlog_writer_is_coded(writer) ? stream->ops->gio_Write != nullptr : stream->ops->gio_VPrintf != nullptr;
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

void put_text(ORVLOG_Writer* writer, const char* text, uint64_t length)
{
    if (orvlog_writer_is_coded(writer))
        orvlog_coding_put(writer, text, static_cast<uint32_t>(length));
    else
        stream_print(writer->stream, "%s", text);
}

// A tag is one print, at the indent of the present depth. Where the log is coded, what is longer than a print allows
// is cut.
uint32_t indent_size(const ORVLOG_Writer* writer)
{
    return 2 * std::min(writer->depth, kMaxIndentDepth);
}

void tag_finish(ORVLOG_Line* line)
{
    if (orvlog_writer_is_coded(line->writer))
        line->length = std::min(line->length, ORVLOG_CODED_PRINT_LIMIT);
    orvlog_line_finish(line);
}

// Names longer than any record has, in pieces.
[[gnu::noinline, gnu::cold]] void put_long_tag(ORVLOG_Writer* writer, std::initializer_list<std::string_view> pieces)
{
    const size_t allowed = orvlog_writer_print_limit(writer);
    ORVLOG_Line line;
    orvlog_line_start(&line, writer);
    orvlog_line_text(&line, orvlog_writer_indent(writer->depth));
    for (const std::string_view piece : pieces)
        orvlog_line_text(&line, {piece.data(), std::min(piece.size(), allowed)});
    tag_finish(&line);
}

// The brackets are of lengths known when compiling.
template <size_t Open, size_t Close>
void put_tag(ORVLOG_Writer* writer, const char (&open)[Open], std::string_view name, const char (&close)[Close])
{
    if (name.size() > kLongestName)
        return put_long_tag(writer, {open, name, close});
    ORVLOG_Line line;
    orvlog_line_start(&line, writer);
    std::memset(line.text, ' ', 2 * kMaxIndentDepth);
    char* at = line.text + indent_size(writer);
    std::memcpy(at, open, Open - 1);
    orvlog_copy_text(at + Open - 1, name.data(), name.size());
    at += Open - 1 + name.size();
    std::memcpy(at, close, Close - 1);
    line.length = static_cast<uint32_t>(at + Close - 1 - line.text);
    tag_finish(&line);
}

template <size_t Open>
void put_member_tag(ORVLOG_Writer* writer, const char (&open)[Open], std::string_view element, std::string_view member)
{
    if (element.size() + member.size() > kLongestName)
        return put_long_tag(writer, {open, element, ".", member, ">\n"});
    ORVLOG_Line line;
    orvlog_line_start(&line, writer);
    std::memset(line.text, ' ', 2 * kMaxIndentDepth);
    char* at = line.text + indent_size(writer);
    std::memcpy(at, open, Open - 1);
    orvlog_copy_text(at + Open - 1, element.data(), element.size());
    at += Open - 1 + element.size();
    *at++ = '.';
    orvlog_copy_text(at, member.data(), member.size());
    at += member.size();
    std::memcpy(at, ">\n", 2);
    line.length = static_cast<uint32_t>(at + 2 - line.text);
    tag_finish(&line);
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

ORVLOG_Writer orvlog_writer_copy(const ORVLOG_Writer* writer)
{
    ORVLOG_Writer copy = *writer;
    copy.warnings = nullptr;
    copy.allocator = nullptr;
    return copy;
}

GIO_Stream* orvlog_writer_redirect(ORVLOG_Writer* writer, GIO_Stream* stream)
{
    GIO_Stream* former = writer->stream;
    writer->stream = stream;
    return former;
}

GIO_Stream* orvlog_writer_stream(const ORVLOG_Writer* writer)
{
    return writer->stream;
}

uint32_t orvlog_writer_depth(const ORVLOG_Writer* writer)
{
    return writer->depth;
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
    const int32_t length = orvlog_writer_is_coded(writer) ? orvlog_coding_vprint(writer, format, args)
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
    put_text(writer, text, length);
}

void orvlog_writer_flush(ORVLOG_Writer* writer)
{
    if (can_write(writer))
        flush(writer->stream);
}

void orvlog_writer_emit(ORVLOG_Writer* writer, const char* text, uint64_t length)
{
    if (length == 0 || !can_write(writer))
        return;
    put_text(writer, text, length);
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

void orvlog_writer_open_element(ORVLOG_Writer* writer, std::string_view name)
{
    put_tag(writer, "<", name, ">\n");
    writer->element_open = 1;
}

void orvlog_writer_open_member(ORVLOG_Writer* writer, std::string_view element, std::string_view member)
{
    put_member_tag(writer, "<", element, member);
    writer->element_open = 1;
}

void orvlog_writer_begin_element(ORVLOG_Writer* writer, std::string_view name)
{
    put_tag(writer, "<", name, "");
    writer->element_open = 1;
}

void orvlog_writer_end_tag(ORVLOG_Writer* writer)
{
    orvlog_writer_emit(writer, ">\n", 2);
}

void orvlog_writer_close_element(ORVLOG_Writer* writer, std::string_view name)
{
    put_tag(writer, "</", name, ">\n");
    after_close(writer);
}

void orvlog_writer_close_member(ORVLOG_Writer* writer, std::string_view element, std::string_view member)
{
    put_member_tag(writer, "</", element, member);
    after_close(writer);
}

void orvlog_writer_self_close(ORVLOG_Writer* writer)
{
    orvlog_writer_emit(writer, "/>\n", 3);
    after_close(writer);
}

void orvlog_writer_enter(ORVLOG_Writer* writer)
{
    orvlog_writer_end_tag(writer);
    ++writer->depth;
}

void orvlog_writer_enter_element(ORVLOG_Writer* writer, std::string_view name)
{
    orvlog_writer_open_element(writer, name);
    ++writer->depth;
}

void orvlog_writer_enter_member(ORVLOG_Writer* writer, std::string_view element, std::string_view member)
{
    orvlog_writer_open_member(writer, element, member);
    ++writer->depth;
}

void orvlog_writer_leave_element(ORVLOG_Writer* writer, std::string_view name)
{
    --writer->depth;
    orvlog_writer_close_element(writer, name);
}

void orvlog_writer_leave_member(ORVLOG_Writer* writer, std::string_view element, std::string_view member)
{
    --writer->depth;
    orvlog_writer_close_member(writer, element, member);
}

void orvlog_writer_end_empty(ORVLOG_Writer* writer, std::string_view name)
{
    orvlog_writer_end_tag(writer);
    orvlog_writer_close_element(writer, name);
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
    orvlog_writer_emit(writer, "\n<!--\n", 6);
    const int32_t length = orvlog_writer_vprint(writer, format, args);
    orvlog_writer_emit(writer, "-->\n", 4);
    return length;
}

void orvlog_writer_defer_warning(ORVLOG_Writer* writer, const char* format, ...)
{
    GMM_Allocator* allocator = writer->allocator;
    if (allocator == nullptr)
        return;
    auto* warning = gmm_alloc_record<ORVLOG_Warning>(allocator);
    if (warning == nullptr)
        return;
    warning->text = gmm_alloc_array<char>(allocator, kWarningText + 1);
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

void orvlog_writer_warn(ORVLOG_Writer* writer, const char* text)
{
    orvlog_writer_defer_warning(writer, ORVLOG_WARNING_FORMAT, text);
}

void orvlog_writer_warn_once(ORVLOG_Writer* writer, uint32_t* warned, const char* text)
{
    if (*warned != 0)
        return;
    *warned = 1;
    orvlog_writer_warn(writer, text);
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
