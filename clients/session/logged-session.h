// A session of the logger for programs: with an allocator, an identity, the stream of the log, a detour by way of a
// temporary log, and a look at what has become of the files when it ends.

#pragma once

#include "clients/stream/files-beside.h"
#include "clients/stream/log-file.h"
#include "clients/stream/malloc-allocator.h"
#include "clients/stream/random-identity.h"
#include "clients/stream/temporary-log.h"
#include "orvlog/interface/orvlog.h"

#include <array>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace orvlog::client_session
{

struct LoggedSessionOptions
{
    std::string log;  // a path, or "-" for the standard output; without one nothing is kept
    orvlog::client_stream::StreamKind stream = orvlog::client_stream::StreamKind::file;
    std::string image_prefix;   // not empty: image data goes to files of that prefix
    std::string folder_beside;  // not empty: what lies beside the log goes there, and not to the log's folder
    bool compressed = false;
    bool via_temporary_log = false;
    bool keeps_images = false;  // the renderer does
    // The number of the session, in the names of the logs of kept images; without one it is made by chance.
    std::optional<std::array<uint8_t, 16>> number;

    bool base_mode = false;     // the root says so
    bool base_content = false;  // base mode, whatever the root says
    // What the logger asks for in base mode.
    bool fixed_glyph_forms = false;
    uint32_t glyph_form = GFI_GDT_BITMAP;  // GFI_GDT_*
    bool image_attributes = false;
    bool name_unknown_families = false;  // of colour tickets

    // Must live until the session ends; may be null.
    const ORVLOG_TicketFunctions* ticket_functions = nullptr;
    const ORVLOG_TicketSerialFunctions* ticket_serial_functions = nullptr;
};

// From `begin` to `close` the present folder is the one where the files beside the log go.
class LoggedSession
{
public:
    explicit LoggedSession(LoggedSessionOptions options);
    LoggedSession(const LoggedSession&) = delete;
    LoggedSession& operator=(const LoggedSession&) = delete;
    // Ends a session that was not closed, and doesn't look at its files.
    ~LoggedSession();

    // First: opens the log. False with the reason in `why`; a log of before then stands as it was.
    bool open_log(std::string* why);
    // Then: begins the session. `renderer` may be null. False with the reason in `why`.
    bool begin(const ORV_Interface* renderer, std::string* why);
    bool has_begun() const
    {
        return session_ != nullptr;
    }
    // To draw with.
    const ORV_Interface* table() const
    {
        return &table_;
    }
    // Puts a comment of the program's into the log.
    void comment(const std::string& text);
    // Ends the log. Gives a line for each thing of which not all could be written.
    std::vector<std::string> close();
    // Of the log when it is closed; -1 before.
    int64_t log_bytes() const
    {
        return log_bytes_;
    }

private:
    bool open_detour(std::string* why);
    void print_comment(const char* format, ...);
    void shut_down();
    void finish_log(std::vector<std::string>* lacks);
    void look_for_files(const std::filesystem::path& log, std::vector<std::string>* lacks) const;

    const LoggedSessionOptions options_;
    orvlog::client_stream::MallocAllocator memory_;
    orvlog::client_stream::RandomIdentity identity_;
    std::filesystem::path from_;  // the user's folder
    orvlog::client_stream::FilesBeside beside_;
    std::unique_ptr<orvlog::client_stream::LogFile> log_;
    std::optional<orvlog::client_stream::PresentFolder> there_;
    std::unique_ptr<orvlog::client_stream::TemporaryLog> detour_;
    ORV_Interface table_{};
    void* session_ = nullptr;
    orvlog_comment_fn_type comment_ = nullptr;
    void* comment_context_ = nullptr;
    int64_t log_bytes_ = -1;
};

}  // namespace orvlog::client_session
