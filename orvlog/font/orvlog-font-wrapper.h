// Stands in the place of a client's font engine table, so that what a renderer pulls can be logged.

#pragma once

#include "orvlog/session/orvlog-session.h"

#include <cstdint>

struct FontEngineWrapper
{
    ORVLOG_Session* session;
    uint32_t GfpId;                          // number of this wrapped table in the log
    GMM_Allocator* allocator;                // takes the wrapper and its table back
    const GFI_FontEngineTable* inner_table;  // the client's; not owned
    GFI_FontEngineTable* wrapped_table;

    FontEngineWrapper* next_live;
};

// Stores a new wrapped table for `inner` in the slot; non-zero for success. Without memory the slot holds null.
uint32_t font_wrapper_create(ORVLOG_Session* session, const GFI_FontEngineTable** table_slot,
                             const GFI_FontEngineTable* inner);

// Gives a wrapped table and its wrapper back. Null does nothing.
void font_wrapper_destroy(const GFI_FontEngineTable* table);

// The GfpId of a wrapped table.
uint32_t font_wrapper_id(const GFI_FontEngineTable* table);

// The text by which an engine names itself, or null. Takes wrapped tables and others.
const char* font_engine_id(const GFI_FontEngineTable* table);

// At the end of the scope that made it: destroys a wrapped table and puts `outer`, the one that was in force around
// the scope, in its place wherever another scope would restore it. So scopes may end in any order. Null does nothing.
void font_wrapper_end_scope(ORVLOG_Session* session, const GFI_FontEngineTable* table,
                            const GFI_FontEngineTable* outer);
// At the end of the session: destroys all that still live.
void font_wrapper_release_all(ORVLOG_Session* session);
