#include "reader/tickets/ticket-bytes.h"

#include "orvlog/colour/gxc/gxc-layout.h"
#include "orvlog/colour/gxc/gxc-names.h"
#include "orvlog/colour/gxc/gxc-ticket.h"
#include "reader/tickets/ticket-definitions.h"
#include "reader/tickets/ticket-text.h"
#include "reader/tickets/ticket-values.h"

namespace orvlog::reader
{

namespace
{

constexpr int32_t kFamilyCount = 4;

// Opens the element of the family.
bool open_family(TicketText& text, TicketReading& reading)
{
    for (int32_t family = -1; family < kFamilyCount; ++family)
    {
        const char* known = gxc_name_of_value("GCM_ColorSpaceFamily", static_cast<uint32_t>(family));
        const std::string_view name = known != nullptr ? known : "(null)";
        if (!text.at(joined({"<", name, ">\n"})))
            continue;
        reading.family = family;
        return text.open(name);
    }
    if (text.at(joined({"<", gxc_unknown_family, ">\n"})))
    {
        reading.family = GXC_FAMILY_UNKNOWN;
        return text.open(gxc_unknown_family);
    }
    return text.no_such_line("a family of colour spaces");
}

bool read_spot_colors(TicketText& text, std::string_view element, uint64_t key_size)
{
    const size_t place = text.size();
    if (!text.field({GXC_UINT32, "NumCols", nullptr}))
        return false;
    for (uint32_t left = text.uint32_at(place); left != 0; --left)
        if (!text.open(element) || !text.array("Key", GXC_ENTRY_UINT16, key_size) ||
            !text.array("Target", GXC_ENTRY_UINT16, GXC_TARGET_SIZE) || !text.close())
            return false;
    return true;
}

bool read_named_profiles(TicketText& text)
{
    const size_t place = text.size();
    if (!text.field({GXC_UINT32, "NumNamedProfiles", nullptr}))
        return false;
    const uint32_t count = text.uint32_at(place);
    return text.array("UseDeviceValues", GXC_ENTRY_BOOL, count) && text.strings("ProfileNames", count);
}

bool read_tail(TicketText& text, GXC_Tail tail)
{
    switch (tail)
    {
    case GXC_RGB_SPOT_COLORS:
        return read_spot_colors(text, "RGBSpotColorDefn", GXC_RGB_KEY_SIZE);
    case GXC_CMYK_SPOT_COLORS:
        return read_spot_colors(text, "CMYKSpotColorDefn", GXC_CMYK_KEY_SIZE);
    case GXC_PROFILE_NAMES:
        return read_named_profiles(text);
    case GXC_NO_TAIL:
        break;
    }
    return true;
}

// The marker of the section that begins here; the end marker if none does.
uint32_t section_at(const TicketText& text)
{
    for (uint32_t marker = 1; marker <= GXC_LAST_MARKER; ++marker)
        if (text.at(joined({"<", gxc_sections[marker].element, ">\n"})))
            return marker;
    return GXC_END_VARIABLE_DATA;
}

bool read_section(TicketText& text)
{
    const uint32_t marker = section_at(text);
    if (marker == GXC_END_VARIABLE_DATA)
        return text.no_such_line("a section");
    const GXC_Section& section = gxc_sections[marker];
    const std::string_view name = gxc_name_of_value("GCM_SerMarker", marker);
    if (!text.open(section.element))
        return false;
    text.put(marker);
    return text.line(joined({"<GCM_SerMarker GCM_SerMarker=\"", name, "\" />"})) &&
           text.field({GXC_UINT32, "Size", nullptr}) && text.fields(section.fields) && read_tail(text, section.tail) &&
           text.close();
}

bool read_sections(TicketText& text)
{
    if (!text.open("VariableSizedData"))
        return false;
    while (!text.at_close())
        if (!read_section(text))
            return false;
    text.put(GXC_END_VARIABLE_DATA);
    return text.close();
}

bool read_ticket(TicketText& text, TicketReading& reading)
{
    return text.start("GXC_ColorTickets") && open_family(text, reading) && text.open("GCM_ColorTicket") &&
           text.fields(gxc_fixed_fields) && read_definitions(text, reading.definitions) && read_sections(text) &&
           text.close() && text.close() && text.close();
}

TicketReading read_lines(std::string_view text)
{
    TicketReading reading;
    TicketText lines(text, reading);
    if (read_ticket(lines, reading))
        reading.ending = TicketEnding::whole;
    else if (reading.ending == TicketEnding::short_ticket)
        lines.close_all();
    return reading;
}

// The lines end as a stream in text mode ends them.
bool has_returns(std::string_view text)
{
    const size_t end = text.find('\n');
    return end != text.npos && end != 0 && text[end - 1] == '\r';
}

std::string without_returns(std::string_view text)
{
    std::string lines;
    for (size_t i = 0; i < text.size(); ++i)
        if (text.substr(i, 2) != "\r\n" && text.substr(i) != "\r")
            lines += text[i];
    return lines;
}

// How much of a text gives the first `size` bytes of it without returns.
size_t size_with_returns(std::string_view text, size_t size)
{
    size_t at = 0;
    for (; size != 0; --size, ++at)
        at += text.substr(at, 2) == "\r\n" ? 1 : 0;
    return at;
}

}  // namespace

TicketReading read_ticket_text(std::string_view text)
{
    if (has_returns(text))
    {
        TicketReading reading = read_lines(without_returns(text));
        reading.text_size = size_with_returns(text, reading.text_size);
        return reading;
    }
    return read_lines(text);
}

}  // namespace orvlog::reader
