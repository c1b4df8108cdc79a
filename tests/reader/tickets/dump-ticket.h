// A ticket's bytes as the text that a log holds of it.

#pragma once

#include "reader/tickets/ticket-bytes.h"

#include <cstdint>
#include <string>
#include <vector>

namespace orvlog::test
{

std::string dump_ticket(const std::vector<uint8_t>& bytes, int32_t family, const std::string& prefix);

// The text again of what was read.
std::string dump_again(const reader::TicketReading& reading);

}  // namespace orvlog::test
