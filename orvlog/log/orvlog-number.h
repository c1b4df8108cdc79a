// Numbers as text, the same on every system and in every locale.

#pragma once

#include <cstdint>

// Room for any number of this header, terminator included.
constexpr uint32_t ORVLOG_NUMBER_SIZE = 32;

// Each writes the text at `to`, with no terminator, and gives its length. `to` has room for ORVLOG_NUMBER_SIZE.
uint32_t orvlog_format_double(char* to, double value);  // "%.17g"; a NaN is "nan" or "-nan" by its sign bit
uint32_t orvlog_format_float(char* to, float value);    // "%.9g" of the widened value
uint32_t orvlog_format_uint(char* to, uint32_t value);  // "%u"
uint32_t orvlog_format_int(char* to, int32_t value);    // "%i"
uint32_t orvlog_format_hex(char* to, uint32_t value);   // "%#x": 0 is "0"
