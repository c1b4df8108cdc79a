// The text of tickets in a redacted log, line by line.

#include "inspect/redact/known-forms.h"
#include "inspect/redact/redacted-text.h"

#include <algorithm>

namespace orvlog::inspect
{

namespace
{

constexpr std::string_view kString = " String=\"";
constexpr std::string_view kStringEnd = "\" />";
constexpr std::string_view kProfile = "<ProfileBuffer>";
constexpr std::string_view kProfileEnd = "</ProfileBuffer>";
constexpr std::string_view kLetters = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz";
constexpr std::string_view kNameCharacters = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789_-";

bool is_name(std::string_view text)
{
    return !text.empty() && kLetters.find(text[0]) != std::string_view::npos &&
           text.find_first_not_of(kNameCharacters) == std::string_view::npos;
}

bool is_word(std::string_view text)
{
    const bool family = text.starts_with("GCM_") || text.starts_with("GNC_");
    return text == "(null)" || is_known_value(text) ||
           (family && text.find_first_not_of("ABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789_") == std::string_view::npos);
}

// <NAME>, </NAME>, <NAME FAMILY="VALUE" />, <MatrixRowfloat1=1.000000 ... />
bool is_plain_line(std::string_view text)
{
    if (!text.starts_with('<') || !text.ends_with('>'))
        return false;
    text = text.substr(1, text.size() - 2);
    if (text.starts_with("MatrixRowfloat"))
        return text.find_first_not_of("MatrixRowfloan0123456789.=+-e /") == std::string_view::npos;
    if (text.starts_with('/'))
        text.remove_prefix(1);
    if (is_name(text) || text == "(null)")
        return true;
    if (!text.ends_with("\" /"))
        return is_name(text.substr(0, text.find(' '))) && text.ends_with(" /") && text.find(' ') + 2 == text.size();
    text.remove_suffix(3);
    const size_t blank = text.find(' ');
    const size_t value = text.find("=\"");
    return blank != std::string_view::npos && value != std::string_view::npos && blank < value &&
           is_name(text.substr(0, blank)) && is_name(text.substr(blank + 1, value - blank - 1)) &&
           is_word(text.substr(value + 2));
}

}  // namespace

void RedactedText::ticket_row(std::string_view line, std::string_view end)
{
    if (line.ends_with('\r'))
        line.remove_suffix(1);
    const size_t indent = in_string_ ? 0 : std::min(line.find_first_not_of(" \t"), line.size());
    put(std::string(line.substr(0, indent)) + ticket_line(line.substr(indent)) + std::string(end));
}

std::string RedactedText::ticket_line(std::string_view text)
{
    if (text == "</GXC_ColorTickets>" || text == "<GXC_ColorTickets>")
    {
        in_string_ = false;
        return std::string(text);
    }
    if (in_string_)
        return ticket_string(text, 0);
    const size_t string = text.find(kString);
    if (string != std::string_view::npos && text.starts_with('<') && is_name(text.substr(1, string - 1)))
    {
        count("strings of tickets");
        return std::string(text.substr(0, string + kString.size())) + ticket_string(text, string + kString.size());
    }
    if (text.starts_with(kProfile))
        return ticket_profile(text);
    if (is_plain_line(text))
        return std::string(text);
    count("other values");
    return masked_text(text);
}

// What is left of a string from `begin` on; it may go on in the next line, and others may follow it.
std::string RedactedText::ticket_string(std::string_view text, size_t begin)
{
    in_string_ = !text.ends_with(kStringEnd) || text.size() < begin + kStringEnd.size();
    const std::string_view last = in_string_ ? "" : kStringEnd;
    std::string_view rest = text.substr(begin, text.size() - begin - last.size());
    const std::string between = '"' + std::string(kString);
    std::string masked;
    for (size_t at = rest.find(between); at != std::string_view::npos; at = rest.find(between))
    {
        masked += masked_colourant(rest.substr(0, at)) + between;
        rest.remove_prefix(at + between.size());
    }
    // A whole name of a process is told, a part of a longer text is not.
    const bool whole = begin > 0 && !in_string_;
    return masked + (whole ? masked_colourant(rest) : masked_text(rest)) + std::string(last);
}

std::string RedactedText::ticket_profile(std::string_view text)
{
    const bool ended = text.ends_with(kProfileEnd);
    const std::string_view digits =
        text.substr(kProfile.size(), text.size() - kProfile.size() - (ended ? kProfileEnd.size() : 0));
    std::vector<uint8_t> bytes;
    const auto digit = [](char c) { return c >= '0' && c <= '9' ? c - '0' : c >= 'A' && c <= 'F' ? c - 'A' + 10 : 0; };
    for (size_t i = 0; i + 1 < digits.size(); i += 2)
        bytes.push_back(static_cast<uint8_t>(digit(digits[i]) << 4 | digit(digits[i + 1])));
    redact_profile(bytes);
    count("profiles");
    std::string result(kProfile);
    for (const uint8_t byte : bytes)
    {
        result += "0123456789ABCDEF"[byte >> 4];
        result += "0123456789ABCDEF"[byte & 15];
    }
    return result + (ended ? std::string(kProfileEnd) : "");
}

}  // namespace orvlog::inspect
