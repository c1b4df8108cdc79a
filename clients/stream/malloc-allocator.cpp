#include "clients/stream/malloc-allocator.h"

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <cstring>

namespace orvlog::client_stream
{

namespace
{

// In front of each block, so that its size is known.
struct alignas(std::max_align_t) Header
{
    uint64_t size;
};

Header* header_of(void* block)
{
    return static_cast<Header*>(block) - 1;
}

}  // namespace

struct MallocAllocator::Operations
{
    static MallocAllocator* self(GMM_Allocator* allocator)
    {
        return static_cast<MallocAllocator*>(allocator->instance);
    }

    static void* allocate(GMM_Allocator* allocator, uint64_t size, uint32_t)
    {
        if (size > SIZE_MAX - sizeof(Header))
            return nullptr;
        Header* header = static_cast<Header*>(std::malloc(sizeof(Header) + size));
        if (header == nullptr)
            return nullptr;
        header->size = size;
        MallocAllocator* owner = self(allocator);
        owner->bytes_ += size;
        owner->peak_ = std::max(owner->peak_, owner->bytes_);
        return header + 1;
    }

    static void* allocate_zeros(GMM_Allocator* allocator, uint64_t size, uint32_t channel)
    {
        void* block = allocate(allocator, size, channel);
        if (block != nullptr)
            std::memset(block, 0, size);
        return block;
    }

    static void release(GMM_Allocator* allocator, void* block)
    {
        if (block != nullptr)
        {
            self(allocator)->bytes_ -= header_of(block)->size;
            std::free(header_of(block));
        }
    }

    static void* resize(GMM_Allocator* allocator, void* block, uint64_t size)
    {
        void* moved = allocate(allocator, size, 0);
        if (moved != nullptr && block != nullptr)
        {
            std::memcpy(moved, block, std::min(size, header_of(block)->size));
            release(allocator, block);
        }
        return moved;
    }
};

MallocAllocator::MallocAllocator()
{
    record_.instance = this;
    record_.self = &record_;
    record_.gmm_Delete = [](GMM_Allocator*) -> GMM_Allocator* { return nullptr; };
    record_.gmm_RegisterMinimise = [](GMM_Allocator*, GMM_MinimiseFn, void*) -> uint32_t { return 1; };
    record_.gmm_RegisterAllocFail = [](GMM_Allocator*, GMM_AllocFailFn, void*) -> uint32_t { return 1; };
    record_.gmm_Alloc = Operations::allocate;
    record_.gmm_Free = Operations::release;
    record_.gmm_FreeChannel = [](GMM_Allocator*, uint32_t) {};
    record_.gmm_FreeAll = [](GMM_Allocator*) {};
    record_.gmm_Calloc = Operations::allocate_zeros;
    record_.gmm_Realloc = Operations::resize;
    record_.gmm_AllocSize = [](GMM_Allocator*, void* block) { return header_of(block)->size; };
    record_.gmm_Truncate = [](GMM_Allocator*, void*, uint64_t) {};
    record_.gmm_SetInfo = [](GMM_Allocator*, void*, uint64_t, uint32_t, uint32_t word) { return word; };
    record_.gmm_UsedBytes = [](GMM_Allocator* a) { return Operations::self(a)->bytes_; };
    record_.gmm_NoOp14 = [](GMM_Allocator*) {};
    record_.gmm_PeakAllocCnt = [](GMM_Allocator* a) { return Operations::self(a)->peak_; };
    record_.gmm_IsPtrValid = [](GMM_Allocator*, void* block) -> uint32_t { return block != nullptr ? 1 : 0; };
    record_.gmm_IsPtrInChan = [](GMM_Allocator*, void*, uint32_t channel) -> uint32_t { return channel == 0 ? 1 : 0; };
    record_.gmm_IntegrityCheck = [](GMM_Allocator*) -> uint32_t { return 1; };
    record_.gmm_CurAllocCnt = [](GMM_Allocator* a, uint64_t* used, uint64_t* free_bytes) -> uint64_t
    {
        *used = Operations::self(a)->bytes_;
        *free_bytes = 0;
        return 0;
    };
    record_.gmm_CurChanAllocCnt = [](GMM_Allocator* a, uint32_t, uint64_t* counts)
    { *counts = Operations::self(a)->bytes_; };
}

GMM_Allocator* MallocAllocator::allocator()
{
    return &record_;
}

uint64_t MallocAllocator::bytes_in_use() const
{
    return bytes_;
}

uint64_t MallocAllocator::peak_bytes() const
{
    return peak_;
}

}  // namespace orvlog::client_stream
