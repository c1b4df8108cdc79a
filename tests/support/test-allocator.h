// An allocator that counts, can refuse the Nth request, and says at its end what was not given back. With guard
// pages, which ORVLOG_TEST_GUARD_PAGES in the environment asks for, a byte read or written behind a block, or in one
// that was given back a short while ago, is a fault at once: for systems without a sanitizer that watches memory.

#pragma once

#include "holv-core/gmm/gmm-allocator.h"
#include "tests/support/guarded-block.h"

#include <cstdint>
#include <deque>
#include <map>
#include <memory>

namespace orvlog::test
{

class TestAllocator
{
public:
    TestAllocator();
    explicit TestAllocator(bool guard_pages);
    TestAllocator(const TestAllocator&) = delete;
    TestAllocator& operator=(const TestAllocator&) = delete;
    // Frees what is left, so that a test that looked at `outstanding` leaks nothing itself.
    ~TestAllocator();

    GMM_Allocator* get()
    {
        return &record_;
    }

    // Refuses request number n (the first is 1) and all others if `and_after`; 0 refuses none.
    void refuse(uint64_t n, bool and_after = false)
    {
        refuse_at_ = requests_ + n;
        refuse_after_ = and_after;
        if (n == 0)
            refuse_at_ = 0;
    }
    // Refuses any request above this size.
    void limit(uint64_t size)
    {
        limit_ = size;
    }

    uint64_t requests() const
    {
        return requests_;
    }
    uint64_t refused() const
    {
        return refused_;
    }
    uint64_t outstanding() const
    {
        return blocks_.size();
    }
    uint64_t bytes() const
    {
        return bytes_;
    }
    uint64_t peak_bytes() const
    {
        return peak_;
    }
    uint64_t largest_request() const
    {
        return largest_;
    }
    // Requests for another channel than 0.
    uint64_t other_channels() const
    {
        return other_channels_;
    }
    // Frees of blocks that this allocator does not hold.
    uint64_t bad_frees() const
    {
        return bad_frees_;
    }
    // Blocks, with guard pages alone, that somebody wrote behind: less than a record's alignment is before the page.
    uint64_t overwritten() const
    {
        return overwritten_;
    }
    // For who wrote there on purpose: at its end the allocator fails a test for it.
    void forget_overwritten()
    {
        overwritten_ = 0;
    }

private:
    struct Block
    {
        uint64_t size = 0;
        std::unique_ptr<GuardedBlock> guarded;  // null without guard pages: the memory is malloc's
    };

    static TestAllocator* of(GMM_Allocator* allocator);
    void* allocate(uint64_t size);
    void* take(uint64_t size);
    void release(void* block);
    void give_back(void* block, Block& held);
    void* resize(void* block, uint64_t size);

    GMM_Allocator record_;
    const bool guard_pages_;
    std::map<void*, Block> blocks_;
    std::deque<std::unique_ptr<GuardedBlock>> given_back_;  // the last ones, closed
    uint64_t requests_ = 0;
    uint64_t refused_ = 0;
    uint64_t refuse_at_ = 0;
    bool refuse_after_ = false;
    uint64_t limit_ = UINT64_MAX;
    uint64_t bytes_ = 0;
    uint64_t peak_ = 0;
    uint64_t largest_ = 0;
    uint64_t other_channels_ = 0;
    uint64_t bad_frees_ = 0;
    uint64_t overwritten_ = 0;
};

}  // namespace orvlog::test
