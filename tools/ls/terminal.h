// What the standard output is, for who writes lines to it.

#pragma once

#include <cstddef>
#include <string>

namespace orvlog::tool
{

// Whether the standard output is a terminal.
bool is_terminal();
// Its characters in a line, at least 20: those of COLUMNS, or what the terminal says. 0 if it is none or doesn't say.
size_t terminal_width();
// "always", "never", or "auto": on a terminal that isn't dumb, unless NO_COLOR is set to anything.
bool wants_colour(const std::string& when);

}  // namespace orvlog::tool
