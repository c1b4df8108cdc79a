// SPDX-License-Identifier: GPL-2.0-or-later
//
// What is in force while content is read, beside what poppler's own state says.

#pragma once

#include "clients/pdf/painter/painter.h"
#include "clients/pdf/poppler/colours.h"

#include <memory>
#include <vector>

#include <GfxState.h>

namespace orvlog::pdf_client
{

constexpr double kPointsPerInch = 72.0;

// What is kept when the document saves its state.
struct SavedState
{
    PaintState paint;
    GGO_Matrix user_to_content{};
};

struct OpenGroup
{
    bool is_mask = false;
    bool painted = false;                           // masks only: its pictures are being drawn
    std::unique_ptr<GfxColorSpace> blending_space;  // masks only; may be null
};

// The content of a page, or of a pattern's cell.
struct Content
{
    GGO_Matrix points_to_content = scaling(1 / kPointsPerInch, 1 / kPointsPerInch);
    Clip clip;
    std::shared_ptr<const MaskImage> mask;
    std::vector<SavedState> saved;
    std::vector<OpenGroup> groups;
};

// Glyphs that wait to be painted as one run; glyph-runs has what is done with them.
struct WaitingText
{
    GlyphRun run;
    GGO_Point last_origin{};  // of the glyph that was added last, in the content space
    Colour colour;
    PaintState paint;
};

struct Canvas
{
    Painter* painter = nullptr;  // null between pages
    SpaceStore spaces;
    Content content;
    WaitingText text;
};

GGO_Matrix user_to_content(const Canvas& canvas, GfxState* state);

Colour fill_colour(Canvas& canvas, GfxState* state);
Colour stroke_colour(Canvas& canvas, GfxState* state);
PaintState fill_state(const Canvas& canvas, GfxState* state);
PaintState stroke_state(const Canvas& canvas, GfxState* state);

void save_state(Canvas& canvas, GfxState* state);
// Does nothing if there is nothing to go back to.
void restore_state(Canvas& canvas);

}  // namespace orvlog::pdf_client
