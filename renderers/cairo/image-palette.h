// The colours of images with few different pixels: each pixel is one stored value of at most eight bits.

#pragma once

#include "renderers/cairo/image-decoder.h"
#include "renderers/cairo/image-layout.h"

#include <array>
#include <bitset>
#include <cstdint>

namespace orvlog::cairo_renderer
{

class Palette
{
public:
    // True for images whose pixels have a palette.
    static bool suits(const Layout& layout);

    // Both are borrowed.
    Palette(Decoder& decoder, const Layout& layout);

    // Looks up the colours of the values in a stored row. Others aren't asked for: a colour table may end with the
    // last value that the image has.
    void learn(const uint8_t* row);

    // How many colours have been looked up.
    size_t known() const
    {
        return known_.count();
    }
    // Clear for a value that wasn't in a row yet.
    const Pixel& pixel(uint32_t value) const
    {
        return pixels_[value];
    }

private:
    void learn_value(uint32_t value);

    Decoder& decoder_;
    const Layout& layout_;
    std::bitset<256> known_;
    std::array<Pixel, 256> pixels_{};
};

// The value of a pixel in a row of values of at most eight bits.
inline uint32_t value_at(const uint8_t* row, uint32_t column, uint32_t bits)
{
    const uint64_t bit = uint64_t{column} * bits;
    return static_cast<uint32_t>(row[bit / 8]) >> (8U - bits - bit % 8U) & ((1U << bits) - 1U);
}

// The last byte of a row of single bits, without those that lie behind the image.
inline uint8_t last_bits(const uint8_t* row, const Layout& layout)
{
    const uint64_t behind = layout.row_bytes * 8 - layout.width;
    return static_cast<uint8_t>(row[layout.row_bytes - 1] & (0xFFU << behind));
}

}  // namespace orvlog::cairo_renderer
