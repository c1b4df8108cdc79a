#include "orvlog/core/orvlog-orv-names.h"
#include "orvlog/core/orvlog-orv.h"
#include "orvlog/image/gop-operand-pointer.h"
#include "orvlog/log/orvlog-attributes.h"
#include "orvlog/records/gbc-color-dump.h"
#include "orvlog/records/ggo-dump.h"
#include "orvlog/records/gop-operator-dump.h"
#include "orvlog/records/gpa-path-dump.h"
#include "orvlog/records/gsh-shape-dump.h"

namespace
{

constexpr const char* kPaint = "ORV_object_paint";
constexpr const char* kPaintAndStroke = "ORV_object_paint_and_stroke";
constexpr const char* kResourcePaint = "ORV_resource_paint";

// What every object paint does first, logged or not.
void begin_object(ORVLOG_DrawingContext* drawing, uint32_t object_type, const GSH_ShapePointer* paint_path)
{
    ORVLOG_Session* session = drawing->session;
    orvlog_session_clear_scratch(session);
    session->object_type = object_type;
    orvlog_set_object_transforms(drawing, paint_path);
}

uint32_t dump_operands(ORVLOG_Session* session, const char* element, const char* const* members,
                       const ORVLOG_CallOperand* operands, uint32_t count)
{
    uint32_t read_well = 1;
    for (uint32_t i = 0; i < count; ++i)
    {
        if (operands[i].counts != 0)
            read_well &= ORVLOG_DumpNamedOperand(session, element, members[i], operands[i].operand);
    }
    return read_well;
}

uint32_t dump_paint(const ORVLOG_DrawingContext* drawing, const ORVLOG_ObjectPaintCall* call)
{
    static constexpr const char* const members[] = {"operand1", "operand2", "operand3"};
    ORVLOG_Session* session = drawing->session;
    ORVLOG_Writer* writer = &session->writer;
    orvlog_writer_begin_element(writer, kPaint);
    orvlog_attr_uint(writer, "id", session->next_object_id++);
    orvlog_attr_uint(writer, "drawing_context", drawing->drawing_context);
    orvlog_attr_uint(writer, "object_type_and_flag", call->object_type_and_flag);
    orvlog_attr_flags(writer, "object_hints", &ORVLOG_OBJECT_HINTS, call->object_hints);
    orvlog_attr_enum(writer, "path_pixel_placement", &ORVLOG_PLACEMENT, call->path_pixel_placement);
    orvlog_writer_end_tag(writer);
    orvlog_writer_depth_up(writer);
    ORVLOG_DumpNamedOperator(writer, kPaint, "op", call->op);
    dump_shape_member(session, kPaint, "paint_path", call->paint_path);
    dump_shape_list_member(session, kPaint, "clip", call->clip);
    return dump_operands(session, kPaint, members, call->operands, 3);
}

bool strokes_glyphs(const GSH_ShapePointer* paint_path)
{
    return paint_path != nullptr && paint_path->sp_HeaderPtr != nullptr &&
           paint_path->sp_HeaderPtr->sh_ShapeType == GSH_SHAPE_GLYPHS;
}

void dump_stroking_params(ORVLOG_Writer* writer, const GPA_PathStrokingParams* params)
{
    orvlog_writer_open_member(writer, kPaintAndStroke, "stroking_params");
    orvlog_writer_depth_up(writer);
    dump_GPA_PathStrokingParams(writer, params);
    orvlog_writer_depth_down(writer);
    orvlog_writer_close_member(writer, kPaintAndStroke, "stroking_params");
}

void dump_paint_and_stroke_attributes(const ORVLOG_DrawingContext* drawing, const ORVLOG_ObjectPaintAndStrokeCall* call)
{
    ORVLOG_Session* session = drawing->session;
    ORVLOG_Writer* writer = &session->writer;
    const bool strokes = (call->paint_flags & ORV_PAINTFLAGS_STROKE) != 0;
    orvlog_writer_begin_element(writer, kPaintAndStroke);
    orvlog_attr_uint(writer, "id", session->next_object_id++);
    orvlog_attr_uint(writer, "drawing_context", drawing->drawing_context);
    orvlog_attr_uint(writer, "fill_object_type", call->fill_object_type);
    orvlog_attr_uint(writer, "stroke_object_type", call->stroke_object_type);
    orvlog_attr_flags(writer, "object_hints", &ORVLOG_OBJECT_HINTS, call->object_hints);
    orvlog_attr_enum(writer, "path_pixel_placement", &ORVLOG_PLACEMENT, call->path_pixel_placement);
    orvlog_attr_flags(writer, "paint_flags", &ORVLOG_PAINT_FLAGS, call->paint_flags);
    if (strokes && strokes_glyphs(call->paint_path))
        ggo_attr_matrix(writer, "stroking_transform", call->stroking_transform);
    orvlog_writer_end_tag(writer);
    orvlog_writer_depth_up(writer);
}

uint32_t dump_paint_and_stroke(const ORVLOG_DrawingContext* drawing, const ORVLOG_ObjectPaintAndStrokeCall* call)
{
    static constexpr const char* const members[] = {"fill_operand1",   "fill_operand2",   "fill_operand3",
                                                    "stroke_operand1", "stroke_operand2", "stroke_operand3"};
    ORVLOG_Session* session = drawing->session;
    ORVLOG_Writer* writer = &session->writer;
    dump_paint_and_stroke_attributes(drawing, call);
    const bool strokes = (call->paint_flags & ORV_PAINTFLAGS_STROKE) != 0;
    if ((call->paint_flags & ORV_PAINTFLAGS_FILL) != 0)
        ORVLOG_DumpNamedOperator(writer, kPaintAndStroke, "fill_op", call->fill_op);
    if (strokes)
        ORVLOG_DumpNamedOperator(writer, kPaintAndStroke, "stroke_op", call->stroke_op);
    dump_shape_member(session, kPaintAndStroke, "paint_path", call->paint_path);
    if (call->end_point_out != nullptr)
        *call->end_point_out = session->glyph_end_point;
    if (strokes && call->stroking_params != nullptr)
        dump_stroking_params(writer, call->stroking_params);
    dump_shape_list_member(session, kPaintAndStroke, "clip", call->clip);
    return dump_operands(session, kPaintAndStroke, members, call->operands, 6);
}

void dump_resource_paint_attributes(const ORVLOG_DrawingContext* drawing, const ORVLOG_ResourcePaintCall* call)
{
    ORVLOG_Writer* writer = &drawing->session->writer;
    orvlog_writer_begin_element(writer, kResourcePaint);
    orvlog_attr_uint(writer, "drawing_context", drawing->drawing_context);
    orvlog_attr_uint(writer, "resource_id", call->resource_id);
    orvlog_attr_flags(writer, "hints", &ORVLOG_GROUP_HINTS, call->hints);
    orvlog_attr_enum(writer, "group_type", &ORVLOG_GROUP_TYPE, call->group_type);
    ggo_attr_matrix(writer, "retransform", call->retransform);
    // A bare number here, where a group has the names; readers of the log rely on it.
    orvlog_attr_uint(writer, "tiling_flags", call->tiling_flags);
    orvlog_attr_double(writer, "x_repetition_interval", call->x_repetition_interval);
    orvlog_attr_double(writer, "y_repetition_interval", call->y_repetition_interval);
    orvlog_attr_enum(writer, "pixel_placement_orientation", &ORVLOG_ORIENTATION, call->pixel_placement_orientation);
    orvlog_writer_end_tag(writer);
    orvlog_writer_depth_up(writer);
}

uint32_t dump_resource_paint(const ORVLOG_DrawingContext* drawing, const ORVLOG_ResourcePaintCall* call)
{
    ORVLOG_Session* session = drawing->session;
    ORVLOG_Writer* writer = &session->writer;
    dump_resource_paint_attributes(drawing, call);
    ORVLOG_DumpNamedOperator(writer, kResourcePaint, "op", call->op);
    static constexpr const char* const member = "operand2";
    const uint32_t read_well = dump_operands(session, kResourcePaint, &member, &call->operand2, 1);
    dump_shape_list_member(session, kResourcePaint, "group_clip", call->group_clip);
    ORVLOG_DumpNamedColor(writer, kResourcePaint, "separation_mask", call->separation_mask);
    ORVLOG_DumpNamedColor(writer, kResourcePaint, "separation_color", call->separation_color);
    return read_well;
}

uint32_t forward_paint(const ORVLOG_DrawingContext* drawing, const ORVLOG_ObjectPaintCall* call)
{
    const ORV_DrawingInterface* renderer = &drawing->renderer_table;
    if (renderer->object_paint.fn == nullptr)
        return 1;
    return renderer->object_paint.fn(renderer, call->object_type_and_flag, call->object_hints, call->op,
                                     call->paint_path, call->path_pixel_placement, call->clip,
                                     call->operands[0].operand, call->operands[1].operand, call->operands[2].operand);
}

uint32_t forward_paint_and_stroke(const ORVLOG_DrawingContext* drawing, const ORVLOG_ObjectPaintAndStrokeCall* call)
{
    const ORV_DrawingInterface* renderer = &drawing->renderer_table;
    if (renderer->object_paint_and_stroke.fn == nullptr)
        return 1;
    return renderer->object_paint_and_stroke.fn(
        renderer, call->fill_object_type, call->stroke_object_type, call->object_hints, call->fill_op, call->stroke_op,
        call->paint_path, call->stroking_params, call->stroking_transform, call->path_pixel_placement, call->clip,
        call->paint_flags, call->end_point_out, call->operands[0].operand, call->operands[1].operand,
        call->operands[2].operand, call->operands[3].operand, call->operands[4].operand, call->operands[5].operand);
}

uint32_t forward_resource_paint(const ORVLOG_DrawingContext* drawing, const ORVLOG_ResourcePaintCall* call,
                                uint32_t renderer_resource_id)
{
    const ORV_DrawingInterface* renderer = &drawing->renderer_table;
    return renderer->resource_paint.fn(renderer, renderer_resource_id, call->hints, call->group_type, call->retransform,
                                       call->op, call->operand2.operand, call->group_clip, call->tiling_flags,
                                       call->x_repetition_interval, call->y_repetition_interval, call->separation_mask,
                                       call->separation_color, call->pixel_placement_orientation);
}

void close_paint(const ORVLOG_DrawingContext* drawing, const char* element)
{
    if (!orvlog_drawing_is_logged(drawing))
        return;
    orvlog_writer_depth_down(&drawing->session->writer);
    orvlog_writer_close_element(&drawing->session->writer, element);
}

}  // namespace

