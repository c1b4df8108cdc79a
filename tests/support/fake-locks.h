// A table of lock operations that counts, and of which each can be told to fail.

#pragma once

#include "holv-core/ger/ger-log.h"

namespace orvlog::test
{

struct FakeLocks
{
    FakeLocks();
    FakeLocks(const FakeLocks&) = delete;
    FakeLocks& operator=(const FakeLocks&) = delete;

    GER_OsServices services;
    int32_t create_result = 5;
    int32_t destroy_result = 5;
    int32_t release_result = 5;
    int32_t take_result = 5;
    int32_t held = 0;
    uint32_t created = 0;
    uint32_t destroyed = 0;
    uint32_t last_timeout = 0;
};

}  // namespace orvlog::test
