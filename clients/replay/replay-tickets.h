// The colour tickets of a log, made again from their text, and the tables by which a logger looks at them.

#pragma once

#include "orvlog/interface/orvlog.h"
#include "reader/tree/element.h"

#include <cstdint>
#include <map>
#include <memory>
#include <vector>

namespace orvlog::replay
{

class ReplayTickets
{
public:
    ReplayTickets();
    ~ReplayTickets();
    ReplayTickets(const ReplayTickets&) = delete;
    ReplayTickets& operator=(const ReplayTickets&) = delete;

    // The ticket that a call brings, by its element GCM_ColorTicket; null if it brings none. Lives as long as this.
    void* ticket(const reader::Element& call);

    // Tickets whose text was damaged.
    uint64_t damaged() const
    {
        return damaged_;
    }

    static const ORVLOG_TicketFunctions* functions();
    static const ORVLOG_TicketSerialFunctions* serial_functions();

private:
    struct Ticket;

    std::vector<std::unique_ptr<Ticket>> tickets_;
    std::map<uint32_t, Ticket*> by_id_;
    uint64_t damaged_ = 0;
};

}  // namespace orvlog::replay
