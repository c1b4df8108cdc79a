/// \file
/// Allocators to bring along, over the C library's. All twenty operations are there.
///
/// The operations that give back by channel or altogether, and those that look into the heap, do nothing: a host that
/// frees what it doesn't know of by gmm_FreeAll brings an allocator of its own.

#ifndef ORVLOG_HOST_MEMORY_H
#define ORVLOG_HOST_MEMORY_H

#include "holv-core/gmm/gmm-allocator.h"

#include <stdint.h>
#include <stdlib.h>
#include <string.h>

#ifdef __cplusplus
extern "C" {
#endif

/// The counts of orvlog_counting_allocator.
typedef struct ORVLOG_HostMemory
{
    GMM_Allocator allocator;  ///< what a session takes; must stay where it is
    uint64_t blocks;          ///< handed out and not given back; 0 when all is
    uint64_t bytes;           ///< in these blocks
    uint64_t peak_bytes;      ///< the most there have been
} ORVLOG_HostMemory;

/// \cond inner

// What stands in front of each block: its size, in as many bytes as keep the block aligned for any record.
enum
{
    ORVLOG_HOST_BLOCK_HEAD = 16
};

static inline uint64_t* orvlog_host_head(void* block)
{
    return (uint64_t*)(void*)((uint8_t*)block - ORVLOG_HOST_BLOCK_HEAD);
}

// `delta` may be a number below 0 in two's complement.
static inline void orvlog_host_count(GMM_Allocator* allocator, uint64_t delta_blocks, uint64_t delta_bytes)
{
    ORVLOG_HostMemory* memory = (ORVLOG_HostMemory*)allocator->instance;
    if (memory == NULL)
        return;
    memory->blocks += delta_blocks;
    memory->bytes += delta_bytes;
    if (memory->bytes > memory->peak_bytes)
        memory->peak_bytes = memory->bytes;
}

static inline void* orvlog_host_alloc(GMM_Allocator* allocator, uint64_t size, uint32_t channel)
{
    (void)channel;
    if (size > SIZE_MAX - ORVLOG_HOST_BLOCK_HEAD)
        return NULL;
    uint8_t* head = (uint8_t*)malloc(ORVLOG_HOST_BLOCK_HEAD + (size_t)size);
    if (head == NULL)
        return NULL;
    memcpy(head, &size, sizeof size);
    orvlog_host_count(allocator, 1, size);
    return head + ORVLOG_HOST_BLOCK_HEAD;
}

static inline void* orvlog_host_calloc(GMM_Allocator* allocator, uint64_t size, uint32_t channel)
{
    void* block = orvlog_host_alloc(allocator, size, channel);
    if (block != NULL)
        memset(block, 0, (size_t)size);
    return block;
}

static inline void orvlog_host_free(GMM_Allocator* allocator, void* block)
{
    if (block == NULL)
        return;
    orvlog_host_count(allocator, (uint64_t)0 - 1, (uint64_t)0 - *orvlog_host_head(block));
    free(orvlog_host_head(block));
}

static inline void* orvlog_host_realloc(GMM_Allocator* allocator, void* block, uint64_t size)
{
    if (block == NULL)
        return orvlog_host_alloc(allocator, size, 0);
    if (size > SIZE_MAX - ORVLOG_HOST_BLOCK_HEAD)
        return NULL;
    const uint64_t before = *orvlog_host_head(block);
    uint8_t* head = (uint8_t*)realloc(orvlog_host_head(block), ORVLOG_HOST_BLOCK_HEAD + (size_t)size);
    if (head == NULL)
        return NULL;
    memcpy(head, &size, sizeof size);
    orvlog_host_count(allocator, 0, size - before);
    return head + ORVLOG_HOST_BLOCK_HEAD;
}

static inline GMM_Allocator* orvlog_host_delete(GMM_Allocator* allocator)
{
    (void)allocator;
    return NULL;
}

static inline uint32_t orvlog_host_on_minimise(GMM_Allocator* allocator, GMM_MinimiseFn callback, void* context)
{
    (void)allocator, (void)callback, (void)context;
    return 1;
}

static inline uint32_t orvlog_host_on_failure(GMM_Allocator* allocator, GMM_AllocFailFn callback, void* context)
{
    (void)allocator, (void)callback, (void)context;
    return 1;
}

static inline void orvlog_host_free_channel(GMM_Allocator* allocator, uint32_t channel)
{
    (void)allocator, (void)channel;
}

static inline void orvlog_host_nothing(GMM_Allocator* allocator)
{
    (void)allocator;
}

static inline uint64_t orvlog_host_block_size(GMM_Allocator* allocator, void* block)
{
    (void)allocator;
    return block != NULL ? *orvlog_host_head(block) : 0;
}

static inline void orvlog_host_truncate(GMM_Allocator* allocator, void* block, uint64_t size)
{
    (void)allocator, (void)block, (void)size;
}

static inline uint32_t orvlog_host_set_info(GMM_Allocator* allocator, void* ignored, uint64_t value, uint32_t word_a,
                                            uint32_t word_b)
{
    (void)allocator, (void)ignored, (void)value, (void)word_a;
    return word_b;
}

static inline uint64_t orvlog_host_used(GMM_Allocator* allocator)
{
    return allocator->instance != NULL ? ((ORVLOG_HostMemory*)allocator->instance)->bytes : 0;
}

static inline uint64_t orvlog_host_peak(GMM_Allocator* allocator)
{
    return allocator->instance != NULL ? ((ORVLOG_HostMemory*)allocator->instance)->peak_bytes : 0;
}

static inline uint32_t orvlog_host_is_block(GMM_Allocator* allocator, void* block)
{
    (void)allocator;
    return block != NULL ? 1U : 0U;
}

static inline uint32_t orvlog_host_is_in_channel(GMM_Allocator* allocator, void* block, uint32_t channel)
{
    (void)allocator;
    return block != NULL && channel == 0 ? 1U : 0U;
}

static inline uint32_t orvlog_host_is_whole(GMM_Allocator* allocator)
{
    (void)allocator;
    return 1;
}

static inline uint64_t orvlog_host_counts(GMM_Allocator* allocator, uint64_t* used, uint64_t* free_bytes)
{
    *used = orvlog_host_used(allocator);
    *free_bytes = 0;
    return 0;
}

static inline void orvlog_host_channel_counts(GMM_Allocator* allocator, uint32_t channel, uint64_t* counts)
{
    *counts = channel == 0 ? orvlog_host_used(allocator) : 0;
}

/// \endcond

/// An allocator over malloc for any number of sessions in any number of threads: it counts nothing, so it has nothing
/// to guard. It is there as long as the program, and so for every kept image.
/// \return the one allocator; nothing is to be given back
static inline GMM_Allocator* orvlog_malloc_allocator(void)
{
    static GMM_Allocator allocator = {NULL,
                                      orvlog_host_delete,
                                      orvlog_host_on_minimise,
                                      orvlog_host_on_failure,
                                      orvlog_host_alloc,
                                      orvlog_host_free,
                                      orvlog_host_free_channel,
                                      orvlog_host_nothing,
                                      orvlog_host_calloc,
                                      orvlog_host_realloc,
                                      orvlog_host_block_size,
                                      orvlog_host_truncate,
                                      orvlog_host_set_info,
                                      orvlog_host_used,
                                      orvlog_host_nothing,
                                      orvlog_host_peak,
                                      orvlog_host_is_block,
                                      orvlog_host_is_in_channel,
                                      orvlog_host_is_whole,
                                      orvlog_host_counts,
                                      orvlog_host_channel_counts,
                                      &allocator};
    return &allocator;
}

/// An allocator over malloc that counts, for one thread at a time. The record must stay where it is until the session
/// has ended and its last kept image is released.
/// \param memory  the client's; filled, and counted in from then on
/// \return what a session takes, a part of the record
static inline GMM_Allocator* orvlog_counting_allocator(ORVLOG_HostMemory* memory)
{
    memset(memory, 0, sizeof *memory);
    memory->allocator = *orvlog_malloc_allocator();
    memory->allocator.instance = memory;
    memory->allocator.self = &memory->allocator;
    return &memory->allocator;
}

#ifdef __cplusplus
}
#endif

#endif
