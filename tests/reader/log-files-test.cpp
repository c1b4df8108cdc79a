#include "reader/log-files.h"
#include "tests/support/temp-folder.h"

#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <string>

namespace
{

using orvlog::reader::folder_of_log;
using orvlog::reader::open_beside;
using orvlog::test::TempFolder;

// What the file holds; "(absent)" if there is none.
std::string beside(const std::string& folder, const std::string& name)
{
    const auto file = open_beside(folder, name);
    return file == nullptr ? "(absent)" : std::string(std::istreambuf_iterator<char>(*file), {});
}

class LogFiles : public testing::Test
{
protected:
    LogFiles()
    {
        std::filesystem::create_directories("logs/inner");
        std::ofstream("here.bin") << "here";
        std::ofstream("logs/a.bin", std::ios::binary) << "a\r\nb";
        std::ofstream("logs/inner/a.bin") << "inner";
    }

    TempFolder folder_;
};

TEST(FolderOfLog, IsThatOfItsPath)
{
    EXPECT_EQ(folder_of_log("logs/inner/log.xml"), "logs/inner");
    EXPECT_EQ(folder_of_log("log.xml"), "");
    EXPECT_EQ(folder_of_log("/log.xml"), "/");
    EXPECT_EQ(folder_of_log("-"), ".");
}

TEST_F(LogFiles, AreFoundInTheFolder)
{
    EXPECT_EQ(beside("logs", "a.bin"), "a\r\nb");
    EXPECT_EQ(beside("logs", "inner/a.bin"), "inner");
    EXPECT_EQ(beside("", "here.bin"), "here");
    EXPECT_EQ(beside(".", "here.bin"), "here");
    EXPECT_EQ(beside("logs", (std::filesystem::current_path() / "here.bin").string()), "here");
}

TEST_F(LogFiles, AreFoundWithoutTheFoldersOfTheirNames)
{
    EXPECT_EQ(beside("logs", "/gone/a.bin"), "a\r\nb");
    EXPECT_EQ(beside("logs", "C:\\gone\\a.bin"), "a\r\nb");
    EXPECT_EQ(beside("logs", "gone\\for/a.bin"), "a\r\nb");
}

TEST_F(LogFiles, MayBeMissing)
{
    EXPECT_EQ(beside("logs", "here.bin"), "(absent)");
    EXPECT_EQ(beside("gone", "a.bin"), "(absent)");
    EXPECT_EQ(beside("logs", "inner"), "(absent)");
    EXPECT_EQ(beside("logs", "inner/"), "(absent)");
    EXPECT_EQ(beside("logs", ""), "(absent)");
    EXPECT_EQ(beside("logs", std::string("a.bin\0", 6)), "(absent)");
    EXPECT_EQ(beside("logs", std::string(100000, 'a')), "(absent)");
}

}  // namespace
