// The two laws of a replay: its pages are the pages of the job, and its log is the log.

#include "tests/clients/pdf/small-document.h"
#include "tests/clients/replay/documents.h"
#include "tests/clients/replay/jobs.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <regex>
#include <string>
#include <vector>

namespace
{

namespace fs = std::filesystem;
using namespace orvlog::test;

// A job in one way of recording, and again from its log.
class Law : public testing::Test
{
protected:
    // Records `document` with `options` in the folder "job", and replays its log with `again` in the folder "again".
    void run(const std::string& document, const Words& options, const Words& again = {})
    {
        job = scratch.path("job");
        replay = scratch.path("again");
        fs::remove_all(job);
        fs::remove_all(replay);
        fs::create_directories(job);
        fs::create_directories(replay);
        const bool drawn = std::find(options.begin(), options.end(), "--no-renderer") == options.end();
        Words record = {ORVLOG_RECORD_PROGRAM, document, "-o", "job.xml"};
        if (drawn)
            record.insert(record.end(), {"--png", "pages"});
        record.insert(record.end(), options.begin(), options.end());
        const ToolResult recorded = run_in(job, record);
        ASSERT_EQ(recorded.status, 0) << recorded.err;
        Words play = {ORVLOG_TOOL, "replay", "../job/job.xml", "--log", "job.xml"};
        if (drawn)
            play.insert(play.end(), {"--png", "pages"});
        play.insert(play.end(), again.begin(), again.end());
        const ToolResult played = run_in(replay, play);
        ASSERT_EQ(played.status, 0) << played.err;
        EXPECT_EQ(played.err.find("damaged"), std::string::npos) << played.err;
        EXPECT_EQ(played.err.find("not played"), std::string::npos) << played.err;
    }

    // True if there are pages, as many as in the job and the same.
    bool same_pages() const
    {
        return pages_of(job + "/pages") == pages_of(replay + "/pages") && !pages_of(job + "/pages").empty();
    }

    bool same_log() const
    {
        const std::string log = read_file(job + "/job.xml");
        return !log.empty() && log == read_file(replay + "/job.xml");
    }

