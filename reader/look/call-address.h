// How a call of a log is named: by its id, or by where its opening tag stands in the log's text.

#pragma once

#include "reader/tree/element.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace orvlog::reader
{

struct CallAddress
{
    enum class Kind
    {
        id,    // of a paint
        line,  // of the log's plain text, from 1, on which the opening tag stands
        byte   // of the opening tag's '<', or of any of the blanks before it on its line; from 0
    };

    Kind kind = Kind::id;
    uint64_t number = 0;

    bool operator==(const CallAddress&) const = default;
};

// Of "123", "line:456" or "byte:7890"; nothing of any other text, of the line 0, and of an id beyond 32 bits.
std::optional<CallAddress> parse_call_address(std::string_view text);

// "123" if the call has an id, else "line:456".
std::string call_address_text(const Element& call);

// "paint 123", "call that begins in line 456": for messages.
std::string describe(const CallAddress& address);

// Whether it is this call. What is no call has no address.
bool is_at(const Element& call, const CallAddress& address);

// The same before the call is a tree, for the event of its opening tag.
bool is_at(const Event& call, const CallAddress& address);

}  // namespace orvlog::reader
