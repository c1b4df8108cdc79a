// The pages of a log as a report shows them: pictures, and how they came to be.

#pragma once

#include "clients/replay/replay.h"
#include "inspect/report/blocks.h"
#include "inspect/report/call-places.h"

#include <cstdint>
#include <functional>
#include <istream>
#include <memory>
#include <string>
#include <vector>

namespace orvlog::inspect
{

struct RecordedPage
{
    uint32_t page = 0;  // from 1
    uint64_t call = 0;  // the byte of the call that began it
    uint32_t width = 0;
    uint32_t height = 0;
    // As JSON: the picture's block, the object with the steps, the effects' block; "null" for what there is not.
    std::string picture = "null";
    std::string steps = "null";
    std::string effects = "null";
    std::string note;  // what is wrong with it; empty if nothing is
};

struct PageOptions
{
    reader::LogFiles files = reader::LogFiles("-");
    uint32_t first_page = 1;
    uint32_t last_page = UINT32_MAX;
    std::function<bool(uint32_t page)> wanted;  // of those; empty: all
    bool steps = true;
    uint64_t most_bytes = UINT64_MAX;  // of the report: behind them there are no more steps
    std::function<void(const std::string& line)> complain;
    std::function<void(uint64_t)> progress;
};

struct RecordedPages
{
    replay::Outcome outcome;
    std::vector<RecordedPage> pages;
};

// Larger pages have neither picture nor steps.
constexpr uint64_t kMostPagePixels = uint64_t{1} << 26;

// Opens the log anew, from its beginning; null if it can't be.
using OpenLogAgain = std::function<std::shared_ptr<std::istream>()>;

// Draws the log once, and again a page that was open while another one was. Memory goes with the size of pages and the
// number of calls and steps, not with the log.
RecordedPages record_pages(const OpenLogAgain& open, const replay::LogKind& kind, const CallPlaces& places,
                           Blocks& blocks, const PageOptions& options);

}  // namespace orvlog::inspect
