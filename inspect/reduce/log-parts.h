// Parts of a plain log that it can do without.

#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace orvlog::inspect
{

// A stretch of the text, and what comes in its place.
struct Cut
{
    size_t begin = 0;
    size_t end = 0;
    std::string stands;
};

// A number in the text that counts parts.
struct Counter
{
    size_t begin = 0;
    size_t end = 0;
};

struct Part
{
    std::vector<Cut> cuts;
    std::vector<Counter> counters;  // each one less without this part
};

std::vector<Part> find_clips(const std::string& log);
std::vector<Part> find_edges(const std::string& log);
std::vector<Part> find_segments(const std::string& log);
std::vector<Part> find_image_areas(const std::string& log);

std::string without_parts(const std::string& log, const std::vector<Part>& parts, const std::vector<bool>& left_out);

// What is needed of each call to leave it out.
struct CallPart
{
    uint64_t ordinal = 0;
    uint32_t page = 0;            // from 1; 0: none
    bool is_end = false;          // goes with its start
    std::vector<uint64_t> group;  // of a group's start: its own ordinal and those of its ends
};
std::vector<CallPart> find_calls(const std::string& log);

// With `wanted` by ordinal; without those of `dropped`.
std::string with_calls(const std::string& log, const std::vector<bool>& wanted, const std::vector<uint64_t>& dropped);

}  // namespace orvlog::inspect
