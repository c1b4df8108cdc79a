// An allocator that counts, can refuse the Nth request, and says at its end what was not given back.

#pragma once

#include "holv-core/gmm/gmm-allocator.h"

#include <cstdint>
#include <map>

namespace orvlog::test
{

class TestAllocator
{
public:
    TestAllocator();
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

private:
    static TestAllocator* of(GMM_Allocator* allocator);
    void* allocate(uint64_t size);
    void release(void* block);
    void* resize(void* block, uint64_t size);

    GMM_Allocator record_;
    std::map<void*, uint64_t> blocks_;
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
};

}  // namespace orvlog::test
