// SPDX-License-Identifier: GPL-2.0-or-later

#include "clients/pdf/painter/painter.h"

#include "clients/pdf/records/blend-operator.h"
#include "clients/pdf/records/image-operand.h"
#include "clients/pdf/records/operand-record.h"
#include "clients/pdf/records/shape-records.h"

#include <algorithm>
#include <cmath>

namespace pdf_client
{

namespace
{

// Masks and resources nest in files that go in circles.
constexpr size_t greatest_layer_depth = 12;
constexpr double greatest_picture_side = 8192;

}  // namespace

const char* name_of(Call call)
{
    static constexpr const char* names[] = {
        "ORV_document_start",          "ORV_document_finish",  "ORV_face_start",
        "ORV_resource_start",          "ORV_resource_destroy", "ORV_object_paint",
        "ORV_object_paint_and_stroke", "ORV_group_start",      "ORV_group_finish",
        "ORV_resource_paint",          "ORV_drawing_finish",   "ORV_drawing_discard",
    };
    static_assert(std::size(names) == static_cast<size_t>(Call::count));
    return names[static_cast<size_t>(call)];
}

// Operand 2 of a call: a soft mask, a constant alpha, or both.
struct Painter::MaskOperand
{
    MaskOperand(const PaintState& state, bool with_alpha, uint32_t unique_id)
    {
        const double alpha = with_alpha ? state.alpha : 1.0;
        if (state.mask != nullptr)
        {
            image = ImageOperand::make(cut_to(state.mask, clip_bounds(state.clip)), alpha, unique_id);
            operand = image != nullptr ? image->get() : nullptr;
        }
        else if (alpha < 1)
        {
            constant = std::make_unique<OperandRecord>(OperandRecord::constant_mask(alpha));
            operand = constant->get(unique_id);
        }
        mode = operand != nullptr ? GOP_MASK_IN : GOP_MASK_NONE;
    }

    std::shared_ptr<ImageOperand> image;
    std::unique_ptr<OperandRecord> constant;
    GOP_OperandPointer* operand = nullptr;
    uint32_t mode = GOP_MASK_NONE;
};

Painter::Painter(const ORV_Interface* table, std::function<void(const std::string&)> complain)
    : complain_(std::move(complain))
{
    main_.table = table;
    main_.counted = true;
}

Painter::~Painter() = default;

void Painter::count(const Server& server, Call call, uint32_t result)
{
    if (server.counted)
    {
        counts_.made[static_cast<size_t>(call)]++;
        counts_.refused += result == 0 ? 1 : 0;
    }
}

template <typename Make> void Painter::for_each_drawing(Call call, Make make)
{
    if (layers_.empty())
    {
        return;
    }
    for (Drawing& drawing : layers_.back().drawings)
    {
        count(*drawing.server, call, make(drawing));
    }
}

template <typename... Parts> void Painter::digest(Call call, const Parts&... parts)
{
    if (digest_ != nullptr)
    {
        digest_->add(static_cast<uint64_t>(call));
        (digest_->add(parts), ...);
    }
}

void Painter::tell(CallDigest* digest)
{
    digest_ = digest;
}

uint32_t Painter::next_id()
{
    return ++last_id_;
}

const CallCounts& Painter::counts() const
{
    return counts_;
}

bool Painter::begin_document(uint32_t document_id)
{
    const uint32_t result = main_.table->document_start.fn(nullptr, main_.table, &main_.document, document_id,
                                                           font_engine_.table(), nullptr);
    count(main_, Call::document_start, result);
    return result != 0;
}

void Painter::end_document()
{
    for (const auto& [key, id] : main_.resources)
    {
        count(main_, Call::resource_destroy,
              main_.table->resource_destroy.fn(nullptr, main_.table, main_.document, nullptr, id));
    }
    main_.resources.clear();
    count(main_, Call::document_finish, main_.table->document_finish.fn(main_.table, main_.document));
    main_.document = nullptr;
}

ORV_FaceProperties Painter::face_of(const Layer& layer) const
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

bool Painter::begin_page(const PageGeometry& page)
{
    Layer layer;
    layer.content_to_pixels = scaling(page.pixels_per_inch, page.pixels_per_inch);
    layer.width = page.width;
    layer.height = page.height;
    ORV_FaceProperties face = face_of(layer);
    face.fp_MediaSize = {page.inches_wide, page.inches_high};
    face.fp_TrimBox = {0, 0, page.inches_wide, page.inches_high};
    Drawing drawing;
    drawing.server = &main_;
    const uint32_t result =
        main_.table->face_start.fn(nullptr, main_.table, main_.document, &drawing.calls, nullptr, page.number, &face,
                                   page.colour_ticket, GPA_PP_ORIENTATION_0_DEG, GPA_PLACEMENT_PS);
    count(main_, Call::face_start, result);
    if (result == 0)
    {
        return false;
    }
    layer.drawings.push_back(drawing);
    layers_.push_back(std::move(layer));
    return true;
}

void Painter::end_page()
{
    while (!layers_.empty())
    {
        close_layer();
    }
}

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
    {
        end_group();
    }
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
    {
        count(*drawing.server, Call::drawing_discard, drawing.calls.drawing_discard.fn(&drawing.calls));
    }
}

