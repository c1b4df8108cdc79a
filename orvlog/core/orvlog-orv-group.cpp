// ORV_group_start and ORV_group_finish.

#include "orvlog/colour/orvlog-colour-ticket.h"
#include "orvlog/core/orvlog-call-operands.h"
#include "orvlog/core/orvlog-orv.h"
#include "orvlog/font/orvlog-font-wrapper.h"
#include "orvlog/image/gop-operand-pointer.h"
#include "orvlog/image/orvlog-image-wrapper.h"
#include "orvlog/log/orvlog-attributes.h"
#include "orvlog/names/orvlog-names.h"
#include "orvlog/records/gbc-color-dump.h"
#include "orvlog/records/ggo-dump.h"
#include "orvlog/records/gop-operator-dump.h"
#include "orvlog/records/gsh-shape-dump.h"
#include "orvlog/session/orvlog-frames.h"

namespace
{

constexpr const char* kStart = "ORV_group_start";
constexpr const char* kFinish = "ORV_group_finish";
constexpr int32_t kLine = 2523;  // by which a failed read of an image is reported

struct GroupStartCall
{
    uint32_t group_unique_id;
    uint32_t* group_out;
    const GFI_FontEngineTable* font_engine;            // as logged: the wrapped one, or null
    const GFI_FontEngineTable* forwarded_font_engine;  // the client's own where no wrapper could be had
    uint32_t hints;
    uint32_t group_type;
    uint32_t is_knockout;
    uint32_t is_replayable;
    void* colour_ticket;
    uint32_t pixel_placement_orientation;
    uint32_t has_pixel_placement;
    uint32_t pixel_placement;
    const GGO_Matrix* retransform;
    const GOP_Operator* op;
    ORVLOG_CallOperand operand2;
    const GSH_ShapeList* group_clip;
    uint32_t tiling_flags;
    double x_repetition_interval;
    double y_repetition_interval;
    const GBC_Color* separation_mask;
    const GBC_Color* separation_color;
    const GGO_BoxFloat* bounding_box_hint;
};

struct GroupFinishCall
{
    uint32_t* replay;  // where the renderer answers; never null
};

// Wraps the engine of a group and puts it in force. Without a frame to remember it by, the wrapper stays to the
// session's end.
void install_engine(ORVLOG_Session* session, ORVLOG_GroupFrame* frame, GroupStartCall* call)
{
    if (frame != nullptr)
        frame->saved_font_wrapper = session->current_font_wrapper;
    const ORVLOG_EngineArgument argument = orvlog_wrap_engine(session, call->forwarded_font_engine);
    call->font_engine = argument.logged;
    call->forwarded_font_engine = argument.forwarded;
    if (argument.logged == nullptr)
        return;
    session->current_font_wrapper = argument.logged;
    if (frame == nullptr)
        return;
    frame->owns_font_wrapper = 1;
    frame->font_wrapper = argument.logged;
}

void replace_mask(ORVLOG_Session* session, ORVLOG_GroupFrame* frame, ORVLOG_CallOperand* operand2)
{
    if (frame == nullptr || operand2->counts == 0)
        return;
    frame->operand_kept = 0;
    const GOP_OperandPointer* before = operand2->operand;
    ORVLOG_ReplaceImageOperand(session, &operand2->operand, &frame->operand_kept);
    if (operand2->operand != before)
        frame->replaced_operand = operand2->operand;
}

void dump_start_attributes(const ORVLOG_DrawingContext* drawing, ORVLOG_GroupFrame* frame, GroupStartCall* call)
{
    ORVLOG_Writer* writer = &drawing->session->writer;
    orvlog_writer_begin_element(writer, kStart);
    orvlog_attr_uint(writer, "drawing_context", drawing->drawing_context);
    install_engine(drawing->session, frame, call);
    orvlog_attr_uint(writer, "group_unique_id", call->group_unique_id);
    orvlog_attr_font_engine(writer, call->font_engine);
    orvlog_attr_flags(writer, "hints", &ORVLOG_GROUP_HINTS, call->hints);
    orvlog_attr_enum(writer, "group_type", &ORVLOG_GROUP_TYPE, call->group_type);
    orvlog_attr_bool(writer, "is_knockout", call->is_knockout);
    orvlog_attr_bool(writer, "is_replayable", call->is_replayable);
    orvlog_attr_enum(writer, "pixel_placement_orientation", &ORVLOG_ORIENTATION, call->pixel_placement_orientation);
    orvlog_attr_bool(writer, "has_pixel_placement", call->has_pixel_placement);
    if (call->has_pixel_placement != 0)
        orvlog_attr_enum(writer, "pixel_placement", &ORVLOG_PLACEMENT, call->pixel_placement);
    ggo_attr_matrix(writer, "retransform", call->retransform);
    orvlog_attr_flags(writer, "tiling_flags", &ORVLOG_TILING_FLAGS, call->tiling_flags);
    orvlog_attr_double(writer, "x_repetition_interval", call->x_repetition_interval);
    orvlog_attr_double(writer, "y_repetition_interval", call->y_repetition_interval);
    ggo_attr_box(writer, "bounding_box_hint", call->bounding_box_hint);
    orvlog_writer_enter(writer);
}

uint32_t dump_start_members(ORVLOG_Session* session, const GroupStartCall* call)
{
    ORVLOG_Writer* writer = &session->writer;
    uint32_t read_well = 1;
    ORVLOG_DumpColorTicket(session, call->colour_ticket);
    ORVLOG_DumpNamedOperator(writer, kStart, "op", call->op);
    if (call->operand2.counts != 0)
        read_well = ORVLOG_DumpNamedOperand(session, kStart, "operand2", call->operand2.operand);
    dump_shape_list_member(session, kStart, "group_clip", call->group_clip);
    ORVLOG_DumpNamedColor(writer, kStart, "separation_mask", call->separation_mask);
    ORVLOG_DumpNamedColor(writer, kStart, "separation_color", call->separation_color);
    return read_well;
}

uint32_t open_group(ORVLOG_DrawingContext* drawing, GroupStartCall* call)
{
    ORVLOG_Session* session = drawing->session;
    ORVLOG_GroupFrame* frame = orvlog_push_group_frame(drawing);
    replace_mask(session, frame, &call->operand2);
    if (frame != nullptr)
        orvlog_set_group_transform(frame, call->retransform);
    orvlog_push_colour_frame(session, call->colour_ticket);
    dump_start_attributes(drawing, frame, call);
    return dump_start_members(session, call);
}

uint32_t forward_start(ORVLOG_DrawingContext* drawing, const GroupStartCall* call)
{
    const ORV_DrawingInterface* renderer = &drawing->renderer_table;
    if (renderer->group_start.fn == nullptr)
    {
        if (call->group_out != nullptr)
            *call->group_out = 0;
        return 1;
    }
    return renderer->group_start.fn(
        renderer, call->group_unique_id, call->group_out, call->forwarded_font_engine, call->hints, call->group_type,
        call->is_knockout, call->is_replayable, call->colour_ticket, call->pixel_placement_orientation,
        call->has_pixel_placement, call->pixel_placement, call->retransform, call->op, call->operand2.operand,
        call->group_clip, call->tiling_flags, call->x_repetition_interval, call->y_repetition_interval,
        call->separation_mask, call->separation_color, call->bounding_box_hint);
}

// What the renderer answers decides whether the group ends, so this call is written behind its forward.
uint32_t forward_finish(const ORVLOG_DrawingContext* drawing, const GroupFinishCall* call)
{
    const ORV_DrawingInterface* renderer = &drawing->renderer_table;
    if (renderer->group_finish.fn != nullptr)
        return renderer->group_finish.fn(renderer, call->replay);
    *call->replay = 0;
    return 1;
}

void end_group(ORVLOG_DrawingContext* drawing)
{
    if (!orvlog_end_frameless_group(drawing))
        orvlog_pop_group(drawing);
    orvlog_pop_colour_frame(drawing->session);
}

void dump_finish(const ORVLOG_DrawingContext* drawing, const GroupFinishCall* call)
{
    ORVLOG_Writer* writer = &drawing->session->writer;
    orvlog_writer_begin_element(writer, kFinish);
    orvlog_attr_uint(writer, "drawing_context", drawing->drawing_context);
    orvlog_attr_bool(writer, "replay_group", *call->replay);
    orvlog_writer_end_empty(writer, kFinish);
}

}  // namespace

