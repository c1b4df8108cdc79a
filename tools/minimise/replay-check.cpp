#include "tools/minimise/replay-check.h"

#include "clients/replay/replay.h"
#include "clients/stream/file-stream.h"
#include "clients/stream/malloc-allocator.h"
#include "clients/stream/random-identity.h"
#include "clients/system/system.h"
#include "orvlog/interface/orvlog-session-options.h"

#include <sstream>

namespace orvlog::tool
{

ReplayCheck check_replay(const std::string& log)
{
    ReplayCheck check;
    client_stream::MallocAllocator memory;
    client_stream::RandomIdentity identity;
    const auto stream = client_stream::FileStream::open(system::null_device(), "wb");
    if (stream == nullptr)
    {
        check.why = std::string(system::null_device()) + " can't be opened";
        return check;
    }
    ORV_Interface table{};
    ORVLOG_SessionOptions options{};
    options.interface_out = &table;
    options.allocator = memory.allocator();
    options.identity = identity.source();
    options.log_stream = stream->stream();
    options.ticket_functions = orvlog::replay::ReplayTickets::functions();
    options.ticket_serial_functions = orvlog::replay::ReplayTickets::serial_functions();
    options.mode = ORVLOG_MODE_TRANSPARENT;
    if (orvlog_create_session_with(&options) == 0)
    {
        check.why = "no memory for its session";
        return check;
    }
    orvlog::replay::Outcome outcome;
    {
        orvlog::replay::ReplayTickets tickets;
        orvlog::replay::Options play;
        play.complain = [&check](const std::string& line) { check.why = check.why.empty() ? line : check.why; };
        std::istringstream source(log);
        outcome = orvlog::replay::play(source, &table, tickets, play);
        ORVLOG_DLL_shutdown(table.document_start.context);
    }
    check.failed = outcome.failed;
    check.good = outcome.is_log && !outcome.cut && outcome.damage == 0 && outcome.missing == 0;
    if (!outcome.is_log)
        check.why = "not a log";
    return check;
}

}  // namespace orvlog::tool
