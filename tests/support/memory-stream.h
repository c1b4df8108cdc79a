// A stream that keeps what is written to it, counts its operations, and can fail the Nth of them.

#pragma once

#include "holv-core/gio/gio-stream.h"

#include <cstdint>
#include <string>
#include <vector>

namespace orvlog::test
{

class MemoryStream
{
public:
    MemoryStream();
    explicit MemoryStream(std::string content);
    MemoryStream(const MemoryStream&) = delete;
    MemoryStream& operator=(const MemoryStream&) = delete;

    GIO_Stream* get()
    {
        return &handle_;
    }

    const std::string& text() const
    {
        return text_;
    }
    void clear()
    {
        text_.clear();
        position_ = 0;
        flushed_ = 0;
    }
    // How long the text was after each flush that found something new.
    const std::vector<uint64_t>& flush_marks() const
    {
        return flush_marks_;
    }
    // Bytes written and not yet flushed.
    uint64_t unflushed() const
    {
        return text_.size() - flushed_;
    }
    // Length of each single print or write.
    const std::vector<uint64_t>& pieces() const
    {
        return pieces_;
    }

    // Fails operation number n from now (the first is 1) and all others if `and_after`; 0 fails none.
    void fail(uint64_t n, bool and_after = false)
    {
        fail_at_ = n == 0 ? 0 : operations_ + n;
        fail_after_ = and_after;
    }
    // Takes so many bytes in all, then takes fewer than offered.
    void set_room(uint64_t bytes)
    {
        room_ = bytes;
    }

    uint64_t operations() const
    {
        return operations_;
    }
    uint64_t failed() const
    {
        return failed_;
    }
    uint64_t flushes() const
    {
        return flushes_;
    }
    bool closed() const
    {
        return closed_;
    }

private:
    static MemoryStream* of(void* c);
    bool step();
    uint64_t append(const void* data, uint64_t size);

    [[maybe_unused]] uint32_t tag_ = 0;
    GIO_StreamOps ops_;
    GIO_Stream handle_;
    std::string text_;
    std::vector<uint64_t> flush_marks_;
    std::vector<uint64_t> pieces_;
    uint64_t position_ = 0;
    uint64_t flushed_ = 0;
    uint64_t operations_ = 0;
    uint64_t failed_ = 0;
    uint64_t flushes_ = 0;
    uint64_t fail_at_ = 0;
    bool fail_after_ = false;
    uint64_t room_ = UINT64_MAX;
    bool at_end_ = false;
    bool closed_ = false;
};

}  // namespace orvlog::test
