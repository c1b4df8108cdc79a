// A client's colour manager: tickets are numbers' addresses, references are counted, and each operation can be
// told to fail.

#pragma once

#include "orvlog/interface/orvlog.h"

#include <cstdint>
#include <string>

namespace orvlog::test
{

class FakeTickets
{
public:
    // One at a time: the operations of a ticket find their manager by the ticket.
    struct Ticket
    {
        FakeTickets* owner;
        uint32_t key;
        std::string serialised;
        int32_t references = 0;
    };

    FakeTickets();
    FakeTickets(const FakeTickets&) = delete;
    FakeTickets& operator=(const FakeTickets&) = delete;

    const ORVLOG_TicketFunctions* functions() const
    {
        return &functions_;
    }
    const ORVLOG_TicketSerialFunctions* serial() const
    {
        return &serial_;
    }

    uint32_t retain_result = 1;
    uint32_t release_result = 1;
    uint32_t query_result = 1;
    uint32_t key_result = 1;
    uint32_t serialise_result = 1;
    uint32_t retains = 0;
    uint32_t releases = 0;
    uint32_t queries = 0;
    uint32_t serialised = 0;
    uint32_t calls = 0;  // of all operations
    // First words of the two blocks of a query; the fourth word of the first is 4.
    uint32_t kind = 1;
    // Of the list of definitions, which fails unless told otherwise.
    uint32_t csd_list_result = 0;
    uint8_t base_chans = 0;
    bool has_definition = true;

private:
    ORVLOG_TicketFunctions functions_;
    ORVLOG_TicketSerialFunctions serial_;
    GCM_Csd csd_[1] = {};
    const GCM_Csd* csds_[2] = {};
};

}  // namespace orvlog::test
