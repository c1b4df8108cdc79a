// The definitions of colour spaces in the text of a ticket.

#pragma once

#include "reader/tickets/ticket-text.h"

namespace orvlog::reader
{

// The element of all definitions. False where reading stops.
bool read_definitions(TicketText& text, std::vector<TicketDefinition>& definitions);

}  // namespace orvlog::reader
