// What is to be said of some calls of a log.

#pragma once

#include "inspect/history/clip-entries.h"

#include <cstdint>
#include <functional>
#include <istream>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace orvlog::inspect
{

struct CallDescription
{
    std::string address;  // "17", or "line:456" without an id
    uint64_t line = 0;
    std::string kind;                 // without "ORV_"
    uint32_t page = 0;                // from 1; 0 for the content of a resource
    std::string op;                   // empty for calls that have none
    std::string operand;              // what paints, likewise
    std::optional<GGO_BoxFloat> box;  // what it paints, in pixels, clips left aside
    std::vector<ClipEntry> clips;     // in pixels; in a resource in its own units
};

// Reads the log as far as the last of the calls that begin at these bytes. Calls that aren't there have no description.
std::map<uint64_t, CallDescription> describe_calls(std::istream& log, const std::set<uint64_t>& bytes,
                                                   const std::function<void(uint64_t)>& progress);

}  // namespace orvlog::inspect
