#include "tools/ls/terminal.h"

#include <poll.h>
#include <sys/ioctl.h>
#include <unistd.h>

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
    return isatty(STDOUT_FILENO) != 0;
}

bool is_reader_gone()
{
    pollfd output = {STDOUT_FILENO, 0, 0};
    return poll(&output, 1, 0) > 0 && (output.revents & (POLLERR | POLLHUP)) != 0;
}

size_t terminal_width()
{
    if (!is_terminal())
        return 0;
    size_t width = 0;
    const std::string_view told = variable("COLUMNS");
    const auto read = std::from_chars(told.data(), told.data() + told.size(), width);
    const bool good = read.ec == std::errc() && read.ptr == told.data() + told.size() && width > 0;
    winsize size = {};
    if (!good)
        width = ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 ? size.ws_col : 0;
    return width > 0 ? std::max(width, kNarrowest) : 0;
}

bool wants_colour(const std::string& when)
{
    if (when != "auto")
        return when == "always";
    return is_terminal() && variable("NO_COLOR").empty() && variable("TERM") != "dumb";
}

}  // namespace orvlog::tool
