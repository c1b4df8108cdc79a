// What a job and its replay leave, where, and what they say when it isn't all there.

#include "tests/clients/replay/jobs.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <string>

namespace
{

namespace fs = std::filesystem;
using namespace orvlog::test;

// A page with a gray image of 20 rows, 2000 bytes each: its log is shorter than its bytes.
std::string page_with_image()
{
    std::string pixels;
    for (int row = 0; row < 20; ++row)
        pixels += std::string(2000, static_cast<char>('a' + row));
    return "%PDF-1.4\n1 0 obj\n<< /Type /Catalog /Pages 2 0 R >>\nendobj\n"
           "2 0 obj\n<< /Type /Pages /Count 1 /Kids [3 0 R] >>\nendobj\n"
           "3 0 obj\n<< /Type /Page /Parent 2 0 R /MediaBox [0 0 200 200] /Contents 4 0 R "
           "/Resources << /XObject << /I 5 0 R >> >> >>\nendobj\n"
           "4 0 obj\n<< /Length 27 >>\nstream\nq 200 0 0 200 0 0 cm /I Do Q\nendstream\nendobj\n"
           "5 0 obj\n<< /Type /XObject /Subtype /Image /ColorSpace /DeviceGray /BitsPerComponent 8 /Width 2000 "
           "/Height 20 /Length " +
           std::to_string(pixels.size()) + " >>\nstream\n" + pixels +
           "\nendstream\nendobj\ntrailer\n<< /Size 6 /Root 1 0 R >>\n%%EOF\n";
}

class JobFiles : public testing::Test
{
protected:
    ToolResult record(Words words, const std::string& folder = "") const
    {
        words.insert(words.begin(), {ORVLOG_RECORD_PROGRAM, document});
        return run_in(scratch.path(folder), words);
    }
    ToolResult replay(Words words) const
    {
        words.insert(words.begin(), {ORVLOG_TOOL, "replay"});
        return run_in(scratch.path(""), words);
    }
    // As record, with no file longer than so many blocks of 512 bytes.
    ToolResult record_limited(int blocks, const std::string& words) const
    {
        const std::string line =
            "ulimit -f " + std::to_string(blocks) + "; exec " ORVLOG_RECORD_PROGRAM " '" + document + "' " + words;
        return run_in(scratch.path(""), {"sh", "-c", line});
    }
    std::vector<std::string> names(const std::string& folder) const
    {
        std::vector<std::string> found;
        for (const auto& [name, content] : files_of(scratch.path(folder)))
            found.push_back(name);
        return found;
    }

