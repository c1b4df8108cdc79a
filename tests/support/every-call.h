// A job that makes every call of the interface, with arguments that reach every record. One list of steps
// serves the sweeps and whoever else needs a whole job: a new call enters them all by a step here.

#pragma once

#include "orvlog/interface/orvlog.h"
#include "tests/support/fake-font-engine.h"
#include "tests/support/fake-tickets.h"

#include <cstdint>
#include <vector>

namespace orvlog::test
{

class EveryCall
{
public:
    EveryCall();
    EveryCall(const EveryCall&) = delete;
    EveryCall& operator=(const EveryCall&) = delete;

    // Runs the job on a table that a session gave. A start call that fails is taken as a client takes it: what
    // hangs on it is left out. Gives the number of calls made.
    uint32_t run(ORV_Interface* orv);

    // Results of the calls, in order.
    const std::vector<uint32_t>& results() const
    {
        return results_;
    }
    const ORVLOG_TicketFunctions* ticket_functions() const
    {
        return tickets_.functions();
    }
    const ORVLOG_TicketSerialFunctions* ticket_serial_functions() const
    {
        return tickets_.serial();
    }
    FakeTickets& tickets()
    {
        return tickets_;
    }
    // References on the tickets of the job that have not been given back.
    int32_t references() const
    {
        return ticket_.references + other_ticket_.references;
    }

private:
    void draw(ORV_DrawingInterface* drawing, uint32_t resource_id);
    void start_group(ORV_DrawingInterface* drawing, const GFI_FontEngineTable* engine, void* ticket);
    uint32_t note(uint32_t result);

    FakeTickets tickets_;
    FakeTickets::Ticket ticket_;
    FakeTickets::Ticket other_ticket_;
    FakeFontEngine document_engine_;
    FakeFontEngine drawing_engine_;
    FakeFontEngine group_engine_;
    std::vector<uint32_t> results_;
};

}  // namespace orvlog::test
