#include "tests/reader/tickets/dump-ticket.h"

#include "orvlog/colour/gxc/gxc-ticket.h"
#include "tests/support/memory-stream.h"
#include "tests/support/test-allocator.h"
#include "tests/support/ticket-bytes.h"

namespace orvlog::test
{

std::string dump_ticket(const std::vector<uint8_t>& bytes, int32_t family, const std::string& prefix)
{
    const uint8_t nothing = 0;
    LentStream input(bytes.empty() ? &nothing : bytes.data(), bytes.size());
    TestAllocator allocator;
    MemoryStream log;
    gxc_deserialise_ticket(allocator.get(), input.get(), family, log.get(), prefix.c_str());
    return log.text();
}

std::string dump_again(const reader::TicketReading& reading)
{
    return dump_ticket(reading.bytes, reading.family, reading.line_prefix);
}

}  // namespace orvlog::test
