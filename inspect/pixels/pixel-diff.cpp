#include "inspect/pixels/pixel-diff.h"

#include "inspect/align/temporary-file.h"
#include "inspect/pixels/first-differences.h"

#include <condition_variable>
#include <future>
#include <mutex>
#include <optional>
#include <utility>
#include <vector>

namespace orvlog::inspect
{

namespace
{

// Pages that are looked at in one pass over the logs.
constexpr size_t kMostAtOnce = 4096;

using FoundFile = RecordFile<FirstDifference>;

// Looks that come from another thread, one at a time.
class Handover
{
public:
    // Waits until the look before it has been taken. False if no more are taken.
    bool give(PageLook&& look)
    {
        std::unique_lock lock(mutex_);
        changed_.wait(lock, [this] { return !look_ || over_; });
        if (over_)
            return false;
        look_ = std::move(look);
        changed_.notify_all();
        return true;
    }
    // Waits for the next one; an empty one if no more come.
    PageLook take()
    {
        std::unique_lock lock(mutex_);
        changed_.wait(lock, [this] { return look_ || over_; });
        PageLook look = look_ ? std::move(*look_) : PageLook{};
        look_.reset();
        changed_.notify_all();
        return look;
    }
    void end()
    {
        const std::lock_guard lock(mutex_);
        over_ = true;
        changed_.notify_all();
    }

private:
    std::mutex mutex_;
    std::condition_variable changed_;
    std::optional<PageLook> look_;
    bool over_ = false;
};

struct EndAtLast
{
    Handover& handover;
    ~EndAtLast()
    {
        handover.end();
    }
};

PageDifference difference(const FirstDifference& found, PageLook&& a, PageLook&& b)
{
    PageDifference page;
    page.a = std::move(a);
    page.b = std::move(b);
    page.page_a = found.page_a;
    page.page_b = found.page_b;
    page.call_a = page.a.address;
    page.call_b = page.b.address;
    page.kind = page.a.address.empty() ? page.b.kind : page.a.kind;
    page.cause_a = page.a.cause;
    page.cause_b = page.b.cause;
    page.cause_kind = page.a.cause.empty() ? page.b.cause_kind : page.a.cause_kind;
    page.in_layer = found.in_layer;
    page.at_end = found.at_end;
    page.first = area_between(page.a.behind, page.b.behind);
    page.end = area_between(picture_of(page.a.end), picture_of(page.b.end));
    return page;
}

// Both logs are drawn at the same time, and each of these pages once.
class Looks
{
public:
    Looks(const PixelSide& a, NumberFile& numbers_a, const PixelSide& b, NumberFile& numbers_b, double dpi)
        : a_(a), numbers_a_(numbers_a), b_(b), numbers_b_(numbers_b), dpi_(dpi)
    {
    }

    void run(const std::vector<FirstDifference>& found, const std::function<void(const PageDifference&)>& on_page)
    {
        std::vector<WantedLook> wanted_a;
        std::vector<WantedLook> wanted_b;
        for (const FirstDifference& one : found)
        {
            wanted_a.push_back({one.page_a, one.place_a, one.call, one.cause});
            wanted_b.push_back({one.page_b, one.place_b, one.call, one.cause});
        }
        Handover handover;
        std::future<void> other =
            std::async(std::launch::async,
                       [&]
                       {
                           const EndAtLast end{handover};
                           look_at_pages(b_, numbers_b_, dpi_, wanted_b,
                                         [&handover](PageLook&& look) { return handover.give(std::move(look)); });
                       });
        const EndAtLast end{handover};
        size_t next = 0;
        look_at_pages(a_, numbers_a_, dpi_, wanted_a,
                      [&](PageLook&& look)
                      {
                          on_page(difference(found[next++], std::move(look), handover.take()));
                          return true;
                      });
        handover.end();
        other.get();
    }

private:
    const PixelSide& a_;
    NumberFile& numbers_a_;
    const PixelSide& b_;
    NumberFile& numbers_b_;
    double dpi_;
};

}  // namespace

PixelDiffOutcome compare_pages(const PixelSide& a, NumberFile& numbers_a, const PixelSide& b, NumberFile& numbers_b,
                               double dpi, const std::function<void(const PageDifference&)>& on_page)
{
    PixelDiffOutcome outcome;
    StepFile steps_a;
    StepFile steps_b;
    std::future<bool> other =
        std::async(std::launch::async, [&] { return record_steps(b, numbers_b, dpi, steps_b, outcome.b); });
    const bool room_a = record_steps(a, numbers_a, dpi, steps_a, outcome.a);
    const bool room_b = other.get();
    outcome.no_room = !room_a || !room_b || !numbers_a.good() || !numbers_b.good();
    if (outcome.no_room)
        return outcome;
    FoundFile all_found;
    find_first_differences(steps_a, steps_b, [&](const FirstDifference& found) { all_found.add(found); });
    outcome.no_room = !all_found.rewind();
    Looks looks(a, numbers_a, b, numbers_b, dpi);
    std::vector<FirstDifference> found;
    while (all_found.read(found, kMostAtOnce) > 0)
    {
        looks.run(found, on_page);
        found.clear();
    }
    return outcome;
}

}  // namespace orvlog::inspect
