// SPDX-License-Identifier: GPL-2.0-or-later
//
// What a painter paints into beside pages: masks and resources; and how each is closed.

#include "clients/pdf/painter/painter.h"

#include "clients/pdf/painter/mask-operand.h"
#include "clients/pdf/records/blend-operator.h"

#include <algorithm>

namespace orvlog::pdf_client
{

namespace
{

// Masks and resources nest in files that go in circles.
constexpr size_t kGreatestLayerDepth = 12;

}  // namespace

void Painter::close_layer()
{
    if (layers_.back().is_mask)
    {
        end_mask();
        return;
    }
    if (!layers_.back().resource_key.empty())
    {
        end_resource();
        return;
    }
    while (layers_.back().open_groups > 0)
        end_group();
    finish_drawings();
    layers_.pop_back();
}

void Painter::finish_drawings()
{
    for_each_drawing(Call::drawing_finish,
                     [](Drawing& drawing) { return drawing.calls.drawing_finish.fn(&drawing.calls); });
}

void Painter::discard_drawings(Layer& layer)
{
    for (Drawing& drawing : layer.drawings)
        count(*drawing.server, Call::drawing_discard, drawing.calls.drawing_discard.fn(&drawing.calls));
}

bool Painter::begin_mask(const GGO_BoxFloat& seen)
{
    if (layers_.empty() || layers_.size() >= kGreatestLayerDepth)
        return false;
    Layer layer = mask_layer(layers_.back(), seen);
    const ORV_FaceProperties face = face_of(layer);
    for (size_t i = 0; i < 2; ++i)
    {
        if (studios_[i] == nullptr)
        {
            studios_[i] = std::make_unique<MaskStudio>(i == 1, font_engine_.table(), complain_, lose_);
            studio_servers_[i].table = studios_[i]->interface();
            studio_servers_[i].document = studios_[i]->document();
        }
        Drawing drawing;
        drawing.server = &studio_servers_[i];
        if (!studios_[i]->open(face, &drawing.calls))
        {
            discard_drawings(layer);
            return false;
        }
        layer.drawings.push_back(drawing);
    }
    layers_.push_back(std::move(layer));
    return true;
}

MaskPictures Painter::end_mask()
{
    MaskPictures pictures;
    while (layers_.back().open_groups > 0)
        end_group();
    Layer& layer = layers_.back();
    pictures.content_to_pixels = layer.content_to_pixels;
    pictures.on_white = studios_[0]->close(&layer.drawings[0].calls);
    pictures.on_black = studios_[1]->close(&layer.drawings[1].calls);
    layers_.pop_back();
    return pictures;
}

bool Painter::has_resource(const std::string& key) const
{
    if (layers_.empty())
        return false;
    const std::vector<Drawing>& drawings = layers_.back().drawings;
    return std::all_of(drawings.begin(), drawings.end(),
                       [&](const Drawing& drawing) { return drawing.server->resources.count(key) > 0; });
}

bool Painter::begin_resource(const std::string& key, const ResourceGeometry& geometry)
{
    if (layers_.empty() || layers_.size() >= kGreatestLayerDepth)
        return false;
    Layer layer = resource_layer(key, geometry);
    ORV_ResourceProperties properties{};
    properties.rp_ResourceHints = geometry.tiled ? ORV_RES_HINT_WILL_BE_TILED : ORV_RES_HINT_NO_TILING;
    properties.rp_MaxRescale = static_cast<float>(geometry.scale);
    properties.rp_Enclosing_box = geometry.box;
    for (Drawing& parent : layers_.back().drawings)
    {
        Drawing drawing;
        drawing.server = parent.server;
        const Server& server = *parent.server;
        const uint32_t result =
            server.table->resource_start.fn(nullptr, server.table, server.document, &drawing.calls, &parent.calls,
                                            nullptr, &properties, nullptr, &drawing.resource_id);
        count(server, Call::resource_start, result);
        if (digest_ != nullptr)
        {
            digest(Call::resource_start, geometry.box, geometry.scale);
            digest_->add_answer(result != 0);
        }
        if (result == 0)
        {
            discard_drawings(layer);
            return false;
        }
        layer.drawings.push_back(drawing);
    }
    layers_.push_back(std::move(layer));
    return true;
}

void Painter::end_resource()
{
    while (layers_.back().open_groups > 0)
        end_group();
    finish_drawings();
    for (Drawing& drawing : layers_.back().drawings)
        drawing.server->resources[layers_.back().resource_key] = drawing.resource_id;
    layers_.pop_back();
}

void Painter::paint_resource(const std::string& key, const GGO_Matrix& retransform, const Tiling& tiling, bool isolated,
                             const PaintState& state)
{
    if (!has_resource(key))
        return;
    digest(Call::resource_paint, retransform, tiling.x_step, tiling.y_step, state);
    const MaskOperand mask(state, true, next_id());
    const GOP_Operator op = blend_operator(state.blend, mask.mode);
    const uint32_t type = isolated ? ORV_GROUP_SIMPLE : ORV_GROUP_NON_ISOLATED;
    const uint32_t flags = tiling.tiled ? ORV_GROUP_TILE_X | ORV_GROUP_TILE_Y : ORV_GROUP_TILE_NONE;
    for_each_drawing(Call::resource_paint,
                     [&](Drawing& drawing)
                     {
                         return drawing.calls.resource_paint.fn(
                             &drawing.calls, drawing.server->resources[key], ORV_GRP_HINT_NONE, type, &retransform, &op,
                             mask.operand, clip_list(state.clip), flags, tiling.x_step, tiling.y_step, nullptr, nullptr,
                             GPA_PP_ORIENTATION_0_DEG);
                     });
}

}  // namespace orvlog::pdf_client
