// SPDX-License-Identifier: GPL-2.0-or-later

#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace orvlog::pdf_client
{

// The outlines of a TrueType font as the font file has them. Sound for any bytes: what isn't there is empty.
class TrueTypeGlyphs
{
public:
    TrueTypeGlyphs() = default;
    explicit TrueTypeGlyphs(std::vector<uint8_t> font);

    // The entry of the glyf table; empty for glyphs without an outline and for fonts of another kind.
    std::vector<uint8_t> entry(uint32_t glyph) const;

private:
    struct Table
    {
        size_t offset = 0;
        size_t length = 0;
    };

    uint32_t number_at(size_t offset, size_t bytes) const;
    Table find_table(const char* tag) const;

    std::vector<uint8_t> font_;
    Table glyf_;
    Table loca_;
    bool long_offsets_ = false;
};

}  // namespace orvlog::pdf_client
