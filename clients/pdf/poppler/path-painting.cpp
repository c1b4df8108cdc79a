// SPDX-License-Identifier: GPL-2.0-or-later

#include "clients/pdf/poppler/path-painting.h"

#include "clients/pdf/poppler/glyph-runs.h"
#include "clients/pdf/poppler/paths.h"

namespace orvlog::pdf_client
{

namespace
{

// In user space.
Path current_path(GfxState* state)
{
    Path path = path_of(*state->getPath());
    drop_closing_lines(path);
    return path;
}

// Points may come to lie on one another by rounding, so closing lines are dropped behind the transform.
Path current_path_in_content(const Canvas& canvas, GfxState* state)
{
    Path path = path_of(*state->getPath()).transformed(user_to_content(canvas, state));
    drop_closing_lines(path);
    return path;
}

}  // namespace

void fill_path(Type3Glyphs& type3, Canvas& canvas, GfxState* state, Winding winding)
{
    if (state->getFillColorSpace()->isNonMarking())
        return;
    const Path path = current_path_in_content(canvas, state);
    if (path.empty() || !all_finite(path))
        return;
    const Colour* of_glyph = colour_of_glyph(type3);
    const Colour colour = of_glyph != nullptr ? *of_glyph : fill_colour(canvas, state);
    const PaintState paint = fill_state(canvas, state);
    if (!capture_fill(type3, canvas, path, winding, colour, paint))
        canvas.painter->fill(path, winding, colour, paint);
}

void stroke_path(Type3Glyphs& type3, Canvas& canvas, GfxState* state)
{
    if (colour_of_glyph(type3) != nullptr || !state->getStrokeColorSpace()->isNonMarking())
        stroke_outlines(type3, canvas, state, current_path(state));
}

void stroke_outlines(Type3Glyphs& type3, Canvas& canvas, GfxState* state, const Path& outlines)
{
    flush_capture(type3, canvas);
    const GGO_Matrix to_content = user_to_content(canvas, state);
    if (outlines.empty() || !all_finite(outlines) || !finite(to_content))
        return;
    const Colour* of_glyph = colour_of_glyph(type3);
    const Colour colour = of_glyph != nullptr ? *of_glyph : stroke_colour(canvas, state);
    const PaintState paint = stroke_state(canvas, state);
    if (keeps_circles(to_content))
    {
        const StrokeStyle style = style_of(state, mean_scale(to_content));
        canvas.painter->stroke(outlines.transformed(to_content), identity(), style, colour, paint);
        return;
    }
    canvas.painter->stroke(outlines, to_content, style_of(state, 1), colour, paint);
}

void clip_to_path(Type3Glyphs& type3, Canvas& canvas, GfxState* state, Winding winding)
{
    flush_text(canvas);
    flush_capture(type3, canvas);
    const Path path = current_path_in_content(canvas, state);
    if (all_finite(path))
        canvas.content.clip = canvas.painter->narrow(canvas.content.clip, path, winding);
}

void clip_to_stroke(Type3Glyphs& type3, Canvas& canvas, GfxState* state)
{
    flush_capture(type3, canvas);
    const Path path = current_path(state);
    const GGO_Matrix to_content = user_to_content(canvas, state);
    if (all_finite(path) && finite(to_content))
    {
        Clip& clip = canvas.content.clip;
        clip = canvas.painter->narrow(clip, path, to_content, style_of(state, 1));
    }
}

}  // namespace orvlog::pdf_client
