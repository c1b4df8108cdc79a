// ORV_drawing_finish and ORV_drawing_discard, which end a drawing of any kind.

#include "orvlog/core/orvlog-orv.h"
#include "orvlog/font/orvlog-font-wrapper.h"
#include "orvlog/log/orvlog-attributes.h"
#include "orvlog/session/orvlog-frames.h"

namespace
{

void dump_ending(const ORVLOG_DrawingContext* drawing, const char* name)
{
    ORVLOG_Writer* writer = &drawing->session->writer;
    orvlog_writer_begin_element(writer, name);
    orvlog_attr_uint(writer, "drawing_context", drawing->drawing_context);
    orvlog_writer_end_empty(writer, name);
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
