#include "orvlog/colour/orvlog-colour-ticket.h"
#include "orvlog/core/orvlog-orv-names.h"
#include "orvlog/core/orvlog-orv.h"
#include "orvlog/font/orvlog-font-wrapper.h"
#include "orvlog/image/gop-operand-pointer.h"
#include "orvlog/image/orvlog-image-wrapper.h"
#include "orvlog/log/orvlog-attributes.h"
#include "orvlog/records/gbc-color-dump.h"
#include "orvlog/records/ggo-dump.h"
#include "orvlog/records/gop-operator-dump.h"
#include "orvlog/records/gsh-shape-dump.h"

namespace
{

// Wraps the engine of a group and puts it in force. Without a frame to remember it by, the wrapper stays to the
// session's end.
void install_engine(ORVLOG_Session* session, ORVLOG_GroupFrame* frame, ORVLOG_GroupStartCall* call)
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

void dump_attributes(const ORVLOG_DrawingContext* drawing, ORVLOG_GroupFrame* frame, ORVLOG_GroupStartCall* call)
{
    ORVLOG_Writer* writer = &drawing->session->writer;
    orvlog_writer_begin_element(writer, "ORV_group_start");
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
    orvlog_writer_end_tag(writer);
    orvlog_writer_depth_up(writer);
}

uint32_t dump_members(ORVLOG_Session* session, const ORVLOG_GroupStartCall* call)
{
    ORVLOG_Writer* writer = &session->writer;
    uint32_t read_well = 1;
    ORVLOG_DumpColorTicket(session, call->colour_ticket);
    ORVLOG_DumpNamedOperator(writer, "ORV_group_start", "op", call->op);
    if (call->operand2.counts != 0)
        read_well = ORVLOG_DumpNamedOperand(session, "ORV_group_start", "operand2", call->operand2.operand);
    dump_shape_list_member(session, "ORV_group_start", "group_clip", call->group_clip);
    ORVLOG_DumpNamedColor(writer, "ORV_group_start", "separation_mask", call->separation_mask);
    ORVLOG_DumpNamedColor(writer, "ORV_group_start", "separation_color", call->separation_color);
    return read_well;
}

uint32_t open_group(ORVLOG_DrawingContext* drawing, ORVLOG_GroupStartCall* call)
{
    ORVLOG_Session* session = drawing->session;
    ORVLOG_GroupFrame* frame = orvlog_push_group_frame(drawing);
    replace_mask(session, frame, &call->operand2);
    if (frame != nullptr)
        orvlog_set_group_transform(frame, call->retransform);
    orvlog_push_colour_frame(session, call->colour_ticket);
    dump_attributes(drawing, frame, call);
    return dump_members(session, call);
}

uint32_t forward_group_start(ORVLOG_DrawingContext* drawing, const ORVLOG_GroupStartCall* call)
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

void dump_ending(const ORVLOG_DrawingContext* drawing, const char* name)
{
    ORVLOG_Writer* writer = &drawing->session->writer;
    orvlog_writer_begin_element(writer, name);
    orvlog_attr_uint(writer, "drawing_context", drawing->drawing_context);
    orvlog_writer_end_tag(writer);
    orvlog_writer_close_element(writer, name);
}

// Ends the drawing of the second receiver by one of the two calls that do so; its low bit counts. A second receiver
// sees only faces, and each of them ends once.
template <typename Entry> uint32_t end_second(ORVLOG_DrawingContext* drawing, Entry ORV_DrawingInterface::*entry)
{
    ORVLOG_Session* session = drawing->session;
    if (session->second_drawing != drawing)
        return 1;
    const ORV_DrawingInterface* second = &session->second_drawing_table;
    uint32_t result = 1;
    if (session->second_interface != nullptr && (second->*entry).fn != nullptr)
        result = (second->*entry).fn(second) & 1;
    session->second_drawing = nullptr;
    return result;
}

void release_drawing(ORVLOG_DrawingContext* drawing)
{
    ORVLOG_Session* session = drawing->session;
    while (drawing->group_frames != nullptr)
        orvlog_pop_group(drawing);
    while (orvlog_end_frameless_group(drawing))
    {
    }
    if (drawing->font_wrapper != nullptr)
    {
        font_wrapper_end_scope(session, drawing->font_wrapper, drawing->saved_font_wrapper);
        session->current_font_wrapper = drawing->saved_font_wrapper;
    }
    orvlog_close_drawing(drawing);
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
    ORVLOG_GroupStartCall call = {group_unique_id,
                                  group_out,
                                  nullptr,
                                  font_engine_functions,
                                  hints,
                                  group_type,
                                  is_knockout,
                                  is_replayable,
                                  colour_ticket,
                                  pixel_placement_orientation,
                                  has_pixel_placement,
                                  pixel_placement,
                                  retransform,
                                  op,
                                  {operand2, 0, 0, 0},
                                  group_clip,
                                  tiling_flags,
                                  x_repetition_interval,
                                  y_repetition_interval,
                                  separation_mask,
                                  separation_color,
                                  bounding_box_hint};
    orvlog_count_mask_operand(&call.operand2, op);
    uint32_t read_well = 1;
    if (orvlog_drawing_is_logged(drawing))
        read_well = open_group(drawing, &call);
    const uint32_t result = forward_group_start(drawing, &call);
    if (orvlog_drawing_is_logged(drawing))
    {
        orvlog_writer_depth_down(&drawing->session->writer);
        orvlog_writer_close_element(&drawing->session->writer, "ORV_group_start");
    }
    return orvlog_result_after_dump(drawing, read_well, result, ORVLOG_LINE_GROUP_START);
}

uint32_t orvlog_group_finish(const ORV_DrawingInterface* table, uint32_t* replay_out)
{
    ORVLOG_DrawingContext* drawing = orvlog_drawing_of(table, &ORV_DrawingInterface::group_finish);
    if (drawing == nullptr)
        return 0;
    ORVLOG_Session* session = drawing->session;
    orvlog_session_clear_scratch(session);
    uint32_t no_replay = 0;
    uint32_t* replay = replay_out != nullptr ? replay_out : &no_replay;
    const ORV_DrawingInterface* renderer = &drawing->renderer_table;
    uint32_t result = 1;
    if (renderer->group_finish.fn != nullptr)
        result = renderer->group_finish.fn(renderer, replay);
    else
        *replay = 0;
    if (!orvlog_drawing_is_logged(drawing))
        return result;
    if (*replay == 0)
    {
        if (!orvlog_end_frameless_group(drawing))
            orvlog_pop_group(drawing);
        orvlog_pop_colour_frame(session);
    }
    ORVLOG_Writer* writer = &session->writer;
    orvlog_writer_begin_element(writer, "ORV_group_finish");
    orvlog_attr_uint(writer, "drawing_context", drawing->drawing_context);
    orvlog_attr_bool(writer, "replay_group", *replay);
    orvlog_writer_end_tag(writer);
    orvlog_writer_close_element(writer, "ORV_group_finish");
    return result;
}

void* orvlog_drawing_error_context(const ORV_DrawingInterface* table)
{
    const ORVLOG_DrawingContext* drawing = orvlog_drawing_of(table, &ORV_DrawingInterface::drawing_error_context);
    return drawing != nullptr ? drawing->error_context : nullptr;
}

// Finish joins the results of both receivers; discard lets the renderer's replace the other's. Clients rely on
// either.

uint32_t orvlog_drawing_finish(const ORV_DrawingInterface* table)
{
    ORVLOG_DrawingContext* drawing = orvlog_drawing_of(table, &ORV_DrawingInterface::drawing_finish);
    if (drawing == nullptr)
        return 0;
    orvlog_pop_colour_frame(drawing->session);
    dump_ending(drawing, "ORV_drawing_finish");
    uint32_t result = end_second(drawing, &ORV_DrawingInterface::drawing_finish);
    const ORV_DrawingInterface* renderer = &drawing->renderer_table;
    if (renderer->drawing_finish.fn != nullptr)
        result &= renderer->drawing_finish.fn(renderer);
    release_drawing(drawing);
    return result;
}

uint32_t orvlog_drawing_discard(const ORV_DrawingInterface* table)
{
    ORVLOG_DrawingContext* drawing = orvlog_drawing_of(table, &ORV_DrawingInterface::drawing_discard);
    if (drawing == nullptr)
        return 0;
    orvlog_pop_colour_frame(drawing->session);
    dump_ending(drawing, "ORV_drawing_discard");
    uint32_t result = end_second(drawing, &ORV_DrawingInterface::drawing_discard);
    const ORV_DrawingInterface* renderer = &drawing->renderer_table;
    if (renderer->drawing_discard.fn != nullptr)
        result = renderer->drawing_discard.fn(renderer);
    release_drawing(drawing);
    return result;
}
