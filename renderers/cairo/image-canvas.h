// Collects the pixels of an image on a surface.

#pragma once

#include "renderers/cairo/image-decoder.h"
#include "renderers/cairo/image-layout.h"
#include "renderers/cairo/image-palette.h"
#include "renderers/cairo/image-reader.h"
#include "renderers/cairo/scene.h"

#include <array>
#include <cstdint>
#include <vector>

namespace orvlog::cairo_renderer
{

// Takes pixels row by row; `coarse` by `coarse` of them become one.
class Canvas
{
public:
    Canvas(const Layout& layout, uint32_t coarse, BrushUse use);

    cairo_surface_t* surface() const
    {
        return surface_.get();
    }
    SurfacePtr take()
    {
        cairo_surface_mark_dirty(surface_.get());
        return surface_;
    }
    void add_row(const std::vector<Pixel>& pixels);
    // A stored row whose values have their colours in `palette`, the same one for all rows.
    void add_row(const uint8_t* row, const Palette& palette);
    void finish();

private:
    static constexpr uint32_t kMaxCounted = 16;  // above, single bits are added up like all others

    uint32_t columns() const;
    uint8_t* line(uint32_t row);
    void put(uint8_t* line, uint32_t column, uint32_t word) const;
    uint32_t word_of(const Pixel& pixel) const;
    void copy(const uint8_t* row, const Palette& palette);
    void copy_bits(const uint8_t* row, uint8_t* line) const;
    void count_ones(const uint8_t* row);
    void count_pairs(const uint8_t* row);
    void add(uint32_t column, const Pixel& pixel);
    void end_row();
    void store(uint32_t row);
    void store_counts(uint8_t* line);
    void store_sums(uint8_t* line);

    const Layout& layout_;
    BrushUse use_;
    uint32_t coarse_;
    uint32_t rows_in_sum_ = 0;
    uint32_t rows_counted_ = 0;  // of these
    uint32_t row_ = 0;
    std::vector<Pixel> sums_;
    std::vector<uint16_t> ones_;  // single bits of the rows counted that are set
    const Palette* palette_ = nullptr;
    size_t shades_known_ = 0;
    std::array<uint32_t, kMaxCounted * kMaxCounted + 1> shades_{};  // by ones, or by value when nothing is reduced
    SurfacePtr surface_;
};

}  // namespace orvlog::cairo_renderer
