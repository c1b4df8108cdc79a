#include "holv-core/gmm/gmm-chunk.h"

#include "tests/support/guarded-block.h"
#include "tests/support/test-allocator.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstring>
#include <vector>

namespace
{

using orvlog::test::TestAllocator;

// A parent that is asked in the channel of the pool, here 3, and in no other. It hides it from its own count.
class ParentInChannel3 : public TestAllocator
{
public:
    ParentInChannel3()
    {
        inner = get()->gmm_Alloc;
        get()->gmm_Alloc = [](GMM_Allocator* parent, uint64_t size, uint32_t channel)
        {
            EXPECT_EQ(channel, 3U);
            return inner(parent, size, 0);
        };
    }

private:
    static inline void* (*inner)(GMM_Allocator* allocator, uint64_t size, uint32_t channel) = nullptr;
};

class Chunk : public testing::Test
{
protected:
    explicit Chunk(uint64_t chunk_size = 16384)
    {
        const GMM_ChunkParams params = {parent.get(), chunk_size, 3};
        pool = gmm_chunk_allocator_create(&params);
    }
    ~Chunk() override
    {
        EXPECT_EQ(pool->gmm_Delete(pool), parent.get());
        EXPECT_EQ(parent.outstanding(), 0U);
    }

    GMM_ChunkAllocator* record()
    {
        return reinterpret_cast<GMM_ChunkAllocator*>(pool);
    }
    uint8_t* alloc(uint64_t size)
    {
        return static_cast<uint8_t*>(pool->gmm_Alloc(pool, size, 0));
    }

