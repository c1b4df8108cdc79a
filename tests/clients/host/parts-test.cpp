// The allocators, the stream and the identity that a program may bring along.

#include "clients/host/orvlog-host-identity.h"
#include "clients/host/orvlog-host-memory.h"
#include "clients/host/orvlog-host-stream.h"
#include "tests/support/temp-folder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

namespace
{

using namespace orvlog::test;

void use(GMM_Allocator* allocator)
{
    EXPECT_EQ(allocator->self, allocator);
    auto* block = static_cast<uint8_t*>(allocator->gmm_Alloc(allocator, 10, 0));
    ASSERT_NE(block, nullptr);
    EXPECT_EQ(reinterpret_cast<uintptr_t>(block) % 16, 0U);
    std::memcpy(block, "0123456789", 10);
    block = static_cast<uint8_t*>(allocator->gmm_Realloc(allocator, block, 100000));
    ASSERT_NE(block, nullptr);
    EXPECT_EQ(std::memcmp(block, "0123456789", 10), 0);
    EXPECT_EQ(allocator->gmm_AllocSize(allocator, block), 100000U);
    block = static_cast<uint8_t*>(allocator->gmm_Realloc(allocator, block, 5));
    ASSERT_NE(block, nullptr);
    EXPECT_EQ(std::memcmp(block, "01234", 5), 0);
    auto* zeros = static_cast<uint8_t*>(allocator->gmm_Calloc(allocator, 64, 0));
    ASSERT_NE(zeros, nullptr);
    EXPECT_EQ(std::count(zeros, zeros + 64, 0), 64);
    auto* made = static_cast<uint8_t*>(allocator->gmm_Realloc(allocator, nullptr, 8));
    ASSERT_NE(made, nullptr);
    // By way of a variable, so that no compiler looks at the size.
    volatile uint64_t too_much = UINT64_MAX;
    EXPECT_EQ(allocator->gmm_Alloc(allocator, too_much, 0), nullptr);
    EXPECT_EQ(allocator->gmm_Realloc(allocator, made, too_much), nullptr);
    for (void* each : {static_cast<void*>(block), static_cast<void*>(zeros), static_cast<void*>(made)})
        allocator->gmm_Free(allocator, each);
    allocator->gmm_Free(allocator, nullptr);
}

// All twenty, as what tables are checked for.
void expect_whole(const GMM_Allocator& allocator)
{
    void* words[22];
    std::memcpy(words, &allocator, sizeof words);
    for (int i = 1; i < 22; ++i)
        EXPECT_NE(words[i], nullptr) << i;
}

TEST(HostMemory, OfMallocGivesAndTakesBlocks)
{
    use(orvlog_malloc_allocator());
    expect_whole(*orvlog_malloc_allocator());
    EXPECT_EQ(orvlog_malloc_allocator(), orvlog_malloc_allocator());
}

TEST(HostMemory, CountsWhatIsOut)
{
    ORVLOG_HostMemory memory;
    GMM_Allocator* allocator = orvlog_counting_allocator(&memory);
    use(allocator);
    expect_whole(*allocator);
    EXPECT_EQ(memory.blocks, 0U);
    EXPECT_EQ(memory.bytes, 0U);
    EXPECT_EQ(memory.peak_bytes, 100000U);
    void* block = allocator->gmm_Alloc(allocator, 30, 0);
    EXPECT_EQ(memory.blocks, 1U);
    EXPECT_EQ(allocator->gmm_UsedBytes(allocator), 30U);
    uint64_t used = 0;
    uint64_t rest = 1;
    EXPECT_EQ(allocator->gmm_CurAllocCnt(allocator, &used, &rest), 0U);
    EXPECT_EQ(used, 30U);
    EXPECT_EQ(rest, 0U);
    allocator->gmm_Free(allocator, block);
    EXPECT_EQ(memory.blocks, 0U);
}

int32_t print(GIO_Stream* stream, const char* format, ...)
{
    va_list args;
    va_start(args, format);
    const int32_t length = stream->ops->gio_VPrintf(stream->instance, format, args);
    va_end(args);
    return length;
}

TEST(HostStream, WritesToTheFile)
{
    const TempFolder folder;
    ORVLOG_FileStream record;
    GIO_Stream* stream = orvlog_stream_over_file(&record, std::fopen("a.xml", "wb"));
    ASSERT_NE(stream, nullptr);
    const GIO_StreamOps* ops = stream->ops;
    EXPECT_EQ(print(stream, "<a n=\"%u\"/>\n", 17U), 12);
    EXPECT_EQ(ops->gio_Write("bcdefg", 2, 3, stream->instance), 3U);
    EXPECT_EQ(ops->gio_Puts("hi", stream->instance), 0);
    EXPECT_EQ(ops->gio_Putc('!', stream->instance), '!');
    EXPECT_EQ(ops->gio_Flush(stream->instance), 0);
    EXPECT_EQ(folder.read("a.xml"), "<a n=\"17\"/>\nbcdefghi!");
    EXPECT_EQ(ops->gio_Tell64(stream->instance), 21);
    EXPECT_EQ(ops->gio_Size(stream->instance), 21);
    EXPECT_EQ(ops->gio_Seek64(stream->instance, 0, GIO_SEEK_SET), -1);
    EXPECT_EQ(ops->gio_Getc(stream->instance), -1);
    EXPECT_EQ(ops->gio_Error(stream->instance), 0);
    EXPECT_EQ(ops->gio_Close(stream->instance), GIO_OK);
    EXPECT_EQ(ops->gio_Close(stream->instance), GIO_ERR_BAD_HANDLE);
}

TEST(HostStream, HasAllOperations)
{
    ORVLOG_FileStream record;
    EXPECT_EQ(orvlog_stream_over_file(&record, nullptr), nullptr);
    void* words[20];
    static_assert(sizeof words == sizeof record.ops);
    std::memcpy(words, &record.ops, sizeof words);
    for (int i = 0; i < 20; ++i)
        EXPECT_NE(words[i], nullptr) << i;
}

#ifdef __linux__
TEST(HostStream, KeepsTheFirstFailureAndWritesNothingBehindIt)
{
    ORVLOG_FileStream record;
    GIO_Stream* stream = orvlog_stream_over_file(&record, std::fopen("/dev/full", "wb"));
    ASSERT_NE(stream, nullptr);
    const GIO_StreamOps* ops = stream->ops;
    EXPECT_EQ(print(stream, "text"), 4);
    EXPECT_EQ(ops->gio_Flush(stream->instance), -1);
    EXPECT_EQ(ops->gio_Error(stream->instance), 1);
    EXPECT_EQ(ops->gio_LastError(stream->instance), GIO_ERR_NO_SPACE);
    ops->gio_ClearErr(stream->instance);
    EXPECT_EQ(print(stream, "more"), -1);
    EXPECT_EQ(ops->gio_Write("more", 1, 4, stream->instance), 0U);
    EXPECT_EQ(record.text_bytes, 4U);
    EXPECT_EQ(ops->gio_Close(stream->instance), GIO_ERR_NO_SPACE);
}
#endif

TEST(HostIdentity, GivesEachSessionAnotherNumber)
{
    ORVLOG_RandomIdentity first;
    const ORVLOG_IdentitySource* source = orvlog_random_identity(&first);
    std::vector<std::string> numbers;
    for (int i = 0; i < 50; ++i)
    {
        uint8_t bytes[16] = {};
        ASSERT_EQ(source->object->functions->orvlog_get_session_id(source->object, bytes), 1U);
        numbers.emplace_back(reinterpret_cast<const char*>(bytes), sizeof bytes);
    }
    std::sort(numbers.begin(), numbers.end());
    EXPECT_EQ(std::adjacent_find(numbers.begin(), numbers.end()), numbers.end());
}

}  // namespace
