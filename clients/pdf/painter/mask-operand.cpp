// SPDX-License-Identifier: GPL-2.0-or-later

#include "clients/pdf/painter/mask-operand.h"

#include "clients/pdf/painter/soft-mask.h"
#include "clients/pdf/records/clip.h"

namespace orvlog::pdf_client
{

MaskOperand::MaskOperand(const PaintState& state, bool with_alpha, uint32_t unique_id)
{
    const double alpha = with_alpha ? state.alpha : 1.0;
    if (state.mask != nullptr)
    {
        image = ImageOperand::make(cut_to(state.mask, clip_bounds(state.clip)), alpha, unique_id);
        operand = image != nullptr ? image->get() : nullptr;
    }
    else if (alpha < 1)
    {
        constant = std::make_unique<OperandRecord>(OperandRecord::constant_mask(alpha));
        operand = constant->get(unique_id);
    }
    mode = operand != nullptr ? GOP_MASK_IN : GOP_MASK_NONE;
}

}  // namespace orvlog::pdf_client
