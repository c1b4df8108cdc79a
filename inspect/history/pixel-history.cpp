#include "inspect/history/pixel-history.h"

#include "inspect/drawing/glyph-form.h"

#include <algorithm>

namespace orvlog::inspect
{

namespace
{

using cairo_renderer::Unchanged;

// Groups that hold something of interest; more are told as standing on the page.
constexpr size_t kMostGroups = 1 << 20;

PixelBox around(const std::vector<PixelRun>& runs)
{
    PixelBox box{runs.front().x0, runs.front().y, runs.front().x1, runs.front().y + 1};
    for (const PixelRun& run : runs)
        box = {std::min(box.x0, run.x0), std::min(box.y0, run.y), std::max(box.x1, run.x1),
               std::max(box.y1, run.y + 1)};
    return box;
}

}  // namespace

PixelWatcher::PixelWatcher(const PixelBox& box, bool reasons, TouchSink sink)
    : box_(box), reasons_(reasons), sink_(std::move(sink))
{
}

cairo_renderer::Watch PixelWatcher::watch()
{
    cairo_renderer::Watch watch;
    watch.box = box_;
    watch.call = [this] { return call_; };
    watch.step = [this](const WatchStep& step) { take(step); };
    return watch;
}

void PixelWatcher::take(const WatchStep& step)
{
    switch (step.kind)
    {
    case WatchStep::Kind::page_begins:
        open_.clear();
        targets_.clear();
        targets_.push_back({PixelShadow(step.target, {box_}), {box_}, box_.x0, box_.y0});
        break;
    case WatchStep::Kind::painted:
        paint(step);
        break;
    case WatchStep::Kind::group_begins:
    case WatchStep::Kind::cell_begins:
        begin(step);
        break;
    case WatchStep::Kind::group_ends:
    case WatchStep::Kind::cell_ends:
        end(step);
        break;
    }
}

void PixelWatcher::begin(const WatchStep& step)
{
    const bool cell = step.kind == WatchStep::Kind::cell_begins;
    open_.push_back({step.call, cell || step.layer, std::nullopt});
    if (cell)
        targets_.push_back({PixelShadow(step.target, step.cells), step.cells, step.cell_x, step.cell_y});
    else if (step.layer && !targets_.empty())
    {
        const Target& below = targets_.back();
        targets_.push_back({PixelShadow(step.target, below.boxes), below.boxes, below.x, below.y});
    }
}

// Looks for what the step changed on the innermost surface; true if there is anything to tell.
bool PixelWatcher::look(const WatchStep& step, bool reaches, Touch& touch)
{
    if (targets_.empty() || targets_.back().shadow.surface() != step.target)
        return false;
    Target& target = targets_.back();
    touch.on_layer = targets_.size() > 1;
    touch.before = target.shadow.at(target.x, target.y);
    runs_.clear();
    target.shadow.compare(step.area, runs_);
    touch.after = target.shadow.at(target.x, target.y);
    touch.changed = !runs_.empty();
    for (const PixelRun& run : runs_)
        touch.pixels += static_cast<uint64_t>(run.x1 - run.x0);
    if (touch.changed)
        touch.area = around(runs_);
    target.touched = target.touched || touch.changed;
    if (touch.changed || !reasons_ || !reaches)
        return touch.changed;
    touch.why = step.why(target.x, target.y);
    return touch.why.reason != Unchanged::not_covered;
}

// The innermost group that is told of.
std::optional<uint32_t> PixelWatcher::innermost()
{
    std::optional<uint32_t> outside;
    for (Open& open : open_)
    {
        // Repeated content has a layer and a cell.
        if (!open.index && outside && groups_[*outside].call == open.call)
            open.index = outside;
        if (!open.index && groups_.size() < kMostGroups)
        {
            groups_.push_back({open.call, outside});
            open.index = static_cast<uint32_t>(groups_.size() - 1);
        }
        if (open.index)
            outside = open.index;
    }
    return outside;
}

void PixelWatcher::tell(const WatchStep& step, Touch& touch)
{
    touch.call = step.call;
    touch.begun_by = step.group;
    touch.around = innermost();
    sink_(touch, runs_, groups_);
}

void PixelWatcher::paint(const WatchStep& step)
{
    Touch touch;
    const bool told = look(step, true, touch);
    // Both halves of a paint that makes a group of them: the group's end tells.
    const bool half = !open_.empty() && open_.back().layer && open_.back().call == step.call;
    if (told && !half)
        tell(step, touch);
    if (told && half)
        targets_.back().touched = true;
}

void PixelWatcher::end(const WatchStep& step)
{
    if (open_.empty())
        return;
    const Open closed = open_.back();
    open_.pop_back();
    if (!closed.layer || targets_.size() < 2)
        return;
    const bool reaches = targets_.back().touched;
    targets_.pop_back();
    Touch touch;
    touch.kind = step.kind == WatchStep::Kind::cell_ends ? Touch::Kind::cell : Touch::Kind::group;
    if (look(step, reaches, touch))
        tell(step, touch);
}

HistoryOutcome follow_pixels(std::istream& log, const replay::LogKind& kind, const HistoryOptions& options,
                             const TouchSink& sink)
{
    HistoryOutcome outcome;
    PixelWatcher watcher(options.box, options.reasons, sink);
    cairo_renderer::Options drawing;
    drawing.watch = watcher.watch();
    drawing.keep_images = kind.kept_images;
    drawing.glyph_form = glyph_form(kind);
    drawing.complaint_sink = options.complain ? options.complain : [](const std::string&) {};
    drawing.page_number = [&outcome](const cairo_renderer::Page& page)
    {
        outcome.page_begun = true;
        outcome.width = page.width;
        outcome.height = page.height;
        return page.number;
    };
    cairo_renderer::Renderer renderer(std::move(drawing));
    replay::Options play;
    play.files = options.files;
    play.first_page = play.last_page = options.page;
    play.dpi = options.dpi;
    play.complain = options.complain;
    play.progress = options.progress;
    play.before_call = [&](const reader::Element& call)
    {
        watcher.begin_call(call.place.byte);
        return renderer.pages_finished() == 0;
    };
    replay::ReplayTickets tickets;
    outcome.replay = replay::play(log, renderer.interface(), tickets, play);
    return outcome;
}

}  // namespace orvlog::inspect
