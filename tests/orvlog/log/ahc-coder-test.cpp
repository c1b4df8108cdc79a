#include "orvlog/log/ahc-coder.h"

#include "tests/support/test-allocator.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace
{

using orvlog::test::TestAllocator;
using Bytes = std::vector<uint8_t>;

Bytes encode(const std::string& text, uint32_t limit = 100)
{
    TestAllocator allocator;
    AdaptiveHuffmanCoder* coder = AHC_EncoderCreate(allocator.get());
    AHC_SetInput(coder, reinterpret_cast<const uint8_t*>(text.data()), static_cast<uint32_t>(text.size()));
    Bytes coded;
    Bytes buffer(limit);
    for (int32_t n = AHC_Encode(coder, buffer.data(), limit); n > 0; n = AHC_Encode(coder, buffer.data(), limit))
        coded.insert(coded.end(), buffer.begin(), buffer.begin() + n);
    coded.push_back(AHC_EncoderFinish(coder));
    EXPECT_EQ(allocator.requests(), 2u);
    EXPECT_EQ(allocator.outstanding(), 0u);
    return coded;
}

TEST(AhcCoder, CodesKnownTexts)
{
    EXPECT_EQ(encode(""), (Bytes{0x00}));
    EXPECT_EQ(encode("A"), (Bytes{0x41, 0x80}));
    EXPECT_EQ(encode("AB"), (Bytes{0x41, 0xa1, 0x60}));
    EXPECT_EQ(encode("AAAA"), (Bytes{0x41, 0x10}));
    EXPECT_EQ(encode("ABAB"), (Bytes{0x41, 0xa1, 0x2c}));
    EXPECT_EQ(encode("aab"), (Bytes{0x61, 0x58, 0xb0}));
    EXPECT_EQ(encode("abracadabra"), (Bytes{0x61, 0xb1, 0x6e, 0x56, 0xc7, 0x36, 0x49, 0x37}));
}

TEST(AhcCoder, LosesAByteZeroUnlessItIsTheFirst)
{
    EXPECT_EQ(encode(std::string("\x41\x00\x42", 3)), (Bytes{0x41, 0xa1, 0x60}));
    EXPECT_EQ(encode(std::string("\x00\x41", 2)), (Bytes{0x00, 0xa0, 0xe0}));
}

}  // namespace
