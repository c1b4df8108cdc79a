// A log in Zstandard frames that begin where pages and calls begin, with an index of these behind them.

#pragma once

#include "reader/text/coded-input.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <istream>

namespace orvlog::inspect
{

struct RepackOptions
{
    int level = 9;  // of Zstandard, 1 to 19
    bool dedupe = false;
    // Takes the bytes of the new log in order; false ends the work.
    std::function<bool(const void* data, size_t size)> write;
    std::function<void(uint64_t)> progress;  // bytes of the file that have been used; may be empty
};

struct RepackOutcome
{
    bool is_log = false;
    bool written = true;
    reader::Ending ending = reader::Ending::whole;
    uint64_t text_bytes = 0;
    uint64_t file_bytes = 0;
    uint64_t damage = 0;  // places
    bool has_pages = false;
    uint64_t repeats = 0;  // of data
};

// Memory goes with the largest call, and with the index.
RepackOutcome repack(std::istream& log, const RepackOptions& options);

}  // namespace orvlog::inspect
