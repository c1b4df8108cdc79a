#include "inspect/c-source/c-text.h"

#include <charconv>
#include <cmath>
#include <vector>

namespace orvlog::inspect
{

namespace
{

constexpr size_t kLine = 100;

bool stands_as_it_is(char c)
{
    return c >= 0x20 && c < 0x7F && c != '"' && c != '\\' && c != '?';
}

// Three digits always, so that no digit behind it is taken for one of its own.
std::string escape(char c)
{
    const auto byte = static_cast<unsigned char>(c);
    if (c == '\n')
        return "\\n";
    if (c == '"' || c == '\\' || c == '?')
        return std::string("\\") + c;
    return {'\\', static_cast<char>('0' + (byte >> 6)), static_cast<char>('0' + ((byte >> 3) & 7)),
            static_cast<char>('0' + (byte & 7))};
}

// A number that reads as a floating one.
template <typename Number> std::string floating(Number value)
{
    if (std::isnan(value))
        return std::signbit(value) ? "-NAN" : "NAN";
    if (std::isinf(value))
        return value < 0 ? "-INFINITY" : "INFINITY";
    char digits[64];
    const std::to_chars_result end = std::to_chars(std::begin(digits), std::end(digits), value);
    return {digits, end.ptr};
}

}  // namespace

std::string c_string(std::string_view text)
{
    std::string literal = "\"";
    size_t on_line = 0;
    for (const char c : text)
    {
        if (on_line >= kLine)
        {
            literal += "\"\n        \"";
            on_line = 0;
        }
        const std::string one = stands_as_it_is(c) ? std::string(1, c) : escape(c);
        literal += one;
        on_line = c == '\n' ? kLine : on_line + one.size();
    }
    return literal + "\"";
}

std::string c_comment(std::string_view text)
{
    constexpr size_t kMost = 200;
    std::string safe;
    for (const char c : text.substr(0, kMost))
        safe += c >= 0x20 && c < 0x7F && c != '*' && c != '\\' && c != '?' ? c : '.';
    return safe + (text.size() > kMost ? "..." : "");
}

std::string c_double(double value)
{
    const std::string digits = floating(value);
    return digits == "-0" ? "-0.0" : digits;
}

std::string c_float(float value)
{
    std::string digits = floating(value);
    if (!std::isfinite(value) || digits == "0")
        return digits;
    if (digits.find_first_of(".e") == std::string::npos)
        digits += ".0";
    return digits + "F";
}

std::string c_uint(uint32_t value)
{
    return std::to_string(value) + (value > INT32_MAX ? "U" : "");
}

std::string c_uint64(uint64_t value)
{
    return std::to_string(value) + (value > INT32_MAX ? "ULL" : "");
}

std::string c_int(int32_t value)
{
    return value == INT32_MIN ? "-2147483647 - 1" : std::to_string(value);
}

std::string c_hex(uint32_t value)
{
    char digits[16];
    const std::to_chars_result end = std::to_chars(std::begin(digits), std::end(digits), value, 16);
    return value == 0 ? "0" : "0x" + std::string(digits, end.ptr);
}

std::string c_enum(const ORVLOG_EnumTable& names, uint32_t value)
{
    return value <= names.max_value ? names.names[value] : c_uint(value);
}

std::string c_flags(const ORVLOG_FlagTable& names, uint32_t value)
{
    std::string text;
    for (const ORVLOG_FlagEntry& one : std::span(names.entries, names.count))
    {
        if (one.value == 0 || (value & one.value) != one.value)
            continue;
        text += (text.empty() ? "" : " | ") + std::string(one.name);
        value &= ~one.value;
    }
    if (value != 0)
        text += (text.empty() ? "" : " | ") + c_hex(value);
    return text.empty() ? "0" : text;
}

std::string c_list(std::span<const std::string> values)
{
    if (values.empty())
        return "{0}";
    std::string text = "{";
    size_t on_line = 0;
    for (const std::string& value : values)
    {
        if (on_line >= kLine)
        {
            text += ",\n        ";
            on_line = 0;
        }
        else if (on_line > 0)
            text += ", ";
        text += value;
        on_line += value.size() + 2;
    }
    return text + "}";
}

std::string c_bytes(std::span<const uint8_t> bytes)
{
    std::vector<std::string> values;
    values.reserve(bytes.size());
    for (const uint8_t byte : bytes)
        values.push_back(std::to_string(byte));
    return c_list(values);
}

CFields& CFields::add(std::string_view name, const std::string& value)
{
    if (value == "0" || value == "NULL" || value == "{0}")
        return *this;
    text_ += text_.empty() ? "." : ", .";
    text_.append(name).append(" = ").append(value);
    return *this;
}

std::string CFields::text() const
{
    return "{" + list() + "}";
}

std::string CFields::list() const
{
    return text_.empty() ? "0" : text_;
}

}  // namespace orvlog::inspect
