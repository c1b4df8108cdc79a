// Parts of a job, and logs that are not whole.

#include "clients/replay/replay.h"

#include "clients/pdf/null-renderer.h"
#include "renderers/cairo/cairo-renderer.h"
#include "tests/clients/replay/jobs.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <random>
#include <sstream>
#include <string>

namespace
{

using namespace orvlog;
using namespace orvlog::test;

// The log of the sample's first page, made once.
const std::string& sample_log()
{
    static const std::string log = []
    {
        const ScratchFolder scratch;
        const Words words = {ORVLOG_RECORD_PROGRAM, sample(),  "-o", "log.xml", "--mode", "base",
                             "--no-renderer",       "--pages", "1"};
        EXPECT_EQ(run_in(scratch.path(""), words).status, 0);
        return read_file(scratch.path("log.xml"));
    }();
    return log;
}

struct Played
{
    replay::Outcome outcome;
    std::vector<orvlog::cairo_renderer::PagePixels> pages;
};

Played play(const std::string& log, replay::Options options = {})
{
    orvlog::cairo_renderer::PageCollector collector;
    orvlog::cairo_renderer::Options drawing;
    drawing.page_sink = collector.sink();
    drawing.complaint_sink = [](const std::string&) {};
    orvlog::cairo_renderer::Renderer renderer(std::move(drawing));
    replay::ReplayTickets tickets;
    std::istringstream source(log);
    const replay::Outcome outcome = replay::play(source, renderer.interface(), tickets, options);
    return {outcome, collector.pages()};
}

replay::Outcome play_on_nothing(const std::string& log)
{
    replay::ReplayTickets tickets;
    std::istringstream source(log);
    return replay::play(source, orvlog::pdf_client::null_renderer(), tickets, {});
}

TEST(Replay, StopsBehindAPaint)
{
    replay::Options options;
    options.up_to = orvlog::reader::CallAddress{orvlog::reader::CallAddress::Kind::id, 3};
    const Played some = play(sample_log(), options);
    EXPECT_TRUE(some.outcome.reached);
    ASSERT_EQ(some.pages.size(), 1U);
    const Played all = play(sample_log());
    ASSERT_EQ(all.pages.size(), 1U);
    EXPECT_GT(all.outcome.calls, some.outcome.calls);
    EXPECT_NE(all.pages[0], some.pages[0]);

    options.up_to = orvlog::reader::CallAddress{orvlog::reader::CallAddress::Kind::id, 1000000};
    const Played none = play(sample_log(), options);
    EXPECT_FALSE(none.outcome.reached);
    EXPECT_EQ(none.pages, all.pages);
}

TEST(Replay, DrawsThePagesAskedFor)
{
    replay::Options options;
    options.first_page = 2;
    const Played none = play(sample_log(), options);
    EXPECT_EQ(none.outcome.faces, 1U);
    EXPECT_EQ(none.outcome.pages, 0U);
    EXPECT_TRUE(none.pages.empty());
    EXPECT_EQ(none.outcome.not_played, 0U);
}

TEST(Replay, ScalesPages)
{
    const Played own = play(sample_log());
    replay::Options options;
    options.dpi = 48;
    const Played half = play(sample_log(), options);
    ASSERT_EQ(own.pages.size(), 1U);
    ASSERT_EQ(half.pages.size(), 1U);
    EXPECT_EQ(half.pages[0].width, (own.pages[0].width + 1) / 2);
    EXPECT_EQ(half.pages[0].height, (own.pages[0].height + 1) / 2);
}

TEST(Replay, AResultOfNoLog)
{
    EXPECT_FALSE(play("%PDF-1.7").outcome.is_log);
    EXPECT_FALSE(play("").outcome.is_log);
    std::istringstream none("nothing");
    EXPECT_FALSE(replay::examine(none).is_log);
}

TEST(Replay, KnowsHowALogWasMade)
{
    std::istringstream source(sample_log());
    const replay::LogKind kind = replay::examine(source);
    EXPECT_TRUE(kind.is_log);
    EXPECT_FALSE(kind.base_mode);
    EXPECT_TRUE(kind.base_content);
    EXPECT_FALSE(kind.rendered);
    EXPECT_FALSE(kind.side_files);
    EXPECT_EQ(kind.faces, 1U);
    EXPECT_EQ(kind.dpi, 96);
    EXPECT_EQ(kind.glyph_get_type, uint32_t{GFI_GDT_PATH});
}

TEST(Replay, ACutLogIsFinished)
{
    const std::string& log = sample_log();
    const Played whole = play(log);
    std::mt19937 random(1);
    for (int i = 0; i < 40; ++i)
    {
        const size_t size = 1400 + random() % (log.size() - 1400);
        const Played part = play(log.substr(0, size));
        EXPECT_TRUE(part.outcome.is_log);
        EXPECT_TRUE(part.outcome.cut) << size;
        EXPECT_LE(part.outcome.calls, whole.outcome.calls);
        EXPECT_LE(part.pages.size(), 1U);
    }
}

// More of them for whoever sets this in the environment.
int bent_logs()
{
    const char* wanted = std::getenv("ORVLOG_BENT_LOGS");
    return wanted != nullptr ? std::atoi(wanted) : 200;
}

// Changes some bytes, or moves, doubles or drops a piece.
std::string bend(std::string log, std::mt19937& random)
{
    const auto place = [&] { return random() % log.size(); };
    const size_t begin = place();
    const size_t size = 1 + random() % 400;
    switch (random() % 5)
    {
    case 0:
        for (int i = 0; i < 20; ++i)
            log[place()] = static_cast<char>(random());
        break;
    case 1:
        log.erase(begin, size);
        break;
    case 2:
        log.insert(place(), log.substr(begin, size));
        break;
    case 3:
        for (int i = 0; i < 40; ++i)
        {
            const size_t digit = log.find_first_of("0123456789", place());
            if (digit != std::string::npos)
                log[digit] = "0123456789-eE.x"[random() % 15];
        }
        break;
    default:
        for (int i = 0; i < 5; ++i)
        {
            const size_t digit = log.find_first_of("0123456789", place());
            if (digit != std::string::npos)
                log.insert(digit, "99999999");
        }
        break;
    }
    return log;
}

TEST(Replay, BentLogsAreTakenAsFarAsTheyGo)
{
    std::mt19937 random(7);
    uint64_t damaged = 0;
    for (int i = 0; i < bent_logs(); ++i)
    {
        const replay::Outcome outcome = play_on_nothing(bend(sample_log(), random));
        damaged += outcome.damage > 0 || outcome.unknown > 0 || !outcome.is_log ? 1 : 0;
    }
    EXPECT_GT(damaged, 0U);
}

TEST(Replay, BentLogsAreDrawn)
{
    std::mt19937 random(8);
    for (int i = 0; i < bent_logs() / 10; ++i)
    {
        replay::Options options;
        options.dpi = 24;
        const Played played = play(bend(sample_log(), random), options);
        EXPECT_LE(played.pages.size(), 2U);
    }
}

}  // namespace