void orvlog_pop_group(ORVLOG_DrawingContext* drawing)
{
    ORVLOG_Session* session = drawing->session;
    const ORVLOG_GroupFrame* frame = drawing->group_frames;
    if (frame == nullptr)
        return;
    if (frame->owns_font_wrapper != 0)
        font_wrapper_end_scope(session, frame->font_wrapper, frame->saved_font_wrapper);
    session->current_font_wrapper = frame->saved_font_wrapper;
    if (frame->replaced_operand != nullptr)
        ORVLOG_EndImageCall(reinterpret_cast<GOP_OperandImagePointer*>(frame->replaced_operand), frame->operand_kept);
    orvlog_unlink_group_frame(drawing);
}

uint32_t orvlog_group_start(const ORV_DrawingInterface* table, uint32_t group_unique_id, uint32_t* group_out,
                            const GFI_FontEngineTable* font_engine_functions, uint32_t hints, uint32_t group_type,
                            uint32_t is_knockout, uint32_t is_replayable, void* colour_ticket,
                            uint32_t pixel_placement_orientation, uint32_t has_pixel_placement,
                            uint32_t pixel_placement, const GGO_Matrix* retransform, const GOP_Operator* op,
                            GOP_OperandPointer* operand2, const GSH_ShapeList* group_clip, uint32_t tiling_flags,
                            double x_repetition_interval, double y_repetition_interval,
                            const GBC_Color* separation_mask, const GBC_Color* separation_color,
                            const GGO_BoxFloat* bounding_box_hint)
{
    ORVLOG_DrawingContext* drawing = orvlog_drawing_of(table, &ORV_DrawingInterface::group_start);
    if (drawing == nullptr)
        return 0;
    GroupStartCall call = {
        .group_unique_id = group_unique_id,
        .group_out = group_out,
        .font_engine = nullptr,
        .forwarded_font_engine = font_engine_functions,
        .hints = hints,
        .group_type = group_type,
        .is_knockout = is_knockout,
        .is_replayable = is_replayable,
        .colour_ticket = colour_ticket,
        .pixel_placement_orientation = pixel_placement_orientation,
        .has_pixel_placement = has_pixel_placement,
        .pixel_placement = pixel_placement,
        .retransform = retransform,
        .op = op,
        .operand2 = {.operand = operand2},
        .group_clip = group_clip,
        .tiling_flags = tiling_flags,
        .x_repetition_interval = x_repetition_interval,
        .y_repetition_interval = y_repetition_interval,
        .separation_mask = separation_mask,
        .separation_color = separation_color,
        .bounding_box_hint = bounding_box_hint,
    };
    orvlog_count_mask_operand(&call.operand2, op);
    uint32_t read_well = 1;
    if (orvlog_drawing_is_logged(drawing))
        read_well = open_group(drawing, &call);
    const uint32_t result = forward_start(drawing, &call);
    orvlog_close_call(drawing, kStart);
    return orvlog_result_after_dump(drawing, read_well, result, kLine);
}

uint32_t orvlog_group_finish(const ORV_DrawingInterface* table, uint32_t* replay_out)
{
    ORVLOG_DrawingContext* drawing = orvlog_drawing_of(table, &ORV_DrawingInterface::group_finish);
    if (drawing == nullptr)
        return 0;
    uint32_t no_replay = 0;
    const GroupFinishCall call = {.replay = replay_out != nullptr ? replay_out : &no_replay};
    orvlog_session_clear_scratch(drawing->session);
    const uint32_t result = forward_finish(drawing, &call);
    if (!orvlog_drawing_is_logged(drawing))
        return result;
    if (*call.replay == 0)
        end_group(drawing);
    dump_finish(drawing, &call);
    return result;
}
