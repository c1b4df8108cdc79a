// What the names of an enumeration and of a set of flags are for those who write them.

#pragma once

#include <cstdint>

// Names by value, 0 to max_value.
struct ORVLOG_EnumTable
{
    const char* const* names;
    uint32_t max_value;
};

struct ORVLOG_FlagEntry
{
    const char* name;
    uint32_t value;  // may have several bits; an entry of value 0, by custom the first, names the empty set
};

struct ORVLOG_FlagTable
{
    const ORVLOG_FlagEntry* entries;
    uint32_t count;
};
