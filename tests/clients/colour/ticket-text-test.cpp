// Tickets of the colour manager, from their text in a log back into bytes.

#include "clients/colour/colour-manager.h"
#include "reader/text/log-events.h"
#include "reader/tickets/ticket-bytes.h"
#include "tests/clients/colour/test-profiles.h"
#include "tests/support/test-session.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>

namespace
{

using namespace orvlog::test;
using namespace orvlog::reader;
using orvlog::colour::Bytes;
using orvlog::colour::ColourManager;
using orvlog::colour::Family;
using orvlog::colour::TicketDescription;

// The log of a document with one face.
std::string log_of(void* ticket)
{
    TestSession session(Behind::kNothing, nullptr, ColourManager::ticket_functions(),
                        ColourManager::ticket_serial_functions());
    session.start_document();
    const ORV_FaceProperties properties = letter_face();
    ORV_DrawingInterface drawing = {};
    session.orv.face_start.fn(nullptr, &session.orv, session.document, &drawing, nullptr, 1, &properties, ticket, 0, 0);
    if (drawing.drawing_finish.fn != nullptr)
        drawing.drawing_finish.fn(&drawing);
    session.finish_document();
    session.shut_down();
    return session.stream.text();
}

std::string ticket_text(const std::string& log)
{
    const std::string end = "</GXC_ColorTickets>\n";
    const size_t tag = log.find("<GXC_ColorTickets>\n");
    const size_t begin = log.rfind('\n', tag) + 1;
    return log.substr(begin, log.find(end) + end.size() - begin);
}

// The same as one meets it who goes through the log, which has no other rows.
std::string ticket_rows(const std::string& log)
{
    std::istringstream source(log);
    LogEvents events(source);
    std::string text;
    for (Event event; events.next(event);)
        if (event.kind == EventKind::row)
            text.append(event.text).append("\n");
    return text;
}

std::vector<TicketDescription> descriptions()
{
    std::vector<TicketDescription> all(5);
    all[1].render = Family::gray;
    all[2].render = Family::cmyk;
    all[2].render_bit_depth = 16;
    all[2].intents = {GCM_RI_SATURATION, GCM_RI_COLORIMETRIC_ABS, GCM_RI_USER_DEFINED_1, GCM_RI_PERCEPTUAL};
    all[3].inputs = {{"a \"name\" />\n", Family::gray, gray_profile()}, {"", Family::cmyk, cmyk_profile()}};
    all[3].default_gray = 0;
    all[4].inputs = {{"RGB", Family::rgb, rgb_profile()}};
    all[4].default_rgb = 0;
    all[4].render_has_alpha = true;
    all[4].output_intent = rgb_profile();
    return all;
}

TEST(TicketTextOfALog, GivesTheBytesThatWereSerialised)
{
    constexpr int32_t kFamilies[] = {1, 0, 2, 1, 1};
    const std::vector<TicketDescription> all = descriptions();
    for (size_t i = 0; i < all.size(); ++i)
    {
        ColourManager manager;
        std::vector<std::string> complaints;
        void* ticket = manager.make_ticket(all[i], &complaints);
        const std::string log = log_of(ticket);
        const Bytes serialised = ColourManager::serialised(ticket);
        ColourManager::release(ticket);
        EXPECT_TRUE(complaints.empty());
        for (const std::string& text : {ticket_text(log), ticket_rows(log)})
        {
            const TicketReading reading = read_ticket_text(text);
            EXPECT_EQ(reading.ending, TicketEnding::whole) << i << ", " << reading.line << ": " << reading.expected;
            EXPECT_EQ(reading.bytes, serialised) << i;
            EXPECT_EQ(reading.family, kFamilies[i]) << i;
            EXPECT_EQ(reading.line_prefix, "      ") << i;
        }
    }
}

TEST(TicketTextOfALog, GivesTheProfiles)
{
    ColourManager manager;
    std::vector<std::string> complaints;
    void* ticket = manager.make_ticket(descriptions()[3], &complaints);
    const TicketReading reading = read_ticket_text(ticket_text(log_of(ticket)));
    ColourManager::release(ticket);
    std::vector<Bytes> profiles;
    for (const TicketDefinition& definition : reading.definitions)
        if (definition.profile_size != 0)
        {
            EXPECT_EQ(definition.type, static_cast<uint32_t>(GCM_CSDTYPE_PROFILE_BUFFER));
            const auto profile = reading.profile(definition);
            profiles.emplace_back(profile.begin(), profile.end());
        }
    EXPECT_EQ(profiles, (std::vector<Bytes>{gray_profile(), cmyk_profile()}));
}

}  // namespace
