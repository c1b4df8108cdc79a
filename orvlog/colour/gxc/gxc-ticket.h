// GXC: a serialised colour ticket as indented text.
//
// A ticket is 16 bytes of fixed data, a list of colour space definitions, and a list of tagged sections. It has
// no length of its own: only the two lists' end markers end it. Nothing in it is computed or looked up but the
// names of values.

#pragma once

#include "orvlog/colour/gxc/gxc-fields.h"

#include <cstdint>

// A family that isn't known and has a name all the same, for gxc_write_ticket and gxc_deserialise_ticket; the name of
// its element.
constexpr int32_t GXC_FAMILY_UNKNOWN = INT32_MIN;
extern const char gxc_unknown_family[];

// Writes the fixed data that `input` stands at; false when the block is too short.
bool gxc_write_fixed_data(GXC_Writer* writer, GXC_Input* input);

// Writes the ticket that `input` stands at, with all that is around it, and leaves `input` behind the last byte
// read. In a block that ends too early what there is is written, every element is closed, and a message goes to
// `writer->error_handle`; the result is false then.
bool gxc_write_ticket(GXC_Writer* writer, GXC_Input* input, int32_t family);

// Writes the ticket that lies in a stream's memory.
//   allocator      the caller's; nothing is taken from it
//   input_stream   lends its block by gio_ReadBuffer; afterwards it is told by gio_Seek where the ticket ends
//   family         value of GCM_ColorSpaceFamily, or GXC_FAMILY_UNKNOWN; -1 or any other prints as "(null)"
//   output_stream  the log; the text goes there as plain bytes whatever the log's coding
//   line_prefix    start of each line; null for none
// Gives 1 when the whole ticket was read, and 0 when the stream could not lend its block, and then nothing is
// written, or when the ticket is damaged.
uint32_t gxc_deserialise_ticket(GMM_Allocator* allocator, GIO_Stream* input_stream, int32_t family,
                                GIO_Stream* output_stream, const char* line_prefix);
