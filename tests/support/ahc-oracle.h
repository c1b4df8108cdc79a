// The adaptive Huffman codec in its plain form: every symbol and every partner is found by a walk over all
// nodes in use. Slow and easy to check by eye; the library's coder is held against it bit by bit and node by
// node.

#pragma once

#include "orvlog/log/ahc-coder.h"

#include <cstdint>
#include <span>
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

}  // namespace orvlog::test
