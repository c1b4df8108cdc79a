// A stream to bring along, over a file of the C library, for reading and writing.

#pragma once

#include "holv-core/gio/gio-stream.h"

#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>

namespace orvlog::client_stream
{

// A stream over a file of the C library. The first failure, a full disk for example, is remembered, and nothing is
// tried after it: the logger doesn't look at failures, so whoever owns the stream asks for it at the end.
class FileStream
{
public:
    // `mode` as for fopen. Null with errno set if the file can't be opened.
    static std::unique_ptr<FileStream> open(const std::string& file_name, const char* mode);
    ~FileStream();
    FileStream(const FileStream&) = delete;
    FileStream& operator=(const FileStream&) = delete;

    GIO_Stream* stream();
    // Flushes and closes. False if this or anything before failed.
    bool close();
    // errno of the first failure; 0 if there was none.
    int first_error() const;
    // Bytes in the file, as far as written; -1 if that can't be told.
    int64_t size() const;

    struct Operations;

private:
    FileStream(std::FILE* file, std::string file_name);
    void note_failure();

    std::FILE* file_;
    std::string file_name_;
    GIO_Stream stream_{};
    int first_error_ = 0;
    int64_t final_size_ = -1;
};

}  // namespace orvlog::client_stream
