// SPDX-License-Identifier: GPL-2.0-or-later

#include "clients/pdf/painter/layer.h"

#include "clients/pdf/painter/pixel-box.h"

#include <algorithm>
#include <cmath>

namespace orvlog::pdf_client
{

namespace
{

constexpr double kGreatestPictureSide = 8192;

}  // namespace

ORV_FaceProperties face_of(const Layer& layer)
{
    ORV_FaceProperties face{};
    face.fp_FaceInchToPixels = layer.content_to_pixels;
    face.fp_WidthInPixels = layer.width;
    face.fp_HeightInPixels = layer.height;
    const GGO_Matrix back = inverse(layer.content_to_pixels);
    const GGO_Point first = transform(back, GGO_Point{0, 0});
    const GGO_Point last =
        transform(back, GGO_Point{static_cast<double>(layer.width), static_cast<double>(layer.height)});
    face.fp_ClipBox = {first.gpf_X, first.gpf_Y, last.gpf_X, last.gpf_Y};
    face.fp_TrimBox = face.fp_ClipBox;
    face.fp_MediaSize = {last.gpf_X - first.gpf_X, last.gpf_Y - first.gpf_Y};
    return face;
}

Layer mask_layer(const Layer& whole, const GGO_BoxFloat& seen)
{
    Layer layer;
    layer.is_mask = true;
    layer.content_to_pixels = whole.content_to_pixels;
    layer.width = whole.width;
    layer.height = whole.height;
    const std::optional<PixelBox> shown = pixels_showing(seen, whole.content_to_pixels, whole.width, whole.height);
    if (!shown)
        return layer;
    // What lies beside the layer is a mask too, of one pixel.
    const uint32_t left = std::min(shown->left, whole.width - 1);
    const uint32_t top = std::min(shown->top, whole.height - 1);
    layer.content_to_pixels =
        multiply(whole.content_to_pixels, translation(-static_cast<double>(left), -static_cast<double>(top)));
    layer.width = std::max(shown->right, left + 1) - left;
    layer.height = std::max(shown->bottom, top + 1) - top;
    return layer;
}

Layer resource_layer(const std::string& key, const ResourceGeometry& geometry)
{
    const double wide = (geometry.box.gbf_MaxX - geometry.box.gbf_MinX) * geometry.scale;
    const double high = (geometry.box.gbf_MaxY - geometry.box.gbf_MinY) * geometry.scale;
    const double shrink = std::min(1.0, kGreatestPictureSide / std::max({wide, high, 1.0}));
    const double scale = geometry.scale * shrink;
    Layer layer;
    layer.resource_key = key;
    layer.width = static_cast<uint32_t>(std::max(1.0, std::ceil(wide * shrink)));
    layer.height = static_cast<uint32_t>(std::max(1.0, std::ceil(high * shrink)));
    layer.content_to_pixels =
        multiply(translation(-geometry.box.gbf_MinX, -geometry.box.gbf_MinY), scaling(scale, scale));
    return layer;
}

}  // namespace orvlog::pdf_client
