// SPDX-License-Identifier: GPL-2.0-or-later
//
// Glyphs of Type 3 fonts, which are content streams. While one is read for the first time, what it paints is held
// back until it is known whether it is a glyph that the drawing interface can say: fills only, or one stencil. One
// that isn't is painted as any other content, then and ever after.

#pragma once

#include "clients/pdf/poppler/canvas.h"

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

#include <CharTypes.h>

namespace orvlog::pdf_client
{

struct Type3Font
{
    int32_t id = 0;
    std::map<CharCode, std::shared_ptr<const Glyph>> glyphs;  // null for those that are painted as content
};

// A glyph whose content is being read.
struct Type3Capture
{
    std::shared_ptr<Glyph> glyph;
    std::shared_ptr<Type3Font> font;
    GGO_Matrix glyph_to_content{};
    GGO_Vector advance{};
    CharCode code = 0;
    bool uncoloured = false;
    bool has_fill = false;
    std::vector<std::function<void(Painter& painter)>> held_back;
};

struct Type3Glyphs
{
    std::map<std::pair<int, int>, std::shared_ptr<Type3Font>> fonts;
    std::unique_ptr<Type3Capture> capture;  // null if there is none under way
    // The glyphs whose content is being read, one within the other: for those that say that they have no colours of
    // their own the text's fill colour.
    std::vector<std::optional<Colour>> open;
};

// True if the glyph is invisible, or is known and was added to the waiting text, so that its content needn't be read.
// The advance is in the user space of the text.
bool begin_type3_glyph(Type3Glyphs& type3, Canvas& canvas, GfxState* state, GGO_Vector advance, CharCode code);
// The glyph says that it has no colours of its own.
void note_uncoloured(Type3Glyphs& type3, Canvas& canvas, GfxState* state);
// The colour in which all is painted while the content of a glyph without colours is read; null otherwise.
const Colour* colour_of_glyph(const Type3Glyphs& type3);
// The glyph's content has been read.
void end_type3_glyph(Type3Glyphs& type3, Canvas& canvas, GfxState* state);

// True if the paint was taken into the glyph that is under way. If it can't be, the glyph is given up, and what was
// held back is painted.
bool capture_fill(Type3Glyphs& type3, Canvas& canvas, const Path& path, Winding winding, const Colour& colour,
                  const PaintState& state);
bool capture_stencil(Type3Glyphs& type3, Canvas& canvas, const Image& stencil, const GGO_Matrix& pixels_to_content,
                     const Colour& colour, const PaintState& state);

// Gives up the glyph that is under way, if there is one; whatever paints anything else calls this first.
void flush_capture(Type3Glyphs& type3, Canvas& canvas);

}  // namespace orvlog::pdf_client
