// How values look in the log: numbers, texts, enumerations, flag sets, arrays and blocks of bytes or floats.
// None of these forms can fail. Each has been flushed when it returns; only the element forms touch the
// writer's element_open.

#pragma once

#include "orvlog/log/orvlog-writer.h"
#include "orvlog/names/orvlog-name-tables.h"

#include <cstdint>
#include <string_view>

// " %s=\"", and the closing quote.
void orvlog_attr_begin(ORVLOG_Writer* writer, std::string_view name);
void orvlog_attr_end(ORVLOG_Writer* writer);

// Bytes 0x20 to 0x7E stand as they are but for double quote, ampersand, less than and greater than; those and all
// others are written as a backslash, an x and two digits. Null gives an empty value.
void orvlog_attr_string(ORVLOG_Writer* writer, std::string_view name, const char* text);

// "[%#x] ", then each name whose value has a bit in common with `value`, in the order of the table, with a blank
// behind each; for a value of 0 the first name of value 0.
void orvlog_attr_flags(ORVLOG_Writer* writer, std::string_view name, const ORVLOG_FlagTable* table, uint32_t value);

// The name, or "UNKNOWN_VALUE(%i)" above max_value.
void orvlog_attr_enum(ORVLOG_Writer* writer, std::string_view name, const ORVLOG_EnumTable* table, uint32_t value);

void orvlog_attr_uint(ORVLOG_Writer* writer, std::string_view name, uint32_t value);
void orvlog_attr_int(ORVLOG_Writer* writer, std::string_view name, int32_t value);
void orvlog_attr_bool(ORVLOG_Writer* writer, std::string_view name,
                      uint32_t value);  // "TRUE" for non-zero, else "FALSE"
void orvlog_attr_double(ORVLOG_Writer* writer, std::string_view name, double value);  // "%.17g"
void orvlog_attr_float(ORVLOG_Writer* writer, std::string_view name, float value);    // "%.9g"

// Each value with a blank behind it, the last one too. Null arrays count as empty.
void orvlog_attr_uint_array(ORVLOG_Writer* writer, std::string_view name, const uint32_t* values, uint64_t count);
void orvlog_attr_int4(ORVLOG_Writer* writer, std::string_view name, const int32_t* values);
void orvlog_attr_uint16_array(ORVLOG_Writer* writer, std::string_view name, const uint16_t* values, uint64_t count);
void orvlog_attr_uint8_array(ORVLOG_Writer* writer, std::string_view name, const uint8_t* values, uint64_t count);
void orvlog_attr_hex4(ORVLOG_Writer* writer, std::string_view name, const uint8_t* values);  // "%02x "
void orvlog_attr_double_array(ORVLOG_Writer* writer, std::string_view name, const double* values, uint64_t count);
void orvlog_attr_float_array(ORVLOG_Writer* writer, std::string_view name, const float* values, uint64_t count);

// The BufferUInt8 element with attribute len and the bytes in rows; nothing at all for a length of 0.
void orvlog_elem_bytes(ORVLOG_Writer* writer, const uint8_t* bytes, uint32_t length, uint32_t row_size);
// An element `name` around a BufferUInt8 with rows of 50.
void orvlog_elem_named_bytes(ORVLOG_Writer* writer, std::string_view name, const uint8_t* bytes, uint32_t length);
// The BufferFloat element, written for a length of 0 too.
void orvlog_elem_floats(ORVLOG_Writer* writer, const float* values, uint32_t length);
void orvlog_elem_named_floats(ORVLOG_Writer* writer, std::string_view name, const float* values, uint32_t length);
// The CStr element with attribute val.
void orvlog_elem_cstr(ORVLOG_Writer* writer, const char* text);

// Bytes as "%02x " in rows of row_size, each followed by a newline. A row size of 0, or above 80, means rows of 80,
// and 0 means no newlines besides. Rows have no indent.
void orvlog_write_hex_rows(ORVLOG_Writer* writer, const uint8_t* bytes, uint64_t length, uint32_t row_size);
// Values as "%.9g " in rows of 25, and one newline at the end, even with no values.
void orvlog_write_float_rows(ORVLOG_Writer* writer, const float* values, uint64_t length);
