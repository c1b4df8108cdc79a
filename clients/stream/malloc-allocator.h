// An allocator to bring along, over the C library's.

#pragma once

#include "holv-core/gmm/gmm-allocator.h"

#include <cstdint>

namespace orvlog::client_stream
{

// An allocator over malloc and free, for one thread at a time.
class MallocAllocator
{
public:
    MallocAllocator();
    MallocAllocator(const MallocAllocator&) = delete;
    MallocAllocator& operator=(const MallocAllocator&) = delete;

    GMM_Allocator* allocator();
    uint64_t bytes_in_use() const;
    uint64_t peak_bytes() const;

    struct Operations;

private:
    GMM_Allocator record_{};
    uint64_t bytes_ = 0;
    uint64_t peak_ = 0;
};

}  // namespace orvlog::client_stream
