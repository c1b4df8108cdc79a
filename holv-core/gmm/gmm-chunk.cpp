#include "holv-core/gmm/gmm-chunk.h"

#include "holv-core/gmm/gmm-typed.h"

#include <cstddef>
#include <cstring>

static_assert(sizeof(GMM_Chunk) == 24);
static_assert(offsetof(GMM_ChunkAllocator, info_value) == 176);
static_assert(offsetof(GMM_ChunkAllocator, info_word_a) == 184);
static_assert(offsetof(GMM_ChunkAllocator, info_word_b) == 188);
static_assert(offsetof(GMM_ChunkAllocator, parent) == 192);
static_assert(offsetof(GMM_ChunkAllocator, channel) == 200);
static_assert(offsetof(GMM_ChunkAllocator, used_bytes) == 208);
static_assert(offsetof(GMM_ChunkAllocator, total_bytes) == 216);
static_assert(offsetof(GMM_ChunkAllocator, chunk_size) == 224);
static_assert(offsetof(GMM_ChunkAllocator, cursor) == 232);
static_assert(offsetof(GMM_ChunkAllocator, remaining) == 240);
static_assert(offsetof(GMM_ChunkAllocator, head) == 248);
static_assert(offsetof(GMM_ChunkAllocator, tail) == 264);
static_assert(offsetof(GMM_ChunkAllocator, minimise_callback) == 280);
static_assert(offsetof(GMM_ChunkAllocator, minimise_context) == 288);
static_assert(offsetof(GMM_ChunkAllocator, alloc_fail_callback) == 296);
static_assert(offsetof(GMM_ChunkAllocator, alloc_fail_context) == 304);
static_assert(sizeof(GMM_ChunkAllocator) == 312);
static_assert(offsetof(GMM_Chunk, size) == 16);
static_assert(sizeof(GMM_Chunk) == 24);