uint32_t orvlog_object_paint(const ORV_DrawingInterface* table, uint8_t object_type_and_flag, uint32_t object_hints,
                             const GOP_Operator* op, const GSH_ShapePointer* paint_path, uint32_t path_pixel_placement,
                             const GSH_ShapeList* clip, GOP_OperandPointer* operand1, GOP_OperandPointer* operand2,
                             GOP_OperandPointer* operand3)
{
    ORVLOG_DrawingContext* drawing = orvlog_drawing_of(table, &ORV_DrawingInterface::object_paint);
    if (drawing == nullptr)
        return 0;
    ORVLOG_ObjectPaintCall call = {object_type_and_flag,
                                   object_hints,
                                   op,
                                   paint_path,
                                   path_pixel_placement,
                                   clip,
                                   {{operand1, 0, 0, 0}, {operand2, 0, 0, 0}, {operand3, 0, 0, 0}}};
    orvlog_count_operands(call.operands, op);
    begin_object(drawing, object_type_and_flag, paint_path);
    uint32_t read_well = 1;
    if (orvlog_drawing_is_logged(drawing))
    {
        orvlog_replace_operands(drawing->session, call.operands, 3);
        read_well = dump_paint(drawing, &call);
    }
    const uint32_t result = forward_paint(drawing, &call);
    close_paint(drawing, kPaint);
    orvlog_release_operands(call.operands, 3);
    return orvlog_result_after_dump(drawing, read_well, result, ORVLOG_LINE_OBJECT_PAINT);
}

