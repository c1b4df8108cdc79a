#include "reader/tickets/ticket-text.h"

#include "reader/tickets/ticket-values.h"

#include <algorithm>

namespace orvlog::reader
{

namespace
{

constexpr size_t kMostTabs = 16;

std::string_view without_newline(std::string_view line)
{
    return line.substr(0, line.size() - (line.ends_with('\n') ? 1 : 0));
}

}  // namespace

TicketText::TicketText(std::string_view text, TicketReading& reading) : text_(text), reading_(reading) {}

bool TicketText::find_prefix(std::string_view outermost)
{
    const size_t end = std::min(text_.find('\n'), text_.size());
    const size_t tag = text_.substr(0, end).find(outermost);
    if (tag == text_.npos)
        return false;
    size_t size = tag;
    if (size == 0 && end < text_.size())
        size = std::min(text_.find_first_not_of(' ', end + 1), text_.size()) - end - 1;
    reading_.line_prefix = text_.substr(tag == 0 ? std::min(end + 1, text_.size()) : 0, size);
    indents_ = reading_.line_prefix + std::string(kMostTabs, '\t');
    at_ = tag;
    return true;
}

bool TicketText::start(std::string_view outermost)
{
    const std::string tag = joined({"<", outermost, ">"});
    if (!find_prefix(tag))
    {
        const std::string_view begun = text_.substr(std::min(text_.find_first_not_of(' '), text_.size()));
        return stop(tag.starts_with(begun) ? TicketEnding::cut : TicketEnding::damaged, tag);
    }
    open_.push_back(outermost);
    return take(joined({tag, "\n"}));
}

void TicketText::close_all()
{
    while (!open_.empty() && close())
        continue;
}

std::string_view TicketText::indent(size_t level) const
{
    const size_t tabs_left_out = level < kMostTabs ? kMostTabs - level : 0;
    return std::string_view(indents_).substr(0, indents_.size() - tabs_left_out);
}

// The newline of the last line of all may be missing.
std::string TicketText::closing() const
{
    std::string line(indent(open_.size() - 1));
    line.append("</").append(open_.back()).append(">");
    if (open_.size() > 1 || rest().size() != line.size())
        line += '\n';
    return line;
}

bool TicketText::at(std::string_view line) const
{
    const std::string_view blanks = indent(open_.size());
    return rest().starts_with(blanks) && rest().substr(blanks.size()).starts_with(line);
}

bool TicketText::at_close() const
{
    return rest().starts_with(closing());
}

bool TicketText::stop_at(size_t place, TicketEnding ending, std::string expected)
{
    const std::string_view before = text_.substr(0, place);
    reading_.ending = ending;
    reading_.line = 1 + static_cast<uint64_t>(std::count(before.begin(), before.end(), '\n'));
    reading_.expected = std::move(expected);
    reading_.text_size = at_;
    return false;
}

bool TicketText::damaged(std::string expected)
{
    return stop(TicketEnding::damaged, std::move(expected));
}

bool TicketText::no_such_line(std::string expected)
{
    const bool ends = rest().find('\n') == text_.npos;
    return stop(ends ? TicketEnding::cut : TicketEnding::damaged, std::move(expected));
}

bool TicketText::no_line(std::string_view expected)
{
    const bool ends = joined({indent(open_.size()), expected}).starts_with(rest()) || closing().starts_with(rest());
    return stop(ends ? TicketEnding::cut : TicketEnding::damaged, std::string(without_newline(expected)));
}

bool TicketText::take(std::string_view literal)
{
    if (!rest().starts_with(literal))
        return stop(literal.starts_with(rest()) ? TicketEnding::cut : TicketEnding::damaged,
                    std::string(without_newline(literal)));
    at_ += literal.size();
    return true;
}

// The first part of a line that holds a value.
bool TicketText::take_head(std::string_view head, bool may_lack)
{
    if (at(head))
    {
        at_ += indent(open_.size()).size() + head.size();
        unsure_ = 0;
        return true;
    }
    if (may_lack && at_close())
        return stop(TicketEnding::short_ticket, std::string(head));
    return no_line(head);
}

// The tag of an element that takes no bytes by itself.
bool TicketText::take_tag(const std::string& tag)
{
    if (at(tag) || unsure_ == 0 || !at_close())
        return take_head(tag, false);
    reading_.bytes.resize(reading_.bytes.size() - unsure_);
    unsure_ = 0;
    return stop(TicketEnding::short_ticket, std::string(without_newline(tag)));
}

bool TicketText::open(std::string_view name)
{
    if (!take_tag(joined({"<", name, ">\n"})))
        return false;
    open_.push_back(name);
    return true;
}

bool TicketText::close()
{
    const std::string line = closing();
    if (!rest().starts_with(line))
        return stop(line.starts_with(rest()) ? TicketEnding::cut : TicketEnding::damaged,
                    joined({"</", open_.back(), ">"}));
    at_ += line.size();
    open_.pop_back();
    reading_.text_size = at_;
    return true;
}

bool TicketText::line(std::string_view line)
{
    return take_head(joined({line, "\n"}), false);
}

bool TicketText::fields(const GXC_FieldList& list)
{
    for (size_t i = 0; i < list.count; ++i)
    {
        const GXC_Field& next = list.fields[i];
        bool taken = false;
        if (next.form == GXC_OPEN)
            taken = open(next.name);
        else if (next.form == GXC_CLOSE)
            taken = close();
        else if (next.form != GXC_STRING)
            taken = field(next);
        else if (i + 1 < list.count && list.fields[i + 1].form == GXC_STRING)
            taken = string(next.name, joined({"<", list.fields[i + 1].name, " String=\""}));
        else
            taken = string(next.name, {});
        if (!taken)
            return false;
    }
    return true;
}

void TicketText::put(uint32_t value, uint64_t size)
{
    append_bytes(reading_.bytes, value, size);
    unsure_ = 0;
}

void TicketText::put_end(uint32_t value)
{
    put(value);
    unsure_ = sizeof value;
}

uint32_t TicketText::uint32_at(size_t place) const
{
    const uint8_t* at = reading_.bytes.data() + place;
    return at[0] | static_cast<uint32_t>(at[1]) << 8 | static_cast<uint32_t>(at[2]) << 16 |
           static_cast<uint32_t>(at[3]) << 24;
}

void TicketText::set_uint32(size_t place, uint32_t value)
{
    for (size_t i = 0; i < sizeof value; ++i, value >>= 8)
        reading_.bytes[place + i] = static_cast<uint8_t>(value);
}

}  // namespace orvlog::reader