Clip Painter::narrow(const Clip& clip, const Path& path, Winding winding)
{
    digest(Call::count, path, static_cast<uint64_t>(winding));
    return std::make_shared<const ClipNode>(std::make_shared<const FilledShape>(path, winding), next_id(), clip);
}

Clip Painter::narrow(const Clip& clip, const Path& path, const GGO_Matrix& to_content, const StrokeStyle& style)
{
    digest(Call::count, path, to_content, style);
    return std::make_shared<const ClipNode>(std::make_shared<const StrokedShape>(path, to_content, style), next_id(),
                                            clip);
}

uint32_t Painter::clip_hint(const Clip& clip)
{
    Layer& layer = layers_.back();
    const bool unchanged = clip != nullptr && clip == layer.last_clip;
    layer.last_clip = clip;
    return unchanged ? ORV_OBJ_HINT_UNCHANGED_CLIP : ORV_OBJ_HINT_NONE;
}

void Painter::paint(uint8_t object_type, const GSH_ShapePointer* shape, const GOP_Operator& op, const Clip& clip,
                    GOP_OperandPointer* operand1, GOP_OperandPointer* operand2)
{
    if (layers_.empty())
    {
        return;
    }
    const uint32_t hints = clip_hint(clip);
    for_each_drawing(Call::object_paint,
                     [&](Drawing& drawing)
                     {
                         return drawing.calls.object_paint.fn(&drawing.calls, object_type, hints, &op, shape,
                                                              GPA_PLACEMENT_PS, clip_list(clip), operand1, operand2,
                                                              nullptr);
                     });
}

void Painter::paint_operand(uint8_t object_type, const GSH_ShapePointer* shape, GOP_OperandPointer* operand,
                            const PaintState& state)
{
    const MaskOperand mask(state, false, next_id());
    paint(object_type, shape, blend_operator(state.blend, mask.mode), state.clip, operand, mask.operand);
}

void Painter::fill(const Path& path, Winding winding, const Colour& colour, const PaintState& state)
{
    digest(Call::object_paint, path, static_cast<uint64_t>(winding), colour, state);
    const FilledShape shape(path, winding);
    OperandRecord operand = OperandRecord::flat(colour, state.alpha);
    paint_operand(GCM_OBJ_GRAPHICS, shape.get(), operand.get(next_id()), state);
}

