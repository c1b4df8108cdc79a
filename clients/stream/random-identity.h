// An identity to bring along: a number by chance, or a given one.

#pragma once

#include "orvlog/interface/orvlog.h"

#include <array>
#include <cstdint>

namespace orvlog::client_stream
{

// Gives a session a random number of 16 bytes.
class RandomIdentity
{
public:
    RandomIdentity();
    // This number instead.
    explicit RandomIdentity(const std::array<uint8_t, 16>& number);
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

}  // namespace orvlog::client_stream
