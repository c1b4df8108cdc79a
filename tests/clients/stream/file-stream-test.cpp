#include "clients/stream/file-stream.h"
#include "clients/stream/stream-operations.h"

#include <gtest/gtest.h>

#include <unistd.h>

#include <cerrno>
#include <cstdarg>
#include <filesystem>
#include <fstream>
#include <iterator>

namespace
{

using orvlog::client_stream::FileStream;

std::string temporary_name(const char* name)
{
    return (std::filesystem::temp_directory_path() / (std::to_string(getpid()) + name)).string();
}

int32_t print(GIO_Stream* stream, const char* format, ...)
{
    va_list args;
    va_start(args, format);
    const int32_t result = stream->ops->gio_VPrintf(stream->instance, format, args);
    va_end(args);
    return result;
}

TEST(FileStream, WritesSeeksAndReads)
{
    const std::string name = temporary_name("-stream");
    const std::unique_ptr<FileStream> file = FileStream::open(name, "w+b");
    ASSERT_NE(file, nullptr);
    GIO_Stream* stream = file->stream();
    const GIO_StreamOps* ops = stream->ops;
    void* c = stream->instance;
    EXPECT_EQ(ops->gio_Write("abcdef", 1, 6, c), 6U);
    EXPECT_EQ(print(stream, "%s=%u;", "n", 7U), 4);
    EXPECT_GE(ops->gio_Puts("xyz", c), 0);
    EXPECT_EQ(ops->gio_Putc('!', c), '!');
    EXPECT_EQ(ops->gio_Flush(c), 0);
    EXPECT_EQ(ops->gio_Tell(c), 14);
    EXPECT_EQ(ops->gio_Size(c), 14);
    EXPECT_EQ(ops->gio_Tell64(c), 14);
    EXPECT_EQ(ops->gio_Seek(c, 6, GIO_SEEK_SET), 0);
    char text[16] = {};
    EXPECT_EQ(ops->gio_Read(text, 1, 4, c), 4U);
    EXPECT_STREQ(text, "n=7;");
    EXPECT_EQ(ops->gio_Getc(c), 'x');
    EXPECT_EQ(ops->gio_Seek64(c, -3, GIO_SEEK_END), 0);
    EXPECT_STREQ(ops->gio_Gets(text, 16, c), "yz!");
    EXPECT_EQ(ops->gio_Getc(c), -1);
    EXPECT_NE(ops->gio_Eof(c), 0);
    ops->gio_ClearErr(c);
    EXPECT_EQ(ops->gio_Eof(c), 0);
    uint32_t kind = 9;
    EXPECT_EQ(ops->gio_GetPath(c, &kind), name);
    EXPECT_EQ(kind, 0U);
    EXPECT_EQ(ops->gio_LastError(c), GIO_OK);
    EXPECT_TRUE(file->close());
    EXPECT_EQ(file->size(), 14);
    std::ifstream input(name);
    const std::string content((std::istreambuf_iterator<char>(input)), std::istreambuf_iterator<char>());
    EXPECT_EQ(content, "abcdefn=7;xyz!");
    std::filesystem::remove(name);
}

TEST(FileStream, OpensNothingInAFolderThatIsNotThere)
{
    EXPECT_EQ(FileStream::open("/no/such/folder/log.xml", "wb"), nullptr);
    EXPECT_EQ(errno, ENOENT);
}

TEST(FileStream, RemembersAFullDisk)
{
    const std::unique_ptr<FileStream> file = FileStream::open("/dev/full", "wb");
    ASSERT_NE(file, nullptr);
    const GIO_StreamOps* ops = file->stream()->ops;
    void* c = file->stream()->instance;
    ops->gio_Write("abc", 1, 3, c);
    EXPECT_EQ(ops->gio_Flush(c), -1);
    EXPECT_EQ(ops->gio_LastError(c), GIO_ERR_NO_SPACE);
    EXPECT_EQ(file->first_error(), ENOSPC);
    EXPECT_FALSE(file->close());
}

// What errno says is said by the codes of the streams' interface, by this stream and by those of orvlog-stream.h alike.
TEST(StreamOperations, GiveErrnoACode)
{
    using orvlog::stream_operations::code_of;
    EXPECT_EQ(code_of(0), GIO_OK);
    EXPECT_EQ(code_of(ENOENT), GIO_ERR_NOT_FOUND);
    EXPECT_EQ(code_of(EBADF), GIO_ERR_BAD_HANDLE);
    EXPECT_EQ(code_of(ENOMEM), GIO_ERR_NO_MEMORY);
    EXPECT_EQ(code_of(EACCES), GIO_ERR_PERMISSION);
    EXPECT_EQ(code_of(EPERM), GIO_ERR_PERMISSION);
    EXPECT_EQ(code_of(EINVAL), GIO_ERR_INVALID);
    EXPECT_EQ(code_of(EFBIG), GIO_ERR_TOO_LARGE);
    EXPECT_EQ(code_of(ENOSPC), GIO_ERR_NO_SPACE);
    EXPECT_EQ(code_of(EIO), GIO_ERR_OTHER);
}

}  // namespace