    ScratchFolder scratch;
    std::string document = sample();
};

TEST_F(JobFiles, PageImagesHaveTheNumberOfTheirPage)
{
    ASSERT_EQ(record({"-o", "all.xml", "--png", "all"}).status, 0);
    ASSERT_EQ(record({"-o", "last.xml", "--png", "last", "--pages", "3"}).status, 0);
    EXPECT_EQ(names("last"), Words{"sample-003.png"});
    EXPECT_EQ(read_file(scratch.path("last/sample-003.png")), read_file(scratch.path("all/sample-003.png")));
    ASSERT_EQ(replay({"last.xml", "--png", "again"}).status, 0);
    EXPECT_EQ(names("again"), Words{"last-003.png"});
    ASSERT_EQ(replay({"all.xml", "--png", "some", "--pages", "2-3"}).status, 0);
    EXPECT_EQ(names("some"), (Words{"all-002.png", "all-003.png"}));
}

// A client that numbers its faces otherwise.
TEST_F(JobFiles, PagesWhoseNumbersDoNotRiseAreNamedByTheirPlace)
{
    ASSERT_EQ(record({"-o", "a.xml", "--pages", "2-3", "--no-renderer", "--mode", "base"}).status, 0);
    std::string log = read_file(scratch.path("a.xml"));
    const std::string third = "face_seq_number=\"3\"";
    log.replace(log.find(third), third.size(), "face_seq_number=\"2\"");
    const std::string equal = scratch.write("equal.xml", log);
    ASSERT_EQ(replay({"equal.xml", "--png", "p"}).status, 0);
    EXPECT_EQ(names("p"), (Words{"equal-001.png", "equal-002.png"}));
    ASSERT_EQ(replay({"equal.xml", "--png", "q", "--pages", "2"}).status, 0);
    EXPECT_EQ(names("q"), Words{"equal-002.png"});
}

TEST_F(JobFiles, WhatLiesBesideALogInAnotherFolderIsFoundThere)
{
    fs::create_directories(scratch.path("sub"));
    for (const char* prefix : {"pre", "sub/pre"})
    {
        fs::remove_all(scratch.path("sub"));
        fs::create_directories(scratch.path("sub"));
        const ToolResult result =
            record({"-o", "sub/x.xml", "--keep-images", "--images-beside", prefix, "--png", "pages"});
        EXPECT_EQ(result.status, 0) << result.err;
        EXPECT_TRUE(names("").empty());
        EXPECT_TRUE(fs::exists(scratch.path("sub/pre-img-10.bin")));
        const ToolResult again = replay({"sub/x.xml", "--png", "again", "--log", "sub/again.xml"});
        EXPECT_EQ(again.status, 0) << again.err;
        EXPECT_EQ(pages_of(scratch.path("pages")), pages_of(scratch.path("again")));
        EXPECT_EQ(replay({"sub/again.xml", "--png", "third"}).status, 0);
        EXPECT_EQ(pages_of(scratch.path("pages")), pages_of(scratch.path("third")));
    }
}

TEST_F(JobFiles, APrefixOfAnotherFolderIsTheUsers)
{
    fs::create_directories(scratch.path("images"));
    fs::create_directories(scratch.path("sub"));
    EXPECT_EQ(record({"-o", "sub/x.xml", "--images-beside", "images/p", "--no-renderer", "--mode", "base"}).status, 0);
    EXPECT_TRUE(fs::exists(scratch.path("images/p-img-10.bin")));
    const ToolResult result = record({"-o", "sub/x.xml", "--images-beside", "none/p"});
    EXPECT_EQ(result.status, 1);
    EXPECT_NE(result.err.find("/none: No such file or directory\n"), std::string::npos) << result.err;
}

TEST_F(JobFiles, MissingDataIsAnErrorUnlessItIsAllowed)
{
    ASSERT_EQ(record({"-o", "x.xml", "--images-beside", "pre"}).status, 0);
    fs::resize_file(scratch.path("pre-img-10.bin"), 100);
    ToolResult result = replay({"x.xml", "--png", "pages"});
    EXPECT_EQ(result.status, 1);
    EXPECT_NE(result.err.find("orvlog: x.xml: the file pre-img-10.bin is too short\n"), std::string::npos)
        << result.err;
    EXPECT_NE(result.err.find("orvlog: x.xml: lacks data in "), std::string::npos) << result.err;
    fs::remove(scratch.path("pre-img-10.bin"));
    EXPECT_EQ(replay({"x.xml", "--png", "pages"}).status, 1);
    result = replay({"x.xml", "--png", "pages", "--allow-missing"});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.err.substr(0, result.err.find('\n')), "orvlog: x.xml: the file pre-img-10.bin is missing");
}

TEST_F(JobFiles, AMissingLogOfAKeptImageIsAnError)
{
    ASSERT_EQ(record({"-o", "x.xml", "--keep-images"}).status, 0);
    for (const std::string& name : names(""))
        if (name.ends_with(".tmp"))
            fs::remove(scratch.path(name));
    EXPECT_EQ(replay({"x.xml", "--png", "pages"}).status, 1);
    EXPECT_EQ(replay({"x.xml", "--png", "pages", "--allow-missing"}).status, 0);
}

TEST_F(JobFiles, ASideFileThatIsCutIsTold)
{
    document = scratch.write("image.pdf", page_with_image());
    const std::string words = "-o x.xml --no-renderer --mode base --images-beside pre";
    ASSERT_EQ(record_limited(1000, words).status, 0);
    EXPECT_LT(fs::file_size(scratch.path("x.xml")), 64 * 512U);
    const ToolResult result = record_limited(64, words);
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.err, "orvlog-record: pre-img-10.bin: has 32768 bytes, due were 40000\n");
}

TEST_F(JobFiles, ASideFileThatIsCutIsToldByReplayToo)
{
    document = scratch.write("image.pdf", page_with_image());
    ASSERT_EQ(record({"-o", "x.xml", "--no-renderer", "--mode", "base", "--images-beside", "pre"}).status, 0);
    const ToolResult result =
        run_in(scratch.path(""),
               {"sh", "-c", "ulimit -f 64; exec " ORVLOG_TOOL " replay x.xml --log y.xml --images-beside again"});
    EXPECT_EQ(result.status, 1);
    EXPECT_NE(result.err.find("orvlog: again-img-10.bin: has 32768 bytes, due were 40000\n"), std::string::npos)
        << result.err;
}