uint32_t orvlog_object_paint_and_stroke(const ORV_DrawingInterface* table, uint8_t fill_object_type,
                                        uint8_t stroke_object_type, uint32_t object_hints, const GOP_Operator* fill_op,
                                        const GOP_Operator* stroke_op, const GSH_ShapePointer* paint_path,
                                        const GPA_PathStrokingParams* stroking_params,
                                        const GGO_Matrix* stroking_transform, uint32_t path_pixel_placement,
                                        const GSH_ShapeList* clip, uint32_t paint_flags, GGO_Point* end_point_out,
                                        GOP_OperandPointer* fill_operand1, GOP_OperandPointer* fill_operand2,
                                        GOP_OperandPointer* fill_operand3, GOP_OperandPointer* stroke_operand1,
                                        GOP_OperandPointer* stroke_operand2, GOP_OperandPointer* stroke_operand3)
{
    ORVLOG_DrawingContext* drawing = orvlog_drawing_of(table, &ORV_DrawingInterface::object_paint_and_stroke);
    if (drawing == nullptr)
        return 0;
    ORVLOG_ObjectPaintAndStrokeCall call = {fill_object_type,
                                            stroke_object_type,
                                            object_hints,
                                            fill_op,
                                            stroke_op,
                                            paint_path,
                                            stroking_params,
                                            stroking_transform,
                                            path_pixel_placement,
                                            clip,
                                            paint_flags,
                                            end_point_out,
                                            {{fill_operand1, 0, 0, 0},
                                             {fill_operand2, 0, 0, 0},
                                             {fill_operand3, 0, 0, 0},
                                             {stroke_operand1, 0, 0, 0},
                                             {stroke_operand2, 0, 0, 0},
                                             {stroke_operand3, 0, 0, 0}}};
    if ((paint_flags & ORV_PAINTFLAGS_FILL) != 0)
        orvlog_count_operands(call.operands, fill_op);
    if ((paint_flags & ORV_PAINTFLAGS_STROKE) != 0)
        orvlog_count_operands(call.operands + 3, stroke_op);
    begin_object(drawing, fill_object_type, paint_path);
    drawing->session->glyph_end_point = {0, 0};
    uint32_t read_well = 1;
    if (orvlog_drawing_is_logged(drawing))
    {
        orvlog_replace_operands(drawing->session, call.operands, 6);
        read_well = dump_paint_and_stroke(drawing, &call);
    }
    const uint32_t result = forward_paint_and_stroke(drawing, &call);
    close_paint(drawing, kPaintAndStroke);
    orvlog_release_operands(call.operands, 6);
    return orvlog_result_after_dump(drawing, read_well, result, ORVLOG_LINE_OBJECT_PAINT_AND_STROKE);
}

