#include "orvlog/log/ahc-tree.h"

#include <cstddef>
#include <cstring>

namespace
{

// The deepest node whose code still holds its sentinel.
constexpr uint32_t longest_whole_code = 63;

uint16_t index_of(const AdaptiveHuffmanCoder* coder, const AHC_Node* node)
{
    return static_cast<uint16_t>(node - coder->nodes);
}

uint16_t* chain_of(AHC_Index* index, uint64_t weight)
{
    return &index->first[weight % AHC_CLASS_COUNT];
}

void enter_chain(AHC_Index* index, uint16_t node, uint64_t weight)
{
    uint16_t* first = chain_of(index, weight);
    index->next[node] = *first;
    *first = node;
}

void leave_chain(AHC_Index* index, uint16_t node, uint64_t weight)
{
    uint16_t* link = chain_of(index, weight);
    while (*link != node)
        link = &index->next[*link];
    *link = index->next[node];
}

AHC_Node* take_node(AdaptiveHuffmanCoder* coder, AHC_Node* parent, uint64_t weight, uint64_t bit)
{
    AHC_Node* node = coder->next_free++;
    node->weight = weight;
    node->code = 2 * parent->code + bit;
    node->code_length = parent->code_length + 1;
    node->parent = parent;
    node->left = nullptr;
    node->right = nullptr;
    node->symbol = 0;
    enter_chain(&coder->index, index_of(coder, node), weight);
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
    if (node->code_length < longest_whole_code && partner->code_length <= longest_whole_code)
        return true;
    return !is_above(node, partner) && !is_above(partner, node);
}

// The node of the lowest code among those of the same weight; among equal codes the node itself, then the one
// of the lowest index. The root can be left out: it has the weight of another node only as its parent, at
// depth 1, where no third node can come before the two.
AHC_Node* find_partner(const AdaptiveHuffmanCoder* coder, AHC_Node* node, uint16_t first)
{
    AHC_Node* partner = node;
    for (uint16_t i = first; i != 0; i = coder->index.next[i])
    {
        AHC_Node* candidate = coder->nodes + i;
        if (candidate->weight != node->weight || candidate->code > partner->code)
            continue;
        if (candidate->code < partner->code || (partner != node && candidate < partner))
            partner = candidate;
    }
    return partner;
}

}  // namespace

void ahc_build_index(AdaptiveHuffmanCoder* coder)
{
    AHC_Index* index = &coder->index;
    std::memset(index, 0, sizeof *index);
    for (const AHC_Node* node = coder->nodes + 1; node < coder->next_free; ++node)
    {
        enter_chain(index, index_of(coder, node), node->weight);
        if (node->right == nullptr && node != coder->escape && index->leaf_of[node->symbol] == 0)
            index->leaf_of[node->symbol] = index_of(coder, node);
    }
}

AHC_Node* ahc_find_node(const AdaptiveHuffmanCoder* coder, uint8_t byte)
{
    // The root's symbol is 0 like that of any internal node, and a byte 0 is counted at the first node that
    // has it. Readers of coded logs rely on it.
    if (byte == 0)
        return coder->nodes;
    const uint16_t leaf = coder->index.leaf_of[byte];
    return leaf != 0 ? coder->nodes + leaf : coder->escape;
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
    if (coder->index.leaf_of[symbol] == 0)
        coder->index.leaf_of[symbol] = index_of(coder, leaf);
    coder->escape = take_node(coder, inner, 0, 1);
    inner->left = leaf;
    inner->right = coder->escape;
}

void ahc_count_node(AdaptiveHuffmanCoder* coder, AHC_Node* node)
{
    AHC_Index* index = &coder->index;
    while (node->code_length != 0)
    {
        const uint16_t own = index_of(coder, node);
        uint16_t* first = chain_of(index, node->weight);
        if (*first == own && index->next[own] == 0)
        {
            *first = 0;
        }
        else
        {
            AHC_Node* partner = find_partner(coder, node, *first);
            if (may_exchange(node, partner))
                exchange(node, partner);
            leave_chain(index, own, node->weight);
        }
        ++node->weight;
        enter_chain(index, own, node->weight);
        node = node->parent;
    }
    ++node->weight;
}
