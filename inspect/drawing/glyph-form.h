// The form in which a job's renderer asked for glyphs.

#pragma once

#include "clients/replay/replay.h"
#include "renderers/cairo/cairo-renderer.h"

namespace orvlog::inspect
{

// As far as the log tells: whoever draws it once more asks in the same form, and gets the same pixels.
cairo_renderer::GlyphForm glyph_form(const replay::LogKind& kind);

}  // namespace orvlog::inspect
