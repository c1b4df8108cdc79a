// A hash of many pieces. It is the same on every machine and in every run; it is no guard against those who look for
// equal ones, so what hashes say is equal is still compared.

#pragma once

#include <cstdint>
#include <cstring>
#include <span>
#include <string_view>

namespace orvlog::inspect
{

class Hash
{
public:
    void add(uint64_t word)
    {
        state_ = (state_ ^ word) * 0x9FB21C651E98DF25U;
        state_ ^= state_ >> 32;
    }
    // Pieces of other lengths differ, so "ab", "c" is not "a", "bc".
    void add(const void* data, size_t size)
    {
        const auto* at = static_cast<const uint8_t*>(data);
        add(size);
        for (; size >= 8; size -= 8, at += 8)
        {
            uint64_t word = 0;
            std::memcpy(&word, at, 8);
            add(word);
        }
        uint64_t rest = 0;
        if (size > 0)
            std::memcpy(&rest, at, size);
        add(rest);
    }
    void add(std::string_view text)
    {
        add(text.data(), text.size());
    }
    uint64_t value() const
    {
        return state_;
    }

private:
    uint64_t state_ = 0x243F6A8885A308D3U;
};

}  // namespace orvlog::inspect
