// ORV_resource_start: the drawing of a resource begins, which ORV_drawing_finish or ORV_drawing_discard ends.
// ORV_resource_destroy: the resource itself is given up.

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

constexpr const char* kStart = "ORV_resource_start";
constexpr const char* kDestroy = "ORV_resource_destroy";

struct ResourceStartCall
{
    void* err;
    void* document;
    ORV_DrawingInterface* drawing_out;
    const ORV_DrawingInterface* parent_drawing;
    ORVLOG_EngineArgument font_engine;
    const ORV_ResourceProperties* resource_properties;
    void* colour_ticket;
    uint32_t* resource_id_out;
    uint32_t resource_id;            // as the client sees it
    ORVLOG_DrawingContext* drawing;  // what begins
};

struct ResourceDestroyCall
{
    void* err;
    void* document;
    const ORV_DrawingInterface* parent_drawing;
    uint32_t resource_id;
};

GGO_Matrix transform_of(const ORV_ResourceProperties* properties)
{
    GGO_Matrix transform = ggo_identity();
    if (properties == nullptr || !(properties->rp_MaxRescale > 0))
        return transform;
    for (double& value : transform.m)
        value *= static_cast<double>(properties->rp_MaxRescale);
    return transform;
}

void begin_resource(const ResourceStartCall* call)
{
    ORVLOG_DrawingContext* drawing = call->drawing;
    drawing->kind = ORVLOG_DRAWING_RESOURCE;
    drawing->base_transform = transform_of(call->resource_properties);
    orvlog_fill_drawing_interface(call->drawing_out, drawing);
    orvlog_push_colour_frame(drawing->session, call->colour_ticket);
    if (call->resource_id_out != nullptr)
        *call->resource_id_out = call->resource_id;
}

void dump_properties(ORVLOG_Writer* writer, const ORV_ResourceProperties* properties)
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
    orvlog_writer_end_empty(writer, "ORV_ResourceProperties");
}

void dump_start(ORVLOG_Session* session, const ResourceStartCall* call)
{
    ORVLOG_Writer* writer = &session->writer;
    orvlog_writer_begin_element(writer, kStart);
    orvlog_attr_document(session, call->document);
    orvlog_attr_uint(writer, "drawing_context", call->drawing->drawing_context);
    orvlog_attr_parent(session, call->parent_drawing);
    orvlog_attr_font_engine(writer, call->font_engine.logged);
    orvlog_attr_uint(writer, "resource_id", call->resource_id);
    const ORVLOG_Content content(writer, kStart);
    dump_properties(writer, call->resource_properties);
    ORVLOG_DumpColorTicket(session, call->colour_ticket);
}

uint32_t forward_start(const ORV_Interface* renderer, ORVLOG_Session* session, const ResourceStartCall* call)
{
    if (renderer == nullptr || renderer->resource_start.fn == nullptr)
        return 1;
    uint32_t renderer_resource_id = 0;
    const uint32_t result = renderer->resource_start.fn(
        call->err, renderer, session->document_handle, &call->drawing->renderer_table, call->parent_drawing,
        call->font_engine.forwarded, call->resource_properties, call->colour_ticket, &renderer_resource_id);
    if (result == 0)
        return result;
    return orvlog_resource_map_add(session, call->resource_id, renderer_resource_id) ? result : 0;
}

void dump_destroy(ORVLOG_Session* session, const ResourceDestroyCall* call)
{
    ORVLOG_Writer* writer = &session->writer;
    orvlog_writer_begin_element(writer, kDestroy);
    orvlog_attr_document(session, call->document);
    orvlog_attr_parent(session, call->parent_drawing);
    orvlog_attr_uint(writer, "resource_id", call->resource_id);
    orvlog_writer_end_empty(writer, kDestroy);
}

uint32_t forward_destroy(const ORV_Interface* renderer, ORVLOG_Session* session, const ResourceDestroyCall* call)
{
    if (renderer == nullptr || renderer->resource_destroy.fn == nullptr)
        return 1;
    const ORVLOG_ResourceMapEntry* entry = orvlog_resource_map_find(session, call->resource_id);
    if (entry == nullptr)
        return 0;
    const uint32_t result = renderer->resource_destroy.fn(call->err, renderer, session->document_handle,
                                                          call->parent_drawing, entry->renderer_resource_id);
    orvlog_resource_map_remove(session, call->resource_id);
    return result;
}

}  // namespace

uint32_t orvlog_resource_start(void* err, const ORV_Interface* table, void* document, ORV_DrawingInterface* drawing_out,
                               const ORV_DrawingInterface* parent_drawing,
                               const GFI_FontEngineTable* font_engine_functions,
                               const ORV_ResourceProperties* resource_properties, void* colour_ticket,
                               uint32_t* resource_id_out)
{
    ORVLOG_Session* session = orvlog_session_of(table, &ORV_Interface::resource_start);
    if (session == nullptr)
        return 0;
    ORVLOG_DrawingContext* drawing = drawing_out != nullptr ? orvlog_open_drawing(session, err) : nullptr;
    if (drawing == nullptr)
        return 0;
    const ResourceStartCall call = {
        .err = err,
        .document = document,
        .drawing_out = drawing_out,
        .parent_drawing = parent_drawing,
        .font_engine = orvlog_install_engine(drawing, font_engine_functions),
        .resource_properties = resource_properties,
        .colour_ticket = colour_ticket,
        .resource_id_out = resource_id_out,
        .resource_id = session->next_resource_id++,
        .drawing = drawing,
    };
    begin_resource(&call);
    dump_start(session, &call);
    return forward_start(table->base.renderer, session, &call);
}

uint32_t orvlog_resource_destroy(void* err, const ORV_Interface* table, void* document,
                                 const ORV_DrawingInterface* parent_drawing, uint32_t resource_id)
{
    ORVLOG_Session* session = orvlog_session_of(table, &ORV_Interface::resource_destroy);
    if (session == nullptr)
        return 0;
    const ResourceDestroyCall call = {
        .err = err,
        .document = document,
        .parent_drawing = parent_drawing,
        .resource_id = resource_id,
    };
    dump_destroy(session, &call);
    return forward_destroy(table->base.renderer, session, &call);
}
