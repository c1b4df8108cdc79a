// Rows compressed, as frames or members that may stand one behind the other.

#pragma once

#include "inspect/export/spill.h"

#include <cstdint>
#include <string_view>

namespace orvlog::inspect
{

enum class Compression : uint8_t
{
    none,
    gzip,
    zstd
};

// ".jsonl", ".jsonl.gz", ".jsonl.zst".
std::string_view ending_of(Compression compression);

// Replaces what `rows` holds by the same compressed. Throws std::runtime_error.
void compress(Spill& rows, Compression compression);

}  // namespace orvlog::inspect
