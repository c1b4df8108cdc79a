// Values in the text of a colour ticket, taken only as they are written: no blanks, no signs or zeros too many, six
// decimals to a float.

#pragma once

#include "orvlog/colour/gxc/gxc-writer.h"

#include <cstdint>
#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace orvlog::reader
{

// Values stand as the bits that a ticket holds them by.
std::optional<uint32_t> bool_of_text(std::string_view text);
std::optional<uint32_t> unsigned_of_text(std::string_view text, uint32_t most);
std::optional<uint32_t> float_of_text(std::string_view text);

// A name of a family of GXC names; 4294967295 for "(null)".
constexpr uint32_t kNamelessValue = 0xFFFFFFFF;
std::optional<uint32_t> named_of_text(const char* family, std::string_view text);

// One entry of an array.
std::optional<uint32_t> entry_of_text(GXC_Entry entry, std::string_view text);

// Pieces of text in a row.
std::string joined(std::initializer_list<std::string_view> pieces);

// Appends the low `size` bytes of a value, the lowest first.
void append_bytes(std::vector<uint8_t>& bytes, uint32_t value, uint64_t size);

}  // namespace orvlog::reader
