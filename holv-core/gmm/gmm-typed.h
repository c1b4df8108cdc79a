// Blocks for records and for arrays of them, of the type asked for. Nothing is set in a new block. A size of more than
// 64 bits is refused like one that the allocator refuses: the result is null.

#pragma once

#include "holv-core/gmm/gmm-allocator.h"

#include <cstdint>
#include <type_traits>

// Room for `count` items; a count of 0 asks for a block of no bytes.
template <typename Item> Item* gmm_alloc_array(GMM_Allocator* allocator, uint64_t count, uint32_t channel = 0)
{
    static_assert(std::is_trivially_copyable_v<Item> && std::is_trivially_destructible_v<Item>);
    if (count > UINT64_MAX / sizeof(Item))
        return nullptr;
    return static_cast<Item*>(allocator->gmm_Alloc(allocator, count * sizeof(Item), channel));
}

template <typename Record> Record* gmm_alloc_record(GMM_Allocator* allocator, uint32_t channel = 0)
{
    return gmm_alloc_array<Record>(allocator, 1, channel);
}

// The same items in a block for `count` of them; null leaves the old block as it is.
template <typename Item> Item* gmm_realloc_array(GMM_Allocator* allocator, Item* items, uint64_t count)
{
    static_assert(std::is_trivially_copyable_v<Item> && std::is_trivially_destructible_v<Item>);
    if (count > UINT64_MAX / sizeof(Item))
        return nullptr;
    return static_cast<Item*>(allocator->gmm_Realloc(allocator, items, count * sizeof(Item)));
}
