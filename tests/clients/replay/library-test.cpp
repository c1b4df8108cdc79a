// Replays into renderers that are shared libraries.

#include "tests/clients/replay/jobs.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

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

}  // namespace
