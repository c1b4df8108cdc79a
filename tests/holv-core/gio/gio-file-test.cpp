#include "holv-core/gio/gio-file.h"

#include "holv-core/gio/gio-result.h"
#include "tests/support/test-allocator.h"

#include <gtest/gtest.h>

#include <cstdarg>
#include <cstddef>
#include <cstdio>
#include <string>

namespace
{

using orvlog::test::TestAllocator;

class File : public testing::Test
{
protected:
    ~File() override
    {
        for (const char* name : {"gio-file-test.tmp", "gio-file-\xc3\xa9\xf0\x9f\x98\x80.tmp"})
            GIO_FileDelete(name);
        EXPECT_EQ(allocator.outstanding(), 0U);
    }

    GIO_Stream* open(uint32_t mode, uint32_t text = 0)
    {
        GIO_Stream* stream = nullptr;
        EXPECT_EQ(gio_OpenFile(path, mode, text, allocator.get(), &stream), 0);
        return stream;
    }

    void fill(const std::string& content)
    {
        GIO_Stream* stream = open(GIO_OPEN_WRITE);
        EXPECT_EQ(stream->ops->gio_Write(content.data(), 1, content.size(), stream->instance), content.size());
        EXPECT_EQ(stream->ops->gio_Close(stream->instance), 0);
    }

    std::string content()
    {
        GIO_Stream* stream = open(GIO_OPEN_READ);
        std::string text(1000, '\0');
        text.resize(stream->ops->gio_Read(text.data(), 1, text.size(), stream->instance));
        EXPECT_EQ(stream->ops->gio_Close(stream->instance), 0);
        return text;
    }

