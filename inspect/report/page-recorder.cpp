#include "inspect/report/page-recorder.h"

#include "inspect/drawing/glyph-form.h"
#include "inspect/pixels/pictures.h"
#include "inspect/report/columns.h"
#include "inspect/report/step-recorder.h"
#include "renderers/cairo/cairo-renderer.h"
#include "renderers/cairo/watch.h"

#include <algorithm>
#include <optional>
#include <set>

namespace orvlog::inspect
{

namespace
{

using cairo_renderer::Page;
using cairo_renderer::WatchStep;

// Pages that are open at the same time are drawn again one by one, but no more than so many.
constexpr size_t kMostAgain = 16;

class PageRecorder
{
public:
    PageRecorder(const replay::LogKind& kind, const CallPlaces& places, Blocks& blocks, const PageOptions& options)
        : kind_(kind), places_(places), blocks_(blocks), options_(options)
    {
    }

    // Draws the wanted pages from `first` to `last`.
    replay::Outcome draw(std::istream& log, uint32_t first, uint32_t last)
    {
        cairo_renderer::Renderer renderer(drawing());
        replay::Options play;
        play.files = options_.files;
        play.first_page = first;
        play.last_page = last;
        play.complain = options_.complain;
        play.progress = options_.progress;
        play.page_begins = [this](uint32_t page, uint32_t) { begin_page(page); };
        play.before_call = [this, last](const reader::Element& call)
        {
            call_ = call.place.byte;
            return !(drawn_ && drawn_ == last) && blocks_.good();
        };
        drawn_ = 0;
        replay::ReplayTickets tickets;
        const replay::Outcome outcome = replay::play(log, renderer.interface(), tickets, play);
        end_page("is not finished in the log");
        return outcome;
    }

    // Those that could not be followed, because another page was begun while they were open.
    const std::set<uint32_t>& mixed() const
    {
        return mixed_;
    }
    std::vector<RecordedPage> take()
    {
        std::ranges::sort(pages_, {}, &RecordedPage::page);
        return std::move(pages_);
    }

private:
    cairo_renderer::Options drawing()
    {
        cairo_renderer::Options drawing;
        drawing.pixels_at_once = kMostPagePixels;
        drawing.keep_images = kind_.kept_images;
        drawing.glyph_form = glyph_form(kind_);
        drawing.complaint_sink = options_.complain ? options_.complain : [](const std::string&) {};
        drawing.page_number = [this](const Page& page) { return size_page(page); };
        drawing.page_sink = [this](const Page& page) { take_page(page); };
        if (!options_.steps)
            return drawing;
        constexpr int kFar = 1 << 22;
        drawing.watch = cairo_renderer::Watch{
            {0, 0, kFar, kFar}, [this] { return call_; }, [this](const WatchStep& step) { take_step(step); }};
        return drawing;
    }

    void begin_page(uint32_t page)
    {
        if (present_)
            mixed_.insert(present_->page);
        present_.reset();
        recorder_.reset();
        if (options_.wanted && !options_.wanted(page))
            return;
        present_.emplace();
        present_->page = page;
        present_->call = call_;
        present_->note = "can't be drawn";
    }

    uint32_t size_page(const Page& page)
    {
        if (!present_)
            return 0;
        present_->width = page.width;
        present_->height = page.height;
        const bool fits = uint64_t{page.width} * page.height <= kMostPagePixels;
        present_->note = fits ? "" : "is too large to be shown";
        if (fits && options_.steps && blocks_.written() < options_.most_bytes)
            recorder_ = std::make_unique<StepRecorder>(blocks_, places_, options_.most_bytes);
        return present_->page;
    }

    void take_step(const WatchStep& step)
    {
        if (recorder_ != nullptr)
            recorder_->take(step);
    }

    void take_page(const Page& page)
    {
        drawn_ = std::max(drawn_, page.first_row + page.rows >= page.height ? page.number : 0);
        if (!present_ || page.number != present_->page)
            return;
        if (present_->note.empty() && page.surface != nullptr)
        {
            if (const std::string png = surface_png(page.surface); !png.empty())
                present_->picture = text_json(blocks_.add_plain(png));
        }
        if (page.first_row + page.rows >= page.height)
            end_page("");
    }

    void end_page(const std::string& note)
    {
        if (!present_)
            return;
        if (present_->note.empty())
            present_->note = note;
        if (recorder_ != nullptr && recorder_->begun())
        {
            const RecordedSteps recorded = recorder_->finish();
            present_->steps = recorded.steps;
            present_->effects = recorded.effects;
        }
        pages_.push_back(std::move(*present_));
        present_.reset();
        recorder_.reset();
    }

    const replay::LogKind& kind_;
    const CallPlaces& places_;
    Blocks& blocks_;
    const PageOptions& options_;
    uint64_t call_ = 0;
    uint32_t drawn_ = 0;  // the last page that was finished
    std::optional<RecordedPage> present_;
    std::unique_ptr<StepRecorder> recorder_;
    std::set<uint32_t> mixed_;
    std::vector<RecordedPage> pages_;
};

}  // namespace

RecordedPages record_pages(const OpenLogAgain& open, const replay::LogKind& kind, const CallPlaces& places,
                           Blocks& blocks, const PageOptions& options)
{
    RecordedPages recorded;
    PageRecorder recorder(kind, places, blocks, options);
    const std::shared_ptr<std::istream> log = open();
    if (log == nullptr)
        return recorded;
    recorded.outcome = recorder.draw(*log, options.first_page, options.last_page);
    const std::set<uint32_t> mixed = recorder.mixed();
    size_t again = 0;
    std::vector<RecordedPage> left;
    for (const uint32_t page : mixed)
    {
        const std::shared_ptr<std::istream> pass = again++ < kMostAgain ? open() : nullptr;
        if (pass != nullptr)
            recorder.draw(*pass, page, page);
        else if (left.size() < kMostAgain * kMostAgain)
        {
            left.emplace_back();
            left.back().page = page;
            left.back().note = "is open at the same time as another page, and isn't shown";
        }
    }
    recorded.pages = recorder.take();
    recorded.pages.insert(recorded.pages.end(), left.begin(), left.end());
    std::ranges::sort(recorded.pages, {}, &RecordedPage::page);
    return recorded;
}

}  // namespace orvlog::inspect
