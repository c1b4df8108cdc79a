#include "clients/replay/replay-tickets.h"

#include "reader/tickets/ticket-bytes.h"
#include "reader/tree/values.h"

#include <cstring>

namespace orvlog::replay
{

namespace
{

// By the number of a ticket's family: the kind of its space, and its channels.
constexpr struct
{
    uint32_t kind;
    uint8_t channels;
} kFamilies[] = {{GCM_CST_ADDITIVE, 1}, {GCM_CST_ADDITIVE, 3}, {GCM_CST_SUBTRACTIVE, 4}};

}  // namespace

struct ReplayTickets::Ticket
{
    uint32_t key = 0;  // 0: it has none
    reader::TicketReading reading;
    uint32_t kind = GCM_CST_OTHER;
    uint8_t channels = 3;
    GCM_Csd first{};
    const GCM_Csd* list[2] = {};
};

namespace
{

// Tickets are given to the functions as plain pointers to this.
template <typename Ticket> Ticket* of(void* ticket)
{
    return static_cast<Ticket*>(ticket);
}

}  // namespace

ReplayTickets::ReplayTickets() = default;
ReplayTickets::~ReplayTickets() = default;

void* ReplayTickets::ticket(const reader::Element& call)
{
    const reader::Element* element = call.child("GCM_ColorTicket");
    if (element == nullptr)
        return nullptr;
    const uint32_t id = reader::read_uint(*element, "id");
    const auto known = by_id_.find(id);
    if (id != 0 && known != by_id_.end())
        return known->second;
    auto ticket = std::make_unique<Ticket>();
    ticket->key = id;
    const reader::Element* text = element->child("GXC_ColorTickets");
    if (text != nullptr)
        ticket->reading = reader::read_ticket_text(text->rows);
    const reader::TicketEnding ending = ticket->reading.ending;
    if (text == nullptr || ending == reader::TicketEnding::cut || ending == reader::TicketEnding::damaged)
        ++damaged_;
    if (!ticket->reading.definitions.empty())
        ticket->channels = ticket->reading.definitions.front().channels;
    const int32_t family = ticket->reading.family;
    if (family >= 0 && family < 3)
    {
        ticket->kind = kFamilies[family].kind;
        ticket->channels = kFamilies[family].channels;
    }
    ticket->first.csd_Type = GCM_CSDTYPE_NONCOLORIMETRIC;
    ticket->first.csd_NumBaseChans = ticket->channels;
    ticket->list[0] = &ticket->first;
    Ticket* made = tickets_.emplace_back(std::move(ticket)).get();
    if (id != 0)
        by_id_[id] = made;
    return made;
}

const ORVLOG_TicketFunctions* ReplayTickets::functions()
{
    static const ORVLOG_TicketFunctions functions = []
    {
        ORVLOG_TicketFunctions f = {};
        f.retain = [](void*) -> uint32_t { return 1; };
        f.release = [](void*) -> uint32_t { return 1; };
        f.query = [](void* ticket, void* ticket_space, void* ticket_render) -> uint32_t
        {
            const Ticket* t = of<Ticket>(ticket);
            const uint32_t space[5] = {t->kind, 8, 0, t->channels, t->key};
            const uint32_t render[4] = {t->key, 0, 0, 0};
            std::memcpy(ticket_space, space, sizeof space);
            std::memcpy(ticket_render, render, sizeof render);
            return 1;
        };
        f.csd_list = [](void* ticket, const GCM_Csd* const** list, uintptr_t, uintptr_t) -> uint32_t
        {
            *list = of<Ticket>(ticket)->list;
            return 1;
        };
        f.key = [](void* ticket, uint32_t* key) -> uint32_t
        {
            *key = of<Ticket>(ticket)->key;
            return *key != 0 ? 1 : 0;
        };
        return f;
    }();
    return &functions;
}

const ORVLOG_TicketSerialFunctions* ReplayTickets::serial_functions()
{
    static const ORVLOG_TicketSerialFunctions functions = []
    {
        ORVLOG_TicketSerialFunctions f = {};
        f.serialise = [](void* ticket, GIO_Stream* stream, uintptr_t, uintptr_t) -> uint32_t
        {
            const std::vector<uint8_t>& bytes = of<Ticket>(ticket)->reading.bytes;
            if (stream->ops->gio_Write(bytes.data(), 1, bytes.size(), stream->instance) != bytes.size())
                return 0;
            const bool cut =
                bytes.size() <= INT32_MAX &&
                stream->ops->gio_Seek(stream->instance, static_cast<int32_t>(bytes.size()), GIO_SEEK_SET) == 0;
            return cut ? 1 : 0;
        };
        return f;
    }();
    return &functions;
}

}  // namespace orvlog::replay
