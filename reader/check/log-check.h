// Whether a log holds together: its numbers, its pairs, its bytes and the files beside it.

#pragma once

#include "reader/text/log-files.h"
#include "reader/tree/element.h"

#include <cstdint>
#include <functional>
#include <istream>
#include <string>

namespace orvlog::reader
{

struct Finding
{
    Place place;
    std::string text;
    bool note = false;  // what a sound log may have, too
};

struct CheckOptions
{
    std::function<void(const Finding&)> on_finding;
    // The files that the log names; without a function they are not looked for.
    std::function<LogFile(const std::string& name, LogFileKind kind)> open_file;
    // Told how many bytes of the log have been used; may be empty.
    std::function<void(uint64_t)> progress;
};

struct CheckOutcome
{
    bool is_log = false;
    uint64_t calls = 0;
    uint64_t errors = 0;
    uint64_t notes = 0;
};

// Findings come in the order in which they are made, each once. Memory goes with what is open at a time, and with
// the longest call.
CheckOutcome check_log(std::istream& log, const CheckOptions& options);

}  // namespace orvlog::reader
