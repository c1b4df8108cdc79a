#include "reader/text/log-files.h"
#include "tests/support/temp-folder.h"

#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#ifndef _WIN32
#include <sys/stat.h>
#endif

namespace
{

using namespace orvlog::reader;
using orvlog::test::TempFolder;

namespace fs = std::filesystem;

// What the file holds, or why it is not to be had.
std::string open(const std::string& log, const std::string& name, const std::vector<std::string>& folders = {},
                 LogFileKind kind = LogFileKind::image_data)
{
    const LogFiles files(log, folders);
    const LogFile file = files.open(name, kind);
    EXPECT_EQ(file.stream == nullptr, !file.why.empty()) << name;
    EXPECT_EQ(file.refused, file.why.starts_with("is not read: ")) << name;
    return file.stream == nullptr ? file.why : std::string(std::istreambuf_iterator<char>(*file.stream), {});
}

constexpr char kImageLog[] = "orvlog-00000004-00000003-00000002-00000001-async-image-0000000011.tmp";
constexpr char kNoName[] = "is not read: no log names its files so";
constexpr char kOutside[] = "is not read: it is outside the log's folder (see --files-from)";

class LogFilesTest : public testing::Test
{
protected:
    LogFilesTest()
    {
        fs::create_directories("logs/inner");
        std::ofstream("here-img-1.bin") << "here";
        std::ofstream("logs/a-dir-10.bin", std::ios::binary) << "a\r\nb";
        std::ofstream("logs/inner/a-dir-10.bin") << "inner";
        std::ofstream(std::string("logs/") + kImageLog) << "kept";
        std::ofstream("logs/notes.txt") << "notes";
    }

