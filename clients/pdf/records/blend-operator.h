// SPDX-License-Identifier: GPL-2.0-or-later
//
// Blend modes as operators.

#pragma once

#include "clients/pdf/content/graphics.h"
#include "orvlog/interface/orv-interface.h"

#include <cstdint>

namespace orvlog::pdf_client
{

// The operator of a blend mode, with a mask mode GOP_MASK_*.
GOP_Operator blend_operator(Blend blend, uint32_t mask_mode);

}  // namespace orvlog::pdf_client