void Painter::stroke(const Path& path, const GGO_Matrix& to_content, const StrokeStyle& style, const Colour& colour,
                     const PaintState& state)
{
    if (layers_.empty())
    {
        return;
    }
    digest(Call::object_paint_and_stroke, path, to_content, style, colour, state);
    const StrokedShape shape(path, to_content, style);
    OperandRecord operand = OperandRecord::flat(colour, state.alpha);
    const MaskOperand mask(state, false, next_id());
    const GOP_Operator op = blend_operator(state.blend, mask.mode);
    const uint32_t hints = clip_hint(state.clip);
    GOP_OperandPointer* operand1 = operand.get(next_id());
    for_each_drawing(Call::object_paint_and_stroke,
                     [&](Drawing& drawing)
                     {
                         return drawing.calls.object_paint_and_stroke.fn(
                             &drawing.calls, GCM_OBJ_GRAPHICS, GCM_OBJ_LINE, hints, nullptr, &op, shape.get(),
                             shape.params(), nullptr, GPA_PLACEMENT_PS, clip_list(state.clip), ORV_PAINTFLAGS_STROKE,
                             nullptr, nullptr, nullptr, nullptr, operand1, mask.operand, nullptr);
                     });
}

void Painter::gradient(const AxialGradient& gradient, const PaintState& state)
{
    digest(Call::object_paint, gradient.transform, gradient.start, gradient.end, gradient.stops, state);
    OperandRecord operand = OperandRecord::gradient(gradient, state.alpha);
    paint_operand(GCM_OBJ_GRAPHICS, nullptr, operand.get(next_id()), state);
}

void Painter::gradient(const RadialGradient& gradient, const PaintState& state)
{
    digest(Call::object_paint, gradient.transform, gradient.centre1, gradient.centre2, gradient.radius1,
           gradient.radius2, gradient.stops, state);
    OperandRecord operand = OperandRecord::gradient(gradient, state.alpha);
    paint_operand(GCM_OBJ_GRAPHICS, nullptr, operand.get(next_id()), state);
}

void Painter::gradient(const Triangle& triangle, const PaintState& state)
{
    for (size_t i = 0; i < 3; i++)
    {
        digest(Call::object_paint, triangle.colour[i], triangle.corner[i], state);
    }
    OperandRecord operand = OperandRecord::gradient(triangle, state.alpha);
    paint_operand(GCM_OBJ_GRAPHICS, nullptr, operand.get(next_id()), state);
}

void Painter::flood(const Colour& colour, const PaintState& state)
{
    digest(Call::object_paint, colour, state);
    OperandRecord operand = OperandRecord::flat(colour, state.alpha);
    paint_operand(GCM_OBJ_GRAPHICS, nullptr, operand.get(next_id()), state);
}

void Painter::image(const Image& image, const GGO_Matrix& pixels_to_content, const PaintState& state)
{
    const std::shared_ptr<ImageOperand> operand = ImageOperand::make(image, pixels_to_content, state.alpha, next_id());
    if (operand == nullptr)
    {
        complain_("an image is too large to be passed on");
        return;
    }
    const ImageShape shape(image.width, image.height, pixels_to_content);
    paint_operand(GCM_OBJ_IMAGE, shape.get(), operand->get(), state);
    digest(Call::object_paint, image, pixels_to_content, state);
}

void Painter::masked_image(const Image& image, const GGO_Matrix& pixels_to_content, const Image& mask,
                           const GGO_Matrix& mask_pixels_to_content, const PaintState& state)
{
    if (state.mask != nullptr)
    {
        begin_group({true, false, {1, 1, -1, -1}, state});
        masked_image(image, pixels_to_content, mask, mask_pixels_to_content, PaintState{});
        end_group();
        return;
    }
    const std::shared_ptr<ImageOperand> operand1 = ImageOperand::make(image, pixels_to_content, state.alpha, next_id());
    const std::shared_ptr<ImageOperand> operand2 = ImageOperand::make(mask, mask_pixels_to_content, 1, next_id());
    if (operand1 == nullptr || operand2 == nullptr)
    {
        complain_("an image is too large to be passed on");
        return;
    }
    const ImageShape shape(image.width, image.height, pixels_to_content);
    paint(GCM_OBJ_IMAGE, shape.get(), blend_operator(state.blend, GOP_MASK_IN), state.clip, operand1->get(),
          operand2->get());
    digest(Call::object_paint, image, pixels_to_content, mask, mask_pixels_to_content, state);
}