namespace
{

GMM_ChunkAllocator* of(GMM_Allocator* allocator)
{
    return reinterpret_cast<GMM_ChunkAllocator*>(allocator);
}

GMM_Chunk* as_chunk(GMM_ChunkSentinel* sentinel)
{
    return reinterpret_cast<GMM_Chunk*>(sentinel);
}

void make_empty(GMM_ChunkAllocator* record)
{
    record->head = {nullptr, as_chunk(&record->tail)};
    record->tail = {as_chunk(&record->head), nullptr};
}

bool is_too_large(uint64_t size)
{
    return size > UINT64_MAX - sizeof(GMM_Chunk);
}

// 0 where the size would pass the highest value.
uint64_t size_of_new_chunk(const GMM_ChunkAllocator* record, uint64_t size)
{
    const uint64_t needed = size + sizeof(GMM_Chunk);
    const uint64_t unit = record->chunk_size;
    if (needed <= unit)
        return unit;
    const uint64_t beyond = unit != 0 ? needed % unit : 0;
    if (beyond == 0)
        return needed;
    return needed > UINT64_MAX - (unit - beyond) ? 0 : needed + (unit - beyond);
}

void link_chunk(GMM_ChunkAllocator* record, void* block, uint64_t size)
{
    // A parent may hand out blocks at any address, and so are the chunk's links kept.
    GMM_Chunk head = {as_chunk(&record->head), record->head.next, size};
    std::memcpy(block, &head, sizeof head);
    auto* chunk = static_cast<GMM_Chunk*>(block);
    std::memcpy(&head.next->prev, &chunk, sizeof(void*));
    record->head.next = chunk;
    record->total_bytes += size;
    record->remaining = size - sizeof(GMM_Chunk);
    record->cursor = static_cast<uint8_t*>(block) + sizeof(GMM_Chunk);
}

GMM_Chunk read_chunk(const GMM_Chunk* chunk)
{
    GMM_Chunk head;
    std::memcpy(&head, chunk, sizeof head);
    return head;
}

bool grow(GMM_ChunkAllocator* record, uint64_t size)
{
    const uint64_t chunk_size = size_of_new_chunk(record, size);
    if (chunk_size == 0)
        return false;
    void* block = record->parent->gmm_Alloc(record->parent, chunk_size, record->channel);
    if (block == nullptr)
        return false;
    link_chunk(record, block, chunk_size);
    return true;
}

// Asks for memory to be given back, and tries once more with both callbacks out of the way.
void* retry(GMM_Allocator* allocator, uint64_t size, uint32_t channel)
{
    GMM_ChunkAllocator* record = of(allocator);
    const GMM_MinimiseFn minimise = record->minimise_callback;
    uint64_t wanted = size;
    if (minimise == nullptr || minimise(record->minimise_context, allocator, &wanted) == 0)
        return nullptr;
    const GMM_AllocFailFn alloc_fail = record->alloc_fail_callback;
    record->minimise_callback = nullptr;
    record->alloc_fail_callback = nullptr;
    void* block = allocator->gmm_Alloc(allocator, size, channel);
    record->minimise_callback = minimise;
    record->alloc_fail_callback = alloc_fail;
    return block;
}

void* chunk_alloc(GMM_Allocator* allocator, uint64_t size, uint32_t channel)
{
    GMM_ChunkAllocator* record = of(allocator);
    if (is_too_large(size))
        return nullptr;
    if (record->remaining < size)
    {
        if (record->parent == nullptr || !grow(record, size))
        {
            void* block = record->parent != nullptr ? retry(allocator, size, channel) : nullptr;
            if (block == nullptr && record->alloc_fail_callback != nullptr)
                record->alloc_fail_callback(record->alloc_fail_context, allocator);
            return block;
        }
    }
    uint8_t* block = record->cursor;
    if (size != 0)
        record->cursor += size;
    record->remaining -= size;
    record->used_bytes += size;
    return block;
}

void* chunk_calloc(GMM_Allocator* allocator, uint64_t size, uint32_t channel)
{
    void* block = allocator->gmm_Alloc(allocator, size, channel);
    if (block != nullptr)
        std::memset(block, 0, size);
    return block;
}

// How many bytes may be copied from a block: blocks have no size, so it is up to the end of their chunk. A block of
// no bytes can lie right behind its chunk.
uint64_t bytes_to_end_of_chunk(const GMM_ChunkAllocator* record, const void* block)
{
    const auto at = reinterpret_cast<uintptr_t>(block);
    const auto* tail = reinterpret_cast<const GMM_Chunk*>(&record->tail);
    uint64_t outside = UINT64_MAX;
    for (const GMM_Chunk* chunk = record->head.next; chunk != tail;)
    {
        const GMM_Chunk head = read_chunk(chunk);
        const auto start = reinterpret_cast<uintptr_t>(chunk);
        if (at >= start && at - start < head.size)
            return head.size - (at - start);
        if (at - start == head.size)
            outside = 0;
        chunk = head.next;
    }
    return outside;
}

void* chunk_realloc(GMM_Allocator* allocator, void* block, uint64_t size)
{
    if (size == 0 || is_too_large(size))
        return nullptr;
    uint64_t length = bytes_to_end_of_chunk(of(allocator), block);
    void* moved = allocator->gmm_Alloc(allocator, size, 0);
    if (moved == nullptr || block == nullptr)
        return moved;
    length = length < size ? length : size;
    const auto from = reinterpret_cast<uintptr_t>(block);
    const auto to = reinterpret_cast<uintptr_t>(moved);
    if (to > from && to - from < length)
        length = to - from;
    std::memmove(moved, block, length);
    return moved;
}

GMM_Allocator* chunk_delete(GMM_Allocator* allocator)
{
    GMM_ChunkAllocator* record = of(allocator);
    GMM_Allocator* parent = record->parent;
    if (parent == nullptr)
        return nullptr;
    auto* tail = as_chunk(&record->tail);
    for (GMM_Chunk* chunk = record->head.next; chunk != tail;)
    {
        GMM_Chunk* next = read_chunk(chunk).next;
        parent->gmm_Free(parent, chunk);
        chunk = next;
    }
    parent->gmm_Free(parent, record);
    return parent;
}

uint32_t chunk_register_minimise(GMM_Allocator* allocator, GMM_MinimiseFn callback, void* context)
{
    of(allocator)->minimise_callback = callback;
    of(allocator)->minimise_context = context;
    return 1;
}

uint32_t chunk_register_alloc_fail(GMM_Allocator* allocator, GMM_AllocFailFn callback, void* context)
{
    of(allocator)->alloc_fail_callback = callback;
    of(allocator)->alloc_fail_context = context;
    return 1;
}

uint32_t chunk_set_info(GMM_Allocator* allocator, void*, uint64_t value, uint32_t word_a, uint32_t word_b)
{
    of(allocator)->info_value = value;
    of(allocator)->info_word_a = word_a;
    of(allocator)->info_word_b = word_b;
    return word_b;
}

uint64_t chunk_used_bytes(GMM_Allocator* allocator)
{
    return of(allocator)->used_bytes;
}

uint64_t chunk_current_count(GMM_Allocator* allocator, uint64_t* used, uint64_t* free_bytes)
{
    const uint64_t left = of(allocator)->total_bytes - of(allocator)->used_bytes;
    if (used != nullptr)
        *used = of(allocator)->used_bytes;
    if (free_bytes != nullptr)
        *free_bytes = left;
    return left;
}

}  // namespace

