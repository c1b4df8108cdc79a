#include "holv-core/ggo/ggo-geometry.h"
#include "orvlog/colour/orvlog-colour-ticket.h"
#include "orvlog/core/orvlog-orv-names.h"
#include "orvlog/core/orvlog-orv.h"
#include "orvlog/font/orvlog-font-wrapper.h"
#include "orvlog/log/orvlog-attributes.h"
#include "orvlog/records/ggo-dump.h"
#include "orvlog/session/orvlog-creators.h"

namespace
{

void attr_document(ORVLOG_Session* session, const void* document)
{
    const ORVLOG_DocumentContext* open = orvlog_find_document(session, document);
    if (open != nullptr)
        orvlog_attr_uint(&session->writer, "document_context", open->document_context);
}

void attr_parent(ORVLOG_Session* session, const ORV_DrawingInterface* parent)
{
    const ORVLOG_DrawingContext* open = orvlog_find_drawing(session, parent);
    if (open != nullptr)
        orvlog_attr_uint(&session->writer, "parent_drawing", open->drawing_context);
}

ORVLOG_EngineArgument install_engine(ORVLOG_DrawingContext* drawing, const GFI_FontEngineTable* engine)
{
    ORVLOG_Session* session = drawing->session;
    const ORVLOG_EngineArgument argument = orvlog_wrap_engine(session, engine);
    if (argument.logged != nullptr)
    {
        drawing->font_wrapper = argument.logged;
        session->current_font_wrapper = argument.logged;
    }
    return argument;
}

uint32_t document_start(void* err, const ORV_Interface* table, void** document_out, uint32_t document_id,
                        const GFI_FontEngineTable* font_engine_functions, void* document_extra)
{
    ORVLOG_Session* session = orvlog_session_of(table, &ORV_Interface::document_start);
    if (session == nullptr)
        return 0;
    ORVLOG_DocumentContext* document = document_out != nullptr ? orvlog_open_document(session) : nullptr;
    if (document_out != nullptr)
        *document_out = document;
    if (document == nullptr)
        return 0;

    ORVLOG_Writer* writer = &session->writer;
    orvlog_writer_begin_element(writer, "ORV_document_start");
    orvlog_attr_uint(writer, "document_context", document->document_context);
    orvlog_attr_uint(writer, "document_id", document_id);
    orvlog_attr_bool(writer, "font_engine_functions", font_engine_functions != nullptr ? 1 : 0);
    if (font_engine_functions != nullptr)
    {
        const char* engine_id = font_engine_id(font_engine_functions);
        if (engine_id != nullptr)
            orvlog_attr_string(writer, "fp_EngineIdGet", engine_id);
        if (font_wrapper_create(session, &document->font_wrapper, font_engine_functions) == 0)
        {
            // The tag stays open; readers of the log see by it that the document never started.
            *document_out = nullptr;
            orvlog_close_document(document);
            return 0;
        }
        session->current_font_wrapper = document->font_wrapper;
        orvlog_attr_uint(writer, "GfpId", font_wrapper_id(document->font_wrapper));
    }
    orvlog_writer_end_tag(writer);
    orvlog_writer_close_element(writer, "ORV_document_start");

    const ORV_Interface* second = session->second_interface;
    if (second != nullptr && second->document_start.fn != nullptr)
        second->document_start.fn(err, second, &session->second_document_handle, document_id, document->font_wrapper,
                                  document_extra);
    const ORV_Interface* renderer = orvlog_renderer_of(table);
    if (renderer == nullptr || renderer->document_start.fn == nullptr)
        return 1;
    return renderer->document_start.fn(err, renderer, &session->document_handle, document_id, document->font_wrapper,
                                       document_extra);
}

uint32_t document_finish(const ORV_Interface* table, void* document)
{
    ORVLOG_Session* session = orvlog_session_of(table, &ORV_Interface::document_finish);
    if (session == nullptr)
        return 0;
    ORVLOG_Writer* writer = &session->writer;
    orvlog_writer_begin_element(writer, "ORV_document_finish");
    attr_document(session, document);
    orvlog_writer_end_tag(writer);
    orvlog_writer_close_element(writer, "ORV_document_finish");

    const ORV_Interface* second = session->second_interface;
    if (second != nullptr && second->document_finish.fn != nullptr)
        second->document_finish.fn(second, session->second_document_handle);
    const ORV_Interface* renderer = orvlog_renderer_of(table);
    uint32_t result = 1;
    if (renderer != nullptr && renderer->document_finish.fn != nullptr)
        result = renderer->document_finish.fn(renderer, session->document_handle);

    ORVLOG_DocumentContext* open = orvlog_find_document(session, document);
    if (open != nullptr)
    {
        font_wrapper_end_scope(session, open->font_wrapper, nullptr);
        orvlog_close_document(open);
    }
    session->current_font_wrapper = nullptr;
    return result;
}

uint32_t resource_destroy(void* err, const ORV_Interface* table, void* document,
                          const ORV_DrawingInterface* parent_drawing, uint32_t resource_id)
{
    ORVLOG_Session* session = orvlog_session_of(table, &ORV_Interface::resource_destroy);
    if (session == nullptr)
        return 0;
    ORVLOG_Writer* writer = &session->writer;
    orvlog_writer_begin_element(writer, "ORV_resource_destroy");
    attr_document(session, document);
    attr_parent(session, parent_drawing);
    orvlog_attr_uint(writer, "resource_id", resource_id);
    orvlog_writer_end_tag(writer);
    orvlog_writer_close_element(writer, "ORV_resource_destroy");

    const ORV_Interface* renderer = orvlog_renderer_of(table);
    if (renderer == nullptr || renderer->resource_destroy.fn == nullptr)
        return 1;
    const ORVLOG_ResourceMapEntry* entry = orvlog_resource_map_find(session, resource_id);
    if (entry == nullptr)
        return 0;
    const uint32_t result = renderer->resource_destroy.fn(err, renderer, session->document_handle, parent_drawing,
                                                          entry->renderer_resource_id);
    orvlog_resource_map_remove(session, resource_id);
    return result;
}

void dump_face_properties(ORVLOG_Writer* writer, const ORV_FaceProperties* properties)
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
    orvlog_writer_end_tag(writer);
    orvlog_writer_close_element(writer, "ORV_FaceProperties");
}

