// The texts of ICC profiles.

#include "inspect/redact/stand-ins.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <string>
#include <vector>

namespace
{

using Bytes = std::vector<uint8_t>;

void put_u32(Bytes& bytes, size_t at, uint32_t value)
{
    for (size_t i = 0; i < 4; ++i)
        bytes[at + i] = static_cast<uint8_t>(value >> (24 - 8 * i));
}

void put(Bytes& bytes, size_t at, const std::string& text)
{
    std::copy(text.begin(), text.end(), bytes.begin() + static_cast<std::ptrdiff_t>(at));
}

// With a desc, a text, a mluc and a curv.
Bytes profile()
{
    Bytes bytes(300);
    put_u32(bytes, 0, 300);
    put(bytes, 36, "acsp");
    put(bytes, 48, "MAKR");
    put_u32(bytes, 128, 4);
    const auto tag = [&](size_t i, const std::string& name, uint32_t begin, uint32_t size)
    {
        put(bytes, 132 + 12 * i, name);
        put_u32(bytes, 136 + 12 * i, begin);
        put_u32(bytes, 140 + 12 * i, size);
    };
    tag(0, "desc", 180, 24);
    tag(1, "cprt", 204, 20);
    tag(2, "dmnd", 224, 36);
    tag(3, "kTRC", 260, 14);
    put(bytes, 180, "desc");
    put_u32(bytes, 188, 7);
    put(bytes, 192, "Secret");
    put(bytes, 204, "text");
    put(bytes, 212, "Nobody");
    put(bytes, 224, "mluc");
    put_u32(bytes, 232, 1);
    put_u32(bytes, 236, 12);
    put(bytes, 240, "enUS");
    put_u32(bytes, 244, 8);
    put_u32(bytes, 248, 28);
    put(bytes, 253, "A");
    put(bytes, 255, "B");
    put(bytes, 260, "curv");
    put_u32(bytes, 268, 1);
    bytes[272] = 2;
    put(bytes, 280, "hidden behind");
    return bytes;
}

std::string text_of(const Bytes& bytes, size_t at, size_t size)
{
    return {bytes.begin() + static_cast<std::ptrdiff_t>(at), bytes.begin() + static_cast<std::ptrdiff_t>(at + size)};
}

TEST(RedactProfile, TakesTextsOutAndLeavesNumbers)
{
    Bytes bytes = profile();
    EXPECT_EQ(orvlog::inspect::redact_profile(bytes), 3U);
    EXPECT_EQ(bytes.size(), 300U);
    EXPECT_EQ(text_of(bytes, 192, 7), std::string("xxxxxx\0", 7));
    EXPECT_EQ(text_of(bytes, 212, 7), std::string("xxxxxx\0", 7));
    EXPECT_EQ(text_of(bytes, 252, 4), std::string("\0x\0x", 4));
    EXPECT_EQ(text_of(bytes, 260, 4), "curv");
    EXPECT_EQ(bytes[272], 2);
    EXPECT_EQ(text_of(bytes, 48, 4), std::string(4, '\0'));
    EXPECT_EQ(text_of(bytes, 280, 13), std::string(13, '\0'));
    EXPECT_EQ(text_of(bytes, 180, 4), "desc");
}

TEST(RedactProfile, TakesNoTextForNumbers)
{
    // A curve that says to reach over the text behind a mluc's.
    Bytes overlapping = profile();
    put(overlapping, 180, "curv");
    put_u32(overlapping, 140, 44);
    orvlog::inspect::redact_profile(overlapping);
    EXPECT_EQ(overlapping, Bytes(300));
    // A table of translations that says to be as long as all of it.
    Bytes table = profile();
    put_u32(table, 232, 2);
    put_u32(table, 256, 1);
    put(table, 248, "Secret");
    orvlog::inspect::redact_profile(table);
    EXPECT_EQ(text_of(table, 248, 6), std::string("\0x\0x\0x", 6));
    Bytes bytes = profile();
    put(bytes, 204, "ui08");
    put(bytes, 100, "reserved");
    put_u32(bytes, 24, 0x07E90506);
    orvlog::inspect::redact_profile(bytes);
    EXPECT_EQ(text_of(bytes, 212, 6), std::string(6, '\0'));
    EXPECT_EQ(text_of(bytes, 100, 8), std::string(8, '\0'));
    EXPECT_EQ(text_of(bytes, 24, 4), std::string(4, '\0'));
    EXPECT_EQ(text_of(bytes, 260, 4), "curv");
}

TEST(RedactProfile, TellsNothingOfOneThatIsNotWhole)
{
    for (const size_t size : {0U, 3U, 127U, 128U, 131U, 179U, 299U})
    {
        Bytes bytes = profile();
        bytes.resize(size);
        orvlog::inspect::redact_profile(bytes);
        EXPECT_EQ(bytes, Bytes(size)) << size;
    }
    Bytes beyond = profile();
    put_u32(beyond, 136, 0xFFFFFFF0);
    orvlog::inspect::redact_profile(beyond);
    EXPECT_EQ(beyond, Bytes(300));
}

}  // namespace
