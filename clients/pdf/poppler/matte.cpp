// SPDX-License-Identifier: GPL-2.0-or-later

#include "clients/pdf/poppler/matte.h"

#include "clients/pdf/poppler/colours.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numeric>

#include <Dict.h>
#include <GfxState.h>
#include <Object.h>
#include <Stream.h>

namespace orvlog::pdf_client
{

namespace
{

constexpr uint64_t kGreatestMask = 256U << 20;

// The mask's samples as bytes; those that its data doesn't have are 0.
std::vector<uint8_t> alphas_of(const Image& mask)
{
    std::vector<uint8_t> alphas(static_cast<size_t>(mask.width) * mask.height);
    std::vector<uint8_t> row(mask.row_bytes());
    bool more = mask.rows->restart();
    for (size_t y = 0; more && y < mask.height; ++y)
    {
        std::fill(row.begin(), row.end(), uint8_t{0});
        more = mask.rows->read_row(row.data(), row.size()) == row.size();
        for (size_t x = 0; x < mask.width; ++x)
        {
            const size_t bit = x * mask.bits;
            const unsigned most = (1U << std::min<unsigned>(mask.bits, 8)) - 1;
            // Of 16 bits the high byte comes first.
            const unsigned value = mask.bits >= 8 ? row[bit / 8] : row[bit / 8] >> (8 - mask.bits - bit % 8) & most;
            alphas[y * mask.width + x] = static_cast<uint8_t>(value * 255 / most);
        }
    }
    return alphas;
}

class RowsWithoutMatte : public ImageRows
{
public:
    RowsWithoutMatte(const Image& image, const Image& mask, const std::array<double, 4>& matte)
        : rows_(image.rows), width_(image.width), height_(image.height), channels_(image.space.channels),
          mask_width_(mask.width), mask_height_(mask.height), alphas_(alphas_of(mask)), matte_(matte),
          row_alphas_(image.width)
    {
    }

    bool restart() override
    {
        row_ = 0;
        return rows_->restart();
    }

    size_t read_row(uint8_t* row, size_t size) override
    {
        const size_t came = rows_->read_row(row, size);
        if (came == 0 || row_ >= height_)
            return came;
        find_alphas(row_++);
        for (size_t i = 0; i < came; ++i)
        {
            const double matte = matte_[i % channels_] * 255;
            const unsigned alpha = row_alphas_[i / channels_];
            const double own = alpha == 0 ? row[i] : matte + (row[i] - matte) * 255 / alpha;
            row[i] = static_cast<uint8_t>(std::lround(std::clamp(own, 0.0, 255.0)));
        }
        return came;
    }

private:
    // The samples of the mask that lie on one of the image, or on a row of it.
    struct Span
    {
        size_t begin;
        size_t end;
    };

    static Span on(size_t sample, size_t samples, size_t of_mask)
    {
        const size_t begin = sample * of_mask / samples;
        return {begin, std::max(begin + 1, ((sample + 1) * of_mask + samples - 1) / samples)};
    }

    // The mean of the alphas on each sample of the row.
    void find_alphas(size_t row)
    {
        const Span rows = on(row, height_, mask_height_);
        if (rows.begin == found_.begin && rows.end == found_.end)
            return;
        found_ = rows;
        for (size_t x = 0; x < width_; ++x)
        {
            const Span columns = on(x, width_, mask_width_);
            size_t sum = 0;
            for (size_t y = rows.begin; y < rows.end; ++y)
            {
                const auto line = alphas_.begin() + static_cast<std::ptrdiff_t>(y * mask_width_);
                sum = std::accumulate(line + static_cast<std::ptrdiff_t>(columns.begin),
                                      line + static_cast<std::ptrdiff_t>(columns.end), sum);
            }
            const size_t count = (rows.end - rows.begin) * (columns.end - columns.begin);
            row_alphas_[x] = static_cast<uint8_t>((sum + count / 2) / count);
        }
    }

    std::shared_ptr<ImageRows> rows_;
    size_t width_;
    size_t height_;
    size_t channels_;
    size_t mask_width_;
    size_t mask_height_;
    std::vector<uint8_t> alphas_;
    std::array<double, 4> matte_;
    std::vector<uint8_t> row_alphas_;  // of the row that was read last
    Span found_{0, 0};                 // the mask's rows that these come from
    size_t row_ = 0;
};

// The matte in the colours of the image's rows.
std::array<double, 4> matte_in(uint16_t channels, const GfxColor& matte, const GfxColorSpace& space)
{
    if (channels == space.getNComps())
    {
        std::array<double, 4> own{};
        std::transform(matte.c, matte.c + channels, own.begin(), [](GfxColorComp c) { return colToDbl(c); });
        return own;
    }
    const Colour colour = rgb_of(space, matte);
    return {colour.value[0], colour.value[1], colour.value[2], 0};
}

}  // namespace

bool take_out_matte(Image& image, const Image& mask, const GfxColor& matte, const GfxColorSpace& space)
{
    const uint16_t channels = image.space.channels;
    const bool plain = image.bits == 8 && image.index_table.empty() && !image.alpha_first &&
                       (channels == 3 || channels == space.getNComps()) && channels <= 4;
    const bool is_gray = mask.space.channels == 1 && mask.index_table.empty() && !mask.alpha_first;
    const uint64_t size = uint64_t{mask.width} * mask.height;
    if (!plain || !is_gray || size == 0 || size > kGreatestMask)
        return false;
    image.rows = std::make_shared<RowsWithoutMatte>(image, mask, matte_in(channels, matte, space));
    return true;
}

Matte matte_of(Stream& mask, const GfxColorSpace& space)
{
    Dict* const entries = mask.getDict();
    const Object values = entries != nullptr ? entries->lookup("Matte") : Object(objNull);
    Matte matte;
    matte.is_asked_for = values.isArray();
    if (!matte.is_asked_for || values.arrayGetLength() != space.getNComps() || space.getNComps() > gfxColorMaxComps)
        return matte;
    GfxColor& colour = matte.colour.emplace();
    clearGfxColor(&colour);
    for (int i = 0; i < space.getNComps(); ++i)
    {
        const Object value = values.arrayGet(i);
        if (!value.isNum())
        {
            matte.colour.reset();
            return matte;
        }
        colour.c[i] = dblToCol(std::clamp(value.getNum(), 0.0, 1.0));
    }
    return matte;
}

}  // namespace orvlog::pdf_client
