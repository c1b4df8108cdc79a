// The clip that holds at a call, as a picture.

#pragma once

#include "clients/replay/replay.h"

#include <cairo.h>

#include <cstdint>
#include <functional>
#include <istream>
#include <memory>
#include <string>

namespace orvlog::inspect
{

struct ClipPictureOptions
{
    reader::LogFiles files = reader::LogFiles("-");
    uint64_t call = 0;        // the byte of the call
    uint32_t first_page = 1;  // the call is looked for on these pages; the content of a resource where it is painted
    uint32_t last_page = UINT32_MAX;
    double dpi = 0;
    std::function<void(const std::string& line)> complain;
    std::function<void(uint64_t)> progress;
};

struct ClipPicture
{
    // As large as the page, of CAIRO_FORMAT_A8: what the clips of the call and of the groups around it let through.
    // Null if the call paints on none of the pages, or the page is too large.
    std::shared_ptr<cairo_surface_t> surface;
    uint32_t page = 0;
    bool too_large = false;
    bool repeated = false;  // what the call paints goes to a cell that is repeated, and not to a place on the page
};

// Pages of more pixels have no picture.
constexpr uint64_t kMostClipPixels = uint64_t{1} << 26;

ClipPicture clip_picture(std::istream& log, const replay::LogKind& kind, const ClipPictureOptions& options);

}  // namespace orvlog::inspect
