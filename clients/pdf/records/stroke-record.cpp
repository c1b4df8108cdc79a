// SPDX-License-Identifier: GPL-2.0-or-later

#include "clients/pdf/records/stroke-record.h"

#include <algorithm>
#include <cstddef>

namespace orvlog::pdf_client
{

StrokeRecord::StrokeRecord(const StrokeStyle& style)
{
    const size_t dashes = std::min<size_t>(style.dashes.size(), 65535);
    block_.resize(std::max(sizeof(GPA_PathStrokingParams),
                           offsetof(GPA_PathStrokingParams, psp_DashLength) + dashes * sizeof(float)));
    GPA_PathStrokingParams* params = record_in<GPA_PathStrokingParams>(block_);
    params->psp_Flags = static_cast<uint16_t>(style.cap | (style.cap << 4) | (style.join << 8) |
                                              ((style.adjust ? GPA_ADJUST_PS : GPA_ADJUST_NONE) << 12));
    params->psp_DashCount = static_cast<uint16_t>(dashes);
    params->psp_DashCaps = style.cap;
    params->psp_StrokeWidth = static_cast<float>(style.width);
    params->psp_MiterLimit = static_cast<float>(style.miter_limit);
    params->psp_DashStart = static_cast<float>(style.dash_start);
    float* lengths = part_in<float>(block_, offsetof(GPA_PathStrokingParams, psp_DashLength));
    for (size_t i = 0; i < dashes; ++i)
        lengths[i] = static_cast<float>(style.dashes[i]);
}

const GPA_PathStrokingParams* StrokeRecord::get() const
{
    return record_in<GPA_PathStrokingParams>(block_);
}

}  // namespace orvlog::pdf_client
