// The adaptive Huffman codec of coded logs.
//
// Text goes in byte by byte and comes out as a bit stream, in one pass. Both directions grow the same code
// tree from the bytes that have passed, so nothing about the tree stands in the stream. A coder lives as long
// as its log and is never reset.
//
// The stream: the code of each byte, from the bit nearest the root, first bit in the top bit of the first
// byte. A byte not seen before is sent as the code of the escape node and eight literal bits. The last byte
// holds what was left of the last code, then the escape code as far as it fits, then zero bits. It is always
// there. Nothing else marks the end.
//
// Two things that readers of coded logs rely on:
// - A byte 0 is sent only as the first byte of a stream. Any later 0 is counted at the root and leaves no bit.
// - Codes are held in 64 bits with a sentinel above them. Deeper than 63 the sentinel and the top bits fall
//   off, codes stop following depth, and a code longer than 64 bits is sent with bit numbers modulo 64. Such a
//   stream is well defined and cannot be decoded. It takes weights in Fibonacci growth to get there.

#pragma once

#include "holv-core/gmm/gmm-allocator.h"

#include <cstdint>

struct AHC_Node
{
    uint64_t weight;       // bytes counted at this node
    uint64_t code;         // 1 at the root; a left child has twice its parent's, a right child one more
    uint32_t code_length;  // depth: how many low bits of `code` are sent
    AHC_Node* parent;      // null at the root
    AHC_Node* left;        // by a 0 bit; null at a leaf
    AHC_Node* right;       // by a 1 bit; null at a leaf
    uint8_t symbol;        // the byte of a leaf; 0 in an internal node; no meaning in the escape node
    uint16_t place;        // of the index: where the node stands in the row
};

inline constexpr uint32_t AHC_NODE_COUNT = 513;

// Where to find nodes without a scan. Nodes are named by their number in `nodes`; 0, the root, stands for none.
// All but the root stand in a row by falling weight, so that those of equal weight are neighbours and a node
// without equals, as most are, is known by a look at two. A node that is counted goes to the front of its equals
// first, which keeps the row in order.
struct AHC_Index
{
    uint16_t leaf_of[256];                 // the first leaf of a byte; none for the byte 0
    uint16_t row[AHC_NODE_COUNT];          // from 1 on
    uint64_t weights[AHC_NODE_COUNT + 1];  // along the row, with UINT64_MAX before and behind it
};

// The fields down to `input_count` are the codec's state; `index` behind them, like the place of a node, holds
// nothing that cannot be worked out from `nodes`.
struct AdaptiveHuffmanCoder
{
    AHC_Node* nodes;           // 513 entries, owned; entry 0 is the root, then pairs of a leaf and an escape node
    AHC_Node* next_free;       // first unused entry
    AHC_Node* escape;          // the leaf of weight 0, last entry in use
    AHC_Node* cursor;          // decoder: the node reached so far
    uint8_t bit_buffer;        // the byte being built or read
    int8_t bit_position;       // next bit to fill or read, 7 down to 0; negative when full or spent
    GMM_Allocator* allocator;  // owner of both blocks
    const uint8_t* input;      // next input byte; not owned
    uint32_t input_count;      // bytes left at `input`
    AHC_Index index;
};

// A new coder from two allocations, or null. Nothing is allocated afterwards.
AdaptiveHuffmanCoder* AHC_EncoderCreate(GMM_Allocator* allocator);
AdaptiveHuffmanCoder* AHC_DecoderCreate(GMM_Allocator* allocator);

// Names the next input of either direction and forgets what was pending. The bytes stay the caller's and must
// stand until they are consumed. A null `data` counts as no bytes.
void AHC_SetInput(AdaptiveHuffmanCoder* coder, const uint8_t* data, uint32_t count);

// Codes pending input into `output`, at most `limit` bytes, and gives the number of bytes stored. A byte of
// input goes in only if all its bits fit. 0 means that the input is used up without completing a byte, or
// that the next code is longer than the buffer: no call will then do more. Up to seven bits stay in the coder.
int32_t AHC_Encode(AdaptiveHuffmanCoder* coder, uint8_t* output, uint32_t limit);

// Gives the last byte of the stream, which the caller writes even if it is 0, and releases the coder. Null
// gives 0.
uint8_t AHC_EncoderFinish(AdaptiveHuffmanCoder* coder);

// Decodes pending input into `output` and gives the number of bytes stored, at most `limit`; with a limit of 0
// one byte can still be stored, for a byte whose escape code ended a former call. A byte comes out only while
// input is left that was not loaded, so the last ones of a stream need a further byte behind it. Codes and
// literals may be cut anywhere between calls.
// A stream that no encoder made gives some bytes or other; one that asks for a 257th new byte is stopped there
// for good: its input stays pending and every further call gives 0.
int32_t AHC_Decode(AdaptiveHuffmanCoder* coder, uint8_t* output, uint32_t limit);

// Releases a coder of either direction. Null is let be.
void AHC_DecoderDestroy(AdaptiveHuffmanCoder* coder);
