#include "orvlog/log/orvlog-compressed-stream.h"

#include "tests/support/memory-stream.h"
#include "tests/support/test-allocator.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>

namespace
{

using namespace std::string_literals;
using orvlog::test::MemoryStream;
using orvlog::test::TestAllocator;

constexpr char kPrefix[] = "<ORV compression=\"Adaptive Huffman\"";

class CompressedStream : public testing::Test
{
protected:
    ~CompressedStream() override
    {
        EXPECT_EQ(allocator.outstanding(), 0u);
        EXPECT_EQ(allocator.bad_frees(), 0u);
        EXPECT_FALSE(target.closed());
    }

    void open()
    {
        stream = ORVLOG_OpenCompressedStream(allocator.get(), target.get());
    }
    uint64_t write(const std::string& text, uint64_t item_size = 1)
    {
        return stream->ops->gio_Write(text.data(), item_size, text.size() / item_size, stream->instance);
    }
    void close()
    {
        ORVLOG_CloseCompressedStream(stream);
    }

    TestAllocator allocator;
    MemoryStream target;
    GIO_Stream* stream = nullptr;
};

TEST_F(CompressedStream, OfNothingIsThePrefixAndAByteZero)
{
    open();
    ASSERT_NE(stream, nullptr);
    EXPECT_EQ(target.text(), kPrefix);
    EXPECT_EQ(target.pieces().size(), 1u);
    close();
    EXPECT_EQ(target.text(), kPrefix + "\0"s);
    EXPECT_EQ(target.text().size(), 36u);
}

TEST_F(CompressedStream, CodesWhatIsWritten)
{
    open();
    EXPECT_EQ(write("abra"), 4u);
    EXPECT_EQ(write("cadabr", 3), 6u);
    EXPECT_EQ(write("a"), 1u);
    EXPECT_EQ(target.text(), kPrefix + "\x61\xb1\x6e\x56\xc7\x36\x49"s);
    close();
    EXPECT_EQ(target.text(), kPrefix + "\x61\xb1\x6e\x56\xc7\x36\x49\x37"s);
    EXPECT_EQ(target.flushes(), 0u);
}

TEST_F(CompressedStream, HandsOnAtMost100BytesAtATime)
{
    open();
    std::string text;
    for (int i = 0; i < 2000; ++i)
        text += std::to_string(i * 104729) + '\n';
    EXPECT_EQ(write(text), text.size());
    ASSERT_GT(target.pieces().size(), 50u);
    EXPECT_EQ(target.pieces().front(), 35u);
    for (size_t i = 1; i + 1 < target.pieces().size(); ++i)
    {
        EXPECT_LE(target.pieces()[i], 100u);
        EXPECT_GE(target.pieces()[i], 97u);
    }
    close();
    EXPECT_EQ(target.pieces().back(), 1u);
}

TEST_F(CompressedStream, LeavesTheCoderAloneForAWriteOfNothing)
{
    open();
    write("A");
    const auto* instance = static_cast<const ORVLOG_CompressedStream*>(stream->instance);
    const uint8_t* input = instance->coder->input;
    EXPECT_EQ(write(""), 0u);
    EXPECT_EQ(stream->ops->gio_Write("x", 0, 1, stream->instance), 0u);
    EXPECT_EQ(stream->ops->gio_Write("x", 1, 0, stream->instance), 0u);
    EXPECT_EQ(stream->ops->gio_Write(nullptr, 1, 1, stream->instance), 0u);
    EXPECT_EQ(stream->ops->gio_Write("x", 1, 1, nullptr), 0u);
    EXPECT_EQ(stream->ops->gio_Write("x", UINT64_MAX, 2, stream->instance), 0u);
    EXPECT_EQ(instance->coder->input, input);
    close();
    EXPECT_EQ(target.text(), kPrefix + "\x41\x80"s);
}

TEST_F(CompressedStream, ReportsEveryByteWhateverTheTargetTook)
{
    target.set_room(36);
    open();
    EXPECT_EQ(write("abracadabra"), 11u);
    EXPECT_EQ(target.text(), kPrefix + "a"s);
    close();
    EXPECT_EQ(target.text().size(), 36u);
}

TEST_F(CompressedStream, HasNoOtherOperation)
{
    open();
    EXPECT_EQ(stream->ops->gio_Write, ORVLOG_CompressedWrite);
    EXPECT_EQ(stream->ops->gio_Read, nullptr);
    EXPECT_EQ(stream->ops->gio_VPrintf, nullptr);
    EXPECT_EQ(stream->ops->gio_Flush, nullptr);
    EXPECT_EQ(stream->ops->gio_Close, nullptr);
    const auto* instance = static_cast<const ORVLOG_CompressedStream*>(stream->instance);
    EXPECT_EQ(instance->allocator, allocator.get());
    EXPECT_EQ(instance->target, target.get());
    close();
}

TEST_F(CompressedStream, TakesThreeBlocksAndACoder)
{
    open();
    EXPECT_EQ(allocator.requests(), 5u);
    EXPECT_EQ(allocator.outstanding(), 5u);
    write("no more than these");
    close();
    EXPECT_EQ(allocator.requests(), 5u);
}

TEST_F(CompressedStream, IsNotOpenedWithoutMemory)
{
    for (uint64_t n = 1; n <= 5; ++n)
    {
        allocator.refuse(n);
        open();
        EXPECT_EQ(stream, nullptr) << n;
        EXPECT_EQ(allocator.outstanding(), 0u);
        EXPECT_EQ(target.text(), "");
        allocator.refuse(0);
    }
}

TEST_F(CompressedStream, IsNotOpenedOnATargetThatTakesLessThanThePrefix)
{
    target.set_room(34);
    open();
    EXPECT_EQ(stream, nullptr);
    EXPECT_EQ(target.text().size(), 34u);

    EXPECT_EQ(ORVLOG_OpenCompressedStream(allocator.get(), nullptr), nullptr);
    EXPECT_EQ(ORVLOG_OpenCompressedStream(nullptr, target.get()), nullptr);
    ORVLOG_CloseCompressedStream(nullptr);
}

}  // namespace
