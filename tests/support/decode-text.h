// Brings coded text back.

#pragma once

#include <string>

namespace orvlog::test
{

// The lines that a coded stream holds, from its first byte to its last one. What the end of the stream makes behind
// the last line end is dropped.
std::string decode_lines(const std::string& bits);

}  // namespace orvlog::test
