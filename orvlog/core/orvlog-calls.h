// One record for each call of a drawing, with its arguments, and for the operands that calls carry.

#pragma once

#include "orvlog/interface/orv-interface.h"

#include <cstdint>

// An operand argument on its way through a wrapper.
struct ORVLOG_CallOperand
{
    GOP_OperandPointer* operand;  // as it came, then as replaced
    uint32_t counts;              // the operator uses it: it is logged and may be replaced
    uint32_t replaced;
    uint32_t kept;  // set when the renderer keeps the image
};

struct ORVLOG_ObjectPaintCall
{
    uint8_t object_type_and_flag;
    uint32_t object_hints;
    const GOP_Operator* op;
    const GSH_ShapePointer* paint_path;
    uint32_t path_pixel_placement;
    const GSH_ShapeList* clip;
    ORVLOG_CallOperand operands[3];
};

struct ORVLOG_ObjectPaintAndStrokeCall
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

struct ORVLOG_GroupStartCall
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

struct ORVLOG_ResourcePaintCall
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
