#include "orvlog/log/ahc-coder.h"

#include "orvlog/log/ahc-tree.h"

#include <climits>
#include <cstddef>
#include <cstring>

#define AT(record, field, offset) static_assert(offsetof(record, field) == (offset))

AT(AHC_Node, weight, 0);
AT(AHC_Node, code, 8);
AT(AHC_Node, code_length, 16);
AT(AHC_Node, parent, 24);
AT(AHC_Node, left, 32);
AT(AHC_Node, right, 40);
AT(AHC_Node, symbol, 48);
static_assert(sizeof(AHC_Node) == 56);

AT(AdaptiveHuffmanCoder, nodes, 0);
AT(AdaptiveHuffmanCoder, next_free, 8);
AT(AdaptiveHuffmanCoder, escape, 16);
AT(AdaptiveHuffmanCoder, cursor, 24);
AT(AdaptiveHuffmanCoder, bit_buffer, 32);
AT(AdaptiveHuffmanCoder, bit_position, 33);
AT(AdaptiveHuffmanCoder, allocator, 40);
AT(AdaptiveHuffmanCoder, input, 48);
AT(AdaptiveHuffmanCoder, input_count, 56);
AT(AdaptiveHuffmanCoder, index, 60);

#undef AT

namespace
{

// --- Bits out ---

// A copy of the coder's bit state, so that the loops need not go through memory. `held` keeps `count` bits, at
// most seven, that no byte has been completed with.
struct BitWriter
{
    uint8_t* start;
    uint8_t* next;
    uint64_t held;
    uint32_t count;
};

uint64_t bits_written(const BitWriter* bits)
{
    return static_cast<uint64_t>(bits->next - bits->start) * 8 + bits->count;
}

void put_bits(BitWriter* bits, uint64_t value, uint32_t count)
{
    const uint64_t all = (bits->held << count) | (value & ((uint64_t{1} << count) - 1));
    uint32_t left = bits->count + count;
    while (left >= 8)
    {
        left -= 8;
        *bits->next++ = static_cast<uint8_t>(all >> left);
    }
    bits->held = all & ((uint64_t{1} << left) - 1);
    bits->count = left;
}

void put_code(BitWriter* bits, const AHC_Node* node)
{
    if (node->code_length <= 56)
    {
        put_bits(bits, node->code, node->code_length);
        return;
    }
    for (uint32_t number = node->code_length; number-- > 0;)
        put_bits(bits, node->code >> (number % 64), 1);
}

// --- Bits in ---

struct BitReader
{
    const uint8_t* next;
    uint32_t left;
    uint32_t byte;
    int32_t position;
};

uint32_t take_bit(BitReader* bits)
{
    if (bits->position < 0)
    {
        bits->byte = *bits->next++;
        --bits->left;
        bits->position = 7;
    }
    return (bits->byte >> bits->position--) & 1;
}

uint8_t take_literal(BitReader* bits)
{
    uint32_t value = 0;
    for (int i = 0; i < 8; ++i)
        value = value << 1 | take_bit(bits);
    return static_cast<uint8_t>(value);
}

AHC_Node* take_step(BitReader* bits, const AHC_Node* node)
{
    return take_bit(bits) != 0 ? node->right : node->left;
}

// Takes the literal at the cursor, which stands on the escape node, counts it and goes back to the root.
uint8_t decode_literal(AdaptiveHuffmanCoder* coder, BitReader* bits)
{
    const uint8_t symbol = take_literal(bits);
    ahc_add_symbol(coder, symbol);
    ahc_count_node(coder, coder->cursor);
    coder->cursor = coder->nodes;
    return symbol;
}

// One byte, from wherever the cursor stands. False when the input ends within it or the tree is full.
bool decode_symbol(AdaptiveHuffmanCoder* coder, BitReader* bits, uint8_t* symbol)
{
    AHC_Node* node = take_step(bits, coder->cursor);
    while (node->right != nullptr)
    {
        // The very last bit of the input waits for the next call.
        if (bits->left == 0 && bits->position == 0)
        {
            coder->cursor = node;
            return false;
        }
        node = take_step(bits, node);
    }
    coder->cursor = node;
    if (node == coder->escape)
    {
        if (bits->left == 0 || !ahc_has_room(coder))
            return false;
        *symbol = decode_literal(coder, bits);
        return true;
    }
    *symbol = node->symbol;
    ahc_count_node(coder, node);
    coder->cursor = coder->nodes;
    return true;
}

uint32_t decode_all(AdaptiveHuffmanCoder* coder, BitReader* bits, uint8_t* output, uint32_t limit)
{
    uint32_t stored = 0;
    if (coder->cursor == coder->escape && bits->left > 0)
    {
        if (!ahc_has_room(coder))
            return 0;
        output[stored++] = decode_literal(coder, bits);
    }
    while (bits->left > 0 && stored < limit && decode_symbol(coder, bits, output + stored))
        ++stored;
    return stored;
}

uint32_t countable(uint32_t limit)
{
    return limit <= INT32_MAX ? limit : INT32_MAX;
}

AdaptiveHuffmanCoder* create_coder(GMM_Allocator* allocator, int8_t bit_position)
{
    if (allocator == nullptr)
        return nullptr;
    auto* coder = static_cast<AdaptiveHuffmanCoder*>(allocator->gmm_Alloc(allocator, sizeof(AdaptiveHuffmanCoder), 0));
    if (coder == nullptr)
        return nullptr;
    coder->nodes = static_cast<AHC_Node*>(allocator->gmm_Alloc(allocator, AHC_NODE_COUNT * sizeof(AHC_Node), 0));
    if (coder->nodes == nullptr)
    {
        allocator->gmm_Free(allocator, coder);
        return nullptr;
    }
    coder->nodes[0] = {0, 1, 0, nullptr, nullptr, nullptr, 0};
    coder->next_free = coder->nodes + 1;
    coder->escape = coder->nodes;
    coder->cursor = coder->nodes;
    coder->bit_buffer = 0;
    coder->bit_position = bit_position;
    coder->allocator = allocator;
    coder->input = nullptr;
    coder->input_count = 0;
    ahc_build_index(coder);
    return coder;
}

}  // namespace

