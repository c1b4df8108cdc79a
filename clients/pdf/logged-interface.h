// SPDX-License-Identifier: GPL-2.0-or-later

#pragma once

#include "clients/pdf/job.h"
#include "clients/stream/malloc-allocator.h"
#include "clients/stream/random-identity.h"
#include "clients/stream/temporary-log.h"

#include <memory>
#include <string>

namespace pdf_client
{

// The logger between the painter and a renderer, for the time of one job.
class LoggedInterface
{
public:
    // Null with the reason in `why` if the session can't be had. `prefix` is that of the files of images, if any; a
    // temporary log goes to the present folder.
    static std::unique_ptr<LoggedInterface> create(const JobOptions& options, const std::string& prefix,
                                                   const ORV_Interface* renderer, GIO_Stream* log, std::string& why);
    ~LoggedInterface();
    LoggedInterface(const LoggedInterface&) = delete;
    LoggedInterface& operator=(const LoggedInterface&) = delete;

    void shut_down();
    // Where the log stands until it is merged; null if it goes straight to its place.
    client_stream::TemporaryLog* detour() const
    {
        return detour_.get();
    }
    const ORV_Interface* table() const
    {
        return &table_;
    }
    // Puts a comment of the client's into the log.
    void comment(const std::string& text);

private:
    LoggedInterface() = default;
    void print_comment(const char* format, ...);

    client_stream::MallocAllocator allocator_;
    client_stream::RandomIdentity identity_;
    std::unique_ptr<client_stream::TemporaryLog> detour_;
    ORV_Interface table_{};
    void* session_ = nullptr;
    orvlog_comment_fn_type comment_ = nullptr;
    void* comment_context_ = nullptr;
};

}  // namespace pdf_client
