// SPDX-License-Identifier: GPL-2.0-or-later

#include "clients/pdf/text/true-type.h"

#include <gtest/gtest.h>

namespace
{

using orvlog::pdf_client::TrueTypeGlyphs;
using Bytes = std::vector<uint8_t>;

void add(Bytes& bytes, uint32_t number, int size)
{
    for (int i = size - 1; i >= 0; --i)
        bytes.push_back(static_cast<uint8_t>(number >> (8 * i)));
}

void add_row(Bytes& bytes, const char* tag, uint32_t offset, uint32_t length)
{
    bytes.insert(bytes.end(), tag, tag + 4);
    add(bytes, 0, 4);
    add(bytes, offset, 4);
    add(bytes, length, 4);
}

// Three glyphs: four bytes, none, two bytes.
Bytes font(bool long_offsets)
{
    Bytes bytes;
    add(bytes, 0x00010000, 4);
    add(bytes, 3, 2);
    add(bytes, 0, 4);
    add(bytes, 0, 2);
    const uint32_t width = long_offsets ? 4 : 2;
    add_row(bytes, "head", 60, 54);
    add_row(bytes, "loca", 114, 4 * width);
    add_row(bytes, "glyf", 114 + 4 * width, 6);
    bytes.resize(110);
    add(bytes, long_offsets ? 1 : 0, 2);
    bytes.resize(114);
    for (const uint32_t offset : {0U, 4U, 4U, 6U})
        add(bytes, long_offsets ? offset : offset / 2, static_cast<int>(width));
    bytes.insert(bytes.end(), {1, 2, 3, 4, 5, 6});
    return bytes;
}

TEST(TrueTypeGlyphs, FindsEntriesByBothKindsOfOffsets)
{
    for (const bool long_offsets : {false, true})
    {
        const TrueTypeGlyphs glyphs(font(long_offsets));
        EXPECT_EQ(glyphs.entry(0), (Bytes{1, 2, 3, 4}));
        EXPECT_EQ(glyphs.entry(1), Bytes{});
        EXPECT_EQ(glyphs.entry(2), (Bytes{5, 6}));
        EXPECT_EQ(glyphs.entry(3), Bytes{});
        EXPECT_EQ(glyphs.entry(UINT32_MAX), Bytes{});
    }
}

TEST(TrueTypeGlyphs, StaysWithinDamagedFonts)
{
    const Bytes whole = font(true);
    for (size_t length = 0; length < whole.size(); ++length)
    {
        const TrueTypeGlyphs glyphs(Bytes(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(length)));
        EXPECT_EQ(glyphs.entry(2), Bytes{}) << length;
    }
    for (size_t place = 0; place < whole.size(); ++place)
    {
        Bytes bent = whole;
        bent[place] = 0xFF;
        const TrueTypeGlyphs glyphs(bent);
        EXPECT_LE(glyphs.entry(0).size(), 6U) << place;
    }
}

}  // namespace
