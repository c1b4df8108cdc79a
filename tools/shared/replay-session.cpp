#include "tools/shared/replay-session.h"

#include "clients/stream/files-beside.h"
#include "orvlog/session/orvlog-session-options.h"
#include "orvlog/session/orvlog-session.h"
#include "reader/check/files-due.h"

#include <cerrno>
#include <cstdarg>
#include <cstring>
#include <fstream>

namespace tool
{

namespace
{

namespace fs = std::filesystem;

std::string name_of(const std::string& log)
{
    return log.empty() ? "/dev/null" : log == "-" ? "/dev/stdout" : log;
}

}  // namespace

ReplaySession::~ReplaySession()
{
    if (session_ != nullptr)
        ORVLOG_DLL_shutdown(session_);
}

bool ReplaySession::open_streams(std::string* why)
{
    const std::string name = name_of(options_.log);
    from_ = fs::current_path();
    const client_stream::FilesBeside beside = client_stream::files_beside(name, options_.image_prefix);
    *why = beside.trouble;
    if (!why->empty())
        return false;
    prefix_ = beside.prefix;
    log_ = client_stream::FileStream::open(name, name.starts_with("/dev/") ? "wb" : "w+b");
    *why = log_ == nullptr ? options_.log + ": " + std::strerror(errno) : "";
    if (log_ == nullptr)
        return false;
    there_.emplace(beside.folder);
    *why = there_->error() ? beside.folder.string() + ": " + there_->error().message() : "";
    // Images that are kept while a log is coded on the fly would take bits out of its stream.
    const bool detour = options_.via_temporary_log || (options_.compressed && options_.keeps_images);
    if (!why->empty() || !detour)
        return why->empty();
    detour_ = client_stream::TemporaryLog::open(identity_.source());
    *why = detour_ == nullptr ? std::string("the temporary log can't be opened: ") + std::strerror(errno) : "";
    return detour_ != nullptr;
}

bool ReplaySession::open(const ORV_Interface* renderer, std::string* why)
{
    if (!open_streams(why))
        return false;
    ORVLOG_SessionOptions session{};
    session.interface_out = &table_;
    session.interface_in = renderer;
    session.allocator = memory_.allocator();
    session.identity = identity_.source();
    session.log_stream = detour_ != nullptr ? detour_->stream() : log_->stream();
    session.file_prefix = prefix_.empty() ? nullptr : prefix_.c_str();
    session.ticket_functions = orvlog::replay::ReplayTickets::functions();
    session.ticket_serial_functions = orvlog::replay::ReplayTickets::serial_functions();
    session.comment_fn_out = &comment_;
    session.comment_ctx_out = &comment_context_;
    session.compress = options_.compressed && detour_ == nullptr ? 1 : 0;
    session.mode = kind_.base_mode ? ORVLOG_MODE_BASE : ORVLOG_MODE_TRANSPARENT;
    *why = options_.log + ": the log cannot be begun";
    if (orvlog_create_session_with(&session) == 0)
        return false;
    session_ = table_.document_start.context;
    const ORVLOG_Params base{};
    if (kind_.base_content && !kind_.base_mode)
        ORVLOG_DLL_set_parameters(session_, &base);
    auto* inside = static_cast<ORVLOG_Session*>(session_);
    inside->glyph_fixed_format = kind_.fixed_formats ? 1 : 0;
    inside->glyph_get_format = kind_.glyph_get_type;
    inside->image.image_dump_flag = kind_.image_attributes ? 1 : 0;
    return true;
}

void ReplaySession::print_comment(const char* format, ...)
{
    va_list args;
    va_start(args, format);
    comment_(comment_context_, format, args);
    va_end(args);
}

void ReplaySession::comment(const std::string& text)
{
    print_comment("%s", text.c_str());
}

std::vector<std::string> ReplaySession::close()
{
    std::vector<std::string> lacks;
    if (session_ == nullptr)
        return lacks;
    ORVLOG_DLL_shutdown(session_);
    session_ = nullptr;
    finish_log(&lacks);
    there_.reset();
    return lacks;
}

void ReplaySession::finish_log(std::vector<std::string>* lacks)
{
    std::string why;
    if (detour_ != nullptr)
        look_for_files(detour_->name(), lacks);
    const bool merged = detour_ == nullptr || detour_->merge_into(log_->stream(), options_.compressed, &why);
    const bool whole = log_->close();
    if (!whole)
        why = options_.log + ": " + std::strerror(log_->first_error());
    if (!whole || !merged)
        lacks->push_back(why + "; the log is incomplete");
    if (!merged)
        lacks->push_back("what was logged can be had by: " + detour_->merge_command(from_, options_.log));
    if (whole && detour_ == nullptr)
        look_for_files(from_ / options_.log, lacks);
}

// The logger leaves unsaid what it could not write beside the log.
void ReplaySession::look_for_files(const fs::path& log, std::vector<std::string>* lacks) const
{
    std::error_code none;
    if ((prefix_.empty() && !options_.keeps_images) || !fs::is_regular_file(log, none))
        return;
    std::ifstream input(log, std::ios::binary);
    const orvlog::reader::FilesLacking lacking = orvlog::reader::find_lacking_files(input, "");
    lacks->insert(lacks->end(), lacking.lines.begin(), lacking.lines.end());
    if (lacking.count > lacking.lines.size())
        lacks->push_back("and as much of " + std::to_string(lacking.count - lacking.lines.size()) + " further files");
}

}  // namespace tool
