// The chunk allocator: a pool that takes large chunks from a parent and hands out pieces of them. It frees
// nothing until it is deleted as a whole. It has no lock.
//
// Blocks have no header and no alignment: one starts exactly where the last one ended. Who takes records from it
// asks for what is needed to be aligned.

#ifndef HOLV_CORE_GMM_CHUNK_H
#define HOLV_CORE_GMM_CHUNK_H

#include "holv-core/gmm/gmm-allocator.h"

#ifdef __cplusplus
extern "C" {
#endif

typedef struct GMM_Chunk GMM_Chunk;

// The head of a chunk; a sentinel of the list is its first two words.
struct GMM_Chunk
{
    GMM_Chunk* prev;
    GMM_Chunk* next;
    uint64_t size;  // of the whole chunk, this head included
};

typedef struct GMM_ChunkSentinel
{
    GMM_Chunk* prev;
    GMM_Chunk* next;
} GMM_ChunkSentinel;

typedef struct GMM_ChunkAllocator
{
    GMM_Allocator base;
    uint64_t info_value;
    uint32_t info_word_a;
    uint32_t info_word_b;
    GMM_Allocator* parent;  // where chunks come from, or null
    uint32_t channel;       // passed to the parent
    uint64_t used_bytes;    // all sizes handed out
    uint64_t total_bytes;   // sizes of all chunks
    uint64_t chunk_size;    // the unit by which chunks grow
    uint8_t* cursor;        // next free byte of the current chunk
    uint64_t remaining;     // bytes behind it
    GMM_ChunkSentinel head;
    GMM_ChunkSentinel tail;
    GMM_MinimiseFn minimise_callback;
    void* minimise_context;
    GMM_AllocFailFn alloc_fail_callback;
    void* alloc_fail_context;
} GMM_ChunkAllocator;

typedef struct GMM_ChunkParams
{
    GMM_Allocator* parent;
    uint64_t chunk_size;
    uint32_t channel;
} GMM_ChunkParams;

typedef struct GMM_ChunkBlockParams
{
    void* block;  // aligned for any record
    uint64_t size;
} GMM_ChunkBlockParams;

// A new allocator on a parent, or null if the parent had no memory.
GMM_Allocator* gmm_chunk_allocator_create(const GMM_ChunkParams* params);

// An allocator that lies in the caller's block and hands out the rest of it. It cannot grow and needs no deletion.
// Null for a block that cannot hold the record and the head of a chunk.
GMM_Allocator* gmm_chunk_allocator_in_block(const GMM_ChunkBlockParams* params);

// Writes the operations of a chunk allocator into a record.
void gmm_fill_operations(GMM_ChunkAllocator* record, void* instance);

// A gmm_Realloc for allocators that can tell a block's size. A size of 0 frees the block and gives null.
void* gmm_realloc_default(GMM_Allocator* allocator, void* block, uint64_t size);

// Stubs for tables of operations.
uint32_t gmm_stub_zero(GMM_Allocator* allocator);
uint64_t gmm_stub_zero_size(GMM_Allocator* allocator, void* block);
uint32_t gmm_stub_one(GMM_Allocator* allocator);
uint32_t gmm_stub_one_block(GMM_Allocator* allocator, void* block);
uint32_t gmm_stub_one_channel(GMM_Allocator* allocator, void* block, uint32_t channel);
void gmm_stub_nothing(GMM_Allocator* allocator, void* block, uint64_t size);

#ifdef __cplusplus
}
#endif

#endif
