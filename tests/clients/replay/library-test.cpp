// Replays into renderers that are shared libraries.

#include "tests/clients/replay/jobs.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <string_view>

namespace
{

namespace fs = std::filesystem;
using namespace orvlog::test;

class ReplayIntoALibrary : public testing::Test
{
protected:
    void SetUp() override
    {
        const ToolResult recorded =
            run_in(scratch.path(""), {ORVLOG_RECORD_PROGRAM, sample(), "-o", "job.xml", "--png", "pages"});
        ASSERT_EQ(recorded.status, 0) << recorded.err;
    }

    ToolResult replay(const std::string& renderer, Words options)
    {
        options.insert(options.begin(), {ORVLOG_TOOL, "replay", "job.xml", "--renderer", renderer});
        return run_in(scratch.path(""), options);
    }

    ScratchFolder scratch;
};

TEST_F(ReplayIntoALibrary, GivesThePagesAndTheLogOfTheJob)
{
    const ToolResult played = replay(ORVLOG_CAIRO_LIBRARY, {"--png", "again", "--log", "again.xml"});
    EXPECT_EQ(played.status, 0);
    EXPECT_EQ(played.err, "262 calls, 3 pages\n");
    EXPECT_EQ(pages_of(scratch.path("again")), pages_of(scratch.path("pages")));
    EXPECT_EQ(pages_of(scratch.path("again")).size(), 3U);
    EXPECT_EQ(read_file(scratch.path("again.xml")), read_file(scratch.path("job.xml")));
}

TEST_F(ReplayIntoALibrary, GivesTheSamePagesWithoutTheLogger)
{
    const ToolResult played = replay(std::string(ORVLOG_CAIRO_LIBRARY) + ":orvlog_renderer",
                                     {"--png", "again", "--renderer-options", "keep-images=no,glyphs=path"});
    EXPECT_EQ(played.status, 0);
    EXPECT_EQ(played.err, "262 calls, 3 pages\n");
    EXPECT_EQ(pages_of(scratch.path("again")), pages_of(scratch.path("pages")));
}

TEST_F(ReplayIntoALibrary, SaysWhatIsWrongWithTheLibrary)
{
    const std::string library = ORVLOG_CAIRO_LIBRARY;
    ToolResult played = replay("./none.so", {});
    EXPECT_EQ(played.status, 1);
    EXPECT_TRUE(played.err.starts_with("orvlog: ./none.so: ")) << played.err;
    EXPECT_NE(played.err.find("No such file"), std::string::npos) << played.err;
    scratch.write("text.so", "no library");
    EXPECT_EQ(replay("text.so", {}).status, 1);
    played = replay(library + ":other", {});
    EXPECT_EQ(played.status, 1);
    EXPECT_EQ(played.err, "orvlog: " + library + ":other: has no function other\n");
    played = replay(library, {"--renderer-options", "colour=no"});
    EXPECT_EQ(played.status, 1);
    EXPECT_EQ(played.err, "orvlog: " + library + ": makes no renderer: no option of this renderer: colour=no\n");
}

TEST_F(ReplayIntoALibrary, TakesNoOptionsThatAreForOthers)
{
    EXPECT_EQ(replay(ORVLOG_CAIRO_LIBRARY, {"--pdf", "x.pdf"}).status, 2);
    EXPECT_EQ(replay("cairo", {"--renderer-options", "keep-images=yes"}).status, 2);
    EXPECT_FALSE(fs::exists(scratch.path("x.pdf")));
}

// A library that ends badly, and what is said of it.
struct BadEnd
{
    const char* symbol;
    const char* said;
};

class ReplayIntoABadLibrary : public ReplayIntoALibrary, public testing::WithParamInterface<BadEnd>
{
};

TEST_P(ReplayIntoABadLibrary, IsToldByTheCallAndItsLine)
{
    const std::string library = std::string(ORVLOG_ROW_RENDERER) + ":" + GetParam().symbol;
    const ToolResult played = replay(library, {"--log", "again.xml", "--png", "again", "--call-limit", "2"});
    EXPECT_EQ(played.status, 1);
    const std::string tenth = "orvlog: " + library + ": " + GetParam().said +
                              ", in ORV_object_paint_and_stroke, line 6090\n" +
                              "orvlog: again.xml: is cut short there\n";
    EXPECT_TRUE(played.err.ends_with(tenth)) << played.err;
    EXPECT_NE(read_file(scratch.path("again.xml")).find("<ORV_object_paint_and_stroke id=\"9\""), std::string::npos);
}

INSTANTIATE_TEST_SUITE_P(Ends, ReplayIntoABadLibrary,
                         testing::Values(BadEnd{"crashing_renderer", "ended by signal 6 (Aborted)"},
                                         BadEnd{"hanging_renderer", "did not come back within 2 s"},
                                         BadEnd{"leaving_renderer", "ended the process with the status 0"}));

// The log of a job with one of three renderers that share no code, and its replay as logged.
class AsLoggedOf : public ReplayIntoALibrary, public testing::WithParamInterface<const char*>
{
protected:
    static std::string renderer()
    {
        const std::string name = GetParam();
        return name.empty() ? ORVLOG_CAIRO_LIBRARY : ORVLOG_ROW_RENDERER + std::string(":") + name;
    }

