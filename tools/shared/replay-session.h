// The logger behind which a job is replayed, and the files that it leaves.

#pragma once

#include "clients/replay/replay.h"
#include "clients/stream/file-stream.h"
#include "clients/stream/malloc-allocator.h"
#include "clients/stream/random-identity.h"
#include "clients/stream/temporary-log.h"

#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace tool
{

struct ReplaySessionOptions
{
    std::string log;  // a path, or "-" for the standard output; without one nothing is kept
    std::string image_prefix;
    bool compressed = false;
    bool via_temporary_log = false;
    bool keeps_images = false;  // the renderer does
};

// From `open` to `close` the present folder is the one where the files beside the log go.
class ReplaySession
{
public:
    ReplaySession(ReplaySessionOptions options, const orvlog::replay::LogKind& kind)
        : options_(std::move(options)), kind_(kind)
    {
    }
    ReplaySession(const ReplaySession&) = delete;
    ReplaySession& operator=(const ReplaySession&) = delete;
    ~ReplaySession();

    // `renderer` may be null. False with the reason in `why`.
    bool open(const ORV_Interface* renderer, std::string* why);
    bool is_open() const
    {
        return session_ != nullptr;
    }
    const ORV_Interface* table() const
    {
        return &table_;
    }
    void comment(const std::string& text);
    // Ends the log. Gives a line for each thing of which not all could be written.
    std::vector<std::string> close();

private:
    bool open_streams(std::string* why);
    void print_comment(const char* format, ...);
    void finish_log(std::vector<std::string>* lacks);
    void look_for_files(const std::filesystem::path& log, std::vector<std::string>* lacks) const;

    ReplaySessionOptions options_;
    orvlog::replay::LogKind kind_;
    client_stream::MallocAllocator memory_;
    client_stream::RandomIdentity identity_;
    std::filesystem::path from_;  // the user's folder
    std::string prefix_;
    std::unique_ptr<client_stream::FileStream> log_;
    std::optional<client_stream::PresentFolder> there_;
    std::unique_ptr<client_stream::TemporaryLog> detour_;
    ORV_Interface table_{};
    void* session_ = nullptr;
    orvlog_comment_fn_type comment_ = nullptr;
    void* comment_context_ = nullptr;
};

}  // namespace tool
