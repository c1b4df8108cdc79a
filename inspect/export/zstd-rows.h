// Rows as frames of Zstandard.

#pragma once

#include "inspect/export/spill.h"

namespace orvlog::inspect
{

// What `rows` holds, compressed. Throws std::runtime_error; always in a build without Zstandard.
Spill to_zstd(Spill& rows);

}  // namespace orvlog::inspect
