// An HTTP client that follows a script: it serves one content, writes its calls down, and fails where told.

#pragma once

#include "holv-core/gio/gio-http.h"

#include <cstdint>
#include <string>
#include <vector>

namespace orvlog::test
{

// Sets itself as the HTTP client while it lives. One at a time.
class ScriptedHttp
{
public:
    explicit ScriptedHttp(std::string content);
    ScriptedHttp(const ScriptedHttp&) = delete;
    ScriptedHttp& operator=(const ScriptedHttp&) = delete;
    ~ScriptedHttp();

    // At most so many bytes for each read.
    void serve_in_pieces_of(uint32_t size)
    {
        piece_ = size;
    }
    // Call number n from now (the first is 1) fails.
    void fail(uint64_t n)
    {
        fail_at_ = calls_.size() + n;
    }
    // Reads claim one byte more than was asked for.
    void claim_too_much()
    {
        claims_too_much_ = true;
    }

    // "open Kelvo", "url http://h/x", "read 10", "seek 5 1", "close request", "close session".
    const std::vector<std::string>& calls() const
    {
        return calls_;
    }
    void forget_calls()
    {
        calls_.clear();
    }
    // Sessions and requests that were not closed.
    int open_handles() const
    {
        return open_handles_;
    }

private:
    static ScriptedHttp* current;
    bool step(std::string call);
    int32_t read(void* buffer, uint32_t count, uint32_t* length);
    int32_t seek(int32_t distance, uint32_t origin);

    GIO_HttpOps ops_;
    std::string content_;
    int64_t position_ = 0;
    uint32_t piece_ = UINT32_MAX;
    uint64_t fail_at_ = 0;
    bool claims_too_much_ = false;
    int open_handles_ = 0;
    char session_ = 's';
    char request_ = 'r';
    std::vector<std::string> calls_;
};

}  // namespace orvlog::test
