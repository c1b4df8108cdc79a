// SPDX-License-Identifier: GPL-2.0-or-later

#include "clients/pdf/records/page-tickets.h"

#include <filesystem>
#include <fstream>

namespace orvlog::pdf_client
{

using orvlog::colour::ColourManager;
using orvlog::colour::Family;

namespace
{

Family family_of(uint16_t channels)
{
    switch (channels)
    {
    case 1:
        return Family::gray;
    case 4:
        return Family::cmyk;
    default:
        return Family::rgb;
    }
}

}  // namespace

void* make_page_ticket(ColourManager& manager, PageColours colours,
                       const std::function<void(const std::string&)>& complain)
{
    orvlog::colour::TicketDescription description;
    description.render = family_of(colours.group_channels);
    for (DocumentProfile& profile : colours.profiles)
        description.inputs.push_back({"", family_of(profile.channels), std::move(profile.icc)});
    description.default_gray = colours.default_gray;
    description.default_rgb = colours.default_rgb;
    description.default_cmyk = colours.default_cmyk;
    description.output_intent = std::move(colours.output_intent);
    std::vector<std::string> complaints;
    void* ticket = manager.make_ticket(description, &complaints);
    for (const std::string& line : complaints)
        complain(line);
    return ticket;
}

bool save_tickets(const ColourManager& manager, const std::string& folder)
{
    size_t number = 0;
    for (const void* ticket : manager.tickets())
    {
        const std::string name = "ticket-" + std::to_string(++number) + ".bin";
        std::ofstream output(std::filesystem::path(folder) / name, std::ios::binary);
        const orvlog::colour::Bytes& bytes = ColourManager::serialised(ticket);
        output.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
        output.close();
        if (!output.good())
            return false;
    }
    return true;
}

}  // namespace orvlog::pdf_client
