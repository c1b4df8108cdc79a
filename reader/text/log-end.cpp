#include "reader/text/log-end.h"

#include <algorithm>

namespace orvlog::reader
{

namespace
{

constexpr std::string_view kRootTag = "<ORV";
constexpr std::string_view kClosingTag = "</ORV>";
constexpr std::string_view kCommentStart = "<!--";
constexpr std::string_view kCommentEnd = "-->";
constexpr size_t kTailKept = 4;

std::string_view without_return(std::string_view line)
{
    if (line.ends_with('\r'))
        line.remove_suffix(1);
    return line;
}

// How `held` stands to an empty line followed by a line that starts a comment, with either kind of line end.
enum class Match
{
    none,
    part,
    all
};

Match match_comment_start(std::string_view held)
{
    static constexpr std::string_view kForms[] = {"\n<!--\n", "\r\n<!--\r\n", "\n<!--\r\n", "\r\n<!--\n"};
    Match best = Match::none;
    for (const std::string_view form : kForms)
    {
        if (held == form)
            return Match::all;
        if (form.starts_with(held))
            best = Match::part;
    }
    return best;
}

}  // namespace

bool LogEnd::is_whole() const
{
    return (state_ == State::between && held_.empty()) || state_ == State::past;
}

std::string LogEnd::take_held()
{
    return state_ == State::past ? std::string() : std::move(held_);
}

bool LogEnd::follow(std::string_view text, std::string& out)
{
    while (!text.empty() && state_ != State::past)
    {
        if (state_ == State::between)
        {
            text.remove_prefix(follow_between(text, out));
            continue;
        }
        size_t taken = text.size();
        if (state_ == State::start)
            taken = follow_start(text);
        else if (state_ != State::other)
            taken = follow_lines(text);
        out.append(text.substr(0, taken));
        text.remove_prefix(taken);
    }
    return state_ != State::past;
}

size_t LogEnd::follow_start(std::string_view text)
{
    size_t taken = 0;
    while (taken < text.size() && line_size_ < kRootTag.size())
    {
        if (text[taken] != kRootTag[line_size_])
        {
            state_ = State::other;
            return taken;
        }
        note(text.substr(taken++, 1));
    }
    if (line_size_ == kRootTag.size() && taken < text.size())
        state_ = text[taken] == ' ' || text[taken] == '>' ? State::body : State::other;
    return taken;
}

// Keeps what end_line looks at.
void LogEnd::note(std::string_view part)
{
    if (head_size_ < head_.size())
    {
        const size_t count = std::min(part.size(), head_.size() - head_size_);
        std::copy_n(part.begin(), count, head_.begin() + static_cast<ptrdiff_t>(head_size_));
        head_size_ += count;
    }
    line_size_ += part.size();
    if (state_ == State::body_comment || state_ == State::closing_comment)
    {
        tail_.append(part.substr(part.size() - std::min(part.size(), kTailKept)));
        tail_.erase(0, tail_.size() - std::min(tail_.size(), kTailKept));
    }
}

// Whole lines as far as the state stays the same.
size_t LogEnd::follow_lines(std::string_view text)
{
    const State state = state_;
    size_t taken = 0;
    while (taken < text.size() && state_ == state)
    {
        const size_t end = std::min(text.find('\n', taken), text.size());
        note(text.substr(taken, end - taken));
        taken = end;
        if (end == text.size())
            break;
        ++taken;
        end_line();
    }
    return taken;
}

void LogEnd::end_line()
{
    const bool is_short = line_size_ < head_.size();
    const std::string_view line = is_short ? without_return(line_head()) : std::string_view();
    const bool ends_comment = without_return(tail_).ends_with(kCommentEnd);
    if ((state_ == State::body && line == kClosingTag) || (state_ == State::closing_comment && ends_comment))
        state_ = State::between;
    else if (state_ == State::body && line == kCommentStart)
        state_ = State::body_comment;
    else if (state_ == State::body_comment && ends_comment)
        state_ = State::body;
    head_size_ = 0;
    line_size_ = 0;
    tail_.clear();
}

size_t LogEnd::follow_between(std::string_view text, std::string& out)
{
    size_t taken = 0;
    while (taken < text.size())
    {
        held_ += text[taken++];
        const Match match = match_comment_start(held_);
        if (match == Match::part)
            continue;
        state_ = match == Match::all ? State::closing_comment : State::past;
        if (match == Match::all)
            out += held_;
        held_.clear();
        break;
    }
    return taken;
}

}  // namespace orvlog::reader
