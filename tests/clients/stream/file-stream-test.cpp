#include "clients/stream/file-stream.h"

#include <gtest/gtest.h>

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdarg>
#include <filesystem>
#include <fstream>
#include <iterator>

namespace
{

using client_stream::FileStream;
using client_stream::MallocAllocator;
using client_stream::RandomIdentity;

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

TEST(MallocAllocator, CountsWhatIsInUse)
{
    MallocAllocator allocator;
    GMM_Allocator* gmm = allocator.allocator();
    EXPECT_EQ(gmm->self, gmm);
    void* first = gmm->gmm_Alloc(gmm, 100, 0);
    unsigned char* zeros = static_cast<unsigned char*>(gmm->gmm_Calloc(gmm, 10, 0));
    ASSERT_NE(first, nullptr);
    ASSERT_NE(zeros, nullptr);
    for (int i = 0; i < 10; i++)
    {
        EXPECT_EQ(zeros[i], 0);
    }
    zeros[9] = 42;
    EXPECT_EQ(allocator.bytes_in_use(), 110U);
    zeros = static_cast<unsigned char*>(gmm->gmm_Realloc(gmm, zeros, 50));
    ASSERT_NE(zeros, nullptr);
    EXPECT_EQ(zeros[9], 42);
    EXPECT_EQ(gmm->gmm_AllocSize(gmm, zeros), 50U);
    EXPECT_EQ(gmm->gmm_UsedBytes(gmm), 150U);
    gmm->gmm_Free(gmm, first);
    gmm->gmm_Free(gmm, zeros);
    EXPECT_EQ(allocator.bytes_in_use(), 0U);
    EXPECT_EQ(allocator.peak_bytes(), 160U);
    EXPECT_EQ(gmm->gmm_Alloc(gmm, UINT64_MAX, 0), nullptr);
}

TEST(RandomIdentity, GivesItsNumberEachTime)
{
    const RandomIdentity one;
    const RandomIdentity other;
    uint8_t first[16] = {};
    uint8_t again[16] = {};
    uint8_t different[16] = {};
    const auto number_of = [](const RandomIdentity& identity, uint8_t* number)
    {
        ORVLOG_IdentityObject* object = identity.source()->object;
        return object->functions->orvlog_get_session_id(object, number);
    };
    EXPECT_EQ(number_of(one, first), 1U);
    EXPECT_EQ(number_of(one, again), 1U);
    EXPECT_EQ(number_of(other, different), 1U);
    EXPECT_TRUE(std::equal(first, first + 16, again));
    EXPECT_FALSE(std::equal(first, first + 16, different));
}

}  // namespace
