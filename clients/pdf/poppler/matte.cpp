// SPDX-License-Identifier: GPL-2.0-or-later

#include "clients/pdf/poppler/matte.h"

#include "clients/pdf/poppler/colours.h"

#include <algorithm>
#include <array>
#include <cmath>

#include <Dict.h>
#include <GfxState.h>
#include <Object.h>
#include <Stream.h>

namespace pdf_client
{

namespace
{

constexpr uint64_t greatest_mask = 256U << 20;

// The mask's samples as bytes; those that its data doesn't have are 0.
std::vector<uint8_t> alphas_of(const Image& mask)
{
    std::vector<uint8_t> alphas(static_cast<size_t>(mask.width) * mask.height);
    std::vector<uint8_t> row(mask.row_bytes());
    bool more = mask.rows->restart();
    for (size_t y = 0; more && y < mask.height; y++)
    {
        std::fill(row.begin(), row.end(), uint8_t{0});
        more = mask.rows->read_row(row.data(), row.size()) == row.size();
        for (size_t x = 0; x < mask.width; x++)
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
    RowsWithoutMatte(const Image& image, std::vector<uint8_t> alphas, const std::array<double, 4>& matte)
        : rows_(image.rows), width_(image.width), channels_(image.space.channels), alphas_(std::move(alphas)),
          matte_(matte)
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
        const uint8_t* alphas = alphas_.data() + row_++ * width_;
        for (size_t i = 0; i < came; i++)
        {
            const double matte = matte_[i % channels_] * 255;
            const unsigned alpha = alphas[i / channels_];
            const double own = alpha == 0 ? row[i] : matte + (row[i] - matte) * 255 / alpha;
            row[i] = static_cast<uint8_t>(std::lround(std::clamp(own, 0.0, 255.0)));
        }
        return came;
    }

private:
    std::shared_ptr<ImageRows> rows_;
    size_t width_;
    size_t channels_;
    std::vector<uint8_t> alphas_;
    std::array<double, 4> matte_;
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
    const bool alike = image.width == mask.width && image.height == mask.height && mask.space.channels == 1 &&
                       mask.index_table.empty() && !mask.alpha_first;
    if (!plain || !alike || uint64_t{mask.width} * mask.height > greatest_mask)
    {
        return false;
    }
    image.rows = std::make_shared<RowsWithoutMatte>(image, alphas_of(mask), matte_in(channels, matte, space));
    return true;
}

bool asks_for_matte(Stream& mask)
{
    Dict* const entries = mask.getDict();
    return entries != nullptr && entries->lookup("Matte").isArray();
}

}  // namespace pdf_client
