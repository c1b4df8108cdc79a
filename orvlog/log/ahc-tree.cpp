#include "orvlog/log/ahc-tree.h"

#include <cstddef>
#include <cstring>

namespace
{

// The deepest node whose code still holds its sentinel.
constexpr uint32_t kLongestWholeCode = 63;

// What no node weighs.
constexpr uint64_t kNoWeight = UINT64_MAX;

uint16_t index_of(const AdaptiveHuffmanCoder* coder, const AHC_Node* node)
{
    return static_cast<uint16_t>(node - coder->nodes);
}

// Without the root.
uint16_t nodes_in_row(const AdaptiveHuffmanCoder* coder)
{
    return static_cast<uint16_t>(coder->next_free - coder->nodes - 1);
}

void set_place(AdaptiveHuffmanCoder* coder, uint16_t place, AHC_Node* node)
{
    node->place = place;
    coder->index.row[place] = index_of(coder, node);
    coder->index.weights[place] = node->weight;
}

AHC_Node* take_node(AdaptiveHuffmanCoder* coder, AHC_Node* parent, uint64_t weight, uint64_t bit)
{
    AHC_Node* node = coder->next_free++;
    *node = {weight, 2 * parent->code + bit, parent->code_length + 1, parent, nullptr, nullptr, 0, 0};
    return node;
}

void renumber_below(AHC_Node* node)
{
    for (; node->right != nullptr; node = node->right)
    {
        node->left->code = 2 * node->code;
        node->left->code_length = node->code_length + 1;
        renumber_below(node->left);
        node->right->code = 2 * node->code + 1;
        node->right->code_length = node->code_length + 1;
    }
}

template <typename Value> void swap_values(Value* a, Value* b)
{
    const Value kept = *a;
    *a = *b;
    *b = kept;
}

void exchange(AHC_Node* a, AHC_Node* b)
{
    AHC_Node** slot_of_a = a->parent->left == a ? &a->parent->left : &a->parent->right;
    AHC_Node** slot_of_b = b->parent->left == b ? &b->parent->left : &b->parent->right;
    *slot_of_a = b;
    *slot_of_b = a;
    swap_values(&a->parent, &b->parent);
    swap_values(&a->code, &b->code);
    swap_values(&a->code_length, &b->code_length);
    renumber_below(a);
    renumber_below(b);
}

void note_leaf(AHC_Index* index, uint8_t symbol, uint16_t leaf)
{
    // No look-up finds the leaf of a byte 0: the root's symbol is 0 like that of any internal node, and a byte 0 is
    // counted at the first node that has it. Readers of coded logs rely on it.
    if (symbol != 0 && index->leaf_of[symbol] == 0)
        index->leaf_of[symbol] = leaf;
}

bool is_above(const AHC_Node* upper, const AHC_Node* node)
{
    while (node != nullptr && node != upper)
        node = node->parent;
    return node != nullptr;
}

// Whole codes rule it out that a node's partner is below it or, but for its parent, above it. Wrapped codes
// don't, and such an exchange would cut both out of the tree.
bool may_exchange(const AHC_Node* node, const AHC_Node* partner)
{
    if (partner == node || partner == node->parent)
        return false;
    if (node->code_length < kLongestWholeCode && partner->code_length <= kLongestWholeCode)
        return true;
    return !is_above(node, partner) && !is_above(partner, node);
}

// The node of the lowest code among those of the row from `first` up to `end`, which have the same weight; among
// equal codes the node itself, then the one that came first. The root can be left out: it has the weight of another
// node only as its parent, at depth 1, where no third node can come before the two.
AHC_Node* find_partner(const AdaptiveHuffmanCoder* coder, AHC_Node* node, const uint16_t* first, const uint16_t* end)
{
    AHC_Node* partner = node;
    for (; first != end; ++first)
    {
        AHC_Node* candidate = coder->nodes + *first;
        if (candidate->code > partner->code)
            continue;
        if (candidate->code < partner->code || (partner != node && candidate < partner))
            partner = candidate;
    }
    return partner;
}

// For a node with others of its weight: makes the exchange, if one is due, and puts the node in front of them.
void settle(AdaptiveHuffmanCoder* coder, AHC_Node* node)
{
    const uint64_t weight = node->weight;
    const uint64_t* weights = coder->index.weights;
    uint16_t first = node->place;
    while (weights[first - 1] == weight)
        --first;
    uint16_t end = static_cast<uint16_t>(node->place + 1);
    while (weights[end] == weight)
        ++end;
    const uint16_t* row = coder->index.row;
    AHC_Node* partner = find_partner(coder, node, row + first, row + end);
    if (may_exchange(node, partner))
        exchange(node, partner);
    set_place(coder, node->place, coder->nodes + row[first]);
    set_place(coder, first, node);
}

}  // namespace

void ahc_build_index(AdaptiveHuffmanCoder* coder)
{
    AHC_Index* index = &coder->index;
    std::memset(index->leaf_of, 0, sizeof index->leaf_of);
    index->weights[0] = kNoWeight;
    uint16_t count = 0;
    for (AHC_Node* node = coder->nodes + 1; node < coder->next_free; ++node)
    {
        uint16_t place = ++count;
        for (; index->weights[place - 1] < node->weight; --place)
            set_place(coder, place, coder->nodes + index->row[place - 1]);
        set_place(coder, place, node);
        if (node->right == nullptr && node != coder->escape)
            note_leaf(index, node->symbol, index_of(coder, node));
    }
    index->weights[count + 1] = kNoWeight;
}

bool ahc_has_room(const AdaptiveHuffmanCoder* coder)
{
    return coder->next_free - coder->nodes + 2 <= static_cast<ptrdiff_t>(AHC_NODE_COUNT);
}

void ahc_add_symbol(AdaptiveHuffmanCoder* coder, uint8_t symbol)
{
    AHC_Node* inner = coder->escape;
    inner->symbol = 0;
    AHC_Node* leaf = take_node(coder, inner, 1, 0);
    leaf->symbol = symbol;
    note_leaf(&coder->index, symbol, index_of(coder, leaf));
    coder->escape = take_node(coder, inner, 0, 1);
    inner->left = leaf;
    inner->right = coder->escape;
    // The inner node's weight is still 0 and stood alone at the end of the row, unless it is the root.
    uint16_t place = nodes_in_row(coder);
    coder->index.weights[place + 1] = kNoWeight;
    set_place(coder, place--, coder->escape);
    if (inner != coder->nodes)
        set_place(coder, place--, inner);
    set_place(coder, place, leaf);
}

void ahc_count_node(AdaptiveHuffmanCoder* coder, AHC_Node* node)
{
    for (; node->parent != nullptr; node = node->parent)
    {
        const uint64_t* own = &coder->index.weights[node->place];
        if (own[-1] == own[0] || own[1] == own[0])
            settle(coder, node);
        coder->index.weights[node->place] = ++node->weight;
    }
    ++node->weight;
}
