#include "orvlog/log/orvlog-attributes.h"

#include "orvlog/log/orvlog-coding.h"
#include "orvlog/log/orvlog-line.h"
#include "orvlog/log/orvlog-scope.h"

#include <bit>
#include <cstring>

namespace
{

constexpr uint32_t kRowBytes = 80;
constexpr uint32_t kBytesPerLine = 50;
constexpr uint64_t kFloatsPerLine = 25;
constexpr uint32_t kHexSlack = 2;
constexpr char kHexDigits[] = "0123456789abcdef";

// Each byte as two digits and a blank, in the order of memory from the low end on.
struct HexTable
{
    uint32_t text[256];
};

static_assert(std::endian::native == std::endian::little);

constexpr HexTable make_hex_table()
{
    HexTable table = {};
    for (uint32_t byte = 0; byte < 256; ++byte)
        table.text[byte] = static_cast<uint32_t>(kHexDigits[byte >> 4]) |
                           static_cast<uint32_t>(kHexDigits[byte & 0xF]) << 8 | uint32_t{' '} << 16;
    return table;
}

constexpr HexTable kHexTable = make_hex_table();

void line_hex_byte(ORVLOG_Line* line, uint8_t byte)
{
    char* to = orvlog_line_room(line, 2);
    to[0] = kHexDigits[byte >> 4];
    to[1] = kHexDigits[byte & 0xF];
    line->length += 2;
}

bool passes_unescaped(uint8_t byte)
{
    return byte >= 0x20 && byte <= 0x7E && byte != '"' && byte != '&' && byte != '<' && byte != '>';
}

// Two digits and a blank for each byte; up to kHexSlack characters more are written over. Bytes go in pairs: what
// takes the time is to store.
void write_hex(char* to, const uint8_t* bytes, uint32_t count)
{
    uint32_t i = 0;
    for (; i + 2 <= count; i += 2, to += 6)
    {
        const uint64_t pair = kHexTable.text[bytes[i]] | uint64_t{kHexTable.text[bytes[i + 1]]} << 24;
        std::memcpy(to, &pair, sizeof pair);
    }
    if (i < count)
        std::memcpy(to, &kHexTable.text[bytes[i]], 3);
}

// One array attribute: each value by `put`, with a blank behind it.
template <typename Value, typename Put>
void write_array(ORVLOG_Writer* writer, std::string_view name, const Value* values, uint64_t count, Put put)
{
    ORVLOG_Line line;
    orvlog_line_start(&line, writer);
    orvlog_line_name(&line, name);
    for (uint64_t i = 0; values != nullptr && i < count; ++i)
    {
        put(&line, values[i]);
        orvlog_line_char(&line, ' ');
    }
    orvlog_line_finish_value(&line);
}

void begin_buffer(ORVLOG_Writer* writer, std::string_view name, uint32_t length)
{
    orvlog_writer_begin_element(writer, name);
    // The count is unsigned but is shown by "%i"; readers of the log rely on the form.
    orvlog_attr_int(writer, "len", static_cast<int32_t>(length));
    orvlog_writer_end_tag(writer);
}

}  // namespace

void orvlog_attr_begin(ORVLOG_Writer* writer, std::string_view name)
{
    ORVLOG_Line line;
    orvlog_line_start(&line, writer);
    orvlog_line_name(&line, name);
    orvlog_line_finish(&line);
}

void orvlog_attr_end(ORVLOG_Writer* writer)
{
    orvlog_writer_emit(writer, "\"", 1);
}

void orvlog_attr_string(ORVLOG_Writer* writer, std::string_view name, const char* text)
{
    ORVLOG_Line line;
    orvlog_line_start(&line, writer);
    orvlog_line_name(&line, name);
    for (; text != nullptr && *text != '\0'; ++text)
    {
        const auto byte = static_cast<uint8_t>(*text);
        if (passes_unescaped(byte))
        {
            orvlog_line_char(&line, *text);
            continue;
        }
        orvlog_line_text(&line, "\\x");
        line_hex_byte(&line, byte);
    }
    orvlog_line_finish_value(&line);
}