    TestAllocator allocator;
    const char* path = "gio-file-test.tmp";
};

TEST_F(File, MissingArgumentsAreRefused)
{
    GIO_Stream* stream = nullptr;
    EXPECT_EQ(gio_OpenFile(nullptr, 0, 0, allocator.get(), &stream), 22);
    EXPECT_EQ(gio_OpenFile(path, 0, 0, nullptr, &stream), 22);
    EXPECT_EQ(gio_OpenFile(path, 0, 0, allocator.get(), nullptr), 22);
    GIO_FileInstance instance;
    EXPECT_EQ(gio_file_open_instance(nullptr, 0, 0, &instance, allocator.get()), 22);
    EXPECT_EQ(gio_file_open_instance(path, 0, 0, nullptr, allocator.get()), 22);
    EXPECT_EQ(gio_file_open_instance(path, 0, 0, &instance, nullptr), 22);
    stream = reinterpret_cast<GIO_Stream*>(this);
    EXPECT_EQ(gio_OpenFile(path, 6, 0, allocator.get(), &stream), 22);
    EXPECT_EQ(stream, nullptr);
    EXPECT_EQ(gio_OpenFile(path, 0, 2, allocator.get(), &stream), 22);
}

TEST_F(File, RefusedMemoryGivesTwelve)
{
    for (uint64_t n = 1; n <= 2; ++n)
    {
        GIO_Stream* stream = nullptr;
        allocator.refuse(n);
        EXPECT_EQ(gio_OpenFile(path, GIO_OPEN_WRITE, 0, allocator.get(), &stream), 12) << n;
        EXPECT_EQ(stream, nullptr);
        EXPECT_EQ(allocator.outstanding(), 0U);
    }
}

TEST_F(File, MissingFileGivesTwo)
{
    GIO_Stream* stream = nullptr;
    EXPECT_EQ(gio_OpenFile("no-such-file.tmp", GIO_OPEN_READ, 0, allocator.get(), &stream), 2);
    EXPECT_EQ(stream, nullptr);
}

TEST_F(File, PathsThatAreNotUtf8AreRefused)
{
    for (const char* bad : {"x\xc0\xaf", "x\x80", "x\xed\xa0\x80", "\xff"})
    {
        GIO_Stream* stream = nullptr;
        EXPECT_EQ(gio_OpenFile(bad, GIO_OPEN_WRITE, 0, allocator.get(), &stream), 38);
        EXPECT_EQ(allocator.outstanding(), 0U);
    }
}

TEST_F(File, PathsBeyondAsciiOpen)
{
    path = "gio-file-\xc3\xa9\xf0\x9f\x98\x80.tmp";
    fill("hello");
    EXPECT_EQ(content(), "hello");
    EXPECT_EQ(GIO_FileDelete(path), 0);
    EXPECT_EQ(GIO_FileDelete(path), 2);
}

TEST_F(File, InstanceHasItsLayout)
{
    EXPECT_EQ(offsetof(GIO_FileInstance, tag), 0U);
    EXPECT_EQ(offsetof(GIO_FileInstance, allocator), 8U);
    EXPECT_EQ(offsetof(GIO_FileInstance, handle), 16U);
    EXPECT_EQ(offsetof(GIO_FileInstance, file), 24U);
    EXPECT_EQ(offsetof(GIO_FileInstance, path), 32U);
    EXPECT_EQ(offsetof(GIO_FileInstance, path_kind), 40U);
    EXPECT_EQ(offsetof(GIO_FileInstance, open_mode), 44U);
    EXPECT_EQ(sizeof(GIO_FileInstance), 48U);
}

TEST_F(File, TableOfOneStreamCanBeChanged)
{
    GIO_Stream* one = open(GIO_OPEN_WRITE);
    GIO_Stream* other = open(GIO_OPEN_WRITE);
    const_cast<GIO_StreamOps*>(one->ops)->gio_Getc = [](void*) -> int32_t { return 77; };
    EXPECT_EQ(one->ops->gio_Getc(one->instance), 77);
    EXPECT_EQ(other->ops->gio_Getc(other->instance), -1);
    one->ops->gio_Close(one->instance);
    other->ops->gio_Close(other->instance);
}

TEST_F(File, StreamIsOneBlockWithATableOfItsOwn)
{
    GIO_Stream* one = open(GIO_OPEN_WRITE);
    GIO_Stream* other = open(GIO_OPEN_WRITE);
    EXPECT_NE(one->ops, other->ops);
    EXPECT_EQ(allocator.outstanding(), 4U) << "a block and a path each";
    const auto* instance = static_cast<GIO_FileInstance*>(one->instance);
    EXPECT_EQ(instance->tag, 0U);
    EXPECT_EQ(instance->handle, one);
    EXPECT_EQ(instance->allocator, allocator.get());
    EXPECT_STREQ(instance->path, path);
    EXPECT_EQ(instance->path_kind, 4U);
    EXPECT_EQ(instance->open_mode, 1U);
    EXPECT_EQ(one->kind, 0U);
    EXPECT_EQ(one->ops->gio_Close(one->instance), 0);
    EXPECT_EQ(other->ops->gio_Close(other->instance), 0);
}

TEST_F(File, ReadAndWriteCheckTheirArguments)
{
    GIO_Stream* stream = open(GIO_OPEN_WRITE_UPDATE);
    char byte = 'x';
    gio_clear_error();
    EXPECT_EQ(stream->ops->gio_Read(&byte, 0, 1, stream->instance), 0U);
    EXPECT_EQ(stream->ops->gio_LastError(stream->instance), 22);
    gio_clear_error();
    EXPECT_EQ(stream->ops->gio_Read(&byte, 1, 0, stream->instance), 0U);
    EXPECT_EQ(stream->ops->gio_LastError(stream->instance), 22);
    gio_clear_error();
    EXPECT_EQ(stream->ops->gio_Read(nullptr, 1, 1, stream->instance), 0U);
    EXPECT_EQ(stream->ops->gio_LastError(stream->instance), 22);
    gio_clear_error();
    EXPECT_EQ(stream->ops->gio_Write(nullptr, 1, 1, stream->instance), 0U);
    EXPECT_EQ(stream->ops->gio_LastError(stream->instance), 22);
    gio_clear_error();
    EXPECT_EQ(stream->ops->gio_Write(&byte, 0, 1, stream->instance), 0U);
    EXPECT_EQ(stream->ops->gio_LastError(stream->instance), 22);
    gio_clear_error();
    EXPECT_EQ(stream->ops->gio_Write(&byte, 1, 0, stream->instance), 0U);
    EXPECT_EQ(stream->ops->gio_LastError(stream->instance), 22);
    stream->ops->gio_Close(stream->instance);
}

TEST_F(File, BothAppendModesWriteAtTheEnd)
{
    for (const uint32_t mode : {uint32_t{GIO_OPEN_APPEND}, uint32_t{GIO_OPEN_APPEND_UPDATE}})
    {
        fill("one");
        GIO_Stream* stream = open(mode);
        stream->ops->gio_Seek(stream->instance, 0, GIO_SEEK_SET);
        EXPECT_EQ(stream->ops->gio_Write("two", 1, 3, stream->instance), 3U);
        stream->ops->gio_Close(stream->instance);
        EXPECT_EQ(content(), "onetwo");
    }
}

// What each mode does to a file that stands and to one that doesn't.
TEST_F(File, EachModeOpensAsItsNameSays)
{
    for (const uint32_t text : {0U, 1U})
    {
        const auto open_result = [&](uint32_t mode)
        {
            GIO_Stream* stream = nullptr;
            const int32_t code = gio_OpenFile(path, mode, text, allocator.get(), &stream);
            if (stream != nullptr)
                stream->ops->gio_Close(stream->instance);
            return code;
        };
        GIO_FileDelete(path);
        EXPECT_EQ(open_result(0), 2);
        EXPECT_EQ(open_result(3), 2);
        for (const uint32_t creating : {1U, 2U, 4U, 5U})
        {
            EXPECT_EQ(open_result(creating), 0) << creating;
            EXPECT_EQ(GIO_FileDelete(path), 0) << creating;
        }
        for (const uint32_t keeping : {0U, 2U, 3U, 5U})
        {
            fill("kept");
            EXPECT_EQ(open_result(keeping), 0);
            EXPECT_EQ(content(), "kept") << keeping;
        }
        for (const uint32_t emptying : {1U, 4U})
        {
            fill("gone");
            EXPECT_EQ(open_result(emptying), 0);
            EXPECT_EQ(content(), "") << emptying;
        }
    }
}

TEST_F(File, EachModeReadsOrWrites)
{
    for (const uint32_t text : {0U, 1U})
    {
        for (const uint32_t mode : {0U, 1U, 2U, 3U, 4U, 5U})
        {
            fill("abc");
            GIO_Stream* stream = open(mode, text);
            char byte = '#';
            const bool reads = mode != 1 && mode != 2;
            const bool empty = mode == 1 || mode == 4;
            stream->ops->gio_Seek(stream->instance, 0, GIO_SEEK_SET);
            EXPECT_EQ(stream->ops->gio_Read(&byte, 1, 1, stream->instance), reads && !empty ? 1U : 0U) << mode;
            stream->ops->gio_Seek(stream->instance, 0, GIO_SEEK_END);
            EXPECT_EQ(stream->ops->gio_Write("d", 1, 1, stream->instance), mode != 0 ? 1U : 0U) << mode;
            stream->ops->gio_Close(stream->instance);
            EXPECT_EQ(content(), mode == 0 ? "abc" : empty ? "d" : "abcd") << mode;
        }
    }
}

TEST_F(File, UpdateModes)
{
    fill("abcdef");
    GIO_Stream* stream = open(GIO_OPEN_READ_UPDATE);
    stream->ops->gio_Seek(stream->instance, 2, GIO_SEEK_SET);
    stream->ops->gio_Write("XY", 1, 2, stream->instance);
    stream->ops->gio_Close(stream->instance);
    EXPECT_EQ(content(), "abXYef");
    stream = open(GIO_OPEN_WRITE_UPDATE);
    stream->ops->gio_Write("new", 1, 3, stream->instance);
    stream->ops->gio_Seek(stream->instance, 1, GIO_SEEK_SET);
    char two[3] = {};
    EXPECT_EQ(stream->ops->gio_Read(two, 1, 2, stream->instance), 2U);
    EXPECT_STREQ(two, "ew");
    stream->ops->gio_Close(stream->instance);
}

TEST_F(File, PositionsAndSize)
{
    fill("0123456789");
    GIO_Stream* stream = open(GIO_OPEN_READ);
    const GIO_StreamOps* ops = stream->ops;
    EXPECT_EQ(ops->gio_Size(stream->instance), 10);
    EXPECT_EQ(ops->gio_Seek(stream->instance, -3, GIO_SEEK_END), 0);
    EXPECT_EQ(ops->gio_Tell(stream->instance), 7);
    EXPECT_EQ(ops->gio_Seek(stream->instance, 1, GIO_SEEK_CUR), 0);
    EXPECT_EQ(ops->gio_Tell64(stream->instance), 8);
    EXPECT_EQ(ops->gio_Size(stream->instance), 10);
    EXPECT_EQ(ops->gio_Seek64(stream->instance, 2, GIO_SEEK_SET), 0);
    EXPECT_EQ(ops->gio_Getc(stream->instance), '2');
    for (const int32_t origin : {-1, 3, 9})
    {
        gio_clear_error();
        EXPECT_EQ(ops->gio_Seek(stream->instance, 0, origin), -1);
        EXPECT_EQ(ops->gio_LastError(stream->instance), 22);
        EXPECT_EQ(ops->gio_Seek64(stream->instance, 0, origin), -1);
    }
    EXPECT_EQ(ops->gio_Seek(stream->instance, -1, GIO_SEEK_SET), -1);
    EXPECT_EQ(ops->gio_Eof(stream->instance), 0);
    ops->gio_Seek(stream->instance, 0, GIO_SEEK_END);
    EXPECT_EQ(ops->gio_Getc(stream->instance), -1);
    EXPECT_NE(ops->gio_Eof(stream->instance), 0);
    ops->gio_ClearErr(stream->instance);
    EXPECT_EQ(ops->gio_Eof(stream->instance), 0);
    EXPECT_EQ(ops->gio_Error(stream->instance), 0);
    ops->gio_Close(stream->instance);
}

TEST_F(File, ForwardOnlyStreamsRefuseToGoBack)
{
    fill("0123456789");
    GIO_Stream* stream = open(GIO_OPEN_READ);
    const GIO_StreamOps* ops = stream->ops;
    stream->kind = GIO_KIND_FORWARD_ONLY;
    EXPECT_EQ(ops->gio_Seek(stream->instance, 5, GIO_SEEK_SET), 0);
    gio_clear_error();
    EXPECT_EQ(ops->gio_Seek(stream->instance, 4, GIO_SEEK_SET), -1);
    EXPECT_EQ(ops->gio_LastError(stream->instance), 22);
    gio_clear_error();
    EXPECT_EQ(ops->gio_Seek64(stream->instance, -1, GIO_SEEK_CUR), -1);
    EXPECT_EQ(ops->gio_LastError(stream->instance), 22);
    EXPECT_EQ(ops->gio_Seek64(stream->instance, -1, GIO_SEEK_END), -1);
    EXPECT_EQ(ops->gio_Tell(stream->instance), 5);
    EXPECT_EQ(ops->gio_Seek(stream->instance, 5, GIO_SEEK_SET), 0);
    EXPECT_EQ(ops->gio_Seek(stream->instance, 2, GIO_SEEK_CUR), 0);
    EXPECT_EQ(ops->gio_Seek64(stream->instance, 0, GIO_SEEK_END), 0);
    EXPECT_EQ(ops->gio_Tell(stream->instance), 10);
    stream->kind = 4;
    EXPECT_EQ(ops->gio_Seek(stream->instance, 0, GIO_SEEK_SET), 0);
    ops->gio_Close(stream->instance);
}

int32_t print(const GIO_Stream* stream, const char* format, ...)
{
    va_list args;
    va_start(args, format);
    const int32_t length = stream->ops->gio_VPrintf(stream->instance, format, args);
    va_end(args);
    return length;
}

TEST_F(File, TextOperations)
{
    GIO_Stream* stream = open(GIO_OPEN_WRITE_UPDATE);
    const GIO_StreamOps* ops = stream->ops;
    EXPECT_GE(ops->gio_Puts("line one\n", stream->instance), 0);
    EXPECT_EQ(ops->gio_Putc('x', stream->instance), 'x');
    EXPECT_EQ(print(stream, "%s=%u\n", "n", 7U), 4);
    gio_clear_error();
    EXPECT_EQ(ops->gio_Puts(nullptr, stream->instance), -1);
    EXPECT_EQ(ops->gio_LastError(stream->instance), 22);
    gio_clear_error();
    EXPECT_EQ(print(stream, nullptr), -1);
    EXPECT_EQ(ops->gio_LastError(stream->instance), 22);
    EXPECT_EQ(ops->gio_Flush(stream->instance), 0);
    ops->gio_Seek(stream->instance, 0, GIO_SEEK_SET);
    char line[32];
    EXPECT_EQ(ops->gio_Gets(line, 32, stream->instance), line);
    EXPECT_STREQ(line, "line one\n");
    gio_clear_error();
    EXPECT_EQ(ops->gio_Gets(nullptr, 32, stream->instance), nullptr);
    EXPECT_EQ(ops->gio_LastError(stream->instance), 22);
    gio_clear_error();
    EXPECT_EQ(ops->gio_Gets(line, -1, stream->instance), nullptr);
    EXPECT_EQ(ops->gio_LastError(stream->instance), 22);
    EXPECT_EQ(ops->gio_Gets(line, 32, stream->instance), line);
    EXPECT_STREQ(line, "xn=7\n");
    EXPECT_EQ(ops->gio_Gets(line, 32, stream->instance), nullptr);
    ops->gio_Close(stream->instance);
}

TEST_F(File, PathAndLentBytes)
{
    GIO_Stream* stream = open(GIO_OPEN_WRITE);
    const GIO_StreamOps* ops = stream->ops;
    uint32_t kind = 0;
    EXPECT_STREQ(ops->gio_GetPath(stream->instance, &kind), path);
    EXPECT_EQ(kind, 4U);
    gio_clear_error();
    EXPECT_EQ(ops->gio_GetPath(stream->instance, nullptr), nullptr);
    EXPECT_EQ(ops->gio_LastError(stream->instance), 22);
    void* data = nullptr;
    uint64_t length = 0;
    gio_clear_error();
    EXPECT_EQ(ops->gio_ReadBuffer(stream->instance, &data, &length), 0);
    EXPECT_EQ(ops->gio_LastError(stream->instance), 40);
    ops->gio_ClearErr(stream->instance);
    EXPECT_EQ(ops->gio_LastError(stream->instance), 0);
    ops->gio_Close(stream->instance);
}

void expect_bad(const GIO_StreamOps* ops, void* c)
{
    char buffer[4];
    uint32_t kind = 0;
    void* data = nullptr;
    uint64_t length = 0;
    const auto is_nine = [&]
    {
        const bool nine = ops->gio_LastError(c) == 9;
        gio_clear_error();
        return nine;
    };
    gio_clear_error();
    EXPECT_TRUE(ops->gio_Read(buffer, 1, 1, c) == 0 && is_nine());
    EXPECT_TRUE(ops->gio_Write(buffer, 1, 1, c) == 0 && is_nine());
    EXPECT_TRUE(ops->gio_Seek(c, 0, 0) == -1 && is_nine());
    EXPECT_TRUE(ops->gio_Tell(c) == -1 && is_nine());
    EXPECT_TRUE(ops->gio_Seek64(c, 0, 0) == -1 && is_nine());
    EXPECT_TRUE(ops->gio_Tell64(c) == -1 && is_nine());
    EXPECT_TRUE(ops->gio_Flush(c) == -1 && is_nine());
    EXPECT_TRUE(ops->gio_Gets(buffer, 4, c) == nullptr && is_nine());
    EXPECT_TRUE(ops->gio_Puts("x", c) == 0 && is_nine());
    EXPECT_TRUE(ops->gio_Getc(c) == -1 && is_nine());
    EXPECT_TRUE(ops->gio_Putc('x', c) == -1 && is_nine());
    EXPECT_TRUE(ops->gio_GetPath(c, &kind) == nullptr && is_nine());
    EXPECT_TRUE(ops->gio_ReadBuffer(c, &data, &length) == 0 && is_nine());
    ops->gio_ClearErr(c);
    EXPECT_TRUE(is_nine());
    EXPECT_TRUE(ops->gio_Eof(c) == -1 && is_nine());
    EXPECT_TRUE(ops->gio_Error(c) == -1 && is_nine());
    EXPECT_TRUE(ops->gio_Size(c) == -1 && is_nine());
    EXPECT_TRUE(ops->gio_Close(c) == 9 && is_nine());
    const GIO_Stream stream = {c, 0, ops};
    EXPECT_TRUE(print(&stream, "x") == -1 && is_nine());
}

TEST_F(File, BadInstancesGiveNine)
{
    gio_setup_standard_streams();
    const GIO_StreamOps* ops = gio_stdout()->ops;
    expect_bad(ops, nullptr);
    GIO_FileInstance instance = {2, allocator.get(), nullptr, stdout, nullptr, 4, 0};
    expect_bad(ops, &instance);
    instance.tag = 0;
    instance.file = nullptr;
    expect_bad(ops, &instance);
}

TEST_F(File, CloseOfAnInstanceWithoutOwnerGivesNine)
{
    fill("x");
    gio_setup_standard_streams();
    GIO_FileInstance instance = {0, nullptr, nullptr, std::fopen(path, "rb"), nullptr, 4, 0};
    ASSERT_NE(instance.file, nullptr);
    EXPECT_EQ(gio_stdout()->ops->gio_Close(&instance), 9);
}

TEST_F(File, StandardStreamsStayOpen)
{
    gio_setup_standard_streams();
    EXPECT_EQ(gio_stdout()->kind, 2U);
    EXPECT_EQ(gio_stderr()->kind, 0U);
    for (GIO_Stream* stream : {gio_stdout(), gio_stderr()})
    {
        EXPECT_EQ(stream->ops->gio_Close(stream->instance), 0);
        EXPECT_EQ(stream->ops->gio_Flush(stream->instance), 0);
        uint32_t kind = 0;
        EXPECT_EQ(stream->ops->gio_GetPath(stream->instance, &kind), nullptr);
        EXPECT_EQ(kind, 4U);
    }
    EXPECT_EQ(gio_stdout()->ops, gio_stderr()->ops) << "one table for all";
    const auto expect_standard = [](const GIO_FileInstance* instance, const FILE* file)
    {
        EXPECT_EQ(instance->tag, 1U);
        EXPECT_EQ(instance->allocator, nullptr);
        EXPECT_EQ(instance->file, file);
        EXPECT_EQ(instance->path, nullptr);
        EXPECT_EQ(instance->path_kind, 4U);
    };
    expect_standard(gio_stdin_instance(), stdin);
    expect_standard(static_cast<GIO_FileInstance*>(gio_stdout()->instance), stdout);
    expect_standard(static_cast<GIO_FileInstance*>(gio_stderr()->instance), stderr);
}

TEST_F(File, TextModeReadsWhatItWrote)
{
    GIO_Stream* stream = open(GIO_OPEN_WRITE, 1);
    stream->ops->gio_Puts("a\nb\n", stream->instance);
    stream->ops->gio_Close(stream->instance);
    stream = open(GIO_OPEN_READ, 1);
    char text[16] = {};
    EXPECT_EQ(stream->ops->gio_Read(text, 1, 15, stream->instance), 4U);
    EXPECT_STREQ(text, "a\nb\n");
    stream->ops->gio_Close(stream->instance);
}

TEST_F(File, DeleteReportsItsReason)
{
    fill("");
    EXPECT_EQ(GIO_FileDelete(path), 0);
    EXPECT_EQ(GIO_FileDelete(path), 2);
    EXPECT_EQ(GIO_FileDelete(nullptr), 22);
}

}  // namespace
