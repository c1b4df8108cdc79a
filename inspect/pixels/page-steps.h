// What each step of drawing a log's pages leaves, as sums.

#pragma once

#include "clients/replay/replay.h"
#include "inspect/align/log-alignment.h"
#include "inspect/align/temporary-file.h"
#include "inspect/pixels/target-sum.h"
#include "renderers/cairo/cairo-renderer.h"

#include <cairo.h>

#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <vector>

namespace orvlog::inspect
{

// The number of a call of a log, by the byte at which it stands. Calls of two logs that belong together have the same.
struct CallNumber
{
    static constexpr uint64_t kSame = 0;
    static constexpr uint64_t kInA = 1;
    static constexpr uint64_t kInB = 2;
    static constexpr uint64_t kChanged = 3;

    uint64_t byte = 0;
    uint64_t number = 0;  // four times its place among the calls of both, plus one of the above
};

using NumberFile = RecordFile<CallNumber>;

// Gives numbers to calls in the order of the log.
class CallNumbers
{
public:
    explicit CallNumbers(NumberFile& file) : file_(file)
    {
        file_.rewind();
    }
    // 0 if the call has none.
    uint64_t of(const reader::Element& call);

private:
    NumberFile& file_;
    CallNumber last_;
};

struct PageStep
{
    enum Kind : uint32_t
    {
        page_begins,
        painted,
        group_begins,
        group_ends,
        cell_begins,
        cell_ends,
        page_ends
    };

    uint64_t call = 0;    // its number
    uint64_t before = 0;  // the sum of the surface drawn to
    uint64_t after = 0;
    uint32_t page = 0;  // of the log, from 1
    uint32_t kind = page_begins;
    uint32_t place = 0;  // among the steps of its page, from 1
    uint32_t layer = 0;  // group_begins, group_ends: the group has a layer
};

using StepFile = RecordFile<PageStep>;

struct PixelSide
{
    OpenLog open;
    reader::LogFiles files = reader::LogFiles("-");
    replay::LogKind kind;
};

// Draws pages of a log and tells of each step with the surface that was drawn to.
class PageDrawing
{
public:
    struct Told
    {
        PageStep step;  // without sums
        cairo_renderer::PixelBox area;
        cairo_surface_t* target;
        bool blank;  // the target is transparent
    };

    PageDrawing(const PixelSide& side, NumberFile& numbers, double dpi) : side_(side), numbers_(numbers), dpi_(dpi) {}

    std::function<void(const Told&)> on_step;
    std::function<void(const cairo_renderer::Page&, const PageStep& end)> on_page;
    std::function<void(const reader::Element& call, uint64_t number)> on_call;

    // Of the pages up to the last one those that are wanted; all of them if `wants_page` is empty.
    replay::Outcome draw(uint32_t last_page, std::function<bool(uint32_t page)> wants_page = nullptr);

private:
    void take(const cairo_renderer::WatchStep& step);
    bool begin_call(const reader::Element& call);

    const PixelSide& side_;
    CallNumbers numbers_;
    double dpi_;
    uint64_t call_ = 0;
    uint32_t page_ = 0;
    uint32_t place_ = 0;
    uint32_t last_page_ = 0;
    bool past_ = false;  // the last page has been drawn
};

// Draws all pages and writes their steps. False if there is no room for these.
bool record_steps(const PixelSide& side, NumberFile& numbers, double dpi, StepFile& steps, replay::Outcome& outcome);

}  // namespace orvlog::inspect
