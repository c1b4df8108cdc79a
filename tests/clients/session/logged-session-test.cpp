#include "clients/session/logged-session.h"

#include "tests/support/fake-renderer.h"
#include "tests/support/temp-folder.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

namespace
{

using orvlog::client_session::LoggedSession;
using orvlog::client_session::LoggedSessionOptions;
using orvlog::test::FakeRenderer;
using orvlog::test::TempFolder;

using Names = std::vector<std::string>;

constexpr char kJob[] =
    "  <ORV_document_start document_context=\"0\" document_id=\"7\" font_engine_functions=\"FALSE\">\n"
    "  </ORV_document_start>\n"
    "  <ORV_document_finish document_context=\"0\">\n"
    "  </ORV_document_finish>\n"
    "</ORV>\n";

void draw(const ORV_Interface* orv)
{
    void* document = nullptr;
    orv->document_start.fn(nullptr, orv, &document, 7, nullptr, nullptr);
    orv->document_finish.fn(orv, document);
}

// The log of a small job; nothing must be lacking.
std::string log_of(const LoggedSessionOptions& options, const TempFolder& folder)
{
    LoggedSession session(options);
    std::string why;
    EXPECT_TRUE(session.open_log(&why)) << why;
    EXPECT_TRUE(session.begin(nullptr, &why)) << why;
    draw(session.table());
    EXPECT_EQ(session.close(), Names());
    const std::string log = folder.read(options.log);
    EXPECT_EQ(session.log_bytes(), static_cast<int64_t>(log.size()));
    return log;
}

std::string behind_the_root(const std::string& log)
{
    return log.substr(log.find('\n') + 1);
}

LoggedSessionOptions to_job_xml()
{
    LoggedSessionOptions options;
    options.log = "job.xml";
    return options;
}

TEST(LoggedSession, LeavesAWholeLogOnEachStream)
{
    const TempFolder folder;
    for (const auto stream : {orvlog::client_stream::StreamKind::file, orvlog::client_stream::StreamKind::mapped})
    {
        LoggedSessionOptions options = to_job_xml();
        options.stream = stream;
        const std::string log = log_of(options, folder);
        EXPECT_EQ(behind_the_root(log), kJob);
        EXPECT_NE(log.find(" LoggingMode=\"transparent\" "), std::string::npos);
    }
    EXPECT_EQ(folder.names(), Names{"job.xml"});
}

TEST(LoggedSession, BaseModeIsToldByTheRootOrNot)
{
    const TempFolder folder;
    LoggedSessionOptions options = to_job_xml();
    options.base_content = true;
    EXPECT_NE(log_of(options, folder).find(" LoggingMode=\"transparent\" "), std::string::npos);
    options.base_mode = true;
    EXPECT_NE(log_of(options, folder).find(" LoggingMode=\"base\" "), std::string::npos);
}

TEST(LoggedSession, ATemporaryLogIsMergedAndGone)
{
    const TempFolder folder;
    LoggedSessionOptions options = to_job_xml();
    options.via_temporary_log = true;
    EXPECT_EQ(behind_the_root(log_of(options, folder)), kJob);
    EXPECT_EQ(folder.names(), Names{"job.xml"});
}

// A coded log whose images are kept is coded in the merge, and as a whole.
TEST(LoggedSession, KeptImagesAreNotCodedOnTheFly)
{
    const TempFolder folder;
    LoggedSessionOptions options = to_job_xml();
    options.compressed = true;
    options.keeps_images = true;
    LoggedSession session(options);
    std::string why;
    ASSERT_TRUE(session.open_log(&why)) << why;
    ASSERT_TRUE(session.begin(nullptr, &why)) << why;
    EXPECT_EQ(folder.names().size(), 2U) << "the log, and the temporary one";
    EXPECT_EQ(folder.read("job.xml"), "");
    draw(session.table());
    EXPECT_EQ(session.close(), Names());
    EXPECT_EQ(folder.names(), Names{"job.xml"});
    EXPECT_EQ(folder.read("job.xml").substr(0, 35), "<ORV compression=\"Adaptive Huffman\"");
}

TEST(LoggedSession, WorksInTheFolderOfTheLogAndComesBack)
{
    const TempFolder folder;
    const std::filesystem::path home = std::filesystem::current_path();
    std::filesystem::create_directory("sub");
    LoggedSessionOptions options = to_job_xml();
    options.log = "sub/job.xml";
    LoggedSession session(options);
    std::string why;
    ASSERT_TRUE(session.open_log(&why)) << why;
    EXPECT_EQ(std::filesystem::current_path(), home);
    ASSERT_TRUE(session.begin(nullptr, &why)) << why;
    EXPECT_EQ(std::filesystem::current_path(), home / "sub");
    session.comment("a word of the program's\n");
    draw(session.table());
    EXPECT_EQ(session.close(), Names());
    EXPECT_EQ(std::filesystem::current_path(), home);
    EXPECT_NE(folder.read("sub/job.xml").find("a word of the program's\n"), std::string::npos);
}

TEST(LoggedSession, ALogOfBeforeStaysWhenItsFilesHaveNoFolder)
{
    const TempFolder folder;
    std::ofstream("job.xml") << "of before";
    LoggedSessionOptions options = to_job_xml();
    options.image_prefix = "nowhere/image";
    LoggedSession session(options);
    std::string why;
    EXPECT_FALSE(session.open_log(&why));
    EXPECT_NE(why.find("nowhere: No such file or directory"), std::string::npos) << why;
    EXPECT_EQ(folder.read("job.xml"), "of before");
}

TEST(LoggedSession, SaysWhyALogCannotBeOpened)
{
    const TempFolder folder;
    LoggedSessionOptions options = to_job_xml();
    options.log = "nowhere/job.xml";
    LoggedSession session(options);
    std::string why;
    EXPECT_FALSE(session.open_log(&why));
    EXPECT_EQ(why, "nowhere/job.xml: No such file or directory");
    EXPECT_FALSE(session.has_begun());
    EXPECT_EQ(session.close(), Names());
}

TEST(LoggedSession, ADiskThatFillsIsToldAndTheTemporaryLogStays)
{
    const TempFolder folder;
    for (const bool detour : {false, true})
    {
        LoggedSessionOptions options;
        options.log = "/dev/full";
        options.via_temporary_log = detour;
        LoggedSession session(options);
        std::string why;
        ASSERT_TRUE(session.open_log(&why)) << why;
        ASSERT_TRUE(session.begin(nullptr, &why)) << why;
        draw(session.table());
        const Names lacks = session.close();
        ASSERT_EQ(lacks.size(), detour ? 2U : 1U);
        EXPECT_EQ(lacks[0], "/dev/full: No space left on device; the log is incomplete");
        const Names names = folder.names();
        ASSERT_EQ(names.size(), detour ? 1U : 0U);
        if (!detour)
            continue;
        EXPECT_EQ(lacks[1], "what was logged can be had by: orvlog merge " + names[0] + " -o /dev/full");
    }
}

TEST(LoggedSession, WithoutALogTheCallsReachTheRenderer)
{
    const TempFolder folder;
    FakeRenderer renderer;
    LoggedSession session(LoggedSessionOptions{});
    std::string why;
    ASSERT_TRUE(session.open_log(&why)) << why;
    ASSERT_TRUE(session.begin(renderer.get(), &why)) << why;
    draw(session.table());
    EXPECT_EQ(session.close(), Names());
    EXPECT_EQ(renderer.count("document_start"), 1U);
    EXPECT_EQ(folder.names(), Names());
}

}  // namespace
