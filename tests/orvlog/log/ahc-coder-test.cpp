#include "orvlog/log/ahc-coder.h"

#include "tests/support/ahc-oracle.h"
#include "tests/support/guarded-block.h"
#include "tests/support/test-allocator.h"

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

namespace
{

using orvlog::test::GuardedBlock;
using orvlog::test::make_chain;
using orvlog::test::ScanningCoder;
using orvlog::test::TestAllocator;
using Bytes = std::vector<uint8_t>;

class AhcCoder : public testing::Test
{
protected:
    ~AhcCoder() override
    {
        AHC_DecoderDestroy(coder);
        EXPECT_EQ(allocator.outstanding(), 0u);
        EXPECT_EQ(allocator.bad_frees(), 0u);
    }

    void make_encoder()
    {
        coder = AHC_EncoderCreate(allocator.get());
    }
    void make_decoder()
    {
        coder = AHC_DecoderCreate(allocator.get());
    }

    void set_input(const Bytes& bytes)
    {
        input = bytes;
        AHC_SetInput(coder, input.data(), static_cast<uint32_t>(input.size()));
    }
    void set_input(const std::string& text)
    {
        set_input(Bytes(text.begin(), text.end()));
    }

    Bytes encode(uint32_t limit)
    {
        Bytes out(limit);
        const int32_t n = AHC_Encode(coder, out.data(), limit);
        out.resize(static_cast<size_t>(n));
        return out;
    }
    std::string decode(uint32_t limit)
    {
        std::string out(limit + 1, 0);
        const int32_t n = AHC_Decode(coder, reinterpret_cast<uint8_t*>(out.data()), limit);
        out.resize(static_cast<size_t>(n));
        return out;
    }
    uint8_t finish()
    {
        const uint8_t last = AHC_EncoderFinish(coder);
        coder = nullptr;
        return last;
    }

    // The whole stream of a text that is handed over in pieces and fetched by calls of the given limit.
    Bytes encode_all(const std::string& text, size_t piece, uint32_t limit)
    {
        make_encoder();
        Bytes coded;
        for (size_t at = 0; at < text.size(); at += piece)
        {
            set_input(text.substr(at, piece));
            for (Bytes part = encode(limit); !part.empty(); part = encode(limit))
                coded.insert(coded.end(), part.begin(), part.end());
        }
        coded.push_back(finish());
        return coded;
    }
    Bytes encode_all(const std::string& text)
    {
        return encode_all(text, 198, 10);
    }

