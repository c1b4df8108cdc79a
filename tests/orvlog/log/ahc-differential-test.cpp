// The coder against the scanning oracle: same bits, same counts call by call, same nodes at the end.

#include "orvlog/log/ahc-coder.h"

#include "tests/support/ahc-oracle.h"
#include "tests/support/test-allocator.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <random>
#include <span>
#include <string>
#include <vector>

namespace
{

using orvlog::test::find_difference;
using orvlog::test::make_chain;
using orvlog::test::ScanningCoder;
using orvlog::test::TestAllocator;
using Bytes = std::vector<uint8_t>;

class Dice
{
public:
    explicit Dice(uint32_t seed) : engine_(seed) {}
    uint32_t below(uint32_t bound)
    {
        return static_cast<uint32_t>(engine_()) % bound;
    }
    uint8_t byte()
    {
        return static_cast<uint8_t>(engine_());
    }

private:
    std::minstd_rand engine_;
};

using Shape = void (*)(Dice& dice, Bytes& bytes);

void uniform_over_all(Dice& dice, Bytes& bytes)
{
    for (uint8_t& byte : bytes)
        byte = dice.byte();
}

void uniform_over_few(Dice& dice, Bytes& bytes)
{
    const uint32_t kinds = 1 + dice.below(8);
    const uint8_t base = dice.byte();
    for (uint8_t& byte : bytes)
        byte = static_cast<uint8_t>(base + dice.below(kinds));
}

void halving(Dice& dice, Bytes& bytes)
{
    for (uint8_t& byte : bytes)
    {
        byte = 'a';
        while (byte < 'a' + 30 && dice.below(2) == 0)
            ++byte;
    }
}

void runs(Dice& dice, Bytes& bytes)
{
    for (size_t i = 0; i < bytes.size();)
    {
        const uint8_t value = dice.byte();
        for (uint32_t left = 1 + dice.below(40); left > 0 && i < bytes.size(); --left)
            bytes[i++] = value;
    }
}

void each_in_turn(Dice& dice, Bytes& bytes)
{
    uint8_t value = dice.byte();
    const auto step = static_cast<uint8_t>(1 + 2 * dice.below(5));
    for (uint8_t& byte : bytes)
        byte = value = static_cast<uint8_t>(value + step);
}

void many_zeros(Dice& dice, Bytes& bytes)
{
    for (uint8_t& byte : bytes)
        byte = dice.below(3) == 0 ? dice.byte() : 0;
}

// As often as the Fibonacci numbers say, the rarest first or last, for the deepest trees of a length.
void fibonacci(Dice& dice, Bytes& bytes)
{
    uint64_t count = 1;
    uint64_t next = 1;
    uint8_t value = 'A';
    for (size_t i = 0; i < bytes.size(); ++value)
    {
        for (uint64_t left = count; left > 0 && i < bytes.size(); --left)
            bytes[i++] = value;
        next += count;
        count = next - count;
    }
    if (dice.below(2) == 0)
        std::reverse(bytes.begin(), bytes.end());
}

void attributes(Dice& dice, Bytes& bytes)
{
    std::string text;
    const std::array names = {"gpf_X", "gpf_Y", "Id", "return", "document_context", "fp_EngineIdGet"};
    while (text.size() < bytes.size())
    {
        text += std::string(dice.below(10), ' ') + '<' + names[dice.below(names.size())] + ' ';
        text += std::string(names[dice.below(names.size())]) + "=\"" + std::to_string(dice.below(100000)) + "\">\n";
    }
    std::copy_n(text.begin(), bytes.size(), bytes.begin());
}

constexpr std::array<Shape, 8> kShapes = {uniform_over_all, uniform_over_few, halving,   runs,
                                          each_in_turn,     many_zeros,       fibonacci, attributes};

// Lengths with many short ones and some long ones.
Bytes make_input(Dice& dice, uint32_t number)
{
    const uint32_t longest = number % 100 == 0 ? 4000 : number % 10 == 0 ? 400 : 80;
    Bytes bytes(dice.below(longest));
    kShapes[number % kShapes.size()](dice, bytes);
    return bytes;
}

// The next piece of what is left, of a length that is often tiny.
std::span<const uint8_t> next_piece(Dice& dice, std::span<const uint8_t> rest)
{
    const uint32_t wanted = dice.below(2) == 0 ? dice.below(4) : dice.below(300);
    return rest.first(std::min<size_t>(wanted, rest.size()));
}

// One encoder of each kind, driven alike.
class EncoderPair
{
public:
    EncoderPair() : oracle(ScanningCoder::encoder), coder(AHC_EncoderCreate(allocator_.get())) {}
    EncoderPair(const EncoderPair&) = delete;
    EncoderPair& operator=(const EncoderPair&) = delete;
    ~EncoderPair()
    {
        AHC_DecoderDestroy(coder);
    }