AdaptiveHuffmanCoder* AHC_EncoderCreate(GMM_Allocator* allocator)
{
    return create_coder(allocator, 7);
}

AdaptiveHuffmanCoder* AHC_DecoderCreate(GMM_Allocator* allocator)
{
    return create_coder(allocator, -1);
}

void AHC_SetInput(AdaptiveHuffmanCoder* coder, const uint8_t* data, uint32_t count)
{
    if (coder == nullptr)
        return;
    coder->input = data;
    coder->input_count = data != nullptr ? count : 0;
}

int32_t AHC_Encode(AdaptiveHuffmanCoder* coder, uint8_t* output, uint32_t limit)
{
    if (coder == nullptr || output == nullptr)
        return 0;
    const uint64_t room = uint64_t{countable(limit)} * 8;
    BitWriter bits = {output, output, coder->bit_buffer, static_cast<uint32_t>(7 - coder->bit_position)};
    for (; coder->input_count > 0; ++coder->input, --coder->input_count)
    {
        const uint8_t byte = *coder->input;
        AHC_Node* node = ahc_find_node(coder, byte);
        const bool is_new = node == coder->escape;
        if (bits_written(&bits) + node->code_length + (is_new ? 8 : 0) > room)
            break;
        put_code(&bits, node);
        if (is_new)
        {
            put_bits(&bits, byte, 8);
            ahc_add_symbol(coder, byte);
        }
        ahc_count_node(coder, node);
    }
    coder->bit_buffer = static_cast<uint8_t>(bits.held);
    coder->bit_position = static_cast<int8_t>(7 - static_cast<int32_t>(bits.count));
    return static_cast<int32_t>(bits.next - output);
}

uint8_t AHC_EncoderFinish(AdaptiveHuffmanCoder* coder)
{
    if (coder == nullptr)
        return 0;
    uint32_t last = coder->bit_buffer;
    int32_t position = coder->bit_position;
    for (uint32_t number = coder->escape->code_length; number-- > 0 && position >= 0; --position)
        last = last << 1 | static_cast<uint32_t>((coder->escape->code >> (number % 64)) & 1);
    AHC_DecoderDestroy(coder);
    return static_cast<uint8_t>(last << (position + 1));
}

int32_t AHC_Decode(AdaptiveHuffmanCoder* coder, uint8_t* output, uint32_t limit)
{
    if (coder == nullptr || output == nullptr)
        return 0;
    BitReader bits = {coder->input, coder->input_count, coder->bit_buffer, coder->bit_position};
    const uint32_t stored = decode_all(coder, &bits, output, countable(limit));
    coder->input = bits.next;
    coder->input_count = bits.left;
    coder->bit_buffer = static_cast<uint8_t>(bits.byte);
    coder->bit_position = static_cast<int8_t>(bits.position);
    return static_cast<int32_t>(stored);
}

void AHC_DecoderDestroy(AdaptiveHuffmanCoder* coder)
{
    if (coder == nullptr)
        return;
    GMM_Allocator* allocator = coder->allocator;
    allocator->gmm_Free(allocator, coder->nodes);
    allocator->gmm_Free(allocator, coder);
}
