#include "orvlog/colour/gxc/gxc-writer.h"

#include "orvlog/colour/gxc/gxc-names.h"

#include <charconv>
#include <cmath>
#include <cstdarg>
#include <cstdio>
#include <cstring>

namespace
{

constexpr uint32_t kMostTabs = 16;
constexpr char kTabs[] = "\t\t\t\t\t\t\t\t\t\t\t\t\t\t\t\t";
static_assert(sizeof(kTabs) == kMostTabs + 1);

constexpr int32_t kReportLevel = 1;
constexpr int32_t kReportModule = 109;
constexpr uint32_t kReportSize = 256;

// Pieces of an array are put together here and go out in one print.
struct Row
{
    GXC_Writer* writer;
    uint32_t length;
    char text[1024];
};

void flush_row(Row* row)
{
    if (row->length == 0)
        return;
    row->text[row->length] = '\0';
    gxc_print(row->writer, "%s", row->text);
    row->length = 0;
}

// Room for one more entry, whatever it is, its blank and the terminator.
char* row_room(Row* row)
{
    if (row->length + GXC_FLOAT_TEXT + 2 > sizeof(row->text))
        flush_row(row);
    return row->text + row->length;
}

const char* text_or_null(const char* text)
{
    return text != nullptr ? text : "(null)";
}

uint32_t format_unsigned(char* at, uint32_t value)
{
    return static_cast<uint32_t>(std::to_chars(at, at + GXC_FLOAT_TEXT, value).ptr - at);
}

uint32_t format_bool(char* at, bool value)
{
    const char* text = value ? "TRUE" : "FALSE";
    uint32_t length = 0;
    for (; text[length] != '\0'; ++length)
        at[length] = text[length];
    return length;
}

float float_at(const uint8_t* source)
{
    const uint32_t bits = source[0] | static_cast<uint32_t>(source[1]) << 8 | static_cast<uint32_t>(source[2]) << 16 |
                          static_cast<uint32_t>(source[3]) << 24;
    float value = 0;
    std::memcpy(&value, &bits, sizeof value);
    return value;
}

uint32_t format_entry(char* at, GXC_Entry entry, const uint8_t* source)
{
    switch (entry)
    {
    case GXC_ENTRY_BOOL:
        return format_bool(at, source[0] == 1);
    case GXC_ENTRY_UINT16:
        return format_unsigned(at, source[0] | static_cast<uint32_t>(source[1]) << 8);
    case GXC_ENTRY_FLOAT:
        return gxc_format_float(at, float_at(source));
    case GXC_ENTRY_BYTE_AS_FLOAT:
        return gxc_format_float(at, source[0]);
    case GXC_ENTRY_UINT8:
        break;
    }
    return format_unsigned(at, source[0]);
}

const char* array_attribute(GXC_Entry entry)
{
    switch (entry)
    {
    case GXC_ENTRY_BOOL:
        return "BoolArray";
    case GXC_ENTRY_UINT16:
        return "UInt16_array";
    case GXC_ENTRY_FLOAT:
    case GXC_ENTRY_BYTE_AS_FLOAT:
        return "float_array";
    case GXC_ENTRY_UINT8:
        break;
    }
    return "UInt8_array";
}

}  // namespace

int32_t gxc_print(GXC_Writer* writer, const char* format, ...)
{
    const GIO_Stream* stream = writer->stream;
    if (stream == nullptr || stream->ops == nullptr || stream->ops->gio_VPrintf == nullptr)
        return -1;
    va_list args;
    va_start(args, format);
    const int32_t printed = stream->ops->gio_VPrintf(stream->instance, format, args);
    va_end(args);
    if (stream->ops->gio_Flush != nullptr)
        stream->ops->gio_Flush(stream->instance);
    return printed;
}

const char* gxc_indent(const GXC_Writer* writer)
{
    return kTabs + (writer->level < kMostTabs ? kMostTabs - writer->level : 0);
}

int32_t gxc_report(GER_Log* error_handle, const char* format, ...)
{
    if (error_handle == nullptr)
        return 0;
    char text[kReportSize] = {};
    va_list args;
    va_start(args, format);
    std::vsnprintf(text, sizeof text, format, args);
    va_end(args);
    GER_LogPrint(error_handle, kReportLevel, kReportModule, "[GXC] %s", text);
    return static_cast<int32_t>(std::strlen(text));
}

void gxc_open(GXC_Writer* writer, const char* name)
{
    gxc_print(writer, "%s%s<%s>\n", writer->prefix, gxc_indent(writer), text_or_null(name));
    ++writer->level;
}

