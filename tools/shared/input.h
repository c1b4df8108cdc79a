// What a command reads: a file, the standard input, or a URL.

#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace orvlog::tool
{

// Whether a name is a URL: it starts with "http:" or "file:".
bool is_url(const std::string& name);

// All bytes of `name`, which is a path, "-" for the standard input, or a URL that starts with "http:" or "file:".
// False with one line of reason in `why`.
bool read_input(const std::string& name, std::vector<uint8_t>* bytes, std::string* why);

}  // namespace orvlog::tool
