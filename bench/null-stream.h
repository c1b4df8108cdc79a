// A stream that takes everything, keeps nothing and counts the bytes.

#pragma once

#include "holv-core/gio/gio-stream.h"

#include <cstdint>
#include <string>

namespace orvlog::bench
{

class NullStream
{
public:
    NullStream();
    NullStream(const NullStream&) = delete;
    NullStream& operator=(const NullStream&) = delete;

    GIO_Stream* get()
    {
        return &handle_;
    }
    uint64_t bytes() const
    {
        return bytes_;
    }
    uint64_t flushes() const
    {
        return flushes_;
    }
    void clear()
    {
        bytes_ = 0;
        flushes_ = 0;
    }
    // Keeps what comes from now on, for a comparison.
    void keep_in(std::string* text)
    {
        text_ = text;
    }

private:
    GIO_StreamOps ops_ = {};
    GIO_Stream handle_;
    uint64_t bytes_ = 0;
    uint64_t flushes_ = 0;
    std::string* text_ = nullptr;
};

}  // namespace orvlog::bench
