// What tells bytes apart even from those that somebody has made to look the same: the first half of their SHA-256.

#pragma once

#include <nettle/sha2.h>

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

namespace orvlog::inspect
{

class Digest
{
public:
    Digest()
    {
        sha256_init(&state_);
    }
    void add(std::span<const uint8_t> bytes)
    {
        sha256_update(&state_, bytes.size(), bytes.data());
    }
    void add(std::string_view text)
    {
        add({reinterpret_cast<const uint8_t*>(text.data()), text.size()});
    }
    // 32 digits; begins anew.
    std::string take();

private:
    sha256_ctx state_;
};

}  // namespace orvlog::inspect
