// What each call of a log does to pixels of a page: one replay into the Cairo renderer, in which the surface that is
// drawn to is looked at after each step.

#pragma once

#include "clients/replay/replay.h"
#include "inspect/history/open-groups.h"
#include "inspect/history/pixel-shadow.h"
#include "renderers/cairo/cairo-renderer.h"
#include "renderers/cairo/watch.h"

#include <cstdint>
#include <functional>
#include <istream>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace orvlog::inspect
{

using cairo_renderer::WatchStep;
using cairo_renderer::WhyUnchanged;

// What one step did to the watched pixels of the surface that it painted on.
struct Touch
{
    enum class Kind : uint8_t
    {
        paint,
        group,  // a group's layer has been put on what lies below
        cell    // repeated content has
    };

    Kind kind = Kind::paint;
    uint64_t call = 0;               // the byte in the log's text at which the line of the call's tag begins
    uint64_t begun_by = 0;           // group, cell: that of the call that began it; the same call for a resource
    std::optional<uint32_t> around;  // the innermost group around it, in the list of groups; nothing on the page itself
    bool on_layer = false;           // painted on the layer of a group and not on the page
    bool changed = false;
    WhyUnchanged why;  // unless changed; of the first pixel
    // The first pixel, 0xAARRGGBB with colours multiplied by alpha. Nothing if the surface doesn't have it.
    std::optional<uint32_t> before;
    std::optional<uint32_t> after;
    uint64_t pixels = 0;  // how many have changed
    PixelBox area;        // around those; in repeated cells in the cell's own pixels
};

// Is told of each touch, in order, with the pixels that changed. The groups around it are `groups[*touch.around]` and
// so on outwards.
using TouchSink =
    std::function<void(const Touch& touch, std::span<const PixelRun> runs, std::span<const Around> groups)>;

// Makes touches from what a renderer tells.
class PixelWatcher
{
public:
    // With `reasons` it tells what covers the first pixel and leaves it as it was, too.
    PixelWatcher(const PixelBox& box, bool reasons, TouchSink sink);
    PixelWatcher(const PixelWatcher&) = delete;
    PixelWatcher& operator=(const PixelWatcher&) = delete;

    // For the renderer's options; lives as long as this.
    cairo_renderer::Watch watch();

    // The byte of the call that comes next.
    void begin_call(uint64_t byte)
    {
        call_ = byte;
    }

private:
    struct Target
    {
        PixelShadow shadow;
        std::vector<PixelBox> boxes;
        int x = 0;
        int y = 0;
        bool touched = false;
    };

    void take(const WatchStep& step);
    void begin_page(const WatchStep& step);
    void begin(const WatchStep& step);
    void end(const WatchStep& step);
    void paint(const WatchStep& step);
    bool look(const WatchStep& step, bool reaches, Touch& touch);
    void tell(const WatchStep& step, Touch& touch);

    PixelBox box_;
    bool reasons_;
    TouchSink sink_;
    uint64_t call_ = 0;
    std::vector<Target> targets_;
    OpenGroups groups_;
    std::vector<PixelRun> runs_;
};

struct HistoryOptions
{
    reader::LogFiles files = reader::LogFiles("-");
    uint32_t page = 1;
    double dpi = 0;  // above 0: the page in this resolution instead of its own
    PixelBox box;
    bool reasons = false;
    std::function<void(const std::string& line)> complain;
    std::function<void(uint64_t)> progress;
};

struct HistoryOutcome
{
    replay::Outcome replay;
    bool page_begun = false;
    uint32_t width = 0;  // of the page, in pixels
    uint32_t height = 0;
};

// Replays `log`, of which `kind` is known, as far as its page needs it.
HistoryOutcome follow_pixels(std::istream& log, const replay::LogKind& kind, const HistoryOptions& options,
                             const TouchSink& sink);

}  // namespace orvlog::inspect
