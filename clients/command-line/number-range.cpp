#include "clients/command-line/number-range.h"

#include <charconv>
#include <string_view>

namespace orvlog::command_line
{

namespace
{

// A number that begins with a digit and is the whole text.
bool read_number(std::string_view text, uint32_t* number)
{
    const auto read = std::from_chars(text.data(), text.data() + text.size(), *number);
    return !text.empty() && read.ec == std::errc() && read.ptr == text.data() + text.size();
}

std::string read_range(std::string_view text, const std::string& what, uint32_t least, NumberRange* range)
{
    const size_t dash = text.find('-');
    const std::string_view first = text.substr(0, dash);
    const std::string_view last = dash == std::string_view::npos ? first : text.substr(dash + 1);
    NumberRange told = {least, UINT32_MAX};
    const bool good = (first.empty() || read_number(first, &told.first)) &&
                      (last.empty() || read_number(last, &told.last)) && !(first.empty() && last.empty());
    if (!good || told.first < least || told.last < least)
        return what + "s are given as A, A-B, A- or -B, counting from " + std::to_string(least);
    if (told.last < told.first)
        return "the last " + what + " comes before the first";
    *range = told;
    return {};
}

}  // namespace

std::string read_pages(const std::string& text, NumberRange* pages)
{
    return read_range(text, "page", 1, pages);
}

std::string read_ids(const std::string& text, NumberRange* ids)
{
    return read_range(text, "id", 0, ids);
}

std::string check_pages(const std::string& text)
{
    NumberRange pages;
    return read_pages(text, &pages);
}

std::string check_ids(const std::string& text)
{
    NumberRange ids;
    return read_ids(text, &ids);
}

}  // namespace orvlog::command_line
