#include "reader/records/record-parts.h"

#include "reader/tree/values.h"

#include <algorithm>
#include <string>
#include <vector>

namespace orvlog::reader
{

namespace
{

size_t channel_count(const Element& color)
{
    return read_uint(color, "num_chans") & UINT16_MAX;
}

}  // namespace

uint8_t read_byte(const Element& element, std::string_view name)
{
    return static_cast<uint8_t>(read_uint(element, name));
}

uint16_t read_word(const Element& element, std::string_view name)
{
    return static_cast<uint16_t>(read_uint(element, name));
}

size_t count_named(const Element& element, std::string_view name)
{
    size_t count = 0;
    for (const Element& child : Children(element))
        count += child.name == name ? 1 : 0;
    return count;
}

const Element* held_color(const Element* member)
{
    return member != nullptr ? member->child("GBC_Color") : nullptr;
}

size_t channel_bytes(const Element* color)
{
    return color != nullptr ? channel_count(*color) * sizeof(float) : 0;
}

void read_color(const Element& element, GBC_Color* color)
{
    color->bit_depth = read_byte(element, "bit_depth");
    color->num_chans = static_cast<uint16_t>(channel_count(element));
    color->has_alpha = static_cast<uint8_t>(read_bool(element, "has_alpha"));
    color->empty_chans = read_uint(element, "empty_chans");
    std::string values(element.value("alpha"));
    values.append(" ").append(element.value("base_n"));
    size_t to = 0;
    if (color->bit_depth == 32)
    {
        for (const float value : to_floats(values))
            if (to < color->num_chans)
                (&color->channels.as_float[0])[to++] = value;
        return;
    }
    for (const uint32_t value : to_uints(values))
        if (to < color->num_chans)
            (&color->channels.as_uint16[0])[to++] = static_cast<uint16_t>(value);
}

size_t dash_count(const Element* params)
{
    return params != nullptr ? read_uint(*params, "psp_DashCount") & UINT16_MAX : 0;
}

void read_stroke(const Element& element, GPA_PathStrokingParams* params, size_t dashes)
{
    params->psp_Flags = static_cast<uint16_t>(
        (read_enum(element, "psp_Flags.S") & 0xF) | (read_enum(element, "psp_Flags.E") & 0xF) << 4 |
        (read_enum(element, "psp_Flags.J") & 0xF) << 8 | (read_enum(element, "psp_Flags.A") & 0x7) << 12 |
        read_bool(element, "psp_Flags.Z") << 15);
    params->psp_DashCount = static_cast<uint16_t>(dashes);
    params->psp_DashCaps = static_cast<uint8_t>(read_enum(element, "psp_DashCaps"));
    params->psp_StrokeWidth = read_float(element, "psp_StrokeWidth");
    params->psp_MiterLimit = read_float(element, "psp_MiterLimit");
    params->psp_DashStart = read_float(element, "psp_DashStart");
    const Element* holder = element.child("psp_DashLength");
    const Element* buffer = holder != nullptr ? holder->child("BufferFloat") : nullptr;
    if (buffer == nullptr)
        return;
    const std::vector<float> lengths = to_floats(buffer->rows);
    std::copy_n(lengths.begin(), std::min(dashes, lengths.size()), params->psp_DashLength);
}

void read_head(const Element& element, GOP_Operand* head)
{
    head->go_OpType = static_cast<uint8_t>(read_enum(element, "go_OpType"));
    // A flag of 3 goes by the name that stands behind the others.
    const std::string_view flag = element.value("go_ColorInfo.GCM_ColorFlag");
    head->go_ColorInfo = element.has("go_ColorInfo")
                             ? read_byte(element, "go_ColorInfo")
                             : GOP_COLOR_INFO(read_enum(element, "go_ColorInfo.GOP_OperandColorSpace") & 3,
                                              (flag == "GCM_WHITEPOINT_D65" ? 3 : to_enum(flag)) & 3);
    head->go_Count = static_cast<uint16_t>(read_uint(element, "go_Count"));
    head->go_Hints = static_cast<uint16_t>(read_flags(element, "go_Hints"));
    head->go_ColorSpaceFamily = static_cast<uint16_t>(read_enum(element, "go_ColorSpaceFamily"));
}

}  // namespace orvlog::reader
