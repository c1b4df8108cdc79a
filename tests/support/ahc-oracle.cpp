#include "tests/support/ahc-oracle.h"

#include "orvlog/log/ahc-tree.h"

#include <utility>

namespace orvlog::test
{

namespace
{

void renumber(AHC_Node* m)
{
    if (m->left != nullptr)
    {
        m->left->code = 2 * m->code;
        m->left->code_length = m->code_length + 1;
        renumber(m->left);
    }
    if (m->right != nullptr)
    {
        m->right->code = 2 * m->code + 1;
        m->right->code_length = m->code_length + 1;
        renumber(m->right);
    }
}

bool contains(const AHC_Node* top, const AHC_Node* node)
{
    for (; node != nullptr; node = node->parent)
        if (node == top)
            return true;
    return false;
}

void swap_places(AHC_Node* x, AHC_Node* p)
{
    AHC_Node* parent_of_x = x->parent;
    AHC_Node* parent_of_p = p->parent;
    const bool x_is_left = parent_of_x->left == x;
    const bool p_is_left = parent_of_p->left == p;
    (x_is_left ? parent_of_x->left : parent_of_x->right) = p;
    (p_is_left ? parent_of_p->left : parent_of_p->right) = x;
    std::swap(x->parent, p->parent);
    std::swap(x->code, p->code);
    std::swap(x->code_length, p->code_length);
    renumber(x);
    renumber(p);
}

}  // namespace

ScanningCoder::ScanningCoder(Direction direction) : nodes(513), bit_position(direction == encoder ? 7 : -1)
{
    nodes[0].code = 1;
    next_free = &nodes[1];
    escape = &nodes[0];
    cursor = &nodes[0];
}

void ScanningCoder::set_input(std::span<const uint8_t> data)
{
    input = data.data();
    input_count = static_cast<uint32_t>(data.size());
}

AHC_Node* ScanningCoder::look_up(uint8_t byte)
{
    for (AHC_Node* node = nodes.data(); node < next_free; ++node)
        if (node->symbol == byte)
            return node;
    return escape;
}

void ScanningCoder::add_symbol(uint8_t byte)
{
    AHC_Node* e = escape;
    const uint64_t c = e->code;
    e->symbol = 0;
    AHC_Node* leaf = next_free;
    // The escape node's symbol is left as it was found, which is what the library's coder must not depend on.
    *leaf = {1, 2 * c, e->code_length + 1, e, nullptr, nullptr, byte, 0};
    e->left = leaf;
    AHC_Node* fresh = next_free + 1;
    *fresh = {0, 2 * c + 1, e->code_length + 1, e, nullptr, nullptr, fresh->symbol, 0};
    e->right = fresh;
    escape = fresh;
    next_free += 2;
}

void ScanningCoder::update(AHC_Node* node)
{
    AHC_Node* x = node;
    while (x->code_length != 0)
    {
        AHC_Node* p = x;
        for (AHC_Node* candidate = nodes.data(); candidate < next_free; ++candidate)
            if (candidate->weight == x->weight && candidate->code < p->code)
                p = candidate;
        // With wrapped codes the partner can be below or above: the plain rule would tie a knot.
        const bool knot = contains(x, p) || contains(p, x);
        if (p != x && p != x->parent && !knot)
            swap_places(x, p);
        ++x->weight;
        x = x->parent;
    }
    ++x->weight;
}

bool ScanningCoder::put_bit(uint64_t bit, uint8_t*& out)
{
    bit_buffer = static_cast<uint8_t>(uint64_t{bit_buffer} << 1 | (bit & 1));
    if (--bit_position >= 0)
        return false;
    *out++ = bit_buffer;
    bit_buffer = 0;
    bit_position = 7;
    return true;
}

int32_t ScanningCoder::encode(uint8_t* output, uint32_t limit)
{
    uint8_t* out = output;
    while (input_count > 0)
    {
        AHC_Node* node = look_up(*input);
        const bool is_escape = node == escape;
        const auto written = static_cast<uint64_t>(out - output);
        const uint64_t held = written * 8 + static_cast<uint64_t>(7 - bit_position);
        if (held + node->code_length + (is_escape ? 8 : 0) > uint64_t{limit} * 8)
            break;
        for (uint32_t i = node->code_length; i > 0; --i)
            put_bit(node->code >> ((i - 1) % 64), out);
        if (is_escape)
        {
            for (int i = 7; i >= 0; --i)
                put_bit(uint64_t{*input} >> i, out);
            add_symbol(*input);
        }
        update(node);
        ++input;
        --input_count;
    }
    return static_cast<int32_t>(out - output);
}

uint8_t ScanningCoder::finish()
{
    uint8_t last = 0;
    uint8_t* out = &last;
    for (uint32_t i = escape->code_length; i > 0; --i)
        if (put_bit(escape->code >> ((i - 1) % 64), out))
            return last;
    return static_cast<uint8_t>(bit_buffer << (bit_position + 1));
}

uint32_t ScanningCoder::get_bit()
{
    if (bit_position < 0)
    {
        bit_buffer = *input++;
        --input_count;
        bit_position = 7;
    }
    return (bit_buffer >> bit_position--) & 1;
}

uint8_t ScanningCoder::get_literal()
{
    uint32_t literal = 0;
    for (int i = 0; i < 8; ++i)
        literal = 2 * literal + get_bit();
    return static_cast<uint8_t>(literal);
}

int32_t ScanningCoder::decode(uint8_t* output, uint32_t limit)
{
    uint32_t stored = 0;
    if (cursor == escape && input_count > 0)
    {
        if (full())
            return 0;
        const uint8_t literal = get_literal();
        add_symbol(literal);
        update(cursor);
        output[stored++] = literal;
        cursor = nodes.data();
    }
    while (input_count > 0 && stored < limit)
    {
        cursor = get_bit() != 0 ? cursor->right : cursor->left;
        while (cursor->right != nullptr)
        {
            if (input_count == 0 && bit_position == 0)
                return static_cast<int32_t>(stored);
            cursor = get_bit() != 0 ? cursor->right : cursor->left;
        }
        if (cursor == escape)
        {
            if (input_count == 0 || full())
                break;
            const uint8_t literal = get_literal();
            add_symbol(literal);
            output[stored++] = literal;
        }
        else
        {
            output[stored++] = cursor->symbol;
        }
        update(cursor);
        cursor = nodes.data();
    }
    return static_cast<int32_t>(stored);
}

std::vector<uint8_t> ScanningCoder::stream_of_literals(uint8_t byte, uint32_t count)
{
    ScanningCoder model(encoder);
    std::vector<uint8_t> bytes(count * 40);
    uint8_t* out = bytes.data();
    for (uint32_t i = 0; i < count; ++i)
    {
        AHC_Node* inner = model.escape;
        for (uint32_t number = inner->code_length; number-- > 0;)
            model.put_bit(inner->code >> number, out);
        for (int number = 7; number >= 0; --number)
            model.put_bit(uint64_t{byte} >> number, out);
        if (model.full())
            continue;
        model.add_symbol(byte);
        model.update(inner);
    }
    bytes.resize(static_cast<size_t>(out - bytes.data()));
    return bytes;
}

namespace
{

int64_t place(const AHC_Node* node, const AHC_Node* nodes)
{
    return node != nullptr ? node - nodes : -1;
}

std::string node_difference(const AHC_Node& a, const AHC_Node* nodes_a, const AHC_Node& b, const AHC_Node* nodes_b)
{
    std::string found;
    const auto look = [&found](const char* name, auto left, auto right)
    {
        if (left != right)
            found += std::string(name) + ' ' + std::to_string(left) + " != " + std::to_string(right) + ' ';
    };
    look("weight", a.weight, b.weight);
    look("code", a.code, b.code);
    look("code_length", a.code_length, b.code_length);
    look("parent", place(a.parent, nodes_a), place(b.parent, nodes_b));
    look("left", place(a.left, nodes_a), place(b.left, nodes_b));
    look("right", place(a.right, nodes_a), place(b.right, nodes_b));
    return found;
}

void fill_chain(AHC_Node* nodes, std::span<const uint64_t> leaf_weights)
{
    uint64_t below = 0;
    for (const uint64_t weight : leaf_weights)
        below += weight;
    nodes[0] = {below, 1, 0, nullptr, nullptr, nullptr, 0, 0};
    for (size_t depth = 1; depth <= leaf_weights.size(); ++depth)
    {
        AHC_Node* above = depth == 1 ? nodes : nodes + 2 * depth - 2;
        AHC_Node* leaf = nodes + 2 * depth - 1;
        const auto length = static_cast<uint32_t>(depth);
        const uint64_t weight = leaf_weights[depth - 1];
        below -= weight;
        leaf[0] = {weight, 2 * above->code, length, above, nullptr, nullptr, static_cast<uint8_t>(depth), 0};
        leaf[1] = {below, 2 * above->code + 1, length, above, nullptr, nullptr, 0, 0};
        above->left = leaf;
        above->right = leaf + 1;
    }
}

}  // namespace

std::string find_difference(const AdaptiveHuffmanCoder& coder, const ScanningCoder& oracle)
{
    const int64_t used = coder.next_free - coder.nodes;
    if (used != oracle.next_free - oracle.nodes.data())
        return "next_free";
    if (coder.escape - coder.nodes != oracle.escape - oracle.nodes.data())
        return "escape";
    if (coder.cursor - coder.nodes != oracle.cursor - oracle.nodes.data())
        return "cursor";
    if (coder.bit_buffer != oracle.bit_buffer || coder.bit_position != oracle.bit_position)
        return "bits";
    if (coder.input_count != oracle.input_count)
        return "input_count";
    for (int64_t i = 0; i < used; ++i)
    {
        const AHC_Node& a = coder.nodes[i];
        const AHC_Node& b = oracle.nodes[static_cast<size_t>(i)];
        std::string found = node_difference(a, coder.nodes, b, oracle.nodes.data());
        if (&a != coder.escape && a.symbol != b.symbol)
            found += "symbol";
        if (!found.empty())
            return "node " + std::to_string(i) + ": " + found;
    }
    return {};
}

void make_chain(AdaptiveHuffmanCoder* coder, ScanningCoder* oracle, std::span<const uint64_t> leaf_weights)
{
    const size_t used = 1 + 2 * leaf_weights.size();
    fill_chain(coder->nodes, leaf_weights);
    coder->next_free = coder->nodes + used;
    coder->escape = coder->nodes + used - 1;
    ahc_build_index(coder);
    fill_chain(oracle->nodes.data(), leaf_weights);
    oracle->next_free = oracle->nodes.data() + used;
    oracle->escape = oracle->nodes.data() + used - 1;
}

}  // namespace orvlog::test
