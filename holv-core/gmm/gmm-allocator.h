/// \file
/// GMM_Allocator: the one door to memory.
///
/// An allocator is a record of 22 words: the implementation's own word, twenty operations, and a
/// pointer to the record itself. Every implementation begins with these words and may carry more
/// behind them. Each operation takes the record as its first argument. Sizes are bytes, 64 bits wide.
/// A channel is a 32-bit tag of an allocation; this system passes channel 0.

#ifndef HOLV_CORE_GMM_ALLOCATOR_H
#define HOLV_CORE_GMM_ALLOCATOR_H

#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/// An allocator. `allocator` is the record itself in every operation.
typedef struct GMM_Allocator GMM_Allocator;

/// Asked to give memory back when an allocator is exhausted; `wanted` points at the size that could
/// not be had. Non-zero means that something was released and the allocation is worth another try.
typedef uint32_t (*GMM_MinimiseFn)(void* context, GMM_Allocator* allocator, uint64_t* wanted);

/// Told that an allocation has failed for good.
typedef void (*GMM_AllocFailFn)(void* context, GMM_Allocator* allocator);

/// An allocator. `allocator` is the record itself in every operation.
struct GMM_Allocator
{
    /// The implementation's own word. Nothing outside the implementation reads it.
    void* instance;

    /// Deletes the allocator with all it has handed out; gives the parent allocator, or null.
    GMM_Allocator* (*gmm_Delete)(GMM_Allocator* allocator);
    /// Both give 1.
    uint32_t (*gmm_RegisterMinimise)(GMM_Allocator* allocator, GMM_MinimiseFn callback, void* context);
    /// `callback` is told of refusals; gives 1
    uint32_t (*gmm_RegisterAllocFail)(GMM_Allocator* allocator, GMM_AllocFailFn callback, void* context);
    /// A block of `size` bytes, or null.
    void* (*gmm_Alloc)(GMM_Allocator* allocator, uint64_t size, uint32_t channel);
    /// Takes a non-null block back.
    void (*gmm_Free)(GMM_Allocator* allocator, void* block);
    /// Takes back all blocks of a channel.
    void (*gmm_FreeChannel)(GMM_Allocator* allocator, uint32_t channel);
    /// Takes back all blocks.
    void (*gmm_FreeAll)(GMM_Allocator* allocator);
    /// As gmm_Alloc, filled with zeros.
    void* (*gmm_Calloc)(GMM_Allocator* allocator, uint64_t size, uint32_t channel);
    /// A block of `size` bytes with the old content, or null, and then the old block stands.
    void* (*gmm_Realloc)(GMM_Allocator* allocator, void* block, uint64_t size);
    /// Bytes of a block as it was asked for.
    uint64_t (*gmm_AllocSize)(GMM_Allocator* allocator, void* block);
    /// Makes a block smaller in place.
    void (*gmm_Truncate)(GMM_Allocator* allocator, void* block, uint64_t size);
    /// Gives its last argument.
    uint32_t (*gmm_SetInfo)(GMM_Allocator* allocator, void* ignored, uint64_t value, uint32_t word_a, uint32_t word_b);
    /// Bytes handed out at present.
    uint64_t (*gmm_UsedBytes)(GMM_Allocator* allocator);
    /// Does nothing.
    void (*gmm_NoOp14)(GMM_Allocator* allocator);
    /// Most bytes that were handed out at once.
    uint64_t (*gmm_PeakAllocCnt)(GMM_Allocator* allocator);
    /// Non-zero if the block is one that is handed out.
    uint32_t (*gmm_IsPtrValid)(GMM_Allocator* allocator, void* block);
    /// Non-zero if the block is one of that channel.
    uint32_t (*gmm_IsPtrInChan)(GMM_Allocator* allocator, void* block, uint32_t channel);
    /// Non-zero if the allocator's own records hold together.
    uint32_t (*gmm_IntegrityCheck)(GMM_Allocator* allocator);
    /// Stores the bytes in use and the bytes free, and gives the latter.
    uint64_t (*gmm_CurAllocCnt)(GMM_Allocator* allocator, uint64_t* used, uint64_t* free_bytes);
    /// As gmm_CurAllocCnt, of one channel; stores its bytes in use and its blocks.
    void (*gmm_CurChanAllocCnt)(GMM_Allocator* allocator, uint32_t channel, uint64_t* counts);

    /// The record itself.
    GMM_Allocator* self;
};

#ifdef __cplusplus
}
#endif

#endif
