#include "inspect/pixels/page-steps.h"

#include "inspect/drawing/glyph-form.h"

#include <limits>
#include <memory>
#include <utility>

namespace orvlog::inspect
{

namespace
{

using cairo_renderer::WatchStep;

// Larger pages are drawn, and looked at, in bands.
constexpr uint64_t kMostPixels = uint64_t{1} << 26;

PageStep::Kind kind_of(WatchStep::Kind kind)
{
    switch (kind)
    {
    case WatchStep::Kind::page_begins:
        return PageStep::page_begins;
    case WatchStep::Kind::painted:
        return PageStep::painted;
    case WatchStep::Kind::group_begins:
        return PageStep::group_begins;
    case WatchStep::Kind::group_ends:
        return PageStep::group_ends;
    case WatchStep::Kind::cell_begins:
        return PageStep::cell_begins;
    case WatchStep::Kind::cell_ends:
        return PageStep::cell_ends;
    }
    return PageStep::painted;
}

// Sums of all surfaces that are drawn to at present.
class Sums
{
public:
    // Fills in the sums of the step.
    PageStep take(const PageDrawing::Told& told)
    {
        PageStep step = told.step;
        const bool ends = step.kind == PageStep::cell_ends || (step.kind == PageStep::group_ends && step.layer != 0);
        if (ends && !layers_.empty())
        {
            sums_.erase(layers_.back());
            layers_.pop_back();
        }
        const bool fresh = step.kind == PageStep::page_begins || step.kind == PageStep::cell_begins ||
                           (step.kind == PageStep::group_begins && step.layer != 0);
        const auto known = sums_.find(told.target);
        if (fresh || known == sums_.end())
        {
            if (sums_.size() > kMostTargets)
                sums_.clear();
            if (fresh && step.kind != PageStep::page_begins)
                layers_.push_back(told.target);
            const TargetSum& sum =
                sums_.insert_or_assign(told.target, TargetSum(told.target, told.blank)).first->second;
            step.before = step.after = sum.value();
            return step;
        }
        step.before = known->second.value();
        known->second.update(told.target, told.area);
        step.after = known->second.value();
        return step;
    }

    void clear()
    {
        sums_.clear();
        layers_.clear();
    }

private:
    static constexpr size_t kMostTargets = 64;

    std::map<cairo_surface_t*, TargetSum> sums_;
    std::vector<cairo_surface_t*> layers_;  // of open groups and cells
};

}  // namespace

uint64_t CallNumbers::of(const reader::Element& call)
{
    while (last_.byte < call.place.byte || last_.number == 0)
        if (!file_.read(last_))
            return 0;
    return last_.byte == call.place.byte ? last_.number : 0;
}

bool PageDrawing::begin_call(const reader::Element& call)
{
    call_ = numbers_.of(call);
    if (on_call)
        on_call(call, call_);
    return !past_;
}

void PageDrawing::take(const WatchStep& step)
{
    Told told{};
    told.step.kind = kind_of(step.kind);
    if (step.kind == WatchStep::Kind::page_begins)
        place_ = 0;
    told.step.call = step.call;
    told.step.page = page_;
    told.step.place = ++place_;
    told.step.layer = step.layer ? 1 : 0;
    told.area = step.area;
    told.target = step.target;
    told.blank = step.kind == WatchStep::Kind::group_begins && step.layer && !step.backdrop;
    if (step.target != nullptr && on_step)
        on_step(told);
}

replay::Outcome PageDrawing::draw(uint32_t last_page, std::function<bool(uint32_t page)> wants_page)
{
    last_page_ = last_page;
    constexpr int kFar = 1 << 22;
    cairo_renderer::Options drawing;
    drawing.watch = cairo_renderer::Watch{
        {0, 0, kFar, kFar}, [this] { return call_; }, [this](const WatchStep& step) { take(step); }};
    drawing.pixels_at_once = kMostPixels;
    drawing.keep_images = false;
    drawing.glyph_form = glyph_form(side_.kind);
    drawing.complaint_sink = [](const std::string&) {};
    drawing.page_sink = [this](const cairo_renderer::Page& page)
    {
        PageStep end;
        end.kind = PageStep::page_ends;
        end.call = call_;
        end.page = page_;
        end.place = place_ + 1;
        if (on_page)
            on_page(page, end);
        past_ = page_ >= last_page_ && page.first_row + page.rows >= page.height;
    };
    cairo_renderer::Renderer renderer(std::move(drawing));
    replay::Options play;
    play.files = side_.files;
    play.last_page = last_page;
    play.wants_page = std::move(wants_page);
    play.dpi = dpi_;
    play.page_begins = [this](uint32_t page, uint32_t) { page_ = page; };
    play.before_call = [this](const reader::Element& call) { return begin_call(call); };
    replay::ReplayTickets tickets;
    const std::shared_ptr<std::istream> log = side_.open();
    return log != nullptr ? replay::play(*log, renderer.interface(), tickets, play) : replay::Outcome{};
}

bool record_steps(const PixelSide& side, NumberFile& numbers, double dpi, StepFile& steps, replay::Outcome& outcome)
{
    Sums sums;
    PageDrawing drawing(side, numbers, dpi);
    drawing.on_step = [&](const PageDrawing::Told& told) { steps.add(sums.take(told)); };
    drawing.on_page = [&](const cairo_renderer::Page& page, const PageStep& end)
    {
        PageStep step = end;
        step.before = step.after = TargetSum(page.surface).value();
        steps.add(step);
        sums.clear();
    };
    outcome = drawing.draw(std::numeric_limits<uint32_t>::max());
    return steps.rewind();
}

}  // namespace orvlog::inspect
