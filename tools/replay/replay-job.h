// A replay: the renderer, the log that it writes, and what is said at its end.

#pragma once

#include "tools/replay/replay-options.h"

namespace orvlog::tool
{

// Gives the exit status.
int run_replay(const ReplayOptions& options);

}  // namespace orvlog::tool
