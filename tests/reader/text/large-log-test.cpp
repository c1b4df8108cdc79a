// A log of more than 100 MB, coded and read back at once. It stands nowhere as a whole: its text is made as the coder
// asks for it, and coded as the reader asks for bytes. Neither side's memory grows with it.

#include "orvlog/log/orvlog-compressed-stream.h"
#include "reader/text/coded-input.h"
#include "tests/support/test-allocator.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <istream>
#include <new>
#include <streambuf>
#include <string>
#include <vector>

namespace
{

// The heap of this program: bytes in use, now and at most. A block is preceded by its size.
size_t in_use = 0;
size_t most_in_use = 0;
constexpr size_t kHead = 16;

void* take(size_t size)
{
    auto* block = static_cast<char*>(std::malloc(size + kHead));
    if (block == nullptr)
        return nullptr;
    *reinterpret_cast<size_t*>(block) = size;
    in_use += size;
    most_in_use = std::max(most_in_use, in_use);
    return block + kHead;
}

void give_back(void* block)
{
    if (block == nullptr)
        return;
    char* head = static_cast<char*>(block) - kHead;
    in_use -= *reinterpret_cast<size_t*>(head);
    std::free(head);
}

}  // namespace

void* operator new(size_t size)
{
    void* block = take(size);
    if (block == nullptr)
        throw std::bad_alloc();
    return block;
}

void* operator new(size_t size, const std::nothrow_t&) noexcept
{
    return take(size);
}

void operator delete(void* block) noexcept
{
    give_back(block);
}

void operator delete(void* block, size_t) noexcept
{
    give_back(block);
}

void operator delete(void* block, const std::nothrow_t&) noexcept
{
    give_back(block);
}

namespace
{

using orvlog::reader::CodedInput;
using orvlog::reader::Ending;
using orvlog::test::TestAllocator;

constexpr uint64_t kRows = 700000;

// The text of a log in pieces: a root with rows of an image that is mostly black.
class LogText
{
public:
    // The next piece; empty at the end.
    std::string_view next()
    {
        piece_.clear();
        if (row_ == 0)
            piece_ = "<ORV LoggingMode=\"transparent\">\n";
        for (int i = 0; i < 300 && row_ < kRows; ++i)
            add_row();
        if (row_ == kRows && !closed_)
        {
            piece_ += "</ORV>\n";
            closed_ = true;
        }
        return piece_;
    }

private:
    void add_row()
    {
        if (row_ % 1000 == 0)
            piece_ += "  <GOP_ImageReadFn Id=\"" + std::to_string(row_) + "\" return=\"TRUE\">\n";
        piece_ += "00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 "
                  "00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 ff \n";
        if (++row_ % 1000 == 0)
            piece_ += "  </GOP_ImageReadFn>\n";
    }

    std::string piece_;
    uint64_t row_ = 0;
    bool closed_ = false;
};

// The coded file of that log, as a stream buffer.
class CodedLog : public std::streambuf
{
public:
    CodedLog()
    {
        ops_.gio_Write = [](const void* data, uint64_t size, uint64_t count, void* instance)
        {
            static_cast<CodedLog*>(instance)->coded_.append(static_cast<const char*>(data), size * count);
            return size * count;
        };
        target_ = {this, 0, &ops_};
        stream_ = ORVLOG_OpenCompressedStream(allocator.get(), &target_);
    }
    CodedLog(const CodedLog&) = delete;
    CodedLog& operator=(const CodedLog&) = delete;
    ~CodedLog() override
    {
        ORVLOG_CloseCompressedStream(stream_);
    }

    TestAllocator allocator;
    uint64_t text_size = 0;

protected:
    int_type underflow() override
    {
        if (gptr() != nullptr)
            coded_.clear();
        while (coded_.empty() && stream_ != nullptr)
            code_more();
        if (coded_.empty())
            return traits_type::eof();
        setg(coded_.data(), coded_.data(), coded_.data() + coded_.size());
        return traits_type::to_int_type(coded_[0]);
    }

private:
    void code_more()
    {
        const std::string_view piece = text_.next();
        text_size += piece.size();
        ORVLOG_CompressedWrite(piece.data(), 1, piece.size(), stream_->instance);
        if (!piece.empty())
            return;
        EXPECT_EQ(allocator.requests(), 5U);
        ORVLOG_CloseCompressedStream(stream_);
        stream_ = nullptr;
    }

    LogText text_;
    std::string coded_;
    GIO_StreamOps ops_ = {};
    GIO_Stream target_ = {};
    GIO_Stream* stream_;
};

TEST(LargeLog, IsCodedAndReadBackInConstantMemory)
{
    CodedLog coded;
    std::istream source(&coded);
    CodedInput input(source);
    LogText expected;
    std::vector<char> buffer(50000);
    uint64_t read = 0;
    size_t most_at_the_start = 0;
    for (std::string_view wanted = expected.next(); !wanted.empty(); wanted = expected.next())
    {
        while (!wanted.empty())
        {
            const size_t count = input.read(buffer.data(), std::min(buffer.size(), wanted.size()));
            ASSERT_GT(count, 0U) << read;
            ASSERT_TRUE(wanted.starts_with(std::string_view(buffer.data(), count))) << read;
            wanted.remove_prefix(count);
            read += count;
        }
        if (most_at_the_start == 0 && read > 5000000)
            most_at_the_start = most_in_use;
    }
    EXPECT_EQ(input.read(buffer.data(), buffer.size()), 0U);
    EXPECT_EQ(input.ending(), Ending::whole);
    EXPECT_EQ(read, coded.text_size);
    EXPECT_GT(read, 100000000U);
    EXPECT_EQ(most_in_use, most_at_the_start);
    EXPECT_LT(most_in_use, 2000000U);
    EXPECT_EQ(coded.allocator.outstanding(), 0U);
}

}  // namespace
