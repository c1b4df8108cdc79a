// The log reader on foreign text, and the job that it makes of it: events are balanced and in order, records are safe
// to walk for the logger in base mode.

#include "clients/replay/replay.h"
#include "clients/stream/file-stream.h"
#include "clients/stream/malloc-allocator.h"
#include "clients/stream/random-identity.h"
#include "fuzz/fuzz.h"
#include "orvlog/interface/orvlog-session-options.h"
#include "reader/text/log-events.h"

#include <sstream>
#include <string>

using orvlog::fuzz::expect;
using namespace orvlog::reader;

namespace
{

void read_events(const std::string& text, LogForm form)
{
    std::istringstream source(text);
    LogEvents events(source, form);
    uint64_t depth = 0;
    Place last;
    for (Event event; events.next(event);)
    {
        depth += event.kind == EventKind::open ? 1 : 0;
        expect(event.kind != EventKind::close || depth > 0, "an element is closed once");
        depth -= event.kind == EventKind::close ? 1 : 0;
        expect(event.place.byte <= text.size() || events.is_coded(), "each event has a place in the text");
        if (event.kind == EventKind::open)
        {
            expect(event.place.byte >= last.byte && event.place.line >= last.line, "elements come in order");
            last = event.place;
        }
    }
    expect(depth == 0, "each element is closed");
}

void play(const std::string& text)
{
    orvlog::client_stream::MallocAllocator memory;
    orvlog::client_stream::RandomIdentity identity;
    const auto log = orvlog::client_stream::FileStream::open("/dev/null", "wb");
    ORV_Interface table{};
    ORVLOG_SessionOptions options{};
    options.interface_out = &table;
    options.allocator = memory.allocator();
    options.identity = identity.source();
    options.log_stream = log->stream();
    options.ticket_functions = orvlog::replay::ReplayTickets::functions();
    options.ticket_serial_functions = orvlog::replay::ReplayTickets::serial_functions();
    options.mode = ORVLOG_MODE_BASE;
    if (orvlog_create_session_with(&options) == 0)
        return;
    {
        orvlog::replay::ReplayTickets tickets;
        orvlog::replay::Options playing;
        playing.files = orvlog::reader::LogFiles("/nonexistent/log");
        std::istringstream source(text);
        orvlog::replay::play(source, &table, tickets, playing);
        ORVLOG_DLL_shutdown(table.document_start.context);
    }
    expect(memory.bytes_in_use() == 0, "all memory is given back");
}

}  // namespace

int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const std::string text(reinterpret_cast<const char*>(data), size);
    read_events(text, LogForm::log);
    read_events(text, LogForm::fragment);
    play(text);
    return 0;
}
