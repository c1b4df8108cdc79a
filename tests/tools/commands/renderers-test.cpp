// Two renderers compared, many logs held against a baseline, and what calls cost a renderer: by the command.

#include "tests/tools/run-tool.h"

#include <nlohmann/json.hpp>

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <map>
#include <string>
#include <utility>
#include <vector>

namespace
{

namespace fs = std::filesystem;
using namespace orvlog::test;
using Words = std::vector<std::string>;

const std::string kBlocks = ORVLOG_BLOCKS_RENDERER;

bool has(const std::string& text, const std::string& part)
{
    return text.find(part) != std::string::npos;
}

// The sample's log, once for all tests.
const std::string& sample_log()
{
    static const ScratchFolder folder;
    static const std::string log = []
    {
        std::string path = folder.path("job.xml");
        run_tool({"record", ORVLOG_SOURCE_DIR "/docs/sample.pdf", "-o", path, "--no-renderer"});
        return path;
    }();
    return log;
}

ToolResult compare(Words options)
{
    Words words = {"compare", sample_log(), "--renderer", kBlocks, "--renderer", kBlocks};
    words.insert(words.end(), options.begin(), options.end());
    return run_tool(words);
}

TEST(ToolCompare, SaysThatPagesAreTheSame)
{
    const ToolResult same = compare({});
    EXPECT_EQ(same.status, 0) << same.err;
    EXPECT_EQ(same.out, "3 pages compared, 0 differ\n");
}

// The fifth paint of each page: ids are counted over all pages.
TEST(ToolCompare, NamesTheFirstCallThatDiffers)
{
    const ToolResult other = compare({"--renderer-options", "", "--renderer-options", "wrong=5", "--pages", "1-2"});
    EXPECT_EQ(other.status, 1);
    EXPECT_TRUE(has(other.out, "page 1: 16 pixels in 20,0,24,4 differ, first behind 4 ORV_object_paint")) << other.out;
    EXPECT_TRUE(has(other.out, "page 2: 16 pixels in 20,0,24,4 differ, first behind ")) << other.out;
    EXPECT_TRUE(has(other.out, "2 pages compared, 2 differ\n"));
}

TEST(ToolCompare, LetsChannelsDifferByATolerance)
{
    const Words near = {"--renderer-options", "none", "--renderer-options", "wrong=5,by=3", "--tolerance", "3"};
    EXPECT_EQ(compare(near).status, 0);
    Words nearer = near;
    nearer.back() = "2";
    nearer.emplace_back("--no-calls");
    const ToolResult other = compare(nearer);
    EXPECT_EQ(other.status, 1);
    EXPECT_TRUE(has(other.out, "page 3: 16 pixels in 20,0,24,4 differ\n")) << other.out;
}

// Cairo rounds by the part that is seen.
TEST(ToolCompare, FindsBandsNearTheWholePage)
{
    const std::string cairo = ORVLOG_CAIRO_LIBRARY;
    const ToolResult bands =
        run_tool({"compare", sample_log(), "--renderer", cairo, "--renderer", cairo, "--renderer-options",
                  "glyphs=path", "--renderer-options", "glyphs=path,pixels-at-once=20000", "--tolerance", "8"});
    EXPECT_EQ(bands.status, 0) << bands.err;
    EXPECT_EQ(bands.out, "3 pages compared, 0 differ\n");
}

TEST(ToolCompare, WritesPicturesAndJson)
{
    const ScratchFolder folder;
    const ToolResult other = compare({"--renderer-options", "none", "--renderer-options", "wrong=2", "--pages", "1-1",
                                      "--pictures", folder.path("pictures"), "--json"});
    EXPECT_EQ(other.status, 1);
    const auto told = nlohmann::json::parse(other.out);
    EXPECT_FALSE(told["equal"].get<bool>());
    EXPECT_EQ(told["pages"][0]["page"], 1);
    EXPECT_EQ(told["pages"][0]["pixels"], 16);
    EXPECT_EQ(told["pages"][0]["call"], "1");
    for (const char* name : {"job-001-a.png", "job-001-b.png", "job-001-marked.png"})
        EXPECT_TRUE(fs::exists(folder.path("pictures") + "/" + name)) << name;
}

TEST(ToolCompare, SaysWhichRendererFailed)
{
    const ToolResult crashed = compare({"--renderer-options", "none", "--renderer-options", "crash=9"});
    EXPECT_EQ(crashed.status, 1);
    const std::string said = "orvlog: " + kBlocks + ": ended by signal 6 (Aborted), in ORV_object_paint";
    EXPECT_TRUE(crashed.err.starts_with(said)) << crashed.err;
    EXPECT_EQ(std::ranges::count(crashed.err, '\n'), 1) << crashed.err;
    const ToolResult hung = compare({"--renderer-options", "none", "--renderer-options", "hang=9", "--time", "2"});
    EXPECT_EQ(hung.status, 1);
    EXPECT_TRUE(has(hung.err, kBlocks + ": took more than 2 seconds")) << hung.err;
    EXPECT_EQ(run_tool({"compare", sample_log(), "--renderer", kBlocks}).status, 2);
    const ToolResult none = run_tool({"compare", sample_log(), "--renderer", kBlocks, "--renderer", "./none.so"});
    EXPECT_EQ(none.status, 1);
    EXPECT_TRUE(has(none.err, "./none.so")) << none.err;
    const ToolResult sizes = compare({"--renderer-options", "none", "--renderer-options", "small"});
    EXPECT_TRUE(has(sizes.out, "page 1: sizes differ: 200x200 and 100x100 pixels")) << sizes.out;
}

class ToolRegress : public testing::Test
{
protected:
    void SetUp() override
    {
        fs::create_directory(folder.path("logs"));
        folder.write("logs/notes.txt", "not a log");
        for (const char* page : {"1", "2", "3"})
            ASSERT_EQ(run_tool({"trim", sample_log(), "--pages", page, "-o",
                                folder.path("logs/page-" + std::string(page) + ".xml")})
                          .status,
                      0);
    }

