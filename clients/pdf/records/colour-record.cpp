// SPDX-License-Identifier: GPL-2.0-or-later

#include "clients/pdf/records/colour-record.h"

#include <algorithm>
#include <cstddef>

namespace orvlog::pdf_client
{

Block colour_block(const Colour& colour, double alpha)
{
    const bool has_alpha = alpha >= 0;
    const uint16_t channels = static_cast<uint16_t>(colour.space.channels + (has_alpha ? 1 : 0));
    const size_t size = offsetof(GBC_Color, channels) + channels * sizeof(float);
    Block block(std::max(size, sizeof(GBC_Color)));
    GBC_Color* record = record_in<GBC_Color>(block);
    record->num_chans = channels;
    record->bit_depth = 32;
    record->has_alpha = has_alpha ? 1 : 0;
    float* values = part_in<float>(block, offsetof(GBC_Color, channels));
    if (has_alpha)
        *values++ = static_cast<float>(alpha);
    std::copy_n(colour.value, colour.space.channels, values);
    return block;
}

uint8_t colour_flag(const Colour& colour)
{
    const float* v = colour.value;
    if (colour.space.channels == 1)
        return v[0] == 0 ? GCM_CF_BLACK : GCM_CF_GREY;
    if (colour.space.channels == 3 && v[0] == v[1] && v[1] == v[2])
        return v[0] == 0 ? GCM_CF_BLACK : GCM_CF_GREY;
    if (colour.space.channels == 4 && v[0] == 0 && v[1] == 0 && v[2] == 0)
        return v[3] == 1 ? GCM_CF_BLACK : GCM_CF_GREY;
    return GCM_CF_OTHER;
}

}  // namespace orvlog::pdf_client
