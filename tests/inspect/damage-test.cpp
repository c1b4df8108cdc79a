// Logs that are cut anywhere, and logs with bytes that are others, made smaller, redacted, and held against the sound
// one. The calls of such logs one by one are looked at in history/ and align/.

#include "inspect/pixels/pixel-diff.h"
#include "inspect/redact/redacted-text.h"
#include "inspect/reduce/keep-plan.h"
#include "inspect/reduce/log-parts.h"
#include "inspect/reduce/trimmed-text.h"
#include "tests/inspect/history/small-log.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <iterator>
#include <random>
#include <sstream>
#include <string>

namespace
{

using namespace orvlog::inspect;

std::string every_call()
{
    std::ifstream file(ORVLOG_SOURCE_DIR "/tests/expected/every-call-base.xml", std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

// What came out of one log.
struct Made
{
    std::string trimmed;
    std::string redacted;
    size_t parts = 0;
    uint64_t calls = 0;
};

Made make_all(const std::string& log)
{
    Made made;
    KeepPlan plan([](const CallTag& call) { return call.ordinal % 3 == 0; }, true);
    std::istringstream first(log);
    LogScan scan(first);
    for (orvlog::reader::Event event; scan.next(event);)
        plan.event(event, scan.text());
    plan.finish();
    made.calls = plan.calls();
    EXPECT_LE(plan.kept(), plan.calls());
    TrimOptions options;
    options.plan = &plan;
    // Whatever is named has these bytes; logs of kept images name one another.
    options.open_file = [](const std::string&, orvlog::reader::LogFileKind) -> orvlog::reader::LogFile
    {
        const char* bytes = "<GOP_ImageKeepFn Id=\"11\" async_img_log_file_name=\"a\">\n</GOP_ImageKeepFn>\n";
        return {std::make_unique<std::istringstream>(bytes), "", "", false};
    };
    std::istringstream second(log);
    TrimmedText trimmed(second, std::move(options));
    made.trimmed.assign(std::istreambuf_iterator<char>(&trimmed), {});
    std::istringstream third(log);
    RedactedText redacted(third);
    made.redacted.assign(std::istreambuf_iterator<char>(&redacted), {});
    for (const auto find : {find_clips, find_edges, find_segments, find_image_areas})
    {
        const std::vector<Part> parts = find(log);
        made.parts += parts.size();
        EXPECT_LE(without_parts(log, parts, std::vector<bool>(parts.size(), true)).size(), log.size() + 16);
    }
    EXPECT_EQ(find_calls(log).size(), made.calls);
    return made;
}

// More of them by hand: ORVLOG_SWEEP=10000.
int sweep(int usual)
{
    const char* wanted = std::getenv("ORVLOG_SWEEP");
    return wanted != nullptr ? std::atoi(wanted) : usual;
}

std::string bend(std::string log, std::mt19937& random)
{
    for (uint32_t changes = 1 + random() % 8; changes > 0; --changes)
    {
        const size_t at = 5 + random() % (log.size() - 5);
        const uint32_t kind = random() % 4;
        if (kind == 0)
            log[at] = static_cast<char>(random());
        else if (kind == 1)
            log[at] = "<>\"/0919-en \n"[random() % 13];
        else if (kind == 2)
            log.erase(at, random() % 200);
        else
            log.insert(at, log.substr(random() % log.size(), random() % 500));
    }
    return log;
}

TEST(InspectDamage, LogsCutAnywhere)
{
    const std::string log = every_call();
    std::mt19937 random(11);
    for (int i = 0; i < sweep(60); ++i)
    {
        const size_t size = 5 + random() % (log.size() - 5);
        const Made made = make_all(log.substr(0, size));
        EXPECT_LE(made.calls, 32U) << size;
        EXPECT_EQ(made.redacted.find("fp_EngineIdGet=\"document\""), std::string::npos) << size;
    }
}

TEST(InspectDamage, LogsWithOtherBytes)
{
    const std::string log = every_call();
    std::mt19937 random(12);
    uint64_t calls = 0;
    uint64_t parts = 0;
    for (int i = 0; i < sweep(60); ++i)
    {
        const Made made = make_all(bend(log, random));
        calls += made.calls;
        parts += made.parts;
    }
    EXPECT_GT(calls, 60U);
    EXPECT_GT(parts, 60U);
}

TEST(InspectDamage, PagesOfLogsWithOtherBytes)
{
    using namespace orvlog::test;
    With with;
    with.clip = clip_of({0, 0, 10, 10});
    const std::string sound = page_of(20, 20,
                                      group_start() + paint_of(0, {2, 2, 12, 12}, "1 0 0", with) +
                                          paint_of(1, {4, 4, 18, 18}, "0 0 1", With(), "0.5") + group_finish());
    const auto side = [](const std::string& log)
    {
        PixelSide made;
        made.open = [log]() -> std::shared_ptr<std::istream> { return std::make_shared<std::istringstream>(log); };
        std::istringstream source(log);
        made.kind = orvlog::replay::examine(source);
        return made;
    };
    std::mt19937 random(13);
    uint64_t differ = 0;
    for (int i = 0; i < sweep(60); ++i)
    {
        NumberFile a;
        NumberFile b;
        compare_pages(side(sound), a, side(bend(sound, random)), b, 0,
                      [&differ](const PageDifference& page)
                      {
                          ++differ;
                          EXPECT_TRUE(page.page_a <= 1);
                      });
    }
    EXPECT_GT(differ, 5U);
}

}  // namespace
