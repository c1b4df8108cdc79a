#include "tests/support/test-allocator.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>

namespace orvlog::test
{

TestAllocator* TestAllocator::of(GMM_Allocator* allocator)
{
    return static_cast<TestAllocator*>(allocator->instance);
}

void* TestAllocator::allocate(uint64_t size)
{
    ++requests_;
    largest_ = std::max(largest_, size);
    const bool refuse = refuse_at_ != 0 && (refuse_after_ ? requests_ >= refuse_at_ : requests_ == refuse_at_);
    void* block = refuse || size > limit_ ? nullptr : std::malloc(size != 0 ? size : 1);
    if (block == nullptr)
    {
        ++refused_;
        return nullptr;
    }
    // Memory as an allocator hands it out: not zero.
    std::memset(block, 0xCD, size);
    blocks_[block] = size;
    bytes_ += size;
    peak_ = std::max(peak_, bytes_);
    return block;
}

void TestAllocator::release(void* block)
{
    const auto found = blocks_.find(block);
    if (found == blocks_.end())
    {
        ++bad_frees_;
        return;
    }
    bytes_ -= found->second;
    blocks_.erase(found);
    std::free(block);
}

void* TestAllocator::resize(void* block, uint64_t size)
{
    void* moved = allocate(size);
    if (moved == nullptr || block == nullptr)
        return moved;
    std::memcpy(moved, block, std::min(size, blocks_[block]));
    release(block);
    return moved;
}

TestAllocator::TestAllocator() : record_{}
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
    record_.gmm_AllocSize = [](GMM_Allocator* a, void* block) { return of(a)->blocks_[block]; };
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
    for (const auto& [block, size] : blocks_)
        std::free(block);
}

}  // namespace orvlog::test
