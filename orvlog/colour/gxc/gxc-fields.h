// GXC: reading a serialised ticket within its block, and the runs of fields that most of it is made of.
//
// Fields are little-endian, unaligned and without gaps. A read that would pass the end of the block fails and
// moves nothing; every function that takes a GXC_Input gives false from there on up, after it has closed the
// elements that it had opened.

#pragma once

#include "orvlog/colour/gxc/gxc-writer.h"

#include <cstddef>
#include <cstdint>

struct GXC_Input
{
    const uint8_t* data;
    uint64_t size;
    uint64_t offset;  // never above size
};

const uint8_t* gxc_here(const GXC_Input* input);
uint64_t gxc_left(const GXC_Input* input);

bool gxc_read_uint8(GXC_Input* input, uint8_t* value);
bool gxc_read_uint32(GXC_Input* input, uint32_t* value);
bool gxc_read_float(GXC_Input* input, float* value);
// Moves over bytes that nobody looks at.
bool gxc_skip(GXC_Input* input, uint64_t count);

enum GXC_Form : uint8_t
{
    GXC_BOOL,    // a byte, true if it is 1
    GXC_UINT8,   // a byte
    GXC_UINT32,  // 32 bits
    GXC_FLOAT,   // single precision
    GXC_ENUM,    // 32 bits, by the names of `family`
    GXC_STRING,  // bytes up to a zero
    GXC_OPEN,    // no byte: opens the group `name`
    GXC_CLOSE    // no byte: closes it
};

struct GXC_Field
{
    GXC_Form form;
    const char* name;
    const char* family;
};

struct GXC_FieldList
{
    const GXC_Field* fields;
    size_t count;
};

// Reads and writes fields in order, one line each.
bool gxc_write_fields(GXC_Writer* writer, GXC_Input* input, const GXC_Field* fields, size_t count);

template <size_t Count> bool gxc_write_fields(GXC_Writer* writer, GXC_Input* input, const GXC_Field (&fields)[Count])
{
    return gxc_write_fields(writer, input, fields, Count);
}

inline bool gxc_write_fields(GXC_Writer* writer, GXC_Input* input, const GXC_FieldList& list)
{
    return gxc_write_fields(writer, input, list.fields, list.count);
}

// The string form of the text that ends at the next zero; of what there is if none comes.
bool gxc_write_string_value(GXC_Writer* writer, GXC_Input* input);

// An element with `count` entries in the array form, then `zeros` entries of value 0. If the block holds fewer,
// those are written that stand in it whole.
bool gxc_write_array(GXC_Writer* writer, GXC_Input* input, const char* name, GXC_Entry entry, uint64_t count,
                     uint64_t zeros);
