// SPDX-License-Identifier: GPL-2.0-or-later
//
// Colours of float channels.

#pragma once

#include "clients/pdf/content/graphics.h"
#include "clients/pdf/records/record-block.h"
#include "orvlog/interface/orv-interface.h"

#include <cstdint>

namespace orvlog::pdf_client
{

// A GBC_Color. An alpha below 0 leaves out the alpha channel.
Block colour_block(const Colour& colour, double alpha);

// The flag of the colour, GCM_CF_*.
uint8_t colour_flag(const Colour& colour);

}  // namespace orvlog::pdf_client
