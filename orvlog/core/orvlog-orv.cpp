#include "orvlog/core/orvlog-orv.h"

#include "holv-core/ger/ger-error.h"
#include "orvlog/font/orvlog-font-wrapper.h"
#include "orvlog/log/orvlog-attributes.h"
#include "orvlog/session/orvlog-creators.h"
#include "orvlog/session/orvlog-frames.h"

namespace
{

constexpr int32_t kSeverity = 1;
constexpr int32_t kModule = 6;
constexpr int32_t kCodeBase = 33300000;

}  // namespace

void orvlog_fill_interface(ORV_Interface* table, ORVLOG_Session* session)
{
#define ORV_DOCUMENT_CALL(name) table->name = {.fn = orvlog_##name, .context = session};
#define ORV_DRAWING_CALL(name)
#include "orvlog/names/calls.inc"
}

void orvlog_fill_drawing_interface(ORV_DrawingInterface* table, ORVLOG_DrawingContext* drawing)
{
#define ORV_DOCUMENT_CALL(name)
#define ORV_DRAWING_CALL(name) table->name = {.fn = orvlog_##name, .context = drawing};
#include "orvlog/names/calls.inc"
}

void orvlog_attr_document(ORVLOG_Session* session, const void* document)
{
    const ORVLOG_DocumentContext* open = orvlog_find_document(session, document);
    if (open != nullptr)
        orvlog_attr_uint(&session->writer, "document_context", open->document_context);
}

void orvlog_attr_parent(ORVLOG_Session* session, const ORV_DrawingInterface* parent)
{
    const ORVLOG_DrawingContext* open = orvlog_find_drawing(session, parent);
    if (open != nullptr)
        orvlog_attr_uint(&session->writer, "parent_drawing", open->drawing_context);
}

ORVLOG_EngineArgument orvlog_wrap_engine(ORVLOG_Session* session, const GFI_FontEngineTable* engine)
{
    const GFI_FontEngineTable* wrapped = nullptr;
    if (engine != nullptr && font_wrapper_create(session, &wrapped, engine) != 0)
        return {.logged = wrapped, .forwarded = wrapped};
    return {.logged = nullptr, .forwarded = engine};
}

ORVLOG_EngineArgument orvlog_install_engine(ORVLOG_DrawingContext* drawing, const GFI_FontEngineTable* engine)
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

void orvlog_attr_font_engine(ORVLOG_Writer* writer, const GFI_FontEngineTable* wrapped)
{
    orvlog_attr_bool(writer, "font_engine_functions", wrapped != nullptr ? 1 : 0);
    if (wrapped == nullptr)
        return;
    const char* engine_id = font_engine_id(wrapped);
    if (engine_id != nullptr)
        orvlog_attr_string(writer, "fp_EngineIdGet", engine_id);
    orvlog_attr_uint(writer, "GfpId", font_wrapper_id(wrapped));
}

void orvlog_begin_object(ORVLOG_DrawingContext* drawing, uint32_t object_type, const GSH_ShapePointer* paint_path)
{
    ORVLOG_Session* session = drawing->session;
    orvlog_session_clear_scratch(session);
    session->object_type = object_type;
    orvlog_set_object_transforms(drawing, paint_path);
}

void orvlog_close_call(const ORVLOG_DrawingContext* drawing, const char* element)
{
    if (!orvlog_drawing_is_logged(drawing))
        return;
    orvlog_writer_leave_element(&drawing->session->writer, element);
}

uint32_t orvlog_result_after_dump(const ORVLOG_DrawingContext* drawing, uint32_t read_well, uint32_t result,
                                  int32_t line)
{
    if (read_well != 0 || !orvlog_session_is_base(drawing->session))
        return result;
    GER_ErrorSet(static_cast<GER_Error*>(drawing->error_context), kSeverity, kModule, kCodeBase + line,
                 "ORVLOG: Image read failed.:orvlog-orv v$Revision: 1.114 $ L:%d ", line);
    return 0;
}
