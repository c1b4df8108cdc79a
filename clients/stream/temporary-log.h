// A log that goes to a temporary file first, and from there, with the logs of kept images in their places, to where
// it is wanted. The program does this for itself: so it learns of a write that failed, which the logger leaves unsaid,
// and a merge that fails loses nothing.

#pragma once

#include "clients/stream/file-stream.h"
#include "orvlog/interface/orvlog.h"

#include <filesystem>
#include <memory>
#include <string>

namespace orvlog::client_stream
{

class TemporaryLog
{
public:
    // Opens "orvlog-....tmp", named for the session's number, in the present folder. Null with errno set if it can't be
    // opened.
    static std::unique_ptr<TemporaryLog> open(const ORVLOG_IdentitySource* identity);

    // What the session logs to, uncoded.
    GIO_Stream* stream();
    // The name of the file, without its folder.
    const std::string& name() const
    {
        return name_;
    }
    // The command by which the user merges it into `log` after a failure, for a shell in the folder `from`.
    std::string merge_command(const std::filesystem::path& from, const std::string& log) const;

    // To be called once, when the session has ended: writes all of it to `target`, coded if asked for. Then the
    // temporary log and the logs of the session's kept images are gone. False when anything failed: all these files
    // are there as they were, and `why` tells what it was, or is empty if it was the target.
    bool merge_into(GIO_Stream* target, bool compressed, std::string* why);

private:
    TemporaryLog(std::unique_ptr<FileStream> file, std::string name, std::filesystem::path folder);

    std::unique_ptr<FileStream> file_;
    std::string name_;
    std::filesystem::path folder_;
};

// The folder in which relative names land, for as long as the object lives.
class PresentFolder
{
public:
    explicit PresentFolder(const std::filesystem::path& folder);
    PresentFolder(const PresentFolder&) = delete;
    PresentFolder& operator=(const PresentFolder&) = delete;
    ~PresentFolder();

    // Why it could not be entered; no error if it was.
    const std::error_code& error() const
    {
        return error_;
    }

private:
    std::filesystem::path back_;
    std::error_code error_;
};

}  // namespace orvlog::client_stream
