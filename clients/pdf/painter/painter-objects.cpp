// SPDX-License-Identifier: GPL-2.0-or-later
//
// What a painter paints: paths, gradients, images, text.

#include "clients/pdf/painter/painter.h"

#include "clients/pdf/painter/mask-operand.h"
#include "clients/pdf/records/blend-operator.h"
#include "clients/pdf/records/image-operand.h"
#include "clients/pdf/records/operand-record.h"
#include "clients/pdf/records/shape-records.h"

#include <algorithm>
#include <cmath>

namespace orvlog::pdf_client
{

void Painter::paint(uint8_t object_type, const GSH_ShapePointer* shape, const GOP_Operator& op, const Clip& clip,
                    GOP_OperandPointer* operand1, GOP_OperandPointer* operand2)
{
    if (layers_.empty())
        return;
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
        return;
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
    for (size_t i = 0; i < 3; ++i)
        digest(Call::object_paint, triangle.colour[i], triangle.corner[i], state);
    OperandRecord operand = OperandRecord::gradient(triangle, state.alpha);
    paint_operand(GCM_OBJ_GRAPHICS, nullptr, operand.get(next_id()), state);
}

void Painter::flood(const Colour& colour, const PaintState& state)
{
    digest(Call::object_paint, colour, state);
    OperandRecord operand = OperandRecord::flat(colour, state.alpha);
    paint_operand(GCM_OBJ_GRAPHICS, nullptr, operand.get(next_id()), state);
}

std::shared_ptr<ImageOperand> Painter::image_operand(const Image& image, const GGO_Matrix& pixels_to_content,
                                                     double alpha)
{
    std::shared_ptr<ImageOperand> operand = ImageOperand::make(image, pixels_to_content, alpha, next_id());
    if (operand == nullptr)
        lose_("an image is too large to be passed on");
    return operand;
}

void Painter::image(const Image& image, const GGO_Matrix& pixels_to_content, const PaintState& state)
{
    const std::shared_ptr<ImageOperand> operand = image_operand(image, pixels_to_content, state.alpha);
    if (operand == nullptr)
        return;
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
    const std::shared_ptr<ImageOperand> operand1 = image_operand(image, pixels_to_content, state.alpha);
    const std::shared_ptr<ImageOperand> operand2 = image_operand(mask, mask_pixels_to_content, 1);
    if (operand1 == nullptr || operand2 == nullptr)
        return;
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
    const std::shared_ptr<ImageOperand> operand2 = image_operand(stencil, pixels_to_content, 1);
    if (operand2 == nullptr)
        return;
    const ImageShape shape(stencil.width, stencil.height, pixels_to_content);
    paint(GCM_OBJ_IMAGE, shape.get(), blend_operator(state.blend, GOP_MASK_IN), state.clip, operand1.get(next_id()),
          operand2->get());
    digest(Call::object_paint, stencil, pixels_to_content, colour, state);
}

void Painter::text(const GlyphRun& run, const Colour& colour, const PaintState& state)
{
    if (layers_.empty())
        return;
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
        return;
    const double distance = std::hypot(end.gpf_X - expected.gpf_X, end.gpf_Y - expected.gpf_Y) * inches_per_unit;
    ++counts_.end_points;
    counts_.worst_end_point = std::max(counts_.worst_end_point, distance);
}

}  // namespace orvlog::pdf_client
