// SPDX-License-Identifier: GPL-2.0-or-later

#include "clients/pdf/text/true-type.h"

#include <cstring>

namespace orvlog::pdf_client
{

TrueTypeGlyphs::TrueTypeGlyphs(std::vector<uint8_t> font) : font_(std::move(font))
{
    constexpr size_t kOffsetFormatInHead = 50;
    const Table head = find_table("head");
    glyf_ = find_table("glyf");
    loca_ = find_table("loca");
    long_offsets_ = head.length >= kOffsetFormatInHead + 2 && number_at(head.offset + kOffsetFormatInHead, 2) != 0;
}

// 0 beyond the end.
uint32_t TrueTypeGlyphs::number_at(size_t offset, size_t bytes) const
{
    if (offset > font_.size() || font_.size() - offset < bytes)
        return 0;
    uint32_t number = 0;
    for (size_t i = 0; i < bytes; ++i)
        number = number << 8 | font_[offset + i];
    return number;
}

TrueTypeGlyphs::Table TrueTypeGlyphs::find_table(const char* tag) const
{
    constexpr size_t kHeader = 12;
    constexpr size_t kRow = 16;
    const uint32_t count = number_at(4, 2);
    for (size_t i = 0; i < count && kHeader + (i + 1) * kRow <= font_.size(); ++i)
    {
        const size_t place = kHeader + i * kRow;
        if (std::memcmp(&font_[place], tag, 4) == 0)
        {
            const Table table = {number_at(place + 8, 4), number_at(place + 12, 4)};
            const bool within = table.offset <= font_.size() && table.length <= font_.size() - table.offset;
            return within ? table : Table{};
        }
    }
    return {};
}

std::vector<uint8_t> TrueTypeGlyphs::entry(uint32_t glyph) const
{
    const size_t width = long_offsets_ ? 4 : 2;
    const size_t place = static_cast<size_t>(glyph) * width;
    if (loca_.length < 2 * width || place > loca_.length - 2 * width)
        return {};
    const size_t unit = long_offsets_ ? 1 : 2;
    const size_t start = number_at(loca_.offset + place, width) * unit;
    const size_t end = number_at(loca_.offset + place + width, width) * unit;
    if (start >= end || end > glyf_.length)
        return {};
    const auto first = font_.begin() + static_cast<std::ptrdiff_t>(glyf_.offset);
    return {first + static_cast<std::ptrdiff_t>(start), first + static_cast<std::ptrdiff_t>(end)};
}

}  // namespace orvlog::pdf_client
