#include "orvlog/colour/orvlog-ticket-stream.h"

#include "tests/support/test-allocator.h"

#include <gtest/gtest.h>

#include <string>

namespace
{

using orvlog::test::TestAllocator;

class TicketStream : public testing::Test
{
protected:
    TicketStream()
    {
        orvlog_ticket_stream_open(&memory, allocator.get());
    }
    ~TicketStream() override
    {
        orvlog_ticket_stream_close(&memory);
        EXPECT_EQ(allocator.outstanding(), 0u);
        EXPECT_EQ(allocator.bad_frees(), 0u);
    }

    uint64_t write(const std::string& bytes, uint64_t item_size = 1)
    {
        return memory.stream.ops->gio_Write(bytes.data(), item_size, bytes.size() / item_size, memory.stream.instance);
    }
    uint64_t read(uint64_t item_size, uint64_t item_count)
    {
        return memory.stream.ops->gio_Read(buffer, item_size, item_count, memory.stream.instance);
    }
    int32_t seek(int32_t offset, int32_t origin)
    {
        return memory.stream.ops->gio_Seek(memory.stream.instance, offset, origin);
    }
    // The lent block.
    std::string lent()
    {
        void* data = nullptr;
        uint64_t length = 0;
        EXPECT_EQ(memory.stream.ops->gio_ReadBuffer(memory.stream.instance, &data, &length), 1);
        return std::string(static_cast<const char*>(data), length);
    }