uint32_t face_start(void* err, const ORV_Interface* table, void* document, ORV_DrawingInterface* drawing_out,
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
    const ORVLOG_EngineArgument engine = install_engine(drawing, font_engine_functions);
    drawing->kind = ORVLOG_DRAWING_FACE;
    drawing->base_transform = face_properties != nullptr ? face_properties->fp_FaceInchToPixels : ggo_identity();
    orvlog_fill_drawing_interface(drawing_out, drawing);
    orvlog_push_colour_frame(session, colour_ticket);

    ORVLOG_Writer* writer = &session->writer;
    orvlog_writer_begin_element(writer, "ORV_face_start");
    attr_document(session, document);
    orvlog_attr_uint(writer, "drawing_context", drawing->drawing_context);
    orvlog_attr_font_engine(writer, engine.logged);
    orvlog_attr_uint(writer, "face_seq_number", face_seq_number);
    orvlog_attr_enum(writer, "pixel_placement_orientation", &ORVLOG_ORIENTATION, pixel_placement_orientation);
    orvlog_attr_enum(writer, "pixel_placement", &ORVLOG_PLACEMENT, pixel_placement);
    orvlog_writer_end_tag(writer);
    orvlog_writer_depth_up(writer);
    dump_face_properties(writer, face_properties);
    ORVLOG_DumpColorTicket(session, colour_ticket);
    orvlog_writer_depth_down(writer);
    orvlog_writer_close_element(writer, "ORV_face_start");

    const ORV_Interface* second = session->second_interface;
    if (second != nullptr && second->face_start.fn != nullptr)
    {
        session->second_drawing = drawing;
        session->second_drawing_table = {};
        second->face_start.fn(err, second, session->second_document_handle, &session->second_drawing_table,
                              engine.forwarded, face_seq_number, face_properties, colour_ticket,
                              pixel_placement_orientation, pixel_placement);
    }
    const ORV_Interface* renderer = orvlog_renderer_of(table);
    if (renderer == nullptr || renderer->face_start.fn == nullptr)
        return 1;
    return renderer->face_start.fn(err, renderer, session->document_handle, &drawing->renderer_table, engine.forwarded,
                                   face_seq_number, face_properties, colour_ticket, pixel_placement_orientation,
                                   pixel_placement);
}

void dump_resource_properties(ORVLOG_Writer* writer, const ORV_ResourceProperties* properties)
{
    if (properties == nullptr)
        return;
    orvlog_writer_begin_element(writer, "ORV_ResourceProperties");
    orvlog_attr_flags(writer, "rp_ResourceHints", &ORVLOG_RESOURCE_HINTS, properties->rp_ResourceHints);
    orvlog_attr_float(writer, "rp_MaxRescale", properties->rp_MaxRescale);
    orvlog_attr_bool(writer, "rp_IsKnockout", properties->rp_IsKnockout);
    if (properties->rp_HasPixelPlacementRule != 0)
        orvlog_attr_enum(writer, "rp_PixelPlacementRule", &ORVLOG_PLACEMENT, properties->rp_PixelPlacementRule);
    ggo_attr_box(writer, "rp_Enclosing_box", &properties->rp_Enclosing_box);
    orvlog_writer_end_tag(writer);
    orvlog_writer_close_element(writer, "ORV_ResourceProperties");
}

GGO_Matrix resource_transform(const ORV_ResourceProperties* properties)
{
    GGO_Matrix transform = ggo_identity();
    if (properties == nullptr || !(properties->rp_MaxRescale > 0))
        return transform;
    for (double& value : transform.m)
        value *= static_cast<double>(properties->rp_MaxRescale);
    return transform;
}

