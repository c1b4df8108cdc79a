#include "orvlog/colour/orvlog-colour-ticket.h"

#include "holv-core/gmm/gmm-typed.h"
#include "orvlog/colour/gxc/gxc-family.h"
#include "orvlog/colour/gxc/gxc-ticket.h"
#include "orvlog/colour/orvlog-ticket-stream.h"
#include "orvlog/log/orvlog-attributes.h"
#include "orvlog/log/orvlog-scope.h"

namespace
{

constexpr int32_t kNoFamily = -1;

const ORVLOG_TicketEntry* find_entry(const ORVLOG_Session* session, uint32_t key)
{
    const ORVLOG_TicketEntry* entry = session->logged_tickets;
    while (entry != nullptr && (entry->key != key || entry->id == 0))
        entry = entry->next;
    return entry;
}

// The new ticket's id, or 0 if it cannot be remembered.
uint32_t add_entry(ORVLOG_Session* session, uint32_t key)
{
    GMM_Allocator* allocator = session->allocator;
    auto* entry = gmm_alloc_record<ORVLOG_TicketEntry>(allocator);
    if (entry == nullptr)
        return 0;
    const uint32_t latest = session->logged_tickets != nullptr ? session->logged_tickets->id : 0;
    *entry = {session->logged_tickets, key, latest + 1};
    session->logged_tickets = entry;
    return entry->id;
}

int32_t without_family(ORVLOG_Session* session)
{
    if (session->name_unknown_families == 0)
        return kNoFamily;
    orvlog_writer_warn(&session->writer, "GCM_ColorTicket of an unknown family.");
    return GXC_FAMILY_UNKNOWN;
}

// The text goes to the log's stream as plain bytes, even into a coded log: readers of the log rely on it.
void write_content(ORVLOG_Session* session, void* ticket)
{
    ORVLOG_TicketStream memory;
    int32_t family = kNoFamily;
    orvlog_ticket_stream_open(&memory, session->allocator);
    if (session->ticket_serial_functions->serialise != nullptr)
        session->ticket_serial_functions->serialise(ticket, &memory.stream, 1, 0);
    if (gxc_family_of_ticket(session->ticket_functions, ticket, &family) == 0)
        family = without_family(session);
    gxc_deserialise_ticket(session->allocator, &memory.stream, family, orvlog_writer_stream(&session->writer),
                           orvlog_writer_indent(orvlog_writer_depth(&session->writer)));
    orvlog_ticket_stream_close(&memory);
}

// Without a key a ticket cannot be known again, and is written in full each time.
bool key_of_ticket(const ORVLOG_Session* session, void* ticket, uint32_t* key)
{
    const ORVLOG_TicketFunctions* functions = session->ticket_functions;
    return functions->key != nullptr && functions->key(ticket, key) != 0;
}

}  // namespace

void ORVLOG_DumpColorTicket(ORVLOG_Session* session, void* ticket)
{
    if (ticket == nullptr || session->ticket_serial_functions == nullptr || session->ticket_functions == nullptr)
        return;
    ORVLOG_Writer* writer = &session->writer;
    uint32_t key = 0;
    const bool has_key = key_of_ticket(session, ticket, &key);
    const ORVLOG_TicketEntry* known = has_key ? find_entry(session, key) : nullptr;
    const uint32_t new_id = known == nullptr && has_key ? add_entry(session, key) : 0;
    orvlog_writer_begin_element(writer, "GCM_ColorTicket");
    orvlog_attr_uint(writer, "id", known != nullptr ? known->id : new_id);
    const ORVLOG_Content content(writer, "GCM_ColorTicket");
    if (known == nullptr)
        write_content(session, ticket);
}

void ORVLOG_FreeTicketList(ORVLOG_Session* session)
{
    GMM_Allocator* allocator = session->allocator;
    while (session->logged_tickets != nullptr)
    {
        ORVLOG_TicketEntry* entry = session->logged_tickets;
        session->logged_tickets = entry->next;
        allocator->gmm_Free(allocator, entry);
    }
}