    // Codes a piece by calls of the given limit. False where the two differ.
    bool code(std::span<const uint8_t> piece, uint32_t limit)
    {
        AHC_SetInput(coder, piece.data(), static_cast<uint32_t>(piece.size()));
        oracle.set_input(piece);
        Bytes mine(limit + 1, 0xEE);
        Bytes theirs(limit + 1, 0xEE);
        int32_t n = 0;
        do
        {
            n = AHC_Encode(coder, mine.data(), limit);
            if (n != oracle.encode(theirs.data(), limit) || mine != theirs || mine[limit] != 0xEE)
                return false;
            coded.insert(coded.end(), mine.begin(), mine.begin() + n);
        } while (n > 0);
        return true;
    }

    void finish()
    {
        coded.push_back(AHC_EncoderFinish(coder));
        EXPECT_EQ(coded.back(), oracle.finish());
        coder = nullptr;
    }

    Bytes coded;
    ScanningCoder oracle;

private:
    TestAllocator allocator_;

public:
    AdaptiveHuffmanCoder* coder;
};

// Feeds both decoders alike until the data or their patience ends. False where the two differ. With leaf weights they
// start from a chain of these.
bool decode_alike(Dice& dice, std::span<const uint8_t> coded, Bytes* text, std::span<const uint64_t> leaf_weights = {})
{
    TestAllocator allocator;
    AdaptiveHuffmanCoder* coder = AHC_DecoderCreate(allocator.get());
    ScanningCoder oracle(ScanningCoder::decoder);
    if (!leaf_weights.empty())
        make_chain(coder, &oracle, leaf_weights);
    bool same = true;
    bool stuck = false;
    while (same && !stuck && !coded.empty())
    {
        const std::span<const uint8_t> piece = next_piece(dice, coded);
        coded = coded.subspan(piece.size());
        AHC_SetInput(coder, piece.data(), static_cast<uint32_t>(piece.size()));
        oracle.set_input(piece);
        while (same && !stuck && coder->input_count > 0)
        {
            const uint32_t limit = dice.below(60);
            Bytes mine(limit + 1, 0xEE);
            Bytes theirs(limit + 1, 0xEE);
            const uint32_t before = coder->input_count;
            const int32_t n = AHC_Decode(coder, mine.data(), limit);
            same = n == oracle.decode(theirs.data(), limit) && mine == theirs;
            stuck = limit > 0 && n == 0 && coder->input_count == before;
            text->insert(text->end(), mine.begin(), mine.begin() + n);
        }
    }
    EXPECT_EQ(find_difference(*coder, oracle), "");
    AHC_DecoderDestroy(coder);
    return same;
}

Bytes without_lost_zeros(const Bytes& text)
{
    Bytes kept;
    for (size_t i = 0; i < text.size(); ++i)
        if (i == 0 || text[i] != 0)
            kept.push_back(text[i]);
    return kept;
}

TEST(AhcDifferential, EncodesAndDecodesAsTheOracle)
{
    for (uint32_t number = 0; number < 12000; ++number)
    {
        SCOPED_TRACE(number);
        Dice dice(number + 1);
        const Bytes text = make_input(dice, number);
        EncoderPair pair;
        for (AHC_Node& node : pair.oracle.nodes)
            node.symbol = &node == pair.oracle.nodes.data() ? 0 : dice.byte();
        for (std::span<const uint8_t> rest = text; !rest.empty();)
        {
            const std::span<const uint8_t> piece = next_piece(dice, rest);
            rest = rest.subspan(piece.size());
            ASSERT_TRUE(pair.code(piece, 8 + dice.below(100)));
        }
        ASSERT_EQ(find_difference(*pair.coder, pair.oracle), "");
        pair.finish();

        pair.coded.push_back(0);
        Bytes decoded;
        ASSERT_TRUE(decode_alike(dice, pair.coded, &decoded));
        const Bytes expected = without_lost_zeros(text);
        ASSERT_GE(decoded.size(), expected.size());
        ASSERT_TRUE(std::equal(expected.begin(), expected.end(), decoded.begin()));
    }
}

TEST(AhcDifferential, StopsAtShortLimitsAsTheOracle)
{
    for (uint32_t number = 0; number < 3000; ++number)
    {
        SCOPED_TRACE(number);
        Dice dice(number + 77);
        const Bytes text = make_input(dice, number);
        EncoderPair pair;
        for (std::span<const uint8_t> rest = text; !rest.empty();)
        {
            const std::span<const uint8_t> piece = next_piece(dice, rest);
            rest = rest.subspan(piece.size());
            ASSERT_TRUE(pair.code(piece, dice.below(4)));
        }
        ASSERT_EQ(find_difference(*pair.coder, pair.oracle), "");
        pair.finish();
    }
}

TEST(AhcDifferential, DecodesForeignDataAsTheOracle)
{
    for (uint32_t number = 0; number < 6000; ++number)
    {
        SCOPED_TRACE(number);
        Dice dice(number + 5);
        Bytes decoded;
        ASSERT_TRUE(decode_alike(dice, make_input(dice, number), &decoded));
    }
}

// --- Codes longer than 63 bits ---

enum class Weights
{
    fibonacci,
    ones,
    few_values,
    doubling_pairs
};

std::vector<uint64_t> chain_weights(Weights kind, size_t depth, Dice& dice)
{
    std::vector<uint64_t> weights(depth, 1);
    for (size_t i = depth; i-- > 0;)
    {
        const size_t below = depth - 1 - i;
        if (kind == Weights::fibonacci && below >= 2 && below < 88)
            weights[i] = weights[i + 1] + weights[i + 2];
        if (kind == Weights::few_values)
            weights[i] = 1 + dice.below(5);
        if (kind == Weights::doubling_pairs)
            weights[i] = uint64_t{1} << std::min<size_t>(below / 2, 50);
    }
    return weights;
}

void compare_on_chain(Weights kind, uint32_t seed)
{
    SCOPED_TRACE(seed);
    Dice dice(seed);
    const std::vector<uint64_t> weights = chain_weights(kind, 60 + dice.below(60), dice);
    EncoderPair pair;
    make_chain(pair.coder, &pair.oracle, weights);
    Bytes text(200 + dice.below(400));
    for (uint8_t& byte : text)
    {
        // Mostly what lies deep, some of it new.
        const auto deep = static_cast<uint8_t>(50 + dice.below(80));
        byte = dice.below(4) == 0 ? dice.byte() : deep;
    }
    ASSERT_TRUE(pair.code(text, 100));
    ASSERT_EQ(find_difference(*pair.coder, pair.oracle), "");
    pair.finish();
}

TEST(AhcDifferential, KeepsToTheOracleWhereCodesWrap)
{
    for (uint32_t seed = 1; seed <= 400; ++seed)
    {
        compare_on_chain(Weights::fibonacci, seed);
        compare_on_chain(Weights::ones, seed);
        compare_on_chain(Weights::few_values, seed);
        compare_on_chain(Weights::doubling_pairs, seed);
    }
}

void decode_on_chain(Weights kind, uint32_t seed)
{
    SCOPED_TRACE(seed);
    Dice dice(seed);
    const std::vector<uint64_t> weights = chain_weights(kind, 20 + dice.below(100), dice);
    // A chain goes down by ones.
    Bytes coded(600);
    for (uint8_t& byte : coded)
        byte = dice.below(20) == 0 ? dice.byte() : 0xFF;
    Bytes text;
    ASSERT_TRUE(decode_alike(dice, coded, &text, weights));
    ASSERT_FALSE(text.empty());
}

TEST(AhcDifferential, DecodesLongCodesAsTheOracle)
{
    for (uint32_t seed = 1; seed <= 200; ++seed)
    {
        decode_on_chain(Weights::fibonacci, seed);
        decode_on_chain(Weights::ones, seed);
        decode_on_chain(Weights::few_values, seed);
        decode_on_chain(Weights::doubling_pairs, seed);
    }
}

// A new symbol under an escape node at depth 64: its parent's weight is that of a child whose code has wrapped
// to something lower.
TEST(AhcDifferential, NeverExchangesANodeWithOneBelowIt)
{
    for (size_t depth = 60; depth <= 140; ++depth)
    {
        SCOPED_TRACE(depth);
        for (uint64_t last = 1; last <= 3; ++last)
        {
            std::vector<uint64_t> weights(depth);
            for (size_t i = 0; i < depth; ++i)
                weights[i] = 1000 + i;
            weights[depth - 1] = last;
            EncoderPair pair;
            make_chain(pair.coder, &pair.oracle, weights);
            const Bytes text = {200, 201, 202, static_cast<uint8_t>(depth), 203, 200, 201};
            ASSERT_TRUE(pair.code(text, 100));
            ASSERT_EQ(find_difference(*pair.coder, pair.oracle), "");
        }
    }
}

}  // namespace