void Painter::stencil(const Image& stencil, const GGO_Matrix& pixels_to_content, const Colour& colour,
                      const PaintState& state)
{
    if (state.mask != nullptr)
    {
        begin_group({true, false, {1, 1, -1, -1}, state});
        this->stencil(stencil, pixels_to_content, colour, PaintState{});
        end_group();
        return;
    }
    OperandRecord operand1 = OperandRecord::flat(colour, state.alpha);
    const std::shared_ptr<ImageOperand> operand2 = ImageOperand::make(stencil, pixels_to_content, 1, next_id());
    if (operand2 == nullptr)
    {
        complain_("an image is too large to be passed on");
        return;
    }
    const ImageShape shape(stencil.width, stencil.height, pixels_to_content);
    paint(GCM_OBJ_IMAGE, shape.get(), blend_operator(state.blend, GOP_MASK_IN), state.clip, operand1.get(next_id()),
          operand2->get());
    digest(Call::object_paint, stencil, pixels_to_content, colour, state);
}

void Painter::text(const GlyphRun& run, const Colour& colour, const PaintState& state)
{
    if (layers_.empty())
    {
        return;
    }
    digest(Call::object_paint_and_stroke, run, colour, state);
    const TextShape shape(font_engine_, run);
    OperandRecord operand = OperandRecord::flat(colour, state.alpha);
    const MaskOperand mask(state, false, next_id());
    const GOP_Operator op = blend_operator(state.blend, mask.mode);
    const uint32_t hints = clip_hint(state.clip);
    GOP_OperandPointer* operand1 = operand.get(next_id());
    const GGO_Point expected = shape.end_point();
    for_each_drawing(Call::object_paint_and_stroke,
                     [&](Drawing& drawing)
                     {
                         GGO_Point end{NAN, NAN};
                         const uint32_t result = drawing.calls.object_paint_and_stroke.fn(
                             &drawing.calls, GCM_OBJ_TEXT, GCM_OBJ_TEXT, hints, &op, nullptr, shape.get(), nullptr,
                             nullptr, GPA_PLACEMENT_PS, clip_list(state.clip), ORV_PAINTFLAGS_FILL, &end, operand1,
                             mask.operand, nullptr, nullptr, nullptr, nullptr);
                         note_end_point(drawing, end, expected, mean_scale(shape.get()->sp_HeaderPtr->sh_Transform));
                         return result;
                     });
}

void Painter::note_end_point(const Drawing& drawing, GGO_Point end, GGO_Point expected, double inches_per_unit)
{
    if (!drawing.server->counted || std::isnan(end.gpf_X))
    {
        return;
    }
    const double distance = std::hypot(end.gpf_X - expected.gpf_X, end.gpf_Y - expected.gpf_Y) * inches_per_unit;
    counts_.end_points++;
    counts_.worst_end_point = std::max(counts_.worst_end_point, distance);
}

void Painter::begin_group(const Group& group)
{
    if (layers_.empty())
    {
        return;
    }
    digest(Call::group_start, group.bounds, uint64_t{group.isolated}, uint64_t{group.knockout}, group.state);
    const MaskOperand mask(group.state, true, next_id());
    const GOP_Operator op = blend_operator(group.state.blend, mask.mode);
    const uint32_t type = group.isolated ? ORV_GROUP_SIMPLE : ORV_GROUP_NON_ISOLATED;
    const uint32_t id = next_id();
    layers_.back().last_clip = nullptr;
    layers_.back().open_groups++;
    for_each_drawing(Call::group_start,
                     [&](Drawing& drawing)
                     {
                         uint32_t group_out = 0;
                         return drawing.calls.group_start.fn(
                             &drawing.calls, id, &group_out, nullptr, ORV_GRP_HINT_NONE, type, group.knockout ? 1 : 0,
                             0, nullptr, GPA_PP_ORIENTATION_0_DEG, 0, GPA_PLACEMENT_PS, nullptr, &op, mask.operand,
                             clip_list(group.state.clip), ORV_GROUP_TILE_NONE, 0, 0, nullptr, nullptr, &group.bounds);
                     });
}

