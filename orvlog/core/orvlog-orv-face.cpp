// ORV_face_start: a page begins. ORV_drawing_finish and ORV_drawing_discard end it.

#include "holv-core/ggo/ggo-geometry.h"
#include "orvlog/colour/orvlog-colour-ticket.h"
#include "orvlog/core/orvlog-orv.h"
#include "orvlog/log/orvlog-attributes.h"
#include "orvlog/log/orvlog-scope.h"
#include "orvlog/names/orvlog-names.h"
#include "orvlog/records/ggo-dump.h"
#include "orvlog/session/orvlog-frames.h"

namespace
{

constexpr const char* kElement = "ORV_face_start";

struct FaceStartCall
{
    void* err;
    void* document;
    ORV_DrawingInterface* drawing_out;
    ORVLOG_EngineArgument font_engine;
    uint32_t face_seq_number;
    const ORV_FaceProperties* face_properties;
    void* colour_ticket;
    uint32_t pixel_placement_orientation;
    uint32_t pixel_placement;
    ORVLOG_DrawingContext* drawing;  // what begins
};

void begin_face(const FaceStartCall* call)
{
    ORVLOG_DrawingContext* drawing = call->drawing;
    const ORV_FaceProperties* properties = call->face_properties;
    drawing->kind = ORVLOG_DRAWING_FACE;
    drawing->base_transform = properties != nullptr ? properties->fp_FaceInchToPixels : ggo_identity();
    orvlog_fill_drawing_interface(call->drawing_out, drawing);
    orvlog_push_colour_frame(drawing->session, call->colour_ticket);
}

void dump_properties(ORVLOG_Writer* writer, const ORV_FaceProperties* properties)
{
    if (properties == nullptr)
        return;
    orvlog_writer_begin_element(writer, "ORV_FaceProperties");
    orvlog_attr_flags(writer, "fp_FaceHints", &ORVLOG_FACE_HINTS, properties->fp_FaceHints);
    ggo_attr_matrix(writer, "fp_FaceInchToPixels", &properties->fp_FaceInchToPixels);
    orvlog_attr_uint(writer, "fp_WidthInPixels", properties->fp_WidthInPixels);
    orvlog_attr_uint(writer, "fp_HeightInPixels", properties->fp_HeightInPixels);
    ggo_attr_box(writer, "fp_TrimBox", &properties->fp_TrimBox);
    ggo_attr_box(writer, "fp_ClipBox", &properties->fp_ClipBox);
    ggo_attr_point(writer, "fp_MediaSize", &properties->fp_MediaSize);
    orvlog_writer_end_empty(writer, "ORV_FaceProperties");
}

void dump(ORVLOG_Session* session, const FaceStartCall* call)
{
    ORVLOG_Writer* writer = &session->writer;
    orvlog_writer_begin_element(writer, kElement);
    orvlog_attr_document(session, call->document);
    orvlog_attr_uint(writer, "drawing_context", call->drawing->drawing_context);
    orvlog_attr_font_engine(writer, call->font_engine.logged);
    orvlog_attr_uint(writer, "face_seq_number", call->face_seq_number);
    orvlog_attr_enum(writer, "pixel_placement_orientation", &ORVLOG_ORIENTATION, call->pixel_placement_orientation);
    orvlog_attr_enum(writer, "pixel_placement", &ORVLOG_PLACEMENT, call->pixel_placement);
    const ORVLOG_Content content(writer, kElement);
    dump_properties(writer, call->face_properties);
    ORVLOG_DumpColorTicket(session, call->colour_ticket);
}

uint32_t forward_to(const ORV_Interface* receiver, void* document, ORV_DrawingInterface* drawing_out,
                    const FaceStartCall* call)
{
    return receiver->face_start.fn(call->err, receiver, document, drawing_out, call->font_engine.forwarded,
                                   call->face_seq_number, call->face_properties, call->colour_ticket,
                                   call->pixel_placement_orientation, call->pixel_placement);
}

void forward_to_second(ORVLOG_Session* session, const FaceStartCall* call)
{
    const ORV_Interface* second = session->second_interface;
    if (second == nullptr || second->face_start.fn == nullptr)
        return;
    session->second_drawing = call->drawing;
    session->second_drawing_table = {};
    forward_to(second, session->second_document_handle, &session->second_drawing_table, call);
}

uint32_t forward(const ORV_Interface* renderer, ORVLOG_Session* session, const FaceStartCall* call)
{
    if (renderer == nullptr || renderer->face_start.fn == nullptr)
        return 1;
    return forward_to(renderer, session->document_handle, &call->drawing->renderer_table, call);
}

}  // namespace

uint32_t orvlog_face_start(void* err, const ORV_Interface* table, void* document, ORV_DrawingInterface* drawing_out,
                           const GFI_FontEngineTable* font_engine_functions, uint32_t face_seq_number,
                           const ORV_FaceProperties* face_properties, void* colour_ticket,
                           uint32_t pixel_placement_orientation, uint32_t pixel_placement)
{
    ORVLOG_Session* session = orvlog_session_of(table, &ORV_Interface::face_start);
    if (session == nullptr)
        return 0;
    orvlog_session_clear_scratch(session);
    ORVLOG_DrawingContext* drawing = drawing_out != nullptr ? orvlog_open_drawing(session, err) : nullptr;
    if (drawing == nullptr)
        return 0;
    const FaceStartCall call = {
        .err = err,
        .document = document,
        .drawing_out = drawing_out,
        .font_engine = orvlog_install_engine(drawing, font_engine_functions),
        .face_seq_number = face_seq_number,
        .face_properties = face_properties,
        .colour_ticket = colour_ticket,
        .pixel_placement_orientation = pixel_placement_orientation,
        .pixel_placement = pixel_placement,
        .drawing = drawing,
    };
    begin_face(&call);
    dump(session, &call);
    forward_to_second(session, &call);
    return forward(table->base.renderer, session, &call);
}
