// The text of a colour ticket, taken line by line from its front, and the bytes that it tells of.
//
// What is written is told by what the ticket's writer does: where a ticket ends early, the field that is not there
// any more leaves no line, and everything that is open is closed. So where a field is due and the innermost element
// closes, the ticket is a short one. Where an element is due that takes no bytes by itself, the last bytes must
// have been missing, of which this was not to be seen before: the zero behind a string, or a terminator.
//
// Every function that takes something gives false where reading stops, and `ending` says why.

#pragma once

#include "orvlog/colour/gxc/gxc-fields.h"
#include "reader/tickets/ticket-bytes.h"

#include <utility>

namespace orvlog::reader
{

class TicketText
{
public:
    // Reads into `reading`, which is new.
    TicketText(std::string_view text, TicketReading& reading);

    // The first line, which tells the prefix of all lines.
    bool start(std::string_view outermost);
    // What is left open when the ticket was a short one.
    void close_all();

    // The line at hand is this, or begins with it, behind its indent.
    bool at(std::string_view line) const;
    // The line at hand closes the innermost element.
    bool at_close() const;

    bool open(std::string_view name);
    bool close();
    // A line that is told in full.
    bool line(std::string_view line);

    // A value or a group of them. A value that is not there makes the ticket a short one.
    bool fields(const GXC_FieldList& list);
    bool field(const GXC_Field& field)
    {
        return this->field(field, true);
    }
    // A value that is always there.
    bool due_field(const GXC_Field& field)
    {
        return this->field(field, false);
    }

    // A string; `next` is how a line may begin that can come behind it, besides one that closes the element.
    bool string(std::string_view name, std::string_view next);
    // Strings that stand in one line as attributes of the same name.
    bool strings(std::string_view name, uint32_t count);
    // An array of `count` entries and so many zeros that are not the ticket's; fewer entries make it a short one.
    bool array(std::string_view name, GXC_Entry entry, uint64_t count, uint64_t zeros = 0);
    // Bytes in hexadecimal between two tags.
    bool hex(std::string_view name, uint32_t size);
    bool matrix_row();

    // What the text does not say but a ticket holds.
    void put(uint32_t value, uint64_t size = 4);
    // The same, of which the text does not show whether a short ticket still held it.
    void put_end(uint32_t value);

    // Fields taken before, by their place.
    size_t size() const
    {
        return reading_.bytes.size();
    }
    uint32_t uint32_at(size_t place) const;
    uint8_t uint8_at(size_t place) const
    {
        return reading_.bytes[place];
    }
    void set_uint32(size_t place, uint32_t value);

    // Reading stops here. `expected` is what ought to stand here.
    bool damaged(std::string expected);
    // The same, where the line at hand is none of those that may stand here.
    bool no_such_line(std::string expected);

private:
    std::string_view rest() const
    {
        return text_.substr(at_);
    }
    std::string_view indent(size_t level) const;
    std::string closing() const;
    bool find_prefix(std::string_view outermost);
    bool stop(TicketEnding ending, std::string expected)
    {
        return stop_at(at_, ending, std::move(expected));
    }
    bool stop_at(size_t place, TicketEnding ending, std::string expected);
    bool no_line(std::string_view expected);
    bool take(std::string_view literal);
    bool take_head(std::string_view head, bool may_lack);
    bool take_tag(const std::string& tag);
    bool take_value(std::string_view delimiters, const char* what, std::string_view& value);
    bool take_entries(GXC_Entry entry, std::string_view entries, uint64_t kept, uint64_t most, uint64_t& count);
    bool field(const GXC_Field& field, bool may_lack);
    size_t find_end(std::string_view end, std::string_view next) const;
    bool put_string(std::string_view content);

    std::string_view text_;
    TicketReading& reading_;
    std::string indents_;  // the prefix and as many tabs as there can be
    size_t at_ = 0;
    size_t unsure_ = 0;  // how many of the last bytes may have been missing
    std::vector<std::string_view> open_;
};

}  // namespace orvlog::reader
