// ORV_object_paint: a shape, or all that the clip leaves, painted with up to three operands.

#include "orvlog/core/orvlog-call-operands.h"
#include "orvlog/core/orvlog-orv.h"
#include "orvlog/log/orvlog-attributes.h"
#include "orvlog/names/orvlog-names.h"
#include "orvlog/records/gop-operator-dump.h"
#include "orvlog/records/gsh-shape-dump.h"

namespace
{

constexpr const char* kElement = "ORV_object_paint";
constexpr int32_t kLine = 3786;  // by which a failed read of an image is reported

struct ObjectPaintCall
{
    uint8_t object_type_and_flag;
    uint32_t object_hints;
    const GOP_Operator* op;
    const GSH_ShapePointer* paint_path;
    uint32_t path_pixel_placement;
    const GSH_ShapeList* clip;
    ORVLOG_CallOperand operands[3];
};

uint32_t dump(const ORVLOG_DrawingContext* drawing, const ObjectPaintCall* call)
{
    static constexpr const char* const kMembers[] = {"operand1", "operand2", "operand3"};
    ORVLOG_Session* session = drawing->session;
    ORVLOG_Writer* writer = &session->writer;
    orvlog_writer_begin_element(writer, kElement);
    orvlog_attr_uint(writer, "id", session->next_object_id++);
    orvlog_attr_uint(writer, "drawing_context", drawing->drawing_context);
    orvlog_attr_uint(writer, "object_type_and_flag", call->object_type_and_flag);
    orvlog_attr_flags(writer, "object_hints", &ORVLOG_OBJECT_HINTS, call->object_hints);
    orvlog_attr_enum(writer, "path_pixel_placement", &ORVLOG_PLACEMENT, call->path_pixel_placement);
    orvlog_writer_enter(writer);
    ORVLOG_DumpNamedOperator(writer, kElement, "op", call->op);
    dump_shape_member(session, kElement, "paint_path", call->paint_path);
    dump_shape_list_member(session, kElement, "clip", call->clip);
    return orvlog_dump_operands(session, kElement, kMembers, call->operands, 3);
}

uint32_t forward(const ORVLOG_DrawingContext* drawing, const ObjectPaintCall* call)
{
    const ORV_DrawingInterface* renderer = &drawing->renderer_table;
    if (renderer->object_paint.fn == nullptr)
        return 1;
    return renderer->object_paint.fn(renderer, call->object_type_and_flag, call->object_hints, call->op,
                                     call->paint_path, call->path_pixel_placement, call->clip,
                                     call->operands[0].operand, call->operands[1].operand, call->operands[2].operand);
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
    ObjectPaintCall call = {
        .object_type_and_flag = object_type_and_flag,
        .object_hints = object_hints,
        .op = op,
        .paint_path = paint_path,
        .path_pixel_placement = path_pixel_placement,
        .clip = clip,
        .operands = {{.operand = operand1}, {.operand = operand2}, {.operand = operand3}},
    };
    orvlog_count_operands(call.operands, op);
    orvlog_begin_object(drawing, object_type_and_flag, paint_path);
    uint32_t read_well = 1;
    if (orvlog_drawing_is_logged(drawing))
    {
        orvlog_replace_operands(drawing->session, call.operands, 3);
        read_well = dump(drawing, &call);
    }
    const uint32_t result = forward(drawing, &call);
    orvlog_close_call(drawing, kElement);
    orvlog_release_operands(call.operands, 3);
    return orvlog_result_after_dump(drawing, read_well, result, kLine);
}
