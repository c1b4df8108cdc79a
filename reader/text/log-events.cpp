#include "reader/text/log-events.h"

#include "reader/text/character-set.h"
#include "reader/text/log-pieces.h"
#include "reader/text/log-text.h"

#include <algorithm>
#include <cstring>

namespace orvlog::reader
{

namespace
{

constexpr std::string_view kTicketRoot = "GXC_ColorTickets";
constexpr std::string_view kTicketEnd = "</GXC_ColorTickets>";
constexpr std::string_view kTicketHolder = "</GCM_ColorTicket>";
constexpr std::string_view kCommentStart = "<!--";
constexpr std::string_view kCommentEnd = "-->";
constexpr CharacterSet kBlanks(" \t");
constexpr CharacterSet kTagEnds("<>");
constexpr CharacterSet kRowCharacters("0123456789abcdefinx+-. \r");
constexpr size_t kCallIndent = 2;
constexpr size_t kMostAttributes = 1024;  // of a tag; no record has a tenth as many

std::string_view without_return(std::string_view line)
{
    if (line.ends_with('\r'))
        line.remove_suffix(1);
    return line;
}

size_t blanks(std::string_view line)
{
    return kBlanks.first_not_in(line);
}

bool starts_name(char c)
{
    return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || c == '_';
}

size_t name_length(std::string_view text)
{
    size_t count = 0;
    while (count < text.size() && text[count] > ' ' && text[count] != '>' && text[count] != '/' && text[count] != '=')
        ++count;
    return count;
}

bool is_row(std::string_view line)
{
    return kRowCharacters.first_not_in(line) == line.size();
}

// Calls stand right in the root; no other element there has such a name.
bool is_call(std::string_view name, size_t indent)
{
    return indent == kCallIndent && name.starts_with("ORV_") && name.find('.') == std::string_view::npos;
}

std::string quoted(std::string_view name)
{
    constexpr size_t kMost = 60;
    std::string text = "'";
    for (const char c : name.substr(0, kMost))
        text += c >= ' ' && c <= '~' ? c : '?';
    return text + (name.size() > kMost ? "...'" : "'");
}

}  // namespace

struct LogEvents::Pending
{
    EventKind kind;
    Place place;
    std::string text;
    bool implied = false;
};

class LogEvents::Text : public LogText
{
    using LogText::LogText;
};

LogEvents::LogEvents(std::istream& source, LogForm form) : text_(std::make_unique<Text>(source)), form_(form)
{
    if (const auto* pieces = dynamic_cast<const LogPieces*>(&source); pieces != nullptr)
        jumps_ = pieces->jumps();
}

LogEvents::~LogEvents() = default;

bool LogEvents::is_log() const
{
    return began_;
}

bool LogEvents::is_cut() const
{
    return cut_;
}

bool LogEvents::is_garbled() const
{
    return garbled_;
}

bool LogEvents::is_coded() const
{
    return text_->is_coded();
}

bool LogEvents::is_compressed() const
{
    return text_->is_compressed();
}

uint64_t LogEvents::bytes_used() const
{
    return text_->bytes_used();
}

void LogEvents::step(size_t count, size_t lines)
{
    text_->skip(count);
    read_ += count;
    place_.byte += count;
    place_.line += lines;
}

void LogEvents::jump()
{
    while (next_jump_ < jumps_.size() && jumps_[next_jump_].read <= read_)
        place_ = jumps_[next_jump_++].place;
}

void LogEvents::damage(std::string text, Place place)
{
    pending_.push_back({EventKind::damage, place, std::move(text)});
}

// Damage that can't come from a text that ends early, unless it is on the last line.
void LogEvents::strange(std::string text, Place place)
{
    strange_line_ = strange_line_ != 0 ? strange_line_ : place.line;
    damage(std::move(text), place);
}

// Closes all that is open beyond `depth`, the innermost first.
void LogEvents::imply_closes(size_t depth, Place place)
{
    for (; depth_ > depth; --depth_)
        pending_.push_back({EventKind::close, place, open_[depth_ - 1], true});
}

bool LogEvents::take_pending(Event& event)
{
    if (next_pending_ == pending_.size())
    {
        pending_.clear();
        next_pending_ = 0;
        return false;
    }
    const Pending& pending = pending_[next_pending_++];
    event = {};
    event.kind = pending.kind;
    event.place = pending.place;
    event.implied = pending.implied;
    (pending.kind == EventKind::close ? event.name : event.text) = pending.text;
    return true;
}

bool LogEvents::next(Event& event)
{
    while (true)
    {
        if (close_next_)
        {
            close_next_ = false;
            event = {};
            event.place = place_;
            event.name = closed_;
            return true;
        }
        if (take_pending(event))
            return true;
        if (ended_)
            return false;
        if (read_event(event))
            return true;
    }
}

// False if nothing came of it; then something may be pending.
bool LogEvents::read_event(Event& event)
{
    if (!began_)
    {
        const std::string_view head = text_->look(5);
        began_ = form_ == LogForm::fragment || head.starts_with("<ORV ") || head.starts_with("<ORV>");
        if (!began_)
        {
            ended_ = true;
            return false;
        }
    }
    jump();
    if (text_->at_end())
        return finish();
    const std::string_view line = text_->line(0, kLongestLine);
    event = {};
    event.place = place_;
    if (ticket_depth_ != 0)
        return read_ticket(event, line, blanks(line));
    const size_t indent = blanks(line);
    const bool empty = without_return(line.substr(indent)).empty();
    if (root_closed_ && (!empty || line.size() == text_->seen().size()) && !line.starts_with(kCommentStart))
    {
        ended_ = true;
        return false;
    }
    if (empty)
    {
        step(std::min(line.size() + 1, text_->seen().size()), 1);
        return false;
    }
    if (line[indent] == '<')
        return read_tag(event, line);
    return read_row(event, line);
}

bool LogEvents::read_row(Event& event, std::string_view line)
{
    const bool in_buffer = depth_ > 0 && open_[depth_ - 1].starts_with("Buffer");
    const size_t size = in_buffer ? std::min(line.find('<'), line.size()) : line.size();
    const bool line_end = size == line.size() && size < text_->seen().size();
    event.kind = EventKind::row;
    event.text = without_return(line.substr(0, size));
    if (!in_buffer || !is_row(event.text))
        strange("text that is neither a tag nor a row of numbers", place_);
    if (size == text_->seen().size())
    {
        // A row without its end may have lost part of its last number.
        const size_t last = event.text.find_last_of(' ');
        event.text = event.text.substr(0, last == std::string_view::npos ? 0 : last + 1);
    }
    step(size + (line_end ? 1 : 0), line_end ? 1 : 0);
    return true;
}

bool LogEvents::finish()
{
    ended_ = true;
    const bool open = form_ == LogForm::log ? !root_closed_ : depth_ > 0;
    garbled_ = text_->is_damaged() || (open && strange_line_ != 0 && strange_line_ < place_.line);
    cut_ = open && !(garbled_ && text_->is_coded());
    if (text_->is_damaged())
        damage(text_->is_compressed() ? "the compressed bytes are damaged from here on"
                                      : "the coded bytes cannot be decoded further",
               place_);
    else if (garbled_ && !cut_)
        damage("the coded bytes are damaged before this place, where the text ends", place_);
    else if (cut_)
        damage("the log ends here, before its end", place_);
    imply_closes(0, place_);
    return false;
}

bool LogEvents::read_tag(Event& event, std::string_view line)
{
    const size_t indent = blanks(line);
    const std::string_view tag = line.substr(indent);
    if (tag.starts_with(kCommentStart))
        return read_comment(event);
    if (tag.size() > 2 && tag[1] == '/')
        return read_close(event, line, indent);
    if (tag.size() > 1 && starts_name(tag[1]))
        return read_open(event, line, indent);
    const bool whole = line.size() < text_->seen().size();
    if (whole)
        strange("a tag without a name", place_);
    step(line.size() + (whole ? 1 : 0), 1);
    return false;
}

bool LogEvents::read_close(Event& event, std::string_view line, size_t indent)
{
    const std::string_view tag = line.substr(indent + 2);
    const std::string_view name = tag.substr(0, name_length(tag));
    const bool ended = name.size() < tag.size() && tag[name.size()] == '>';
    const bool whole = line.size() < text_->seen().size();
    const Place place = place_;
    if (ended && depth_ > 0 && open_[depth_ - 1] == name)
    {
        --depth_;
        event.kind = EventKind::close;
        event.name = open_[depth_];
        root_closed_ = depth_ == 0 && form_ == LogForm::log;
        if (without_return(tag.substr(name.size() + 1)).empty())
            step(line.size() + (whole ? 1 : 0), 1);
        else
            step(indent + 2 + name.size() + 1, 0);
        return true;
    }
    const std::string copy(name);
    step(line.size() + (whole ? 1 : 0), 1);
    if (!whole && !ended)
        return false;
    size_t depth = depth_;
    while (depth > 0 && open_[depth - 1] != copy)
        --depth;
    if (!ended || depth == 0)
    {
        strange("an end tag of " + quoted(copy) + " where none is due", place);
        return false;
    }
    damage("no end tag of " + quoted(open_[depth_ - 1]), place);
    imply_closes(depth - 1, place);
    pending_.back().implied = false;
    root_closed_ = depth_ == 0 && form_ == LogForm::log;
    return false;
}

// Reads name="value" at `at`; false for anything else.
bool LogEvents::read_attribute(std::string_view text, size_t& at)
{
    const size_t length = name_length(text.substr(at));
    const size_t value = at + length + 2;
    if (length == 0 || value > text.size() || text[value - 2] != '=' || text[value - 1] != '"')
        return false;
    const size_t end = text.find('"', value);
    if (end == std::string_view::npos || attributes_.size() == kMostAttributes)
        return false;
    attributes_.push_back({text.substr(at, length), text.substr(value, end - value)});
    at = end + 1;
    return true;
}

// `tag` is all between the angle brackets. Gives false where it is not understood to its end.
bool LogEvents::read_attributes(std::string_view tag)
{
    attributes_.clear();
    size_t at = 0;
    while (true)
    {
        while (at < tag.size() && tag[at] == ' ')
            ++at;
        if (at == tag.size())
            return true;
        if (!read_attribute(tag, at))
            return false;
    }
}

bool LogEvents::read_open(Event& event, std::string_view line, size_t indent)
{
    const std::string_view tag = line.substr(indent + 1);
    const size_t name_size = name_length(tag);
    if (depth_ > 1 && is_call(tag.substr(0, name_size), indent))
    {
        damage("no end tag of " + quoted(open_[depth_ - 1]), place_);
        imply_closes(1, place_);
        return false;
    }
    if (depth_ == kDeepest)
    {
        damage("elements within elements, too many", place_);
        step(std::min(line.size() + 1, text_->seen().size()), 1);
        return false;
    }
    event.indent = indent;
    const size_t end = kTagEnds.first_in(tag, name_size);
    if (end == tag.size())
        return read_open_in_parts(event, line, indent);
    if (tag[end] == '<')
        return read_unended(event, tag.substr(0, end), indent);
    const size_t behind = indent + 1 + end + 1;
    const bool to_line_end = without_return(line.substr(behind)).empty();
    if (tag.substr(0, name_size) == kTicketRoot)
        ticket_depth_ = depth_ + 1;
    else if (to_line_end)
        step(std::min(line.size() + 1, text_->seen().size()), 1);
    else
        step(behind, 0);
    finish_open(event, tag.substr(0, end), true);
    return true;
}

// A tag whose end was never written: the next one follows in its line, behind its own indent.
bool LogEvents::read_unended(Event& event, std::string_view tag, size_t indent)
{
    const size_t size = std::min(tag.find_last_not_of(' ') + 1, tag.size());
    damage("no end of the tag " + quoted(tag.substr(0, name_length(tag))), place_);
    step(indent + 1 + size, 0);
    finish_open(event, tag.substr(0, size), true);
    return true;
}

void LogEvents::finish_open(Event& event, std::string_view tag, bool whole)
{
    event.kind = EventKind::open;
    event.self_closed = tag.ends_with('/');
    if (event.self_closed)
        tag.remove_suffix(1);
    const size_t name_size = name_length(tag);
    if (!read_attributes(tag.substr(name_size)) && whole)
        strange("attributes of " + quoted(tag.substr(0, name_size)) + " that are not understood", event.place);
    if (event.self_closed)
    {
        closed_.assign(tag.substr(0, name_size));
        event.name = closed_;
        close_next_ = true;
    }
    else
    {
        if (open_.size() == depth_)
            open_.emplace_back();
        open_[depth_].assign(tag.substr(0, name_size));
        event.name = open_[depth_++];
    }
    event.attributes = attributes_;
}

// A tag that goes on behind comments, or that has lost its end.
bool LogEvents::read_open_in_parts(Event& event, std::string_view line, size_t indent)
{
    held_.assign(without_return(line.substr(indent + 1)));
    size_t at = line.size();
    bool whole = false;
    while (!whole)
    {
        const std::string_view next = text_->line(at + 1, kLongestLine);
        const size_t end = without_return(next) == kCommentStart ? comment_end(at + 1) : 0;
        if (end == 0)
            break;
        pending_.push_back({EventKind::comment, place_of(at + 1), comment_});
        const std::string_view rest = text_->line(end, kLongestLine);
        const size_t tag_end = rest.find('>');
        whole = tag_end != std::string_view::npos;
        held_.append(without_return(rest.substr(0, tag_end)));
        at = end + (whole ? tag_end + 1 : rest.size());
    }
    const std::string_view seen = text_->look(at + 1).substr(0, at + 1);
    const bool cut = !whole && !seen.ends_with('\n');
    if (!whole && !cut)
        damage("no end of the tag " + quoted(held_.substr(0, name_length(held_))), place_);
    const size_t count = std::min(seen.ends_with('\n') ? at + 1 : at, seen.size());
    const auto lines =
        static_cast<size_t>(std::count(seen.begin(), seen.begin() + static_cast<ptrdiff_t>(count), '\n'));
    step(count, lines);
    if (!whole && name_length(held_) == held_.size())
        return false;
    finish_open(event, held_, whole);
    return true;
}

Place LogEvents::place_of(size_t at)
{
    const std::string_view seen = text_->look(at).substr(0, at);
    return {place_.byte + at, place_.line + static_cast<uint64_t>(std::count(seen.begin(), seen.end(), '\n'))};
}

// What may stand behind a comment: a tag, the rest of one, another comment, a row of numbers, or nothing.
bool LogEvents::may_follow_comment(size_t at)
{
    const std::string_view line = without_return(text_->line(at, kLongestLine));
    const size_t indent = blanks(line);
    const std::string_view rest = line.substr(indent);
    if (rest.empty())
    {
        const std::string_view seen = text_->look(at + indent + 2 + kCommentStart.size()).substr(at + indent);
        return seen.empty() || seen.starts_with("\n<!--") || seen.starts_with("\r\n<!--");
    }
    if (rest.starts_with(">") || rest.starts_with("/>"))
        return true;
    if (rest[0] == '<')
        return rest.size() > 1 && (starts_name(rest[1]) || rest[1] == '/');
    const size_t name = name_length(rest);
    return is_row(rest) || (name > 0 && rest.substr(name).starts_with("=\""));
}

// `from` is where a comment begins. Gives where the text goes on behind it, and 0 if it has no end. A comment may
// hold its own end mark: then the end is the one behind which a log can go on.
size_t LogEvents::comment_end(size_t from)
{
    size_t at = from + text_->line(from, kLongestLine).size() + 1;
    const size_t begin = at;
    while (at - from < kLongestComment)
    {
        const std::string_view line = text_->line(at, kLongestLine);
        const size_t size = line.size();
        const bool marked = without_return(line).ends_with(kCommentEnd);
        if (text_->look(at + size + 1).size() <= at + size && !marked)
            return 0;
        if (marked && may_follow_comment(at + size + 1))
        {
            const std::string_view text = without_return(text_->seen().substr(begin, at + size - begin));
            comment_.assign(text.substr(0, text.size() - kCommentEnd.size()));
            return at + size + 1;
        }
        at += size + 1;
    }
    return 0;
}

// A comment that the log's end has cut is all that is left; where tags follow it has lost its end mark.
size_t LogEvents::cut_comment_end()
{
    size_t at = text_->line(0, kLongestLine).size() + 1;
    const size_t begin = at;
    while (text_->look(at + 1).size() > at && at < kLongestComment)
    {
        const std::string_view line = text_->line(at, kLongestLine);
        const std::string_view rest = line.substr(blanks(line));
        if (rest.size() > 1 && rest[0] == '<' && (starts_name(rest[1]) || rest[1] == '/'))
            return 0;
        at += line.size() + 1;
    }
    const std::string_view seen = text_->seen();
    if (at < seen.size() || begin > seen.size())
        return 0;
    comment_.assign(seen.substr(begin));
    return seen.size();
}

bool LogEvents::read_comment(Event& event)
{
    size_t end = comment_end(0);
    if (end == 0)
        end = cut_comment_end();
    if (end == 0)
    {
        damage("a comment without an end", place_);
        step(text_->look(kCommentStart.size()).size() < kCommentStart.size() ? 0 : kCommentStart.size(), 0);
        return false;
    }
    event.kind = EventKind::comment;
    event.text = comment_;
    const std::string_view seen = text_->look(end).substr(0, end);
    step(seen.size(), static_cast<size_t>(std::count(seen.begin(), seen.end(), '\n')));
    return true;
}

// Ticket text has no rules of its own but for its first and last line.
bool LogEvents::read_ticket(Event& event, std::string_view line, size_t indent)
{
    const std::string_view text = without_return(line.substr(indent));
    const bool outside = line.substr(0, indent).find('\t') == std::string_view::npos &&
                         (text == kTicketHolder || is_call(text.substr(std::min<size_t>(text.size(), 1)), indent));
    if (outside)
    {
        damage("no end of a colour ticket", place_);
        imply_closes(ticket_depth_ - 1, place_);
        ticket_depth_ = 0;
        return false;
    }
    event.kind = EventKind::row;
    event.text = line;
    if (text == kTicketEnd)
    {
        ticket_depth_ = 0;
        pending_.push_back({EventKind::close, place_, std::string(kTicketRoot)});
        --depth_;
    }
    step(std::min(line.size() + 1, text_->seen().size()), 1);
    return true;
}

}  // namespace orvlog::reader
