// How colour tickets reach the log: in full once, and by their id afterwards.

#pragma once

#include "orvlog/session/orvlog-session.h"

// The GCM_ColorTicket element; nothing when the ticket is null or the client has no serialiser.
void ORVLOG_DumpColorTicket(ORVLOG_Session* session, void* ticket);

// Forgets all tickets of the session.
void ORVLOG_FreeTicketList(ORVLOG_Session* session);
