// Texts of colour tickets, read back into bytes. By the first byte the rest is a text, or bytes of a ticket that are
// written as a text first. What reads as a log holds it gives the same text again, and texts that were written always
// read so.

#include "fuzz/fuzz.h"
#include "orvlog/colour/gxc/gxc-ticket.h"
#include "reader/tickets/ticket-bytes.h"

#include <algorithm>
#include <cstdarg>
#include <string>

using namespace orvlog::reader;
using orvlog::fuzz::expect;

namespace
{

int32_t print(void* c, const char* format, va_list args)
{
    auto* text = static_cast<std::string*>(c);
    va_list again;
    va_copy(again, args);
    const int length = std::vsnprintf(nullptr, 0, format, again);
    va_end(again);
    std::vector<char> piece(static_cast<size_t>(length) + 1);
    std::vsnprintf(piece.data(), piece.size(), format, args);
    text->append(piece.data(), static_cast<size_t>(length));
    return length;
}

std::string write(const uint8_t* bytes, size_t size, int32_t family, const std::string& prefix)
{
    std::string text;
    GIO_StreamOps printing = {};
    printing.gio_VPrintf = print;
    printing.gio_Flush = [](void*) -> int32_t { return 0; };
    GIO_Stream output = {&text, GIO_KIND_FILE, &printing};
    GXC_Writer writer = {nullptr, nullptr, &output, prefix.c_str(), 0};
    GXC_Input input = {bytes, size, 0};
    gxc_write_ticket(&writer, &input, family);
    return text;
}

std::string write(const TicketReading& reading)
{
    return write(reading.bytes.data(), reading.bytes.size(), reading.family, reading.line_prefix);
}

bool is_as_written(const TicketReading& reading)
{
    return reading.ending == TicketEnding::whole || reading.ending == TicketEnding::short_ticket;
}

// What holds of any text.
TicketReading read(const std::string& text)
{
    TicketReading reading = read_ticket_text(text);
    expect(reading.bytes.size() <= text.size(), "no more bytes than text");
    expect(reading.text_size <= text.size(), "no more text is read than there is");
    expect((reading.line == 0) == (reading.ending == TicketEnding::whole), "the place of what is not whole is told");
    for (const TicketDefinition& definition : reading.definitions)
        expect(definition.profile_at + definition.profile_size <= reading.bytes.size(), "profiles lie in the ticket");
    const bool has_returns = text.substr(0, text.find('\n')).ends_with('\r');
    if (is_as_written(reading) && !reading.has_stray_numbers && !has_returns &&
        reading.line_prefix.find('\0') == std::string::npos)
    {
        // The first indent and the last newline may be missing in what was read.
        const std::string again = write(reading);
        const std::string_view was = std::string_view(text).substr(0, reading.text_size);
        const size_t first = was.starts_with('<') && !again.starts_with('<') ? reading.line_prefix.size() : 0;
        expect(again.substr(first, was.size()) == was && again.size() - first - was.size() <= 1, "the same text again");
    }
    return reading;
}

}  // namespace

int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    orvlog::fuzz::Choices choices(data, size);
    const uint8_t choice = choices.byte();
    if (choice == '<' || choice == ' ')
    {
        read(std::string(reinterpret_cast<const char*>(data), size));
        return 0;
    }
    const std::string text = write(choices.rest(), choices.rest_size(), choice % 5 - 1, std::string(choice % 3, ' '));
    const TicketReading reading = read(text);
    // A string may hold what ends it.
    const std::string_view bytes(reinterpret_cast<const char*>(choices.rest()), choices.rest_size());
    if (bytes.find(" />\n") == bytes.npos)
        expect(is_as_written(reading) && reading.text_size == text.size(), "a text that was written reads so");
    return 0;
}
