// ORV_document_start and ORV_document_finish.

#include "orvlog/core/orvlog-orv.h"
#include "orvlog/font/orvlog-font-wrapper.h"
#include "orvlog/log/orvlog-attributes.h"

namespace
{

constexpr const char* kStart = "ORV_document_start";
constexpr const char* kFinish = "ORV_document_finish";

struct DocumentStartCall
{
    void* err;
    void** document_out;
    uint32_t document_id;
    const GFI_FontEngineTable* font_engine;
    void* document_extra;
    ORVLOG_DocumentContext* document;  // what begins
};

struct DocumentFinishCall
{
    void* document;
};

bool wrap_engine(ORVLOG_Session* session, const DocumentStartCall* call)
{
    ORVLOG_DocumentContext* document = call->document;
    if (font_wrapper_create(session, &document->font_wrapper, call->font_engine) == 0)
        return false;
    session->current_font_wrapper = document->font_wrapper;
    return true;
}

// False when the engine could not be wrapped. Then the tag stays open; readers of the log see by it that the document
// never started.
bool dump_start(ORVLOG_Session* session, const DocumentStartCall* call)
{
    ORVLOG_Writer* writer = &session->writer;
    orvlog_writer_begin_element(writer, kStart);
    orvlog_attr_uint(writer, "document_context", call->document->document_context);
    orvlog_attr_uint(writer, "document_id", call->document_id);
    orvlog_attr_bool(writer, "font_engine_functions", call->font_engine != nullptr ? 1 : 0);
    if (call->font_engine != nullptr)
    {
        const char* engine_id = font_engine_id(call->font_engine);
        if (engine_id != nullptr)
            orvlog_attr_string(writer, "fp_EngineIdGet", engine_id);
        if (!wrap_engine(session, call))
            return false;
        orvlog_attr_uint(writer, "GfpId", font_wrapper_id(call->document->font_wrapper));
    }
    orvlog_writer_end_empty(writer, kStart);
    return true;
}

uint32_t forward_start_to(const ORV_Interface* receiver, void** document_out, const DocumentStartCall* call)
{
    if (receiver == nullptr || receiver->document_start.fn == nullptr)
        return 1;
    return receiver->document_start.fn(call->err, receiver, document_out, call->document_id,
                                       call->document->font_wrapper, call->document_extra);
}

void dump_finish(ORVLOG_Session* session, const DocumentFinishCall* call)
{
    ORVLOG_Writer* writer = &session->writer;
    orvlog_writer_begin_element(writer, kFinish);
    orvlog_attr_document(session, call->document);
    orvlog_writer_end_empty(writer, kFinish);
}

uint32_t forward_finish_to(const ORV_Interface* receiver, void* document)
{
    if (receiver == nullptr || receiver->document_finish.fn == nullptr)
        return 1;
    return receiver->document_finish.fn(receiver, document);
}

void end_document(ORVLOG_Session* session, const DocumentFinishCall* call)
{
    ORVLOG_DocumentContext* open = orvlog_find_document(session, call->document);
    if (open != nullptr)
    {
        font_wrapper_end_scope(session, open->font_wrapper, nullptr);
        orvlog_close_document(open);
    }
    session->current_font_wrapper = nullptr;
}

}  // namespace

uint32_t orvlog_document_start(void* err, const ORV_Interface* table, void** document_out, uint32_t document_id,
                               const GFI_FontEngineTable* font_engine_functions, void* document_extra)
{
    ORVLOG_Session* session = orvlog_session_of(table, &ORV_Interface::document_start);
    if (session == nullptr || document_out == nullptr)
        return 0;
    const DocumentStartCall call = {
        .err = err,
        .document_out = document_out,
        .document_id = document_id,
        .font_engine = font_engine_functions,
        .document_extra = document_extra,
        .document = orvlog_open_document(session),
    };
    *call.document_out = call.document;
    if (call.document == nullptr)
        return 0;
    if (!dump_start(session, &call))
    {
        *call.document_out = nullptr;
        orvlog_close_document(call.document);
        return 0;
    }
    forward_start_to(session->second_interface, &session->second_document_handle, &call);
    return forward_start_to(table->base.renderer, &session->document_handle, &call);
}

uint32_t orvlog_document_finish(const ORV_Interface* table, void* document)
{
    ORVLOG_Session* session = orvlog_session_of(table, &ORV_Interface::document_finish);
    if (session == nullptr)
        return 0;
    const DocumentFinishCall call = {.document = document};
    dump_finish(session, &call);
    forward_finish_to(session->second_interface, session->second_document_handle);
    const uint32_t result = forward_finish_to(table->base.renderer, session->document_handle);
    end_document(session, &call);
    return result;
}
