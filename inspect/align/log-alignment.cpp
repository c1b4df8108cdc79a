#include "inspect/align/log-alignment.h"

#include <algorithm>
#include <future>
#include <optional>

namespace orvlog::inspect
{

namespace
{

using reader::Element;

// A log whose calls are read one after the other.
class LogReading
{
public:
    explicit LogReading(const OpenLog& open) : stream_(open())
    {
        if (stream_ == nullptr)
            return;
        elements_ = std::make_unique<reader::ElementReader>(*stream_);
        elements_->split_nested = true;
        elements_->on_damage = [this](const reader::Damage&) { ++damage_; };
    }

    const Element* next()
    {
        return elements_ != nullptr ? elements_->next() : nullptr;
    }
    uint64_t bytes() const
    {
        return elements_ != nullptr ? elements_->events().bytes_used() : 0;
    }
    const Element* root() const
    {
        return elements_ != nullptr ? &elements_->root() : nullptr;
    }
    LogState state() const
    {
        LogState state;
        state.opened = elements_ != nullptr;
        state.is_log = state.opened && elements_->events().is_log();
        state.cut = state.opened && elements_->events().is_cut();
        state.damage = damage_;
        return state;
    }

private:
    std::shared_ptr<std::istream> stream_;
    std::unique_ptr<reader::ElementReader> elements_;
    uint64_t damage_ = 0;
};

// The first pass over a log.
struct Digests
{
    DigestFile file;
    LogState state;

    void read(const OpenLog& open, double tolerance, const std::function<void(uint64_t)>& progress)
    {
        LogReading log(open);
        TicketTexts tickets;
        bool room = true;
        while (const Element* call = room ? log.next() : nullptr)
        {
            room = file.add(digest_of(*call, tickets, tolerance > 0));
            if (progress)
                progress(log.bytes());
        }
        file.rewind();
        state = log.state();
        state.calls = file.size();
    }
};

// A stretch of a log's digests.
class Window
{
public:
    Window(DigestFile& file, size_t most) : file_(file), most_(std::max<size_t>(most, 2)) {}

    void fill()
    {
        if (at_end_ || digests_.size() >= most_)
            return;
        file_.read(digests_, most_ - digests_.size());
        at_end_ = digests_.size() < most_;
    }
    void drop(size_t count)
    {
        digests_.erase(digests_.begin(), digests_.begin() + static_cast<std::ptrdiff_t>(count));
    }
    const std::vector<CallDigest>& digests() const
    {
        return digests_;
    }
    // Nothing follows what is in the window.
    bool is_last() const
    {
        return at_end_;
    }

private:
    DigestFile& file_;
    size_t most_;
    std::vector<CallDigest> digests_;
    bool at_end_ = false;
};

class SecondPass
{
public:
    SecondPass(const OpenLog& open_a, const OpenLog& open_b, const AlignOptions& options,
               const std::function<bool(const Step&)>& on_step)
        : a_(open_a), b_(open_b), options_(options), comparer_(options.tolerance), on_step_(on_step)
    {
    }

    void run(DigestFile& digests_a, DigestFile& digests_b)
    {
        Window window_a(digests_a, options_.window);
        Window window_b(digests_b, options_.window);
        while (going_)
        {
            window_a.fill();
            window_b.fill();
            if (window_a.digests().empty() && window_b.digests().empty())
                return;
            if (!take_equal(window_a, window_b))
                take_edits(window_a, window_b);
        }
    }

    std::vector<Difference> compare_roots()
    {
        const Element* a = a_.root();
        const Element* b = b_.root();
        CallComparer roots(0);
        return a != nullptr && b != nullptr ? roots.compare(*a, *b) : std::vector<Difference>{};
    }

private:
    // The calls at the beginning that are equal. False if there are none.
    bool take_equal(Window& a, Window& b)
    {
        const size_t both = std::min(a.digests().size(), b.digests().size());
        size_t count = 0;
        Edit edit;
        edit.equal = true;
        for (; going_ && count < both && may_be_equal(a.digests()[count], b.digests()[count], options_.tolerance);
             ++count)
            take(edit, a, b);
        drop(a, b, count, count);
        return count > 0;
    }

