// What the clips of a call let through, as a picture.

#pragma once

#include "inspect/history/call-state.h"
#include "tools/shared/log-again.h"

#include <string>
#include <vector>

namespace orvlog::tool
{

struct ClipDrawing
{
    std::string log;
    std::vector<std::string> folders;
    std::string file;  // of the picture, a PNG file
    unsigned dpi = 0;  // 0: that of the page
};

// Gives the exit status; says why where there is no picture, as in a build without Cairo.
int draw_clip(const ClipDrawing& options, const orvlog::inspect::CallState& state, LogAgain& log);

}  // namespace orvlog::tool
