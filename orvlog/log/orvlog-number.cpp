#include "orvlog/log/orvlog-number.h"

#include <charconv>
#include <cmath>

namespace
{

template <typename Value> uint32_t format_plain(char* to, Value value)
{
    return static_cast<uint32_t>(std::to_chars(to, to + ORVLOG_NUMBER_SIZE, value).ptr - to);
}

// `value` prints by the general form with so many digits; whole numbers below `whole` need no rounding and are
// most of what a log holds.
uint32_t format_real(char* to, double value, int digits, double whole)
{
    if (std::fabs(value) < whole)
    {
        const auto number = static_cast<int64_t>(value);
        if (static_cast<double>(number) == value && (number != 0 || !std::signbit(value)))
            return format_plain(to, number);
    }
    const auto result = std::to_chars(to, to + ORVLOG_NUMBER_SIZE, value, std::chars_format::general, digits);
    return static_cast<uint32_t>(result.ptr - to);
}

}  // namespace

uint32_t orvlog_format_double(char* to, double value)
{
    return format_real(to, value, 17, 9e15);
}

uint32_t orvlog_format_float(char* to, float value)
{
    return format_real(to, static_cast<double>(value), 9, 1e9);
}

uint32_t orvlog_format_uint(char* to, uint32_t value)
{
    return format_plain(to, value);
}

uint32_t orvlog_format_int(char* to, int32_t value)
{
    return format_plain(to, value);
}

uint32_t orvlog_format_hex(char* to, uint32_t value)
{
    if (value == 0)
        return format_plain(to, value);
    to[0] = '0';
    to[1] = 'x';
    return static_cast<uint32_t>(std::to_chars(to + 2, to + ORVLOG_NUMBER_SIZE, value, 16).ptr - to);
}
