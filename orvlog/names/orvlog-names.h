// The tables of names that the log is written by: ORVLOG_JOIN for the list JOIN of enumerations.inc, ORVLOG_PATH_HINTS
// for the list PATH_HINTS of flags.inc. An enumerator that does not stand at its value's place does not compile.

#pragma once

#include "orvlog/interface/orv-interface.h"
#include "orvlog/names/orvlog-name-tables.h"

#include <cstddef>
#include <cstdint>

template <size_t Count> constexpr ORVLOG_EnumTable orvlog_enum_table(const char* const (&names)[Count])
{
    return {.names = names, .max_value = static_cast<uint32_t>(Count - 1)};
}

template <size_t Count> constexpr ORVLOG_FlagTable orvlog_flag_table(const ORVLOG_FlagEntry (&entries)[Count])
{
    return {.entries = entries, .count = static_cast<uint32_t>(Count)};
}

// clang-format off

// The names of each list, by value.
#define ORVLOG_ENUMERATION(list) inline constexpr const char* ORVLOG_##list##_NAMES[] = {
#define ORVLOG_NAME(name) #name,
#define ORVLOG_BORROWED_NAME(name) #name,
#define ORVLOG_END_ENUMERATION };
#include "orvlog/names/enumerations.inc"

#define ORVLOG_ENUMERATION(list) inline constexpr ORVLOG_EnumTable ORVLOG_##list = orvlog_enum_table(ORVLOG_##list##_NAMES);
#define ORVLOG_NAME(name)
#define ORVLOG_BORROWED_NAME(name)
#define ORVLOG_END_ENUMERATION
#include "orvlog/names/enumerations.inc"

// The place of each name, and that its enumerator in the interface has that value.
#define ORVLOG_ENUMERATION(list) namespace orvlog_places_of_##list { enum Place : uint32_t {
#define ORVLOG_NAME(name) name,
#define ORVLOG_BORROWED_NAME(name) name,
#define ORVLOG_END_ENUMERATION }; }
#include "orvlog/names/enumerations.inc"

#define ORVLOG_ENUMERATION(list) namespace orvlog_places_of_##list {
// NOLINTNEXTLINE(bugprone-macro-parentheses): a name behind its scope
#define ORVLOG_NAME(name) static_assert(uint32_t{::name} == name, #name " does not stand at the place of its value");
#define ORVLOG_BORROWED_NAME(name)
#define ORVLOG_END_ENUMERATION }
#include "orvlog/names/enumerations.inc"

// The entries of each set of flags, whose values are the interface's own.
#define ORVLOG_FLAGS(list) inline constexpr ORVLOG_FlagEntry ORVLOG_##list##_ENTRIES[] = {
#define ORVLOG_FLAG(flag) {#flag, flag},
#define ORVLOG_END_FLAGS };
#include "orvlog/names/flags.inc"

#define ORVLOG_FLAGS(list) inline constexpr ORVLOG_FlagTable ORVLOG_##list = orvlog_flag_table(ORVLOG_##list##_ENTRIES);
#define ORVLOG_FLAG(flag)
#define ORVLOG_END_FLAGS
#include "orvlog/names/flags.inc"

// clang-format on
