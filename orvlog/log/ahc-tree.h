// The code tree that both directions of the codec grow.
//
// Invariants: entries stay where they are in `nodes` and only their links, codes and lengths change; behind the
// root, odd entries are leaves and even ones are inner nodes but for the last, the escape node; an inner node
// has two children; each weight but the root's is the sum of those below it.

#pragma once

#include "orvlog/log/ahc-coder.h"

// Works out `index`, and the places of the nodes in use, from these.
void ahc_build_index(AdaptiveHuffmanCoder* coder);

// The node that stands for a byte: the first entry with that symbol, or the escape node.
inline AHC_Node* ahc_find_node(const AdaptiveHuffmanCoder* coder, uint8_t byte)
{
    const uint16_t leaf = coder->index.leaf_of[byte];
    if (leaf != 0)
        return coder->nodes + leaf;
    return byte == 0 ? coder->nodes : coder->escape;
}

// Whether two more entries are free. An encoder always finds them.
bool ahc_has_room(const AdaptiveHuffmanCoder* coder);

// Makes the escape node an inner node with a leaf for `symbol`, born with weight 1, and a new escape node.
void ahc_add_symbol(AdaptiveHuffmanCoder* coder, uint8_t symbol);

// Counts a byte at `node` and at all nodes above it. On the way each node first changes places with the node of
// lowest code among those of its weight, unless that is itself or its parent.
void ahc_count_node(AdaptiveHuffmanCoder* coder, AHC_Node* node);
