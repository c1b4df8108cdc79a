#include "renderers/cairo/image-canvas.h"

#include <algorithm>
#include <bit>
#include <cstring>

namespace orvlog::cairo_renderer
{
namespace
{

uint32_t to_byte(double value)
{
    const double scaled = std::clamp(value, 0.0, 1.0) * 255.0;
    const auto whole = static_cast<uint32_t>(scaled);
    return whole + (scaled - whole >= 0.5 ? 1U : 0U);
}

// For each byte what `make` makes of it.
template <typename Entry, typename Make> constexpr std::array<Entry, 256> for_bytes(Make make)
{
    std::array<Entry, 256> table{};
    for (uint32_t byte = 0; byte < table.size(); ++byte)
        table[byte] = make(byte);
    return table;
}

using Bytes = std::array<uint8_t, 8>;
using Pairs = std::array<uint16_t, 4>;

// The bits of a byte, first to last, each as a byte that is full where it is set.
constexpr std::array<Bytes, 256> kSpreadBits = for_bytes<Bytes>(
    [](uint32_t byte)
    {
        Bytes bytes{};
        for (uint32_t i = 0; i < 8; ++i)
            bytes[i] = (byte >> (7 - i) & 1U) != 0 ? 0xFF : 0;
        return bytes;
    });

// How many of each two bits of a byte are set, first to last.
constexpr std::array<Pairs, 256> kOnesInPairs = for_bytes<Pairs>(
    [](uint32_t byte)
    {
        Pairs pairs{};
        for (uint32_t i = 0; i < 4; ++i)
            pairs[i] = static_cast<uint16_t>((byte >> (7 - 2 * i) & 1U) + (byte >> (6 - 2 * i) & 1U));
        return pairs;
    });

}  // namespace

Canvas::Canvas(const Layout& layout, uint32_t coarse, BrushUse use) : layout_(layout), use_(use), coarse_(coarse)
{
    const auto side = [&](uint32_t length) { return (length + coarse_ - 1) / coarse_; };
    surface_ = own_surface(cairo_image_surface_create(use == BrushUse::mask ? CAIRO_FORMAT_A8 : CAIRO_FORMAT_ARGB32,
                                                      static_cast<int>(side(layout.width)),
                                                      static_cast<int>(side(layout.height))));
    sums_.resize(coarse_ > 1 ? side(layout.width) : 0);
    // A byte of bits is counted as a whole, and may reach beyond the last column.
    ones_.resize(coarse_ > 1 && coarse_ <= kMaxCounted && layout.bits == 1 ? side(layout.width) + size_t{4} : 0);
    cairo_surface_flush(surface_.get());
}

uint32_t Canvas::columns() const
{
    return (layout_.width + coarse_ - 1) / coarse_;
}

// Null for a surface without memory.
uint8_t* Canvas::line(uint32_t row)
{
    uint8_t* data = cairo_image_surface_get_data(surface_.get());
    return data == nullptr ? nullptr
                           : data + static_cast<std::ptrdiff_t>(row) * cairo_image_surface_get_stride(surface_.get());
}

void Canvas::put(uint8_t* line, uint32_t column, uint32_t word) const
{
    if (use_ == BrushUse::mask)
        line[column] = static_cast<uint8_t>(word);
    else
        std::memcpy(line + column * size_t{4}, &word, sizeof word);
}

uint32_t Canvas::word_of(const Pixel& pixel) const
{
    if (use_ == BrushUse::mask)
        return to_byte(pixel.alpha);
    return to_byte(pixel.alpha) << 24 | to_byte(pixel.red) << 16 | to_byte(pixel.green) << 8 | to_byte(pixel.blue);
}

void Canvas::add(uint32_t column, const Pixel& pixel)
{
    Pixel& sum = sums_[column / coarse_];
    sum.red += pixel.red;
    sum.green += pixel.green;
    sum.blue += pixel.blue;
    sum.alpha += pixel.alpha;
}

void Canvas::end_row()
{
    if (++rows_in_sum_ == coarse_)
        store(row_++);
}

void Canvas::add_row(const std::vector<Pixel>& pixels)
{
    if (coarse_ == 1)
    {
        uint8_t* to = line(row_++);
        for (uint32_t column = 0; to != nullptr && column < layout_.width; ++column)
            put(to, column, word_of(pixels[column]));
        return;
    }
    for (uint32_t column = 0; column < layout_.width; ++column)
        add(column, pixels[column]);
    end_row();
}

void Canvas::add_row(const uint8_t* row, const Palette& palette)
{
    palette_ = &palette;
    if (coarse_ == 1)
        return copy(row, palette);
    if (!ones_.empty())
    {
        coarse_ == 2 ? count_pairs(row) : count_ones(row);
        ++rows_counted_;
        return end_row();
    }
    for (uint32_t column = 0; column < layout_.width; ++column)
        add(column, palette.pixel(value_at(row, column, layout_.bits)));
    end_row();
}

void Canvas::copy(const uint8_t* row, const Palette& palette)
{
    uint8_t* to = line(row_++);
    if (to == nullptr)
        return;
    if (shades_known_ != palette.known())
        for (uint32_t value = 0; value < (1U << layout_.bits); ++value)
            shades_[value] = word_of(palette.pixel(value));
    shades_known_ = palette.known();
    if (layout_.bits == 1 && use_ == BrushUse::mask)
        return copy_bits(row, to);
    for (uint32_t column = 0; column < layout_.width; ++column)
        put(to, column, shades_[value_at(row, column, layout_.bits)]);
}

// Eight pixels of a mask at a time.
void Canvas::copy_bits(const uint8_t* row, uint8_t* line) const
{
    constexpr uint64_t kEach = 0x0101010101010101U;
    const uint64_t ones = kEach * shades_[1];
    const uint64_t zeros = kEach * shades_[0];
    for (uint32_t column = 0; column < layout_.width; column += 8)
    {
        const auto set = std::bit_cast<uint64_t>(kSpreadBits[row[column / 8]]);
        const uint64_t eight = (set & ones) | (~set & zeros);
        std::memcpy(line + column, &eight, std::min<size_t>(layout_.width - column, sizeof eight));
    }
}

void Canvas::count_pairs(const uint8_t* row)
{
    const auto count = [counts = ones_.data()](uint64_t at, uint8_t byte)
    {
        uint64_t four = 0;
        std::memcpy(&four, counts + at * 4, sizeof four);
        four += std::bit_cast<uint64_t>(kOnesInPairs[byte]);
        std::memcpy(counts + at * 4, &four, sizeof four);
    };
    const uint64_t last = layout_.row_bytes - 1;
    for (uint64_t at = 0; at < last; ++at)
        count(at, row[at]);
    count(last, last_bits(row, layout_));
}

void Canvas::count_ones(const uint8_t* row)
{
    const uint64_t last = layout_.row_bytes - 1;
    const auto byte = [&](uint64_t at) -> uint32_t {
        return at < last ? row[at] : at == last ? last_bits(row, layout_) : 0U;
    };
    for (uint32_t column = 0; column < columns(); ++column)
    {
        const uint64_t bit = uint64_t{column} * coarse_;
        const uint32_t window = byte(bit / 8) << 16 | byte(bit / 8 + 1) << 8 | byte(bit / 8 + 2);
        const uint32_t bits = window >> (24 - bit % 8 - coarse_) & ((1U << coarse_) - 1U);
        ones_[column] = static_cast<uint16_t>(ones_[column] + std::popcount(bits));
    }
}

void Canvas::finish()
{
    if (rows_in_sum_ != 0)
        store(row_++);
}

void Canvas::store(uint32_t row)
{
    uint8_t* to = line(row);
    if (to == nullptr)
        return;
    if (rows_counted_ == coarse_)
        store_counts(to);
    else
    {
        store_sums(to);
        std::fill(sums_.begin(), sums_.end(), Pixel{});
    }
    std::fill(ones_.begin(), ones_.end(), uint16_t{0});
    rows_in_sum_ = 0;
    rows_counted_ = 0;
}

namespace
{

// So many pixels of two colours together, and a sum beside them, as one pixel of `all`.
Pixel mean(const Pixel& sum, const Pixel& one, uint32_t ones, const Pixel& zero, uint32_t zeros, double all)
{
    const auto mix = [&](double Pixel::*part)
    { return (sum.*part + one.*part * ones + zero.*part * zeros) * (1.0 / all); };
    return {mix(&Pixel::red), mix(&Pixel::green), mix(&Pixel::blue), mix(&Pixel::alpha)};
}

}  // namespace

// All pixels are counted, so that a pixel's shade follows from its number of ones; the last one may be narrower.
void Canvas::store_counts(uint8_t* line)
{
    const uint32_t all = coarse_ * coarse_;
    if (shades_known_ != palette_->known())
        for (uint32_t ones = 0; ones <= all; ++ones)
            shades_[ones] = word_of(mean({}, palette_->pixel(1), ones, palette_->pixel(0), all - ones, all));
    shades_known_ = palette_->known();
    const uint32_t last = columns() - 1;
    const uint16_t* counts = ones_.data();
    const uint32_t* shades = shades_.data();
    if (use_ == BrushUse::mask)
        std::transform(counts, counts + last, line, [&](uint16_t ones) { return static_cast<uint8_t>(shades[ones]); });
    else
        for (uint32_t column = 0; column < last; ++column)
            put(line, column, shades[counts[column]]);
    const uint32_t rest = (layout_.width - last * coarse_) * coarse_;
    const uint32_t ones = ones_[last];
    put(line, last, word_of(mean({}, palette_->pixel(1), ones, palette_->pixel(0), rest - ones, rest)));
}

void Canvas::store_sums(uint8_t* line)
{
    for (uint32_t column = 0; column < columns(); ++column)
    {
        const uint32_t wide = std::min(coarse_, layout_.width - column * coarse_);
        const double all = static_cast<double>(wide) * rows_in_sum_;
        const uint32_t ones = rows_counted_ == 0 ? 0 : ones_[column];
        const uint32_t zeros = wide * rows_counted_ - ones;
        const Pixel one = rows_counted_ == 0 ? Pixel{} : palette_->pixel(1);
        const Pixel zero = rows_counted_ == 0 ? Pixel{} : palette_->pixel(0);
        put(line, column, word_of(mean(sums_[column], one, ones, zero, zeros, all)));
    }
}

}  // namespace orvlog::cairo_renderer
