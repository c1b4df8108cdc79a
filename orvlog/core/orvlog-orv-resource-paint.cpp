// ORV_resource_paint: a resource drawn before is put on a drawing.

#include "orvlog/core/orvlog-call-operands.h"
#include "orvlog/core/orvlog-orv.h"
#include "orvlog/log/orvlog-attributes.h"
#include "orvlog/names/orvlog-names.h"
#include "orvlog/records/gbc-color-dump.h"
#include "orvlog/records/ggo-dump.h"
#include "orvlog/records/gop-operator-dump.h"
#include "orvlog/records/gsh-shape-dump.h"

namespace
{

constexpr const char* kElement = "ORV_resource_paint";
constexpr int32_t kLine = 3480;  // by which a failed read of an image is reported

struct ResourcePaintCall
{
    uint32_t resource_id;
    uint32_t hints;
    uint32_t group_type;
    const GGO_Matrix* retransform;
    const GOP_Operator* op;
    ORVLOG_CallOperand operand2;
    const GSH_ShapeList* group_clip;
    uint32_t tiling_flags;
    double x_repetition_interval;
    double y_repetition_interval;
    const GBC_Color* separation_mask;
    const GBC_Color* separation_color;
    uint32_t pixel_placement_orientation;
};

void dump_attributes(const ORVLOG_DrawingContext* drawing, const ResourcePaintCall* call)
{
    ORVLOG_Writer* writer = &drawing->session->writer;
    orvlog_writer_begin_element(writer, kElement);
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
    orvlog_writer_enter(writer);
}

uint32_t dump(const ORVLOG_DrawingContext* drawing, const ResourcePaintCall* call)
{
    ORVLOG_Session* session = drawing->session;
    ORVLOG_Writer* writer = &session->writer;
    dump_attributes(drawing, call);
    ORVLOG_DumpNamedOperator(writer, kElement, "op", call->op);
    static constexpr const char* const kMember = "operand2";
    const uint32_t read_well = orvlog_dump_operands(session, kElement, &kMember, &call->operand2, 1);
    dump_shape_list_member(session, kElement, "group_clip", call->group_clip);
    ORVLOG_DumpNamedColor(writer, kElement, "separation_mask", call->separation_mask);
    ORVLOG_DumpNamedColor(writer, kElement, "separation_color", call->separation_color);
    return read_well;
}

// False when the client names a resource that is not known, and nothing was forwarded.
bool forward(const ORVLOG_DrawingContext* drawing, const ResourcePaintCall* call, uint32_t* result)
{
    const ORV_DrawingInterface* renderer = &drawing->renderer_table;
    if (renderer->resource_paint.fn == nullptr)
        return true;
    const ORVLOG_ResourceMapEntry* entry = orvlog_resource_map_find(drawing->session, call->resource_id);
    if (entry == nullptr)
        return false;
    *result = renderer->resource_paint.fn(
        renderer, entry->renderer_resource_id, call->hints, call->group_type, call->retransform, call->op,
        call->operand2.operand, call->group_clip, call->tiling_flags, call->x_repetition_interval,
        call->y_repetition_interval, call->separation_mask, call->separation_color, call->pixel_placement_orientation);
    return true;
}

}  // namespace

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
    ResourcePaintCall call = {
        .resource_id = resource_id,
        .hints = hints,
        .group_type = group_type,
        .retransform = retransform,
        .op = op,
        .operand2 = {.operand = operand2},
        .group_clip = group_clip,
        .tiling_flags = tiling_flags,
        .x_repetition_interval = x_repetition_interval,
        .y_repetition_interval = y_repetition_interval,
        .separation_mask = separation_mask,
        .separation_color = separation_color,
        .pixel_placement_orientation = pixel_placement_orientation,
    };
    orvlog_session_clear_scratch(drawing->session);
    orvlog_count_mask_operand(&call.operand2, op);
    uint32_t read_well = 1;
    if (orvlog_drawing_is_logged(drawing))
    {
        orvlog_replace_operands(drawing->session, &call.operand2, 1);
        read_well = dump(drawing, &call);
    }
    uint32_t result = 1;
    const bool known = forward(drawing, &call, &result);
    orvlog_release_operands(&call.operand2, 1);
    // The element of an unknown resource stays open and the depth raised; readers of the log rely on it.
    if (!known)
        return 0;
    orvlog_close_call(drawing, kElement);
    return orvlog_result_after_dump(drawing, read_well, result, kLine);
}
