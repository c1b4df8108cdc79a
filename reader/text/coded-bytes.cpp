#include "reader/text/coded-bytes.h"

#include "reader/tickets/ticket-bytes.h"

#include <algorithm>
#include <array>
#include <new>
#include <stdexcept>

namespace orvlog::reader
{

namespace
{

constexpr std::string_view kTicketStart = "<GXC_ColorTickets>\n";
constexpr std::string_view kTicketEnd = "</GXC_ColorTickets>\n";
constexpr std::string_view kTicketElement = "<GCM_ColorTicket ";
constexpr size_t kDeepestIndent = 50;
constexpr size_t kLineKept = kDeepestIndent + kTicketElement.size();
// What must be in view to know that no ticket text begins at the first byte of it.
constexpr size_t kTicketView = kDeepestIndent + kTicketStart.size();

// How much text of tickets is read more than once in a log.
constexpr uint64_t kMostLookedAgain = uint64_t{64} << 20;

// The coder takes its blocks at its creation and asks for nothing else.
GMM_Allocator* coder_memory()
{
    static GMM_Allocator allocator = []
    {
        GMM_Allocator made = {};
        made.gmm_Alloc = [](GMM_Allocator*, uint64_t size, uint32_t) -> void*
        { return ::operator new(static_cast<size_t>(size), std::nothrow); };
        made.gmm_Free = [](GMM_Allocator*, void* block) { ::operator delete(block); };
        return made;
    }();
    return &allocator;
}

const uint8_t* as_bytes(std::string_view text)
{
    return reinterpret_cast<const uint8_t*>(text.data());
}

size_t indent_of(std::string_view line)
{
    return std::min(line.find_first_not_of(' '), line.size());
}

}  // namespace

CodedBytes::CodedBytes(RawBytes& source) : source_(source), coder_(AHC_DecoderCreate(coder_memory()))
{
    if (!coder_)
        throw std::bad_alloc();
}

bool CodedBytes::read(std::string& out)
{
    if (ended_)
        return false;
    const std::string_view raw = source_.look(2 * kTicketView);
    // The stream of no text is a byte 0 alone, which could be the beginning of another.
    of_nothing_ = !begun_ && raw == std::string_view("\0", 1);
    if (raw.empty() || of_nothing_)
    {
        ended_ = true;
        if (begun_)
            decode_last(out);
    }
    else if (starts_ticket(raw))
    {
        take_ticket();
    }
    else
    {
        const size_t count = std::max<size_t>(coded_before_ticket(raw), 1);
        decode(raw.substr(0, count), out);
        source_.skip(count);
    }
    return !ended_ || !out.empty();
}

// Decodes a piece of which all is used.
void CodedBytes::decode(std::string_view coded, std::string& out)
{
    begun_ = true;
    AHC_SetInput(coder_.get(), as_bytes(coded), static_cast<uint32_t>(coded.size()));
    while (coder_->input_count > 0 && !ended_)
    {
        if (!step(4096, out) && coder_->input_count > 0)
        {
            damaged_ = true;
            ended_ = true;
        }
    }
}

// A byte behind the end lets the decoder go on; a symbol that used a bit of it was not whole.
void CodedBytes::decode_last(std::string& out)
{
    const uint8_t behind = 0;
    AHC_SetInput(coder_.get(), &behind, 1);
    uint8_t symbol = 0;
    while (AHC_Decode(coder_.get(), &symbol, 1) == 1 && coder_->input_count == 1)
        put({reinterpret_cast<const char*>(&symbol), 1}, out);
    out += ticket_;
}

bool CodedBytes::step(uint32_t limit, std::string& out)
{
    std::array<uint8_t, 4096> block;
    // One by one where the end of the line is awaited.
    const uint32_t wanted = ticket_.empty() ? limit : 1;
    const int32_t count = AHC_Decode(coder_.get(), block.data(), wanted);
    put({reinterpret_cast<const char*>(block.data()), static_cast<size_t>(count)}, out);
    return count > 0;
}

void CodedBytes::put(std::string_view text, std::string& out)
{
    out += text;
    const size_t newline = text.rfind('\n');
    if (newline != std::string_view::npos)
    {
        line_.clear();
        text.remove_prefix(newline + 1);
        out += ticket_;
        ticket_.clear();
    }
    if (line_.size() < kLineKept)
        line_ += text.substr(0, kLineKept - line_.size());
}

// How much lies before the place where the next ticket text could begin.
size_t CodedBytes::coded_before_ticket(std::string_view raw) const
{
    const size_t at = raw.find(kTicketStart);
    if (at == std::string_view::npos)
        return raw.size() - std::min(raw.size(), kTicketView);
    return at - std::min(at, kDeepestIndent);
}

bool CodedBytes::starts_ticket(std::string_view raw) const
{
    const size_t indent = indent_of(line_);
    if (!std::string_view(line_).substr(indent).starts_with(kTicketElement))
        return false;
    const size_t prefix = std::min(indent + 2, kDeepestIndent);
    return indent_of(raw) == prefix && raw.substr(prefix).starts_with(kTicketStart);
}

// A line that looks like the ticket's last one may stand in a string of it. Who reads tickets tells: then the text goes
// on. A text that nobody could have written ends at the first such line, and so does one behind too many of them.
bool CodedBytes::is_end_of_ticket()
{
    if (looked_again_ > kMostLookedAgain)
        return true;
    looked_again_ += looked_at_ticket_ ? ticket_.size() : 0;
    looked_at_ticket_ = true;
    return read_ticket_text(ticket_).ending != TicketEnding::cut;
}

// Takes whole lines until the one that closes the ticket.
void CodedBytes::take_ticket()
{
    const std::string last_line(indent_of(source_.look(kTicketView)), ' ');
    size_t line_at = 0;
    looked_at_ticket_ = false;
    for (bool at_end = false; !at_end;)
    {
        const std::string_view raw = source_.look(1);
        if (raw.empty())
            return;
        const size_t newline = raw.find('\n');
        const size_t count = newline == std::string_view::npos ? raw.size() : newline + 1;
        ticket_ += raw.substr(0, count);
        source_.skip(count);
        if (newline == std::string_view::npos)
            continue;
        const std::string_view rest = std::string_view(ticket_).substr(line_at);
        at_end = rest.starts_with(last_line) && rest.substr(last_line.size()) == kTicketEnd && is_end_of_ticket();
        line_at = ticket_.size();
    }
}

}  // namespace orvlog::reader
