#include "orvlog/log/ahc-coder.h"

#include "holv-core/gmm/gmm-typed.h"
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
AT(AdaptiveHuffmanCoder, index, 64);

#undef AT

namespace
{

// --- Bits out ---

// A copy of the coder's bit state, so that the loops need not go through memory. `held` keeps `count` bits that have
// not been stored, less than 32; what stands above them means nothing.
struct BitWriter
{
    uint8_t* next;
    uint64_t held;
    uint32_t count;
};

void store_bytes(BitWriter* bits, uint32_t bytes)
{
    for (uint32_t i = 0; i < bytes; ++i)
    {
        bits->count -= 8;
        *bits->next++ = static_cast<uint8_t>(bits->held >> bits->count);
    }
}

// The low `count` bits of a value, at most 32.
void put_bits(BitWriter* bits, uint64_t value, uint32_t count)
{
    bits->held = bits->held << count | (value & ((uint64_t{1} << count) - 1));
    bits->count += count;
    if (bits->count >= 32)
        store_bytes(bits, 4);
}

void put_code(BitWriter* bits, const AHC_Node* node)
{
    if (node->code_length <= 32)
    {
        put_bits(bits, node->code, node->code_length);
        return;
    }
    for (uint32_t number = node->code_length; number-- > 0;)
        put_bits(bits, node->code >> (number % 64), 1);
}

// --- Bits in ---

constexpr uint32_t kLookAhead = 16;
// With the literal behind it and up to seven bits before, a code of this length lies within eight bytes.
constexpr uint32_t kQuickCode = 48;

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

// The 64 bits of the input from a bit on, as far as eight bytes hold them: the last seven at most are missing.
uint64_t look_bits(const uint8_t* input, uint64_t at)
{
    const uint8_t* bytes = input + at / 8;
    uint64_t all = 0;
    for (int i = 0; i < 8; ++i)
        all = all << 8 | bytes[i];
    return all << (at % 8);
}

// Puts the reader where it would stand had it taken the bits up to `at` one by one.
void move_to(BitReader* bits, const uint8_t* input, uint64_t at)
{
    const uint8_t* next = input + (at + 7) / 8;
    bits->left -= static_cast<uint32_t>(next - bits->next);
    bits->next = next;
    bits->byte = next[-1];
    bits->position = static_cast<int32_t>(8 * (next - input)) - static_cast<int32_t>(at) - 1;
}

// Bytes as by decode_symbol, the cursor on the root before and behind each, as long as their bits lie within the input
// and codes are not long. `input` is where the input begins, and at least a byte of it has been taken.
uint32_t decode_quickly(AdaptiveHuffmanCoder* coder, BitReader* bits, const uint8_t* input, uint8_t* output,
                        uint32_t limit)
{
    const auto taken = static_cast<uint64_t>(bits->next - input);
    const uint64_t size = taken + bits->left;
    uint64_t at = taken * 8 - static_cast<uint64_t>(bits->position + 1);
    uint32_t stored = 0;
    while (stored < limit && at / 8 + kLookAhead <= size)
    {
        const uint64_t window = look_bits(input, at);
        AHC_Node* node = coder->nodes;
        uint32_t length = 0;
        for (; node->right != nullptr && length < kQuickCode; ++length)
            node = (window << length) >> 63 != 0 ? node->right : node->left;
        const bool is_new = node == coder->escape;
        if (node->right != nullptr || (is_new && !ahc_has_room(coder)))
            break;
        uint8_t symbol = node->symbol;
        if (is_new)
        {
            symbol = static_cast<uint8_t>(window << length >> 56);
            length += 8;
            ahc_add_symbol(coder, symbol);
        }
        at += length;
        output[stored++] = symbol;
        ahc_count_node(coder, node);
    }
    move_to(bits, input, at);
    return stored;
}

uint32_t decode_all(AdaptiveHuffmanCoder* coder, BitReader* bits, uint8_t* output, uint32_t limit)
{
    const uint8_t* const input = bits->next;
    uint32_t stored = 0;
    if (coder->cursor == coder->escape && bits->left > 0)
    {
        if (!ahc_has_room(coder))
            return 0;
        output[stored++] = decode_literal(coder, bits);
    }
    while (bits->left > 0 && stored < limit && decode_symbol(coder, bits, output + stored))
    {
        ++stored;
        if (bits->next != input && stored < limit)
            stored += decode_quickly(coder, bits, input, output + stored, limit - stored);
    }
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
    auto* coder = gmm_alloc_record<AdaptiveHuffmanCoder>(allocator);
    if (coder == nullptr)
        return nullptr;
    coder->nodes = gmm_alloc_array<AHC_Node>(allocator, AHC_NODE_COUNT);
    if (coder->nodes == nullptr)
    {
        allocator->gmm_Free(allocator, coder);
        return nullptr;
    }
    coder->nodes[0] = {0, 1, 0, nullptr, nullptr, nullptr, 0, 0};
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
    BitWriter bits = {output, coder->bit_buffer, static_cast<uint32_t>(7 - coder->bit_position)};
    uint64_t room = uint64_t{countable(limit)} * 8;
    // With a limit of 0 the waiting bits alone are more than there is room for.
    if (room < bits.count)
        return 0;
    room -= bits.count;
    const uint8_t* input = coder->input;
    const uint8_t* const end = input + coder->input_count;
    for (; input != end; ++input)
    {
        AHC_Node* node = ahc_find_node(coder, *input);
        const bool is_new = node == coder->escape;
        const uint64_t needed = uint64_t{node->code_length} + (is_new ? 8 : 0);
        if (needed > room)
            break;
        room -= needed;
        put_code(&bits, node);
        if (is_new)
        {
            put_bits(&bits, *input, 8);
            ahc_add_symbol(coder, *input);
        }
        ahc_count_node(coder, node);
    }
    coder->input_count = static_cast<uint32_t>(end - input);
    coder->input = input;
    store_bytes(&bits, bits.count / 8);
    coder->bit_buffer = static_cast<uint8_t>(bits.held & ((1U << bits.count) - 1));
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