// What follows "by: " in what was said.
std::string told_command(const ToolResult& result)
{
    const size_t begin = result.err.find("by: ");
    return begin == std::string::npos ? "" : result.err.substr(begin + 4, result.err.find('\n', begin) - begin - 4);
}

TEST_F(JobFiles, ATemporaryLogThatIsCutIsTold)
{
    const ToolResult result = record_limited(64, "-o x.xml --no-renderer --via-temporary-log");
    EXPECT_EQ(result.status, 1);
    EXPECT_NE(result.err.find(".tmp: File too large; the log is incomplete\n"), std::string::npos) << result.err;
    const std::string command = told_command(result);
    EXPECT_EQ(command.substr(0, 20), "orvlog merge orvlog-") << result.err;
    EXPECT_EQ(command.substr(command.size() - 9), " -o x.xml") << result.err;
}

TEST_F(JobFiles, AMergeThatFailsLosesNothing)
{
    ASSERT_EQ(record({"-o", "due.xml", "--keep-images", "--via-temporary-log"}).status, 0);
    const ToolResult result = record({"-o", "/dev/full", "--keep-images", "--via-temporary-log"});
    EXPECT_EQ(result.status, 1);
    std::string command = told_command(result);
    ASSERT_EQ(command.substr(command.size() - 9), "/dev/full") << result.err;
    command.replace(0, 6, ORVLOG_TOOL);
    command.replace(command.size() - 9, 9, "got.xml");
    EXPECT_EQ(run_in(scratch.path(""), {"sh", "-c", command}).status, 0);
    EXPECT_EQ(read_file(scratch.path("got.xml")), read_file(scratch.path("due.xml")));
    EXPECT_EQ(names(""), (Words{"due.xml", "got.xml"}));
}

TEST_F(JobFiles, ACodedReplayOfKeptImagesCanBeRead)
{
    ASSERT_EQ(record({"-o", "x.xml", "--keep-images", "--compressed"}).status, 0);
    ASSERT_EQ(replay({"x.xml", "--log", "y.xml", "--compressed"}).status, 0);
    EXPECT_EQ(read_file(scratch.path("y.xml")), read_file(scratch.path("x.xml")));
    EXPECT_EQ(names(""), (Words{"x.xml", "y.xml"}));
}

TEST_F(JobFiles, WhatCannotBeDrawnIsSaid)
{
    ASSERT_EQ(record({"-o", "x.xml", "--pages", "1"}).status, 0);
    ToolResult result = replay({"x.xml", "--png", "p", "--pages", "7"});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.err, "orvlog: x.xml: has no page 7, but 1 in all\n");
    EXPECT_FALSE(fs::exists(scratch.path("p")));
    for (const char* form : {"--png", "--svg", "--pdf"})
    {
        result = replay({"x.xml", form, "y", "--renderer", "none"});
        EXPECT_EQ(result.status, 2) << form;
        EXPECT_EQ(result.err, "orvlog replay: --renderer none draws no pages for --png, --svg or --pdf (see orvlog "
                              "replay --help)\n");
        EXPECT_FALSE(fs::exists(scratch.path("y")));
    }
    std::string log = read_file(scratch.path("x.xml"));
    const size_t width = log.find("fp_WidthInPixels=\"") + 18;
    log.insert(width, "999");
    scratch.write("wide.xml", log);
    result = replay({"wide.xml", "--png", "p"});
    EXPECT_EQ(result.status, 1);
    EXPECT_NE(result.err.find("orvlog: wide.xml: 1 pages could not be drawn\n"), std::string::npos) << result.err;
    fs::create_directories(scratch.path("svg/x-001.svg"));
    EXPECT_EQ(replay({"x.xml", "--svg", "svg"}).status, 1);
}

TEST_F(JobFiles, AVectorPageThatIsCutIsTold)
{
    ASSERT_EQ(record({"-o", "x.xml", "--pages", "1"}).status, 0);
    const ToolResult result =
        run_in(scratch.path(""), {"sh", "-c", "ulimit -f 8; exec " ORVLOG_TOOL " replay x.xml --svg svg"});
    EXPECT_EQ(result.status, 1);
    EXPECT_NE(result.err.find("orvlog: a page could not be written\n"), std::string::npos) << result.err;
}

}  // namespace
