#include "tools/shared/look.h"

#include "tools/shared/command.h"

#include <cerrno>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <cstring>

namespace orvlog::tool
{

using nlohmann::ordered_json;

int LogInput::fail_to_open() const
{
    return fail(name_ + ": " + source_.why());
}

int LogInput::fail_as_no_log() const
{
    return fail(name_ + ": not a log");
}

std::string number_text(double value)
{
    char text[32];
    const auto end = std::to_chars(text, text + sizeof text, value);
    return {text, end.ptr};
}

std::string box_text(const std::optional<GGO_BoxFloat>& box)
{
    if (!box)
        return "-";
    char text[120];
    // Boxes of numbers that were rounded often lie a little beyond a whole pixel.
    constexpr double kSlack = 1e-6;
    std::snprintf(text, sizeof text, "%.0f,%.0f,%.0f,%.0f", std::floor(box->gbf_MinX + kSlack) + 0.0,
                  std::floor(box->gbf_MinY + kSlack) + 0.0, std::ceil(box->gbf_MaxX - kSlack) + 0.0,
                  std::ceil(box->gbf_MaxY - kSlack) + 0.0);
    return text;
}

ordered_json box_json(const std::optional<GGO_BoxFloat>& box)
{
    if (!box)
        return nullptr;
    return ordered_json::array({box->gbf_MinX, box->gbf_MinY, box->gbf_MaxX, box->gbf_MaxY});
}

std::string json_text(const ordered_json& value, int indent)
{
    return value.dump(indent, ' ', false, ordered_json::error_handler_t::replace);
}

std::string printable(std::string_view text)
{
    constexpr char kDigits[] = "0123456789abcdef";
    std::string shown;
    for (const char c : text)
    {
        const auto byte = static_cast<unsigned char>(c);
        if ((byte >= 0x20 && byte < 0x7F) || byte >= 0xA0)
        {
            shown += c;
            continue;
        }
        shown += "\\x";
        shown += kDigits[byte >> 4];
        shown += kDigits[byte & 15];
    }
    return shown;
}

bool put(std::string_view text)
{
    Progress::make_way_for_output();
    return std::fwrite(text.data(), 1, text.size(), stdout) == text.size();
}

int finish_output(int status)
{
    if (std::fflush(stdout) != 0 || std::ferror(stdout) != 0)
        return fail_to_print();
    return status;
}

}  // namespace orvlog::tool