    static bool keeps_images()
    {
        return GetParam() == std::string_view("fumbling_renderer");
    }

    // The log of `source`, drawn by the renderer: in a folder, with what lies beside it.
    void draw(const std::string& source, const Words& options)
    {
        fs::remove_all(scratch.path("one"));
        fs::remove_all(scratch.path("two"));
        fs::create_directories(scratch.path("one"));
        fs::create_directories(scratch.path("two"));
        Words words = {ORVLOG_TOOL, "replay", scratch.path(source), "--renderer", renderer(), "--log", "job.xml"};
        words.insert(words.end(), options.begin(), options.end());
        const ToolResult drawn = run_in(scratch.path("one"), words);
        ASSERT_EQ(drawn.status, 0) << drawn.err;
    }

    void expect_the_log_again(const Words& options)
    {
        Words words = {ORVLOG_TOOL, "replay", "../one/job.xml", "--renderer", "none", "--log", "job.xml"};
        words.insert(words.end(), options.begin(), options.end());
        const ToolResult played = run_in(scratch.path("two"), words);
        EXPECT_EQ(played.status, 0) << played.err;
        EXPECT_TRUE(files_of(scratch.path("one")) == files_of(scratch.path("two")));
        EXPECT_GT(read_file(scratch.path("two/job.xml")).size(), 10000U);
    }

    // Plain and coded, images within and beside, kept images with logs of their own and in the log: all together.
    void try_each_way(const std::string& source)
    {
        for (uint32_t way = 0; way < 8; ++way)
        {
            // The logs of kept images are coded together with the log: apart from each other none can be read.
            if (keeps_images() && (way & 5) == 1)
                continue;
            Words options;
            if ((way & 1) != 0)
                options.emplace_back("--compressed");
            if ((way & 2) != 0)
                options.insert(options.end(), {"--images-beside", "side"});
            if ((way & 4) != 0)
                options.emplace_back("--via-temporary-log");
            SCOPED_TRACE(testing::PrintToString(options));
            draw(source, options);
            expect_the_log_again(options);
        }
    }
};

TEST_P(AsLoggedOf, KeepsImagesOrNot)
{
    draw("job.xml", {});
    const bool kept = read_file(scratch.path("one/job.xml")).find("<GOP_ImageKeepFn ") != std::string::npos;
    EXPECT_EQ(kept, keeps_images());
}

TEST_P(AsLoggedOf, GivesTheLogInTransparentMode)
{
    try_each_way("job.xml");
}

TEST_P(AsLoggedOf, GivesTheLogInBaseMode)
{
    const ToolResult recorded =
        run_in(scratch.path(""), {ORVLOG_RECORD_PROGRAM, sample(), "-o", "base.xml", "--mode", "base", "--pages", "1"});
    ASSERT_EQ(recorded.status, 0) << recorded.err;
    try_each_way("base.xml");
}

INSTANTIATE_TEST_SUITE_P(Renderers, AsLoggedOf, testing::Values("", "orvlog_renderer", "fumbling_renderer"));

}  // namespace