    TempFolder folder_;
};

TEST(FolderOfLog, IsThatOfItsPath)
{
    EXPECT_EQ(folder_of_log("logs/inner/log.xml"), "logs/inner");
    EXPECT_EQ(folder_of_log("log.xml"), "");
    EXPECT_EQ(folder_of_log("/log.xml"), "/");
    EXPECT_EQ(folder_of_log("-"), ".");
    EXPECT_EQ(folder_of_log("http://host/logs/log.xml"), ".");
}

TEST(LogFileNames, AreThoseThatTheLibraryMakes)
{
    for (const char* name : {"a-dir-10.bin", "a-img-0.bin", "a-attr-2147483647.bin", "-img-10.bin", "a b-c-img-7.bin",
                             "sub/a-img-10.bin", "a-img--5.bin"})
        EXPECT_TRUE(is_log_file_name(name, LogFileKind::image_data)) << name;
    for (const char* name :
         {"", ".bin", "a.bin", "img-10.bin", "a-img-.bin", "a-img-010.bin", "a-img-10.bin.txt", "a-img-10",
          "a-img-10.BIN", "a-image-10.bin", "a-img-1x.bin", "a-img-99999999999.bin", "passwd", kImageLog})
        EXPECT_FALSE(is_log_file_name(name, LogFileKind::image_data)) << name;
    EXPECT_FALSE(is_log_file_name(std::string("a\0-img-10.bin", 13), LogFileKind::image_data));
    EXPECT_TRUE(is_log_file_name(kImageLog, LogFileKind::image_log));
    EXPECT_TRUE(is_log_file_name("orvlog-e56b00c2-3c37c89d-471dbc71-4ce2f506-async-image-4294967295.tmp",
                                 LogFileKind::image_log));
    for (const char* name : {"orvlog-4-3-2-1-async-image-0000000011.tmp", "a-img-10.bin", "victim2.txt", "",
                             "orvlog-00000004-00000003-00000002-00000001-async-image-11.tmp",
                             "orvlog-00000004-00000003-00000002-00000001-async-image-4294967296.tmp",
                             "orvlog-0000000A-00000003-00000002-00000001-async-image-0000000011.tmp",
                             "./orvlog-00000004-00000003-00000002-00000001-async-image-0000000011.tmp",
                             "orvlog-00000004-00000003-00000002-00000001.tmp"})
        EXPECT_FALSE(is_log_file_name(name, LogFileKind::image_log)) << name;
    EXPECT_TRUE(is_temporary_log_name("orvlog-00000004-00000003-00000002-00000001.tmp"));
    EXPECT_FALSE(is_temporary_log_name("orvlog-4-3-2-1.tmp"));
    EXPECT_FALSE(is_temporary_log_name("letter.orvlog.xml"));
}

TEST_F(LogFilesTest, AreFoundInTheFolder)
{
    EXPECT_EQ(open("logs/log.xml", "a-dir-10.bin"), "a\r\nb");
    EXPECT_EQ(open("logs/log.xml", "inner/a-dir-10.bin"), "inner");
    EXPECT_EQ(open("log.xml", "here-img-1.bin"), "here");
    EXPECT_EQ(open("-", "here-img-1.bin"), "here");
    EXPECT_EQ(open("logs/log.xml", fs::absolute("logs/inner/a-dir-10.bin").string()), "inner");
    EXPECT_EQ(open("logs/log.xml", kImageLog, {}, LogFileKind::image_log), "kept");
}

TEST_F(LogFilesTest, AreFoundWithoutTheFoldersOfTheirNames)
{
    EXPECT_EQ(open("logs/log.xml", "/gone/a-dir-10.bin"), "a\r\nb");
    EXPECT_EQ(open("logs/log.xml", "C:\\gone\\a-dir-10.bin"), "a\r\nb");
    EXPECT_EQ(open("logs/log.xml", "gone\\for/a-dir-10.bin"), "a\r\nb");
    EXPECT_EQ(open("logs/log.xml", "../gone/a-dir-10.bin"), "a\r\nb");
}

TEST_F(LogFilesTest, AreFoundInTheFoldersOfTheUser)
{
    const std::string absolute = fs::absolute("logs/inner/a-dir-10.bin").string();
    EXPECT_EQ(open("log.xml", absolute, {"logs"}), "inner");
    EXPECT_EQ(open("log.xml", "inner/a-dir-10.bin", {"logs"}), "inner");
    EXPECT_EQ(open("logs/log.xml", "a-dir-10.bin", {".", "logs/inner"}), "inner");
    EXPECT_EQ(open("logs/log.xml", kImageLog, {"."}, LogFileKind::image_log), "kept");
    EXPECT_EQ(LogFiles("log.xml", {"logs"}).why(), "");
    EXPECT_EQ(LogFiles("log.xml", {"gone"}).why().find("gone: "), 0U);
    EXPECT_EQ(LogFiles("log.xml", {"logs/notes.txt"}).why().find("logs/notes.txt: "), 0U);
}

TEST_F(LogFilesTest, MayBeMissing)
{
    EXPECT_EQ(open("logs/log.xml", "here-img-1.bin"), "is missing");
    EXPECT_EQ(open("gone/log.xml", "a-dir-10.bin"), kOutside);
    EXPECT_EQ(open("logs/log.xml", "inner/b-dir-10.bin"), "is missing");
    EXPECT_EQ(open("logs/log.xml", "notes.txt/b-dir-10.bin"), "is missing");
}

TEST_F(LogFilesTest, AreNotReadElsewhere)
{
    EXPECT_EQ(open("logs/log.xml", "/etc/passwd"), kNoName);
    EXPECT_EQ(open("logs/log.xml", "notes.txt"), kNoName);
    EXPECT_EQ(open("logs/log.xml", "notes.txt", {}, LogFileKind::image_log), kNoName);
    EXPECT_EQ(open("logs/log.xml", std::string(100000, 'a')), kNoName);
    EXPECT_EQ(open("logs/log.xml", "../here-img-1.bin"), kOutside);
    EXPECT_EQ(open("logs/log.xml", "inner/../../here-img-1.bin"), kOutside);
    EXPECT_EQ(open("logs/log.xml", fs::absolute("here-img-1.bin").string()), kOutside);
    EXPECT_EQ(open("logs/inner/log.xml", fs::absolute("logs/inner/../../here-img-1.bin").string()), kOutside);
}

#ifndef _WIN32

TEST_F(LogFilesTest, AreNotReadThroughALinkThatLeadsOut)
{
    const std::string out = "is not read: a link leads to where no file of the log lies";
    fs::create_symlink("../here-img-1.bin", "logs/l-img-1.bin");
    fs::create_symlink(fs::absolute("here-img-1.bin"), "logs/l-img-2.bin");
    fs::create_directory_symlink("..", "logs/up");
    fs::create_symlink("notes.txt", "logs/l-img-3.bin");
    EXPECT_EQ(open("logs/log.xml", "l-img-1.bin"), out);
    EXPECT_EQ(open("logs/log.xml", "l-img-2.bin"), out);
    EXPECT_EQ(open("logs/log.xml", "up/here-img-1.bin"), out);
    EXPECT_EQ(open("logs/log.xml", "l-img-3.bin"), out);
    fs::create_symlink("inner/a-dir-10.bin", "logs/l-img-4.bin");
    EXPECT_EQ(open("logs/log.xml", "l-img-4.bin"), "inner");
    fs::create_symlink("l-img-5.bin", "logs/l-img-5.bin");
    EXPECT_EQ(open("logs/log.xml", "l-img-5.bin"), "is not read: Too many levels of symbolic links");
    fs::create_symlink("gone", "logs/l-img-6.bin");
    EXPECT_EQ(open("logs/log.xml", "l-img-6.bin"), "is missing");
    // The folder of the log itself may be a link.
    fs::create_directory_symlink("logs", "other");
    EXPECT_EQ(open("other/log.xml", "a-dir-10.bin"), "a\r\nb");
}

TEST_F(LogFilesTest, AreOrdinaryFiles)
{
    const std::string special = "is not read: it is no ordinary file";
    fs::create_directory("logs/d-img-1.bin");
    ASSERT_EQ(mkfifo("logs/p-img-1.bin", 0600), 0);
    EXPECT_EQ(open("logs/log.xml", "d-img-1.bin"), special);
    EXPECT_EQ(open("logs/log.xml", "p-img-1.bin"), special);
    fs::create_symlink("/dev/zero", "logs/z-img-1.bin");
    EXPECT_EQ(open("logs/log.xml", "z-img-1.bin"), "is not read: a link leads to where no file of the log lies");
    std::error_code error;
    EXPECT_EQ(open_ordinary_file("/dev/zero", error), nullptr);
    EXPECT_FALSE(error);
    EXPECT_EQ(open_ordinary_file(fs::absolute("logs/gone"), error), nullptr);
    EXPECT_EQ(error, std::errc::no_such_file_or_directory);
}

#endif

}  // namespace
