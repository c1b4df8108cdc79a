// What a log may say without telling anything of its job: the logger's own words and numbers.

#pragma once

#include <string_view>

namespace orvlog::inspect
{

// Numbers, truth values, enumerators and flags.
bool is_known_value(std::string_view value);
// An element of a log by the family of its name.
bool is_known_element(std::string_view name);
// Letters, digits, '_' and '.'.
bool is_attribute_name(std::string_view name);
// The text of a comment that is one of the logger's warnings.
bool is_known_warning(std::string_view text);
// Values as they stand in rows.
bool is_number_row(std::string_view row);

}  // namespace orvlog::inspect