void gxc_open_inline(GXC_Writer* writer, const char* name)
{
    gxc_print(writer, "%s%s<%s>", writer->prefix, gxc_indent(writer), text_or_null(name));
    ++writer->level;
}

void gxc_close(GXC_Writer* writer, const char* name)
{
    --writer->level;
    gxc_print(writer, "%s%s</%s>\n", writer->prefix, gxc_indent(writer), text_or_null(name));
}

void gxc_close_inline(GXC_Writer* writer, const char* name)
{
    --writer->level;
    gxc_print(writer, "</%s>\n", text_or_null(name));
}

void gxc_begin(GXC_Writer* writer, const char* name)
{
    gxc_print(writer, "%s%s<%s", writer->prefix, gxc_indent(writer), text_or_null(name));
}

void gxc_end(GXC_Writer* writer)
{
    gxc_print(writer, " />\n");
}

void gxc_value_bool(GXC_Writer* writer, uint32_t value)
{
    gxc_print(writer, " Bool=\"%s\"", value != 0 ? "TRUE" : "FALSE");
}

void gxc_value_uint32(GXC_Writer* writer, uint32_t value)
{
    gxc_print(writer, " UInt32=\"%u\"", value);
}

void gxc_value_uint16(GXC_Writer* writer, uint16_t value)
{
    gxc_print(writer, " UInt16=\"%u\"", static_cast<unsigned>(value));
}

void gxc_value_uint8(GXC_Writer* writer, uint8_t value)
{
    gxc_print(writer, " UInt8=\"%u\"", static_cast<unsigned>(value));
}

void gxc_value_float(GXC_Writer* writer, float value)
{
    char text[GXC_FLOAT_TEXT];
    gxc_format_float(text, value);
    gxc_print(writer, " float=\"%s\"", text);
}

void gxc_value_enum(GXC_Writer* writer, const char* family, uint32_t value)
{
    gxc_print(writer, " %s=\"%s\"", family, text_or_null(gxc_name_of_value(family, value)));
}

void gxc_value_string(GXC_Writer* writer, const char* text, uint64_t length)
{
    const auto most = static_cast<int>(length < INT32_MAX ? length : INT32_MAX);
    gxc_print(writer, " String=\"%.*s\"", most, text);
}

uint64_t gxc_entry_size(GXC_Entry entry)
{
    if (entry == GXC_ENTRY_FLOAT)
        return 4;
    return entry == GXC_ENTRY_UINT16 ? 2 : 1;
}

void gxc_value_array(GXC_Writer* writer, GXC_Entry entry, const uint8_t* source, uint64_t count, uint64_t zeros)
{
    constexpr uint8_t kZero[4] = {};
    const uint64_t size = gxc_entry_size(entry);
    gxc_print(writer, " %s=\"", array_attribute(entry));
    Row row;
    row.writer = writer;
    row.length = 0;
    for (uint64_t i = 0; i < count + zeros; ++i)
    {
        char* at = row_room(&row);
        const uint32_t blank = i != 0 ? 1 : 0;
        at[0] = ' ';
        row.length += blank + format_entry(at + blank, entry, i < count ? source + i * size : kZero);
    }
    flush_row(&row);
    gxc_print(writer, "\"");
}

void gxc_value_hex(GXC_Writer* writer, const uint8_t* source, uint64_t count)
{
    gxc_print(writer, " HexData=\"");
    gxc_hex_run(writer, source, count);
    gxc_print(writer, "\" ");
}

void gxc_hex_run(GXC_Writer* writer, const uint8_t* source, uint64_t count)
{
    constexpr char kDigits[] = "0123456789ABCDEF";
    Row row;
    row.writer = writer;
    row.length = 0;
    for (uint64_t i = 0; i < count; ++i)
    {
        if (row.length + 3 > sizeof row.text)
            flush_row(&row);
        row.text[row.length++] = kDigits[source[i] >> 4];
        row.text[row.length++] = kDigits[source[i] & 15];
    }
    flush_row(&row);
}

uint32_t gxc_format_float(char* buffer, float value)
{
    uint32_t length = 0;
    if (std::isfinite(value))
    {
        const auto end =
            std::to_chars(buffer, buffer + GXC_FLOAT_TEXT - 1, static_cast<double>(value), std::chars_format::fixed, 6);
        length = static_cast<uint32_t>(end.ptr - buffer);
    }
    else
    {
        if (std::signbit(value))
            buffer[length++] = '-';
        std::memcpy(buffer + length, std::isnan(value) ? "nan" : "inf", 3);
        length += 3;
    }
    buffer[length] = '\0';
    return length;
}