    TestAllocator allocator;
    AdaptiveHuffmanCoder* coder = nullptr;
    Bytes input;
};

TEST_F(AhcCoder, CodesKnownTexts)
{
    EXPECT_EQ(encode_all(""), (Bytes{0x00}));
    EXPECT_EQ(encode_all("A"), (Bytes{0x41, 0x80}));
    EXPECT_EQ(encode_all("AB"), (Bytes{0x41, 0xa1, 0x60}));
    EXPECT_EQ(encode_all("AAAA"), (Bytes{0x41, 0x10}));
    EXPECT_EQ(encode_all("ABAB"), (Bytes{0x41, 0xa1, 0x2c}));
    EXPECT_EQ(encode_all("aab"), (Bytes{0x61, 0x58, 0xb0}));
    EXPECT_EQ(encode_all("abracadabra"), (Bytes{0x61, 0xb1, 0x6e, 0x56, 0xc7, 0x36, 0x49, 0x37}));
}

TEST_F(AhcCoder, SendsTheFirstByteAsItStands)
{
    for (int byte = 0; byte < 256; ++byte)
        EXPECT_EQ(encode_all(std::string(1, static_cast<char>(byte))), (Bytes{static_cast<uint8_t>(byte), 0x80}));
}

TEST_F(AhcCoder, LosesAByteZeroUnlessItIsTheFirst)
{
    EXPECT_EQ(encode_all(std::string("\x41\x00\x42", 3)), (Bytes{0x41, 0xa1, 0x60}));
    EXPECT_EQ(encode_all(std::string("\x00\x41", 2)), (Bytes{0x00, 0xa0, 0xe0}));
    EXPECT_EQ(encode_all(std::string("\x00\x00\x00\x41", 4)), (Bytes{0x00, 0xa0, 0xe0}));

    make_encoder();
    set_input(std::string("\x41\x00\x00", 3));
    EXPECT_EQ(encode(10), (Bytes{0x41}));
    EXPECT_EQ(coder->input_count, 0u);
    EXPECT_EQ(coder->nodes[0].weight, 3u);
    EXPECT_EQ(coder->nodes[1].weight, 1u);
    EXPECT_EQ(coder->next_free, coder->nodes + 3);
}

TEST_F(AhcCoder, StartsWithARootThatIsTheEscapeNode)
{
    make_encoder();
    EXPECT_EQ(coder->nodes[0].weight, 0u);
    EXPECT_EQ(coder->nodes[0].code, 1u);
    EXPECT_EQ(coder->nodes[0].code_length, 0u);
    EXPECT_EQ(coder->nodes[0].parent, nullptr);
    EXPECT_EQ(coder->nodes[0].left, nullptr);
    EXPECT_EQ(coder->nodes[0].right, nullptr);
    EXPECT_EQ(coder->escape, coder->nodes);
    EXPECT_EQ(coder->cursor, coder->nodes);
    EXPECT_EQ(coder->next_free, coder->nodes + 1);
    EXPECT_EQ(coder->bit_position, 7);
    EXPECT_EQ(coder->allocator, allocator.get());
    EXPECT_EQ(coder->input, nullptr);
    EXPECT_EQ(coder->input_count, 0u);
    finish();
    make_decoder();
    EXPECT_EQ(coder->bit_position, -1);
}

TEST_F(AhcCoder, GrowsALeafOnTheLeftAndTheEscapeNodeOnTheRight)
{
    make_encoder();
    set_input("AB");
    encode(10);
    const AHC_Node* nodes = coder->nodes;
    EXPECT_EQ(nodes[0].left, nodes + 1);
    EXPECT_EQ(nodes[0].right, nodes + 2);
    EXPECT_EQ(nodes[1].symbol, 'A');
    EXPECT_EQ(nodes[1].code, 2u);
    EXPECT_EQ(nodes[2].symbol, 0);
    EXPECT_EQ(nodes[2].weight, 1u);
    EXPECT_EQ(nodes[2].left, nodes + 3);
    EXPECT_EQ(nodes[2].right, nodes + 4);
    EXPECT_EQ(nodes[3].symbol, 'B');
    EXPECT_EQ(nodes[3].code, 6u);
    EXPECT_EQ(nodes[3].code_length, 2u);
    EXPECT_EQ(nodes[3].weight, 1u);
    EXPECT_EQ(nodes[4].code, 7u);
    EXPECT_EQ(nodes[4].weight, 0u);
    EXPECT_EQ(nodes[4].parent, nodes + 2);
    EXPECT_EQ(coder->escape, nodes + 4);
}

// --- The tree ---

struct TreeNode
{
    uint64_t weight;
    uint64_t code;
    uint32_t code_length;
    int parent;
    int left;
    int right;
    uint8_t symbol;
};

// The escape node's symbol is left out.
void expect_tree(const AdaptiveHuffmanCoder* coder, const std::vector<TreeNode>& expected)
{
    const AHC_Node* nodes = coder->nodes;
    ASSERT_EQ(coder->next_free, nodes + expected.size());
    ASSERT_EQ(coder->escape, nodes + expected.size() - 1);
    const auto at = [nodes](int number) { return number < 0 ? nullptr : nodes + number; };
    for (size_t i = 0; i < expected.size(); ++i)
    {
        SCOPED_TRACE(i);
        EXPECT_EQ(nodes[i].weight, expected[i].weight);
        EXPECT_EQ(nodes[i].code, expected[i].code);
        EXPECT_EQ(nodes[i].code_length, expected[i].code_length);
        EXPECT_EQ(nodes[i].parent, at(expected[i].parent));
        EXPECT_EQ(nodes[i].left, at(expected[i].left));
        EXPECT_EQ(nodes[i].right, at(expected[i].right));
        EXPECT_TRUE(nodes + i == coder->escape || nodes[i].symbol == expected[i].symbol);
    }
}

// C makes the inner node above B as heavy as A, its sibling on the left: they change sides, and all below is
// renumbered.
TEST_F(AhcCoder, ExchangesSiblings)
{
    make_encoder();
    set_input("ABC");
    encode(10);
    expect_tree(coder, {
                           {3, 0x1, 0, -1, 2, 1, 0},
                           {1, 0x3, 1, 0, -1, -1, 'A'},
                           {2, 0x2, 1, 0, 3, 4, 0},
                           {1, 0x4, 2, 2, -1, -1, 'B'},
                           {1, 0x5, 2, 2, 5, 6, 0},
                           {1, 0xa, 3, 4, -1, -1, 'C'},
                           {0, 0xb, 3, 4, -1, -1, 0},
                       });
}

// The last B weighs 1, as its parent, E and F do. The parent's code is the lowest, so nothing is exchanged, though the
// codes of E and F are lower than B's, too.
TEST_F(AhcCoder, LooksForNoOtherWhereThePartnerIsTheParent)
{
    make_encoder();
    set_input("EFDABAADB");
    encode(20);
    expect_tree(coder, {
                           {9, 0x1, 0, -1, 2, 6, 0},
                           {1, 0xa, 3, 4, -1, -1, 'E'},
                           {5, 0x2, 1, 0, 7, 4, 0},
                           {1, 0xb, 3, 4, -1, -1, 'F'},
                           {2, 0x5, 2, 2, 1, 3, 0},
                           {2, 0x6, 2, 6, -1, -1, 'D'},
                           {4, 0x3, 1, 0, 5, 8, 0},
                           {3, 0x4, 2, 2, -1, -1, 'A'},
                           {2, 0x7, 2, 6, 9, 10, 0},
                           {2, 0xe, 3, 8, -1, -1, 'B'},
                           {0, 0xf, 3, 8, -1, -1, 0},
                       });
}

// With the last B two inner nodes of different parents change places.
TEST_F(AhcCoder, ExchangesWholeSubtrees)
{
    make_encoder();
    set_input("DAECFEEFCB");
    encode(20);
    expect_tree(coder, {
                           {10, 0x1, 0, -1, 2, 6, 0},
                           {1, 0xe, 3, 4, -1, -1, 'D'},
                           {6, 0x2, 1, 0, 5, 8, 0},
                           {1, 0xf, 3, 4, -1, -1, 'A'},
                           {2, 0x7, 2, 6, 1, 3, 0},
                           {3, 0x4, 2, 2, -1, -1, 'E'},
                           {4, 0x3, 1, 0, 9, 4, 0},
                           {2, 0xa, 3, 8, -1, -1, 'C'},
                           {3, 0x5, 2, 2, 7, 10, 0},
                           {2, 0x6, 2, 6, -1, -1, 'F'},
                           {1, 0xb, 3, 8, 11, 12, 0},
                           {1, 0x16, 4, 10, -1, -1, 'B'},
                           {0, 0x17, 4, 10, -1, -1, 0},
                       });
}

// What the escape node's symbol was before is none of the coder's business.
TEST_F(AhcCoder, SendsAByteLikeTheStaleSymbolOfTheEscapeNodeAsANewOne)
{
    make_encoder();
    set_input("A");
    Bytes coded = encode(10);
    coder->escape->symbol = 'B';
    set_input("B");
    for (const uint8_t byte : encode(10))
        coded.push_back(byte);
    coded.push_back(finish());
    EXPECT_EQ(coded, (Bytes{0x41, 0xa1, 0x60}));
}

TEST_F(AhcCoder, GivesTheSameBitsToBothFeeders)
{
    std::string text;
    for (int i = 0; i < 3000; ++i)
        text += "<GGO_Point gpf_X=\"" + std::to_string(i * i) + "\" gpf_Y=\"" + std::to_string(i * 7919) + "\">\n";
    const Bytes by_writer = encode_all(text, 198, 10);
    EXPECT_EQ(encode_all(text, text.size(), 100), by_writer);
    EXPECT_EQ(encode_all(text, 1, 10), by_writer);
    EXPECT_EQ(encode_all(text, 4096, 3), by_writer);
    EXPECT_LT(by_writer.size(), text.size());
}

TEST_F(AhcCoder, AllocatesTwoBlocksAndNoMoreWhileCoding)
{
    encode_all("a text of no great length, but with many a byte");
    EXPECT_EQ(allocator.requests(), 2u);
    EXPECT_EQ(allocator.largest_request(), 513 * sizeof(AHC_Node));
}

TEST_F(AhcCoder, IsNotMadeWithoutMemory)
{
    for (const uint64_t n : {1u, 2u})
    {
        allocator.refuse(n);
        make_encoder();
        EXPECT_EQ(coder, nullptr);
        allocator.refuse(n);
        make_decoder();
        EXPECT_EQ(coder, nullptr);
        EXPECT_EQ(allocator.outstanding(), 0u);
    }
    EXPECT_EQ(AHC_EncoderCreate(nullptr), nullptr);
    EXPECT_EQ(AHC_DecoderCreate(nullptr), nullptr);
}

TEST_F(AhcCoder, LetsNullBe)
{
    uint8_t byte = 7;
    AHC_SetInput(nullptr, &byte, 1);
    EXPECT_EQ(AHC_Encode(nullptr, &byte, 1), 0);
    EXPECT_EQ(AHC_Decode(nullptr, &byte, 1), 0);
    EXPECT_EQ(AHC_EncoderFinish(nullptr), 0);
    AHC_DecoderDestroy(nullptr);
    make_encoder();
    AHC_SetInput(coder, nullptr, 5);
    EXPECT_EQ(coder->input_count, 0u);
    AHC_SetInput(coder, &byte, 1);
    EXPECT_EQ(AHC_Encode(coder, nullptr, 10), 0);
    EXPECT_EQ(AHC_Decode(coder, nullptr, 10), 0);
    EXPECT_EQ(coder->input_count, 1u);
}

// --- The limit ---

TEST_F(AhcCoder, TakesASymbolOnlyIfAllItsBitsFit)
{
    make_encoder();
    set_input("AB");
    // B takes a code of one bit and eight literal bits.
    EXPECT_EQ(encode(2), (Bytes{0x41}));
    EXPECT_EQ(coder->input_count, 1u);
    EXPECT_EQ(encode(1), (Bytes{}));
    EXPECT_EQ(coder->input_count, 1u);
    EXPECT_EQ(encode(2), (Bytes{0xa1}));
    EXPECT_EQ(coder->input_count, 0u);
    EXPECT_EQ(coder->bit_position, 6);
    EXPECT_EQ(finish(), 0x60);
}

TEST_F(AhcCoder, FillsTheLastBitOfTheLimit)
{
    make_encoder();
    set_input("AAAAAAAAA");
    EXPECT_EQ(encode(2), (Bytes{0x41, 0x00}));
    EXPECT_EQ(coder->input_count, 0u);
    EXPECT_EQ(coder->bit_position, 7);
    set_input("AAAAAAAAA");
    EXPECT_EQ(encode(1), (Bytes{0x00}));
    EXPECT_EQ(coder->input_count, 1u);
}

TEST_F(AhcCoder, GivesNothingForNoInput)
{
    make_encoder();
    EXPECT_EQ(encode(10), (Bytes{}));
    set_input("AAA");
    EXPECT_EQ(encode(10), (Bytes{0x41}));
    EXPECT_EQ(encode(10), (Bytes{}));
    EXPECT_EQ(coder->bit_position, 5);
}

TEST_F(AhcCoder, ForgetsPendingInputWhenItGetsOther)
{
    make_encoder();
    set_input("AB");
    EXPECT_EQ(encode(1), (Bytes{0x41}));
    set_input("A");
    EXPECT_EQ(encode(10), (Bytes{}));
    EXPECT_EQ(finish(), 0x40);
}

// --- The end of the stream ---

TEST_F(AhcCoder, CutsTheEscapeCodeToTheLastByte)
{
    // Eight waiting places, an escape code of nine bits: eight of them, all 1.
    std::vector<uint64_t> weights = {256, 128, 64, 32, 16, 8, 4, 2, 1};
    ScanningCoder oracle(ScanningCoder::encoder);
    make_encoder();
    make_chain(coder, &oracle, weights);
    EXPECT_EQ(finish(), 0xff);

    // Six bits waiting, two free.
    make_encoder();
    make_chain(coder, &oracle, weights);
    set_input(Bytes{1, 1, 1, 1, 1, 1});
    EXPECT_EQ(encode(10), (Bytes{}));
    EXPECT_EQ(finish(), 0x03);
}

TEST_F(AhcCoder, KeepsAnEscapeNodeBeside256Symbols)
{
    make_encoder();
    Bytes all(256);
    for (size_t i = 0; i < all.size(); ++i)
        all[i] = static_cast<uint8_t>(i);
    set_input(all);
    EXPECT_GT(encode(1000).size(), 256u);
    EXPECT_EQ(coder->input_count, 0u);
    EXPECT_EQ(coder->next_free, coder->nodes + 513);
    EXPECT_EQ(coder->escape, coder->nodes + 512);
    EXPECT_EQ(coder->escape->weight, 0u);
    EXPECT_EQ(coder->escape->code, 0x3ffu);
    EXPECT_EQ(coder->escape->code_length, 9u);
    EXPECT_EQ(coder->nodes[0].weight, 256u);
    EXPECT_EQ(coder->bit_position, 7);
    EXPECT_EQ(finish(), 0xff);
}

// --- Long codes ---

std::vector<uint64_t> fibonacci_weights(size_t depth)
{
    std::vector<uint64_t> weights(depth, 1);
    for (size_t i = depth; i-- > 2;)
        weights[i - 2] = weights[i - 1] + weights[i];
    return weights;
}

TEST_F(AhcCoder, SendsCodesOver64BitsWithBitNumbersModulo64)
{
    ScanningCoder oracle(ScanningCoder::encoder);
    make_encoder();
    make_chain(coder, &oracle, fibonacci_weights(90));
    EXPECT_EQ(coder->nodes[127].code_length, 64u);
    EXPECT_EQ(coder->nodes[127].code, 0xfffffffffffffffeu);
    // 63 ones and a zero.
    set_input(Bytes{64});
    EXPECT_EQ(encode(100), (Bytes{0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 0xfe}));
    finish();

    // Bits 1 and 0 of the code, then all 64.
    make_encoder();
    make_chain(coder, &oracle, fibonacci_weights(90));
    set_input(Bytes{66});
    EXPECT_EQ(encode(100), (Bytes{0xbf, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff}));
    EXPECT_EQ(coder->bit_position, 5);
    EXPECT_EQ(coder->bit_buffer, 2);
}

TEST_F(AhcCoder, StopsWhereACodeIsLongerThanTheBuffer)
{
    ScanningCoder oracle(ScanningCoder::encoder);
    make_encoder();
    make_chain(coder, &oracle, fibonacci_weights(90));
    const uint64_t weight = coder->nodes[0].weight;
    set_input(Bytes{81});
    EXPECT_EQ(encode(10), (Bytes{}));
    EXPECT_EQ(coder->input_count, 1u);
    EXPECT_EQ(coder->nodes[0].weight, weight);
    // The feeder's next piece goes on where the stream stands.
    set_input(Bytes{80});
    EXPECT_EQ(encode(10).size(), 10u);
    EXPECT_EQ(coder->input_count, 0u);
    finish();

    // A new byte takes the escape code of 73 bits and its literal.
    make_encoder();
    make_chain(coder, &oracle, fibonacci_weights(73));
    set_input(Bytes{200});
    EXPECT_EQ(encode(10), (Bytes{}));
    EXPECT_EQ(coder->input_count, 1u);
    EXPECT_EQ(encode(100).size(), 10u);
}

// --- Decoding ---

TEST_F(AhcCoder, DecodesKnownStreams)
{
    make_decoder();
    set_input(Bytes{0x61, 0xb1, 0x6e, 0x56, 0xc7, 0x36, 0x49, 0x37, 0x00});
    EXPECT_EQ(decode(100).substr(0, 11), "abracadabra");
    AHC_DecoderDestroy(coder);
    make_decoder();
    set_input(Bytes{0x41, 0xa1, 0x2c, 0x00});
    EXPECT_EQ(decode(4), "ABAB");
}

TEST_F(AhcCoder, DecodesASymbolOnlyWhileUnloadedInputRemains)
{
    make_decoder();
    set_input(Bytes{0x41, 0xa1, 0x2c});
    // The last byte is loaded within B, and what it holds behind B waits.
    EXPECT_EQ(decode(100), "AB");
    EXPECT_EQ(coder->input_count, 0u);
    EXPECT_EQ(decode(100), "");
    set_input(Bytes{0x00});
    EXPECT_EQ(decode(2), "AB");
}

TEST_F(AhcCoder, GoesOnAfterACutAnywhere)
{
    std::string text;
    for (int i = 0; i < 40; ++i)
        text += "line " + std::to_string(i) + "\n";
    Bytes coded = encode_all(text);
    coded.push_back(0);
    for (size_t cut = 0; cut <= coded.size(); ++cut)
    {
        make_decoder();
        set_input(Bytes(coded.begin(), coded.begin() + static_cast<ptrdiff_t>(cut)));
        std::string decoded = decode(1000);
        set_input(Bytes(coded.begin() + static_cast<ptrdiff_t>(cut), coded.end()));
        decoded += decode(1000);
        EXPECT_EQ(decoded.substr(0, text.size()), text) << cut;
        AHC_DecoderDestroy(coder);
        coder = nullptr;
    }
}

TEST_F(AhcCoder, StoresALiteralThatWasAwaitedEvenAtLimit0)
{
    make_decoder();
    set_input("Q");
    EXPECT_EQ(decode(0), "Q");
    EXPECT_EQ(decode(0), "");
    // One more, then the escape code, whose literal comes later.
    set_input(Bytes{0x01});
    EXPECT_EQ(decode(100), "Q");
    EXPECT_EQ(coder->cursor, coder->nodes);
    set_input(Bytes{0x5a});
    EXPECT_EQ(decode(0), "");
    EXPECT_EQ(decode(100), "QQQQQQZ");
}

TEST_F(AhcCoder, WaitsForALiteralAtTheEscapeNode)
{
    make_decoder();
    set_input(Bytes{0x41, 0xa1});
    EXPECT_EQ(decode(100), "A");
    EXPECT_EQ(coder->input_count, 0u);
    EXPECT_EQ(coder->cursor, coder->escape);
    EXPECT_EQ(decode(100), "");
    set_input(Bytes{0x60});
    EXPECT_EQ(decode(0), "B");
}

TEST_F(AhcCoder, LeavesTheLastBitOfTheInputWithinACode)
{
    make_decoder();
    // A, B, six times the two bits of a code that starts with 1, then a code cut by the end.
    set_input(Bytes{0x41, 0xa1, 0x00});
    EXPECT_EQ(decode(100), "AB");
    EXPECT_EQ(coder->bit_position, 6);
    set_input(Bytes{0x81});
    EXPECT_EQ(decode(7), "AAAAAAA");
    EXPECT_EQ(decode(100), "B");
    EXPECT_EQ(coder->input_count, 0u);
    EXPECT_EQ(coder->bit_position, 5);
}

TEST_F(AhcCoder, StopsForGoodAtA257thNewSymbol)
{
    Bytes bytes = ScanningCoder::stream_of_literals('Y', 260);
    bytes.insert(bytes.end(), 4, 0xff);
    for (const uint32_t limit : {1000u, 1u, 7u})
    {
        make_decoder();
        set_input(bytes);
        std::string text;
        for (std::string part = decode(limit); !part.empty(); part = decode(limit))
            text += part;
        EXPECT_EQ(text, std::string(256, 'Y'));
        EXPECT_GT(coder->input_count, 0u);
        EXPECT_EQ(coder->cursor, coder->escape);
        EXPECT_EQ(coder->next_free, coder->nodes + 513);
        set_input("more");
        EXPECT_EQ(decode(100), "");
        AHC_DecoderDestroy(coder);
        coder = nullptr;
    }
}

TEST_F(AhcCoder, ReadsAndWritesNothingBeyondItsBlocks)
{
    std::minstd_rand dice(4);
    for (size_t size = 1; size < 300; ++size)
    {
        GuardedBlock data(size);
        for (size_t i = 0; i < size; ++i)
            data.data()[i] = static_cast<uint8_t>(dice());
        GuardedBlock room(1 + size / 3);
        const auto limit = static_cast<uint32_t>(room.size());
        for (AdaptiveHuffmanCoder* (*create)(GMM_Allocator*) : {AHC_DecoderCreate, AHC_EncoderCreate})
        {
            coder = create(allocator.get());
            AHC_SetInput(coder, data.data(), static_cast<uint32_t>(size));
            for (int i = 0; i < 20; ++i)
            {
                const int32_t n = create == AHC_DecoderCreate ? AHC_Decode(coder, room.data(), limit)
                                                              : AHC_Encode(coder, room.data(), limit);
                EXPECT_GE(n, 0);
                EXPECT_LE(n, static_cast<int32_t>(limit));
            }
            AHC_DecoderDestroy(coder);
            coder = nullptr;
        }
    }
}

}  // namespace
