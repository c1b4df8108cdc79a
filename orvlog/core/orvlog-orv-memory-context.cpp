// ORV_memory_context_start: a drawing begins whose calls are not logged. A second receiver takes the call over.

#include "orvlog/core/orvlog-orv.h"
#include "orvlog/log/orvlog-attributes.h"
#include "orvlog/session/orvlog-frames.h"

namespace
{

constexpr const char* kElement = "ORV_memory_context_start";

// Arguments without a name are passed on unseen.
struct MemoryContextStartCall
{
    void* err;
    void* document;
    ORV_DrawingInterface* drawing_out;
    uintptr_t word1;
    uintptr_t word2;
    uintptr_t word3;
    uintptr_t word4;
    uintptr_t word5;
    const GFI_FontEngineTable* font_engine;  // the client's own, then as forwarded
    void* colour_ticket;
    uintptr_t word8;
    uintptr_t word9;
    uintptr_t word10;
    uintptr_t word11;
    uintptr_t word12;
    uintptr_t word13;
};

void begin_memory_context(ORVLOG_DrawingContext* drawing, MemoryContextStartCall* call)
{
    call->font_engine = orvlog_install_engine(drawing, call->font_engine).forwarded;
    drawing->kind = ORVLOG_DRAWING_MEMORY_CONTEXT;
    orvlog_fill_drawing_interface(call->drawing_out, drawing);
    orvlog_writer_warn(&drawing->session->writer, "ORV_memory_context_start parameters are not logged");
    orvlog_push_colour_frame(drawing->session, call->colour_ticket);
}

void dump(const ORVLOG_DrawingContext* drawing, const MemoryContextStartCall* call)
{
    ORVLOG_Writer* writer = &drawing->session->writer;
    orvlog_writer_begin_element(writer, kElement);
    orvlog_attr_document(drawing->session, call->document);
    orvlog_attr_uint(writer, "drawing_context", drawing->drawing_context);
    orvlog_writer_end_empty(writer, kElement);
}

uint32_t forward_to(const ORV_Interface* receiver, void* document, ORV_DrawingInterface* drawing_out,
                    const MemoryContextStartCall* call)
{
    return receiver->memory_context_start.fn(call->err, receiver, document, drawing_out, call->word1, call->word2,
                                             call->word3, call->word4, call->word5, call->font_engine,
                                             call->colour_ticket, call->word8, call->word9, call->word10, call->word11,
                                             call->word12, call->word13);
}

uint32_t hand_over(const ORVLOG_Session* session, const MemoryContextStartCall* call)
{
    const ORV_Interface* second = session->second_interface;
    if (second->memory_context_start.fn == nullptr)
        return 0;
    return forward_to(second, session->second_document_handle, call->drawing_out, call);
}

uint32_t forward(const ORV_Interface* renderer, ORVLOG_DrawingContext* drawing, const MemoryContextStartCall* call)
{
    if (renderer == nullptr || renderer->memory_context_start.fn == nullptr)
        return 1;
    return forward_to(renderer, drawing->session->document_handle, &drawing->renderer_table, call);
}

}  // namespace

uint32_t orvlog_memory_context_start(void* err, const ORV_Interface* table, void* document,
                                     ORV_DrawingInterface* drawing_out, uintptr_t word1, uintptr_t word2,
                                     uintptr_t word3, uintptr_t word4, uintptr_t word5,
                                     const GFI_FontEngineTable* font_engine_functions, void* colour_ticket,
                                     uintptr_t word8, uintptr_t word9, uintptr_t word10, uintptr_t word11,
                                     uintptr_t word12, uintptr_t word13)
{
    ORVLOG_Session* session = orvlog_session_of(table, &ORV_Interface::memory_context_start);
    if (session == nullptr)
        return 0;
    MemoryContextStartCall call = {
        .err = err,
        .document = document,
        .drawing_out = drawing_out,
        .word1 = word1,
        .word2 = word2,
        .word3 = word3,
        .word4 = word4,
        .word5 = word5,
        .font_engine = font_engine_functions,
        .colour_ticket = colour_ticket,
        .word8 = word8,
        .word9 = word9,
        .word10 = word10,
        .word11 = word11,
        .word12 = word12,
        .word13 = word13,
    };
    if (session->second_interface != nullptr)
        return hand_over(session, &call);
    ORVLOG_DrawingContext* drawing = drawing_out != nullptr ? orvlog_open_drawing(session, err) : nullptr;
    if (drawing == nullptr)
        return 0;
    begin_memory_context(drawing, &call);
    dump(drawing, &call);
    return forward(table->base.renderer, drawing, &call);
}
