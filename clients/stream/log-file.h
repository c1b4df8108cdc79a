// A log that is being written to one of the streams of orvlog-stream.h, for as long as its object is there.

#pragma once

#include "clients/stream/orvlog-stream.h"

#include <cstdint>
#include <memory>
#include <string>

namespace orvlog::client_stream
{

enum class StreamKind
{
    mapped,
    file,
    zstd
};

class LogFile
{
public:
    // Null with errno set if the file can't be opened.
    static std::unique_ptr<LogFile> open(const std::string& file_name, StreamKind kind);
    ~LogFile();
    LogFile(const LogFile&) = delete;
    LogFile& operator=(const LogFile&) = delete;

    GIO_Stream* stream();
    // False if this or anything before failed.
    bool close();

    // What follows is told once the log is closed. errno of the first failure; 0 if there was none.
    int first_error() const;
    // Bytes that the log takes.
    int64_t size() const;
    // The end of the text had to be left in the journal beside the log.
    bool has_journal() const;

private:
    explicit LogFile(GIO_Stream* stream);

    GIO_Stream* stream_;
    ORVLOG_StreamReport report_{};
};

}  // namespace orvlog::client_stream
