// How colour tickets reach the log: in full once, and by their id afterwards.

#pragma once

#include "orvlog/session/orvlog-session.h"

#include <cstdint>

// A ticket that stands in the log; the session's list has the newest first.
struct ORVLOG_TicketEntry
{
    ORVLOG_TicketEntry* next;
    uint32_t key;  // the colour manager's number
    uint32_t id;   // the log's number, from 1 on
};

// The GCM_ColorTicket element; nothing when the ticket is null or the client has no colour manager. A ticket that
// cannot be remembered has the id 0 and is written in full each time.
void ORVLOG_DumpColorTicket(ORVLOG_Session* session, void* ticket);

// Forgets all tickets of the session.
void ORVLOG_FreeTicketList(ORVLOG_Session* session);
