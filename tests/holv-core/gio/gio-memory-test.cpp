#include "holv-core/gio/gio-memory.h"

#include "tests/support/guarded-block.h"
#include "tests/support/test-allocator.h"

#include <gtest/gtest.h>

#include <cstdarg>
#include <cstddef>
#include <memory>
#include <string>

namespace
{

using namespace orvlog::test;

class Memory : public testing::Test
{
protected:
    Memory()
    {
        open("0123456789");
    }
    ~Memory() override
    {
        close();
        EXPECT_EQ(allocator.outstanding(), 0U);
    }

    void open(const std::string& content)
    {
        close();
        block = std::make_unique<GuardedBlock>(content.data(), content.size());
        ASSERT_EQ(GIO_OpenMemory(block->data(), content.size(), allocator.get(), &stream), 0);
        ops = stream->ops;
        c = stream->instance;
    }
    void close()
    {
        if (stream != nullptr)
            stream->ops->gio_Close(stream->instance);
        stream = nullptr;
    }
    std::string content()
    {
        return {block->as<char>(), block->size()};
    }
    GIO_MemoryInstance* instance()
    {
        return static_cast<GIO_MemoryInstance*>(c);
    }
    int32_t print(const char* format, ...)
    {
        va_list args;
        va_start(args, format);
        const int32_t length = ops->gio_VPrintf(c, format, args);
        va_end(args);
        return length;
    }