void Painter::end_group()
{
    if (layers_.empty() || layers_.back().open_groups == 0)
    {
        return;
    }
    digest(Call::group_finish);
    layers_.back().open_groups--;
    layers_.back().last_clip = nullptr;
    for_each_drawing(Call::group_finish,
                     [](Drawing& drawing)
                     {
                         uint32_t replay = 0;
                         return drawing.calls.group_finish.fn(&drawing.calls, &replay);
                     });
}

// The part of the present layer that shows `seen`, in whole pixels of it.
Painter::Layer Painter::mask_layer(const GGO_BoxFloat& seen) const
{
    constexpr double margin = 2;
    const Layer& whole = layers_.back();
    Layer layer;
    layer.is_mask = true;
    layer.content_to_pixels = whole.content_to_pixels;
    layer.width = whole.width;
    layer.height = whole.height;
    if (!std::isfinite(seen.gbf_MaxX - seen.gbf_MinX) || !std::isfinite(seen.gbf_MaxY - seen.gbf_MinY))
    {
        return layer;
    }
    const GGO_BoxFloat box = rectangle(seen).transformed(whole.content_to_pixels).bounds();
    const double left = std::clamp(std::floor(box.gbf_MinX) - margin, 0.0, whole.width - 1.0);
    const double top = std::clamp(std::floor(box.gbf_MinY) - margin, 0.0, whole.height - 1.0);
    const double right = std::clamp(std::ceil(box.gbf_MaxX) + margin, left + 1, static_cast<double>(whole.width));
    const double bottom = std::clamp(std::ceil(box.gbf_MaxY) + margin, top + 1, static_cast<double>(whole.height));
    layer.content_to_pixels = multiply(whole.content_to_pixels, translation(-left, -top));
    layer.width = static_cast<uint32_t>(right - left);
    layer.height = static_cast<uint32_t>(bottom - top);
    return layer;
}

bool Painter::begin_mask(const GGO_BoxFloat& seen)
{
    if (layers_.empty() || layers_.size() >= greatest_layer_depth)
    {
        return false;
    }
    Layer layer = mask_layer(seen);
    const ORV_FaceProperties face = face_of(layer);
    for (size_t i = 0; i < 2; i++)
    {
        if (studios_[i] == nullptr)
        {
            studios_[i] = std::make_unique<MaskStudio>(i == 1, font_engine_.table(), complain_);
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
    {
        end_group();
    }
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
    {
        return false;
    }
    const std::vector<Drawing>& drawings = layers_.back().drawings;
    return std::all_of(drawings.begin(), drawings.end(),
                       [&](const Drawing& drawing) { return drawing.server->resources.count(key) > 0; });
}

bool Painter::begin_resource(const std::string& key, const ResourceGeometry& geometry)
{
    if (layers_.empty() || layers_.size() >= greatest_layer_depth)
    {
        return false;
    }
    const double wide = (geometry.box.gbf_MaxX - geometry.box.gbf_MinX) * geometry.scale;
    const double high = (geometry.box.gbf_MaxY - geometry.box.gbf_MinY) * geometry.scale;
    const double shrink = std::min(1.0, greatest_picture_side / std::max({wide, high, 1.0}));
    const double scale = geometry.scale * shrink;
    Layer layer;
    layer.resource_key = key;
    layer.width = static_cast<uint32_t>(std::max(1.0, std::ceil(wide * shrink)));
    layer.height = static_cast<uint32_t>(std::max(1.0, std::ceil(high * shrink)));
    layer.content_to_pixels =
        multiply(translation(-geometry.box.gbf_MinX, -geometry.box.gbf_MinY), scaling(scale, scale));
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
    {
        end_group();
    }
    finish_drawings();
    for (Drawing& drawing : layers_.back().drawings)
    {
        drawing.server->resources[layers_.back().resource_key] = drawing.resource_id;
    }
    layers_.pop_back();
}

void Painter::paint_resource(const std::string& key, const GGO_Matrix& retransform, const Tiling& tiling, bool isolated,
                             const PaintState& state)
{
    if (!has_resource(key))
    {
        return;
    }
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

double Painter::pixels_per_unit() const
{
    return layers_.empty() ? 0 : mean_scale(layers_.back().content_to_pixels);
}

}  // namespace pdf_client
