#include "holv-core/gio/gio-file.h"

#include "tests/support/test-allocator.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

namespace
{

TEST(FilePosix, FullDeviceIsReported)
{
    orvlog::test::TestAllocator allocator;
    GIO_Stream* stream = nullptr;
    ASSERT_EQ(gio_OpenFile("/dev/full", GIO_OPEN_WRITE, 0, allocator.get(), &stream), 0);
    EXPECT_EQ(stream->ops->gio_Write("x", 1, 1, stream->instance), 1U);
    EXPECT_EQ(stream->ops->gio_Flush(stream->instance), -1);
    EXPECT_EQ(stream->ops->gio_LastError(stream->instance), 28);
    EXPECT_NE(stream->ops->gio_Error(stream->instance), 0);
    stream->ops->gio_Write("x", 1, 1, stream->instance);
    EXPECT_EQ(stream->ops->gio_Close(stream->instance), 28);
    EXPECT_EQ(allocator.outstanding(), 0U);
}

TEST(FilePosix, LongNamesGiveThirtyEight)
{
    orvlog::test::TestAllocator allocator;
    GIO_Stream* stream = nullptr;
    EXPECT_EQ(gio_OpenFile(std::string(5000, 'n').c_str(), GIO_OPEN_WRITE, 0, allocator.get(), &stream), 38);
}

TEST(FilePosix, DirectoryCannotBeWritten)
{
    orvlog::test::TestAllocator allocator;
    GIO_Stream* stream = nullptr;
    EXPECT_EQ(gio_OpenFile("/", GIO_OPEN_WRITE, 0, allocator.get(), &stream), 1002);
}

TEST(FilePosix, LoopsOfLinksAreNoCodeOfTheSameNumber)
{
    orvlog::test::TestAllocator allocator;
    GIO_Stream* stream = nullptr;
    ASSERT_EQ(symlink("gio-file-loop.tmp", "gio-file-loop.tmp"), 0);
    EXPECT_EQ(gio_OpenFile("gio-file-loop.tmp", GIO_OPEN_READ, 0, allocator.get(), &stream), 1002);
    EXPECT_EQ(GIO_FileDelete("gio-file-loop.tmp"), 0);
}

TEST(FilePosix, AppendingWhereNothingSeeksWritesNothing)
{
    orvlog::test::TestAllocator allocator;
    const char* path = "gio-file-fifo.tmp";
    unlink(path);
    ASSERT_EQ(mkfifo(path, 0600), 0);
    const int reader = open(path, O_RDONLY | O_NONBLOCK);
    ASSERT_GE(reader, 0);
    GIO_Stream* stream = nullptr;
    ASSERT_EQ(gio_OpenFile(path, GIO_OPEN_APPEND, 0, allocator.get(), &stream), 0);
    EXPECT_EQ(stream->ops->gio_Write("x", 1, 1, stream->instance), 0U);
    stream->ops->gio_Close(stream->instance);
    char byte = 0;
    EXPECT_EQ(read(reader, &byte, 1), 0) << "nothing was written";
    close(reader);
    EXPECT_EQ(GIO_FileDelete(path), 0);
}

TEST(FilePosix, PositionsBeyondTwoGigabytes)
{
    orvlog::test::TestAllocator allocator;
    GIO_Stream* stream = nullptr;
    ASSERT_EQ(gio_OpenFile("/dev/zero", GIO_OPEN_READ, 0, allocator.get(), &stream), 0);
    stream->ops->gio_Close(stream->instance);
    ASSERT_EQ(gio_OpenFile("gio-file-large.tmp", GIO_OPEN_WRITE_UPDATE, 0, allocator.get(), &stream), 0);
    const int64_t far = int64_t{5} << 30;
    EXPECT_EQ(stream->ops->gio_Seek64(stream->instance, far, GIO_SEEK_SET), 0);
    EXPECT_EQ(stream->ops->gio_Putc('x', stream->instance), 'x');
    EXPECT_EQ(stream->ops->gio_Tell64(stream->instance), far + 1);
    EXPECT_EQ(stream->ops->gio_Tell(stream->instance), -1);
    EXPECT_EQ(stream->ops->gio_LastError(stream->instance), 34);
    stream->ops->gio_Flush(stream->instance);
    EXPECT_EQ(stream->ops->gio_Size(stream->instance), far + 1);
    stream->ops->gio_Close(stream->instance);
    GIO_FileDelete("gio-file-large.tmp");
}

}  // namespace
