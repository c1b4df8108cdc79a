// The adaptive Huffman codec in its plain form: every symbol and every partner is found by a walk over all
// nodes in use. Slow and easy to check by eye; the library's coder is held against it bit by bit and node by
// node.

#pragma once

#include "orvlog/log/ahc-coder.h"

#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace orvlog::test
{

struct ScanningCoder
{
    enum Direction
    {
        encoder,
        decoder
    };
    explicit ScanningCoder(Direction direction);
    ScanningCoder(const ScanningCoder&) = delete;
    ScanningCoder& operator=(const ScanningCoder&) = delete;

    std::vector<AHC_Node> nodes;
    AHC_Node* next_free;
    AHC_Node* escape;
    AHC_Node* cursor;
    uint8_t bit_buffer = 0;
    int8_t bit_position;
    const uint8_t* input = nullptr;
    uint32_t input_count = 0;

    void set_input(std::span<const uint8_t> data);
    int32_t encode(uint8_t* output, uint32_t limit);
    uint8_t finish();
    int32_t decode(uint8_t* output, uint32_t limit);

    // A stream that no encoder writes: so many literals of the same byte, each behind the escape code. From the
    // 257th on no tree has room for them.
    static std::vector<uint8_t> stream_of_literals(uint8_t byte, uint32_t count);

private:
    AHC_Node* look_up(uint8_t byte);
    void add_symbol(uint8_t byte);
    void update(AHC_Node* node);
    bool put_bit(uint64_t bit, uint8_t*& out);
    uint32_t get_bit();
    uint8_t get_literal();
    bool full() const
    {
        return next_free + 2 > nodes.data() + nodes.size();
    }
};

// The first difference between a coder of the library and the scanning one, in any field that means something,
// down to each node; empty when there is none. `input` is left out: each side may have its own copy.
std::string find_difference(const AdaptiveHuffmanCoder& coder, const ScanningCoder& oracle);

// Makes the tree of both a chain with a leaf of the given weight at each depth, the first at depth 1, under
// which the escape node hangs. The leaf at depth d stands for the byte d.
void make_chain(AdaptiveHuffmanCoder* coder, ScanningCoder* oracle, std::span<const uint64_t> leaf_weights);

}  // namespace orvlog::test
