#include "reader/look/call-address.h"

#include "reader/tree/values.h"

#include <charconv>
#include <limits>

namespace orvlog::reader
{

namespace
{

constexpr std::string_view kLine = "line:";
constexpr std::string_view kByte = "byte:";

}  // namespace

std::optional<CallAddress> parse_call_address(std::string_view text)
{
    CallAddress address;
    if (text.starts_with(kLine))
        address.kind = CallAddress::Kind::line;
    else if (text.starts_with(kByte))
        address.kind = CallAddress::Kind::byte;
    if (address.kind != CallAddress::Kind::id)
        text.remove_prefix(kLine.size());
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), address.number);
    if (error != std::errc() || end != text.data() + text.size())
        return std::nullopt;
    const bool no_line = address.kind == CallAddress::Kind::line && address.number == 0;
    const bool no_id = address.kind == CallAddress::Kind::id && address.number > std::numeric_limits<uint32_t>::max();
    if (no_line || no_id)
        return std::nullopt;
    return address;
}

std::string call_address_text(const Element& call)
{
    if (call.has("id"))
        return std::to_string(read_uint(call, "id"));
    return std::string(kLine) + std::to_string(call.place.line);
}

std::string describe(const CallAddress& address)
{
    const std::string number = std::to_string(address.number);
    switch (address.kind)
    {
    case CallAddress::Kind::line:
        return "call that begins in line " + number;
    case CallAddress::Kind::byte:
        return "call that begins at byte " + number;
    case CallAddress::Kind::id:
        break;
    }
    return "paint " + number;
}

bool is_at(const Element& call, const CallAddress& address)
{
    if (!is_call_name(call.name))
        return false;
    if (address.kind == CallAddress::Kind::line)
        return call.place.line == address.number;
    if (address.kind == CallAddress::Kind::byte)
        return call.place.byte <= address.number && address.number - call.place.byte <= call.indent;
    return call.has("id") && to_uint(call.value("id")) == address.number;
}

bool is_at(const Event& call, const CallAddress& address)
{
    Element element;
    element.name = call.name;
    element.place = call.place;
    element.indent = call.indent;
    element.attributes = call.attributes;
    return is_at(element, address);
}

}  // namespace orvlog::reader
