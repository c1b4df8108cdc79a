#include "renderers/cairo/image-palette.h"

#include <algorithm>

namespace orvlog::cairo_renderer
{
namespace
{

bool has_ones(const uint8_t* row, const Layout& layout)
{
    const auto any = [](uint8_t byte) { return byte != 0; };
    return last_bits(row, layout) != 0 || std::any_of(row, row + layout.row_bytes - 1, any);
}

bool has_zeros(const uint8_t* row, const Layout& layout)
{
    const auto some = [](uint8_t byte) { return byte != 0xFF; };
    const uint64_t behind = layout.row_bytes * 8 - layout.width;
    return last_bits(row, layout) != static_cast<uint8_t>(0xFFU << behind) ||
           std::any_of(row, row + layout.row_bytes - 1, some);
}

}  // namespace

bool Palette::suits(const Layout& layout)
{
    return layout.bits <= 8 && (layout.indexed || layout.channels == 1);
}

// A shade needs no table, so that all of them are known from the beginning.
Palette::Palette(Decoder& decoder, const Layout& layout) : decoder_(decoder), layout_(layout)
{
    for (uint32_t value = 0; !layout.indexed && value < (1U << layout.bits); ++value)
        learn_value(value);
}

void Palette::learn_value(uint32_t value)
{
    if (known_[value])
        return;
    known_[value] = true;
    pixels_[value] = decoder_.pixel_of(value);
}

void Palette::learn(const uint8_t* row)
{
    if (known_.count() == size_t{1} << layout_.bits)
        return;
    if (layout_.bits == 1)
    {
        if (has_zeros(row, layout_))
            learn_value(0);
        if (has_ones(row, layout_))
            learn_value(1);
        return;
    }
    for (uint32_t column = 0; column < layout_.width; ++column)
        learn_value(value_at(row, column, layout_.bits));
}

}  // namespace orvlog::cairo_renderer
