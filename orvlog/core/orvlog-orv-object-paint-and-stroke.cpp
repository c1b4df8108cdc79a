// ORV_object_paint_and_stroke: a path or text filled and stroked, each with up to three operands.

#include "orvlog/core/orvlog-call-operands.h"
#include "orvlog/core/orvlog-orv.h"
#include "orvlog/log/orvlog-attributes.h"
#include "orvlog/log/orvlog-scope.h"
#include "orvlog/names/orvlog-names.h"
#include "orvlog/records/ggo-dump.h"
#include "orvlog/records/gop-operator-dump.h"
#include "orvlog/records/gpa-path-dump.h"
#include "orvlog/records/gsh-shape-dump.h"

namespace
{

constexpr const char* kElement = "ORV_object_paint_and_stroke";
constexpr int32_t kLine = 4346;  // by which a failed read of an image is reported

struct ObjectPaintAndStrokeCall
{
    uint8_t fill_object_type;
    uint8_t stroke_object_type;
    uint32_t object_hints;
    const GOP_Operator* fill_op;
    const GOP_Operator* stroke_op;
    const GSH_ShapePointer* paint_path;
    const GPA_PathStrokingParams* stroking_params;
    const GGO_Matrix* stroking_transform;
    uint32_t path_pixel_placement;
    const GSH_ShapeList* clip;
    uint32_t paint_flags;
    GGO_Point* end_point_out;
    ORVLOG_CallOperand operands[6];  // fill 1 to 3, stroke 1 to 3
};

bool strokes_glyphs(const GSH_ShapePointer* paint_path)
{
    return paint_path != nullptr && paint_path->sp_HeaderPtr != nullptr &&
           paint_path->sp_HeaderPtr->sh_ShapeType == GSH_SHAPE_GLYPHS;
}

void dump_stroking_params(ORVLOG_Writer* writer, const GPA_PathStrokingParams* params)
{
    const ORVLOG_Member member(writer, kElement, "stroking_params");
    dump_GPA_PathStrokingParams(writer, params);
}

void dump_attributes(const ORVLOG_DrawingContext* drawing, const ObjectPaintAndStrokeCall* call)
{
    ORVLOG_Session* session = drawing->session;
    ORVLOG_Writer* writer = &session->writer;
    const bool strokes = (call->paint_flags & ORV_PAINTFLAGS_STROKE) != 0;
    orvlog_writer_begin_element(writer, kElement);
    orvlog_attr_uint(writer, "id", session->next_object_id++);
    orvlog_attr_uint(writer, "drawing_context", drawing->drawing_context);
    orvlog_attr_uint(writer, "fill_object_type", call->fill_object_type);
    orvlog_attr_uint(writer, "stroke_object_type", call->stroke_object_type);
    orvlog_attr_flags(writer, "object_hints", &ORVLOG_OBJECT_HINTS, call->object_hints);
    orvlog_attr_enum(writer, "path_pixel_placement", &ORVLOG_PLACEMENT, call->path_pixel_placement);
    orvlog_attr_flags(writer, "paint_flags", &ORVLOG_PAINT_FLAGS, call->paint_flags);
    if (strokes && strokes_glyphs(call->paint_path))
        ggo_attr_matrix(writer, "stroking_transform", call->stroking_transform);
    orvlog_writer_enter(writer);
}

uint32_t dump(const ORVLOG_DrawingContext* drawing, const ObjectPaintAndStrokeCall* call)
{
    static constexpr const char* const kMembers[] = {"fill_operand1",   "fill_operand2",   "fill_operand3",
                                                     "stroke_operand1", "stroke_operand2", "stroke_operand3"};
    ORVLOG_Session* session = drawing->session;
    ORVLOG_Writer* writer = &session->writer;
    dump_attributes(drawing, call);
    const bool strokes = (call->paint_flags & ORV_PAINTFLAGS_STROKE) != 0;
    if ((call->paint_flags & ORV_PAINTFLAGS_FILL) != 0)
        ORVLOG_DumpNamedOperator(writer, kElement, "fill_op", call->fill_op);
    if (strokes)
        ORVLOG_DumpNamedOperator(writer, kElement, "stroke_op", call->stroke_op);
    dump_shape_member(session, kElement, "paint_path", call->paint_path);
    if (call->end_point_out != nullptr)
        *call->end_point_out = session->glyph_end_point;
    if (strokes && call->stroking_params != nullptr)
        dump_stroking_params(writer, call->stroking_params);
    dump_shape_list_member(session, kElement, "clip", call->clip);
    return orvlog_dump_operands(session, kElement, kMembers, call->operands, 6);
}

uint32_t forward(const ORVLOG_DrawingContext* drawing, const ObjectPaintAndStrokeCall* call)
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

// The flags say which sides are painted at all.
void count_operands(ObjectPaintAndStrokeCall* call)
{
    if ((call->paint_flags & ORV_PAINTFLAGS_FILL) != 0)
        orvlog_count_operands(call->operands, call->fill_op);
    if ((call->paint_flags & ORV_PAINTFLAGS_STROKE) != 0)
        orvlog_count_operands(call->operands + 3, call->stroke_op);
}

}  // namespace

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
    ObjectPaintAndStrokeCall call = {
        .fill_object_type = fill_object_type,
        .stroke_object_type = stroke_object_type,
        .object_hints = object_hints,
        .fill_op = fill_op,
        .stroke_op = stroke_op,
        .paint_path = paint_path,
        .stroking_params = stroking_params,
        .stroking_transform = stroking_transform,
        .path_pixel_placement = path_pixel_placement,
        .clip = clip,
        .paint_flags = paint_flags,
        .end_point_out = end_point_out,
        .operands = {{.operand = fill_operand1},
                     {.operand = fill_operand2},
                     {.operand = fill_operand3},
                     {.operand = stroke_operand1},
                     {.operand = stroke_operand2},
                     {.operand = stroke_operand3}},
    };
    count_operands(&call);
    orvlog_begin_object(drawing, fill_object_type, paint_path);
    drawing->session->glyph_end_point = {0, 0};
    uint32_t read_well = 1;
    if (orvlog_drawing_is_logged(drawing))
    {
        orvlog_replace_operands(drawing->session, call.operands, 6);
        read_well = dump(drawing, &call);
    }
    const uint32_t result = forward(drawing, &call);
    orvlog_close_call(drawing, kElement);
    orvlog_release_operands(call.operands, 6);
    return orvlog_result_after_dump(drawing, read_well, result, kLine);
}
