// SPDX-License-Identifier: GPL-2.0-or-later

#include "clients/pdf/logged-interface.h"

#include "clients/colour/colour-manager.h"
#include "orvlog/session/orvlog-session-options.h"
#include "orvlog/session/orvlog-session.h"

#include <cerrno>
#include <cstdarg>
#include <cstring>

namespace pdf_client
{

std::unique_ptr<LoggedInterface> LoggedInterface::create(const JobOptions& options, const std::string& prefix,
                                                         const ORV_Interface* renderer, GIO_Stream* log,
                                                         std::string& why)
{
    std::unique_ptr<LoggedInterface> result(new LoggedInterface);
    // Images that are kept while a log is coded on the fly would take bits out of its stream.
    if (options.via_temporary_log || (options.compressed && options.keep_images))
    {
        result->detour_ = client_stream::TemporaryLog::open(result->identity_.source());
        if (result->detour_ == nullptr)
        {
            why = std::string("the temporary log can't be opened: ") + std::strerror(errno);
            return nullptr;
        }
    }
    const bool direct = result->detour_ == nullptr;
    ORVLOG_SessionOptions session{};
    session.interface_out = &result->table_;
    session.interface_in = renderer;
    session.allocator = result->allocator_.allocator();
    session.identity = result->identity_.source();
    session.log_stream = direct ? log : result->detour_->stream();
    session.file_prefix = prefix.empty() ? nullptr : prefix.c_str();
    session.ticket_functions = orvlog::colour::ColourManager::ticket_functions();
    session.ticket_serial_functions = orvlog::colour::ColourManager::ticket_serial_functions();
    session.comment_fn_out = &result->comment_;
    session.comment_ctx_out = &result->comment_context_;
    session.compress = direct && options.compressed ? 1 : 0;
    session.mode = ORVLOG_MODE_TRANSPARENT;
    if (orvlog_create_session_with(&session) == 0)
    {
        why = "the logger can't be started";
        return nullptr;
    }
    result->session_ = result->table_.document_start.context;
    if (options.base_mode)
    {
        const ORVLOG_Params params{};
        ORVLOG_DLL_set_parameters(result->session_, &params);
        auto* session_record = static_cast<ORVLOG_Session*>(result->session_);
        session_record->glyph_fixed_format = options.glyphs == JobOptions::Glyphs::all ? 1 : 0;
        if (options.glyphs == JobOptions::Glyphs::outlines)
        {
            session_record->glyph_get_format = GFI_GDT_PATH;
        }
    }
    return result;
}

LoggedInterface::~LoggedInterface()
{
    shut_down();
}

void LoggedInterface::shut_down()
{
    if (session_ != nullptr)
    {
        ORVLOG_DLL_shutdown(session_);
    }
    session_ = nullptr;
}

void LoggedInterface::print_comment(const char* format, ...)
{
    va_list args;
    va_start(args, format);
    comment_(comment_context_, format, args);
    va_end(args);
}

void LoggedInterface::comment(const std::string& text)
{
    print_comment("%s", text.c_str());
}

}  // namespace pdf_client
