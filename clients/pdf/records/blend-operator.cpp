// SPDX-License-Identifier: GPL-2.0-or-later

#include "clients/pdf/records/blend-operator.h"

namespace orvlog::pdf_client
{

GOP_Operator blend_operator(Blend blend, uint32_t mask_mode)
{
    GOP_Operator op{};
    op.op_MaskMode = mask_mode;
    if (blend == Blend::normal)
    {
        op.op_OperatorType = GOP_ROP_PORTER_DUFF;
        op.op_Operator = 3;
        return op;
    }
    if (blend >= Blend::hue)
    {
        op.op_OperatorType = GOP_ROP_PDF_NONSEPARABLE;
        op.op_Operator = static_cast<uint16_t>(static_cast<uint32_t>(blend) - static_cast<uint32_t>(Blend::hue));
    }
    else
    {
        op.op_OperatorType = GOP_ROP_PDF_SEPARABLE;
        op.op_Operator = static_cast<uint16_t>(blend);
    }
    op.op_OperatorHints = GOP_OP_HINT_NEEDS_BACKGROUND;
    return op;
}

}  // namespace orvlog::pdf_client
