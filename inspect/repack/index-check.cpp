#include "inspect/repack/index-check.h"

#include "inspect/repack/index-builder.h"
#include "inspect/repack/passing-text.h"
#include "reader/tree/values.h"

#include <algorithm>

namespace orvlog::inspect
{

namespace
{

using reader::Element;
using reader::LogIndex;

constexpr size_t kMostFaults = 10;

class IndexCheck
{
public:
    IndexCheck(std::istream& log, const LogIndex& index)
        : index_(index), kept_(log), builder_([this](uint64_t begin, uint64_t end) { return kept_.find(begin, end); })
    {
    }

    std::vector<std::string> run()
    {
        std::istream text(&kept_);
        reader::ElementReader elements(text, reader::LogForm::log, reader::Data::skip);
        elements.on_damage = [this](const reader::Damage& damage) { builder_.add(damage); };
        elements.on_comment = [this](const reader::Comment& comment) { builder_.add(comment); };
        while (const Element* element = elements.next())
            add(*element);
        kept_.read_rest();
        builder_.finish(kept_.end(), elements.root());
        pass(kept_.end());
        end_frame();
        compare();
        return std::move(faults_);
    }

private:
    void add(const Element& element)
    {
        const uint64_t begin = element.place.byte;
        const uint64_t before = builder_.index().calls;
        builder_.add(element);
        pass(begin);
        calls_ = builder_.index().calls;
        if (next_ < index_.frames.size() && index_.frames[next_].byte == begin)
            begin_frame(before, false);
        const bool is_paint = reader::is_call_name(element.name) && element.has("id");
        if (!is_paint || paint_met_ || next_ == 0)
            return;
        paint_met_ = true;
        const LogIndex::Frame& frame = index_.frames[next_ - 1];
        if (!frame.within)
            hold("the first paint", next_ - 1, frame.first_id, reader::to_uint(element.value("id")));
    }

    // The frames that begin before `end`, which is where an element begins.
    void pass(uint64_t end)
    {
        for (; next_ < index_.frames.size() && index_.frames[next_].byte < end; begin_frame(calls_, done_ > 0))
            count_lines(index_.frames[next_].byte);
        count_lines(end);
        kept_.drop(end);
    }

    void count_lines(uint64_t end)
    {
        line_ += static_cast<uint64_t>(std::ranges::count(kept_.text(done_, end), '\n'));
        done_ = end;
    }

    void begin_frame(uint64_t calls, bool within)
    {
        const LogIndex::Frame& frame = index_.frames[next_];
        end_frame();
        hold("the line", next_, frame.line, line_);
        hold("the count of calls", next_, frame.calls, calls);
        hold("the mark of a call that goes on", next_, frame.within ? 1 : 0, within ? 1 : 0);
        paint_met_ = false;
        ++next_;
    }

    // Of a frame without paints it is told that there is none.
    void end_frame()
    {
        if (next_ > 0 && !paint_met_ && !index_.frames[next_ - 1].within)
            hold("the first paint", next_ - 1, index_.frames[next_ - 1].first_id, reader::kNoNumber);
    }

    void hold(const char* what, size_t frame, uint64_t told, uint64_t due)
    {
        if (told != due)
            fault(std::string(what) + " of frame " + std::to_string(frame + 1));
    }

    void hold(const char* what, bool good)
    {
        if (!good)
            fault(what);
    }

    void fault(const std::string& what)
    {
        if (faults_.size() < kMostFaults)
            faults_.push_back("the index is wrong: " + what + " is another one in the text");
    }

    void compare()
    {
        const LogIndex& due = builder_.index();
        hold("the size", index_.text_size == due.text_size);
        hold("the size of the head", index_.head_size == due.head_size);
        hold("the count of all calls", index_.calls == due.calls);
        hold("the order of paints", !index_.ids_rise || due.ids_rise);
        if (!index_.has_pages)
            return;
        hold("the count of pages", due.has_pages && index_.pages == due.pages);
        hold("the count of warnings", index_.warnings == due.warnings);
        hold("what a replay has to know", index_.facts == due.facts);
        hold("the copy", index_.kept == due.kept);
        hold("what is a drawing, and what it paints,",
             std::ranges::equal(index_.drawings, due.drawings,
                                [](const auto& one, const auto& other)
                                { return one.page == other.page && one.paints == other.paints; }));
        hold("where calls of a drawing are",
             std::ranges::equal(index_.runs, due.runs,
                                [](const auto& one, const auto& other) {
                                    return one.owner == other.owner && one.byte == other.byte && one.line == other.line;
                                }));
    }

    const LogIndex& index_;
    PassingText kept_;
    IndexBuilder builder_;
    std::vector<std::string> faults_;
    size_t next_ = 0;         // the frame that is met next
    uint64_t done_ = 0;       // text that was passed
    uint64_t line_ = 1;       // of its end
    uint64_t calls_ = 0;      // that begin before it
    bool paint_met_ = false;  // in the last frame that was met
};

}  // namespace

std::vector<std::string> check_index(std::istream& log, const LogIndex& index)
{
    return IndexCheck(log, index).run();
}

}  // namespace orvlog::inspect
