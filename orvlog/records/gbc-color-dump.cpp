#include "orvlog/records/gbc-color-dump.h"

#include "orvlog/log/orvlog-attributes.h"
#include "orvlog/log/orvlog-scope.h"

namespace
{

constexpr uint8_t kFloatDepth = 32;
constexpr uint32_t kMaskBits = 32;

void dump_float_channels(ORVLOG_Writer* writer, const float* channels, uint32_t alphas, uint32_t count)
{
    if (alphas != 0)
        orvlog_attr_float(writer, "alpha", channels[0]);
    orvlog_attr_float_array(writer, "base_n", channels + alphas, count);
}

void dump_uint16_channels(ORVLOG_Writer* writer, const uint16_t* channels, uint32_t alphas, uint32_t count)
{
    if (alphas != 0)
        orvlog_attr_uint(writer, "alpha", channels[0]);
    orvlog_attr_uint16_array(writer, "base_n", channels + alphas, count);
}

uint32_t mask_of(uint32_t channels)
{
    return channels >= kMaskBits ? UINT32_MAX : (1U << channels) - 1;
}

}  // namespace

void ORVLOG_DumpColor(ORVLOG_Writer* writer, const GBC_Color* color)
{
    if (color == nullptr)
        return;
    const uint32_t alphas = color->has_alpha != 0 && color->num_chans != 0 ? 1 : 0;
    const uint32_t base_channels = color->num_chans - alphas;
    orvlog_writer_begin_element(writer, "GBC_Color");
    orvlog_attr_uint(writer, "bit_depth", color->bit_depth);
    orvlog_attr_uint(writer, "num_chans", color->num_chans);
    orvlog_attr_bool(writer, "has_alpha", color->has_alpha);
    if (color->bit_depth == kFloatDepth)
        dump_float_channels(writer, color->channels.as_float, alphas, base_channels);
    else
        dump_uint16_channels(writer, color->channels.as_uint16, alphas, base_channels);
    orvlog_attr_uint(writer, "empty_chans", color->empty_chans & mask_of(color->num_chans));
    orvlog_writer_self_close(writer);
}

void ORVLOG_DumpNamedColor(ORVLOG_Writer* writer, const char* parent, const char* member, const GBC_Color* color)
{
    if (color == nullptr)
        return;
    const ORVLOG_Member inside(writer, parent, member);
    ORVLOG_DumpColor(writer, color);
}