    TestAllocator allocator;
    ORVLOG_TicketStream memory;
    char buffer[64] = {};
};

TEST_F(TicketStream, HasFourOperations)
{
    const GIO_StreamOps* ops = memory.stream.ops;
    EXPECT_NE(ops->gio_Read, nullptr);
    EXPECT_NE(ops->gio_Write, nullptr);
    EXPECT_NE(ops->gio_Seek, nullptr);
    EXPECT_NE(ops->gio_ReadBuffer, nullptr);
    GIO_StreamOps others = *ops;
    others.gio_Read = nullptr;
    others.gio_Write = nullptr;
    others.gio_Seek = nullptr;
    others.gio_ReadBuffer = nullptr;
    const char* words = reinterpret_cast<const char*>(&others);
    for (size_t i = 0; i < sizeof others; ++i)
        EXPECT_EQ(words[i], 0) << i;
}

TEST_F(TicketStream, AnEmptyStreamLendsNoBlock)
{
    void* data = this;
    uint64_t length = 7;
    EXPECT_EQ(memory.stream.ops->gio_ReadBuffer(memory.stream.instance, &data, &length), 1);
    EXPECT_EQ(data, nullptr);
    EXPECT_EQ(length, 0u);
    EXPECT_EQ(memory.stream.ops->gio_ReadBuffer(memory.stream.instance, nullptr, &length), 0);
    EXPECT_EQ(memory.stream.ops->gio_ReadBuffer(memory.stream.instance, &data, nullptr), 0);
    EXPECT_EQ(read(1, 10), 0u);
    EXPECT_EQ(seek(0, GIO_SEEK_SET), 0);
    EXPECT_EQ(seek(1, GIO_SEEK_SET), -1);
    EXPECT_EQ(lent(), "");
}

TEST_F(TicketStream, TheFirstWriteTakes1024Bytes)
{
    EXPECT_EQ(write("abcdef", 2), 3u);
    EXPECT_EQ(allocator.requests(), 1u);
    EXPECT_EQ(allocator.largest_request(), 1024u);
    EXPECT_EQ(memory.instance.capacity, 1024u);
    EXPECT_EQ(memory.instance.position, 6u);
    EXPECT_EQ(lent(), "abcdef" + std::string(1018, '\0'));
    EXPECT_EQ(write(std::string(1018, 'x')), 1018u);
    EXPECT_EQ(allocator.requests(), 1u);
    EXPECT_EQ(write(""), 0u);
    EXPECT_EQ(allocator.requests(), 1u);
}

TEST_F(TicketStream, GrowsBy1024AndWhatIsWritten)
{
    EXPECT_EQ(write(std::string(1024, 'x')), 1024u);
    EXPECT_EQ(write("y"), 1u);
    EXPECT_EQ(memory.instance.capacity, 1024u + 1024 + 1);
    EXPECT_EQ(memory.instance.position, 1025u);
    EXPECT_EQ(lent(), std::string(1024, 'x') + "y" + std::string(1024, '\0'));
}

TEST_F(TicketStream, ALargeFirstWriteGrowsAtOnce)
{
    EXPECT_EQ(write(std::string(5000, 'z')), 5000u);
    EXPECT_EQ(memory.instance.capacity, 1024u + 1024 + 5000);
}

TEST_F(TicketStream, ASeekCutsAndDoesNotMove)
{
    write("abcdef");
    EXPECT_EQ(seek(4, GIO_SEEK_SET), 0);
    EXPECT_EQ(memory.instance.capacity, 4u);
    EXPECT_EQ(memory.instance.position, 6u);
    EXPECT_EQ(lent(), "abcd");
}

TEST_F(TicketStream, SeeksFromAllOrigins)
{
    write("abcdef");
    EXPECT_EQ(seek(0, GIO_SEEK_CUR), 0);
    EXPECT_EQ(lent(), "abcdef");
    EXPECT_EQ(seek(-2, GIO_SEEK_END), 0);
    EXPECT_EQ(lent(), "abcd");
    EXPECT_EQ(seek(1, GIO_SEEK_END), -1);
    EXPECT_EQ(seek(-5, GIO_SEEK_END), -1);
    EXPECT_EQ(seek(-1, GIO_SEEK_SET), -1);
    EXPECT_EQ(seek(0, 3), -1);
    EXPECT_EQ(seek(0, -1), -1);
    EXPECT_EQ(lent(), "abcd");
    EXPECT_EQ(seek(0, GIO_SEEK_SET), 0);
    EXPECT_EQ(lent(), "");
}

TEST_F(TicketStream, AWriteBehindACutKeepsWhatLiesBefore)
{
    write(std::string(5000, 'z'));
    EXPECT_EQ(seek(10, GIO_SEEK_SET), 0);
    EXPECT_EQ(write("end"), 3u);
    EXPECT_EQ(memory.instance.position, 5003u);
    EXPECT_GE(memory.instance.capacity, 5003u);
    EXPECT_EQ(lent().substr(0, 5003), std::string(5000, 'z') + "end");
}

TEST_F(TicketStream, ReadsGiveBytesNotItems)
{
    write("abcdef");
    seek(6, GIO_SEEK_SET);
    EXPECT_EQ(read(1, 4), 0u);
    memory.instance.position = 1;
    EXPECT_EQ(read(2, 2), 4u);
    EXPECT_EQ(std::string(buffer, 4), "bcde");
    EXPECT_EQ(memory.instance.position, 5u);
    EXPECT_EQ(read(4, 4), 1u);
    EXPECT_EQ(buffer[0], 'f');
    memory.instance.position = 60;
    EXPECT_EQ(read(1, 1), 0u);
}

TEST_F(TicketStream, SizesThatOverflowAreRefused)
{
    EXPECT_EQ(memory.stream.ops->gio_Write("a", UINT64_MAX, 2, memory.stream.instance), 0u);
    write("abc");
    EXPECT_EQ(memory.stream.ops->gio_Write("a", UINT64_MAX / 2, 2, memory.stream.instance), 0u);
    // Products that wrap to nothing are too large all the same.
    EXPECT_EQ(memory.stream.ops->gio_Write("a", uint64_t{1} << 63, 2, memory.stream.instance), 0u);
    EXPECT_EQ(memory.stream.ops->gio_Write("a", 2, uint64_t{1} << 63, memory.stream.instance), 0u);
    EXPECT_EQ(memory.instance.position, 3u);
    seek(3, GIO_SEEK_SET);
    memory.instance.position = 0;
    EXPECT_EQ(read(UINT64_MAX, 2), 3u);
    memory.instance.position = 0;
    EXPECT_EQ(read(uint64_t{1} << 63, 2), 3u);
}

TEST_F(TicketStream, NothingGoesWithoutABuffer)
{
    const GIO_StreamOps* ops = memory.stream.ops;
    EXPECT_EQ(ops->gio_Write(nullptr, 1, 5, memory.stream.instance), 0u);
    EXPECT_EQ(lent(), "");
    write("abc");
    seek(3, GIO_SEEK_SET);
    EXPECT_EQ(ops->gio_Write(nullptr, 1, 5, memory.stream.instance), 0u);
    EXPECT_EQ(lent(), "abc");
    memory.instance.position = 1;
    EXPECT_EQ(ops->gio_Read(nullptr, 1, 2, memory.stream.instance), 0u);
    EXPECT_EQ(memory.instance.position, 1u);
}

TEST_F(TicketStream, FailedAllocationsGive0)
{
    allocator.refuse(1);
    EXPECT_EQ(write("abc"), 0u);
    EXPECT_EQ(lent(), "");
    EXPECT_EQ(write("abc"), 3u);
    allocator.refuse(1);
    EXPECT_EQ(write(std::string(2000, 'x')), 0u);
    EXPECT_EQ(lent().substr(0, 4), std::string("abc\0", 4));
    EXPECT_EQ(write("def"), 3u);
    EXPECT_EQ(lent().substr(0, 6), "abcdef");
}

}  // namespace
