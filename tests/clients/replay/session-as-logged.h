// What the options of a session say when a log is played as it was logged, for tests and the fuzzer.

#pragma once

#include "clients/replay/as-logged.h"
#include "clients/replay/replay.h"
#include "orvlog/interface/orvlog-session-options.h"

#include <cstdarg>

namespace orvlog::test
{

// The client's comments go to the logger.
struct Comments
{
    void print(const char* format, ...) const
    {
        va_list args;
        va_start(args, format);
        function(context, format, args);
        va_end(args);
    }

    orvlog_comment_fn_type function = nullptr;
    void* context = nullptr;
};

// All but allocator, identity and streams, which are the caller's; the records are to stay where they are.
inline ORVLOG_SessionOptions session_as_logged(const replay::LogKind& kind, replay::AsLogged* as_logged,
                                               ORV_Interface* table, Comments* comments)
{
    ORVLOG_SessionOptions session{};
    session.interface_out = table;
    session.interface_in = as_logged->renderer.interface();
    session.ticket_functions = replay::ReplayTickets::functions();
    session.ticket_serial_functions = replay::ReplayTickets::serial_functions();
    session.comment_fn_out = &comments->function;
    session.comment_ctx_out = &comments->context;
    session.mode = kind.base_mode ? ORVLOG_MODE_BASE : ORVLOG_MODE_TRANSPARENT;
    session.base_content = kind.base_content ? 1 : 0;
    session.via_temporary_log = kind.script.merged ? 1 : 0;
    session.image_dump_flag = kind.image_attributes ? 1 : 0;
    session.glyph_fixed_format = kind.fixed_formats ? 1 : 0;
    session.glyph_get_format = kind.glyph_get_type;
    return session;
}

}  // namespace orvlog::test
