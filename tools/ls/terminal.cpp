#include "tools/ls/terminal.h"

#include "clients/system/system.h"

#include <algorithm>
#include <charconv>
#include <cstdlib>
#include <string_view>

namespace orvlog::tool
{

namespace
{

constexpr size_t kNarrowest = 20;

std::string_view variable(const char* name)
{
    const char* value = std::getenv(name);
    return value != nullptr ? value : "";
}

}  // namespace

bool is_terminal()
{
    return system::is_terminal(system::Stream::output);
}

size_t terminal_width()
{
    if (!is_terminal())
        return 0;
    size_t width = 0;
    const std::string_view told = variable("COLUMNS");
    const auto read = std::from_chars(told.data(), told.data() + told.size(), width);
    const bool good = read.ec == std::errc() && read.ptr == told.data() + told.size() && width > 0;
    if (!good)
        width = system::terminal_width();
    return width > 0 ? std::max(width, kNarrowest) : 0;
}

bool wants_colour(const std::string& when)
{
    if (when != "auto")
        return when == "always";
    return is_terminal() && variable("NO_COLOR").empty() && variable("TERM") != "dumb";
}

}  // namespace orvlog::tool
