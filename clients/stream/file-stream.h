// What a program brings along to open a log: a stream over a file, an allocator over malloc, an identity object.

#pragma once

#include "holv-core/gio/gio-stream.h"
#include "holv-core/gmm/gmm-allocator.h"
#include "orvlog/interface/orvlog.h"

#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>

namespace client_stream
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

// An allocator over malloc and free, for one thread at a time.
class MallocAllocator
{
public:
    MallocAllocator();
    MallocAllocator(const MallocAllocator&) = delete;
    MallocAllocator& operator=(const MallocAllocator&) = delete;

    GMM_Allocator* allocator();
    uint64_t bytes_in_use() const;
    uint64_t peak_bytes() const;

    struct Operations;

private:
    GMM_Allocator record_{};
    uint64_t bytes_ = 0;
    uint64_t peak_ = 0;
};

// Gives a session a random number of 16 bytes.
class RandomIdentity
{
public:
    RandomIdentity();
    RandomIdentity(const RandomIdentity&) = delete;
    RandomIdentity& operator=(const RandomIdentity&) = delete;

    const ORVLOG_IdentitySource* source() const;

private:
    // Behind the word that the library knows stands the number.
    struct Object
    {
        ORVLOG_IdentityObject head;
        uint8_t number[16];
    };

    Object object_{};
    ORVLOG_IdentitySource source_{};
};

}  // namespace client_stream
