#include "clients/session/logged-session.h"

#include "clients/system/system.h"
#include "orvlog/interface/orvlog-session-options.h"
#include "reader/check/files-due.h"

#include <cerrno>
#include <cstdarg>
#include <cstring>
#include <fstream>

namespace orvlog::client_session
{

namespace
{

namespace fs = std::filesystem;

std::string file_of(const std::string& log)
{
    if (log.empty())
        return system::null_device();
    // The job runs in another folder than the present one.
    return log == "-" ? system::output_device() : fs::absolute(log).string();
}

}  // namespace

LoggedSession::LoggedSession(LoggedSessionOptions options)
    : options_(std::move(options)),
      identity_(options_.number ? client_stream::RandomIdentity(*options_.number) : client_stream::RandomIdentity())
{
}

LoggedSession::~LoggedSession()
{
    shut_down();
}

bool LoggedSession::open_log(std::string* why)
{
    const std::string file = file_of(options_.log);
    from_ = fs::current_path();
    beside_ = orvlog::client_stream::files_beside(
        options_.folder_beside.empty() ? file : options_.folder_beside + "/log", options_.image_prefix);
    *why = beside_.trouble;
    if (!why->empty())
        return false;
    log_ = orvlog::client_stream::LogFile::open(file, options_.stream);
    if (log_ != nullptr)
        return true;
    // Only a journal must not be there before.
    const char* ending = errno == EEXIST ? ".journal" : "";
    *why = options_.log + ending + ": " + std::strerror(errno);
    return false;
}

bool LoggedSession::open_detour(std::string* why)
{
    // Images that are kept while a log is coded on the fly would take bits out of its stream.
    if (!options_.via_temporary_log && !(options_.compressed && options_.keeps_images))
        return true;
    detour_ = orvlog::client_stream::TemporaryLog::open(identity_.source());
    if (detour_ == nullptr)
        *why = std::string("the temporary log can't be opened: ") + std::strerror(errno);
    return detour_ != nullptr;
}

bool LoggedSession::begin(const ORV_Interface* renderer, std::string* why)
{
    there_.emplace(beside_.folder);
    *why = there_->error() ? beside_.folder.string() + ": " + there_->error().message() : "";
    if (!why->empty() || !open_detour(why))
        return false;
    ORVLOG_SessionOptions session{};
    session.interface_out = &table_;
    session.interface_in = renderer;
    session.allocator = memory_.allocator();
    session.identity = identity_.source();
    session.log_stream = detour_ != nullptr ? detour_->stream() : log_->stream();
    session.file_prefix = beside_.prefix.empty() ? nullptr : beside_.prefix.c_str();
    session.ticket_functions = options_.ticket_functions;
    session.ticket_serial_functions = options_.ticket_serial_functions;
    session.comment_fn_out = &comment_;
    session.comment_ctx_out = &comment_context_;
    session.compress = options_.compressed && detour_ == nullptr ? 1 : 0;
    session.mode = options_.base_mode ? ORVLOG_MODE_BASE : ORVLOG_MODE_TRANSPARENT;
    session.base_content = options_.base_content ? 1 : 0;
    session.image_dump_flag = options_.image_attributes ? 1 : 0;
    session.name_unknown_families = options_.name_unknown_families ? 1 : 0;
    session.glyph_fixed_format = options_.fixed_glyph_forms ? 1 : 0;
    session.glyph_get_format = options_.glyph_form;
    if (orvlog_create_session_with(&session) != 0)
        session_ = table_.document_start.context;
    else
        *why = options_.log + ": the log can't be begun";
    return has_begun();
}

void LoggedSession::print_comment(const char* format, ...)
{
    va_list args;
    va_start(args, format);
    comment_(comment_context_, format, args);
    va_end(args);
}

void LoggedSession::comment(const std::string& text)
{
    if (has_begun())
        print_comment("%s", text.c_str());
}

void LoggedSession::shut_down()
{
    if (has_begun())
        ORVLOG_DLL_shutdown(session_);
    session_ = nullptr;
}

std::vector<std::string> LoggedSession::close()
{
    std::vector<std::string> lacks;
    if (!has_begun())
        return lacks;
    shut_down();
    finish_log(&lacks);
    there_.reset();
    return lacks;
}

void LoggedSession::finish_log(std::vector<std::string>* lacks)
{
    std::string why;
    if (detour_ != nullptr)
        look_for_files(detour_->name(), lacks);
    const bool merged = detour_ == nullptr || detour_->merge_into(log_->stream(), options_.compressed, &why);
    const bool whole = log_->close();
    log_bytes_ = log_->size();
    if (!whole)
        why = options_.log + ": " + std::strerror(log_->first_error());
    const std::string journal = log_->has_journal() ? ", and its end is in " + options_.log + ".journal" : "";
    if (!whole || !merged)
        lacks->push_back(why + "; the log is incomplete" + journal);
    // Where the program brings the log to its place afterwards, the user knows it by another name.
    const std::string wanted = options_.folder_beside.empty() ? options_.log : "LOG";
    if (!merged)
        lacks->push_back("what was logged can be had by: " + detour_->merge_command(from_, wanted));
    if (whole && detour_ == nullptr)
        look_for_files(from_ / options_.log, lacks);
}

// The logger leaves unsaid what it could not write beside the log.
void LoggedSession::look_for_files(const fs::path& log, std::vector<std::string>* lacks) const
{
    std::error_code none;
    if ((options_.image_prefix.empty() && !options_.keeps_images) || !fs::is_regular_file(log, none))
        return;
    std::ifstream input(log, std::ios::binary);
    const orvlog::reader::FilesLacking lacking = orvlog::reader::find_lacking_files(input, "");
    lacks->insert(lacks->end(), lacking.lines.begin(), lacking.lines.end());
    if (lacking.count > lacking.lines.size())
        lacks->push_back("and as much of " + std::to_string(lacking.count - lacking.lines.size()) + " further files");
}

}  // namespace orvlog::client_session
