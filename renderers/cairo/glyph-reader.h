// Pulls the glyphs of a text shape through a font engine.

#pragma once

#include "orvlog/interface/gfi-font.h"
#include "orvlog/interface/gsh-shape.h"
#include "renderers/cairo/cairo-renderer.h"
#include "renderers/cairo/complaints.h"
#include "renderers/cairo/scene.h"

#include <vector>

namespace orvlog::cairo_renderer
{

struct GlyphRun
{
    std::vector<Piece> pieces;  // FillPiece and BitmapPiece
    Point pen;                  // behind the last glyph, in pixels
};

// Pulls a string. `to_pixels` maps the shape's space to pixels, `from_pixels` pixels to the content space.
// A null engine or string gives no glyphs. `pen` is that of the glyphs that came.
GlyphRun pull_glyphs(const GFI_FontEngineTable* engine, const GFI_FontSpecPointer* font,
                     const GFI_StringDescPointer* string, const cairo_matrix_t& to_pixels,
                     const cairo_matrix_t& from_pixels, GlyphForm form, Complaints& complaints);

}  // namespace orvlog::cairo_renderer