    ToolResult regress(const Words& options, const std::string& megabytes = "0")
    {
        Words words = {"regress",    folder.path("logs"),     "--renderer", kBlocks,
                       "--baseline", folder.path("baseline"), "--memory",   megabytes};
        words.insert(words.end(), options.begin(), options.end());
        return run_tool(words);
    }

    ScratchFolder folder;
};

const char* const kPassed = "passed   page-1.xml  1 page\npassed   page-2.xml  1 page\n"
                            "passed   page-3.xml  1 page\n3 logs, 3 passed\n";

TEST_F(ToolRegress, HoldsPagesAgainstABaseline)
{
    const ToolResult none = regress({});
    EXPECT_EQ(none.status, 1);
    EXPECT_TRUE(has(none.err, "--update makes a baseline") || has(none.err, "No such file")) << none.err;
    const ToolResult made = regress({"--update"});
    EXPECT_EQ(made.status, 0) << made.err;
    EXPECT_EQ(made.out, "updated  page-1.xml  1 page\nupdated  page-2.xml  1 page\nupdated  page-3.xml  1 page\n"
                        "3 logs, 3 updated\n");
    for (const char* jobs : {"1", "3"})
    {
        const ToolResult again = regress({"--jobs", jobs});
        EXPECT_EQ(again.status, 0) << again.err;
        EXPECT_EQ(again.out, kPassed);
    }
}

TEST_F(ToolRegress, TellsWhatDiffersAndWhatFails)
{
    ASSERT_EQ(regress({"--update"}).status, 0);
    fs::remove_all(folder.path("baseline/page-3.xml"));
    const ToolResult other = regress(
        {"--renderer-options", "wrong=3", "--junit", folder.path("junit.xml"), "--pictures", folder.path("pictures")});
    EXPECT_EQ(other.status, 1);
    EXPECT_EQ(other.out, "differs  page-1.xml  1 page  page 1: 16 pixels in 12,0,16,4 differ\n"
                         "differs  page-2.xml  1 page  page 2: 16 pixels in 12,0,16,4 differ\n"
                         "unknown  page-3.xml  1 page  has no baseline\n3 logs, 2 differs, 1 unknown\n");
    EXPECT_EQ(read_file(folder.path("junit.xml")),
              "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
              "<testsuite name=\"orvlog-regress\" tests=\"3\" failures=\"2\" errors=\"1\">\n"
              "  <testcase classname=\"orvlog-regress\" name=\"page-1.xml\">\n"
              "    <failure message=\"page 1: 16 pixels in 12,0,16,4 differ\"/>\n  </testcase>\n"
              "  <testcase classname=\"orvlog-regress\" name=\"page-2.xml\">\n"
              "    <failure message=\"page 2: 16 pixels in 12,0,16,4 differ\"/>\n  </testcase>\n"
              "  <testcase classname=\"orvlog-regress\" name=\"page-3.xml\">\n"
              "    <error message=\"has no baseline\"/>\n  </testcase>\n</testsuite>\n");
    EXPECT_TRUE(fs::exists(folder.path("pictures/page-1.xml-001-marked.png")));
    const ToolResult crashed = regress({"--renderer-options", "crash=5"});
    EXPECT_EQ(crashed.status, 1);
    EXPECT_TRUE(has(crashed.out, "crashed  page-1.xml  ended by signal 6 (Aborted), in ORV_object_paint"))
        << crashed.out;
    EXPECT_TRUE(has(crashed.out, "3 logs, 3 crashed\n")) << crashed.out;
    const ToolResult hung = regress({"--renderer-options", "hang=5", "--time", "1"});
    EXPECT_EQ(hung.status, 1);
    EXPECT_TRUE(has(hung.out, "timeout  page-1.xml  took more than 1 seconds, ")) << hung.out;
    EXPECT_TRUE(has(hung.out, "3 logs, 3 timeout\n"));
}

// Pages of another log in the folder of one: neither is chosen by chance.
TEST_F(ToolRegress, TakesNoPageForAnother)
{
    ASSERT_EQ(regress({"--update"}).status, 0);
    fs::copy_file(folder.path("baseline/page-2.xml/page-2-002.png"), folder.path("baseline/page-1.xml/page-2-001.png"));
    const ToolResult two = regress({});
    EXPECT_EQ(two.status, 1);
    EXPECT_TRUE(has(two.out, "has two pages 1: page-1-001.png and page-2-001.png\n")) << two.out;
    EXPECT_TRUE(has(two.out, "3 logs, 2 passed, 1 failed\n")) << two.out;
    folder.write("baseline/page-1.xml/notes.txt", "mine");
    EXPECT_EQ(regress({"--update"}).status, 0);
    EXPECT_EQ(regress({}).out, kPassed);
    EXPECT_EQ(read_file(folder.path("baseline/page-1.xml/notes.txt")), "mine");
    EXPECT_FALSE(fs::exists(folder.path("baseline/page-1.xml/page-2-001.png")));
}

TEST_F(ToolRegress, SaysWhichFolderCantBeMade)
{
    ASSERT_EQ(regress({"--update"}).status, 0);
    const std::string taken = folder.write("taken", "a file");
    const ToolResult refused = regress({"--pictures", taken + "/pictures"});
    EXPECT_EQ(refused.status, 1);
    EXPECT_TRUE(has(refused.err, "orvlog: " + taken + "/pictures: ")) << refused.err;
}

#ifndef ORVLOG_INSTRUMENTED
TEST_F(ToolRegress, EndsWhatTakesTooMuchMemory)
{
    const ToolResult fat = regress({"--update", "--renderer-options", "eat=5", "--time", "60"}, "600");
    EXPECT_EQ(fat.status, 1);
    EXPECT_FALSE(has(fat.out, "updated")) << fat.out;
    EXPECT_FALSE(has(fat.out, "timeout")) << fat.out;
    EXPECT_FALSE(fs::exists(folder.path("baseline/page-1.xml")));
}
#endif

TEST_F(ToolRegress, SharesTheWorkInShards)
{
    ASSERT_EQ(regress({"--update"}).status, 0);
    EXPECT_EQ(regress({"--shard", "1/2"}).out,
              "passed   page-1.xml  1 page\npassed   page-3.xml  1 page\n2 logs, 2 passed\n");
    EXPECT_EQ(regress({"--shard", "2/2"}).out, "passed   page-2.xml  1 page\n1 logs, 1 passed\n");
    EXPECT_EQ(regress({"--shard", "9/9"}).out, "0 logs\n");
    EXPECT_EQ(regress({"--shard", "3/2"}).status, 2);
    EXPECT_EQ(regress({"--shard", "0/2"}).status, 2);
}

TEST(ToolProfile, TellsCallsKindsPagesAndATimeline)
{
    const ScratchFolder folder;
    const std::string trace = folder.path("trace.json");
    const ToolResult told = run_tool({"profile", sample_log(), "--renderer", kBlocks, "--renderer-options", "slow=40",
                                      "--trace", trace, "--json", "--runs", "2"});
    EXPECT_EQ(told.status, 0) << told.err;
    const auto costs = nlohmann::json::parse(told.out);
    // The 40th paint of the job takes 20 ms of the processor, and no other one does.
    EXPECT_EQ(costs["calls"][0]["call"], "39");
    EXPECT_GE(costs["calls"][0]["processor_ns"], 19'000'000);
    EXPECT_GE(costs["calls"][0]["wall_ns"], 19'000'000);
    EXPECT_EQ(costs["pages"].size(), 3U);
    uint64_t calls = 0;
    for (const auto& kind : costs["kinds"])
        calls += kind["calls"].get<uint64_t>();
    EXPECT_EQ(calls, 262U);
    const auto timeline = nlohmann::json::parse(read_file(trace));
    size_t pages = 0;
    size_t timed = 0;
    for (const auto& event : timeline["traceEvents"])
    {
        pages += event.value("cat", "") == "page" ? 1 : 0;
        timed += event.value("cat", "") == "call" ? 1 : 0;
    }
    EXPECT_EQ(pages, 3U);
    EXPECT_EQ(timed, 262U);
}

TEST(ToolProfile, TellsCallbacksApart)
{
    const ScratchFolder folder;
    const std::string log = folder.path("drawn.xml");
    ASSERT_EQ(run_tool({"record", ORVLOG_SOURCE_DIR "/docs/sample.pdf", "-o", log, "--png", folder.path("pages"),
                        "--pages", "2"})
                  .status,
              0);
    const ToolResult told = run_tool({"profile", log, "--renderer", ORVLOG_CAIRO_LIBRARY, "--runs", "1"});
    EXPECT_EQ(told.status, 0) << told.err;
    EXPECT_TRUE(has(told.out, "least of 1 run\n")) << told.out;
    EXPECT_TRUE(has(told.out, "  GOP_ImageReadFn\n")) << told.out;
    EXPECT_TRUE(has(told.out, "  GFI_StringStartFn\n")) << told.out;
    EXPECT_TRUE(has(told.out, "  ORV_object_paint\n")) << told.out;
}

TEST(ToolProfile, SaysWhereARendererCrashed)
{
    const ToolResult crashed =
        run_tool({"profile", sample_log(), "--renderer", kBlocks, "--renderer-options", "crash=1"});
    EXPECT_EQ(crashed.status, 1);
    EXPECT_TRUE(has(crashed.err, ": ended by signal 6 (Aborted), in ORV_object_paint_and_stroke, line "))
        << crashed.err;
}

TEST(ToolProfile, EndsARendererThatTakesTooLong)
{
    const ToolResult hung =
        run_tool({"profile", sample_log(), "--renderer", kBlocks, "--renderer-options", "hang=3", "--time", "1"});
    EXPECT_EQ(hung.status, 1);
    EXPECT_TRUE(has(hung.err, kBlocks + ": took more than 1 seconds, in ORV_object_paint")) << hung.err;
    EXPECT_EQ(hung.out, "");
    EXPECT_EQ(run_tool({"profile", sample_log(), "--renderer", kBlocks, "--time", "0"}).status, 2);
}

TEST(ToolProfile, SaysWhyALibraryCantBeUsed)
{
    const ScratchFolder folder;
    folder.write("text.so", "no library");
    const std::string cairo = ORVLOG_CAIRO_LIBRARY;
    const std::pair<Words, std::string> libraries[] = {
        {{folder.path("none.so")}, "none.so: "},
        {{folder.path("text.so")}, "text.so: "},
        {{cairo + ":other"}, ":other: has no function other\n"},
        {{cairo, "--renderer-options", "colour=no"}, "makes no renderer: no option of this renderer: colour=no\n"}};
    for (const auto& [library, said] : libraries)
    {
        Words words = {"profile", sample_log(), "--renderer"};
        words.insert(words.end(), library.begin(), library.end());
        const ToolResult refused = run_tool(words);
        EXPECT_EQ(refused.status, 1);
        EXPECT_TRUE(has(refused.err, said)) << refused.err;
        EXPECT_EQ(refused.out, "");
    }
}

// A complete event of a timeline, in nanoseconds.
struct Span
{
    int64_t begin;
    int64_t end;
    std::string category;
};

// Holds each event of a trace against the trace event format, and gives those that have a length.
std::vector<Span> spans_of(const nlohmann::json& trace)
{
    std::vector<Span> spans;
    EXPECT_EQ(trace["displayTimeUnit"], "ms");
    for (const auto& event : trace["traceEvents"])
    {
        EXPECT_TRUE(event["name"].is_string()) << event;
        EXPECT_TRUE(event["pid"].is_number_integer() && event["tid"].is_number_integer()) << event;
        EXPECT_EQ(event["tid"], 1) << event;
        if (event["ph"] == "M")
        {
            EXPECT_TRUE(event["args"]["name"].is_string()) << event;
            continue;
        }
        EXPECT_EQ(event["ph"], "X") << event;
        EXPECT_TRUE(event["ts"].is_number() && event["dur"].is_number()) << event;
        EXPECT_GE(event["ts"].get<double>(), 0) << event;
        EXPECT_GE(event["dur"].get<double>(), 0) << event;
        const int64_t begin = std::llround(event["ts"].get<double>() * 1e3);
        spans.push_back({begin, begin + std::llround(event["dur"].get<double>() * 1e3), event["cat"]});
    }
    return spans;
}

// Each event lies within the one around it, or behind the one before it: pages, calls, callbacks.
TEST(ToolProfile, WritesATimelineWhoseEventsNest)
{
    const ScratchFolder folder;
    const std::string log = folder.path("drawn.xml");
    const std::string trace = folder.path("trace.json");
    ASSERT_EQ(
        run_tool({"record", ORVLOG_SOURCE_DIR "/docs/sample.pdf", "-o", log, "--png", folder.path("pages")}).status, 0);
    ASSERT_EQ(run_tool({"profile", log, "--renderer", ORVLOG_CAIRO_LIBRARY, "--runs", "1", "--trace", trace}).status,
              0);
    std::vector<Span> spans = spans_of(nlohmann::json::parse(read_file(trace)));
    std::ranges::stable_sort(spans, [](const Span& a, const Span& b)
                             { return a.begin != b.begin ? a.begin < b.begin : a.end > b.end; });
    const std::map<std::string, std::string> around = {{"call", "page"}, {"callback", "call"}};
    std::map<std::string, size_t> counts;
    std::vector<Span> open;
    for (const Span& one : spans)
    {
        ++counts[one.category];
        // A clock may not have moved on.
        if (one.begin == one.end)
            continue;
        while (!open.empty() && open.back().end <= one.begin)
            open.pop_back();
        if (!open.empty())
        {
            EXPECT_LE(one.end, open.back().end) << one.category << " at " << one.begin;
            EXPECT_EQ(around.at(one.category), open.back().category) << "at " << one.begin;
        }
        open.push_back(one);
    }
    EXPECT_EQ(counts["page"], 3U);
    EXPECT_EQ(counts["call"], 262U);
    EXPECT_GT(counts["callback"], 100U);
}

}  // namespace
