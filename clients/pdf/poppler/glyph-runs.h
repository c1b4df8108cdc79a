// SPDX-License-Identifier: GPL-2.0-or-later
//
// Gathers glyphs of one font, size and direction, and paints them as one run.

#pragma once

#include "clients/pdf/poppler/canvas.h"

#include <CharTypes.h>

namespace orvlog::pdf_client
{

// A glyph on its way into a run; the advance is in the content space.
struct NewGlyph
{
    std::shared_ptr<const Glyph> glyph;
    int32_t font_id;
    GGO_Matrix em_to_content;
    GGO_Vector advance;
    CharCode code;
    int byte_count;
};

// Adds to the canvas's waiting text, which is painted first if the glyph can't be of one run with it. Colour and
// state are those of the run's first glyph.
void add_to_run(Canvas& canvas, GfxState* state, NewGlyph added);

// Paints the waiting text, if there is any.
void flush_text(Canvas& canvas);

}  // namespace orvlog::pdf_client
