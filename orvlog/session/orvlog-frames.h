// The two stacks that mirror how groups nest, and the transforms that follow from them. Group frames hang from
// the drawing; colour frames from the session, so that they run across nested drawings.

#pragma once

#include "orvlog/session/orvlog-session.h"

#include <cstdint>

struct ORVLOG_GroupFrame
{
    ORVLOG_GroupFrame* next;  // the enclosing group
    const GFI_FontEngineTable* saved_font_wrapper;
    GGO_Matrix group_transform;            // retransforms of this group and its enclosing ones combined
    GOP_OperandPointer* replaced_operand;  // the image operand made for this group, or null
    uint32_t owns_font_wrapper;            // 1 when the group installed one
    uint32_t operand_kept;                 // set when the renderer keeps the image

    const GFI_FontEngineTable* font_wrapper;  // the one that it installed
    uint32_t frameless_groups;                // open ones right inside this group that got no memory for a frame
};

struct ORVLOG_ColourFrame
{
    ORVLOG_ColourFrame* next;  // the enclosing frame
    void* ticket;              // in force; null when none is known
    uint32_t ticket_space[5];  // answer of the ticket query: the fourth word counts the render channels
    uint32_t ticket_render[4];
    uint32_t retained;  // 1 when this frame holds a reference on `ticket`
};

// Pushes a zeroed frame. Null without memory; then the group counts as a frameless one, which ends by itself.
ORVLOG_GroupFrame* orvlog_push_group_frame(ORVLOG_DrawingContext* drawing);
// Sets the transform that `retransform` (may be null) makes of the enclosing frame's.
void orvlog_set_group_transform(ORVLOG_GroupFrame* frame, const GGO_Matrix* retransform);
// Unlinks and frees the top frame; what it owns has been released before.
void orvlog_unlink_group_frame(ORVLOG_DrawingContext* drawing);
// Ends the innermost group if that one has no frame, and puts the engine of the groups around it in force again: the
// group's own engine may be gone from here on. False if the innermost group has a frame, or there is none.
bool orvlog_end_frameless_group(ORVLOG_DrawingContext* drawing);

// Pushes a frame for a ticket, or for null one that inherits from the enclosing frame. 0 when the ticket could not
// be retained or queried or there was no memory; then nothing was pushed, and without memory the reference stays held.
uint32_t orvlog_push_colour_frame(ORVLOG_Session* session, void* ticket);
void orvlog_pop_colour_frame(ORVLOG_Session* session);
// At the end of the session: gives back the memory of all frames that are left. The tickets are the client's, whose
// colour manager may be gone by then; references that open frames hold stay held.
void orvlog_free_colour_frames(ORVLOG_Session* session);

// Sets object_transform and drawing_transform for a paint with this path, which may be null.
void orvlog_set_object_transforms(ORVLOG_DrawingContext* drawing, const GSH_ShapePointer* paint_path);
