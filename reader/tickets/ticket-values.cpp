#include "reader/tickets/ticket-values.h"

#include "orvlog/colour/gxc/gxc-names.h"

#include <bit>
#include <charconv>
#include <limits>

namespace orvlog::reader
{

namespace
{

constexpr uint32_t kQuietNan = 0x7FC00000;
constexpr uint32_t kInfinite = 0x7F800000;
constexpr uint32_t kSignBit = 0x80000000;

}  // namespace

std::optional<uint32_t> bool_of_text(std::string_view text)
{
    if (text == "TRUE")
        return 1;
    if (text == "FALSE")
        return 0;
    return {};
}

std::optional<uint32_t> unsigned_of_text(std::string_view text, uint32_t most)
{
    uint32_t value = 0;
    const char* end = text.data() + text.size();
    const auto read = std::from_chars(text.data(), end, value);
    if (read.ec != std::errc() || read.ptr != end || value > most || (text.size() > 1 && text.front() == '0'))
        return {};
    return value;
}

// Among floats that are written alike, the nearest to what is written is written so too: the distance of each from
// it is half a unit of the last decimal at most.
std::optional<uint32_t> float_of_text(std::string_view text)
{
    const uint32_t sign = text.starts_with('-') ? kSignBit : 0;
    const std::string_view size = text.substr(sign != 0 ? 1 : 0);
    if (size == "nan")
        return sign | kQuietNan;
    if (size == "inf")
        return sign | kInfinite;
    float value = 0;
    const char* end = text.data() + text.size();
    const auto read = std::from_chars(text.data(), end, value, std::chars_format::fixed);
    if (read.ec != std::errc() || read.ptr != end)
        return {};
    char again[GXC_FLOAT_TEXT];
    if (std::string_view(again, gxc_format_float(again, value)) != text)
        return {};
    return std::bit_cast<uint32_t>(value);
}

std::optional<uint32_t> named_of_text(const char* family, std::string_view text)
{
    if (text == "(null)")
        return kNamelessValue;
    uint32_t value = 0;
    if (text.find('\0') != text.npos || gxc_value_of_name(family, std::string(text).c_str(), &value) == 0)
        return {};
    return value;
}

std::optional<uint32_t> entry_of_text(GXC_Entry entry, std::string_view text)
{
    switch (entry)
    {
    case GXC_ENTRY_BOOL:
        return bool_of_text(text);
    case GXC_ENTRY_UINT16:
        return unsigned_of_text(text, std::numeric_limits<uint16_t>::max());
    case GXC_ENTRY_FLOAT:
        return float_of_text(text);
    default:
        return unsigned_of_text(text, std::numeric_limits<uint8_t>::max());
    }
}

std::string joined(std::initializer_list<std::string_view> pieces)
{
    std::string text;
    for (const std::string_view piece : pieces)
        text += piece;
    return text;
}

void append_bytes(std::vector<uint8_t>& bytes, uint32_t value, uint64_t size)
{
    for (; size != 0; --size, value >>= 8)
        bytes.push_back(static_cast<uint8_t>(value));
}

}  // namespace orvlog::reader
