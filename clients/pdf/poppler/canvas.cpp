// SPDX-License-Identifier: GPL-2.0-or-later

#include "clients/pdf/poppler/canvas.h"

#include "clients/pdf/poppler/paths.h"

#include <algorithm>
#include <cstddef>
#include <iterator>

namespace orvlog::pdf_client
{

namespace
{

Blend blend_of(GfxBlendMode mode)
{
    static constexpr Blend kBlends[] = {Blend::normal,     Blend::multiply,   Blend::screen,      Blend::overlay,
                                        Blend::darken,     Blend::lighten,    Blend::color_dodge, Blend::color_burn,
                                        Blend::hard_light, Blend::soft_light, Blend::difference,  Blend::exclusion,
                                        Blend::hue,        Blend::saturation, Blend::color,       Blend::luminosity};
    return mode >= 0 && static_cast<size_t>(mode) < std::size(kBlends) ? kBlends[mode] : Blend::normal;
}

PaintState state_with(const Canvas& canvas, GfxState* state, double alpha)
{
    return {canvas.content.clip, std::clamp(alpha, 0.0, 1.0), blend_of(state->getBlendMode()), canvas.content.mask};
}

}  // namespace

GGO_Matrix user_to_content(const Canvas& canvas, GfxState* state)
{
    return multiply(matrix_of(state->getCTM()), canvas.content.points_to_content);
}

Colour fill_colour(Canvas& canvas, GfxState* state)
{
    return colour_of(state->getFillColorSpace(), *state->getFillColor(), canvas.spaces);
}

Colour stroke_colour(Canvas& canvas, GfxState* state)
{
    return colour_of(state->getStrokeColorSpace(), *state->getStrokeColor(), canvas.spaces);
}

PaintState fill_state(const Canvas& canvas, GfxState* state)
{
    return state_with(canvas, state, state->getFillOpacity());
}

PaintState stroke_state(const Canvas& canvas, GfxState* state)
{
    return state_with(canvas, state, state->getStrokeOpacity());
}

void save_state(Canvas& canvas, GfxState* state)
{
    const PaintState paint = {canvas.content.clip, state->getFillOpacity(), blend_of(state->getBlendMode()),
                              canvas.content.mask};
    canvas.content.saved.push_back({paint, user_to_content(canvas, state)});
}

void restore_state(Canvas& canvas)
{
    Content& content = canvas.content;
    if (!content.saved.empty())
    {
        content.clip = content.saved.back().paint.clip;
        content.mask = content.saved.back().paint.mask;
        content.saved.pop_back();
    }
}

}  // namespace orvlog::pdf_client