uint32_t orvlog_resource_paint(const ORV_DrawingInterface* table, uint32_t resource_id, uint32_t hints,
                               uint32_t group_type, const GGO_Matrix* retransform, const GOP_Operator* op,
                               GOP_OperandPointer* operand2, const GSH_ShapeList* group_clip, uint32_t tiling_flags,
                               double x_repetition_interval, double y_repetition_interval,
                               const GBC_Color* separation_mask, const GBC_Color* separation_color,
                               uint32_t pixel_placement_orientation)
{
    ORVLOG_DrawingContext* drawing = orvlog_drawing_of(table, &ORV_DrawingInterface::resource_paint);
    if (drawing == nullptr)
        return 0;
    ORVLOG_Session* session = drawing->session;
    ORVLOG_ResourcePaintCall call = {resource_id,
                                     hints,
                                     group_type,
                                     retransform,
                                     op,
                                     {operand2, 0, 0, 0},
                                     group_clip,
                                     tiling_flags,
                                     x_repetition_interval,
                                     y_repetition_interval,
                                     separation_mask,
                                     separation_color,
                                     pixel_placement_orientation};
    orvlog_session_clear_scratch(session);
    orvlog_count_mask_operand(&call.operand2, op);
    uint32_t read_well = 1;
    if (orvlog_drawing_is_logged(drawing))
    {
        orvlog_replace_operands(session, &call.operand2, 1);
        read_well = dump_resource_paint(drawing, &call);
    }
    uint32_t result = 1;
    if (drawing->renderer_table.resource_paint.fn != nullptr)
    {
        const ORVLOG_ResourceMapEntry* entry = orvlog_resource_map_find(session, resource_id);
        if (entry == nullptr)
        {
            // The element stays open and the depth raised; readers of the log rely on it.
            orvlog_release_operands(&call.operand2, 1);
            return 0;
        }
        result = forward_resource_paint(drawing, &call, entry->renderer_resource_id);
    }
    orvlog_release_operands(&call.operand2, 1);
    close_paint(drawing, kResourcePaint);
    return orvlog_result_after_dump(drawing, read_well, result, ORVLOG_LINE_RESOURCE_PAINT);
}
