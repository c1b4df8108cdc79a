#include "orvlog/colour/gxc/gxc-fields.h"

#include <cstring>

namespace
{

constexpr size_t kDeepestGroup = 4;

bool write_value(GXC_Writer* writer, GXC_Input* input, const GXC_Field* field)
{
    uint8_t byte = 0;
    uint32_t word = 0;
    float real = 0;
    switch (field->form)
    {
    case GXC_BOOL:
    case GXC_UINT8:
        if (!gxc_read_uint8(input, &byte))
            return false;
        gxc_begin(writer, field->name);
        if (field->form == GXC_BOOL)
            gxc_value_bool(writer, byte == 1);
        else
            gxc_value_uint8(writer, byte);
        break;
    case GXC_UINT32:
    case GXC_ENUM:
        if (!gxc_read_uint32(input, &word))
            return false;
        gxc_begin(writer, field->name);
        if (field->form == GXC_UINT32)
            gxc_value_uint32(writer, word);
        else
            gxc_value_enum(writer, field->family, word);
        break;
    case GXC_FLOAT:
        if (!gxc_read_float(input, &real))
            return false;
        gxc_begin(writer, field->name);
        gxc_value_float(writer, real);
        break;
    default:
        return false;
    }
    gxc_end(writer);
    return true;
}

bool write_string(GXC_Writer* writer, GXC_Input* input, const char* name)
{
    if (gxc_left(input) == 0)
        return false;
    gxc_begin(writer, name);
    const bool whole = gxc_write_string_value(writer, input);
    gxc_end(writer);
    return whole;
}

}  // namespace

const uint8_t* gxc_here(const GXC_Input* input)
{
    return input->data + input->offset;
}

uint64_t gxc_left(const GXC_Input* input)
{
    return input->size - input->offset;
}

bool gxc_skip(GXC_Input* input, uint64_t count)
{
    if (count > gxc_left(input))
        return false;
    input->offset += count;
    return true;
}

bool gxc_read_uint8(GXC_Input* input, uint8_t* value)
{
    if (gxc_left(input) < 1)
        return false;
    *value = *gxc_here(input);
    return gxc_skip(input, 1);
}

bool gxc_read_uint32(GXC_Input* input, uint32_t* value)
{
    if (gxc_left(input) < 4)
        return false;
    const uint8_t* at = gxc_here(input);
    *value = at[0] | static_cast<uint32_t>(at[1]) << 8 | static_cast<uint32_t>(at[2]) << 16 |
             static_cast<uint32_t>(at[3]) << 24;
    return gxc_skip(input, 4);
}

bool gxc_read_float(GXC_Input* input, float* value)
{
    uint32_t bits = 0;
    if (!gxc_read_uint32(input, &bits))
        return false;
    std::memcpy(value, &bits, sizeof *value);
    return true;
}

bool gxc_write_fields(GXC_Writer* writer, GXC_Input* input, const GXC_Field* fields, size_t count)
{
    const char* open[kDeepestGroup] = {};
    size_t depth = 0;
    bool whole = true;
    for (size_t i = 0; i < count && whole; ++i)
    {
        const GXC_Field* field = &fields[i];
        if (field->form == GXC_OPEN)
        {
            gxc_open(writer, field->name);
            open[depth++] = field->name;
        }
        else if (field->form == GXC_CLOSE)
            gxc_close(writer, open[--depth]);
        else if (field->form == GXC_STRING)
            whole = write_string(writer, input, field->name);
        else
            whole = write_value(writer, input, field);
    }
    while (depth != 0)
        gxc_close(writer, open[--depth]);
    return whole;
}

bool gxc_write_string_value(GXC_Writer* writer, GXC_Input* input)
{
    const uint64_t left = gxc_left(input);
    if (left == 0)
        return false;
    const uint8_t* text = gxc_here(input);
    const void* end = std::memchr(text, 0, left);
    const uint64_t length = end != nullptr ? static_cast<uint64_t>(static_cast<const uint8_t*>(end) - text) : left;
    gxc_value_string(writer, reinterpret_cast<const char*>(text), length);
    return gxc_skip(input, end != nullptr ? length + 1 : left) && end != nullptr;
}

bool gxc_write_array(GXC_Writer* writer, GXC_Input* input, const char* name, GXC_Entry entry, uint64_t count,
                     uint64_t zeros)
{
    const uint64_t size = gxc_entry_size(entry);
    const uint64_t there = gxc_left(input) / size;
    const bool whole = count <= there;
    const uint64_t written = whole ? count : there;
    gxc_begin(writer, name);
    gxc_value_array(writer, entry, gxc_here(input), written, whole ? zeros : 0);
    gxc_end(writer);
    return gxc_skip(input, written * size) && whole;
}