void orvlog_attr_flags(ORVLOG_Writer* writer, std::string_view name, const ORVLOG_FlagTable* table, uint32_t value)
{
    ORVLOG_Line line;
    orvlog_line_start(&line, writer);
    orvlog_line_name(&line, name);
    orvlog_line_char(&line, '[');
    orvlog_line_hex(&line, value);
    orvlog_line_text(&line, "] ");
    for (uint32_t i = 0; i < table->count; ++i)
    {
        const ORVLOG_FlagEntry* entry = &table->entries[i];
        const bool holds = value == 0 ? entry->value == 0 : (entry->value & value) != 0;
        if (!holds)
            continue;
        orvlog_line_text(&line, entry->name);
        orvlog_line_char(&line, ' ');
        if (value == 0)
            break;
    }
    orvlog_line_finish_value(&line);
}

void orvlog_attr_enum(ORVLOG_Writer* writer, std::string_view name, const ORVLOG_EnumTable* table, uint32_t value)
{
    ORVLOG_Line line;
    orvlog_line_start(&line, writer);
    orvlog_line_name(&line, name);
    if (value <= table->max_value)
    {
        orvlog_line_text(&line, table->names[value]);
    }
    else
    {
        orvlog_line_text(&line, "UNKNOWN_VALUE(");
        orvlog_line_int(&line, static_cast<int32_t>(value));
        orvlog_line_char(&line, ')');
    }
    orvlog_line_finish_value(&line);
}

void orvlog_attr_uint(ORVLOG_Writer* writer, std::string_view name, uint32_t value)
{
    ORVLOG_Line line;
    orvlog_line_start(&line, writer);
    orvlog_line_name(&line, name);
    orvlog_line_uint(&line, value);
    orvlog_line_finish_value(&line);
}

void orvlog_attr_int(ORVLOG_Writer* writer, std::string_view name, int32_t value)
{
    ORVLOG_Line line;
    orvlog_line_start(&line, writer);
    orvlog_line_name(&line, name);
    orvlog_line_int(&line, value);
    orvlog_line_finish_value(&line);
}

void orvlog_attr_bool(ORVLOG_Writer* writer, std::string_view name, uint32_t value)
{
    ORVLOG_Line line;
    orvlog_line_start(&line, writer);
    orvlog_line_name(&line, name);
    orvlog_line_text(&line, value != 0 ? "TRUE" : "FALSE");
    orvlog_line_finish_value(&line);
}

void orvlog_attr_double(ORVLOG_Writer* writer, std::string_view name, double value)
{
    ORVLOG_Line line;
    orvlog_line_start(&line, writer);
    orvlog_line_name(&line, name);
    orvlog_line_double(&line, value);
    orvlog_line_finish_value(&line);
}

void orvlog_attr_float(ORVLOG_Writer* writer, std::string_view name, float value)
{
    ORVLOG_Line line;
    orvlog_line_start(&line, writer);
    orvlog_line_name(&line, name);
    orvlog_line_float(&line, value);
    orvlog_line_finish_value(&line);
}

void orvlog_attr_uint_array(ORVLOG_Writer* writer, std::string_view name, const uint32_t* values, uint64_t count)
{
    write_array(writer, name, values, count, orvlog_line_uint);
}

void orvlog_attr_int4(ORVLOG_Writer* writer, std::string_view name, const int32_t* values)
{
    write_array(writer, name, values, 4, orvlog_line_int);
}

void orvlog_attr_uint16_array(ORVLOG_Writer* writer, std::string_view name, const uint16_t* values, uint64_t count)
{
    write_array(writer, name, values, count, [](ORVLOG_Line* line, uint16_t value) { orvlog_line_uint(line, value); });
}

