#include "inspect/pixels/first-differences.h"

#include <vector>

namespace orvlog::inspect
{

namespace
{

// The steps of a log, one after the other.
class Steps
{
public:
    explicit Steps(StepFile& file) : file_(file)
    {
        next();
    }

    bool more() const
    {
        return more_;
    }
    const PageStep& step() const
    {
        return step_;
    }
    // Steps of a page of which nothing is to be known any more are passed over.
    void next()
    {
        do
        {
            follow();
            more_ = file_.read(step_);
        } while (more_ && step_.page == left_out_ && left_out_ != 0);
    }
    void leave_out(uint32_t page)
    {
        left_out_ = page;
    }
    // Of the page, how many have been made.
    uint32_t made() const
    {
        return made_;
    }
    uint32_t page() const
    {
        return page_;
    }
    uint32_t depth() const
    {
        return depth_;
    }
    // The innermost open group, resource or cell that isn't the same in both logs; 0 if there is none.
    uint64_t odd_one_around() const
    {
        for (size_t i = open_.size(); i-- > 0;)
            if ((open_[i] & 3) != CallNumber::kSame)
                return open_[i];
        return 0;
    }

private:
    static constexpr size_t kDeepest = 10000;

    void follow()
    {
        if (!more_)
            return;
        page_ = step_.page;
        made_ = step_.place;
        if (step_.kind == PageStep::page_begins)
        {
            depth_ = 0;
            open_.assign(1, step_.call);
        }
        const bool begins = step_.kind == PageStep::cell_begins || step_.kind == PageStep::group_begins;
        const bool ends = step_.kind == PageStep::cell_ends || step_.kind == PageStep::group_ends;
        if (begins && open_.size() < kDeepest)
            open_.push_back(step_.call);
        if (ends && !open_.empty())
            open_.pop_back();
        if (step_.kind == PageStep::cell_begins || (step_.kind == PageStep::group_begins && step_.layer != 0))
            ++depth_;
        if (step_.kind == PageStep::cell_ends || (step_.kind == PageStep::group_ends && step_.layer != 0))
            depth_ -= depth_ > 0 ? 1 : 0;
    }

    StepFile& file_;
    PageStep step_;
    bool more_ = false;
    uint32_t left_out_ = 0;
    uint32_t page_ = 0;
    uint32_t made_ = 0;
    uint32_t depth_ = 0;
    std::vector<uint64_t> open_;
};

class Finder
{
public:
    Finder(StepFile& a, StepFile& b, const std::function<void(const FirstDifference&)>& on_page)
        : a_(a), b_(b), on_page_(on_page)
    {
    }

    void run()
    {
        while (a_.more() || b_.more())
            if (a_.more() && b_.more() && belong_together())
                take_both();
            else if (!b_.more() || (a_.more() && a_comes_first()))
                take_one(a_, true);
            else
                take_one(b_, false);
    }

private:
    bool belong_together() const
    {
        return a_.step().call == b_.step().call && a_.step().kind == b_.step().kind;
    }

    bool a_comes_first() const
    {
        const uint64_t a = a_.step().call;
        const uint64_t b = b_.step().call;
        if ((a & 3) == CallNumber::kInA || (b & 3) == CallNumber::kInB)
            return (a & 3) == CallNumber::kInA;
        return a <= b;
    }

    void take_both()
    {
        const PageStep a = a_.step();
        const PageStep b = b_.step();
        if (a.after == b.after)
        {
            a_.next();
            return b_.next();
        }
        FirstDifference found;
        found.page_a = a.page;
        found.page_b = b.page;
        found.place_a = a.place;
        found.place_b = b.place;
        found.call = a.call;
        found.in_layer = a_.depth() > ends(a);
        found.at_end = a.kind == PageStep::page_ends;
        tell(found);
    }

    static uint32_t ends(const PageStep& step)
    {
        const bool layer = step.kind == PageStep::cell_ends || (step.kind == PageStep::group_ends && step.layer != 0);
        return layer ? 1 : 0;
    }

    // A step that only one log has.
    void take_one(Steps& steps, bool is_a)
    {
        const PageStep step = steps.step();
        const bool page = step.kind == PageStep::page_begins;
        const bool surface = step.kind == PageStep::cell_begins || (step.kind == PageStep::group_begins && step.layer);
        if (step.before == step.after && !page && !surface)
            return steps.next();
        FirstDifference found;
        const Steps& other = is_a ? b_ : a_;
        found.page_a = is_a ? step.page : page ? 0 : other.page();
        found.page_b = !is_a ? step.page : page ? 0 : other.page();
        found.place_a = is_a ? step.place : other.made();
        found.place_b = !is_a ? step.place : other.made();
        found.call = step.call;
        found.in_layer = steps.depth() > ends(step);
        tell(found);
    }

    void tell(FirstDifference found)
    {
        const uint64_t around = a_.odd_one_around() != 0 ? a_.odd_one_around() : b_.odd_one_around();
        found.cause = (found.call & 3) != CallNumber::kSame || around == 0 ? found.call : around;
        on_page_(found);
        a_.leave_out(found.page_a);
        b_.leave_out(found.page_b);
        const auto pass = [](Steps& steps, uint32_t page)
        {
            if (steps.more() && page != 0 && steps.step().page == page)
                steps.next();
        };
        pass(a_, found.page_a);
        pass(b_, found.page_b);
    }

    Steps a_;
    Steps b_;
    const std::function<void(const FirstDifference&)>& on_page_;
};

}  // namespace

void find_first_differences(StepFile& a, StepFile& b, const std::function<void(const FirstDifference&)>& on_page)
{
    Finder(a, b, on_page).run();
}

}  // namespace orvlog::inspect
