// A colour ticket's bytes, made again from its text in a log, for colour engines to be fed with.
//
// The text is what docs/ticket-text.md tells of, from the line with <GXC_ColorTickets> to the line that closes it.
// Bytes made of it give the same text again. What a text does not tell is made up:
//
//   false                     the byte 0
//   a value without a name    4294967295; for the type of a definition 7 if it has a post-render LUT and else 8
//   a float                   the one nearest to its six decimals; of NaN the quiet one of its sign
//   the end of a CIE record   four zeros
//   unknown extensions, unknown sections, bytes behind the ticket: not there
//   behind the ticket's last field, and behind a string that the ticket ended in, what ends it
//
// Sizes and counts are not made up: they stand in the text. Strings may hold quotes and newlines; one that holds
// what can follow it, from the end of its own line into the next one, ends there.

#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace orvlog::reader
{

enum class TicketEnding
{
    whole,
    short_ticket,  // the text is whole, but of a ticket that ended early; so do the bytes
    cut,           // the text ends early
    damaged        // the text is not one that is written
};

// One definition of a ticket.
struct TicketDefinition
{
    uint32_t marker = 0;     // what stands before the definition in its list
    uint32_t alternate = 0;  // 0 for the definition itself, 1 for its alternate, 2 for that one's, ...
    uint32_t type = 0;       // GCM_CSDTYPE_*
    uint8_t channels = 0;
    // The ICC profile, of a definition by a profile, as a place in the ticket's bytes. What is there of it: the
    // profile itself can be longer where the ticket is not whole.
    size_t profile_at = 0;
    size_t profile_size = 0;
};

struct TicketReading
{
    // The ticket; if the text is cut or damaged, its fields up to there, without any end to them.
    std::vector<uint8_t> bytes;
    TicketEnding ending = TicketEnding::damaged;
    // Where reading stopped if the ending is not `whole`: the line, the first being 1, and what ought to stand
    // there, in the words of the text or in English.
    uint64_t line = 0;
    std::string expected;
    // The bytes of text that were read. What stands behind the ticket is not looked at.
    size_t text_size = 0;

    // What the text is written with, besides the bytes: the start of each line, and the family, a value of
    // GCM_ColorSpaceFamily, GXC_FAMILY_UNKNOWN, or -1.
    std::string line_prefix;
    int32_t family = -1;
    // The second half of a LUT of 16 bits, which is no part of the ticket, holds other numbers than 0. Writing the
    // ticket gives zeros in their place.
    bool has_stray_numbers = false;

    std::vector<TicketDefinition> definitions;

    std::span<const uint8_t> profile(const TicketDefinition& definition) const
    {
        return std::span(bytes).subspan(definition.profile_at, definition.profile_size);
    }
};

// Reads the text of a ticket, which begins with its first line; that line may lack its indent, and the last one its
// newline. Lines may end in carriage return and line feed if the first one does. Any text will do: memory stays within
// a small multiple of the text's size.
TicketReading read_ticket_text(std::string_view text);

}  // namespace orvlog::reader