uint32_t resource_start(void* err, const ORV_Interface* table, void* document, ORV_DrawingInterface* drawing_out,
                        const ORV_DrawingInterface* parent_drawing, const GFI_FontEngineTable* font_engine_functions,
                        const ORV_ResourceProperties* resource_properties, void* colour_ticket,
                        uint32_t* resource_id_out)
{
    ORVLOG_Session* session = orvlog_session_of(table, &ORV_Interface::resource_start);
    if (session == nullptr)
        return 0;
    ORVLOG_DrawingContext* drawing = drawing_out != nullptr ? orvlog_open_drawing(session, err) : nullptr;
    if (drawing == nullptr)
        return 0;
    const ORVLOG_EngineArgument engine = install_engine(drawing, font_engine_functions);
    drawing->kind = ORVLOG_DRAWING_RESOURCE;
    drawing->base_transform = resource_transform(resource_properties);
    orvlog_fill_drawing_interface(drawing_out, drawing);
    orvlog_push_colour_frame(session, colour_ticket);
    const uint32_t resource_id = session->next_resource_id++;
    if (resource_id_out != nullptr)
        *resource_id_out = resource_id;

    ORVLOG_Writer* writer = &session->writer;
    orvlog_writer_begin_element(writer, "ORV_resource_start");
    attr_document(session, document);
    orvlog_attr_uint(writer, "drawing_context", drawing->drawing_context);
    attr_parent(session, parent_drawing);
    orvlog_attr_font_engine(writer, engine.logged);
    orvlog_attr_uint(writer, "resource_id", resource_id);
    orvlog_writer_end_tag(writer);
    orvlog_writer_depth_up(writer);
    dump_resource_properties(writer, resource_properties);
    ORVLOG_DumpColorTicket(session, colour_ticket);
    orvlog_writer_depth_down(writer);
    orvlog_writer_close_element(writer, "ORV_resource_start");

    const ORV_Interface* renderer = orvlog_renderer_of(table);
    if (renderer == nullptr || renderer->resource_start.fn == nullptr)
        return 1;
    uint32_t renderer_resource_id = 0;
    const uint32_t result =
        renderer->resource_start.fn(err, renderer, session->document_handle, &drawing->renderer_table, parent_drawing,
                                    engine.forwarded, resource_properties, colour_ticket, &renderer_resource_id);
    if (result == 0)
        return result;
    return orvlog_resource_map_add(session, resource_id, renderer_resource_id) ? result : 0;
}

uint32_t memory_context_start(void* err, const ORV_Interface* table, void* document, ORV_DrawingInterface* drawing_out,
                              uintptr_t word1, uintptr_t word2, uintptr_t word3, uintptr_t word4, uintptr_t word5,
                              const GFI_FontEngineTable* font_engine_functions, void* colour_ticket, uintptr_t word8,
                              uintptr_t word9, uintptr_t word10, uintptr_t word11, uintptr_t word12, uintptr_t word13)
{
    ORVLOG_Session* session = orvlog_session_of(table, &ORV_Interface::memory_context_start);
    if (session == nullptr)
        return 0;
    const ORV_Interface* second = session->second_interface;
    if (second != nullptr)
    {
        if (second->memory_context_start.fn == nullptr)
            return 0;
        return second->memory_context_start.fn(err, second, session->second_document_handle, drawing_out, word1, word2,
                                               word3, word4, word5, font_engine_functions, colour_ticket, word8, word9,
                                               word10, word11, word12, word13);
    }
    ORVLOG_DrawingContext* drawing = drawing_out != nullptr ? orvlog_open_drawing(session, err) : nullptr;
    if (drawing == nullptr)
        return 0;
    const ORVLOG_EngineArgument engine = install_engine(drawing, font_engine_functions);
    drawing->kind = ORVLOG_DRAWING_MEMORY_CONTEXT;
    orvlog_fill_drawing_interface(drawing_out, drawing);

    ORVLOG_Writer* writer = &session->writer;
    orvlog_writer_defer_warning(writer, ORVLOG_WARNING_FORMAT, "ORV_memory_context_start parameters are not logged");
    orvlog_push_colour_frame(session, colour_ticket);
    orvlog_writer_begin_element(writer, "ORV_memory_context_start");
    attr_document(session, document);
    orvlog_attr_uint(writer, "drawing_context", drawing->drawing_context);
    orvlog_writer_end_tag(writer);
    orvlog_writer_close_element(writer, "ORV_memory_context_start");

    const ORV_Interface* renderer = orvlog_renderer_of(table);
    if (renderer == nullptr || renderer->memory_context_start.fn == nullptr)
        return 1;
    return renderer->memory_context_start.fn(err, renderer, session->document_handle, &drawing->renderer_table, word1,
                                             word2, word3, word4, word5, engine.forwarded, colour_ticket, word8, word9,
                                             word10, word11, word12, word13);
}

}  // namespace

void orvlog_fill_interface(ORV_Interface* table, ORVLOG_Session* session)
{
    table->document_start = {document_start, session};
    table->document_finish = {document_finish, session};
    table->resource_destroy = {resource_destroy, session};
    table->face_start = {face_start, session};
    table->resource_start = {resource_start, session};
    table->memory_context_start = {memory_context_start, session};
}
