// Values as they stand in C source.
//
// What comes from a log is told in such a way that it ends no literal and no comment, whatever bytes it has.

#pragma once

#include "orvlog/names/orvlog-name-tables.h"

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

namespace orvlog::inspect
{

// A string literal, on several lines if the text has several or is long.
std::string c_string(std::string_view text);
// What may stand in a comment: printable ASCII without a star, a slash behind one, a backslash or a question mark.
std::string c_comment(std::string_view text);

// The shortest number that has the same bits.
std::string c_double(double value);
std::string c_float(float value);
std::string c_uint(uint32_t value);
std::string c_uint64(uint64_t value);
std::string c_int(int32_t value);
std::string c_hex(uint32_t value);

// The name of an enumerator, or the number of one that has none.
std::string c_enum(const ORVLOG_EnumTable& names, uint32_t value);
// Names of flags with bars between them, and the rest as a number.
std::string c_flags(const ORVLOG_FlagTable& names, uint32_t value);

// "{1, 2, 3}"; of nothing "{0}". Long lists have several lines.
std::string c_list(std::span<const std::string> values);
std::string c_bytes(std::span<const uint8_t> bytes);

// The fields of an initialiser, by name; zeros and nulls are left out.
class CFields
{
public:
    CFields& add(std::string_view name, const std::string& value);
    // "{.name = value, ...}", or "{0}".
    std::string text() const;
    // The same without the braces; never empty.
    std::string list() const;

private:
    std::string text_;
};

}  // namespace orvlog::inspect
