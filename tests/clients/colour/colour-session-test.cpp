// The colour manager behind a real session: what its tickets leave in the log.

#include "clients/colour/colour-manager.h"
#include "tests/clients/colour/test-profiles.h"
#include "tests/support/failure-sweep.h"
#include "tests/support/test-session.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace
{

using namespace orvlog::test;
using orvlog::colour::Bytes;
using orvlog::colour::ColourManager;
using orvlog::colour::Family;
using orvlog::colour::TicketDescription;

size_t occurrences(const std::string& text, const std::string& part)
{
    size_t found = 0;
    for (size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + part.size()))
        ++found;
    return found;
}

// The bytes of the first profile in a log.
Bytes first_profile(const std::string& log)
{
    const std::string begin = "<ProfileBuffer>";
    Bytes bytes;
    for (size_t at = log.find(begin) + begin.size(); log[at] != '<'; at += 2)
        bytes.push_back(static_cast<uint8_t>(std::stoul(log.substr(at, 2), nullptr, 16)));
    return bytes;
}

// A document with two faces and a group on each, all with the same ticket.
void run_job(TestSession* session, void* ticket)
{
    session->start_document();
    const ORV_FaceProperties properties = letter_face();
    for (uint32_t face = 1; face <= 2; ++face)
    {
        ORV_DrawingInterface drawing = {};
        session->orv.face_start.fn(nullptr, &session->orv, session->document, &drawing, nullptr, face, &properties,
                                   ticket, 0, 0);
        if (drawing.group_start.fn == nullptr)
            continue;
        uint32_t group = 0;
        uint32_t replay = 0;
        drawing.group_start.fn(&drawing, 1, &group, nullptr, 0, 0, 0, 0, ticket, 0, 0, 0, nullptr, nullptr, nullptr,
                               nullptr, 0, 0, 0, nullptr, nullptr, nullptr);
        drawing.group_finish.fn(&drawing, &replay);
        drawing.drawing_finish.fn(&drawing);
    }
    session->finish_document();
}

TicketDescription with_profile()
{
    TicketDescription description;
    description.output_intent = rgb_profile();
    return description;
}

TEST(ColourSession, OneFullTicketAndReferencesAfterwards)
{
    ColourManager manager;
    std::vector<std::string> complaints;
    void* ticket = manager.make_ticket(with_profile(), &complaints);
    TestSession session(Behind::kNothing, nullptr, ColourManager::ticket_functions(),
                        ColourManager::ticket_serial_functions());
    run_job(&session, ticket);
    session.shut_down();
    const std::string log = session.stream.text();
    EXPECT_EQ(occurrences(log, "<GCM_ColorTicket id=\"1\">\n"), 4u);
    EXPECT_EQ(occurrences(log, "<GXC_ColorTickets>\n"), 1u);
    EXPECT_EQ(occurrences(log, "\t<RGBRenderColorSpace>\n"), 1u);
    EXPECT_EQ(occurrences(log, "<GCM_ColorTicket id=\"1\">\n    </GCM_ColorTicket>\n"), 3u) << log;
    EXPECT_EQ(first_profile(log), rgb_profile());
    EXPECT_EQ(manager.counts().serialised, 1u);
    ColourManager::release(ticket);
    EXPECT_EQ(manager.counts().retained, manager.counts().released);
    EXPECT_EQ(session.allocator.outstanding(), 0u);
}

// A ticket for which there was no memory for a frame stays held.
TEST(ColourSession, ReferencesBalanceWhateverAllocationIsRefused)
{
    const auto refused = [](uint64_t n)
    {
        ColourManager manager;
        std::vector<std::string> complaints;
        void* ticket = manager.make_ticket(with_profile(), &complaints);
        TestSession session(Behind::kNothing, nullptr, ColourManager::ticket_functions(),
                            ColourManager::ticket_serial_functions());
        session.allocator.refuse(n);
        run_job(&session, ticket);
        session.shut_down();
        ColourManager::release(ticket);
        EXPECT_GE(manager.counts().retained, manager.counts().released) << n;
        EXPECT_LE(manager.counts().retained, manager.counts().released + 1) << n;
        EXPECT_EQ(session.allocator.outstanding(), 0u) << n;
        return session.allocator.refused() != 0;
    };
    EXPECT_GT(sweep_failures(refused), 10u);
}

// The manager's tables, of which one call fails: the nth from now on.
uint64_t calls_until_failure = 0;
uint64_t failures = 0;
uint64_t refused_releases = 0;

bool fails()
{
    if (calls_until_failure == 0 || --calls_until_failure != 0)
        return false;
    ++failures;
    return true;
}

const ORVLOG_TicketFunctions* inner()
{
    return ColourManager::ticket_functions();
}

ORVLOG_TicketFunctions failing_functions()
{
    ORVLOG_TicketFunctions f = {};
    f.retain = [](void* ticket) { return fails() ? 0 : inner()->retain(ticket); };
    f.release = [](void* ticket) -> uint32_t
    {
        if (!fails())
            return inner()->release(ticket);
        ++refused_releases;
        return 0;
    };
    f.query = [](void* ticket, void* space, void* render)
    { return fails() ? 0 : inner()->query(ticket, space, render); };
    f.csd_list = [](void* ticket, const GCM_Csd* const** list, uintptr_t zero1, uintptr_t zero2)
    { return fails() ? 0 : inner()->csd_list(ticket, list, zero1, zero2); };
    f.key = [](void* ticket, uint32_t* key) { return fails() ? 0 : inner()->key(ticket, key); };
    return f;
}

// A release that the manager refuses is not asked for again.
TEST(ColourSession, ReferencesBalanceWhateverCallOfTheManagerFails)
{
    const ORVLOG_TicketFunctions functions = failing_functions();
    ORVLOG_TicketSerialFunctions serial = {};
    serial.serialise = [](void* ticket, GIO_Stream* stream, uintptr_t one, uintptr_t zero)
    { return fails() ? 0 : ColourManager::ticket_serial_functions()->serialise(ticket, stream, one, zero); };
    const auto failed = [&](uint64_t n)
    {
        ColourManager manager;
        std::vector<std::string> complaints;
        void* ticket = manager.make_ticket(with_profile(), &complaints);
        TestSession session(Behind::kNothing, nullptr, &functions, &serial);
        failures = 0;
        refused_releases = 0;
        calls_until_failure = n;
        run_job(&session, ticket);
        session.shut_down();
        ColourManager::release(ticket);
        EXPECT_EQ(manager.counts().retained, manager.counts().released + refused_releases) << n;
        EXPECT_EQ(session.allocator.outstanding(), 0u) << n;
        return failures != 0;
    };
    EXPECT_GT(sweep_failures(failed), 10u);
}

}  // namespace
