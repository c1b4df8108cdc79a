#include "holv-core/gio/gio-file-utils.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <sys/stat.h>

namespace
{

namespace fs = std::filesystem;

uint64_t device_of(const char* path)
{
    struct stat status;
    return stat(path, &status) == 0 ? static_cast<uint64_t>(status.st_dev) : 0;
}

TEST(FileUtilsPosix, MovesCrossVolumes)
{
    const fs::path other = "/dev/shm/gio-file-utils-posix-test.tmp";
    if (device_of("/dev/shm") == 0 || device_of("/dev/shm") == device_of("."))
        GTEST_SKIP() << "no second volume at /dev/shm";
    fs::remove_all(other);
    fs::create_directories(other);
    const std::string source = (other / "source").string();
    const std::string target = "gio-file-utils-posix-test.tmp";
    std::ofstream(source) << "content";
    std::ofstream(target) << "old";
    EXPECT_EQ(GIO_FileRename(source.c_str(), target.c_str(), 0), 13);
    EXPECT_EQ(GIO_FileRename(source.c_str(), target.c_str(), 1), 0);
    EXPECT_FALSE(fs::exists(source));
    EXPECT_EQ(fs::file_size(target), 7U);
    // A copy that fails leaves the target as it was.
    fs::create_directory(source);
    EXPECT_EQ(GIO_FileRename(source.c_str(), target.c_str(), 1), 1001);
    EXPECT_EQ(fs::file_size(target), 7U);
    EXPECT_FALSE(fs::exists(target + ".moving"));
    fs::remove(target);
    fs::remove_all(other);
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
