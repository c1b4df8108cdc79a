// The wrappers behind the tables that a client gets, and what they share.
//
// Each wrapper stands in a file of its own, orvlog-orv-NAME, or beside the call that ends what it begins. It holds its
// arguments in a record, does its bookkeeping, writes the element of the call, forwards, and gives back the renderer's
// result. A call for which there is no renderer gives 1.

#pragma once

#include "orvlog/session/orvlog-session.h"

#include <cstdint>
#include <type_traits>

// orvlog_NAME for each call, of the type of its entry.
#define ORV_DOCUMENT_CALL(name) std::remove_pointer_t<ORV_##name##_fn> orvlog_##name;
#define ORV_DRAWING_CALL(name) std::remove_pointer_t<ORV_##name##_fn> orvlog_##name;
#include "orvlog/names/calls.inc"

// Fills all entries of a drawing table. (That of a document table is told in orvlog-creators.h.)
void orvlog_fill_drawing_interface(ORV_DrawingInterface* table, ORVLOG_DrawingContext* drawing);

// What stands in the context word of the entry on which a call is made; null without a table, and then the call
// gives 0.
template <typename Entry> ORVLOG_Session* orvlog_session_of(const ORV_Interface* table, Entry ORV_Interface::*entry)
{
    return table != nullptr ? static_cast<ORVLOG_Session*>((table->*entry).context) : nullptr;
}
template <typename Entry>
ORVLOG_DrawingContext* orvlog_drawing_of(const ORV_DrawingInterface* table, Entry ORV_DrawingInterface::*entry)
{
    return table != nullptr ? static_cast<ORVLOG_DrawingContext*>((table->*entry).context) : nullptr;
}

// The attributes document_context and parent_drawing of what the client names, if that is open.
void orvlog_attr_document(ORVLOG_Session* session, const void* document);
void orvlog_attr_parent(ORVLOG_Session* session, const ORV_DrawingInterface* parent);

// Wraps an engine argument. `logged` takes the wrapped table, or null where none was given or none could be had;
// `forwarded` is what the renderer gets: the wrapped table, or else the client's own.
struct ORVLOG_EngineArgument
{
    const GFI_FontEngineTable* logged;
    const GFI_FontEngineTable* forwarded;
};
ORVLOG_EngineArgument orvlog_wrap_engine(ORVLOG_Session* session, const GFI_FontEngineTable* engine);
// The same for a drawing that begins, whose engine it becomes and puts in force.
ORVLOG_EngineArgument orvlog_install_engine(ORVLOG_DrawingContext* drawing, const GFI_FontEngineTable* engine);

// The attributes font_engine_functions, fp_EngineIdGet and GfpId of a scope that wrapped its engine.
void orvlog_attr_font_engine(ORVLOG_Writer* writer, const GFI_FontEngineTable* wrapped);

// What every object paint does first, logged or not.
void orvlog_begin_object(ORVLOG_DrawingContext* drawing, uint32_t object_type, const GSH_ShapePointer* paint_path);

// Behind the forward of a drawing call whose element has stayed open across it; nothing for a drawing not logged.
void orvlog_close_call(const ORVLOG_DrawingContext* drawing, const char* element);

// What the client gets: in base mode a failed read of an image is reported under the number of a source line, and makes
// 0 of any result.
uint32_t orvlog_result_after_dump(const ORVLOG_DrawingContext* drawing, uint32_t read_well, uint32_t result,
                                  int32_t line);

// Pops the top group frame with all that it owns.
void orvlog_pop_group(ORVLOG_DrawingContext* drawing);
