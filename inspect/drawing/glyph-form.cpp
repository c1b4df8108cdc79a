#include "inspect/drawing/glyph-form.h"

namespace orvlog::inspect
{

cairo_renderer::GlyphForm glyph_form(const replay::LogKind& kind)
{
    if (kind.rendered_fixed)
        return cairo_renderer::GlyphForm::in_turn;
    const bool bitmaps = (kind.rendered_first & 1U << GFI_GDT_BITMAP) != 0;
    return bitmaps ? cairo_renderer::GlyphForm::bitmap : cairo_renderer::GlyphForm::path;
}

}  // namespace orvlog::inspect