    ParentInChannel3 parent;
    GMM_Allocator* pool = nullptr;
};

TEST_F(Chunk, CreationFillsTheRecordAndTakesNoChunk)
{
    EXPECT_EQ(parent.requests(), 1U);
    EXPECT_EQ(pool->self, pool);
    EXPECT_EQ(record()->parent, parent.get());
    EXPECT_EQ(record()->chunk_size, 16384U);
    EXPECT_EQ(record()->channel, 3U);
    EXPECT_EQ(record()->remaining, 0U);
    EXPECT_EQ(reinterpret_cast<void*>(record()->head.next), &record()->tail);
    EXPECT_EQ(reinterpret_cast<void*>(record()->tail.prev), &record()->head);
    EXPECT_EQ(record()->head.prev, nullptr);
    EXPECT_EQ(record()->tail.next, nullptr);
}

TEST_F(Chunk, CreationWithoutMemoryGivesNull)
{
    parent.refuse(1);
    const GMM_ChunkParams params = {parent.get(), 16384, 3};
    EXPECT_EQ(gmm_chunk_allocator_create(&params), nullptr);
}

TEST_F(Chunk, BlocksFollowOneAnotherWithNothingBetween)
{
    uint8_t* first = alloc(1);
    EXPECT_EQ(alloc(3), first + 1);
    EXPECT_EQ(alloc(0), first + 4);
    EXPECT_EQ(alloc(7), first + 4);
    EXPECT_EQ(parent.requests(), 2U);
    EXPECT_EQ(record()->used_bytes, 11U);
    EXPECT_EQ(record()->remaining, 16384U - 24 - 11);
    EXPECT_EQ(reinterpret_cast<uint8_t*>(record()->head.next) + 24, first);
}

TEST_F(Chunk, LargeRequestRoundsTheChunkUp)
{
    ASSERT_NE(alloc(20000), nullptr);
    EXPECT_EQ(record()->head.next->size, 32768U);
    EXPECT_EQ(record()->total_bytes, 32768U);
}

TEST_F(Chunk, RequestThatFillsAChunkFits)
{
    ASSERT_NE(alloc(16384 - 24), nullptr);
    EXPECT_EQ(record()->head.next->size, 16384U);
    EXPECT_EQ(record()->remaining, 0U);
    ASSERT_NE(alloc(16384 - 23), nullptr);
    EXPECT_EQ(record()->head.next->size, 32768U);
}

TEST_F(Chunk, RestOfAChunkIsAbandoned)
{
    alloc(16384 - 24 - 100);
    EXPECT_EQ(record()->remaining, 100U);
    const GMM_Chunk* first = record()->head.next;
    alloc(200);
    EXPECT_NE(record()->head.next, first);
    EXPECT_EQ(record()->head.next->next, first);
    EXPECT_EQ(record()->head.next->prev, reinterpret_cast<GMM_Chunk*>(&record()->head));
    EXPECT_EQ(first->prev, record()->head.next);
    EXPECT_EQ(record()->tail.prev, first);
    uint64_t used = 0;
    uint64_t left = 0;
    EXPECT_EQ(pool->gmm_CurAllocCnt(pool, &used, &left), 32768U - 16384 + 24 - 100);
    EXPECT_EQ(used, 16384U - 24 - 100 + 200);
    EXPECT_EQ(left, 32768U - used);
    EXPECT_EQ(pool->gmm_PeakAllocCnt(pool), used);
    EXPECT_EQ(pool->gmm_UsedBytes(pool), used);
}

TEST_F(Chunk, SizeOfZeroOnANewAllocatorGivesTheNullCursor)
{
    EXPECT_EQ(alloc(0), nullptr);
    EXPECT_EQ(parent.requests(), 1U);
    EXPECT_EQ(pool->gmm_Calloc(pool, 0, 0), nullptr);
}

TEST_F(Chunk, HugeSizesGiveNull)
{
    EXPECT_EQ(alloc(UINT64_MAX), nullptr);
    EXPECT_EQ(alloc(UINT64_MAX - 23), nullptr);
    parent.limit(1 << 20);
    EXPECT_EQ(alloc(UINT64_MAX - 24), nullptr);
    EXPECT_EQ(alloc(UINT64_MAX - 40000), nullptr);
    EXPECT_NE(alloc(10), nullptr);
}

TEST_F(Chunk, CallocFillsWithZeros)
{
    const auto* block = static_cast<uint8_t*>(pool->gmm_Calloc(pool, 100, 0));
    for (int i = 0; i < 100; ++i)
        EXPECT_EQ(block[i], 0);
}

TEST_F(Chunk, OperationsThatDoNothing)
{
    uint8_t* block = alloc(10);
    pool->gmm_Free(pool, block);
    pool->gmm_FreeChannel(pool, 0);
    pool->gmm_FreeAll(pool);
    pool->gmm_Truncate(pool, block, 1);
    pool->gmm_NoOp14(pool);
    pool->gmm_CurChanAllocCnt(pool, 0, nullptr);
    EXPECT_EQ(pool->gmm_AllocSize(pool, block), 0U);
    EXPECT_EQ(pool->gmm_IsPtrValid(pool, nullptr), 1U);
    EXPECT_EQ(pool->gmm_IsPtrInChan(pool, nullptr, 9), 1U);
    EXPECT_EQ(pool->gmm_IntegrityCheck(pool), 1U);
    EXPECT_EQ(record()->used_bytes, 10U);
    EXPECT_EQ(alloc(1), block + 10);
}

TEST_F(Chunk, InfoIsStored)
{
    EXPECT_EQ(pool->gmm_SetInfo(pool, this, 11, 12, 13), 13U);
    EXPECT_EQ(record()->info_value, 11U);
    EXPECT_EQ(record()->info_word_a, 12U);
    EXPECT_EQ(record()->info_word_b, 13U);
    gmm_fill_operations(record(), this);
    EXPECT_EQ(record()->info_value, 0U);
    EXPECT_EQ(pool->instance, this);
    gmm_fill_operations(nullptr, this);
}

TEST_F(Chunk, ReallocCopiesToTheEndOfTheChunkAtMost)
{
    uint8_t* old = alloc(4);
    std::memcpy(old, "abcd", 4);
    std::memcpy(alloc(4), "EFGH", 4);
    const auto* moved = static_cast<uint8_t*>(pool->gmm_Realloc(pool, old, 6));
    EXPECT_EQ(moved, old + 8);
    EXPECT_EQ(std::memcmp(moved, "abcdEF", 6), 0) << "what stood behind comes along";
    const auto* wide = static_cast<uint8_t*>(pool->gmm_Realloc(pool, old, 100));
    EXPECT_EQ(wide, old + 14);
    EXPECT_EQ(std::memcmp(wide, "abcdEFGHabcdEF", 14), 0) << "as far as the new block";
    const auto* shorter = static_cast<uint8_t*>(pool->gmm_Realloc(pool, old, 2));
    EXPECT_EQ(std::memcmp(shorter, "ab", 2), 0);
}

TEST_F(Chunk, ReallocAcrossChunks)
{
    alloc(16384 - 24 - 4);
    uint8_t* last = alloc(4);
    std::memcpy(last, "tail", 4);
    const auto* moved = static_cast<uint8_t*>(pool->gmm_Realloc(pool, last, 1000));
    ASSERT_NE(moved, nullptr);
    EXPECT_EQ(std::memcmp(moved, "tail", 4), 0);
}

TEST_F(Chunk, ReallocOfNoBytesBehindAFullChunkReadsNothing)
{
    orvlog::test::GuardedBlock full(sizeof(GMM_ChunkAllocator) + 24 + 8);
    const GMM_ChunkBlockParams params = {full.data(), full.size()};
    GMM_Allocator* guarded = gmm_chunk_allocator_in_block(&params);
    auto* growing = full.as<GMM_ChunkAllocator>();
    ASSERT_NE(guarded->gmm_Alloc(guarded, 8, 0), nullptr);
    void* empty = guarded->gmm_Alloc(guarded, 0, 0);
    ASSERT_EQ(empty, full.data() + full.size()) << "where the readable page ends";
    growing->parent = parent.get();
    growing->chunk_size = 64;
    growing->channel = 3;
    EXPECT_NE(guarded->gmm_Realloc(guarded, empty, 16), nullptr);
    EXPECT_EQ(growing->used_bytes, 24U);
    parent.get()->gmm_Free(parent.get(), growing->head.next);
}

TEST_F(Chunk, ReallocRefusals)
{
    uint8_t* block = alloc(4);
    EXPECT_EQ(pool->gmm_Realloc(pool, block, 0), nullptr);
    EXPECT_EQ(pool->gmm_Realloc(pool, block, UINT64_MAX), nullptr);
    EXPECT_NE(pool->gmm_Realloc(pool, nullptr, 16), nullptr);
    parent.refuse(1);
    EXPECT_EQ(pool->gmm_Realloc(pool, block, 100000), nullptr);
}

TEST_F(Chunk, FreesAreNotPassedToTheParent)
{
    uint8_t* block = alloc(10);
    alloc(20000);
    const uint64_t before = parent.outstanding();
    EXPECT_EQ(before, 3U) << "the record and two chunks";
    pool->gmm_Free(pool, block);
    pool->gmm_FreeAll(pool);
    EXPECT_EQ(parent.outstanding(), before);
}

TEST(ChunkRecord, DeletionWithoutChunksGivesBackTheRecordOnly)
{
    TestAllocator parent;
    const GMM_ChunkParams params = {parent.get(), 16384, 0};
    GMM_Allocator* pool = gmm_chunk_allocator_create(&params);
    EXPECT_EQ(parent.requests(), 1U);
    EXPECT_EQ(parent.largest_request(), sizeof(GMM_ChunkAllocator));
    EXPECT_EQ(parent.outstanding(), 1U);
    EXPECT_EQ(pool->gmm_Delete(pool), parent.get());
    EXPECT_EQ(parent.outstanding(), 0U);
    EXPECT_EQ(parent.bad_frees(), 0U);
}

TEST(ChunkRecord, NothingToMakeItFromGivesNull)
{
    EXPECT_EQ(gmm_chunk_allocator_create(nullptr), nullptr);
    const GMM_ChunkParams orphan = {nullptr, 16384, 0};
    EXPECT_EQ(gmm_chunk_allocator_create(&orphan), nullptr);
    EXPECT_EQ(gmm_chunk_allocator_in_block(nullptr), nullptr);
}

// What a parent is asked for.
struct Asked
{
    GMM_Allocator record = {};
    TestAllocator room;
    std::vector<std::pair<uint64_t, uint32_t>> requests;
};

TEST(ChunkRecord, ParentIsAskedWithTheChannelOfTheRecord)
{
    Asked asked;
    asked.record.instance = &asked;
    asked.record.gmm_Alloc = [](GMM_Allocator* parent, uint64_t size, uint32_t channel) -> void*
    {
        auto* self = static_cast<Asked*>(parent->instance);
        self->requests.emplace_back(size, channel);
        return self->room.get()->gmm_Alloc(self->room.get(), size, 0);
    };
    asked.record.gmm_Free = [](GMM_Allocator* parent, void* block)
    {
        auto* self = static_cast<Asked*>(parent->instance);
        self->room.get()->gmm_Free(self->room.get(), block);
    };
    const GMM_ChunkParams params = {&asked.record, 16384, 7};
    GMM_Allocator* pool = gmm_chunk_allocator_create(&params);
    pool->gmm_Alloc(pool, 1, 99);
    pool->gmm_Calloc(pool, 20000, 98);
    using Request = std::pair<uint64_t, uint32_t>;
    EXPECT_EQ(asked.requests, (std::vector<Request>{{312, 7}, {16384, 7}, {32768, 7}}));
    EXPECT_EQ(pool->gmm_Delete(pool), &asked.record);
    EXPECT_EQ(asked.room.outstanding(), 0U);
}

struct Calls
{
    int minimised = 0;
    int failed = 0;
    uint64_t wanted = 0;
    uint32_t answer = 0;
    TestAllocator* parent = nullptr;
    bool out_of_the_record = false;
};

uint32_t minimise(void* context, GMM_Allocator*, uint64_t* wanted)
{
    auto* calls = static_cast<Calls*>(context);
    ++calls->minimised;
    calls->wanted = *wanted;
    return calls->answer;
}

void fail(void* context, GMM_Allocator*)
{
    ++static_cast<Calls*>(context)->failed;
}

TEST_F(Chunk, ExhaustionRunsThroughTheCallbacks)
{
    Calls calls;
    EXPECT_EQ(pool->gmm_RegisterMinimise(pool, minimise, &calls), 1U);
    EXPECT_EQ(pool->gmm_RegisterAllocFail(pool, fail, &calls), 1U);
    parent.refuse(1);
    EXPECT_EQ(alloc(50), nullptr);
    EXPECT_EQ(calls.minimised, 1);
    EXPECT_EQ(calls.wanted, 50U);
    EXPECT_EQ(calls.failed, 1);
    calls.answer = 1;
    parent.refuse(1);
    EXPECT_NE(alloc(50), nullptr) << "the retry succeeds";
    EXPECT_EQ(calls.minimised, 2);
    EXPECT_EQ(calls.failed, 1);
    EXPECT_EQ(record()->minimise_callback, minimise);
    EXPECT_EQ(record()->alloc_fail_callback, fail);
    parent.refuse(1, true);
    EXPECT_EQ(alloc(50000), nullptr);
    EXPECT_EQ(calls.minimised, 3) << "not called again during the retry";
    EXPECT_EQ(calls.failed, 2);
    parent.refuse(0);
}

TEST_F(Chunk, FailCallbackAloneIsToldOnce)
{
    Calls calls;
    pool->gmm_RegisterAllocFail(pool, fail, &calls);
    parent.refuse(1);
    EXPECT_EQ(alloc(50), nullptr);
    EXPECT_EQ(calls.failed, 1);
}

class ExactChunk : public Chunk
{
protected:
    ExactChunk() : Chunk(0) {}
};

TEST_F(ExactChunk, ChunkSizeOfZeroTakesExactChunks)
{
    alloc(100);
    EXPECT_EQ(record()->head.next->size, 124U);
    alloc(1);
    EXPECT_EQ(record()->head.next->size, 25U);
}

TEST(ChunkInBlock, HandsOutTheRestOfTheBlock)
{
    alignas(16) uint8_t room[sizeof(GMM_ChunkAllocator) + 24 + 100];
    const GMM_ChunkBlockParams params = {room, sizeof room};
    GMM_Allocator* pool = gmm_chunk_allocator_in_block(&params);
    ASSERT_EQ(static_cast<void*>(pool), room);
    auto* record = reinterpret_cast<GMM_ChunkAllocator*>(pool);
    EXPECT_EQ(record->total_bytes, 124U);
    EXPECT_EQ(record->remaining, 100U);
    EXPECT_EQ(record->parent, nullptr);
    EXPECT_EQ(record->cursor, room + sizeof(GMM_ChunkAllocator) + 24);
    Calls calls;
    pool->gmm_RegisterMinimise(pool, minimise, &calls);
    pool->gmm_RegisterAllocFail(pool, fail, &calls);
    EXPECT_NE(pool->gmm_Alloc(pool, 100, 0), nullptr);
    EXPECT_EQ(pool->gmm_Alloc(pool, 1, 0), nullptr);
    EXPECT_EQ(calls.minimised, 0);
    EXPECT_EQ(calls.failed, 1);
    EXPECT_EQ(pool->gmm_Delete(pool), nullptr);
}

TEST(ChunkInBlock, TooSmallABlockGivesNull)
{
    alignas(16) uint8_t room[sizeof(GMM_ChunkAllocator) + 23];
    const GMM_ChunkBlockParams small = {room, sizeof room};
    EXPECT_EQ(gmm_chunk_allocator_in_block(&small), nullptr);
    const GMM_ChunkBlockParams none = {nullptr, 10000};
    EXPECT_EQ(gmm_chunk_allocator_in_block(&none), nullptr);
}

TEST(DefaultRealloc, UsesTheSizeOfTheBlock)
{
    TestAllocator allocator;
    GMM_Allocator* record = allocator.get();
    EXPECT_EQ(gmm_realloc_default(record, nullptr, 0), nullptr);
    auto* block = static_cast<char*>(gmm_realloc_default(record, nullptr, 8));
    ASSERT_NE(block, nullptr);
    std::memcpy(block, "12345678", 8);
    EXPECT_EQ(gmm_realloc_default(record, block, 4), block);
    EXPECT_EQ(gmm_realloc_default(record, block, 8), block);
    auto* larger = static_cast<char*>(gmm_realloc_default(record, block, 16));
    ASSERT_NE(larger, nullptr);
    EXPECT_EQ(std::memcmp(larger, "12345678", 8), 0);
    EXPECT_EQ(allocator.outstanding(), 1U);
    allocator.refuse(1);
    EXPECT_EQ(gmm_realloc_default(record, larger, 100), nullptr);
    EXPECT_EQ(allocator.outstanding(), 1U);
    EXPECT_EQ(gmm_realloc_default(record, larger, 0), nullptr);
    EXPECT_EQ(allocator.outstanding(), 0U);
}

TEST(Stubs, GiveWhatTheySay)
{
    EXPECT_EQ(gmm_stub_zero(nullptr), 0U);
    EXPECT_EQ(gmm_stub_zero_size(nullptr, nullptr), 0U);
    EXPECT_EQ(gmm_stub_one(nullptr), 1U);
    EXPECT_EQ(gmm_stub_one_block(nullptr, nullptr), 1U);
    EXPECT_EQ(gmm_stub_one_channel(nullptr, nullptr, 0), 1U);
    gmm_stub_nothing(nullptr, nullptr, 0);
}

}  // namespace
