// SPDX-License-Identifier: GPL-2.0-or-later

#include "clients/pdf/painter/pixel-box.h"

#include "clients/pdf/content/graphics.h"

#include <algorithm>
#include <cmath>

namespace orvlog::pdf_client
{

namespace
{

constexpr double kMargin = 2;

uint32_t place(double at, uint32_t size)
{
    return static_cast<uint32_t>(std::clamp(at, 0.0, static_cast<double>(size)));
}

}  // namespace

std::optional<PixelBox> pixels_showing(const GGO_BoxFloat& box, const GGO_Matrix& content_to_pixels, uint32_t width,
                                       uint32_t height)
{
    if (!std::isfinite(box.gbf_MaxX - box.gbf_MinX) || !std::isfinite(box.gbf_MaxY - box.gbf_MinY))
        return std::nullopt;
    const GGO_BoxFloat shown = rectangle(box).transformed(content_to_pixels).bounds();
    if (std::isnan(shown.gbf_MinX) || std::isnan(shown.gbf_MinY) || std::isnan(shown.gbf_MaxX) ||
        std::isnan(shown.gbf_MaxY))
        return std::nullopt;
    return PixelBox{
        place(std::floor(shown.gbf_MinX) - kMargin, width), place(std::floor(shown.gbf_MinY) - kMargin, height),
        place(std::ceil(shown.gbf_MaxX) + kMargin, width), place(std::ceil(shown.gbf_MaxY) + kMargin, height)};
}

}  // namespace orvlog::pdf_client
