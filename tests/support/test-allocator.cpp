#include "tests/support/test-allocator.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>

namespace orvlog::test
{

namespace
{

// What any record needs; the bytes between a block's end and the page behind it.
constexpr size_t kAlignment = alignof(void*);
constexpr uint8_t kBehind = 0xFD;
// So long the addresses of a block that was given back aren't used again.
constexpr size_t kClosedBlocks = 128;

size_t aligned(uint64_t size)
{
    return (size + kAlignment - 1) / kAlignment * kAlignment;
}

}  // namespace

TestAllocator* TestAllocator::of(GMM_Allocator* allocator)
{
    return static_cast<TestAllocator*>(allocator->instance);
}

void* TestAllocator::allocate(uint64_t size)
{
    ++requests_;
    largest_ = std::max(largest_, size);
    const bool refuse = refuse_at_ != 0 && (refuse_after_ ? requests_ >= refuse_at_ : requests_ == refuse_at_);
    void* block = refuse || size > limit_ ? nullptr : take(size);
    if (block == nullptr)
    {
        ++refused_;
        return nullptr;
    }
    // Memory as an allocator hands it out: not zero.
    std::memset(block, 0xCD, size);
    bytes_ += size;
    peak_ = std::max(peak_, bytes_);
    return block;
}

void* TestAllocator::take(uint64_t size)
{
    if (!guard_pages_)
    {
        void* block = std::malloc(size != 0 ? size : 1);
        if (block != nullptr)
            blocks_[block] = {size, nullptr};
        return block;
    }
    auto guarded = std::make_unique<GuardedBlock>(std::max(aligned(size), kAlignment));
    uint8_t* block = guarded->data();
    std::memset(block + size, kBehind, guarded->size() - size);
    blocks_[block] = {size, std::move(guarded)};
    return block;
}

void TestAllocator::give_back(void* block, Block& held)
{
    if (held.guarded == nullptr)
    {
        std::free(block);
        return;
    }
    const uint8_t* start = held.guarded->data();
    const bool sound =
        std::all_of(start + held.size, start + held.guarded->size(), [](uint8_t byte) { return byte == kBehind; });
    overwritten_ += sound ? 0 : 1;
    held.guarded->close();
    given_back_.push_back(std::move(held.guarded));
    if (given_back_.size() > kClosedBlocks)
        given_back_.pop_front();
}

void TestAllocator::release(void* block)
{
    const auto found = blocks_.find(block);
    if (found == blocks_.end())
    {
        ++bad_frees_;
        return;
    }
    bytes_ -= found->second.size;
    give_back(block, found->second);
    blocks_.erase(found);
}

void* TestAllocator::resize(void* block, uint64_t size)
{
    void* moved = allocate(size);
    if (moved == nullptr || block == nullptr)
        return moved;
    std::memcpy(moved, block, std::min(size, blocks_[block].size));
    release(block);
    return moved;
}

TestAllocator::TestAllocator() : TestAllocator(std::getenv("ORVLOG_TEST_GUARD_PAGES") != nullptr) {}

TestAllocator::TestAllocator(bool guard_pages) : record_{}, guard_pages_(guard_pages)
{
    record_.instance = this;
    record_.self = &record_;
    record_.gmm_Delete = [](GMM_Allocator*) -> GMM_Allocator* { return nullptr; };
    record_.gmm_RegisterMinimise = [](GMM_Allocator*, GMM_MinimiseFn, void*) -> uint32_t { return 1; };
    record_.gmm_RegisterAllocFail = [](GMM_Allocator*, GMM_AllocFailFn, void*) -> uint32_t { return 1; };
    record_.gmm_Alloc = [](GMM_Allocator* a, uint64_t size, uint32_t channel)
    {
        of(a)->other_channels_ += channel != 0 ? 1 : 0;
        return of(a)->allocate(size);
    };
    record_.gmm_Free = [](GMM_Allocator* a, void* block) { of(a)->release(block); };
    record_.gmm_FreeChannel = [](GMM_Allocator*, uint32_t) {};
    record_.gmm_FreeAll = [](GMM_Allocator*) {};
    record_.gmm_Calloc = [](GMM_Allocator* a, uint64_t size, uint32_t channel)
    {
        of(a)->other_channels_ += channel != 0 ? 1 : 0;
        void* block = of(a)->allocate(size);
        if (block != nullptr)
            std::memset(block, 0, size);
        return block;
    };
    record_.gmm_Realloc = [](GMM_Allocator* a, void* block, uint64_t size) { return of(a)->resize(block, size); };
    record_.gmm_AllocSize = [](GMM_Allocator* a, void* block) { return of(a)->blocks_[block].size; };
    record_.gmm_Truncate = [](GMM_Allocator*, void*, uint64_t) {};
    record_.gmm_SetInfo = [](GMM_Allocator*, void*, uint64_t, uint32_t, uint32_t word) { return word; };
    record_.gmm_UsedBytes = [](GMM_Allocator* a) { return of(a)->bytes_; };
    record_.gmm_NoOp14 = [](GMM_Allocator*) {};
    record_.gmm_PeakAllocCnt = [](GMM_Allocator* a) { return of(a)->peak_; };
    record_.gmm_IsPtrValid = [](GMM_Allocator*, void*) -> uint32_t { return 1; };
    record_.gmm_IsPtrInChan = [](GMM_Allocator*, void*, uint32_t) -> uint32_t { return 1; };
    record_.gmm_IntegrityCheck = [](GMM_Allocator*) -> uint32_t { return 1; };
    record_.gmm_CurAllocCnt = [](GMM_Allocator* a, uint64_t* used, uint64_t* free_bytes) -> uint64_t
    {
        *used = of(a)->bytes_;
        *free_bytes = 0;
        return 0;
    };
    record_.gmm_CurChanAllocCnt = [](GMM_Allocator*, uint32_t, uint64_t*) {};
}

TestAllocator::~TestAllocator()
{
    EXPECT_EQ(other_channels_, 0U) << "requests for another channel than 0";
    for (auto& [block, held] : blocks_)
        give_back(block, held);
    EXPECT_EQ(overwritten_, 0U) << "bytes written behind a block";
}

}  // namespace orvlog::test
