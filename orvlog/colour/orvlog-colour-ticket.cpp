#include "orvlog/colour/orvlog-colour-ticket.h"

void ORVLOG_DumpColorTicket(ORVLOG_Session*, void*) {}

void ORVLOG_FreeTicketList(ORVLOG_Session*) {}
