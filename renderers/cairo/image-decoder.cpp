#include "renderers/cairo/image-decoder.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>

namespace orvlog::cairo_renderer
{
namespace
{

// One packed value; `index` counts values from `bytes` on.
double sample(const uint8_t* bytes, uint64_t index, uint32_t bits, bool big_endian)
{
    if (bits == 8)
        return bytes[index] / 255.0;
    if (bits == 16)
    {
        const uint8_t* pair = bytes + index * 2;
        const unsigned value = big_endian ? pair[0] * 256U + pair[1] : pair[1] * 256U + pair[0];
        return value / 65535.0;
    }
    if (bits == 32)
    {
        float value = 0.0F;
        std::memcpy(&value, bytes + index * 4, sizeof value);
        return value > 0.0F ? std::min(static_cast<double>(value), 1.0) : 0.0;
    }
    const uint64_t bit = index * bits;
    const unsigned mask = (1U << bits) - 1U;
    return static_cast<double>((bytes[bit / 8] >> (8 - bits - bit % 8)) & mask) / mask;
}

uint32_t index_sample(const uint8_t* bytes, uint64_t index, uint32_t bits, bool big_endian)
{
    const double full = static_cast<double>((uint64_t{1} << bits) - 1);
    return static_cast<uint32_t>(std::lround(sample(bytes, index, bits, big_endian) * full));
}

}  // namespace

void Decoder::gather(const uint8_t* rows, uint32_t column)
{
    const uint32_t count = layout_.channels;
    if (layout_.indexed)
    {
        const uint64_t entry = index_sample(rows, column, layout_.bits, layout_.big_endian);
        const uint32_t bits = depth_bits(record_.imp_Image->im_IndexColorDepth);
        for (uint32_t i = 0; i < count; ++i)
            values_[i] = bits == 0 ? 0.0F
                                   : static_cast<float>(sample(record_.imp_IndexColorTable, entry * count + i, bits,
                                                               layout_.big_endian));
        return;
    }
    for (uint32_t i = 0; i < count; ++i)
    {
        const uint8_t* from = layout_.planar ? rows + i * layout_.row_bytes : rows;
        const uint64_t index = layout_.planar ? column : static_cast<uint64_t>(column) * count + i;
        values_[i] = static_cast<float>(sample(from, index, layout_.bits, layout_.big_endian));
    }
}

Pixel Decoder::convert() const
{
    double alpha = layout_.alpha ? static_cast<double>(values_[0]) : 1.0;
    std::array<float, 64> colours{};
    const uint32_t first = layout_.alpha ? 1U : 0U;
    const uint32_t count = std::min<uint32_t>(layout_.channels - first, colours.size());
    for (uint32_t i = 0; i < count; ++i)
    {
        colours[i] = values_[first + i];
        if (layout_.premultiplied && layout_.alpha && alpha > 0.0)
            colours[i] = static_cast<float>(std::min(1.0, colours[i] / alpha));
    }
    const Rgb colour = space_.convert(colours.data());
    alpha *= layout_.constant_alpha;
    if (use_ == BrushUse::mask)
        return {0.0, 0.0, 0.0, luminance(colour) * alpha};
    return {colour.red * alpha, colour.green * alpha, colour.blue * alpha, alpha};
}

Pixel Decoder::pixel_of(uint32_t value)
{
    const auto byte = static_cast<uint8_t>(value << (8 - layout_.bits));
    gather(&byte, 0);
    return convert();
}

void Decoder::decode(const uint8_t* rows, std::vector<Pixel>& pixels)
{
    for (uint32_t column = 0; column < layout_.width; ++column)
    {
        gather(rows, column);
        if (values_ != last_)
        {
            last_pixel_ = convert();
            last_ = values_;
        }
        pixels[column] = last_pixel_;
    }
}

}  // namespace orvlog::cairo_renderer
