// GXC: which family a colour ticket belongs to, by what its colour manager says of it.

#pragma once

#include "orvlog/interface/orvlog.h"

#include <cstdint>

// Asks for the kind of the ticket's space and for the channels of its first definition: kind 0 with one channel
// is 0 (gray), kind 0 with three is 1 (RGB), kind 1 with four is 2 (CMYK). Gives 1 and stores the family, or
// gives 0 when it is none of these or an inquiry fails.
uint32_t gxc_family_of_ticket(const ORVLOG_TicketFunctions* colour_ops, void* ticket, int32_t* out_family);
