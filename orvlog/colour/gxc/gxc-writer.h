// GXC: the text of a serialised colour ticket, piece by piece.
//
// A line is a prefix, as many tabs as the level (16 at most), and an element. An element with a value is made
// of three prints: the begin form, one value form, the end form. Every print goes to the stream by one
// gio_VPrintf and is followed by one gio_Flush; a row of an array is one print.

#pragma once

#include "holv-core/ger/ger-log.h"
#include "holv-core/gio/gio-stream.h"
#include "holv-core/gmm/gmm-allocator.h"

#include <cstdint>

#if defined(__MINGW32__) && !defined(__clang__)
#define GXC_PRINTF(format_at, args_at) __attribute__((format(gnu_printf, format_at, args_at)))
#else
#define GXC_PRINTF(format_at, args_at) __attribute__((format(printf, format_at, args_at)))
#endif

struct GXC_Writer
{
    GMM_Allocator* allocator;  // the call's; rows lie on the stack, so nothing is taken from it
    GER_Log* error_handle;     // where gxc_report prints; may be null
    GIO_Stream* stream;        // the log
    const char* prefix;        // start of each line
    uint32_t level;            // tabs of the next line; goes on counting above 16
};

// Prints and flushes; gives what gio_VPrintf gave, or -1 where there is no stream that could print.
int32_t gxc_print(GXC_Writer* writer, const char* format, ...) GXC_PRINTF(2, 3);

// Tabs of the present level, 16 at most. Constant data.
const char* gxc_indent(const GXC_Writer* writer);

// Hands a message of at most 255 characters to the log at level 1 on channel 109 with "[GXC] " before it, and
// gives its length. A null log takes nothing and gives 0.
int32_t gxc_report(GER_Log* error_handle, const char* format, ...) GXC_PRINTF(2, 3);

// A null name stands as "(null)" in all of these.
void gxc_open(GXC_Writer* writer, const char* name);          // a line; one level deeper
void gxc_open_inline(GXC_Writer* writer, const char* name);   // without the end of the line; one level deeper
void gxc_close(GXC_Writer* writer, const char* name);         // one level up; a line
void gxc_close_inline(GXC_Writer* writer, const char* name);  // one level up; without prefix and tabs
void gxc_begin(GXC_Writer* writer, const char* name);
void gxc_end(GXC_Writer* writer);

void gxc_value_bool(GXC_Writer* writer, uint32_t value);
void gxc_value_uint32(GXC_Writer* writer, uint32_t value);
void gxc_value_uint16(GXC_Writer* writer, uint16_t value);
void gxc_value_uint8(GXC_Writer* writer, uint8_t value);
void gxc_value_float(GXC_Writer* writer, float value);
void gxc_value_enum(GXC_Writer* writer, const char* family, uint32_t value);
// `length` bytes of text, written as they stand.
void gxc_value_string(GXC_Writer* writer, const char* text, uint64_t length);

// What an array is read from: unaligned entries, the low byte first.
enum GXC_Entry : uint32_t
{
    GXC_ENTRY_BOOL,  // a byte, true if it is 1
    GXC_ENTRY_UINT8,
    GXC_ENTRY_UINT16,
    GXC_ENTRY_FLOAT,
    GXC_ENTRY_BYTE_AS_FLOAT  // a byte, printed as a float
};

// The bytes that one entry takes.
uint64_t gxc_entry_size(GXC_Entry entry);

// The array form: `count` entries from `source`, then `zeros` entries of value 0, single blanks between.
void gxc_value_array(GXC_Writer* writer, GXC_Entry entry, const uint8_t* source, uint64_t count, uint64_t zeros);

// The hexadecimal form, and the plain run of digits that stands in it.
void gxc_value_hex(GXC_Writer* writer, const uint8_t* source, uint64_t count);
void gxc_hex_run(GXC_Writer* writer, const uint8_t* source, uint64_t count);

// Room for any float by gxc_format_float, the terminator included.
enum
{
    GXC_FLOAT_TEXT = 56
};

// A float with six decimals, as the C library prints it in the "C" locale by "%f"; NaN and infinities with
// the sign of their sign bit. Gives the length.
uint32_t gxc_format_float(char* buffer, float value);