GMM_Allocator* gmm_chunk_allocator_create(const GMM_ChunkParams* params)
{
    if (params == nullptr || params->parent == nullptr)
        return nullptr;
    GMM_Allocator* parent = params->parent;
    auto* record = gmm_alloc_record<GMM_ChunkAllocator>(parent, params->channel);
    if (record == nullptr)
        return nullptr;
    std::memset(record, 0, sizeof *record);
    record->parent = parent;
    record->chunk_size = params->chunk_size;
    record->channel = params->channel;
    make_empty(record);
    gmm_fill_operations(record, nullptr);
    return &record->base;
}

GMM_Allocator* gmm_chunk_allocator_in_block(const GMM_ChunkBlockParams* params)
{
    if (params == nullptr || params->block == nullptr || params->size < sizeof(GMM_ChunkAllocator) + sizeof(GMM_Chunk))
        return nullptr;
    auto* record = static_cast<GMM_ChunkAllocator*>(params->block);
    std::memset(record, 0, sizeof *record);
    make_empty(record);
    gmm_fill_operations(record, nullptr);
    link_chunk(record, record + 1, params->size - sizeof(GMM_ChunkAllocator));
    return &record->base;
}

void gmm_fill_operations(GMM_ChunkAllocator* record, void* instance)
{
    if (record == nullptr)
        return;
    GMM_Allocator* base = &record->base;
    base->instance = instance;
    base->gmm_Delete = chunk_delete;
    base->gmm_RegisterMinimise = chunk_register_minimise;
    base->gmm_RegisterAllocFail = chunk_register_alloc_fail;
    base->gmm_Alloc = chunk_alloc;
    base->gmm_Free = [](GMM_Allocator*, void*) {};
    base->gmm_FreeChannel = [](GMM_Allocator*, uint32_t) {};
    base->gmm_FreeAll = [](GMM_Allocator*) {};
    base->gmm_Calloc = chunk_calloc;
    base->gmm_Realloc = chunk_realloc;
    base->gmm_AllocSize = gmm_stub_zero_size;
    base->gmm_Truncate = gmm_stub_nothing;
    base->gmm_SetInfo = chunk_set_info;
    base->gmm_UsedBytes = chunk_used_bytes;
    base->gmm_NoOp14 = [](GMM_Allocator*) {};
    // Nothing is ever given back, so the peak is the present count.
    base->gmm_PeakAllocCnt = chunk_used_bytes;
    base->gmm_IsPtrValid = gmm_stub_one_block;
    base->gmm_IsPtrInChan = gmm_stub_one_channel;
    base->gmm_IntegrityCheck = gmm_stub_one;
    base->gmm_CurAllocCnt = chunk_current_count;
    base->gmm_CurChanAllocCnt = [](GMM_Allocator*, uint32_t, uint64_t*) {};
    base->self = base;
    record->info_value = 0;
}

void* gmm_realloc_default(GMM_Allocator* allocator, void* block, uint64_t size)
{
    if (size == 0)
    {
        if (block != nullptr)
            allocator->gmm_Free(allocator, block);
        return nullptr;
    }
    const uint64_t old_size = block != nullptr ? allocator->gmm_AllocSize(allocator, block) : 0;
    if (old_size >= size)
    {
        if (old_size > size)
            allocator->gmm_Truncate(allocator, block, size);
        return block;
    }
    void* moved = allocator->gmm_Alloc(allocator, size, 0);
    if (moved == nullptr || block == nullptr)
        return moved;
    std::memcpy(moved, block, old_size);
    allocator->gmm_Free(allocator, block);
    return moved;
}

uint32_t gmm_stub_zero(GMM_Allocator*)
{
    return 0;
}

uint64_t gmm_stub_zero_size(GMM_Allocator*, void*)
{
    return 0;
}

uint32_t gmm_stub_one(GMM_Allocator*)
{
    return 1;
}

uint32_t gmm_stub_one_block(GMM_Allocator*, void*)
{
    return 1;
}

uint32_t gmm_stub_one_channel(GMM_Allocator*, void*, uint32_t)
{
    return 1;
}

void gmm_stub_nothing(GMM_Allocator*, void*, uint64_t) {}