void orvlog_attr_uint8_array(ORVLOG_Writer* writer, std::string_view name, const uint8_t* values, uint64_t count)
{
    write_array(writer, name, values, count, [](ORVLOG_Line* line, uint8_t value) { orvlog_line_uint(line, value); });
}

void orvlog_attr_hex4(ORVLOG_Writer* writer, std::string_view name, const uint8_t* values)
{
    write_array(writer, name, values, 4, line_hex_byte);
}

void orvlog_attr_double_array(ORVLOG_Writer* writer, std::string_view name, const double* values, uint64_t count)
{
    write_array(writer, name, values, count, orvlog_line_double);
}

void orvlog_attr_float_array(ORVLOG_Writer* writer, std::string_view name, const float* values, uint64_t count)
{
    write_array(writer, name, values, count, orvlog_line_float);
}

void orvlog_elem_bytes(ORVLOG_Writer* writer, const uint8_t* bytes, uint32_t length, uint32_t row_size)
{
    if (length == 0)
        return;
    begin_buffer(writer, "BufferUInt8", length);
    orvlog_write_hex_rows(writer, bytes, length, row_size);
    orvlog_writer_close_element(writer, "BufferUInt8");
}

void orvlog_elem_named_bytes(ORVLOG_Writer* writer, std::string_view name, const uint8_t* bytes, uint32_t length)
{
    const ORVLOG_Element element(writer, name);
    orvlog_elem_bytes(writer, bytes, length, kBytesPerLine);
}

void orvlog_elem_floats(ORVLOG_Writer* writer, const float* values, uint32_t length)
{
    begin_buffer(writer, "BufferFloat", length);
    orvlog_write_float_rows(writer, values, length);
    orvlog_writer_close_element(writer, "BufferFloat");
}

void orvlog_elem_named_floats(ORVLOG_Writer* writer, std::string_view name, const float* values, uint32_t length)
{
    const ORVLOG_Element element(writer, name);
    orvlog_elem_floats(writer, values, length);
}

void orvlog_elem_cstr(ORVLOG_Writer* writer, const char* text)
{
    orvlog_writer_begin_element(writer, "CStr");
    orvlog_attr_string(writer, "val", text);
    orvlog_writer_end_empty(writer, "CStr");
}

void orvlog_write_hex_rows(ORVLOG_Writer* writer, const uint8_t* bytes, uint64_t length, uint32_t row_size)
{
    if (bytes == nullptr)
        return;
    const uint32_t row = row_size == 0 || row_size > kRowBytes ? kRowBytes : row_size;
    // A row is one print, and the coded path brings no more than its limit of a print: a row of more than 66
    // bytes loses its tail there, and readers of coded logs rely on it.
    const uint64_t limit = orvlog_writer_print_limit(writer);
    ORVLOG_Line line;
    orvlog_line_start(&line, writer);
    for (uint64_t at = 0; at < length; at += row)
    {
        const auto count = static_cast<uint32_t>(length - at < row ? length - at : row);
        write_hex(orvlog_line_room(&line, 3 * kRowBytes + kHexSlack), bytes + at, count);
        line.length += 3 * count < limit ? 3 * count : static_cast<uint32_t>(limit);
        if (row_size != 0)
            orvlog_line_char(&line, '\n');
    }
    orvlog_line_finish(&line);
}

void orvlog_write_float_rows(ORVLOG_Writer* writer, const float* values, uint64_t length)
{
    ORVLOG_Line line;
    orvlog_line_start(&line, writer);
    for (uint64_t i = 0; values != nullptr && i < length; ++i)
    {
        if (i != 0 && i % kFloatsPerLine == 0)
            orvlog_line_char(&line, '\n');
        orvlog_line_float(&line, values[i]);
        orvlog_line_char(&line, ' ');
    }
    orvlog_line_char(&line, '\n');
    orvlog_line_finish(&line);
}
