#include "orvlog/colour/gxc/gxc-variable.h"

#include "orvlog/colour/gxc/gxc-layout.h"

namespace
{

bool read_count(GXC_Writer* writer, GXC_Input* input, const char* name, uint32_t* count)
{
    if (!gxc_read_uint32(input, count))
        return false;
    gxc_begin(writer, name);
    gxc_value_uint32(writer, *count);
    gxc_end(writer);
    return true;
}

bool write_spot_colors(GXC_Writer* writer, GXC_Input* input, const char* element, uint64_t key_size)
{
    uint32_t count = 0;
    if (!read_count(writer, input, "NumCols", &count))
        return false;
    for (uint32_t i = 0; i < count; ++i)
    {
        gxc_open(writer, element);
        const bool whole = gxc_write_array(writer, input, "Key", GXC_ENTRY_UINT16, key_size, 0) &&
                           gxc_write_array(writer, input, "Target", GXC_ENTRY_UINT16, GXC_TARGET_SIZE, 0);
        gxc_close(writer, element);
        if (!whole)
            return false;
    }
    return true;
}

// All names stand as attributes of one element, under the same name: readers of the log rely on it.
bool write_named_profiles(GXC_Writer* writer, GXC_Input* input)
{
    uint32_t count = 0;
    if (!read_count(writer, input, "NumNamedProfiles", &count) ||
        !gxc_write_array(writer, input, "UseDeviceValues", GXC_ENTRY_BOOL, count, 0))
        return false;
    bool whole = true;
    gxc_begin(writer, "ProfileNames");
    for (uint32_t i = 0; i < count && whole; ++i)
        whole = gxc_write_string_value(writer, input);
    gxc_end(writer);
    return whole;
}

bool write_tail(GXC_Writer* writer, GXC_Input* input, GXC_Tail tail)
{
    switch (tail)
    {
    case GXC_RGB_SPOT_COLORS:
        return write_spot_colors(writer, input, "RGBSpotColorDefn", GXC_RGB_KEY_SIZE);
    case GXC_CMYK_SPOT_COLORS:
        return write_spot_colors(writer, input, "CMYKSpotColorDefn", GXC_CMYK_KEY_SIZE);
    case GXC_PROFILE_NAMES:
        return write_named_profiles(writer, input);
    case GXC_NO_TAIL:
        break;
    }
    return true;
}

bool write_section(GXC_Writer* writer, GXC_Input* input, uint32_t marker)
{
    const GXC_Section* known = &gxc_sections[marker];
    uint32_t size = 0;
    gxc_open(writer, known->element);
    gxc_begin(writer, "GCM_SerMarker");
    gxc_value_enum(writer, "GCM_SerMarker", marker);
    gxc_end(writer);
    const bool whole = read_count(writer, input, "Size", &size) && gxc_write_fields(writer, input, known->fields) &&
                       write_tail(writer, input, known->tail);
    gxc_close(writer, known->element);
    return whole;
}

bool skip_section(GXC_Input* input)
{
    uint32_t size = 0;
    return gxc_read_uint32(input, &size) && gxc_skip(input, size);
}

}  // namespace

bool gxc_write_variable_data(GXC_Writer* writer, GXC_Input* input)
{
    uint32_t marker = 0;
    gxc_open(writer, "VariableSizedData");
    bool whole = gxc_read_uint32(input, &marker);
    while (whole && marker != GXC_END_VARIABLE_DATA)
    {
        whole = marker > GXC_LAST_MARKER ? skip_section(input) : write_section(writer, input, marker);
        whole = whole && gxc_read_uint32(input, &marker);
    }
    gxc_close(writer, "VariableSizedData");
    return whole;
}
