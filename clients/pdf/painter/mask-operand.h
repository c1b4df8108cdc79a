// SPDX-License-Identifier: GPL-2.0-or-later
//
// Operand 2 of a call: a soft mask, a constant alpha, or both.

#pragma once

#include "clients/pdf/content/graphics.h"
#include "clients/pdf/records/image-operand.h"
#include "clients/pdf/records/operand-record.h"

#include <cstdint>
#include <memory>

namespace orvlog::pdf_client
{

// Owns the operand's records. A soft mask is cut to what the clip shows of it.
struct MaskOperand
{
    // `with_alpha`: the state's alpha counts, for it isn't in operand 1.
    MaskOperand(const PaintState& state, bool with_alpha, uint32_t unique_id);

    std::shared_ptr<ImageOperand> image;
    std::unique_ptr<OperandRecord> constant;
    GOP_OperandPointer* operand = nullptr;  // null: nothing masks
    uint32_t mode = GOP_MASK_NONE;          // for the operator, GOP_MASK_*
};

}  // namespace orvlog::pdf_client
