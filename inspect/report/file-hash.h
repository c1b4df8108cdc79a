// SHA-256 of files and texts.

#pragma once

#include <array>
#include <cstdint>
#include <istream>
#include <string>
#include <string_view>

namespace orvlog::inspect
{

using Sha256 = std::array<uint8_t, 32>;

Sha256 sha256_of(std::string_view text);
// From where the stream stands to its end, in hexadecimal digits; empty if it can't be read.
std::string sha256_text(std::istream& stream);

}  // namespace orvlog::inspect
