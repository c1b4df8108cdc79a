#include "orvlog/session/orvlog-frames.h"

#include "holv-core/ggo/ggo-geometry.h"
#include "holv-core/gmm/gmm-typed.h"

#include <cstring>

namespace
{

// The two result blocks of a ticket query.
struct TicketBlocks
{
    uint32_t space[5];
    uint32_t render[4];
};

uint32_t retain_and_query(const ORVLOG_TicketFunctions* functions, void* ticket, TicketBlocks* blocks)
{
    if (functions == nullptr || functions->retain == nullptr || functions->release == nullptr ||
        functions->query == nullptr)
        return 0;
    if (functions->retain(ticket) == 0)
        return 0;
    if (functions->query(ticket, blocks->space, blocks->render) != 0)
        return 1;
    functions->release(ticket);
    return 0;
}

ORVLOG_ColourFrame* push_frame(ORVLOG_Session* session, void* ticket, const TicketBlocks* blocks, uint32_t retained)
{
    GMM_Allocator* allocator = session->side_allocator;
    auto* frame = gmm_alloc_record<ORVLOG_ColourFrame>(allocator);
    if (frame == nullptr)
        return nullptr;
    frame->next = session->colour_frames;
    frame->ticket = ticket;
    std::memcpy(frame->ticket_space, blocks->space, sizeof frame->ticket_space);
    std::memcpy(frame->ticket_render, blocks->render, sizeof frame->ticket_render);
    frame->retained = retained;
    session->colour_frames = frame;
    return frame;
}

uint32_t* frameless_groups(ORVLOG_DrawingContext* drawing)
{
    return drawing->group_frames != nullptr ? &drawing->group_frames->frameless_groups : &drawing->frameless_groups;
}

// By the groups that have frames.
const GFI_FontEngineTable* engine_in_force(const ORVLOG_DrawingContext* drawing)
{
    for (const ORVLOG_GroupFrame* frame = drawing->group_frames; frame != nullptr; frame = frame->next)
        if (frame->owns_font_wrapper != 0)
            return frame->font_wrapper;
    return drawing->font_wrapper != nullptr ? drawing->font_wrapper : drawing->saved_font_wrapper;
}

void free_frames(const ORVLOG_Session* session, ORVLOG_ColourFrame* frames)
{
    while (frames != nullptr)
    {
        ORVLOG_ColourFrame* next = frames->next;
        session->side_allocator->gmm_Free(session->side_allocator, frames);
        frames = next;
    }
}

}  // namespace

ORVLOG_GroupFrame* orvlog_push_group_frame(ORVLOG_DrawingContext* drawing)
{
    GMM_Allocator* allocator = drawing->session->side_allocator;
    auto* frame = gmm_alloc_record<ORVLOG_GroupFrame>(allocator);
    if (frame == nullptr)
    {
        ++*frameless_groups(drawing);
        return nullptr;
    }
    std::memset(frame, 0, sizeof *frame);
    frame->next = drawing->group_frames;
    drawing->group_frames = frame;
    ++drawing->session->group_depth;
    return frame;
}

void orvlog_set_group_transform(ORVLOG_GroupFrame* frame, const GGO_Matrix* retransform)
{
    const ORVLOG_GroupFrame* enclosing = frame->next;
    if (enclosing == nullptr)
        frame->group_transform = retransform != nullptr ? *retransform : ggo_identity();
    else if (retransform == nullptr)
        frame->group_transform = enclosing->group_transform;
    else
        frame->group_transform = ggo_multiply(&enclosing->group_transform, retransform);
}

void orvlog_unlink_group_frame(ORVLOG_DrawingContext* drawing)
{
    ORVLOG_GroupFrame* frame = drawing->group_frames;
    if (frame == nullptr)
        return;
    drawing->group_frames = frame->next;
    --drawing->session->group_depth;
    drawing->session->side_allocator->gmm_Free(drawing->session->side_allocator, frame);
}

bool orvlog_end_frameless_group(ORVLOG_DrawingContext* drawing)
{
    uint32_t* frameless = frameless_groups(drawing);
    if (*frameless == 0)
        return false;
    --*frameless;
    drawing->session->current_font_wrapper = engine_in_force(drawing);
    return true;
}

uint32_t orvlog_push_colour_frame(ORVLOG_Session* session, void* ticket)
{
    TicketBlocks blocks = {};
    if (ticket == nullptr)
    {
        const ORVLOG_ColourFrame* top = session->colour_frames;
        if (top == nullptr || top->ticket == nullptr)
            return push_frame(session, nullptr, &blocks, 0) != nullptr ? 1 : 0;
        std::memcpy(blocks.space, top->ticket_space, sizeof blocks.space);
        std::memcpy(blocks.render, top->ticket_render, sizeof blocks.render);
        return push_frame(session, top->ticket, &blocks, 0) != nullptr ? 1 : 0;
    }
    if (retain_and_query(session->ticket_functions, ticket, &blocks) == 0)
        return 0;
    // Without a frame the reference stays held, beyond the session too.
    return push_frame(session, ticket, &blocks, 1) != nullptr ? 1 : 0;
}

void orvlog_pop_colour_frame(ORVLOG_Session* session)
{
    ORVLOG_ColourFrame* frame = session->colour_frames;
    if (frame == nullptr)
        return;
    session->colour_frames = frame->next;
    const bool holds = frame->retained == 1 && frame->ticket != nullptr;
    if (holds && session->ticket_functions->release(frame->ticket) == 0)
    {
        frame->next = session->unreleased_frames;
        session->unreleased_frames = frame;
        return;
    }
    session->side_allocator->gmm_Free(session->side_allocator, frame);
}

void orvlog_free_colour_frames(ORVLOG_Session* session)
{
    free_frames(session, session->colour_frames);
    free_frames(session, session->unreleased_frames);
    session->colour_frames = nullptr;
    session->unreleased_frames = nullptr;
}

void orvlog_set_object_transforms(ORVLOG_DrawingContext* drawing, const GSH_ShapePointer* paint_path)
{
    ORVLOG_Session* session = drawing->session;
    const ORVLOG_GroupFrame* group = drawing->group_frames;
    if (paint_path == nullptr || paint_path->sp_HeaderPtr == nullptr)
    {
        session->drawing_transform = ggo_identity();
        session->object_transform = group != nullptr ? group->group_transform : ggo_identity();
        return;
    }
    const GGO_Matrix* base = &drawing->base_transform;
    const GGO_Matrix outer = group != nullptr ? ggo_multiply(&group->group_transform, base) : *base;
    session->object_transform = ggo_multiply(&paint_path->sp_HeaderPtr->sh_Transform, &outer);
    session->drawing_transform = *base;
}