    TestAllocator allocator;
    std::unique_ptr<GuardedBlock> block;
    GIO_Stream* stream = nullptr;
    const GIO_StreamOps* ops = nullptr;
    void* c = nullptr;
};

TEST_F(Memory, OpeningFillsTheInstance)
{
    EXPECT_EQ(stream->kind, 4U);
    EXPECT_EQ(instance()->kind, 3U);
    EXPECT_EQ(instance()->allocator, allocator.get());
    EXPECT_EQ(instance()->self, stream);
    EXPECT_EQ(instance()->data, block->data());
    EXPECT_EQ(instance()->size, 10U);
    EXPECT_EQ(instance()->position, 0U);
    EXPECT_EQ(allocator.outstanding(), 1U);
}

TEST_F(Memory, OpeningRefuses)
{
    char byte = 0;
    GIO_Stream* other = stream;
    EXPECT_EQ(GIO_OpenMemory(nullptr, 1, allocator.get(), &other), 22);
    EXPECT_EQ(GIO_OpenMemory(&byte, 1, nullptr, &other), 22);
    EXPECT_EQ(GIO_OpenMemory(&byte, 1, allocator.get(), nullptr), 22);
    EXPECT_EQ(GIO_OpenMemory(&byte, 0, allocator.get(), &other), 22);
    EXPECT_EQ(other, nullptr);
    allocator.refuse(1);
    EXPECT_EQ(GIO_OpenMemory(&byte, 1, allocator.get(), &other), 12);
    EXPECT_EQ(allocator.outstanding(), 1U);
}

TEST_F(Memory, ReadsItems)
{
    char buffer[16] = {};
    EXPECT_EQ(ops->gio_Read(buffer, 2, 3, c), 3U);
    EXPECT_STREQ(buffer, "012345");
    EXPECT_EQ(ops->gio_Eof(c), 0);
    EXPECT_EQ(ops->gio_Read(buffer, 3, 2, c), 1U) << "whole items only";
    EXPECT_EQ(ops->gio_Tell(c), 9);
    EXPECT_EQ(ops->gio_Eof(c), 1);
    ops->gio_ClearErr(c);
    EXPECT_EQ(ops->gio_Read(buffer, 1, 1, c), 1U);
    EXPECT_EQ(ops->gio_Eof(c), 1) << "the last byte sets it at once";
    ops->gio_ClearErr(c);
    EXPECT_EQ(ops->gio_Read(buffer, 1, 1, c), 0U);
    EXPECT_EQ(ops->gio_Eof(c), 1);
}

TEST_F(Memory, ReadingTheWholeBlockSetsTheEnd)
{
    char buffer[16] = {};
    EXPECT_EQ(ops->gio_Read(buffer, 1, 10, c), 10U);
    EXPECT_EQ(ops->gio_Eof(c), 1);
}

TEST_F(Memory, TransfersCheckTheirArguments)
{
    char byte = 'x';
    EXPECT_EQ(ops->gio_Read(nullptr, 1, 1, c), 0U);
    EXPECT_EQ(ops->gio_LastError(c), 22);
    ops->gio_ClearErr(c);
    EXPECT_EQ(ops->gio_LastError(c), 0);
    EXPECT_EQ(ops->gio_Read(&byte, 0, 1, c), 0U);
    EXPECT_EQ(ops->gio_LastError(c), 22);
    ops->gio_ClearErr(c);
    EXPECT_EQ(ops->gio_Write(&byte, 1, 0, c), 0U);
    EXPECT_EQ(ops->gio_LastError(c), 22);
    EXPECT_EQ(ops->gio_Read(&byte, UINT64_MAX, UINT64_MAX, c), 0U);
    EXPECT_EQ(ops->gio_Tell(c), 0);
}

TEST_F(Memory, WritesUpToTheSize)
{
    EXPECT_EQ(ops->gio_Write("abc", 1, 3, c), 3U);
    ops->gio_Seek(c, 8, GIO_SEEK_SET);
    EXPECT_EQ(ops->gio_Write("XYZ", 1, 3, c), 2U);
    EXPECT_EQ(ops->gio_Eof(c), 1);
    EXPECT_EQ(content(), "abc34567XY");
    EXPECT_EQ(ops->gio_Write("Q", 1, 1, c), 0U);
}

TEST_F(Memory, Seeks)
{
    EXPECT_EQ(ops->gio_Seek(c, 10, GIO_SEEK_SET), 0) << "the end is a place";
    EXPECT_EQ(ops->gio_Seek(c, 11, GIO_SEEK_SET), -1);
    EXPECT_EQ(ops->gio_LastError(c), 22);
    EXPECT_EQ(ops->gio_Tell(c), 10);
    EXPECT_EQ(ops->gio_Seek64(c, -4, GIO_SEEK_CUR), 0);
    EXPECT_EQ(ops->gio_Tell64(c), 6);
    EXPECT_EQ(ops->gio_Seek64(c, -10, GIO_SEEK_END), 0);
    EXPECT_EQ(ops->gio_Seek64(c, -11, GIO_SEEK_END), -1);
    EXPECT_EQ(ops->gio_Seek(c, -1, GIO_SEEK_CUR), -1);
    EXPECT_EQ(ops->gio_Seek(c, 4, GIO_SEEK_SET), 0);
    EXPECT_EQ(ops->gio_Seek(c, 7, GIO_SEEK_CUR), -1) << "beyond the end, though not from the start";
    EXPECT_EQ(ops->gio_Tell(c), 4);
    EXPECT_EQ(ops->gio_Seek(c, 6, GIO_SEEK_CUR), 0);
    EXPECT_EQ(ops->gio_Tell(c), 10);
    EXPECT_EQ(ops->gio_Seek(c, 1, GIO_SEEK_CUR), -1);
    EXPECT_EQ(ops->gio_Seek(c, 0, GIO_SEEK_SET), 0);
    EXPECT_EQ(ops->gio_Seek(c, 0, 3), -1);
    EXPECT_EQ(ops->gio_Seek64(c, INT64_MIN, GIO_SEEK_END), -1);
    EXPECT_EQ(ops->gio_Seek64(c, INT64_MAX, GIO_SEEK_END), -1);
    EXPECT_EQ(ops->gio_Tell(c), 0);
    EXPECT_EQ(ops->gio_Size(c), 10);
}

TEST_F(Memory, ForwardOnlyHandlesRefuseToGoBack)
{
    stream->kind |= GIO_KIND_FORWARD_ONLY;
    EXPECT_EQ(ops->gio_Seek(c, 5, GIO_SEEK_SET), 0);
    EXPECT_EQ(ops->gio_Seek(c, 4, GIO_SEEK_SET), -1);
    EXPECT_EQ(ops->gio_Seek(c, -1, GIO_SEEK_END), -1);
    EXPECT_EQ(ops->gio_Seek(c, 5, GIO_SEEK_SET), 0);
    EXPECT_EQ(ops->gio_Seek(c, 0, GIO_SEEK_END), 0);
}

TEST_F(Memory, GetsStopsAtTheLineFeedAndStaysThere)
{
    open("ab\ncd\nef");
    char line[16];
    EXPECT_EQ(ops->gio_Gets(line, 16, c), line);
    EXPECT_STREQ(line, "ab\n");
    EXPECT_EQ(ops->gio_Tell(c), 2);
    ops->gio_Seek(c, 3, GIO_SEEK_SET);
    EXPECT_EQ(ops->gio_Gets(line, 2, c), line);
    EXPECT_STREQ(line, "c");
    EXPECT_EQ(ops->gio_Gets(line, 1, c), line);
    EXPECT_STREQ(line, "");
    ops->gio_Seek(c, 6, GIO_SEEK_SET);
    EXPECT_EQ(ops->gio_Gets(line, 16, c), nullptr) << "the data's end was met";
    EXPECT_STREQ(line, "ef");
    EXPECT_EQ(ops->gio_Gets(nullptr, 16, c), nullptr);
    EXPECT_EQ(ops->gio_LastError(c), 22);
    EXPECT_EQ(ops->gio_Gets(line, 0, c), nullptr);
}

TEST_F(Memory, PutsBytesAndTexts)
{
    EXPECT_EQ(ops->gio_Puts("abc", c), 0);
    EXPECT_EQ(ops->gio_Tell(c), 3);
    EXPECT_EQ(ops->gio_Puts("0123456", c), 0) << "fits";
    EXPECT_EQ(content(), "abc0123456");
    EXPECT_EQ(ops->gio_Puts("x", c), -1);
    EXPECT_EQ(ops->gio_Eof(c), 1);
    EXPECT_EQ(ops->gio_Puts("", c), -1);
    ops->gio_ClearErr(c);
    ops->gio_Seek(c, 8, GIO_SEEK_SET);
    EXPECT_EQ(ops->gio_Puts("xyz", c), -1) << "cut at the data's end";
    EXPECT_EQ(ops->gio_Eof(c), 1);
    EXPECT_EQ(ops->gio_Tell(c), 10);
    EXPECT_EQ(content(), "abc01234xy");
    ops->gio_Seek(c, 0, GIO_SEEK_SET);
    EXPECT_EQ(ops->gio_Puts(nullptr, c), -1);
    EXPECT_EQ(ops->gio_LastError(c), 22);
}

TEST_F(Memory, SingleBytes)
{
    open("\xff"
         "b");
    EXPECT_EQ(ops->gio_Getc(c), 255);
    EXPECT_EQ(ops->gio_Eof(c), 0);
    EXPECT_EQ(ops->gio_Getc(c), 'b');
    EXPECT_EQ(ops->gio_Eof(c), 1) << "the last byte sets it at once";
    EXPECT_EQ(ops->gio_Getc(c), -1);
    ops->gio_ClearErr(c);
    ops->gio_Seek(c, 0, GIO_SEEK_SET);
    EXPECT_EQ(ops->gio_Putc('x', c), 'x');
    EXPECT_EQ(ops->gio_Eof(c), 0);
    EXPECT_EQ(ops->gio_Putc('y', c), 'y');
    EXPECT_EQ(ops->gio_Eof(c), 1);
    EXPECT_EQ(ops->gio_Putc('z', c), -1);
    EXPECT_EQ(content(), "xy");
    ops->gio_Seek(c, 0, GIO_SEEK_SET);
    EXPECT_EQ(ops->gio_Putc(-1, c), 255);
    EXPECT_EQ(content(), "\xffy");
}

TEST_F(Memory, UnsupportedCalls)
{
    EXPECT_EQ(ops->gio_Flush(c), -1);
    EXPECT_EQ(ops->gio_LastError(c), 40);
    EXPECT_EQ(ops->gio_Error(c), 0);
    ops->gio_ClearErr(c);
    uint32_t kind = 0;
    EXPECT_EQ(ops->gio_GetPath(c, &kind), nullptr);
    EXPECT_EQ(kind, 4U);
    EXPECT_EQ(ops->gio_LastError(c), 40);
    EXPECT_EQ(ops->gio_Error(c), 1);
    ops->gio_ClearErr(c);
    EXPECT_EQ(ops->gio_LastError(c), 0);
    EXPECT_EQ(ops->gio_Error(c), 1) << "stays for good";
}

TEST_F(Memory, LendsWhatIsLeft)
{
    void* data = nullptr;
    uint64_t length = 0;
    ops->gio_Seek(c, 4, GIO_SEEK_SET);
    EXPECT_EQ(ops->gio_ReadBuffer(c, &data, &length), 1);
    EXPECT_EQ(data, block->data() + 4);
    EXPECT_EQ(length, 6U);
    EXPECT_EQ(ops->gio_Tell(c), 4);
    EXPECT_EQ(ops->gio_ReadBuffer(c, nullptr, &length), 0);
    EXPECT_EQ(ops->gio_LastError(c), 22);
    EXPECT_EQ(ops->gio_ReadBuffer(c, &data, nullptr), 0);
    ops->gio_Seek(c, 10, GIO_SEEK_SET);
    ops->gio_ClearErr(c);
    EXPECT_EQ(ops->gio_ReadBuffer(c, &data, &length), 0);
    EXPECT_EQ(ops->gio_Eof(c), 1);
    EXPECT_EQ(ops->gio_ReadBuffer(c, nullptr, nullptr), 0);
    EXPECT_EQ(ops->gio_LastError(c), 0) << "the end is seen first";
}

TEST_F(Memory, PrintsIntoTheRest)
{
    EXPECT_EQ(print("%u-%s", 12U, "ab"), 5);
    EXPECT_EQ(ops->gio_Tell(c), 5);
    EXPECT_EQ(print("%s", "123456789"), 4) << "one place is the terminator's";
    EXPECT_EQ(content(), std::string("12-ab1234\0", 10));
    EXPECT_EQ(ops->gio_LastError(c), 0);
    EXPECT_EQ(print(nullptr), -1);
    EXPECT_EQ(ops->gio_LastError(c), 22);
    ops->gio_Seek(c, 0, GIO_SEEK_END);
    EXPECT_EQ(print("x"), -1);
    EXPECT_EQ(ops->gio_Eof(c), 1);
}

TEST_F(Memory, OtherKindsAreRefused)
{
    GIO_MemoryInstance other = *instance();
    char buffer[4];
    uint32_t kind = 0;
    void* data = nullptr;
    uint64_t length = 0;
    for (const bool wrong_kind : {true, false})
    {
        other.kind = wrong_kind ? 2 : 3;
        other.data = wrong_kind ? other.data : nullptr;
        void* o = &other;
        EXPECT_EQ(ops->gio_Read(buffer, 1, 1, o), 0U);
        EXPECT_EQ(ops->gio_Write(buffer, 1, 1, o), 0U);
        EXPECT_EQ(ops->gio_Seek(o, 0, 0), -1);
        EXPECT_EQ(ops->gio_Tell(o), -1);
        EXPECT_EQ(ops->gio_Seek64(o, 0, 0), -1);
        EXPECT_EQ(ops->gio_Tell64(o), -1);
        EXPECT_EQ(ops->gio_Flush(o), -1);
        EXPECT_EQ(ops->gio_Gets(buffer, 4, o), nullptr);
        EXPECT_EQ(ops->gio_Puts("x", o), -1);
        EXPECT_EQ(ops->gio_Getc(o), -1);
        EXPECT_EQ(ops->gio_Putc('x', o), -1);
        EXPECT_EQ(ops->gio_GetPath(o, &kind), nullptr);
        EXPECT_EQ(ops->gio_ReadBuffer(o, &data, &length), 0);
        EXPECT_EQ(ops->gio_Eof(o), -1);
        EXPECT_EQ(ops->gio_Error(o), -1);
        EXPECT_EQ(ops->gio_Size(o), -1);
        EXPECT_EQ(ops->gio_Close(o), wrong_kind ? -1 : 9);
        ops->gio_ClearErr(o);
        EXPECT_EQ(other.last_error, wrong_kind ? 0U : 9U);
    }
    EXPECT_EQ(ops->gio_Getc(nullptr), -1);
}

TEST_F(Memory, APlaceBeyondTheDataIsAnEnd)
{
    char buffer[4];
    instance()->position = 11;
    EXPECT_EQ(ops->gio_Read(buffer, 1, 1, c), 0U);
    EXPECT_EQ(ops->gio_Write(buffer, 1, 1, c), 0U);
    EXPECT_EQ(ops->gio_Getc(c), -1);
    EXPECT_EQ(ops->gio_Putc('x', c), -1);
    EXPECT_EQ(ops->gio_Puts("x", c), -1);
    EXPECT_EQ(ops->gio_Gets(buffer, 4, c), nullptr);
    EXPECT_EQ(print("x"), -1);
    EXPECT_EQ(ops->gio_Seek(c, 0, GIO_SEEK_CUR), -1);
    EXPECT_EQ(ops->gio_Seek(c, 0, GIO_SEEK_SET), 0);
    EXPECT_EQ(content(), "0123456789");
}

TEST_F(Memory, NarrowTellKnowsNoFarPlaces)
{
    instance()->position = 0x80000000;
    EXPECT_EQ(ops->gio_Tell(c), -1);
    EXPECT_EQ(ops->gio_Tell64(c), 0x80000000);
    instance()->position = 0x7FFFFFFF;
    EXPECT_EQ(ops->gio_Tell(c), 0x7FFFFFFF);
    instance()->position = 0;
}

TEST_F(Memory, CloseOfAnIncompleteInstanceGivesNine)
{
    GIO_MemoryInstance other = *instance();
    other.allocator = nullptr;
    EXPECT_EQ(ops->gio_Close(&other), 9);
    other = *instance();
    other.self = nullptr;
    EXPECT_EQ(ops->gio_Close(&other), 9);
}

}  // namespace
