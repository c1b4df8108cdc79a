// Pulls the glyphs of a text shape as the logger's own renderer would, so that they are in the log even if no
// renderer asks for them.

#pragma once

#include "orvlog/interface/gsh-shape.h"
#include "orvlog/session/orvlog-session.h"

#include <cstdint>

// A string of more glyphs than this and one for each byte of its text is given up, with a warning. A string has 65535
// clusters at most.
constexpr uint32_t ORVLOG_MAX_CAPTURED_GLYPHS = 1U << 18;

// In base mode, and for the two kinds of text shapes, runs the whole string through the wrapped font engine in
// force, whose elements hold what comes back, and stores the pen's place behind the last glyph in glyph_end_point.
// Without an engine nothing is pulled and a warning is queued. Five kinds of failures are warned of, each once in a
// session; none of them fails the call.
void capture_shape_glyphs(ORVLOG_Session* session, const GSH_ShapePointer* pointer);
