// SPDX-License-Identifier: GPL-2.0-or-later

#include "clients/pdf/painter/soft-mask.h"

#include "clients/pdf/painter/pixel-box.h"
#include "clients/pdf/records/operand-record.h"

#include <algorithm>
#include <cmath>

namespace orvlog::pdf_client
{

namespace
{

double channel(uint32_t pixel, int shift)
{
    return ((pixel >> shift) & 0xFFU) / 255.0;
}

double luminance(double red, double green, double blue)
{
    return 0.3 * red + 0.59 * green + 0.11 * blue;
}

uint8_t byte_of(double value)
{
    return static_cast<uint8_t>(std::lround(std::clamp(value, 0.0, 1.0) * 255.0));
}

double mask_value(uint32_t white, uint32_t black, const MaskRule& rule)
{
    double shown[3];
    double alpha_sum = 0;
    for (int i = 0; i < 3; ++i)
    {
        const int shift = 16 - 8 * i;
        const double alpha = 1.0 - (channel(white, shift) - channel(black, shift));
        alpha_sum += alpha;
        shown[i] = channel(black, shift) + (1.0 - alpha) * rule.backdrop[i];
    }
    const double light = std::max(luminance(shown[0], shown[1], shown[2]) - rule.black, 0.0) / (1.0 - rule.black);
    const double value = rule.luminosity ? light : alpha_sum / 3.0;
    return rule.transfer ? rule.transfer(std::clamp(value, 0.0, 1.0)) : value;
}

PixelBox extent_of(const std::vector<uint8_t>& samples, uint32_t width, uint32_t height)
{
    PixelBox extent{width, height, 0, 0};
    for (uint32_t y = 0; y < height; ++y)
    {
        for (uint32_t x = 0; x < width; ++x)
        {
            if (samples[static_cast<size_t>(y) * width + x] != 0)
            {
                extent.left = std::min(extent.left, x);
                extent.right = std::max(extent.right, x + 1);
                extent.top = std::min(extent.top, y);
                extent.bottom = std::max(extent.bottom, y + 1);
            }
        }
    }
    return extent.right > 0 ? extent : PixelBox{0, 0, 1, 1};
}

std::shared_ptr<const MaskImage> part_of(const std::vector<uint8_t>& samples, uint32_t width, const PixelBox& extent,
                                         const GGO_Matrix& pixels_to_content)
{
    auto mask = std::make_shared<MaskImage>();
    mask->width = extent.right - extent.left;
    mask->height = extent.bottom - extent.top;
    mask->samples.reserve(static_cast<size_t>(mask->width) * mask->height);
    for (uint32_t y = extent.top; y < extent.bottom; ++y)
    {
        const auto row = samples.begin() + static_cast<std::ptrdiff_t>(static_cast<size_t>(y) * width);
        mask->samples.insert(mask->samples.end(), row + extent.left, row + extent.right);
    }
    mask->pixels_to_content = multiply(translation(extent.left, extent.top), pixels_to_content);
    return mask;
}

}  // namespace

std::shared_ptr<const MaskImage> make_mask(const MaskPictures& pictures, const MaskRule& rule)
{
    const uint32_t width = pictures.on_black.width;
    const uint32_t height = pictures.on_black.height;
    const size_t count = static_cast<size_t>(width) * height;
    if (count == 0 || pictures.on_white.pixels.size() != count || pictures.on_black.pixels.size() != count)
    {
        auto mask = std::make_shared<MaskImage>();
        mask->width = 1;
        mask->height = 1;
        mask->samples = {0};
        mask->pixels_to_content = identity();
        return mask;
    }
    std::vector<uint8_t> samples(count);
    uint32_t last_white = pictures.on_white.pixels[0];
    uint32_t last_black = pictures.on_black.pixels[0];
    uint8_t last = byte_of(mask_value(last_white, last_black, rule));
    for (size_t i = 0; i < count; ++i)
    {
        const uint32_t white = pictures.on_white.pixels[i];
        const uint32_t black = pictures.on_black.pixels[i];
        if (white != last_white || black != last_black)
        {
            last_white = white;
            last_black = black;
            last = byte_of(mask_value(white, black, rule));
        }
        samples[i] = last;
    }
    return part_of(samples, width, extent_of(samples, width, height), inverse(pictures.content_to_pixels));
}

std::shared_ptr<const MaskImage> cut_to(std::shared_ptr<const MaskImage> mask, const GGO_BoxFloat& box)
{
    constexpr double kWorthIt = 0.75;
    const GGO_Matrix& to_content = mask->pixels_to_content;
    if (!finite(to_content) || determinant(to_content) == 0 || !(box.gbf_MinX <= box.gbf_MaxX) ||
        !(box.gbf_MinY <= box.gbf_MaxY))
        return mask;
    const std::optional<PixelBox> shown = pixels_showing(box, inverse(to_content), mask->width, mask->height);
    const double whole = static_cast<double>(mask->width) * mask->height;
    if (!shown || shown->empty() ||
        static_cast<double>(shown->right - shown->left) * (shown->bottom - shown->top) > kWorthIt * whole)
        return mask;
    return part_of(mask->samples, mask->width, *shown, to_content);
}

MaskStudio::MaskStudio(bool black_paper, const GFI_FontEngineTable* font_engine,
                       std::function<void(const std::string&)> complaint_sink,
                       std::function<void(const std::string&)> loss_sink)
    : black_paper_(black_paper)
{
    cairo_renderer::Options options;
    options.page_sink = [this](const cairo_renderer::Page& page) { last_ = cairo_renderer::read_pixels(page); };
    options.pixels_at_once = UINT64_MAX;
    options.complaint_sink = std::move(complaint_sink);
    options.loss_sink = std::move(loss_sink);
    renderer_ = std::make_unique<cairo_renderer::Renderer>(std::move(options));
    const ORV_Interface* table = renderer_->interface();
    if (table->document_start.fn(nullptr, table, &document_, 0, font_engine, nullptr) == 0)
        document_ = nullptr;
}

MaskStudio::~MaskStudio()
{
    if (document_ != nullptr)
    {
        const ORV_Interface* table = renderer_->interface();
        table->document_finish.fn(table, document_);
    }
}

const ORV_Interface* MaskStudio::interface() const
{
    return renderer_->interface();
}

void* MaskStudio::document() const
{
    return document_;
}

bool MaskStudio::open(const ORV_FaceProperties& face, ORV_DrawingInterface* drawing)
{
    const ORV_Interface* table = renderer_->interface();
    last_ = {};
    if (table->face_start.fn(nullptr, table, document_, drawing, nullptr, ++faces_, &face, nullptr,
                             GPA_PP_ORIENTATION_0_DEG, GPA_PLACEMENT_PS) == 0)
        return false;
    if (black_paper_)
    {
        OperandRecord black = OperandRecord::flat(Colour{}, 1);
        drawing->object_paint.fn(drawing, GCM_OBJ_GRAPHICS, 0, nullptr, nullptr, GPA_PLACEMENT_PS, nullptr,
                                 black.get(0), nullptr, nullptr);
    }
    return true;
}

cairo_renderer::PagePixels MaskStudio::close(ORV_DrawingInterface* drawing)
{
    drawing->drawing_finish.fn(drawing);
    return std::move(last_);
}

}  // namespace orvlog::pdf_client
