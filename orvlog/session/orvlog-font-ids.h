// The numbers of fonts and strings within a paint, by which a reader of the log ties a run of glyphs to the shape that
// asked for it.

#pragma once

#include "orvlog/session/orvlog-session.h"

struct ORVLOG_FontIds
{
    uint32_t font_spec_id;
    uint32_t string_desc_id;
};

// The numbers of a shape's font and string, the ones that they have in this paint or else the session's next. Both are
// known by their addresses alone and not looked into. 0 without memory; then no number is taken.
//
// The two may have been seen in different nodes, and then no node says that they belong together: the font engine's
// side looks for both in one node and warns when there is none. Readers of the log rely on that difference.
uint32_t orvlog_font_ids_take(ORVLOG_Session* session, const GFI_FontSpecPointer* font_spec,
                              const GFI_StringDescPointer* string_desc, ORVLOG_FontIds* ids);

// The node of this paint that holds both, or null.
const font_id_pair* orvlog_font_ids_find(ORVLOG_Session* session, const GFI_FontSpecPointer* font_spec,
                                         const GFI_StringDescPointer* string_desc);
