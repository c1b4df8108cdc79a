// Ranges of pages and ids as command lines tell them.

#pragma once

#include <cstdint>
#include <string>

namespace orvlog::command_line
{

// Both ends belong to it.
struct NumberRange
{
    uint32_t first = 0;
    uint32_t last = UINT32_MAX;

    bool holds(uint32_t number) const
    {
        return first <= number && number <= last;
    }
};

// "3", "3-7", "3-" (from 3 on), "-7" (up to 7). Pages count from 1, ids from 0; neither is above 4294967295. Nothing,
// or one phrase that says what is wrong; then the range is left as it is.
std::string read_pages(const std::string& text, NumberRange* pages);
std::string read_ids(const std::string& text, NumberRange* ids);

// The same as a check of an option's value.
std::string check_pages(const std::string& text);
std::string check_ids(const std::string& text);

}  // namespace orvlog::command_line
