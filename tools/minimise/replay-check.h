// Whether a log can be replayed, found by replaying it on no renderer.

#pragma once

#include <cstdint>
#include <string>

namespace orvlog::tool
{

struct ReplayCheck
{
    bool good = false;
    std::string why;      // if it isn't
    uint64_t failed = 0;  // calls that gave 0
};

// `log` is the plain text of a log that has all its data in it.
ReplayCheck check_replay(const std::string& log);

}  // namespace orvlog::tool
