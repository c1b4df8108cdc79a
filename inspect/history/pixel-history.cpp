#include "inspect/history/pixel-history.h"

#include "inspect/drawing/glyph-form.h"

#include <algorithm>

namespace orvlog::inspect
{

namespace
{

using cairo_renderer::Unchanged;

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
    if (step.kind == WatchStep::Kind::page_begins)
        begin_page(step);
    else if (step.kind == WatchStep::Kind::painted)
        paint(step);
    else if (step.begins())
        begin(step);
    else
        end(step);
}

void PixelWatcher::begin_page(const WatchStep& step)
{
    groups_.clear();
    targets_.clear();
    targets_.push_back({PixelShadow(step.target, {box_}), {box_}, box_.x0, box_.y0});
}

void PixelWatcher::begin(const WatchStep& step)
{
    groups_.begin(step);
    if (step.kind == WatchStep::Kind::cell_begins)
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

void PixelWatcher::tell(const WatchStep& step, Touch& touch)
{
    touch.call = step.call;
    touch.begun_by = step.group;
    touch.around = groups_.innermost();
    sink_(touch, runs_, groups_.list());
}

void PixelWatcher::paint(const WatchStep& step)
{
    Touch touch;
    const bool told = look(step, true, touch);
    if (told && groups_.is_part(step))
        targets_.back().touched = true;
    else if (told)
        tell(step, touch);
}

void PixelWatcher::end(const WatchStep& step)
{
    if (!groups_.end().value_or(false) || targets_.size() < 2)
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