    void drop(Window& a, Window& b, size_t count_a, size_t count_b)
    {
        if (count_b > 0)
            before_b_ = b.digests()[count_b - 1];
        a.drop(count_a);
        b.drop(count_b);
    }

    void take_edits(Window& a, Window& b)
    {
        const std::vector<Edit> edits =
            align(a.digests(), b.digests(), options_.tolerance, before_b_ ? &*before_b_ : nullptr);
        const size_t count = a.is_last() && b.is_last() ? edits.size() : settled(edits);
        size_t taken_a = 0;
        size_t taken_b = 0;
        for (size_t i = 0; going_ && i < count; ++i)
        {
            take(edits[i], a, b);
            taken_a += edits[i].kind != EditKind::added ? 1 : 0;
            taken_b += edits[i].kind != EditKind::missing ? 1 : 0;
        }
        drop(a, b, taken_a, taken_b);
    }

    // How many edits will not change by what follows the windows: those up to the last calls that are equal, but at
    // least half a window.
    size_t settled(const std::vector<Edit>& edits) const
    {
        size_t last = edits.size();
        while (last > 0 && !edits[last - 1].equal)
            --last;
        size_t least = 0;
        uint32_t most = 0;
        for (; least < edits.size() && most < options_.window / 2; ++least)
            most = std::max(edits[least].a == Edit::kNowhere ? 0 : edits[least].a + 1,
                            edits[least].b == Edit::kNowhere ? 0 : edits[least].b + 1);
        return std::max(last, least);
    }

    static std::optional<CallPlace> place(const Window& window, uint32_t index)
    {
        if (index == Edit::kNowhere)
            return std::nullopt;
        const CallDigest& digest = window.digests()[index];
        const bool has_id = digest.id >= 0;
        return CallPlace{digest.line, digest.byte,
                         has_id ? std::optional(static_cast<uint32_t>(digest.id)) : std::nullopt};
    }

    void take(const Edit& edit, const Window& a, const Window& b)
    {
        Step step;
        step.a = edit.kind != EditKind::added ? a_.next() : nullptr;
        step.b = edit.kind != EditKind::missing ? b_.next() : nullptr;
        // A log that is written while it is read.
        const bool there = (edit.kind == EditKind::added || step.a != nullptr) &&
                           (edit.kind == EditKind::missing || step.b != nullptr);
        going_ = going_ && there;
        if (!there)
            return;
        step.twice = edit.twice;
        if (edit.kind == EditKind::missing)
        {
            step.kind = StepKind::missing;
            step.moved = place(b, edit.partner);
            comparer_.only_in_a(*step.a);
        }
        else if (edit.kind == EditKind::added)
        {
            step.kind = StepKind::added;
            step.moved = place(a, edit.partner);
            comparer_.only_in_b(*step.b);
        }
        else
        {
            step.differences = comparer_.compare(*step.a, *step.b);
            step.kind = step.differences.empty() ? StepKind::same : StepKind::changed;
        }
        going_ = on_step_(step);
        if (options_.progress)
            options_.progress(2, a_.bytes());
    }

    LogReading a_;
    LogReading b_;
    const AlignOptions& options_;
    CallComparer comparer_;
    const std::function<bool(const Step&)>& on_step_;
    std::optional<CallDigest> before_b_;  // the call ahead of the window
    bool going_ = true;
};

}  // namespace

AlignOutcome align_logs(const OpenLog& open_a, const OpenLog& open_b, const AlignOptions& options,
                        const std::function<bool(const Step&)>& on_step)
{
    Digests a;
    Digests b;
    std::future<void> other = std::async(std::launch::async, [&] { b.read(open_b, options.tolerance, nullptr); });
    a.read(open_a, options.tolerance,
           [&options](uint64_t bytes)
           {
               if (options.progress)
                   options.progress(1, bytes);
           });
    other.get();
    AlignOutcome outcome;
    outcome.a = a.state;
    outcome.b = b.state;
    outcome.no_room = !a.file.good() || !b.file.good();
    if (outcome.no_room || !a.state.is_log || !b.state.is_log)
        return outcome;
    SecondPass second(open_a, open_b, options, on_step);
    second.run(a.file, b.file);
    outcome.roots = second.compare_roots();
    return outcome;
}

}  // namespace orvlog::inspect
