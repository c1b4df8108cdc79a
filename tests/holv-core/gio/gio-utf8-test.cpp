#include "holv-core/gio/gio-utf8.h"

#include "tests/support/guarded-block.h"

#include <gtest/gtest.h>

#include <string>

namespace
{

using orvlog::test::GuardedBlock;

// Decodes a text whose terminator is the last byte of its page.
int32_t decode(const std::string& text, uint32_t* length)
{
    GuardedBlock block(text.c_str(), text.size() + 1);
    return gio_utf8_decode(block.as<char>(), length);
}

struct Row
{
    const char* text;
    int32_t code_point;
    uint32_t length;
};

TEST(Utf8, WellFormedSequences)
{
    const Row rows[] = {
        {"", 0, 1},
        {"A", 0x41, 1},
        {"\x7f", 0x7F, 1},
        {"\xc2\x80", 0x80, 2},
        {"\xc3\xa9", 0xE9, 2},
        {"\xdf\xbf", 0x7FF, 2},
        {"\xe0\xa0\x80", 0x800, 3},
        {"\xe2\x82\xac", 0x20AC, 3},
        {"\xed\x9f\xbf", 0xD7FF, 3},
        {"\xee\x80\x80", 0xE000, 3},
        {"\xef\xbf\xbf", 0xFFFF, 3},
        {"\xf0\x90\x80\x80", 0x10000, 4},
        {"\xf0\x9f\x98\x80", 0x1F600, 4},
        {"\xf4\x8f\xbf\xbf", 0x10FFFF, 4},
    };
    for (const Row& row : rows)
    {
        uint32_t length = 9;
        EXPECT_EQ(decode(row.text, &length), row.code_point);
        EXPECT_EQ(length, row.length);
    }
}

TEST(Utf8, RefusedSequences)
{
    for (const char* text : {"\x80",
                             "\xbf",
                             "\xc0\x80",
                             "\xc1\xbf",
                             "\xc2",
                             "\xc2\x41",
                             "\xc2\xc0",
                             "\xe0\x9f\xbf",
                             "\xe0\xa0",
                             "\xe2\x82",
                             "\xe2\x82\x41",
                             "\xed\xa0\x80",
                             "\xed\xbf\xbf",
                             "\xf0\x8f\xbf\xbf",
                             "\xf0\x9f\x98",
                             "\xf0\x9f",
                             "\xf4\x90\x80\x80",
                             "\xf5\x80\x80\x80",
                             "\xff",
                             "\xfe"})
    {
        uint32_t length = 0;
        EXPECT_EQ(decode(text, &length), -1) << text;
    }
}

TEST(Utf8, NoTextOrNowhereToPutTheLength)
{
    uint32_t length = 9;
    EXPECT_EQ(gio_utf8_decode(nullptr, &length), -1);
    EXPECT_EQ(length, 0U);
    EXPECT_EQ(gio_utf8_decode(nullptr, nullptr), -1);
    EXPECT_EQ(gio_utf8_decode("\xC3\xA9", nullptr), 0xE9);
    EXPECT_EQ(gio_utf8_decode("\xC3", nullptr), -1);
}

TEST(Utf8, RowsOfTheTable)
{
    EXPECT_EQ(gio_utf8_row(0xBF), nullptr);
    for (uint32_t first = 0xC0; first <= 0xFF; ++first)
    {
        const GIO_Utf8Row* row = gio_utf8_row(static_cast<uint8_t>(first));
        ASSERT_NE(row, nullptr);
        EXPECT_EQ(GIO_UTF8_IS_VALID(row), first >= 0xC2 && first <= 0xF4) << first;
    }
    EXPECT_EQ(gio_utf8_row(0xDF)->descriptor, 0x80 | 1 << 5 | 0x1F);
    EXPECT_EQ(gio_utf8_row(0xED)->descriptor, 0x80 | 2 << 5 | 0x0D);
    EXPECT_EQ(gio_utf8_row(0xF4)->descriptor, 0x80 | 3 << 5 | 0x04);
    EXPECT_EQ(gio_utf8_row(0xF4)->range[0][1], 0x8F);
    EXPECT_EQ(sizeof(GIO_Utf8Row), 7U);
}

}  // namespace
