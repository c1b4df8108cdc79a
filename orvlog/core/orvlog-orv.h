// The wrappers behind the tables that a client gets, and what they share.
//
// Every wrapper does its bookkeeping, writes the element of the call, forwards, and gives back the renderer's
// result. A call for which there is no renderer gives 1.

#pragma once

#include "orvlog/core/orvlog-calls.h"
#include "orvlog/session/orvlog-frames.h"
#include "orvlog/session/orvlog-session.h"

#include <cstdint>

// What stands in the context word of the entry on which a call is made; null without a table, and then the call
// gives 0.
template <typename Entry> ORVLOG_Session* orvlog_session_of(const ORV_Interface* table, Entry ORV_Interface::*entry)
{
    return table != nullptr ? static_cast<ORVLOG_Session*>((table->*entry).context) : nullptr;
}
template <typename Entry>
ORVLOG_DrawingContext* orvlog_drawing_of(const ORV_DrawingInterface* table, Entry ORV_DrawingInterface::*entry)
{
    return table != nullptr ? static_cast<ORVLOG_DrawingContext*>((table->*entry).context) : nullptr;
}

// Fills all entries of a drawing table.
void orvlog_fill_drawing_interface(ORV_DrawingInterface* table, ORVLOG_DrawingContext* drawing);

// The renderer's own table, or null.
const ORV_Interface* orvlog_renderer_of(const ORV_Interface* table);

// Wraps an engine argument. `logged` takes the wrapped table, or null where none was given or none could be had;
// `forwarded` is what the renderer gets: the wrapped table, or else the client's own.
struct ORVLOG_EngineArgument
{
    const GFI_FontEngineTable* logged;
    const GFI_FontEngineTable* forwarded;
};
ORVLOG_EngineArgument orvlog_wrap_engine(ORVLOG_Session* session, const GFI_FontEngineTable* engine);

// The attributes font_engine_functions, fp_EngineIdGet and GfpId of a scope that wrapped its engine.
void orvlog_attr_font_engine(ORVLOG_Writer* writer, const GFI_FontEngineTable* wrapped);

// Decides which of the three operands count for an operator that may be null.
void orvlog_count_operands(ORVLOG_CallOperand* operands, const GOP_Operator* op);
// Operand 2 of a group or a resource counts when the operator has a mask mode.
void orvlog_count_mask_operand(ORVLOG_CallOperand* operand, const GOP_Operator* op);
// Exchanges the images among the operands that count.
void orvlog_replace_operands(ORVLOG_Session* session, ORVLOG_CallOperand* operands, uint32_t count);
// Frees what was exchanged and has not been kept.
void orvlog_release_operands(const ORVLOG_CallOperand* operands, uint32_t count);

// The source lines by which a failed image read is reported.
enum : int32_t
{
    ORVLOG_LINE_GROUP_START = 2523,
    ORVLOG_LINE_RESOURCE_PAINT = 3480,
    ORVLOG_LINE_OBJECT_PAINT = 3786,
    ORVLOG_LINE_OBJECT_PAINT_AND_STROKE = 4346
};

// What the client gets: in base mode a failed read of an image is reported and makes 0 of any result.
uint32_t orvlog_result_after_dump(const ORVLOG_DrawingContext* drawing, uint32_t read_well, uint32_t result,
                                  int32_t line);

// Pops the top group frame with all that it owns.
void orvlog_pop_group(ORVLOG_DrawingContext* drawing);

uint32_t orvlog_object_paint(const ORV_DrawingInterface* table, uint8_t object_type_and_flag, uint32_t object_hints,
                             const GOP_Operator* op, const GSH_ShapePointer* paint_path, uint32_t path_pixel_placement,
                             const GSH_ShapeList* clip, GOP_OperandPointer* operand1, GOP_OperandPointer* operand2,
                             GOP_OperandPointer* operand3);
uint32_t orvlog_object_paint_and_stroke(const ORV_DrawingInterface* table, uint8_t fill_object_type,
                                        uint8_t stroke_object_type, uint32_t object_hints, const GOP_Operator* fill_op,
                                        const GOP_Operator* stroke_op, const GSH_ShapePointer* paint_path,
                                        const GPA_PathStrokingParams* stroking_params,
                                        const GGO_Matrix* stroking_transform, uint32_t path_pixel_placement,
                                        const GSH_ShapeList* clip, uint32_t paint_flags, GGO_Point* end_point_out,
                                        GOP_OperandPointer* fill_operand1, GOP_OperandPointer* fill_operand2,
                                        GOP_OperandPointer* fill_operand3, GOP_OperandPointer* stroke_operand1,
                                        GOP_OperandPointer* stroke_operand2, GOP_OperandPointer* stroke_operand3);
uint32_t orvlog_group_start(const ORV_DrawingInterface* table, uint32_t group_unique_id, uint32_t* group_out,
                            const GFI_FontEngineTable* font_engine_functions, uint32_t hints, uint32_t group_type,
                            uint32_t is_knockout, uint32_t is_replayable, void* colour_ticket,
                            uint32_t pixel_placement_orientation, uint32_t has_pixel_placement,
                            uint32_t pixel_placement, const GGO_Matrix* retransform, const GOP_Operator* op,
                            GOP_OperandPointer* operand2, const GSH_ShapeList* group_clip, uint32_t tiling_flags,
                            double x_repetition_interval, double y_repetition_interval,
                            const GBC_Color* separation_mask, const GBC_Color* separation_color,
                            const GGO_BoxFloat* bounding_box_hint);
uint32_t orvlog_group_finish(const ORV_DrawingInterface* table, uint32_t* replay_out);
uint32_t orvlog_resource_paint(const ORV_DrawingInterface* table, uint32_t resource_id, uint32_t hints,
                               uint32_t group_type, const GGO_Matrix* retransform, const GOP_Operator* op,
                               GOP_OperandPointer* operand2, const GSH_ShapeList* group_clip, uint32_t tiling_flags,
                               double x_repetition_interval, double y_repetition_interval,
                               const GBC_Color* separation_mask, const GBC_Color* separation_color,
                               uint32_t pixel_placement_orientation);
void* orvlog_drawing_error_context(const ORV_DrawingInterface* table);
uint32_t orvlog_drawing_finish(const ORV_DrawingInterface* table);
uint32_t orvlog_drawing_discard(const ORV_DrawingInterface* table);
