// Values of a ticket's text: single ones, strings, arrays, bytes.

#include "reader/tickets/ticket-text.h"
#include "reader/tickets/ticket-values.h"

#include <limits>

namespace orvlog::reader
{

namespace
{

constexpr std::string_view kEndOfValue = "\" />\n";

// How a form of value is written: its attribute, what it is in words, and its size in a ticket.
struct Form
{
    const char* attribute;
    const char* what;
    uint64_t size;
};

Form form_of(const GXC_Field& field)
{
    switch (field.form)
    {
    case GXC_BOOL:
        return {"Bool", "TRUE or FALSE", 1};
    case GXC_UINT8:
        return {"UInt8", "a number up to 255", 1};
    case GXC_UINT32:
        return {"UInt32", "a number up to 4294967295", 4};
    case GXC_FLOAT:
        return {"float", "a number with six decimals", 4};
    default:
        return {field.family, "a name of the family", 4};
    }
}

Form form_of(GXC_Entry entry)
{
    switch (entry)
    {
    case GXC_ENTRY_BOOL:
        return {"BoolArray", "TRUE or FALSE", 1};
    case GXC_ENTRY_UINT16:
        return {"UInt16_array", "a number up to 65535", 2};
    case GXC_ENTRY_FLOAT:
        return {"float_array", "a number with six decimals", 4};
    default:
        return {"UInt8_array", "a number up to 255", 1};
    }
}

std::optional<uint32_t> value_of_text(const GXC_Field& field, std::string_view text)
{
    switch (field.form)
    {
    case GXC_BOOL:
        return bool_of_text(text);
    case GXC_UINT8:
        return unsigned_of_text(text, std::numeric_limits<uint8_t>::max());
    case GXC_UINT32:
        return unsigned_of_text(text, std::numeric_limits<uint32_t>::max());
    case GXC_FLOAT:
        return float_of_text(text);
    default:
        return named_of_text(field.family, text);
    }
}

std::string head_of(std::string_view name, std::string_view attribute)
{
    return joined({"<", name, " ", attribute, "=\""});
}

// The value of an upper-case hexadecimal digit, or 16.
uint32_t digit(char c)
{
    if (c >= '0' && c <= '9')
        return static_cast<uint32_t>(c - '0');
    return c >= 'A' && c <= 'F' ? static_cast<uint32_t>(c - 'A') + 10 : 16;
}

}  // namespace

// What stands before one of the delimiters, within the line.
bool TicketText::take_value(std::string_view delimiters, const char* what, std::string_view& value)
{
    const size_t end = rest().find_first_of(delimiters);
    if (end == text_.npos)
        return stop(TicketEnding::cut, what);
    if (rest()[end] == '\n')
        return damaged(what);
    value = rest().substr(0, end);
    at_ += end;
    return true;
}

bool TicketText::field(const GXC_Field& field, bool may_lack)
{
    const Form form = form_of(field);
    std::string_view value;
    if (!take_head(head_of(field.name, form.attribute), may_lack) || !take_value("\"\n", form.what, value))
        return false;
    const std::optional<uint32_t> bits = value_of_text(field, value);
    if (!bits)
        return damaged(form.what);
    if (!take(kEndOfValue))
        return false;
    put(*bits, form.size);
    return true;
}

bool TicketText::matrix_row()
{
    constexpr const char* kWhat = "a number with six decimals";
    constexpr std::string_view kBehind[3] = {" float2=", " float3=", "  />\n"};
    uint32_t row[3] = {};
    if (!take_head("<MatrixRowfloat1=", true))
        return false;
    for (size_t i = 0; i < 3; ++i)
    {
        std::string_view value;
        if (!take_value(" \n", kWhat, value))
            return false;
        const std::optional<uint32_t> bits = float_of_text(value);
        if (!bits)
            return damaged(kWhat);
        row[i] = *bits;
        if (!take(kBehind[i]))
            return false;
    }
    for (const uint32_t bits : row)
        put(bits);
    return true;
}

// Strings stand as they are, quotes and newlines too: their end is where a line may follow that can come then.
size_t TicketText::find_end(std::string_view end, std::string_view next) const
{
    const std::string close_line = closing();
    const std::string next_line = joined({indent(open_.size()), next});
    const size_t first = text_.find(end, at_);
    for (size_t found = first; found != text_.npos; found = text_.find(end, found + 1))
    {
        const std::string_view behind = text_.substr(found + end.size());
        if (behind.starts_with(close_line) || (!next.empty() && behind.starts_with(next_line)))
            return found;
    }
    return first;
}

bool TicketText::put_string(std::string_view content)
{
    if (content.find('\0') != content.npos)
        return damaged("a string without a zero");
    reading_.bytes.insert(reading_.bytes.end(), content.begin(), content.end());
    put(0, 1);
    unsure_ = content.empty() ? 0 : 1;
    return true;
}

bool TicketText::string(std::string_view name, std::string_view next)
{
    if (!take_head(head_of(name, "String"), true))
        return false;
    const size_t end = find_end(kEndOfValue, next);
    if (end == text_.npos)
        return stop(TicketEnding::cut, "the end of a string");
    if (!put_string(text_.substr(at_, end - at_)))
        return false;
    at_ = end;
    return take(kEndOfValue);
}

bool TicketText::strings(std::string_view name, uint32_t count)
{
    constexpr std::string_view kEndOfLine = " />\n";
    constexpr std::string_view kStart = " String=\"";
    constexpr std::string_view kBetween = "\" String=\"";
    if (!take_head(joined({"<", name}), false))
        return false;
    const size_t end = find_end(kEndOfLine, {});
    if (end == text_.npos)
        return stop(TicketEnding::cut, "strings");
    std::string_view left = text_.substr(at_, end - at_);
    uint32_t found = 0;
    if (!left.empty())
    {
        if (count == 0 || left.size() <= kStart.size() || !left.starts_with(kStart) || !left.ends_with('"'))
            return damaged(count == 0 ? "no string" : "strings");
        left = left.substr(kStart.size(), left.size() - kStart.size() - 1);
        for (found = 1;; ++found)
        {
            const size_t behind = found < count ? left.find(kBetween) : left.npos;
            if (!put_string(left.substr(0, behind)))
                return false;
            if (behind == left.npos)
                break;
            left.remove_prefix(behind + kBetween.size());
        }
    }
    at_ = end;
    if (!take(kEndOfLine))
        return false;
    return found == count || stop_at(end, TicketEnding::short_ticket, joined({std::to_string(count), " strings"}));
}

bool TicketText::take_entries(GXC_Entry entry, std::string_view entries, uint64_t kept, uint64_t most, uint64_t& count)
{
    const Form form = form_of(entry);
    for (bool more = !entries.empty(); more; ++count)
    {
        const size_t blank = entries.find(' ');
        const std::optional<uint32_t> value = entry_of_text(entry, entries.substr(0, blank));
        if (!value || count == most)
            return damaged(value ? joined({"no more than ", std::to_string(most), " entries"}) : form.what);
        if (count < kept)
            put(*value, form.size);
        else if (*value != 0)
            reading_.has_stray_numbers = true;
        more = blank != entries.npos;
        entries.remove_prefix(more ? blank + 1 : 0);
    }
    return true;
}

bool TicketText::array(std::string_view name, GXC_Entry entry, uint64_t count, uint64_t zeros)
{
    const Form form = form_of(entry);
    if (!take_head(head_of(name, form.attribute), false))
        return false;
    uint64_t there = 0;
    const size_t end = rest().find_first_of("\"\n");
    if (end == text_.npos)
    {
        const size_t last = rest().rfind(' ');
        const std::string_view whole = last != text_.npos ? rest().substr(0, last) : std::string_view();
        return take_entries(entry, whole, count, count + zeros, there) && stop(TicketEnding::cut, form.what);
    }
    if (!take_entries(entry, rest().substr(0, end), count, count + zeros, there))
        return false;
    at_ += end;
    const size_t place = at_;
    if (!take(kEndOfValue))
        return false;
    if (there == count + zeros)
        return true;
    return stop_at(place, there < count ? TicketEnding::short_ticket : TicketEnding::damaged,
                   joined({std::to_string(count + zeros), " entries"}));
}

bool TicketText::hex(std::string_view name, uint32_t size)
{
    if (!take_tag(joined({"<", name, ">"})))
        return false;
    uint32_t there = 0;
    for (; rest().size() >= 2 && digit(rest()[0]) < 16 && digit(rest()[1]) < 16; ++there, at_ += 2)
    {
        if (there == size)
            return damaged(joined({"no more than ", std::to_string(size), " bytes"}));
        put(digit(rest()[0]) << 4 | digit(rest()[1]), 1);
    }
    if (rest().empty() || (rest().size() == 1 && digit(rest()[0]) < 16))
        return stop(TicketEnding::cut, "two hexadecimal digits");
    const size_t place = at_;
    if (!take(joined({"</", name, ">\n"})))
        return false;
    return there == size || stop_at(place, TicketEnding::short_ticket, joined({std::to_string(size), " bytes"}));
}

}  // namespace orvlog::reader