    ScratchFolder scratch;
    std::string job;
    std::string replay;
};

class LawOfEachMode : public Law, public testing::WithParamInterface<const char*>
{
protected:
    Words with_mode(Words options) const
    {
        options.insert(options.end(), {"--mode", GetParam()});
        return options;
    }
};

TEST_P(LawOfEachMode, OfAPlainLog)
{
    run(sample(), with_mode({}));
    EXPECT_TRUE(same_pages());
    EXPECT_TRUE(same_log());
}

TEST_P(LawOfEachMode, WithAllFormsOfGlyphs)
{
    run(sample(), with_mode({"--glyphs", "all", "--pages", "1"}));
    EXPECT_TRUE(same_pages());
    EXPECT_TRUE(same_log());
}

TEST_P(LawOfEachMode, WithBitmapGlyphs)
{
    run(sample(), with_mode({"--glyphs", "bitmaps", "--pages", "1"}));
    EXPECT_TRUE(same_pages());
    EXPECT_TRUE(same_log());
}

TEST_P(LawOfEachMode, OfACodedLog)
{
    run(sample(), with_mode({"--compressed", "--pages", "1"}), {"--compressed"});
    EXPECT_TRUE(same_pages());
    EXPECT_TRUE(same_log());
}

TEST_P(LawOfEachMode, WithImagesBesideTheLog)
{
    run(sample(), with_mode({"--images-beside", "side"}), {"--images-beside", "side"});
    EXPECT_TRUE(same_pages());
    EXPECT_TRUE(same_log());
    EXPECT_EQ(files_of(job), files_of(replay));
}

TEST_P(LawOfEachMode, ThroughATemporaryLogWithKeptImages)
{
    run(sample(), with_mode({"--keep-images", "--via-temporary-log"}), {"--via-temporary-log"});
    EXPECT_TRUE(same_pages());
    EXPECT_TRUE(same_log());
}

TEST_P(LawOfEachMode, WithTheLogsOfKeptImagesBesideIt)
{
    run(sample(), with_mode({"--keep-images"}));
    EXPECT_TRUE(same_pages());
    // Each log names its own.
    EXPECT_EQ(without_session_ids(read_file(job + "/job.xml")), without_session_ids(read_file(replay + "/job.xml")));
}

TEST_P(LawOfEachMode, WithoutARenderer)
{
    run(sample(), with_mode({"--no-renderer"}));
    EXPECT_TRUE(same_log());
}

// Two strings of one glyph each, of a font with an outline and a bitmap.
TEST_P(LawOfEachMode, WithStringsOfOneGlyph)
{
    const std::string outline = orvlog::small_document::stream("", "100 0 0 0 90 90 d1 0 0 90 90 re f");
    const std::string bitmap = orvlog::small_document::stream(
        "", "100 0 0 0 90 90 d1 q 80 0 0 80 0 0 cm BI /W 8 /H 2 /IM true /F /AHx ID 5533> EI Q");
    const std::string font = "<< /Type /Font /Subtype /Type3 /FontBBox [0 0 100 100] /FontMatrix [0.01 0 0 0.01 0 0] "
                             "/CharProcs << /A 6 0 R /B 7 0 R >> /Encoding << /Differences [65 /A /B] >> "
                             "/FirstChar 65 /LastChar 66 /Widths [100 100] >>";
    for (const char* content : {"BT /F 20 Tf 10 60 Td (A) Tj 30 0 Td (A) Tj ET", "BT /F 20 Tf 10 60 Td (B) Tj ET",
                                "BT /F 20 Tf 10 60 Td (B) Tj 0 -40 Td (AB) Tj ET"})
    {
        const std::string document = scratch.write(
            "one.pdf", orvlog::small_document::page(content, "/Font << /F 5 0 R >>", {font, outline, bitmap}));
        for (const char* glyphs : {"outlines", "bitmaps", "all"})
        {
            run(document, with_mode({"--glyphs", glyphs}));
            EXPECT_TRUE(same_pages()) << content << " " << glyphs;
            EXPECT_TRUE(same_log()) << content << " " << glyphs;
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Modes, LawOfEachMode, testing::Values("transparent", "base"));

TEST_F(Law, ALogOfBaseModeWithoutARendererIsEnoughToDrawFrom)
{
    run(sample(), {"--mode", "base", "--no-renderer"});
    ASSERT_EQ(run_in(job, {ORVLOG_RECORD_PROGRAM, sample(), "-o", "drawn.xml", "--png", "pages"}).status, 0);
    ASSERT_EQ(run_in(replay, {ORVLOG_TOOL, "replay", "../job/job.xml", "--png", "pages"}).status, 0);
    EXPECT_EQ(pages_of(job + "/pages"), pages_of(replay + "/pages"));
    EXPECT_FALSE(pages_of(job + "/pages").empty());
}

TEST_F(Law, ALogOfBaseModeWithBitmapsIsEnoughToDrawBitmapsFrom)
{
    run(sample(), {"--mode", "base", "--no-renderer", "--glyphs", "bitmaps", "--pages", "1"});
    const Words drawn = {
        ORVLOG_RECORD_PROGRAM, sample(), "-o", "drawn.xml", "--png", "pages", "--glyphs", "bitmaps", "--pages", "1"};
    ASSERT_EQ(run_in(job, drawn).status, 0);
    ASSERT_EQ(run_in(replay, {ORVLOG_TOOL, "replay", "../job/job.xml", "--png", "pages"}).status, 0);
    EXPECT_EQ(pages_of(job + "/pages"), pages_of(replay + "/pages"));
    EXPECT_FALSE(pages_of(job + "/pages").empty());
}

// What the sample doesn't have. scripts/law-sweep takes folders of documents.
class LawOfDocuments : public Law, public testing::WithParamInterface<std::string>
{
protected:
    std::string document() const
    {
        return scratch.write("made.pdf", made_document(GetParam()));
    }
};

TEST_P(LawOfDocuments, InBothModes)
{
    for (const char* mode : {"transparent", "base"})
    {
        run(document(), {"--mode", mode});
        EXPECT_TRUE(same_pages()) << mode;
        EXPECT_TRUE(same_log()) << mode;
    }
}

TEST_P(LawOfDocuments, DrawnFromBaseModeAlone)
{
    run(document(), {"--mode", "base", "--no-renderer"});
    EXPECT_TRUE(same_log());
    ASSERT_EQ(run_in(job, {ORVLOG_RECORD_PROGRAM, document(), "-o", "drawn.xml", "--png", "pages"}).status, 0);
    ASSERT_EQ(run_in(replay, {ORVLOG_TOOL, "replay", "../job/job.xml", "--png", "pages"}).status, 0);
    EXPECT_EQ(pages_of(job + "/pages"), pages_of(replay + "/pages"));
}

INSTANTIATE_TEST_SUITE_P(Documents, LawOfDocuments, testing::ValuesIn(made_documents()),
                         [](const auto& made) { return std::regex_replace(made.param, std::regex("-"), "_"); });

}  // namespace
