#include "holv-core/gio/gio-file-utils.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

namespace
{

namespace fs = std::filesystem;

uint64_t device_of(const char* path)
{
    struct stat status;
    return stat(path, &status) == 0 ? static_cast<uint64_t>(status.st_dev) : 0;
}

std::string content_of(const fs::path& path)
{
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

mode_t mode_of(const fs::path& path)
{
    struct stat status;
    return stat(path.c_str(), &status) == 0 ? status.st_mode & 07777 : 0;
}

size_t files_in(const fs::path& folder)
{
    return static_cast<size_t>(std::distance(fs::directory_iterator(folder), fs::directory_iterator()));
}

// A folder on each of two volumes, and a process that has no more rights than they give it.
class MoveAcrossVolumes : public testing::Test
{
protected:
    MoveAcrossVolumes()
    {
        for (const fs::path& folder : {from, to})
        {
            fs::remove_all(folder);
            fs::create_directories(folder);
            fs::permissions(folder, fs::perms::all);
        }
        std::ofstream(source) << "content";
        std::ofstream(target) << "old";
    }
    ~MoveAcrossVolumes() override
    {
        fs::permissions(from, fs::perms::all);
        fs::permissions(to, fs::perms::all);
        fs::remove_all(from);
        fs::remove_all(to);
    }
    void SetUp() override
    {
        if (device_of(from.c_str()) == device_of(to.c_str()))
            GTEST_SKIP() << "/dev/shm is no volume of its own";
    }

    // With nobody's rights where the test has the system's, so that permissions count.
    int32_t move_without_rights()
    {
        constexpr uid_t kNobody = 65534;
        const bool drop = geteuid() == 0;
        EXPECT_TRUE(!drop || seteuid(kNobody) == 0);
        const int32_t code = GIO_FileRename(source.c_str(), target.c_str(), 1);
        EXPECT_TRUE(!drop || seteuid(0) == 0);
        return code;
    }

    const std::string number = std::to_string(getpid());
    const fs::path from = "/dev/shm/gio-move-test-" + number;
    const fs::path to = fs::temp_directory_path() / ("gio-move-test-" + number);
    const std::string source = (from / "source").string();
    const std::string target = (to / "target").string();
};

TEST_F(MoveAcrossVolumes, ReplacesTheTargetAndKeepsThePermissions)
{
    fs::permissions(source, fs::perms(0751));
    EXPECT_EQ(GIO_FileRename(source.c_str(), target.c_str(), 0), 13);
    EXPECT_EQ(content_of(target), "old");
    EXPECT_EQ(GIO_FileRename(source.c_str(), target.c_str(), 1), 0);
    EXPECT_FALSE(fs::exists(source));
    EXPECT_EQ(content_of(target), "content");
    EXPECT_EQ(mode_of(target), 0751U);
    // A file that none else may read, and a longer one than is copied at a time.
    const std::string large(100000, 'x');
    std::ofstream(source) << large;
    fs::permissions(source, fs::perms(0400));
    EXPECT_EQ(GIO_FileRename(source.c_str(), target.c_str(), 1), 0);
    EXPECT_EQ(content_of(target), large);
    EXPECT_EQ(mode_of(target), 0400U);
    EXPECT_EQ(files_in(to), 1U);
}

TEST_F(MoveAcrossVolumes, LeavesAllOtherFilesAlone)
{
    const std::string beside = target + ".moving";
    std::ofstream(beside) << "the user's";
    EXPECT_EQ(GIO_FileRename(source.c_str(), target.c_str(), 1), 0);
    EXPECT_EQ(content_of(target), "content");
    EXPECT_EQ(content_of(beside), "the user's");
    EXPECT_EQ(files_in(to), 2U);
}

// A name as long as a name may be has no room for more behind it.
TEST_F(MoveAcrossVolumes, TakesTheLongestNames)
{
    const std::string longest = (to / std::string(255, 'n')).string();
    EXPECT_EQ(GIO_FileRename(source.c_str(), longest.c_str(), 0), 0);
    EXPECT_EQ(content_of(longest), "content");
}

TEST_F(MoveAcrossVolumes, SucceedsWhereTheSourceCannotBeRemoved)
{
    fs::permissions(source, fs::perms(0644));
    fs::permissions(from, fs::perms(0555));
    EXPECT_EQ(move_without_rights(), 0);
    EXPECT_EQ(content_of(target), "content");
    EXPECT_EQ(content_of(source), "content");
    EXPECT_EQ(mode_of(target), 0644U);
    EXPECT_EQ(files_in(to), 1U);
}

TEST_F(MoveAcrossVolumes, ThatFailsLeavesBothAsTheyWere)
{
    fs::permissions(to, fs::perms(0555));
    EXPECT_EQ(move_without_rights(), 1001);
    fs::permissions(to, fs::perms::all);
    fs::permissions(source, fs::perms::none);
    EXPECT_EQ(move_without_rights(), 1001) << "a source that may not be read";
    EXPECT_EQ(content_of(target), "old");
    EXPECT_TRUE(fs::exists(source));
    EXPECT_EQ(files_in(to), 1U);
    fs::permissions(source, fs::perms(0644));
    fs::create_directories(to / "folder" / "source");
    EXPECT_EQ(GIO_FileRename(source.c_str(), (to / "folder").c_str(), 1), 1001) << "a folder in the target's place";
    EXPECT_EQ(content_of(source), "content");
    EXPECT_EQ(files_in(to / "folder"), 1U);
}

TEST_F(MoveAcrossVolumes, TakesFilesAlone)
{
    for (const bool pipe : {true, false})
    {
        fs::remove(source);
        if (pipe)
            ASSERT_EQ(mkfifo(source.c_str(), 0600), 0);
        else
            fs::create_directory(source);
        EXPECT_EQ(GIO_FileRename(source.c_str(), target.c_str(), 1), 1001);
        EXPECT_EQ(content_of(target), "old");
        EXPECT_TRUE(fs::exists(source));
        EXPECT_EQ(files_in(to), 1U);
    }
}

TEST(FileUtilsPosix, AFullDeviceIsReported)
{
    std::ofstream("gio-file-utils-posix-test.tmp") << "content";
    EXPECT_EQ(GIO_FileCopyPlain("gio-file-utils-posix-test.tmp", "/dev/full"), 28);
    EXPECT_EQ(GIO_FileCopy("gio-file-utils-posix-test.tmp", "/dev/full", 1), 28);
    EXPECT_EQ(GIO_FileCopy("gio-file-utils-posix-test.tmp", "/dev/full", 0), 13);
    std::ofstream("gio-file-utils-posix-test.tmp") << std::string(100000, 'x');
    EXPECT_EQ(GIO_FileCopyPlain("gio-file-utils-posix-test.tmp", "/dev/full"), 28) << "before the close";
    fs::remove("gio-file-utils-posix-test.tmp");
}

TEST(FileUtilsPosix, DirectoryAsASourceIsNoFile)
{
    EXPECT_EQ(GIO_FileCopyPlain("/", "gio-file-utils-posix-test.tmp"), 1002);
    fs::remove("gio-file-utils-posix-test.tmp");
}

}  // namespace
